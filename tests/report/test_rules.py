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


ONE_MODEL = ("Model           : Distill Fast (518x294) (518x294)\n"
             "Inference       : 9.14 ms median (9.14 min, 9.14 max) over 15 runs\n\n"
             "Re-run without --no-models to time every preset and see what the cheaper ones would cost here.\n")


def findings_with_table(row, name="part-two-missing.report.txt"):
    """The findings of a report whose models are a table, with `row` for the model that the settings name."""
    text = (RULES / name).read_text(encoding="utf-8")
    assert ONE_MODEL in text
    table = ("MODEL                         median ms        min        max\n"
             "Square Fast (256)                  1.00       1.00       1.00\n"
             f"{row}\n"
             "Distill High (798x448)             9.00       9.00       9.00\n")
    report = json.loads(run("--json", "-", stdin=text.replace(ONE_MODEL, table).encode())[0])
    assert report["lines_not_understood"] == 0
    return {finding["rule"]: finding for finding in report["findings"]}, report


def test_the_configured_model_in_a_table():
    findings, report = findings_with_table("Distill Fast (518x294)             9.14       9.14       9.14   <- YOURS")
    assert findings["model-not-timed"]["answer"] == "not_found"
    error = "onnxruntime: Run was aborted by the device, which crashed"
    findings, report = findings_with_table(f"Distill Fast (518x294)                -  ({error})")
    assert findings["model-not-timed"]["answer"] == "found"
    assert "Distill Fast (518x294)" in findings["model-not-timed"]["says"]
    assert [model["configured"] for model in report["models"]] == [False, True, False]
    # What the runtime says of itself is no end of a process.
    assert findings["section-crashed"]["answer"] == "not_found"
    assert report["broken_sections"] == []
    findings, _ = findings_with_table("Distill Fast (518x294)                -  (model file not found)")
    assert findings["model-not-timed"]["answer"] == "not_found"


def test_ways_in_which_a_model_ends_its_process():
    for end in ["crashed in nvwgf2umx.dll (access violation, 0xC0000005)", "aborted", "ended its process (exit code 3)",
                "gave no sign of life for 120 seconds and was ended", "could not be waited for and was ended"]:
        findings, report = findings_with_table(f"Distill Fast (518x294)                -  ({end})")
        assert findings["section-crashed"]["answer"] == "found"
        assert report["broken_sections"][0]["cause"] == f'"Distill Fast (518x294)" {end}'


def test_a_settings_file_that_cannot_be_parsed_was_found(findings):
    assert findings["settings-unreadable.report.txt"]["defaults-measured"]["answer"] == "not_found"
    assert findings["settings-unreadable.report.txt"]["wrong-folder"]["answer"] == "not_found"


def test_the_reply_to_a_report_of_which_a_part_is_missing():
    text = (RULES / "headset-awake.report.txt").read_bytes()
    whole, _ = run("--reply", "-", stdin=text)
    assert "whole file" not in whole
    for part in [text[:text.index(b"NOT measured by this tool:")], text[text.index(b"== MACHINE"):]]:
        reply, _ = run("--reply", "-", stdin=part)
        assert "Please send us the whole file vistrel_diag_report.txt" in reply
        assert "It is complete" not in reply
