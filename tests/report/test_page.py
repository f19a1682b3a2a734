"""The page: valid, self-contained, escaped; and as a browser shows it, where there is one."""

import base64
import hashlib
import html.parser
import pathlib
import re
import shutil
import subprocess

import pytest
from conftest import RULES, run
from PIL import Image

BROWSER = shutil.which("chromium-headless-shell") or shutil.which("chromium")
SHOWN = ["share-fatal", "video-memory-full", "product-running", "injected-files", "run-crashed"]
VOID = {"meta", "br", "link"}


class Structure(html.parser.HTMLParser):
    """Elements close in the order in which they were opened; names are unique; links lead somewhere."""

    def __init__(self):
        super().__init__()
        self.open, self.ids, self.links, self.elements, self.attributes = [], [], [], set(), set()

    def handle_starttag(self, tag, attrs):
        self.elements.add(tag)
        self.attributes |= {name for name, _ in attrs}
        self.ids += [value for name, value in attrs if name == "id"]
        self.links += [value for name, value in attrs if name == "href"]
        if tag not in VOID:
            self.open.append(tag)

    def handle_startendtag(self, tag, attrs):
        self.handle_starttag(tag, attrs)
        self.open.pop()

    def handle_endtag(self, tag):
        assert self.open.pop() == tag


def structure(page):
    parsed = Structure()
    parsed.feed(page)
    parsed.close()
    assert parsed.open == []
    return parsed


def page_of(*names, stdin=b""):
    return run("--html", "-", *names, stdin=stdin)[0]


@pytest.mark.parametrize("name", sorted(path.name for path in RULES.glob("*.report.txt")))
def test_structure(name):
    page = page_of(name)
    assert page.startswith('<!DOCTYPE html>\n<html lang="en">')
    parsed = structure(page)
    assert len(parsed.ids) == len(set(parsed.ids))
    for link in parsed.links:
        assert link.startswith("#") and link[1:] in parsed.ids
    assert not parsed.elements & {"script", "img", "iframe", "object", "embed", "link", "base", "form"}
    assert not {a for a in parsed.attributes if a.startswith("on")} | parsed.attributes & {"src", "style", "srcset"}
    # A title and a table for every drawing that says something.
    assert page.count('role="img"') == page.count("<figcaption") == page.count("Figures as a table")


def test_labels_stay_within_the_drawing():
    report = (RULES / "game-slow.report.txt").read_bytes()
    page = page_of("-", stdin=report.replace(b"181 in 3.00 s  ->  60.3 fps", b"18109 in 3.00 s  ->  6036.3 fps"))
    width = max(float(number) for number in re.findall(r'viewBox="0 0 ([0-9.]+) ', page))
    labels = re.findall(r'<text class="mark-label" x="([0-9.]+)" y="[0-9.]+" text-anchor="(\w+)"', page)
    expected = {"start": lambda x: x < 30, "end": lambda x: x > width - 30, "middle": lambda x: 30 <= x <= width - 30}
    assert {anchor for _, anchor in labels} == set(expected)
    for x, anchor in labels:
        assert expected[anchor](float(x)), (x, anchor)


def test_memory_of_both_parts():
    report = (RULES / "game-slow.report.txt").read_text(encoding="utf-8")
    part_two = "903 MB of 7250 MB  (12%)"
    assert part_two in report
    page = page_of("-", stdin=report.replace(part_two, "2103 MB of 7250 MB  (29%)").encode("utf-8"))
    rows = re.findall(r"<td>(part 1|game running)</td>\s*<td>(\d+)</td>\s*<td>(\d+)</td>", page)
    assert rows == [("part 1", "903", "7250"), ("game running", "2103", "7250")]


def test_the_policy_allows_only_the_style():
    page = page_of("share-fatal.report.txt")
    style = re.search(r"<style>(.*?)</style>", page, re.DOTALL)[1]
    hashed = base64.b64encode(hashlib.sha256(style.encode("utf-8")).digest()).decode()
    policy = re.search(r'Content-Security-Policy" content="(.*?)"', page)[1].replace("&#39;", "'")
    assert policy.startswith(f"default-src 'none'; style-src 'sha256-{hashed}';")
    assert "url(" not in style and "@import" not in style and "http" not in style


def test_tidy_reports_nothing(tmp_path):
    tidy = shutil.which("tidy")
    if tidy is None:
        pytest.skip("Debian's tidy is not installed")
    for name in SHOWN:
        page = tmp_path / "page.html"
        run("--html", page, f"{name}.report.txt")
        done = subprocess.run([tidy, "-q", "-e", "--drop-empty-elements", "no", "--doctype", "html5", page],
                              capture_output=True, text=True, check=False)
        assert done.stderr == ""


HOSTILE = "</span></main><script>alert(1)</script><img src=x onerror=alert(1)>&lt;\"' \u202egnp.exe\u202c\u0007\u0085"


def test_external_text_is_escaped():
    report = (RULES / "memory-low.report.txt").read_text(encoding="utf-8")
    report = report.replace("NVIDIA GeForce RTX 3070", HOSTILE).replace("Intel(R) Xeon(R) Processor", HOSTILE)
    page = page_of("-", stdin=report.encode("utf-8"))
    parsed = structure(page)
    assert not parsed.elements & {"script", "img"}
    assert "alert(1)" in page and "&lt;script&gt;" in page
    assert "[U+202E]gnp.exe[U+202C][U+0007][U+0085]" in page
    for hidden in "\u202e\u202c\u0007\u0085":
        assert hidden not in page
    text, _ = run("-", stdin=report.encode("utf-8"))
    for hidden in "\u202e\u202c\u0007\u0085\u001b":
        assert hidden not in text


def test_several_reports_on_one_page():
    names = [f"{name}.report.txt" for name in SHOWN]
    page = page_of(*names)
    parsed = structure(page)
    assert len(parsed.ids) == len(set(parsed.ids))
    assert all(link[1:] in parsed.ids for link in parsed.links)
    assert page.count("<h2") == len(names)


def test_fifty_reports_in_full_and_more_as_a_table():
    page = page_of(*["memory-low.report.txt"] * 50)
    assert page.count("The report as written") == 50
    page = page_of(*["memory-low.report.txt"] * 51)
    assert "The report as written" not in page
    assert "Of 1 machine, told apart" in page and "do not tell" not in page
    assert re.search(r"<td>Less than 2 GB of memory was free</td>\s*<td>Explains the trouble</td>\s*<td>51</td>\s*<td>1</td>", page)
    structure(page)


def test_many_reports_as_distributions():
    one = (RULES / "share-significant.report.txt").read_bytes().decode("utf-8")
    reports = []
    for i in range(60):
        # A machine of its own each, and one graphics card that half of them have.
        text = re.sub(r"(?m)^(RAM             : )[\d.]+", rf"\g<1>{i + 20}.5", one)
        reports.append(text.replace("NVIDIA GeForce RTX 3070", HOSTILE) if i % 2 else text)
    reports.append((RULES / "product-running.report.txt").read_bytes().decode("utf-8"))
    page = page_of("-", stdin="".join(reports).encode("utf-8"))
    parsed = structure(page)
    assert not parsed.elements & {"script", "img"}
    assert page.count('role="img"') == page.count("<figcaption") == page.count("Figures as a table") >= 3
    assert "What the warp costs" in page and "What the depth models cost" in page
    assert "New images of the idle desktop" in page
    assert "Without 1 report whose figures cannot be trusted." in page
    # Least, quarter, median, three quarters and most of thirty machines that are all alike.
    row = r"<td>NVIDIA GeForce RTX 3070</td>\s*<td>1920x1080</td>\s*<td>30</td>(\s*<td>\d+\.\d\d</td>){5}"
    assert re.search(row, page)


def without_machine(name):
    """The report without the sections that the machine key is made of."""
    text = (RULES / name).read_bytes().decode("utf-8")
    shorter = re.sub(r"(?ms)^== MACHINE .*?(?=^== DISPLAYS )", "", text)
    assert shorter != text
    return shorter.encode("utf-8")


def test_reports_that_do_not_tell_their_machine_are_not_counted_as_one():
    one = (RULES / "part-two-missing.report.txt").read_bytes()
    page = page_of("-", stdin=one * 50 + without_machine("part-two-missing.report.txt"))
    assert "Of 1 machine, told apart" in page
    assert "1 report does not tell its machine. It is left out of the counts of machines and of the charts." in page
    assert re.search(r"<td>51</td>\s*<td>1</td>\s*<td>part-two-missing</td>", page)
    assert re.search(r"<td>1920x1080</td>\s*<td>1</td>", page)
    page = page_of("-", stdin=without_machine("part-two-missing.report.txt") * 51)
    assert "Of 0 machines, told apart" in page
    assert "51 reports do not tell their machine. They are left out" in page
    assert "What the warp costs" not in page
    structure(page)


def test_a_folder_gets_an_index_and_a_page_each(tmp_path):
    folder = tmp_path / "pages"
    run("--html", f"{folder}/", *[f"{name}.report.txt" for name in SHOWN])
    assert sorted(path.name for path in folder.iterdir()) == ["index.html", *(f"report-{i}.html" for i in range(1, 6))]
    index = (folder / "index.html").read_text(encoding="utf-8")
    for link in structure(index).links:
        assert (folder / link).exists()


def test_a_page_that_cannot_be_written(tmp_path):
    run("--html", tmp_path / "no" / "such" / "page.html", "share-fatal.report.txt", status=2)


def test_only_a_page_is_overwritten(tmp_path):
    report = (RULES / "share-fatal.report.txt").read_bytes()
    first, second, page = tmp_path / "a.txt", tmp_path / "b.txt", tmp_path / "p.html"
    first.write_bytes(report)
    second.write_bytes(report)
    _, complaint = run("--html", first, second, status=2)
    assert f"{first} is not overwritten" in complaint
    assert first.read_bytes() == report
    for content in [b"", b"<!DOCTYPE html>\nolder", None]:
        if content is not None:
            page.write_bytes(content)
        run("--html", page, second)
        structure(page.read_text(encoding="utf-8"))
    for content in [b"<!DOCTYPE htm", b"x", b"<html>"]:
        page.write_bytes(content)
        run("--html", page, second, status=2)
        assert page.read_bytes() == content
    for name in ["index.html", "report-2.html"]:
        folder = tmp_path / f"with-{name}"
        folder.mkdir()
        (folder / name).write_text("mine")
        run("--html", folder, first, second, status=2)
        assert (folder / name).read_text() == "mine"
    text, complaint = run("--html", "", second, status=2)
    assert text == "" and complaint.startswith("Which page?")


def picture(page, tmp_path, scheme, width, height):
    """As the browser draws it. Nothing may reach its console: what the policy refuses would."""
    target = tmp_path / f"{scheme}-{width}.png"
    done = subprocess.run(
        [BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--hide-scrollbars",
         "--disable-background-networking", "--disable-component-update", "--disable-sync", "--enable-logging=stderr",
         f"--user-data-dir={tmp_path / 'browser'}", f"--log-net-log={tmp_path / 'net.json'}",
         f"--blink-settings=preferredColorScheme={0 if scheme == 'dark' else 1}", f"--window-size={width},{height}",
         f"--screenshot={target}", page.as_uri()],
        capture_output=True, text=True, timeout=120, check=True)
    assert ":CONSOLE:" not in done.stderr, done.stderr
    log = (tmp_path / "net.json").read_text(encoding="utf-8")
    asked = {url for url in re.findall(r'"url":"([^"]*)"', log) if not url.startswith(("file:", "chrome"))}
    assert asked == set()
    return Image.open(target).convert("RGB")


@pytest.mark.skipif(BROWSER is None, reason="Debian's chromium-headless-shell is not installed")
def test_in_a_browser(tmp_path):
    page = tmp_path / "page.html"
    run("--html", page, "video-memory-full.report.txt")
    light = picture(page, tmp_path, "light", 1100, 2400)
    dark = picture(page, tmp_path, "dark", 1100, 2400)
    for drawn in (light, dark):
        assert len(drawn.getcolors(1 << 24)) > 100, "it is not blank"
    def corner(drawn):
        return sum(drawn.getpixel((2, 2)))
    assert corner(light) > 600 and corner(dark) < 150
    # On a phone nothing is wider than the screen: the right margin is the page's own colour from top to bottom.
    phone = picture(page, tmp_path, "light", 500, 3000)
    assert {phone.getpixel((498, y)) for y in range(0, 3000, 7)} == {phone.getpixel((2, 2))}


def test_the_picture_in_the_manual_is_small():
    manual = pathlib.Path(__file__).resolve().parents[2] / "docs" / "report-page.png"
    assert manual.stat().st_size < 200_000
    assert Image.open(manual).size[0] >= 600
