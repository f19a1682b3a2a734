"""Compares the program's verdict with an independent computation of it, on inputs at and around every threshold.

    python3 verdict_reference.py DRIVER [ARGUMENT ...]

DRIVER is verdict_driver.cpp's program (with whatever starts it). Every verdict is compared whole, to the blank. Ends
with 1 and shows the first differences when any verdict differs.
"""

import difflib
import itertools
import math
import random
import struct
import subprocess
import sys
from dataclasses import dataclass, replace
from typing import List, Optional, Tuple

LEAST_CASES = 200


@dataclass(frozen=True)
class Case:
    warps: Tuple[Tuple[int, int, float], ...] = ((3440, 1440, 4.0),)
    model: Optional[float] = None
    game_fps: float = 0.0
    desktop_fps: float = 0.0
    refresh: int = 0
    part_two: bool = False
    limit: float = 30.0
    depth_mode: int = 0

    def line(self) -> str:
        warps = [str(len(self.warps))]
        for width, height, ms in self.warps:
            warps += [str(width), str(height), repr(ms)]
        model = "none" if self.model is None else repr(self.model)
        return " ".join(warps + [model, repr(self.game_fps), repr(self.desktop_fps), str(self.refresh),
                                 str(int(self.part_two)), repr(self.limit), str(self.depth_mode)])


# The independent computation. -----------------------------------------------------------------------------------

def section(title: str) -> List[str]:
    return ["", "== " + title + " " + "=" * (62 - len(title))]


def row(*cells: str) -> str:
    return "  " + " ".join(cell.ljust(width) for cell, width in zip(cells, (9, 13, 14, 14)))


def model_rate(case: Case) -> Tuple[float, bool, str]:
    """Inferences a second, whether the model is too slow, and what holds the rate down."""
    seen = case.game_fps if case.game_fps > 1 else case.desktop_fps
    want = seen if seen > 1 else 90.0
    capped = case.limit if case.limit < want else want
    best = 1000.0 / case.model if case.model > 0 else math.inf
    if capped > best:
        return best, True, "the model cannot go faster than that on this GPU"
    return capped, False, "capped by your frame rate" if case.limit > want else "capped by the FPS limit"


def model_lines(case: Case) -> List[str]:
    rate, slow, reason = model_rate(case)
    cost = "The AI model costs %.2f ms per inference" % case.model
    if rate < 1:
        lines = [cost + " - one map every %.1f seconds. It cannot run even once a second on this GPU."
                 % (case.model / 1000)]
    else:
        lines = [cost + ", and would run about %.0f times a second (%s)." % (rate, reason)]
    if slow:
        lines.append(">>> The depth map cannot keep up with the picture here. Every figure below assumes it runs as "
                     "often as it can, which is far less often than you asked for.")
    return lines


def judgement(case: Case, model_load: float, warp_load: float) -> List[str]:
    reshade = case.depth_mode == 1
    share = (warp_load if reshade else model_load + warp_load) / 10
    lines = ["", "Taking 90 Hz and the mode this machine is set to (%s):" % ("ReShade depth" if reshade else "AI depth")]
    if share > 50:
        lines.append(">>> FOUND IT. Vistrel takes more than half the GPU on its own (%.0f%%). The larger of the two "
                     "costs above is the lever." % share)
    elif share > 25:
        lines.append(">>> Vistrel takes a significant slice (%.0f%%) but not a fatal one. Worth trimming, though "
                     "something else is likely contributing too." % share)
    else:
        lines.append(">>> Vistrel's own rendering is NOT the bottleneck here - it uses %.0f%% of the GPU." % share)
        lines.append(">>> If games are still slow, look at the VRAM figures from part 2, the SteamVR render "
                     "resolution, or the game simply needing the whole GPU by itself.")
    if case.model is not None and warp_load / 10 < 15:
        lines.append(">>> Note: on the ReShade path Vistrel costs only %.0f%% here. If games are just as slow in "
                     "THAT mode, the cause is almost certainly not Vistrel's rendering at all." % (warp_load / 10))
    if not case.part_two:
        lines.append(">>> Part 2 was skipped, so nothing above accounts for VRAM pressure or a cross-GPU capture. "
                     "Both can cause this on their own.")
    return lines


def measured(case: Case) -> List[str]:
    width, height, warp = case.warps[0]
    lines = ["At %dx%d the warp costs %.2f ms per headset frame, for both eyes." % (width, height, warp)]
    for other_width, other_height, ms in case.warps[1:]:
        if ms > 0 and warp / ms > 1.05:
            lines.append("  Dropping the desktop to %dx%d would make it %.1fx cheaper (%.2f ms)."
                         % (other_width, other_height, warp / ms, ms))
    lines.append("")
    model_load = 0.0
    if case.model is not None:
        model_load = model_rate(case)[0] * case.model
        lines += model_lines(case)
    lines += ["", "What that adds up to, as a share of this GPU's time. Read the row for your headset:", "",
              row("REFRESH", "warp", "AI depth mode", "ReShade mode")]
    for rate in sorted({72, 90, 120, 144} | ({case.refresh} if case.refresh >= 1 else set())):
        warp_load = rate * warp
        both = "?" if case.model is None else "%.0f%%" % ((model_load + warp_load) / 10)
        lines.append(row("%d Hz" % rate, "%.0f ms/s" % warp_load, both, "%.0f%%" % (warp_load / 10)))
    lines += ["", "Whatever is left over is what the game and the SteamVR compositor share. The warp is paid in both "
              "modes; the model only in AI mode."]
    return lines + judgement(case, model_load, warp * 90.0)


def expected(case: Case) -> List[str]:
    lines = section("VERDICT")
    if case.warps:
        lines += measured(case)
    else:
        lines.append("The warp could not be measured, so no verdict. The sections above are still worth reading.")
    return lines + [
        "", "NOT measured by this tool:",
        "  - the depth stage around the model: pre-process, upsample, edge restore. Only the model's own Run is timed.",
        "  - the SteamVR compositor's own cost",
        "  - the game's cost, and how much VRAM it wants",
        "  - the ReShade add-on's two per-frame copies inside the game process"]


# The inputs. ----------------------------------------------------------------------------------------------------

def around(value: float) -> List[float]:
    """The value, its neighbours, and values a little and clearly off it."""
    return [value, math.nextafter(value, -math.inf), math.nextafter(value, math.inf),
            value * 0.999, value * 1.001, value * 0.9, value * 1.1]


def single(value: float) -> float:
    """The nearest single-precision number, as the settings hold one."""
    return struct.unpack("f", struct.pack("f", value))[0]


def single_neighbours(value: float) -> List[float]:
    bits = struct.unpack("I", struct.pack("f", value))[0]
    return [struct.unpack("f", struct.pack("I", bits + step))[0] for step in (-1, 0, 1)]


def with_warp(case: Case, ms: float) -> Case:
    return replace(case, warps=((3440, 1440, ms),))


def ratio_cases():
    for other in [4.0 / 1.05, 3.0, 2.0, 4.0, 8.0, 0.0, 1e-9] + around(4.0 / 1.05):
        yield Case(warps=((3440, 1440, 4.0), (2560, 1440, other), (1920, 1080, 2.0)))
    for head in around(1.05) + around(2.1):
        yield Case(warps=((1920, 1080, head), (2560, 1440, 1.0), (800, 600, 2.0)))
    yield Case(warps=((3440, 1440, 4.0), (2560, 1440, 3.0), (1920, 1080, 2.0)), model=8.0, game_fps=60.0)


def rate_cases():
    for model in around(1000.0) + [1500.0, 0.0, 1e-6, 50.0, 33.25, 20.0] + around(1000.0 / 30.0) + around(1000.0 / 90.0):
        for limit in (30.0, 120.0):
            yield Case(model=model, game_fps=60.0, limit=limit, part_two=True)
            yield Case(model=model, limit=limit)
    for limit in single_neighbours(1.0) + [0.0, 0.5, -5.0, 2.5]:
        yield Case(model=10.0, limit=limit)
    for fps in around(1.0) + [0.0, 0.4]:
        yield Case(model=10.0, game_fps=fps, desktop_fps=45.5, limit=1000.0)
        yield Case(model=10.0, desktop_fps=fps, limit=1000.0)


def tie_cases():
    for want in (30.0, 59.5, 90.0):
        for limit in single_neighbours(want):
            yield Case(model=4.0, game_fps=want, limit=limit, part_two=True)
            yield Case(model=4.0, desktop_fps=want, limit=limit)
            yield Case(model=1000.0 / want, game_fps=want, limit=limit, part_two=True)
    for limit in single_neighbours(90.0):
        yield Case(model=4.0, limit=limit)


def share_cases():
    for boundary in (500.0, 250.0, 150.0):
        for warp in around(boundary / 90.0):
            for mode in (0, 1, 2, -1):
                yield with_warp(Case(depth_mode=mode), warp)
            yield with_warp(Case(model=7.0, limit=10.0, depth_mode=1, part_two=True), warp)
    # 360 + 20 * 7 is exactly 500; 180 + 10 * 7 is exactly 250.
    for model in around(7.0):
        yield with_warp(Case(model=model, limit=20.0, game_fps=60.0, part_two=True), 4.0)
        yield with_warp(Case(model=model, limit=10.0, game_fps=60.0, part_two=True), 2.0)
        yield with_warp(Case(model=model, limit=20.0, game_fps=60.0, depth_mode=1), 4.0)


def refresh_cases():
    for refresh in (-2**31, -90, -1, 0, 1, 2, 71, 72, 73, 80, 89, 90, 91, 100, 119, 120, 121, 143, 144, 145, 165, 1000,
                    999999999, 2**31 - 1):
        yield Case(refresh=refresh)
        yield Case(refresh=refresh, model=12.5, game_fps=72.0, part_two=True)


def odd_number_cases():
    for limit in (math.nan, math.inf, -math.inf, single(3.4e38), single(-3.4e38), single(1e-45), -0.0):
        for model in (None, 8.0, 1500.0):
            yield Case(model=model, game_fps=60.0, limit=limit, part_two=True)
            yield Case(model=model, limit=limit, depth_mode=1)
    # Halves, which round to even.
    for ms in (0.125, 0.375, 2.5 / 90, 0.005, 0.0, 0.25, 1.25, 33.0, 1e6, 123456789.0):
        yield with_warp(Case(model=ms, limit=10.0), ms)
        yield with_warp(Case(), ms)


def no_warp_cases():
    yield Case(warps=())
    yield Case(warps=(), model=8.0, game_fps=60.0, part_two=True, refresh=100, depth_mode=1)


def random_cases(count: int):
    source = random.Random(20240229)
    for _ in range(count):
        warps = tuple((source.randrange(1, 8000), source.randrange(1, 5000), 10 ** source.uniform(-2, 2))
                      for _ in range(source.randrange(1, 5)))
        yield Case(warps=warps, model=source.choice([None, 10 ** source.uniform(-1, 3.5)]),
                   game_fps=source.choice([0.0, source.uniform(0, 240)]),
                   desktop_fps=source.choice([0.0, source.uniform(0, 240)]),
                   refresh=source.choice([0, source.randrange(-10, 500)]), part_two=source.random() < 0.5,
                   limit=single(source.choice([30.0, source.uniform(-1, 200)])), depth_mode=source.choice([0, 1, 2]))


def all_cases() -> List[Case]:
    return list(itertools.chain(ratio_cases(), rate_cases(), tie_cases(), share_cases(), refresh_cases(),
                                odd_number_cases(), no_warp_cases(), random_cases(200)))


# The comparison. ------------------------------------------------------------------------------------------------

def printed(driver: List[str], cases: List[Case]) -> List[List[str]]:
    run = subprocess.run(driver, input="".join(case.line() + "\n" for case in cases).encode(), stdout=subprocess.PIPE,
                         check=True)
    text = run.stdout.decode().replace("\r\n", "\n")
    assert text.endswith("@@\n"), "the driver did not reach its end"
    return [verdict.split("\n")[:-1] for verdict in text.split("@@\n")[:-1]]


def main() -> int:
    cases = all_cases()
    assert len(set(cases)) >= LEAST_CASES, len(set(cases))
    verdicts = printed(sys.argv[1:], cases)
    assert len(verdicts) == len(cases), (len(verdicts), len(cases))
    differing = [(case, verdict) for case, verdict in zip(cases, verdicts) if verdict != expected(case)]
    for case, verdict in differing[:5]:
        print(case)
        print("\n".join(difflib.unified_diff(expected(case), verdict, "expected", "printed", lineterm="", n=0)))
    print("%d verdicts compared, %d differ" % (len(cases), len(differing)))
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
