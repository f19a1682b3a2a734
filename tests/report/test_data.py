"""JSON and CSV: every field is documented, nothing personal leaks, and the queries of the manual work."""

import csv
import io
import json
import re
import subprocess

import pytest
from conftest import ROOT, RULES, run

PAGE = (ROOT / "docs" / "report-data.md").read_text(encoding="utf-8")
ALL = sorted(path.name for path in RULES.glob("*.report.txt"))


def fields(value, path=""):
    """Every path that leads to a value: "gpus[].name"."""
    if isinstance(value, dict):
        return {p for key, inner in value.items() for p in fields(inner, f"{path}.{key}" if path else key)}
    if isinstance(value, list):
        return {p for inner in value for p in fields(inner, path + "[]")} or {path + "[]"}
    return {path}


def documented():
    table = PAGE[PAGE.index("## The JSON object") : PAGE.index("## The columns")]
    rows = [line.split("|")[1] for line in table.splitlines() if line.startswith("| `")]
    return {name for row in rows for name in re.findall(r"`([^`]+)`", row)}


def all_reports(*options):
    return [json.loads(line) for line in run("--json", *options, *ALL)[0].splitlines()]


def test_json_fields_and_documentation_match():
    seen = set()
    for report in all_reports("--with-personal-data"):
        seen |= fields(report)
    # A parent that is null or empty in one report has its fields in another one.
    leaves = {f for f in seen if not any(other != f and other.startswith((f + ".", f + "[]", f.removesuffix("[]") + "[].")) for other in seen)}
    assert leaves == documented()


@pytest.mark.parametrize("written, source", [("AI model", "AI"), ("ReShade native depth", "ReShade")])
def test_the_depth_source(written, source):
    report = (RULES / "share-fatal.report.txt").read_text(encoding="utf-8").replace("Depth source    : AI model", f"Depth source    : {written}")
    settings = json.loads(run("--json", "-", stdin=report.encode("utf-8"))[0])["settings"]
    assert settings["depth_source"] == source


def test_a_gpu_that_only_part_two_names():
    report = (RULES / "game-slow.report.txt").read_text(encoding="utf-8")
    begin, end = (report.index(f"\n== {title} ") for title in ("GPUs", "DISPLAYS"))
    report = report[:begin] + report[end:].replace("  GPU 0 NVIDIA GeForce RTX 3070    ", "  GPU 3 NVIDIA GeForce RTX 3070    ")
    (gpu,) = json.loads(run("--json", "-", stdin=report.encode("utf-8"))[0])["gpus"]
    assert (gpu["number"], gpu["name"]) == (3, "NVIDIA GeForce RTX 3070")


def test_schema_number():
    assert {report["schema"] for report in all_reports()} == {1}
    assert "| `schema` | number | 1 |" in PAGE


def test_columns_of_the_csv_are_documented():
    part = PAGE[PAGE.index("## The columns") : PAGE.index("## The machine key")]
    named = re.findall(r"`([a-z_]+)`", part)
    rules = [line.split(None, 2)[1] for line in run("--list-rules")[0].splitlines()]
    head = next(csv.reader(io.StringIO(run("--csv", "--with-personal-data", ALL[0])[0], newline="")))
    personal = named[-5:]
    assert head == named[:-5] + rules + personal
    head = next(csv.reader(io.StringIO(run("--csv", ALL[0])[0], newline="")))
    assert head == named[:-5] + rules


def test_csv_and_json_agree():
    rows = list(csv.DictReader(io.StringIO(run("--csv", *ALL)[0], newline="")))
    for row, report in zip(rows, all_reports(), strict=True):
        assert row["report"] == report["report"]
        assert row["machine_key"] == (report["machine_key"] or "")
        assert {f["rule"]: f["answer"] for f in report["findings"]} == {f["rule"]: row[f["rule"]] for f in report["findings"]}
        if report["verdict"] and report["verdict"]["share_percent"] is not None:
            assert float(row["share_percent"]) == report["verdict"]["share_percent"]


def edited(name, pattern, replacement):
    text = (RULES / name).read_bytes()
    assert re.search(pattern, text)
    return re.sub(pattern, lambda match: replacement, text, count=1)


@pytest.mark.parametrize("begin", ["=", "+", "-", "@"])
def test_cells_are_never_formulas(begin):
    report = edited("memory-low.report.txt", rb"NVIDIA GeForce RTX 3070(?= \[)", begin.encode() + b'cmd|"/c calc",1')
    report = report.replace(b"GPU 0 (NVIDIA GeForce RTX 3070)", b"GPU 0 (" + begin.encode() + b'cmd|"/c calc",1)')
    row = next(csv.DictReader(io.StringIO(run("--csv", "-", stdin=report)[0], newline="")))
    assert row["benchmark_gpu_name"] == "'" + begin + 'cmd|"/c calc",1'


def test_invalid_utf8_is_replaced():
    report = edited("memory-low.report.txt", rb"CPU             : \S+", b"CPU             : \xff\xc3(R)")
    text, _ = run("--json", "-", stdin=report)
    assert "\ufffd" in json.loads(text)["machine"]["processor"]
    assert "\ufffd" in run("--csv", "-", stdin=report)[0]


def test_personal_data_only_on_request():
    rows = list(csv.reader(io.StringIO(run("--csv", *ALL)[0])))[1:]
    lines = run("--json", *ALL)[0].splitlines()
    for name, line, row, report in zip(ALL, lines, rows, all_reports("--with-personal-data"), strict=True):
        assert row[1] == name
        personal = report["personal"]
        for text in [personal["folder"], personal["settings_file"], personal["log_file"], *personal["settings_lines"],
                     *personal["log_lines"], personal["foreground_title"]]:
            if text and text != "(not found)":
                assert json.dumps(text)[1:-1] not in line and not any(text in cell for cell in row), name
        assert json.loads(line)["personal"] is None


def test_machine_key_identifies_a_machine():
    def key(text):
        return json.loads(run("--json", "-", stdin=text)[0])["machine_key"]

    report = (RULES / "memory-low.report.txt").read_bytes()
    assert re.fullmatch("[0-9a-f]{16}", key(report))
    assert key(report) == key(re.sub(rb"1\.4 GB free", b"3.3 GB free", report))
    assert key(report) != key(report.replace(b"RTX 3070", b"RTX 3080"))
    assert key(report) != key(report.replace(b"7.9 GB total", b"15.9 GB total"))
    assert key((RULES / "only-the-opening.report.txt").read_bytes()) is None


def test_the_desktops_row_only_where_it_was_timed():
    def warp_and_row(report):
        row = next(csv.DictReader(io.StringIO(run("--csv", "-", stdin=report)[0], newline="")))
        return json.loads(run("--json", "-", stdin=report)[0])["warp"], row

    warp, row = warp_and_row((RULES / "game-slow.report.txt").read_bytes())
    assert [size["desktop"] for size in warp] == [True] + [False] * (len(warp) - 1)
    assert row["desktop_width"] == str(warp[0]["width"]) and float(row["desktop_warp_ms"]) == warp[0]["gpu_ms"]
    without = edited("game-slow.report.txt", rb"\d+x\d+  your desktop.*", b"!! GPU timing produced nothing usable at 1920x1080")
    warp, row = warp_and_row(without)
    assert warp and not any(size["desktop"] for size in warp)
    assert row["desktop_width"] == row["desktop_height"] == row["desktop_warp_ms"] == ""


def test_a_headset_asleep_in_part_two_keeps_what_part_one_knew():
    report = edited("headset-asleep.report.txt", rb"== HEADSET / OPENXR =+\n[^=]*?\n\n",
                    b"== HEADSET / OPENXR ==============================================\n"
                    b"Runtime         : SteamVR/OpenXR 2.9.6\nEye resolution  : 2016x2240 per eye (runtime recommendation)\n"
                    b"Required GPU    : LUID 00000000:0000B3C7 -> GPU 0 (NVIDIA GeForce RTX 3070)\n\n")
    headset = json.loads(run("--json", "-", stdin=report)[0])["headset"]
    assert (headset["eye_width"], headset["eye_height"], headset["required_gpu"]) == (2016, 2240, 0)
    assert next(csv.DictReader(io.StringIO(run("--csv", "-", stdin=report)[0], newline="")))["required_gpu"] == "0"


def test_the_queries_of_the_manual(tmp_path):
    names = ["run-crashed.report.txt", "run-crashed.report.txt", "section-crashed.report.txt", "run-stopped.report.txt",
             "share-fatal.report.txt", "memory-low.report.txt", "warp-sizes-inverted.report.txt"]
    reports = run("--json", *names)[0].splitlines()
    unknown = json.loads(reports[names.index("share-fatal.report.txt")]) | {"machine_key": None}
    (tmp_path / "reports.jsonl").write_text("\n".join([*reports, json.dumps(unknown)]) + "\n", encoding="utf-8")
    manual = (ROOT / "docs" / "many-reports.md").read_text(encoding="utf-8")
    queries = re.findall(r"```sql\n(.*?)```", manual, re.DOTALL)
    done = subprocess.run(["sqlite3", "-bail"], input="\n.print --\n".join(queries), cwd=tmp_path, capture_output=True,
                          text=True, check=True)
    assert done.stderr == ""
    _, crashes, costs, often = done.stdout.split("--\n")
    # The same machine's two crashes count once; what the user stopped does not count.
    assert [line.rsplit("|", 1)[1] for line in crashes.splitlines()] == ["1"]
    assert crashes.startswith("NVIDIA GeForce RTX 3070|unknown|")
    assert "NVIDIA GeForce RTX 4060 Laptop GPU|1920x1200|1|9.22|9.22|9.22\n" in costs
    assert "|0.3|" not in costs, "a report that cannot be trusted"
    assert "share-fatal|1\n" in often
