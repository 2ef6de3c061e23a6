"""sonascope tree against the reference's calls, merged by their paths."""

from collections import Counter

import pytest

import calls
from cases import CODES, POINT_CODES, pack
from random_trace import random_trace
from sonascope import ask

A, B, X = f"0x{CODES['A']:08X}", f"0x{CODES['B']:08X}", f"0x{CODES['X']:08X}"


def name(node):
    return node.get("thread", node.get("code"))


def paths_of(nodes):
    """Each path of a listed tree, with (calls, time, self time) of its node."""
    paths = []
    for node in nodes:
        above = () if node["parent"] is None else paths[node["parent"]]
        paths.append((*above, name(node)))
    assert len(set(paths)) == len(paths)
    return {path: (node["calls"], node["time_ns"], node["self_ns"])
            for path, node in zip(paths, nodes)}


def paths_of_reference(trace, by_thread):
    count, time, self_time = Counter(), Counter(), Counter()
    for call in trace.calls:
        path, at = [], call
        while at is not None:
            path.insert(0, f"0x{at.start.code:08X}")
            at = at.parent
        if by_thread:
            path.insert(0, f"0x{call.start.thread:016x}")
            if call.depth == 0:
                count[path[0],] += 1
                time[path[0],] += call.time
        path = tuple(path)
        count[path] += 1
        time[path] += call.time
        self_time[path] += call.self_time
    return {path: (count[path], min(time[path], calls.LATEST),
                   min(self_time[path], calls.LATEST)) for path in count}


@pytest.mark.parametrize("by", ["all", "thread"])
@pytest.mark.parametrize("seed", range(3, 400, 10))
def test_random_trace(by, seed, tmp_path):
    data = random_trace(seed)
    (tmp_path / "trace.raw").write_bytes(data)
    answer = ask("tree", tmp_path / "trace.raw", "--by", by, "--depth", "100000")
    trace = calls.read(data, POINT_CODES)
    assert paths_of(answer["tree"]) == paths_of_reference(trace, by == "thread")


@pytest.fixture
def trace(tmp_path):
    """A(B(X) X) B(X), ten nanoseconds from record to record."""
    marks = [("A", 1), ("B", 1), ("X", 1), ("X", 2), ("B", 2), ("X", 1), ("X", 2), ("A", 2),
             ("B", 1), ("X", 1), ("X", 2), ("B", 2)]
    path = tmp_path / "trace.raw"
    path.write_bytes(b"".join(pack(CODES[event] | qualifier, 10 * place, 1)
                              for place, (event, qualifier) in enumerate(marks)))
    return path


def test_callers_lead_from_the_method_outwards(trace):
    assert paths_of(ask("tree", trace, "--path", "0x01400004")["callers"]) == {
        (X,): (3, 30, 30), (X, A): (1, 10, 10), (X, B): (2, 20, 20), (X, B, A): (1, 10, 10)}


def test_callees_are_merged_over_all_callers(trace):
    assert paths_of(ask("tree", trace, "--path", "0x05245C10")["callees"]) == {
        (B,): (2, 60, 40), (B, X): (2, 20, 20)}


def test_siblings_stand_with_the_largest_first_after_their_parent(trace):
    nodes = ask("tree", trace)["tree"]
    assert [(name(node), node["parent"]) for node in nodes] == [
        (A, None), (B, 0), (X, 1), (X, 0), (B, None), (X, 4)]


def test_depth_and_share_limit_what_is_shown(trace):
    assert list(paths_of(ask("tree", trace, "--depth", "1")["tree"])) == [(A,), (B,)]
    assert list(paths_of(ask("tree", trace, "--min", "25")["tree"])) == [(A,), (A, B), (B,)]
