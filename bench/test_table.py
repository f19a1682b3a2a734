"""The table's own reading and judging of what the bench programs print."""

import math

import pytest

import measurements
from pairs import MiddleRatio, middle_of, take_pairs
from table import Row, line_of, parse_rows, row_of


def test_rows_are_found_among_words_for_a_person():
    output = (
        "480x270: stamps 1.5 ms\nratio\twarp\twall clock\t0.975000\t0.950000\t1.050000\t0.012000\t21\tunsteady\n"
        "ratio\tcalls\tloop\t2.5\t\t\t0.000000\t0\tsteady\n"
    )
    warp = Row("warp", "wall clock", 0.975, 0.95, 1.05, 0.012, 21, False)
    assert parse_rows(output) == [warp, Row("calls", "loop", 2.5)]


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
    assert line_of(row).split() == ["this", "that", f"{ratio:.3f}", "-", "-", *wanted.split(), verdict]


def test_a_ratio_that_is_not_known_closely_is_no_result():
    row = row_of("this", "that", MiddleRatio(1.0, 0.071, 45, False), None, 1.1)
    assert line_of(row).split() == ["this", "that", "1.000", "7.1%", "45", "<=", "1.1", "unsteady"]


def test_the_middle_ratio_and_how_closely_it_is_known():
    assert middle_of([1.0] * 9, 0.01) == MiddleRatio(1.0, 0.0, 9, True)
    assert middle_of([3.0, 1.0, 2.0], 0.5) == MiddleRatio(2.0, 0.5, 3, True)
    ratios = [float(n) for n in range(1, 102)]
    # Of 101 ratios the 41st and the 61st hold the true middle, at 95 %.
    assert middle_of(ratios, 0.2) == MiddleRatio(51.0, 10 / 51, 101, True)
    assert not middle_of(ratios, 0.19).steady


def pairs_of(*ratios, **closeness):
    left = iter(ratios)
    return take_pairs(lambda: {"it": next(left)}, **closeness)["it"]


def test_steady_pairs_are_the_fewest():
    assert pairs_of(*[1.5] * 50, precision=0.01, least=9, most=45).pairs == 9


def test_pairs_that_scatter_are_more():
    middle = pairs_of(*[0.9, 1.1] * 3, *[1.0] * 50, precision=0.01, least=6, most=45)
    assert 6 < middle.pairs < 45 and middle.steady and middle.ratio == 1.0


def test_there_are_never_more_than_the_most():
    middle = pairs_of(*[0.5, 1.5] * 50, precision=0.01, least=9, most=20)
    assert middle.pairs == 20 and not middle.steady


def test_every_ratio_of_a_pair_must_be_steady():
    shaky = iter([0.5, 1.5] * 50)
    middles = take_pairs(lambda: {"calm": 1.0, "shaky": next(shaky)}, precision=0.01, least=9, most=20)
    assert (middles["calm"].pairs, middles["shaky"].pairs) == (20, 20)


def test_the_words_of_the_log_are_those_of_the_tool():
    words = measurements.markers()
    assert {"DepthEstimator", "ReShade mode", "Failed"} <= set(words)
