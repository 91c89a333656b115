// A tables dataset in DuckDB as its manifest describes it: each table read
// with the column types its JSON Schema declares (read_json with columns,
// nothing guessed), its rows counted against the manifest; each table turned
// into Parquet with COPY and read back, the same rows; then the README's
// "-- dataset:" blocks, their columns the ones the schemas give.
//
//   node tools/fleet-dataset.mjs CACHE_DIR README DATASET COLUMNS_JSON WORK
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { pathToFileURL } from 'node:url';

const [cacheDir, readme, dataset, columnsPath, work] = process.argv.slice(2);
const api = createRequire(`${cacheDir}/package.json`).resolve('@duckdb/node-api');
const { DuckDBInstance } = await import(pathToFileURL(api).href);
const connection = await (await DuckDBInstance.create(':memory:')).connect();
const rows = async (sql) => (await connection.runAndReadAll(sql)).getRows();
const literal = (text) => `'${text.replaceAll("'", "''")}'`;
let failed = false;
const fail = (message) => { console.error(`fleet-dataset: FAIL: ${message}`); failed = true; };

const manifest = JSON.parse(readFileSync(`${dataset}/manifest.json`, 'utf8'));
const columns = JSON.parse(readFileSync(columnsPath, 'utf8'));
const hive = manifest.partition_by !== null;
if (!manifest.complete) fail('the manifest says the dataset is not complete');
for (const [table, facts] of Object.entries(manifest.tables)) {
  const files = `[${facts.files.map((f) => literal(`${dataset}/${f.path}`)).join(', ')}]`;
  await connection.run(`CREATE TABLE ${table} AS SELECT * FROM read_json(${files},
    format = 'newline_delimited', columns = ${columns[table]}, hive_partitioning = ${hive})`);
  const [[n]] = await rows(`SELECT count(*) FROM ${table}`);
  if (Number(n) !== facts.rows) fail(`${table}: ${n} rows in DuckDB, ${facts.rows} in the manifest`);
  const parquet = literal(`${work}/${table}.parquet`);
  await connection.run(`COPY ${table} TO ${parquet} (FORMAT PARQUET)`);
  const [[p]] = await rows(`SELECT count(*) FROM read_parquet(${parquet})`);
  const [[differ]] = await rows(`SELECT count(*) FROM (
    (SELECT * FROM ${table} EXCEPT ALL SELECT * FROM read_parquet(${parquet}))
    UNION ALL (SELECT * FROM read_parquet(${parquet}) EXCEPT ALL SELECT * FROM ${table}))`);
  if (Number(p) !== facts.rows || Number(differ) !== 0)
    fail(`${table}: ${p} rows back from Parquet (${differ} differ), ${facts.rows} in the manifest`);
  else console.log(`${table}: ${n} rows typed as the schema says, the same back from Parquet`);
}

// The README's blocks, run in the folder that holds dataset/, on a
// database of their own.
const readmeConnection = await (await DuckDBInstance.create(':memory:')).connect();
const blocks = [...readFileSync(readme, 'utf8').matchAll(/```sql\n-- dataset: ([^\n]+)\n([\s\S]*?)```/g)];
if (blocks.length === 0) fail('no "-- dataset:" block in the README');
for (const [, name, sql] of blocks) {
  for (const [, table, given] of sql.matchAll(/read_json\('dataset\/(?:[^']*\/)?(\w+)\.jsonl(?:\.gz)?'[^{]*?columns = (\{[^}]*\})/g))
    if (given.replace(/\s+/g, ' ') !== columns[table]) fail(`README ${name}: ${table}'s columns are not its schema's`);
  const text = sql.replaceAll("'dataset/", `'${dataset.replaceAll("'", "''")}/`).replaceAll("'out/", `'${work}/readme-`);
  const statements = text.split(/;\s*\n/).filter((s) => s.trim());
  let last = [];
  for (const statement of statements) last = (await readmeConnection.runAndReadAll(statement)).getRows();
  const table = name.trim().split(' ')[0];
  const want = manifest.tables[table]?.rows;
  if (want === undefined || Number(last[0]?.[0]) !== want)
    fail(`README ${name}: ends with ${last[0]?.[0]}, the manifest says ${want}`);
  else console.log(`README ${name}: ${want} rows, as the manifest says`);
}
process.exit(failed ? 1 : 0);
