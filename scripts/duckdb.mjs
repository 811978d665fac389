// Runs a file of SQL in the working folder with DuckDB, and prints the rows of each query as JSON: duckdb.mjs FILE
import { createRequire } from "node:module";
import { readFileSync } from "node:fs";

const require = createRequire(new URL("../examples/duckdb/package.json", import.meta.url));
const { DuckDBInstance } = require("@duckdb/node-api");

const connection = await (await DuckDBInstance.create(":memory:")).connect();
const statements = await connection.extractStatements(readFileSync(process.argv[2], "utf8"));
for (let i = 0; i < statements.count; i++) {
  const reader = await (await statements.prepare(i)).runAndReadAll();
  const rows = reader.getRowObjectsJson();
  if (reader.columnNames()[0] !== "Count") {
    console.log(JSON.stringify(rows));
  }
}
