// DuckDB's read_ndjson on kelvra-inspect records output, against counts taken
// from the capture's own text; then the README's worked query.
//
//   node tools/duckdb-check.mjs CACHE_DIR CAPTURE RECORDS_JSONL
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { pathToFileURL } from 'node:url';

const [cacheDir, capturePath, recordsPath] = process.argv.slice(2);
// The package lives in the cache, not beside this file.
const api = createRequire(`${cacheDir}/package.json`).resolve('@duckdb/node-api');
const { DuckDBInstance } = await import(pathToFileURL(api).href);
const connection = await (await DuckDBInstance.create(':memory:')).connect();
const source = `read_ndjson('${recordsPath.replaceAll("'", "''")}')`;
const query = async (sql) => (await connection.runAndReadAll(sql)).getRows();
let failed = false;
const fail = (message) => { console.error(`duckdb-check: FAIL: ${message}`); failed = true; };

const field = (line, key, pattern) => line.match(new RegExp(`'${key}': *${pattern}`))?.[1];
const lines = readFileSync(capturePath, 'latin1').split('\n')
  .filter((line) => line.startsWith("{  'category':"))
  .map((line) => Object.fromEntries(['category', 'component', 'event']
    .map((key) => [key, field(line, key, "'([^']*)'")])
    .concat(['timestamp', 'sequence_num'].map((key) => [key, BigInt(field(line, key, '(\\d+)'))]))));
if (lines.length === 0) { fail('the capture has no profile lines'); process.exit(1); }

const expected = new Map();
for (const { category } of lines) expected.set(category, (expected.get(category) ?? 0) + 1);
const got = new Map((await query(`SELECT category, count(*) FROM ${source} GROUP BY ALL`))
  .map(([category, n]) => [String(category), Number(n)]));
for (const category of new Set([...expected.keys(), ...got.keys()])) {
  const [g, e] = [got.get(category) ?? 0, expected.get(category) ?? 0];
  if (g !== e) fail(`category '${category}': ${g} rows in DuckDB, ${e} profile lines in the capture`);
}
const textMax = lines.reduce((max, l) => (l.sequence_num > max ? l.sequence_num : max), -1n);
const [[dbMax]] = await query(`SELECT max(sequence_num) FROM ${source}`);
if (BigInt(dbMax ?? -1) !== textMax) fail(`max(sequence_num) is ${dbMax} in DuckDB, ${textMax} in the capture`);
if (!failed) console.log(`${lines.length} rows in ${got.size} categories, max(sequence_num) ${dbMax}: as in the capture`);

// Records per component in 10 ms buckets over the 100 ms around the first press.
const worked = `WITH records AS (SELECT * FROM read_ndjson('records.jsonl')),
press AS (SELECT "timestamp" AS t0 FROM records
          WHERE category = 'pkey' AND component = 'latency' AND event = 'ckp_PKEYButtonDown'
          ORDER BY ordinal LIMIT 1),
near AS (SELECT component, CAST(floor(("timestamp" - t0) / 10000) * 10 AS INTEGER) AS ms
         FROM records, press
         WHERE "timestamp" >= t0 - 50000 AND "timestamp" < t0 + 50000)
PIVOT near ON ms IN (-50, -40, -30, -20, -10, 0, 10, 20, 30, 40) USING count(*)
GROUP BY component ORDER BY component;`;
const reader = await connection.runAndReadAll(worked.replace("read_ndjson('records.jsonl')", source));
const cells = [reader.columnNames(), ...reader.getRows().map((row) => row.map(String))];
const widths = cells[0].map((_, i) => Math.max(3, ...cells.map((row) => row[i].length)));
cells.splice(1, 0, widths.map((w, i) => (i ? '-'.repeat(w - 1) + ':' : '-'.repeat(w))));
console.log(`\nWorked query:\n\n${worked}\n`);
for (const row of cells) {
  console.log(`| ${row.map((v, i) => (i ? v.padStart(widths[i]) : v.padEnd(widths[i]))).join(' | ')} |`);
}

// The same window, counted in the capture's text.
const press = lines.find((l) => l.category === 'pkey' && l.component === 'latency' &&
                                l.event === 'ckp_PKEYButtonDown');
const inWindow = lines.filter((l) => press && l.timestamp >= press.timestamp - 50000n &&
                                     l.timestamp < press.timestamp + 50000n).length;
const total = reader.getRows().flatMap((row) => row.slice(1)).reduce((sum, n) => sum + Number(n), 0);
if (!press) fail("the capture has no pkey latency 'ckp_PKEYButtonDown' record");
else if (total !== inWindow) fail(`the worked query counts ${total} records, the capture ${inWindow}`);
if (failed) process.exit(1);
console.log('\nduckdb-check: ok');
