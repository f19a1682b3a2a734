"""The middle ratio of as many pairs as its accuracy requires, like bench/ratio.h for the bench programs."""

import dataclasses
import math


@dataclasses.dataclass
class MiddleRatio:
    ratio: float
    give: float = 0.0  # half of the interval that holds the true middle, at 95 %, as a part of the ratio
    pairs: int = 0
    steady: bool = True  # as accurate as requested


def middle_of(ratios, precision):
    ordered = sorted(ratios)
    count = len(ordered)
    first = max(0, math.floor(count / 2 - 0.98 * math.sqrt(count)))
    ratio = (ordered[(count - 1) // 2] + ordered[count // 2]) / 2
    give = (ordered[count - 1 - first] - ordered[first]) / 2 / ratio
    return MiddleRatio(ratio, give, count, give <= precision)


def take_pairs(pair, precision, least=9, most=45):
    """`pair` makes one pair and answers the ratios that it gave, by their name; so does this, with the middle ones.

    It stops when all of them are known closely enough or the most are taken: when depends on how they scatter, never on
    the ratios themselves.
    """
    taken = {}
    middles = {}
    for count in range(1, most + 1):
        for name, ratio in pair().items():
            taken.setdefault(name, []).append(ratio)
        middles = {name: middle_of(ratios, precision) for name, ratios in taken.items()}
        if count >= least and all(middle.steady for middle in middles.values()):
            break
    return middles
