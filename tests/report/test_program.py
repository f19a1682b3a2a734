"""Inputs, exit statuses, comparison, masks."""

import json
import re

from conftest import RULES, run

GUIDED = "game-slow.report.txt"


def test_exit_statuses(tmp_path):
    empty = tmp_path / "empty.txt"
    empty.write_bytes(b"")
    letter = tmp_path / "letter.txt"
    letter.write_text("Dear support,\nit stutters.\n")
    for name in [empty, letter, tmp_path / "missing.txt"]:
        _, complaint = run(name, status=1)
        assert str(name.name) in complaint
    # The rest is read all the same.
    text, _ = run("--json", letter, RULES / GUIDED, status=1)
    assert len(text.splitlines()) == 1
    for wrong in [[], ["--compare", GUIDED], ["--no-such-option"], ["--json", "--csv", GUIDED], ["--explain"],
                  ["--reply", GUIDED, GUIDED], ["--list-rules", GUIDED]]:
        _, complaint = run(*wrong, status=2)
        assert complaint
    assert "--explain" in run("--help")[0]


def test_standard_input_is_read_like_a_file():
    from_file = json.loads(run("--json", GUIDED)[0])
    from_input = json.loads(run("--json", "-", stdin=(RULES / GUIDED).read_bytes())[0])
    assert from_input.pop("report") == "standard input"
    assert from_file.pop("report") == GUIDED
    assert from_input == from_file


def test_a_folder_means_all_reports_in_it(tmp_path):
    (tmp_path / "below").mkdir()
    for name in ["b.txt", "a.txt", "below/c.txt"]:
        (tmp_path / name).write_bytes((RULES / GUIDED).read_bytes())
    (tmp_path / "picture.png").write_bytes(b"\x89PNG\r\n\x1a\n")
    text, complaint = run("--json", tmp_path)
    names = [json.loads(line)["report"] for line in text.splitlines()]
    assert names == [str(tmp_path / name) for name in ["a.txt", "b.txt", "below/c.txt"]]
    assert complaint == "vistrel_report: 1 file of the folders is no report.\n"
    (tmp_path / "second.png").write_bytes(b"\x89PNG\r\n\x1a\n")
    _, complaint = run("--json", tmp_path)
    assert complaint == "vistrel_report: 2 files of the folders are no reports.\n"
    (tmp_path / "empty").mkdir()
    run(tmp_path / "empty", status=1)


def test_a_folder_without_reports_is_an_input_without_one(tmp_path):
    (tmp_path / "letters").mkdir()
    (tmp_path / "letters" / "letter.txt").write_text("Dear support,\n")
    for inputs in [[tmp_path / "letters"], [tmp_path / "letters", GUIDED], [GUIDED, tmp_path / "letters"]]:
        text, complaint = run("--json", *inputs, status=1)
        assert len(text.splitlines()) == len(inputs) - 1, "the rest is read all the same"
        assert complaint == ("vistrel_report: 1 file of the folders is no report.\n"
                             f"vistrel_report: The folder {tmp_path}/letters holds no report of vistrel_diag.\n")


def test_an_input_without_a_report_is_named():
    _, complaint = run("-", stdin=b"Dear support,\n", status=1)
    assert complaint == "vistrel_report: standard input is no report of vistrel_diag.\n"


def test_one_report_of_each_input_is_replied_to_and_compared(tmp_path):
    two = tmp_path / "two.txt"
    two.write_bytes((RULES / GUIDED).read_bytes() * 2)
    for wrong in [["--reply", two], ["--compare", two, GUIDED], ["--compare", GUIDED, two]]:
        text, complaint = run(*wrong, status=2)
        assert text == ""
        assert complaint == f"vistrel_report: {wrong[0]} takes one report of each input; {two} holds 2.\n"
    text, complaint = run("--compare", two, tmp_path / "missing.txt", status=2)
    assert text == "" and "missing.txt could not be opened" in complaint
    text, _ = run("--compare", GUIDED, tmp_path / "missing.txt", status=1)
    assert text == ""
    # A folder with one report is as good as the report.
    (tmp_path / "one").mkdir()
    (tmp_path / "one" / "r.txt").write_bytes((RULES / GUIDED).read_bytes())
    assert run("--reply", tmp_path / "one")[0] == run("--reply", GUIDED)[0]
    assert run("--compare", tmp_path / "one", GUIDED)[0].startswith("Old: ")
    (tmp_path / "one" / "s.txt").write_bytes((RULES / GUIDED).read_bytes())
    assert run("--reply", tmp_path / "one", status=2)[0] == ""


def test_only_goes_with_findings():
    for task in [["--json"], ["--csv"], ["--html", "-"], ["--reply"]]:
        text, complaint = run("--only", "explains", *task, GUIDED, status=2)
        assert text == "" and complaint.startswith("--only goes with findings in plain text.\n")
    _, complaint = run("--only", "explains", "--compare", GUIDED, GUIDED, status=2)
    assert complaint.startswith("--only goes with findings in plain text.\n")


def test_two_reports_in_one_mail():
    text = (RULES / GUIDED).read_bytes()
    names = [json.loads(line)["report"] for line in run("--json", "-", stdin=text + b"\n\n" + text)[0].splitlines()]
    assert names == ["standard input (1)", "standard input (2)"]


def changed(name, *replacements):
    text = (RULES / name).read_text(encoding="utf-8")
    for before, after in replacements:
        assert before in text
        text = text.replace(before, after)
    return text


def test_comparison(tmp_path):
    new = tmp_path / "new.txt"
    new.write_text(changed(GUIDED, ("LUID          : 00000000:0000B3C7", "LUID          : 00000000:0000FFFF"),
                           ("21.4 GB free", "3.1 GB free"), ("0.82            0", "0.84            0"),
                           ("3.08 ms median", "6.20 ms median"), ("21.0 fps (63", "100.0 fps (300"),
                           ("GPU scheduling  : not set (driver default)", "GPU scheduling  : ENABLED")))
    text, _ = run("--compare", GUIDED, new)
    assert "Findings that came:\n  Hardware-accelerated GPU scheduling is on  [gpu-scheduling-on]\n" in text
    assert "Findings that went:\n  The game itself is slow  [game-slow]\n" in text
    assert "  GPU scheduling               not set -> ENABLED\n" in text
    assert "3.08 ms -> 6.20 ms  (+101%)" in text
    assert "0.82" not in text, "within the tenth that runs differ by"
    assert ", 1 within the 10% that runs differ by." in text
    assert "B3C7" not in text and "21.4" not in text and "3.1 GB" not in text


def test_rows_that_cannot_be_compared_give_a_reason(tmp_path):
    new = tmp_path / "new.txt"
    new.write_text(changed(GUIDED, ("GeForce RTX 3070", "GeForce RTX 4090")))
    text, _ = run("--compare", GUIDED, new)
    part = text[text.index("Not comparable:"):]
    assert "Warp at 1920x1080" in part and "RTX 3070 against GPU NVIDIA GeForce RTX 4090" in part
    new.write_text(changed(GUIDED, ("2560x1440  1440p", "3840x2160  1440p")))
    text, _ = run("--compare", GUIDED, new)
    assert "Only in the old report:\n  Warp at 2560x1440" in text
    assert "Only in the new report:\n  Warp at 3840x2160" in text
    assert text.index("Only in the old report:") < text.index("Only in the new report:")


def test_masks_hide_personal_data(tmp_path):
    secret = tmp_path / "r.txt"
    secret.write_text(changed(GUIDED, ("Running from: C:\\Program Files\\Vistrel", "Running from: C:\\Users\\Erika Muster\\Tools"),
                              ("C:\\Users\\Sam\\", "C:\\Users\\Erika Muster\\"),
                              ("Nothing notable - no Vistrel, no SteamVR, no capture software.",
                               "Nothing notable - no Vistrel, no SteamVR, no capture software.\n"
                               'Foreground app  : firefox.exe  "Erika Muster - Inbox"')))
    page = tmp_path / "p.html"
    text, _ = run("--mask", secret)
    run("--mask", "--html", page, secret)
    html = page.read_text(encoding="utf-8")
    for hidden in ["Erika", "Muster", "Inbox", "firefox"]:
        assert hidden not in html and hidden not in text
    # The same word for the same thing, in both parts.
    assert html.count("&lt;title 1&gt;") == 2 and "&lt;title 2&gt;" not in html
    run("--html", page, secret)
    assert "Erika Muster" in page.read_text(encoding="utf-8")


def test_masked_quotations():
    page, _ = run("--mask", "--html", "-", "part-two-missing.report.txt")
    assert "settings line 1" in page and "log line 1" in page
    assert "vistrel_ai_fps_limit" not in page
    assert "DirectML provider attached" not in page


def masked(tmp_path, text):
    """What the text output and the page show of a report under --mask."""
    report = tmp_path / "r.txt"
    report.write_text(text, encoding="utf-8")
    return run("--mask", report)[0] + run("--mask", "--html", "-", report)[0]


def with_title(title):
    nothing = "Nothing notable - no Vistrel, no SteamVR, no capture software."
    return changed(GUIDED, (nothing, f'{nothing}\nForeground app  : firefox.exe  "{title}"'))


def test_masks_hide_a_title_of_several_lines(tmp_path):
    shown = masked(tmp_path, with_title("Inbox\nErika Muster\n  obs64.exe\n\nDiary - Firefox"))
    for hidden in ["Inbox", "Erika", "obs64", "Diary", "firefox"]:
        assert hidden not in shown
    assert "&lt;title 1&gt;" in shown and "&lt;program 1&gt;" in shown


def test_masks_hide_a_heading_in_a_title(tmp_path):
    rule = "=" * 20
    shown = masked(tmp_path, with_title(f"x\n\n== Erika Muster {rule}\n\n== MACHINE {rule}\ny"))
    assert "Erika" not in shown
    assert "This heading is not the report's own: \"<heading>\"." in shown
    assert "This heading is not the report's own: \"MACHINE\"." in shown


def test_masks_hide_the_folder_of_a_report_without_its_first_lines(tmp_path):
    text = changed("model-not-timed.report.txt", ("C:\\Program Files\\Vistrel", "C:\\Erika\\Vistrel"))
    shown = masked(tmp_path, text[text.index("== DEPTH MODEL"):])
    assert "Path tried      : &lt;folder 1&gt;/distill_any" in shown and "Erika" not in shown


def test_masks_where_line_ends_are_lost(tmp_path):
    text = changed("part-two-missing.report.txt", ("None set.", "C:\\Tools\\Erika\\Vistrel.exe = GpuPreference=2;\n"
                                                    "C:\\Tools\\Muster\\vrserver.exe = GpuPreference=2;"))
    shown = masked(tmp_path, text.replace("\n", " "))
    assert "The ends of lines are lost" in shown
    for hidden in ["Erika", "Muster", "vistrel_ai_fps_limit", "DirectML provider attached", "AppData"]:
        assert hidden not in shown
    ids = re.findall(r' id="([^"]*)"', shown)
    assert len(ids) == len(set(ids)) > 20
    lines = re.findall(r"^ +(\d+)  <line \d+>$", shown, re.MULTILINE)
    assert len(lines) == len(set(lines)) > 1


def test_masks_where_the_settings_were_not_understood(tmp_path):
    error = "parse error at line 3, column 5: syntax error while parsing value - invalid literal; last read: "
    text = changed("settings-unreadable.report.txt",
                   ("found at C:\\Program Files\\Vistrel", "found at C:\\Users\\Erika\\AppData\\Local\\Vistrel"),
                   ("parse error at line 3, column 5: syntax error", error + "'\"Muster\": x'\nInbox"))
    shown = masked(tmp_path, text[:text.index("== VISTREL SETTINGS, VERB")])
    assert error + "&lt;file text 1&gt;" in shown
    for hidden in ["Erika", "AppData", "Muster", "Inbox"]:
        assert hidden not in shown
