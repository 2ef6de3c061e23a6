// Runs one query in DuckDB; prints its rows as JSON.
import {DuckDBInstance} from '@duckdb/node-api';

const connection = await (await DuckDBInstance.create()).connect();
const result = await connection.runAndReadAll(process.argv[2]);
console.log(JSON.stringify(result.getRowsJson()));
