"""Every rule is found in one report, silent in one, and not judged in one; the table and the manual are one."""

import functools
import json
import re

import pytest
from conftest import ROOT, RULES, run

MANUAL = (ROOT / "docs" / "reading-a-report.md").read_text(encoding="utf-8")
LEVELS = ["untrusted", "explains", "contributes", "worth-knowing"]


def listed_rules():
    return [line.split(None, 2) for line in run("--list-rules")[0].splitlines()]


@functools.cache
def explained(rule):
    return run("--explain", rule)[0]


def judged():
    names = sorted(path.name for path in RULES.glob("*.report.txt"))
    reports = [json.loads(line) for line in run("--json", *names)[0].splitlines()]
    assert [report["report"] for report in reports] == names
    return {report["report"]: {finding["rule"]: finding for finding in report["findings"]} for report in reports}


@pytest.fixture(name="findings", scope="module")
def findings_fixture():
    return judged()


def test_every_rule_has_exactly_one_pair():
    pairs = {path.stem for path in RULES.glob("*.json")}
    assert pairs == {rule for _, rule, _ in listed_rules()}


def test_found_as_the_pair_says(findings):
    for path in sorted(RULES.glob("*.json")):
        expected = json.loads(path.read_text(encoding="utf-8"))
        assert findings[f"{path.stem}.report.txt"][path.stem] == expected["found"]
        assert expected["found"]["answer"] == "found"
        assert findings[expected["silent_in"]][path.stem]["answer"] == "not_found"
        missing = findings[expected["not_judged_in"]][path.stem]
        assert missing["answer"] == "not_judged"
        assert missing["missing"], "it says which section is missing"


def test_findings_refer_to_lines_with_text(findings):
    for name, rules in findings.items():
        lines = (RULES / name).read_text(encoding="utf-8").split("\n")
        for finding in rules.values():
            for line in finding["lines"]:
                assert lines[line - 1].strip(), (name, finding)


def test_levels_and_order():
    levels = [level for level, _, _ in listed_rules()]
    assert levels == sorted(levels, key=LEVELS.index)
    assert set(levels) == set(LEVELS)


def test_manual_and_rules_match():
    sections = re.split(r'^<a id="([a-z0-9-]+)"></a>$', MANUAL, flags=re.MULTILINE)
    told = {}
    for anchor, text in zip(sections[1::2], sections[2::2]):
        line = re.search(r"^Rules - (.*?)\.$", text, flags=re.MULTILINE | re.DOTALL)
        for part in line[1].split(";") if line else []:
            level, ids = part.split(":")
            for rule in re.findall(r"`([a-z0-9-]+)`", ids):
                assert rule not in told
                told[rule] = (anchor, level.strip())
    table = {}
    for level, rule, _ in listed_rules():
        table[rule] = (re.search(r"reading-a-report\.md#(\S+)", explained(rule))[1], level)
    assert told == table


def test_explain_says_what_the_rule_is():
    text, _ = run("--explain", "product-running")
    assert text.startswith("product-running: Vistrel was running during the test\n")
    assert "Level       The report cannot be trusted" in text
    assert "share-fatal" in re.search(r"Spoils(.*)Ask", text, re.DOTALL)[1]
    _, complaint = run("--explain", "no-such-rule", status=2)
    assert "no-such-rule" in complaint


def test_doubtful_findings_give_a_reason(findings):
    finding = findings["product-running.report.txt"]["capture-taken"]
    assert finding["answer"] == "found"
    assert finding["doubtful_because"] == ["product-running"]
    text, _ = run("product-running.report.txt")
    assert "The verdict of this report cannot be judged: Vistrel was running during the test." in text
    assert "doubtful because of product-running" in text


def test_no_wording_blames_the_user():
    every = "".join(explained(rule) for _, rule, _ in listed_rules())
    every += "".join(path.read_text(encoding="utf-8") for path in RULES.glob("*.json"))
    for word in ["you should have", "you forgot", "your fault", "wrongly", "mistake", "failed to", "must "]:
        assert word not in every.lower()


def test_only_one_level():
    text, _ = run("--only", "contributes", "share-fatal.report.txt")
    assert "\nContributes:\n" in text
    assert "Explains the trouble:\n" not in text
    run("--only", "everything", "share-fatal.report.txt", status=2)


def test_reply_asks_at_most_three_things():
    for path in sorted(RULES.glob("*.report.txt")):
        text, _ = run("--reply", path.name)
        assert text.startswith("Hello,\n")
        assert 0 <= len(re.findall(r"^\d\. ", text, re.MULTILINE)) <= 3
        assert max(map(len, text.splitlines())) <= 72
    text, _ = run("--reply", "product-running.report.txt")
    assert re.search(r"^1\. Please close Vistrel and the program that hosts it", text, re.MULTILINE)
