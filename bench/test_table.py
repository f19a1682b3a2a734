"""The table's own reading and judging of what the bench programs print."""

import math

import pytest

import measurements
from table import Row, line_of, parse_rows


def test_rows_are_found_among_words_for_a_person():
    output = "480x270: stamps 1.5 ms\nratio\twarp\twall clock\t0.975000\t0.950000\t1.050000\nratio\tcalls\tloop\t2.5\t\t\n"
    assert parse_rows(output) == [Row("warp", "wall clock", 0.975, 0.95, 1.05), Row("calls", "loop", 2.5)]


def test_a_broken_row_is_no_row():
    with pytest.raises(ValueError):
        parse_rows("ratio\twarp\t0.975\n")


@pytest.mark.parametrize(
    "ratio, at_least, at_most, wanted, verdict",
    [
        (1.0, 0.98, 1.02, "0.98 .. 1.02", "ok"),
        (0.97, 0.98, 1.02, "0.98 .. 1.02", "short"),
        (1.03, 0.98, 1.02, "0.98 .. 1.02", "short"),
        (2.9, None, 3.0, "<= 3", "ok"),
        (3.1, None, 3.0, "<= 3", "short"),
        (0.5, 1.0, None, ">= 1", "short"),
        (1.0, 1.0, 1.0, "1", "ok"),
        (math.nan, None, 3.0, "<= 3", "short"),
        (92.0, None, None, "-", "-"),
    ],
)
def test_a_ratio_is_judged_by_its_bounds(ratio, at_least, at_most, wanted, verdict):
    row = Row("this", "that", ratio, at_least, at_most)
    assert (row.wanted, row.verdict) == (wanted, verdict)
    assert line_of(row).split() == ["this", "that", f"{ratio:.3f}", *wanted.split(), verdict]


def test_the_words_of_the_log_are_those_of_the_tool():
    words = measurements.markers()
    assert {"DepthEstimator", "ReShade mode", "Failed"} <= set(words)
