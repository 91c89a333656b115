// A tables dataset in DuckDB as its manifest describes it: each table read
// with the column types its JSON Schema declares (read_json with columns,
// nothing guessed), its rows counted against the manifest; each table turned
// into Parquet with COPY and read back, the same rows; then the README's
// "-- dataset:" blocks, their columns the ones the schemas give.
//
//   node tools/fleet-dataset.mjs CACHE_DIR README DATASET COLUMNS_JSON WORK [LABELS_CSV]
//
// A dataset in Hive-style folders is read with hive_partitioning, its label
// a text column; with LABELS_CSV (capture, then the label) each row's value
// must be its capture's in the sheet.
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { pathToFileURL } from 'node:url';

const [cacheDir, readme, dataset, columnsPath, work, labels] = process.argv.slice(2);
const api = createRequire(`${cacheDir}/package.json`).resolve('@duckdb/node-api');
const { DuckDBInstance } = await import(pathToFileURL(api).href);
const connection = await (await DuckDBInstance.create(':memory:')).connect();
const rows = async (sql) => (await connection.runAndReadAll(sql)).getRows();
const literal = (text) => `'${text.replaceAll("'", "''")}'`;
let failed = false;
const fail = (message) => { console.error(`fleet-dataset: FAIL: ${message}`); failed = true; };

const manifest = JSON.parse(readFileSync(`${dataset}/manifest.json`, 'utf8'));
const columns = JSON.parse(readFileSync(columnsPath, 'utf8'));
const label = manifest.partition_by;
const hive = label === null ? 'hive_partitioning = false'
  : `hive_partitioning = true, hive_types = {${literal(label)}: 'VARCHAR'}`;
if (!manifest.complete) fail('the manifest says the dataset is not complete');
for (const [table, facts] of Object.entries(manifest.tables)) {
  const files = `[${facts.files.map((f) => literal(`${dataset}/${f.path}`)).join(', ')}]`;
  await connection.run(`CREATE TABLE ${table} AS SELECT * FROM read_json(${files},
    format = 'newline_delimited', columns = ${columns[table]}, ${hive})`);
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
  if (labels !== undefined) {
    const column = `"${label.replaceAll('"', '""')}"`;
    const [[wrong, example]] = await rows(`SELECT count(*), any_value(t.capture) FROM ${table} t
      LEFT JOIN read_csv(${literal(labels)}, header = true, all_varchar = true) s ON t.capture = s.capture
      WHERE t.${column} IS DISTINCT FROM s.${column}`);
    if (Number(wrong) !== 0) fail(`${table}: ${wrong} rows in another folder than their ${label}, e.g. ${example}`);
    else console.log(`${table}: every row in the folder of its capture's ${label}`);
  }
}

// The README's blocks, run in the folder that holds dataset/, on a
// database of their own: "-- dataset:" ones over a dataset at the top,
// "-- partitioned dataset:" ones over one in folders. Each column they name
// has its schema's type; the first column of their last query adds up to
// the rows of the table their name starts with.
const readmeConnection = await (await DuckDBInstance.create(':memory:')).connect();
const kind = label === null ? 'dataset' : 'partitioned dataset';
const blocks = [...readFileSync(readme, 'utf8').matchAll(/```sql\n-- ([a-z ]+): ([^\n]+)\n([\s\S]*?)```/g)]
  .filter(([, k]) => k === kind);
if (blocks.length === 0) fail(`no "-- ${kind}:" block in the README`);
for (const [, , name, sql] of blocks) {
  for (const [, table, given] of sql.matchAll(/read_json\('dataset\/(?:[^']*\/)?(\w+)\.jsonl(?:\.gz)?'[^{]*?columns = (\{[^}]*\})/g)) {
    const types = Object.fromEntries([...columns[table].matchAll(/'([^']+)': '((?:[^']|'')*)'/g)].map((m) => m.slice(1)));
    for (const [, column, type] of given.replace(/\s+/g, ' ').matchAll(/'([^']+)': '((?:[^']|'')*)'/g))
      if (types[column] !== type) fail(`README ${name}: ${table}.${column} is ${type}, its schema says ${types[column]}`);
  }
  const text = sql.replaceAll("'dataset/", `'${dataset.replaceAll("'", "''")}/`).replaceAll("'out/", `'${work}/readme-`);
  let last = [];
  for (const statement of text.split(/;\s*\n/).filter((s) => s.trim()))
    last = (await readmeConnection.runAndReadAll(statement)).getRows();
  const want = manifest.tables[name.trim().split(' ')[0]]?.rows;
  const got = last.reduce((sum, row) => sum + Number(row[0]), 0);
  if (want === undefined || got !== want) fail(`README ${name}: ${got} rows, the manifest says ${want}`);
  else console.log(`README ${name}: ${want} rows, as the manifest says`);
}
process.exit(failed ? 1 : 0);
