"""export: the formats as their grammars have them, and a whole file or none."""

import csv
import gzip
import io
import json
import os
import pathlib
import re
import signal
import sqlite3
import subprocess

import pytest

from conftest import BUILD, run_program
from processes import started, wait_until
from schemas import valid
from scope import (ENABLE, END, FORMAT, OVERLOAD, POINT, START, divisor, nested_calls, record,
                   scope)

TEXTS = ["json", "csv", "chrome", "speedscope", "folded", "callgrind"]
# Four characters of its start's text are whatever arg3 says.
FOUR_CHARACTERS = 0x0524C82C
UNKNOWN = 0x01400004


@pytest.fixture
def trace(tmp_path):
    path = tmp_path / "trace.raw"
    path.write_bytes(nested_calls())
    return path


@pytest.fixture(scope="module")
def story(tmp_path_factory):
    """A trace of everything that the simulator plays."""
    path = tmp_path_factory.mktemp("story") / "all.raw"
    run_program("write", "all", path, "--records", 20000, "--seed", 3, program="sonaprobe-sim")
    return path


def exported(trace, name, *arguments, **options):
    result = scope("export", trace, "--to", name, *arguments, text=False, errors=None, **options)
    assert (result.stderr, result.returncode) == (b"", 0)
    return result.stdout.decode()


def rows(trace, *arguments):
    return [valid("export", line)
            for line in exported(trace, "json", *arguments).splitlines()]


def csv_rows(text):
    return list(csv.DictReader(io.StringIO(text, newline=""), strict=True))


def database(trace, path, *arguments):
    assert exported(trace, "sqlite", "-o", path, *arguments) == ""
    return sqlite3.connect(path)


@pytest.mark.parametrize("name", ["json", "csv"])
def test_several_threads_make_the_rows_of_one(story, name, tmp_path):
    for options in ((), ("--from", "1s", "--failed"), ("--what", "calls"), ("--kernel-time",)):
        alone = exported(story, name, "--jobs", "1", *options)
        assert exported(story, name, "--jobs", "3", *options) == alone
        assert exported(story, name, "-j", "3", "-o", tmp_path / "new", "--force", *options) == ""
        assert (tmp_path / "new").read_bytes().decode() == alone


def test_json_has_one_object_a_record(trace):
    found = rows(trace)
    assert found[2] == {
        "slot": 3, "time_ns": 500_000, "driver": "OrvelHDAPath", "method": "setPathFormat",
        "code": "0x05245C1C", "qualifier": "end", "thread": "0x00000000000000a5", "cpu": 0,
        "object": "0x0000000000000010", "failure": True,
        "text": "End - result: 0xe00002bc", "values": {"result": 0xE00002BC}}
    assert [row["slot"] for row in found] == [1, 2, 3, 4, 5]


@pytest.mark.parametrize("what", ["records", "calls", "stats"])
def test_each_line_of_json_has_the_same_fields_and_types(story, what):
    found = rows(story, "--what", what)
    assert len({tuple(row) for row in found}) == 1
    for name in found[0]:
        types = {type(row[name]) for row in found} - {type(None)}
        assert len(types) <= 1, name


def test_json_and_csv_calls(trace):
    inner, outer = rows(trace, "--what", "calls")
    assert (inner["method"], inner["duration_ns"], inner["depth"]) == ("setPathFormat", 400_000, 1)
    assert (outer["method"], outer["duration_ns"], outer["self_ns"]) == ("enable", 10**6, 600_000)
    assert (inner["failure"], outer["failure"]) == (True, False)
    table = csv_rows(exported(trace, "csv", "--what", "calls"))
    assert [row["end_text"] for row in table] == [inner["end_text"], outer["end_text"]]


@pytest.mark.parametrize("what", ["records", "calls", "stats"])
def test_csv_says_the_same_as_json(story, what):
    def as_csv(name, value):
        if name in ("thread", "object", "code"):
            return value.removeprefix("0")
        if isinstance(value, dict):
            return json.dumps(value, separators=(",", ":"))
        return {True: "true", False: "false", None: ""}.get(value, value) \
            if isinstance(value, bool | None) else str(value)

    text = exported(story, "csv", "--what", what)
    table = csv_rows(text)
    assert table == [{name: as_csv(name, value) for name, value in row.items()}
                     for row in rows(story, "--what", what)]
    assert text.count("\r\n") == text.count("\n") == len(table) + 1


def test_csv_without_rows_has_its_head(trace):
    assert exported(trace, "csv", "--from", "1h").startswith("slot,time_ns,driver,method,")
    assert exported(trace, "csv", "--from", "1h", "--what", "stats").count("\n") == 1


def test_statistics_are_those_of_stats(story):
    told = json.loads(scope("stats", story, "--json").stdout)["rows"]
    found = rows(story, "--what", "stats")
    assert [row["self_ns"] for row in found] == [row["self_ns"] for row in told]
    for row, line in zip(told, found):
        for name in row.keys() - {"name", "share"}:
            assert line[name] == row[name], name


def events(trace, *arguments):
    return json.loads(exported(trace, "chrome", *arguments))["traceEvents"]


def test_chrome_has_calls_points_and_thread_names(tmp_path):
    path = tmp_path / "dropout.raw"
    path.write_bytes(nested_calls() + record(OVERLOAD, START, 2000))
    found = events(path)
    assert [(event["tid"], event["args"]["name"]) for event in found if event["ph"] == "M"] == [
        (0, "drivers"), (1, "thread 0xa5"), (2, "thread 0xb6")]
    calls = [event for event in found if event["ph"] == "X"]
    assert [(call["name"], call["ts"], call["dur"], call.get("cname")) for call in calls] == [
        ("OrvelHDAPath::enable", 0, 1000, None),
        ("OrvelHDAPath::setPathFormat", 100, 400, "terrible")]
    assert calls[1]["args"]["end_values"]["result"] == 0xE00002BC
    assert [(event["s"], event["ts"]) for event in found if event["ph"] == "i"] == [
        ("t", 1500), ("g", 2000)]


def test_chrome_is_sorted_in_microseconds_with_three_decimals(story):
    text = exported(story, "chrome")
    times = [float(time) for time in re.findall(r'"ts":(\d+\.\d{3}),', text)]
    assert times == sorted(times)
    assert len(times) == len(re.findall(r'"ph":"[Xi]"', text))
    assert len(re.findall(r'"dur":\d+\.\d{3},', text)) == text.count('"ph":"X"') > 5000


def test_chrome_has_each_call_once_however_long(story):
    calls = rows(story, "--what", "calls")
    found = [event["args"]["slot"] for event in events(story) if event["ph"] == "X"]
    assert sorted(found) == sorted(call["slot"] for call in calls)
    assert any(call["end_slot"] - call["slot"] > 10000 for call in calls)


def test_speedscope_has_a_profile_a_thread(trace):
    document = json.loads(exported(trace, "speedscope"))
    [profile] = document["profiles"]
    assert profile["name"] == "thread 0xa5" and profile["unit"] == "nanoseconds"
    names = [frame["name"] for frame in document["shared"]["frames"]]
    assert [(event["type"], names[event["frame"]], event["at"]) for event in profile["events"]] == [
        ("O", "OrvelHDAPath::enable", 0), ("O", "OrvelHDAPath::setPathFormat", 100_000),
        ("C", "OrvelHDAPath::setPathFormat", 500_000), ("C", "OrvelHDAPath::enable", 1_000_000)]


def test_folded_shows_waiting_apart_or_not_at_all(tmp_path):
    io_thread, io_cycle = OVERLOAD + 4, OVERLOAD + 8
    path = tmp_path / "waiting.raw"
    path.write_bytes(divisor() + b"".join([
        record(io_thread, START, 0), record(io_cycle, START, 100), record(io_cycle, END, 150),
        record(io_thread, END, 1000)]))
    cycle = "thread 0xa5;QuorraHAL::IOThread;QuorraHAL::IOCycle 50000\n"
    assert exported(path, "folded", "--waiting", "omit") == cycle
    assert exported(path, "folded") == (
        "thread 0xa5;QuorraHAL::IOThread;waiting 950000\n" + cycle)


def test_callgrind_gives_each_thread_a_function(tmp_path):
    path = tmp_path / "recursion.raw"
    path.write_bytes(divisor() + b"".join([
        record(ENABLE, START, 0), record(ENABLE, START, 100), record(ENABLE, END, 300),
        record(ENABLE, END, 1000)]))
    text = exported(path, "callgrind")
    assert text.endswith(
        "summary: 1000000\n\n"
        "fl=threads\nfn=thread 0xa5\n0 0\ncfi=OrvelHDAPath\ncfn=OrvelHDAPath::enable\ncalls=1 0\n"
        "0 1000000\n\n"
        "fl=OrvelHDAPath\nfn=OrvelHDAPath::enable\n0 800000\ncfi=OrvelHDAPath\n"
        "cfn=OrvelHDAPath::enable'2\ncalls=1 0\n0 200000\n\n"
        "fl=OrvelHDAPath\nfn=OrvelHDAPath::enable'2\n0 200000\n")


def test_sqlite_holds_records_calls_values_and_events(trace, tmp_path):
    with database(trace, tmp_path / "trace.db") as found:
        assert found.execute("SELECT count(*) FROM records").fetchone() == (5,)
        assert found.execute("SELECT slot, parent, duration_ns, self_ns, failure FROM calls "
                             "ORDER BY slot").fetchall() == [
            (1, None, 1_000_000, 600_000, 0), (2, 1, 400_000, 400_000, 1)]
        assert found.execute('SELECT name, value FROM "values" WHERE slot = 3 '
                             "ORDER BY name").fetchall() == [
            ("result", 0xE00002BC)]
        assert found.execute("SELECT hex, driver, method FROM events ORDER BY code").fetchall() == [
            ("0x05245C0C", "OrvelHDAPath", "enable"), ("0x05245C1C", "OrvelHDAPath",
                                                       "setPathFormat")]
        assert found.execute("PRAGMA integrity_check").fetchone() == ("ok",)
        assert found.execute("PRAGMA journal_mode").fetchone() == ("delete",)  # no WAL


def test_sqlite_has_the_findings_of_info_and_why(tmp_path):
    sample = os.environ["SONAPROBE_SOURCE_DIR"] + "/docs/sample/playback-dropout.raw"
    [dropout] = json.loads(scope("why", sample, "--json").stdout)["dropouts"]
    with database(sample, tmp_path / "sample.db") as found:
        assert found.execute("SELECT slot, cause, certainty, culprit_slot FROM dropouts"
                             ).fetchall() == [(dropout["slot"], dropout["cause"],
                                               dropout["certainty"], dropout["culprit"]["slot"])]
    broken = tmp_path / "broken.raw"
    broken.write_bytes(nested_calls() + bytes(10))
    told = json.loads(scope("info", broken, "--json").stdout)["files"][0]["findings"]
    with database(broken, tmp_path / "broken.db") as found:
        assert found.execute("SELECT slot, meaning FROM findings ORDER BY slot").fetchall() == [
            (finding["slot"], finding["meaning"]) for finding in told]


def test_sqlite_counts_as_stats_does(story, tmp_path):
    columns = ["calls", "finished", "total_ns", "self_ns", "mean_ns", "p50_ns", "p90_ns", "p99_ns",
               "max_ns", "cut_off", "unfinished"]
    told = {row["code"]: [row[name] for name in columns]
            for row in json.loads(scope("stats", story, "--json").stdout)["rows"] if row["calls"]}
    with database(story, tmp_path / "story.db") as found:
        rows_found = found.execute(f"SELECT hex, {', '.join(columns)} FROM statistics").fetchall()
    assert {code: numbers for code, *numbers in rows_found} == told


def test_the_selections_end_is_to_as_well(trace):
    assert [row["slot"] for row in rows(trace, "--from", "100us", "--to", "1ms")] == [2, 3]
    assert len(events(trace, "--longer", "1ms")) == 3 + 1
    [row] = rows(trace, "--failed")
    assert row["slot"] == 3


def test_kernel_time(trace):
    assert rows(trace, "--kernel-time")[0]["time_ns"] == 1_000_000_000


@pytest.mark.parametrize("arguments, message", [
    ([], "--to FORMAT is missing; see sonascope export --help"),
    (["--to", "jsn"], "--to: 'jsn' is no format; the nearest is 'json'; see sonascope export "
                      "--help"),
    (["--to", "sqlite"], "a database is a file; give it a name with -o"),
])
def test_what_is_wrong_with_the_command_line_is_said(trace, arguments, message):
    result = scope("export", trace, *arguments)
    assert (result.stdout, result.stderr, result.returncode) == ("", f"sonascope: {message}\n", 2)


HOSTILE = b"=cmd()|\x01\"',;\\</script>\xff\xc3\x28\x1b[31m"


@pytest.fixture
def hostile(tmp_path):
    """A trace whose words are an attacker's: a name from a file, and four characters of a value."""
    (tmp_path / "names").write_bytes(b"%#x\t%s\n" % (UNKNOWN, HOSTILE))
    path = tmp_path / "hostile.raw"
    slots = [divisor()]
    for number, byte in enumerate(range(0, 256, 4)):
        word = int.from_bytes(bytes(range(byte, byte + 4)), "big")
        slots += [record(UNKNOWN, START, 10 * number),
                  record(FOUR_CHARACTERS, START, 10 * number + 1, a3=word),
                  record(UNKNOWN, END, 10 * number + 5)]
    path.write_bytes(b"".join(slots))
    return path, tmp_path / "names"


@pytest.mark.parametrize("name", TEXTS)
def test_no_byte_of_a_file_breaks_a_format(name, hostile):
    path, names = hostile
    result = scope("export", path, "--to", name, "--names", names, text=False, errors=None)
    assert result.returncode == 0
    text = result.stdout.decode("ascii")
    assert re.fullmatch(r"[ -~\r\n]+", text)
    assert "</script>" not in text or name in ("csv", "folded", "callgrind")
    escaped = "\\x01\"',;\\</script>\\xff\\xc3(\\x1b[31m"
    if name == "json":
        assert escaped in {row["method"][7:] for row in map(json.loads, text.splitlines())}
        assert {"\\x00\\x01\\x02\\x03", "\\x1c\\x1d\\x1e\\x1f", "`abc"} <= {
            row["values"].get("speakerVendor") for row in map(json.loads, text.splitlines())}
    elif name == "csv":
        assert {row["method"] for row in csv_rows(text)} > {"'=cmd()|" + escaped}
    elif name in ("chrome", "speedscope"):
        assert escaped in str(json.loads(text)).replace("\\\\", "\\").replace("\\'", "'")
    elif name == "folded":
        assert all(re.fullmatch(r"[^;]+(;[^;]+)* \d+", line) for line in text.splitlines())


def test_no_byte_of_a_file_is_sql(hostile, tmp_path):
    path, names = hostile
    with database(path, tmp_path / "hostile.db", "--names", names) as found:
        [(method,)] = found.execute("SELECT method FROM events WHERE driver = ''").fetchall()
        assert method.startswith("=cmd()|\\x01\"',;\\</script>")


@pytest.mark.parametrize("name", [*TEXTS, "json --jobs 3", "csv --jobs 3"])
def test_a_reader_that_leaves_ends_the_export(name, story):
    command = f"{BUILD}/sonascope export {story} --to {name} | head -c 100 | wc -c"
    result = subprocess.run(["sh", "-c", command], capture_output=True, text=True, check=False)
    assert (result.stdout.strip(), result.stderr) == ("100", "")


def test_json_comes_while_the_trace_still_grows(story):
    data = story.read_bytes()[:64 * 500]
    with started(BUILD / "sonascope", "export", "-", "--to", "json", stdin=subprocess.PIPE,
                 stdout=subprocess.PIPE) as process:
        process.stdin.write(data)
        process.stdin.flush()
        assert process.stdout.readline().startswith(b'{"slot":1,')
        process.stdout.close()
        process.stdin.close()


@pytest.mark.parametrize("name", TEXTS)
def test_a_full_disk_is_told(name, story):
    with open("/dev/full", "w", encoding="ascii") as full:
        result = run_program("export", story, "--to", name, program="sonascope",
                             capture_output=False, stdout=full, stderr=subprocess.PIPE)
    assert result.stderr == ("sonascope: could not write to standard output: No space left on "
                             "device\n")
    assert result.returncode == 2


@pytest.mark.parametrize("name", [*TEXTS, "sqlite"])
def test_a_disk_that_fills_up_leaves_no_file(name, trace, tmp_path):
    def limit():
        import resource
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))

    folder = tmp_path / "new"
    folder.mkdir()
    result = scope("export", trace, "--to", name, "-o", folder / "file", preexec_fn=limit)
    assert result.stderr.startswith(f"sonascope: could not write {folder}/file: ")
    assert (result.returncode, os.listdir(folder)) == (2, [])


@pytest.mark.parametrize("name", ["json", "sqlite"])
def test_a_file_that_exists_is_kept_unless_forced(name, trace, tmp_path):
    path = tmp_path / "file"
    path.write_text("precious")
    result = scope("export", trace, "--to", name, "-o", path)
    assert (result.stderr, result.returncode) == (
        f"sonascope: {path} exists; give --force to write over it\n", 2)
    assert path.read_text() == "precious"
    exported(trace, name, "-o", path, "--force")
    assert path.read_bytes() != b"precious"


def test_ctrl_c_leaves_no_file(trace, tmp_path):
    folder = tmp_path / "new"
    folder.mkdir()
    with started(BUILD / "sonascope", "export", "-", "--to", "json", "-o", folder / "file",
                 stdin=subprocess.PIPE) as process:
        process.stdin.write(trace.read_bytes() * 20)
        process.stdin.flush()
        wait_until(lambda: os.listdir(folder))
        process.send_signal(signal.SIGINT)
        assert process.wait() == -signal.SIGINT
    assert os.listdir(folder) == []


def test_a_pipe_is_read_once_or_copied(trace, tmp_path):
    whole = exported(trace, "chrome")
    with trace.open() as stream:
        assert exported("-", "chrome", stdin=stream) == whole
    with trace.open() as stream:
        exported("-", "sqlite", "-o", tmp_path / "pipe.db", stdin=stream)
    with sqlite3.connect(tmp_path / "pipe.db") as found:
        assert found.execute("SELECT count(*) FROM calls").fetchone() == (2,)


QUERIES = re.findall(r"^```sql\n(.*?)^```$", pathlib.Path(
    os.environ["SONAPROBE_SOURCE_DIR"], "docs/sql.md").read_text(), re.MULTILINE | re.DOTALL)


@pytest.fixture(scope="module")
def story_database(story):
    path = story.with_suffix(".db")
    exported(story, "sqlite", "-o", path)
    return path


def test_there_are_ten_queries():
    assert len(QUERIES) == 10


@pytest.mark.parametrize("query", QUERIES, ids=range(1, 11))
def test_each_query_of_the_page_answers(query, story_database):
    with sqlite3.connect(story_database) as found:
        cursor = found.execute(query)
        assert cursor.fetchall() != []
        assert None not in [column[0] for column in cursor.description]


def test_partitions_are_named_after_host_and_day(trace, tmp_path):
    other = tmp_path / "studio 7=a.raw.gz"
    other.write_bytes(gzip.compress(nested_calls()))
    os.utime(other, (1_763_000_000, 1_763_000_000))
    table = tmp_path / "table"
    assert exported(trace, "json", "--partition", "-o", table, "--date", "2026-11-22", other) == ""
    assert exported(other, "csv", "--partition", "-o", table, "--host", "../x") == ""
    assert sorted(str(path.relative_to(table)) for path in table.rglob("*.*s*")) == [
        "host=_._x/date=2025-11-13/part-studio_7_a.csv",
        "host=studio_7_a/date=2026-11-22/part-studio_7_a.json",
        "host=trace/date=2026-11-22/part-trace.json"]
    part = table / "host=trace/date=2026-11-22/part-trace.json"
    assert part.read_text() == exported(trace, "json")


@pytest.mark.parametrize("arguments, message", [
    (["--to", "json", "--partition"], "--partition needs a folder; give it with -o"),
    (["--to", "chrome", "--partition", "-o", "/nowhere"], "--partition is for json and csv"),
    (["--to", "json", "second.raw"], "several files need --partition"),
])
def test_what_partitions_need_is_said(trace, arguments, message):
    result = scope("export", trace, *arguments)
    assert (result.stdout, result.stderr, result.returncode) == ("", f"sonascope: {message}\n", 2)
