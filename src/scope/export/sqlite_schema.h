// The tables, indexes and views of an exported database; docs/sql.md tells of them.

#pragma once

namespace sonaprobe::scope {

// PRAGMA user_version: a higher one where a column goes or means something else. Times come in
// order but for a little, so that to add each to its index as it comes costs less than to sort all.
inline constexpr const char* kSqliteTables = R"(
PRAGMA user_version = 1;
CREATE TABLE events (code INTEGER PRIMARY KEY, hex TEXT NOT NULL, driver TEXT NOT NULL,
                     method TEXT NOT NULL);
CREATE TABLE records (slot INTEGER PRIMARY KEY, time_ns INTEGER NOT NULL, code INTEGER NOT NULL,
                      qualifier TEXT NOT NULL, thread TEXT NOT NULL, cpu INTEGER NOT NULL,
                      object TEXT, failure INTEGER NOT NULL, text TEXT, values_json TEXT);
CREATE INDEX records_by_time ON records (time_ns);
CREATE INDEX records_of_failures ON records (slot) WHERE failure;
CREATE TABLE calls (slot INTEGER PRIMARY KEY, end_slot INTEGER, time_ns INTEGER NOT NULL,
                    duration_ns INTEGER NOT NULL, self_ns INTEGER NOT NULL, depth INTEGER NOT NULL,
                    parent INTEGER, code INTEGER NOT NULL, ended TEXT NOT NULL,
                    thread TEXT NOT NULL, cpu INTEGER NOT NULL, object TEXT,
                    failure INTEGER NOT NULL);
CREATE TABLE findings (kind TEXT NOT NULL, slot INTEGER NOT NULL, last_slot INTEGER NOT NULL,
                       meaning TEXT NOT NULL, advice TEXT NOT NULL);
CREATE TABLE dropouts (slot INTEGER PRIMARY KEY, time_ns INTEGER NOT NULL, thread TEXT NOT NULL,
                       budget_ns INTEGER, lacking_ns INTEGER, cause TEXT NOT NULL,
                       certainty TEXT NOT NULL, culprit_slot INTEGER, culprit_code INTEGER);
)";

// Percentiles are those of `sonascope stats`: nearest rank, over finished calls.
inline constexpr const char* kSqliteViews = R"(
CREATE VIEW "values" AS
    SELECT slot, key AS name, value FROM records, json_each(values_json);
CREATE VIEW lines AS
    SELECT slot, time_ns / 1e6 AS time_ms, thread, cpu, driver, method, qualifier, object, text
    FROM records JOIN events USING (code);
CREATE VIEW named_calls AS
    SELECT calls.*, driver, method FROM calls JOIN events USING (code);
CREATE VIEW failures AS
    SELECT slot, time_ns / 1e6 AS time_ms, thread, driver, method, text
    FROM records JOIN events USING (code) WHERE failure;
CREATE VIEW statistics AS
    WITH placed AS (
        SELECT code, duration_ns,
               row_number() OVER (PARTITION BY code ORDER BY duration_ns) AS place,
               count(*) OVER (PARTITION BY code) AS finished
        FROM calls WHERE ended = 'finished'),
    ranks AS (
        SELECT code, min(CASE WHEN place * 100 >= 50 * finished THEN duration_ns END) AS p50_ns,
               min(CASE WHEN place * 100 >= 90 * finished THEN duration_ns END) AS p90_ns,
               min(CASE WHEN place * 100 >= 99 * finished THEN duration_ns END) AS p99_ns
        FROM placed GROUP BY code),
    sums AS (
        SELECT code, count(*) AS calls, sum(ended = 'finished') AS finished,
               sum(duration_ns) FILTER (WHERE ended = 'finished') AS total_ns,
               sum(self_ns) FILTER (WHERE ended = 'finished') AS self_ns,
               max(duration_ns) FILTER (WHERE ended = 'finished') AS max_ns,
               sum(ended = 'cut off') AS cut_off, sum(ended = 'unfinished') AS unfinished
        FROM calls GROUP BY code)
    SELECT driver, method, hex, calls, finished, total_ns, self_ns, total_ns / finished AS mean_ns,
           p50_ns, p90_ns, p99_ns, max_ns, cut_off, unfinished
    FROM sums LEFT JOIN ranks USING (code) JOIN events USING (code) ORDER BY self_ns DESC;
CREATE VIEW callers AS
    SELECT outer_event.driver AS caller_driver, outer_event.method AS caller_method,
           inner_event.driver, inner_event.method, count(*) AS calls,
           sum(inner_call.duration_ns) AS total_ns
    FROM calls AS inner_call
    JOIN calls AS outer_call ON outer_call.slot = inner_call.parent
    JOIN events AS outer_event ON outer_event.code = outer_call.code
    JOIN events AS inner_event ON inner_event.code = inner_call.code
    GROUP BY outer_call.code, inner_call.code ORDER BY total_ns DESC;
)";

}  // namespace sonaprobe::scope
