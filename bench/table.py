#!/usr/bin/env python3
"""The table of ratios: runs every measurement inside a lab session and prints one line for each.

    bench/table.py [--megabytes N] [NAME ...]

NAME picks measurements (`--list` names them). Their own words, absolute times among them, go to build/logs/bench.log.
A ratio of two times is the middle one of pairs, of which as many are taken as it needs to be known closely (`+-`, at
95 %); one that is not after the most is unsteady. The exit code is 1 when a ratio is that, or lies outside of what is
wanted.
"""

import argparse
import dataclasses
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
LOG = ROOT / "build" / "logs" / "bench.log"


@dataclasses.dataclass
class Row:
    """One ratio, and the bounds it has to keep; None is no bound."""

    what: str
    baseline: str
    ratio: float
    at_least: float | None = None
    at_most: float | None = None
    give: float = 0.0  # how closely the ratio is known, as a part of it; 0 for what was counted
    pairs: int = 0
    steady: bool = True

    @property
    def wanted(self):
        if self.at_least is None and self.at_most is None:
            return "-"
        if self.at_least is None:
            return f"<= {self.at_most:g}"
        if self.at_most is None:
            return f">= {self.at_least:g}"
        if self.at_least == self.at_most:
            return f"{self.at_least:g}"
        return f"{self.at_least:g} .. {self.at_most:g}"

    @property
    def verdict(self):
        """"-" for rows that are only informative."""
        if self.at_least is None and self.at_most is None:
            return "-"
        if not self.steady:
            return "unsteady"
        low = self.at_least is not None and self.ratio < self.at_least
        high = self.at_most is not None and self.ratio > self.at_most
        return "short" if low or high or self.ratio != self.ratio else "ok"


def parse_rows(output):
    """The rows in what a bench program printed; everything else in it is for a person."""
    rows = []
    for line in output.splitlines():
        fields = line.split("\t")
        if fields[0] != "ratio":
            continue
        if len(fields) != 9 or fields[8] not in ("steady", "unsteady"):
            raise ValueError(f"not a row: {line!r}")
        bounds = [float(bound) if bound else None for bound in fields[4:6]]
        rows.append(Row(fields[1], fields[2], float(fields[3]), *bounds, float(fields[6]), int(fields[7]), fields[8] == "steady"))
    return rows


def row_of(what, baseline, middle, at_least=None, at_most=None):
    """A row of the middle ratio of pairs."""
    return Row(what, baseline, middle.ratio, at_least, at_most, middle.give, middle.pairs, middle.steady)


LINE = "{:<50} {:<32} {:>8} {:>6} {:>6} {:>14}  {}"
HEADER = LINE.format("WHAT", "BASELINE", "RATIO", "+-", "PAIRS", "WANTED", "")


def line_of(row):
    closeness = (f"{100 * row.give:.1f}%", row.pairs) if row.pairs else ("-", "-")
    return LINE.format(row.what, row.baseline, f"{row.ratio:.3f}", *closeness, row.wanted, row.verdict)


def main():
    import measurements

    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--list", action="store_true", help="name the measurements")
    parser.add_argument("--megabytes", type=int, default=1024, help="of product log (1024)")
    parser.add_argument("names", nargs="*", metavar="NAME")
    arguments = parser.parse_args()
    known = measurements.all_of_them(arguments.megabytes)
    if arguments.list:
        print("\n".join(known))
        return 0
    if unknown := set(arguments.names) - set(known):
        parser.error(f"no measurement of the name {', '.join(sorted(unknown))}; --list names them")

    LOG.parent.mkdir(parents=True, exist_ok=True)
    rows = []
    print(HEADER, flush=True)
    with LOG.open("w", encoding="utf-8") as log:
        for name in arguments.names or known:
            for row in known[name](log):
                rows.append(row)
                print(line_of(row), flush=True)
    return 0 if all(row.verdict in ("ok", "-") for row in rows) else 1


if __name__ == "__main__":
    sys.exit(main())
