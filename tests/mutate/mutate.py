"""Changes one thing in the product's sources at a time and lists the changes that no test notices.

    tests/mutate/run                            every source of the product: a night and more
    tests/mutate/run settings platform/utf8.cpp    these folders and files
    tests/mutate/run --sample 3                 at most so many changes of each source, of different kinds
    tests/mutate/run --minutes 240              stops after this time; the next run continues from there
    tests/mutate/run --system golden gpus       also tries the survivors on these tests of whole runs
    tests/mutate/run --list settings            only names the changes

Results for a source are kept in build/mutate/results.jsonl until the source changes. --again tries the survivors
again, after tests were added. The survivors go to build/mutate/survivors.txt in the form of equivalent.txt,
which lists those that change nothing that a user or support could notice, with the reason. The exit code is 1 when a
survivor is not in that list, or the list names a change that does not exist.
"""

import argparse
import collections
import hashlib
import json
import pathlib
import queue
import re
import sys
import threading
import time

import trial
from changes import changes_of
from trial import KILLED, NOT_BUILT, ROOT, SURVIVED, UNSEEN, WORK, within

STAGES = ("native", "report", "sanitized", "windows")
EQUIVALENT = pathlib.Path(__file__).resolve().parent / "equivalent.txt"
RESULTS = WORK / "results.jsonl"
SURVIVORS = WORK / "survivors.txt"
FIGURES = WORK / "figures.txt"


class Mutant:
    """One change of one source."""

    def __init__(self, path, text, change, digest):
        self.path = path
        self.text = text
        self.change = change
        self.key = f"{path} {digest} {change.start} {change.end} {change.new}"
        self.line = change.line_number(text)
        self.before, self.after = change.lines(text)

    def __str__(self):
        return f"{self.path}:{self.line}  {self.change.kind}\n- {self.before}\n+ {self.after}\n"


def mutants_of(path):
    text = (ROOT / path).read_text(encoding="utf-8")
    digest = hashlib.sha256(text.encode()).hexdigest()[:16]
    return [Mutant(path, text, change, digest) for change in changes_of(text)]


def chosen_sources(names):
    """All sources of the product that are, or lie in, what is named."""
    sources = trial.product_sources()
    names = [name.removeprefix("./").rstrip("/") for name in names]
    if unknown := [name for name in names if not any(within(name, path) for path in sources)]:
        raise SystemExit(f"mutate: no source of the product: {', '.join(unknown)}")
    return [path for path in sources if not names or any(within(name, path) for name in names)]


def sampled(mutants, count):
    """At most `count` changes of each source, as many kinds as possible; the same ones until their lines change."""
    by_source = collections.defaultdict(list)
    seen = collections.Counter()
    kinds = collections.Counter()
    for mutant in mutants:
        text = f"{mutant.path}\n{mutant.before}\n{mutant.after}"
        seen[text] += 1
        by_source[mutant.path].append((hashlib.sha256(f"{text}\n{seen[text]}".encode()).digest(), mutant))
    chosen = set()
    for path, candidates in by_source.items():
        ranked = []
        for digest, mutant in sorted(candidates, key=lambda candidate: candidate[0]):
            kinds[path, mutant.change.kind] += 1
            ranked.append((kinds[path, mutant.change.kind], digest, mutant.key))
        chosen.update(key for _, _, key in sorted(ranked)[:count])
    return [mutant for mutant in mutants if mutant.key in chosen]


class Equivalents:
    """The judged changes of equivalent.txt: a path, `- ` the line before, `+ ` the line after, and the reason below.

    A path followed by `(N)` means the Nth change of this text in the source, where it occurs more than once. Three dots
    match any text.
    """

    def __init__(self, text):
        self.entries = []
        for number, block in enumerate(re.split(r"\n\s*\n", "\n".join(remove_comments(text)).strip())):
            if block.strip():
                self.entries.append(self._entry(block.strip().split("\n"), number + 1))
        self.used = set()

    @staticmethod
    def _entry(lines, number):
        if len(lines) < 4 or not lines[1].startswith("- ") or not lines[2].startswith("+ "):
            raise SystemExit(f"mutate: equivalent.txt, entry {number}: a path, a line '- ', a line '+ ' and a reason")
        path = re.fullmatch(r"(\S+?)(?: \((\d+)\))?", lines[0])
        return path[1], path[2] and int(path[2]), pattern(lines[1][2:]), pattern(lines[2][2:])

    def holds(self, mutant, occurrence):
        for entry in self.entries:
            path, number, before, after = entry
            if path == mutant.path and number in (None, occurrence):
                if before.fullmatch(mutant.before) and after.fullmatch(mutant.after):
                    self.used.add(entry)
                    return True
        return False

    def vanished(self, paths):
        """The entries for these sources that name no change of theirs."""
        return [f"{path}: - {before.pattern}" for path, n, before, after in self.entries
                if path in paths and (path, n, before, after) not in self.used]  # fmt: skip


def remove_comments(text):
    return [line for line in text.split("\n") if not line.startswith("#")]


def pattern(line):
    return re.compile(".*".join(re.escape(part) for part in line.split("...")))


class Results:
    """The known results, in a file that grows during the run."""

    def __init__(self, path):
        self.path = path
        self.known = {}
        self.lock = threading.Lock()
        if path.exists():
            for line in path.read_text(encoding="utf-8").splitlines():
                entry = json.loads(line)
                self.known[entry["key"]] = (entry["verdict"], entry["by"])

    def add(self, mutant, verdict, by):
        with self.lock:
            self.known[mutant.key] = (verdict, by)
            self.path.parent.mkdir(parents=True, exist_ok=True)
            with self.path.open("a", encoding="utf-8") as file:
                file.write(json.dumps({"key": mutant.key, "verdict": verdict, "by": by}) + "\n")

    def verdict(self, mutant):
        return self.known.get(mutant.key, (None, ""))[0]


def judged_equivalent(mutants, equivalents):
    """Those in the list, by their key; the same change of a source counts from 1, among all of them."""
    counts = collections.Counter()
    judged = set()
    for mutant in mutants:
        counts[mutant.path, mutant.before, mutant.after] += 1
        if equivalents.holds(mutant, counts[mutant.path, mutant.before, mutant.after]):
            judged.add(mutant.key)
    return judged


class Run:
    """Tries the changes without a result, source by source, on one tree or several."""

    def __init__(self, options, results, out=sys.stdout):
        self.options = options
        self.results = results
        self.stages = list(options.stages) + (["system"] if options.system else [])
        self.deadline = time.monotonic() + options.minutes * 60 if options.minutes else None
        self.out = out
        self.done = 0
        self.failures = []

    def try_all(self, by_source, make_tree=trial.Tree):
        self.total = sum(map(len, by_source.values()))
        waiting = queue.Queue()
        for item in by_source.items():
            waiting.put(item)
        workers = [
            threading.Thread(target=self._work, args=(waiting, make_tree(number, self.options.system)))
            for number in range(1, self.options.jobs + 1)
        ]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        if self.failures:
            raise SystemExit("mutate: the tests fail without any change: " + "; ".join(self.failures))

    def _work(self, waiting, tree):
        try:
            tree.copy_sources()
            while not self._is_late():
                path, mutants = waiting.get_nowait()
                tree.check_unchanged(path, self.stages)
                for mutant in mutants:
                    if self._is_late():
                        return
                    self._try(tree, mutant)
        except queue.Empty:
            return
        except trial.TheTestsFail as failure:
            self.failures.append(str(failure))

    def _is_late(self):
        return bool(self.failures) or self.deadline is not None and time.monotonic() > self.deadline

    def _try(self, tree, mutant):
        verdict, by = tree.try_out(mutant.path, mutant.change.applied_to(mutant.text), self.stages)
        self.results.add(mutant, verdict, by)
        self.done += 1
        told = f"{verdict}, by {by}" if verdict == KILLED else verdict
        print(f"[{self.done}/{self.total}] {told}: {mutant}", file=self.out, flush=True)


def is_left(verdict):
    return verdict in (SURVIVED, UNSEEN)


def report(mutants, results, judged, out=sys.stdout):
    """Prints the counts, writes the survivors, and returns those not judged yet."""
    left = [mutant for mutant in mutants if is_left(results.verdict(mutant)) and mutant.key not in judged]
    counts = collections.Counter(results.verdict(mutant) or "not tried" for mutant in mutants if mutant.key not in judged)
    counts["judged equivalent"] = sum(mutant.key in judged for mutant in mutants)
    kinds = (KILLED, SURVIVED, UNSEEN, NOT_BUILT, "judged equivalent", "not tried")
    figures = "".join(f"{'changes, ' + kind:<34} {counts[kind]}\n" for kind in kinds)
    print(figures, end="", file=out)
    SURVIVORS.parent.mkdir(parents=True, exist_ok=True)
    FIGURES.write_text(figures, encoding="utf-8")
    SURVIVORS.write_text("\n".join(map(str, left)), encoding="utf-8")
    for mutant in left:
        print(f"\n{results.verdict(mutant)}: {mutant}", end="", file=out)
    return left


def parse_options(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("names", nargs="*", metavar="FILE_OR_FOLDER")
    parser.add_argument("--again", action="store_true", help="try the survivors of earlier runs anew")
    parser.add_argument("--jobs", type=int, default=1, help="trees that work side by side")
    parser.add_argument("--kind", help="only changes of this kind")
    parser.add_argument("--list", action="store_true", help="only name the changes")
    parser.add_argument("--minutes", type=float, help="stop after so long")
    parser.add_argument("--sample", type=int, metavar="COUNT", help="at most so many changes of each source")
    parser.add_argument("--stages", nargs="+", choices=STAGES, default=list(STAGES))
    parser.add_argument("--system", nargs="+", default=[], metavar="NAME", help="tests/system/test_NAME.py")
    return parser.parse_args(arguments)


def main():
    options = parse_options()
    sources = chosen_sources(options.names)
    mutants = [mutant for path in sources for mutant in mutants_of(path) if options.kind in (None, mutant.change.kind)]
    every = mutants
    if options.sample is not None:
        mutants = sampled(mutants, options.sample)
    if options.list:
        print("\n".join(map(str, mutants)))
        return 0
    results = Results(RESULTS)
    equivalents = Equivalents(EQUIVALENT.read_text(encoding="utf-8"))
    judged = judged_equivalent(every, equivalents)
    by_source = {}
    for mutant in mutants:
        verdict = results.verdict(mutant)
        if mutant.key not in judged and (verdict is None or options.again and is_left(verdict)):
            by_source.setdefault(mutant.path, []).append(mutant)
    Run(options, results).try_all(by_source)
    left = report(mutants, results, judged)
    vanished = equivalents.vanished(set(sources)) if options.kind is None else []
    for entry in vanished:
        print(f"equivalent.txt names a change that does not exist: {entry}")
    return 1 if left or vanished else 0


if __name__ == "__main__":
    sys.exit(main())
