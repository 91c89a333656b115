// The README's fleet queries run by DuckDB over a tables dataset: each SQL
// block of the README that starts with "-- fleet: NAME", its 'dataset'
// folder replaced by the one given; the answers as one JSON object.
//
//   node tools/fleet-queries.mjs CACHE_DIR README DATASET
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { pathToFileURL } from 'node:url';

const [cacheDir, readme, dataset] = process.argv.slice(2);
const api = createRequire(`${cacheDir}/package.json`).resolve('@duckdb/node-api');
const { DuckDBInstance } = await import(pathToFileURL(api).href);
const connection = await (await DuckDBInstance.create(':memory:')).connect();

const queries = [...readFileSync(readme, 'utf8').matchAll(/```sql\n(-- fleet: ([^\n]+)\n[\s\S]*?)```/g)]
  .map(([, sql, name]) => [name.trim(), sql.replaceAll("'dataset/", `'${dataset.replaceAll("'", "''")}/`)]);
if (queries.length === 0) { console.error('fleet-queries: no "-- fleet:" query in the README'); process.exit(1); }
const plain = (value) => (typeof value === 'bigint' ? Number(value) : value);
const answers = {};
for (const [name, sql] of queries) {
  const reader = await connection.runAndReadAll(sql);
  const columns = reader.columnNames();
  answers[name] = reader.getRows().map((row) => Object.fromEntries(row.map((v, i) => [columns[i], plain(v)])));
}
console.log(JSON.stringify(answers, null, 1));
