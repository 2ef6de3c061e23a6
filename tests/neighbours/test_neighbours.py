"""Exports in the real programs that they are for, and the same exports damaged.

Needs NEIGHBOUR_PACKAGES of script/lib/common.sh and `npm ci` in this folder: script/test --full.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess

import pytest

import clickhouse
from conftest import run_program

HERE = pathlib.Path(__file__).parent
SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
SAMPLE = SOURCE / "docs/sample/playback-dropout.raw"
COLUMNS = ["finished", "total_ns", "self_ns", "p50_ns", "p90_ns", "p99_ns"]


def output_of(*command, **options):
    return subprocess.run(list(map(str, command)), check=True, capture_output=True, text=True,
                          timeout=120, **options).stdout


def node(script, *arguments):
    return json.loads(output_of("node", HERE / script, *arguments, cwd=HERE))


@pytest.fixture(scope="module")
def story(tmp_path_factory):
    path = tmp_path_factory.mktemp("story") / "all.raw"
    run_program("write", "all", path, "--records", 20000, "--seed", 3, program="sonaprobe-sim")
    return path


@pytest.fixture
def export(tmp_path):
    """An export of a trace as a file."""

    def make(trace, name, *arguments, ending=None):
        path = tmp_path / f"{trace.stem}.{ending or name}"
        result = run_program("export", trace, "--to", name, "-o", path, *arguments,
                             program="sonascope")
        assert (result.stderr, result.returncode) == ("", 0)
        return path

    return make


def stats(trace):
    """Of the events with finished calls, by code: the numbers of COLUMNS."""
    rows = json.loads(run_program("stats", trace, "--json", program="sonascope").stdout)["rows"]
    return {row["code"]: [row[name] for name in COLUMNS] for row in rows if row["finished"]}


def calls_of(trace):
    """Slot and depth of the calls, by thread."""
    found = {}
    text = run_program("export", trace, "--to", "json", "--what", "calls",
                       program="sonascope").stdout
    for row in map(json.loads, text.splitlines()):
        name = f"thread {int(row['thread'], 16):#x}"
        found.setdefault(name, {})[str(row["slot"])] = row["depth"]
    return found


def seen_by_the_engine(path):
    return {thread["name"]: thread["calls"] for thread in node("engine.mjs", path).values()
            if thread["calls"]}


def test_the_trace_engine_finds_threads_calls_and_depths(story, export):
    path = export(story, "chrome")
    assert seen_by_the_engine(path) == calls_of(story)
    # A call that ends one rounding step after the call around it is dropped.
    document = json.loads(path.read_text())
    ends = {}
    for event in document["traceEvents"]:
        if event["ph"] == "X" and event["args"]["slot"] and event["dur"] > 1:
            inner = ends.get(event["tid"])
            if inner and inner["ts"] < event["ts"] < inner["ts"] + inner["dur"]:
                event["dur"] = inner["ts"] + inner["dur"] - event["ts"] + 0.001
                break
            ends[event["tid"]] = event
    path.write_text(json.dumps(document))
    assert seen_by_the_engine(path) != calls_of(story)


def test_speedscope_shows_its_three_formats_without_a_warning(export):
    paths = [export(SAMPLE, "speedscope", ending="speedscope.json"),
             export(SAMPLE, "chrome", ending="json"),
             export(SAMPLE, "callgrind", ending="callgrind")]
    # It knows callgrind's format by the file's name.
    paths[2] = paths[2].rename(paths[2].with_name("callgrind.out.1"))
    for told in node("speedscope.mjs", *paths):
        assert told["warnings"] == []
        assert told["title"] != "speedscope"
    # A call never closes, a call never opens, a line is cut off.
    damages = [(r',\n\{"type":"C"[^\n]*\n\]\}\]', "\n]}]"), (r'"ph":"X"', '"ph":"E"'),
               (r"\ncalls=", r"\ncal\ncalls=")]
    for path, (pattern, replacement) in zip(paths, damages):
        text = path.read_text()
        path.write_text(re.sub(pattern, replacement, text, count=1))
        assert path.read_text() != text
    for told in node("speedscope.mjs", *paths):
        assert told["warnings"] != [], told["title"]


def annotated(path, *options):
    """What callgrind_annotate says of each function."""
    text = output_of("callgrind_annotate", "--auto=no", "--threshold=100", *options, path)
    return {name: int(number.replace(",", "")) for number, name in
            re.findall(r"^ *([\d,]+) \([^)]*\)  [^:\n]*:(\S+::\S+)", text, re.MULTILINE)}


def test_callgrind_annotate_adds_up_to_stats(export):
    told = json.loads(run_program("stats", SAMPLE, "--json", program="sonascope").stdout)["rows"]
    assert all(row["cut_off"] + row["unfinished"] == 0 for row in told)
    inclusive, self_times = {}, {}
    for row in told:
        if row["calls"]:
            name = f"{row['driver']}::{row['method']}"
            inclusive[name] = inclusive.get(name, 0) + row["outermost_ns"]
            self_times[name] = self_times.get(name, 0) + row["self_ns"]
    path = export(SAMPLE, "callgrind")

    def sums_are_right():
        return (annotated(path, "--inclusive=yes") == inclusive
                and annotated(path) == {name: time for name, time in self_times.items() if time})

    assert sums_are_right()
    text = path.read_text()
    path.write_text(re.sub(r"(fn=QuorraHAL::Client\n0 )(\d+)", r"\g<1>1\2", text, count=1))
    assert not sums_are_right()


def test_flamegraph_draws_folded(export):
    script = "/usr/share/perl5/Devel/NYTProf/flamegraph.pl"
    path = export(SAMPLE, "folded", "--waiting", "omit")
    drawn = output_of("perl", script, "--minwidth", "0", path)
    frames = {frame for line in path.read_text().splitlines()
              for frame in line.rpartition(" ")[0].split(";")}
    assert {name for name in frames if f"<title>{name} (" in drawn} == frames
    path.write_text(path.read_text().replace(" ", ""))
    assert "ERROR" in subprocess.run(["perl", script, path], capture_output=True, text=True,
                                     check=False, timeout=60).stdout


SQL = """SELECT {code}, count(*), sum(duration_ns), sum(self_ns),
    min(CASE WHEN place * 100 >= 50 * n THEN duration_ns END),
    min(CASE WHEN place * 100 >= 90 * n THEN duration_ns END),
    min(CASE WHEN place * 100 >= 99 * n THEN duration_ns END)
FROM (SELECT *, row_number() OVER (PARTITION BY code ORDER BY duration_ns) AS place,
             count(*) OVER (PARTITION BY code) AS n FROM {calls} WHERE ended = 'finished') AS placed
GROUP BY code"""


def by_sqlite(path):
    text = output_of("sqlite3", "-json", path, SQL.format(code="code", calls="calls"))
    return {f"0x{code:08X}": numbers
            for code, *numbers in (row.values() for row in json.loads(text))}


def by_duckdb(path):
    rows = node("duckdb.mjs", SQL.format(code="code", calls=f"'{path}'"))
    return {("0" + code if code[0] == "x" else code): list(map(int, numbers))
            for code, *numbers in rows}


def by_jq(path):
    program = """[.[] | select(.ended == "finished")] | group_by(.code)[]
        | (map(.duration_ns) | sort) as $times | ($times | length) as $n
        | [.[0].code, $n, ($times | add), (map(.self_ns) | add)]
          + ([50, 90, 99] | map($times[((. * $n + 99) / 100 | floor) - 1]))"""
    lines = output_of("jq", "-sc", program, path).splitlines()
    return {code: numbers for code, *numbers in map(json.loads, lines)}


def by_miller(path):
    finished = ["mlr", "--icsv", "--ojsonl", "filter", '$ended == "finished"', "then"]
    sums = output_of(*finished, "stats1", "-a", "count,sum", "-f", "duration_ns,self_ns", "-g",
                     "code", path)
    found = {"0" + row["code"]: [row["duration_ns_count"], row["duration_ns_sum"],
                                 row["self_ns_sum"]] for row in map(json.loads, sums.splitlines())}
    for percent in (50, 90, 99):
        lines = output_of(*finished, "sort", "-nf", "duration_ns", "then", "cat", "-n", "-g", "code",
                          "-N", "place", "then", "count-similar", "-g", "code", "-o", "n", "then",
                          "filter", f"$place * 100 >= {percent} * $n", "then", "head", "-n", "1",
                          "-g", "code", path)
        for row in map(json.loads, lines.splitlines()):
            found["0" + row["code"]].append(row["duration_ns"])
    return found


def ask_lnav(query, path):
    """The rows of a query, by lnav with our format and nothing else of this machine."""
    home = path.parent / "home"
    home.mkdir(exist_ok=True)
    # It waits for standard input to end, but does not see the end of a file there.
    options = {"env": os.environ | {"HOME": str(home), "XDG_CONFIG_HOME": ""},
               "stdin": subprocess.DEVNULL}
    output_of("lnav", "-i", SOURCE / "plugins/lnav/sonascope.json", **options)
    text = output_of("lnav", "-n", "-c", f";{query}", "-c", ":write-json-to -", path, **options)
    return [list(row.values()) for row in json.loads(text or "[]")]


def by_lnav(path):
    rows = ask_lnav(SQL.format(code="code", calls="sonascope"), path)
    return {code: numbers for code, *numbers in rows}


@pytest.mark.parametrize("reader, name", [
    (by_sqlite, "sqlite"), (by_duckdb, "json"), (by_duckdb, "csv"), (by_jq, "json"),
    (by_miller, "csv"), (by_lnav, "json")])
def test_counts_and_percentiles_are_those_of_stats(reader, name, story, export):
    rows = [] if name == "sqlite" else ["--what", "calls", "--kernel-time"]
    path = export(story, name, *rows)
    assert reader(path) == stats(story)
    if name == "sqlite":
        output_of("sqlite3", path, "DELETE FROM calls WHERE slot = (SELECT max(slot) FROM calls "
                                   "WHERE ended = 'finished')")
    else:
        lines = path.read_text().splitlines(keepends=True)
        del lines[len(lines) // 2]
        path.write_text("".join(lines))
    assert reader(path) != stats(story)


def test_lnav_reads_records(export):
    path = export(SAMPLE, "json", "--kernel-time")
    columns = ["slot", "driver", "method", "code", "qualifier", "thread", "cpu", "object", "failure",
               "text"]
    # Its own jget() cuts numbers to 32 bits.
    query = (f"SELECT {', '.join(columns)}, ifnull(json_extract(log_raw_text, '$.values.result'), '') "
             "FROM sonascope ORDER BY slot")
    truth = [[*(row[name] for name in columns), str(row["values"].get("result", ""))]
             for row in map(json.loads, path.read_text().splitlines())]
    assert ask_lnav(query, path) == truth
    path.write_text(path.read_text().replace('"cpu":0,', '"cpu":0', 1))
    assert ask_lnav(query, path) != truth


FLEET = (SOURCE / "docs/fleet.md").read_text()
VIEW, QUESTION = re.findall(r"^```sql\n(.*?);\n```$", FLEET, re.MULTILINE | re.DOTALL)


def fleet(folder):
    """100 traces of as many machines; the name of the last driver call before each dropout."""
    told = {}
    for number in range(100):
        path = folder / f"machine{number}.raw"
        run_program("write", "all" if number % 2 else "playback", path, "--records", 3000,
                    "--seed", number, program="sonaprobe-sim")
        text = run_program("lines", path, "--json", program="sonascope").stdout
        name = None
        for row in list(map(json.loads, text.splitlines()))[1:]:
            if row["code"] == "0x21040000" and name:
                told.setdefault(name, []).append(number)
            elif row["qualifier"] == "end" and row["code"].startswith("0x0524"):
                name = f"{row['driver']}::{row['method']}"
    return [{"name": name, "dropouts": len(hosts), "machines": len(set(hosts))}
            for name, hosts in sorted(told.items(), key=lambda item: (-len(item[1]), item[0]))]


@pytest.fixture(scope="module")
def partitions(tmp_path_factory):
    """The partitions of a fleet, and what is true of it."""
    folder = tmp_path_factory.mktemp("fleet")
    truth = fleet(folder)
    assert truth
    result = run_program("export", *sorted(folder.glob("*.raw")), "--to", "json", "--partition",
                         "--date", "2026-11-22", "-o", folder / "table", program="sonascope")
    assert (result.stderr, result.returncode) == ("", 0)
    return folder / "table", truth


def test_the_fleets_question_in_duckdb(partitions, tmp_path):
    whole, truth = partitions
    table = shutil.copytree(whole, tmp_path / "table")

    def answer():
        view = VIEW.replace("CREATE VIEW records AS", "WITH records AS (") + "), last"
        query = QUESTION.replace("WITH last", view, 1).replace("'table/", f"'{table}/")
        return [{"name": name, "dropouts": int(dropouts), "machines": int(machines)}
                for name, dropouts, machines in node("duckdb.mjs", query)]

    assert answer() == truth
    for part in list(table.rglob("part-*.json"))[:60]:
        part.unlink()
    assert answer() != truth


RECORDS = "host String, slot UInt64, code String, driver String, method String, qualifier String"
DISTRIBUTED_QUESTION = """SELECT name, count() AS dropouts, uniqExact(host) AS machines FROM (
    SELECT host, dropout, argMax(name, slot) AS name FROM (
        SELECT host, slot AS dropout FROM records WHERE code = '0x21040000')
    ALL INNER JOIN (
        SELECT host, slot, concat(driver, '::', method) AS name FROM records
        WHERE qualifier = 'end' AND code LIKE '0x0524%') USING host
    WHERE slot < dropout GROUP BY host, dropout)
GROUP BY name ORDER BY dropouts DESC, name"""


def test_the_fleets_question_in_two_clickhouse_servers(partitions, tmp_path):
    whole, truth = partitions
    with clickhouse.servers(tmp_path) as ports:
        for port in ports:
            clickhouse.query(port, f"CREATE TABLE part ({RECORDS}) ENGINE = MergeTree "
                                   "ORDER BY (host, slot)")
        for number, path in enumerate(sorted(whole.rglob("part-*.json"))):
            host = path.parent.parent.name.removeprefix("host=")
            rows = path.read_text().replace('{"slot":', f'{{"host":"{host}","slot":')
            clickhouse.query(ports[number % 2], "INSERT INTO part FORMAT JSONEachRow", rows.encode())
        clickhouse.query(ports[0], f"CREATE TABLE records ({RECORDS}) "
                                   "ENGINE = Distributed(fleet, default, part)")

        def answer():
            return [{"name": name, "dropouts": int(dropouts), "machines": int(machines)}
                    for name, dropouts, machines in clickhouse.query(ports[0],
                                                                     DISTRIBUTED_QUESTION)]

        assert answer() == truth
        clickhouse.query(ports[1], "DROP TABLE part")
        clickhouse.query(ports[1], f"CREATE TABLE part ({RECORDS}) ENGINE = Memory")
        assert answer() != truth
