"""A run at the scripted console as frames: the contents of the window at each pause."""

import html
import re
import textwrap
from dataclasses import dataclass

import terminal

REST = 0.1  # Seconds without a change of the window, after which it becomes a frame.
SEQUENCE = re.compile("\x1b\\]9;4;([0-9]);([0-9]+)\x1b\\\\")


@dataclass
class Frame:
    seconds: float
    title: str
    taskbar: str  # "", "busy" or a percentage
    rows: list

    def shows_the_same(self, other):
        return other is not None and (self.title, self.taskbar, self.rows) == (other.title, other.taskbar, other.rows)


class Window:
    """The console's window while a record is played back."""

    def __init__(self):
        self.screen = terminal.Screen()
        self.title = self.taskbar = ""

    def apply(self, entry):
        if entry.what == "title":
            self.title = entry.text
        elif entry.what in ("write", "echo"):
            match = SEQUENCE.fullmatch(entry.text)
            if match:
                self.taskbar = {"0": "", "1": match[2] + "%", "3": "busy"}[match[1]]
            else:
                self.screen.feed(entry.text)

    def frame(self, seconds):
        return Frame(seconds, self.title, self.taskbar, self.screen.text().rstrip("\n").split("\n"))


def is_progress(entry):
    """Whether it shows the current measurement, which the next line replaces."""
    return entry.what == "write" and entry.text.endswith(" ...\r") and not entry.text.startswith("  measuring ")


def frames(entries):
    """The window at each pause of the run, before each answer, with everything that it shows as measured, and at the end."""
    window, found = Window(), []
    start = last = entries[0].seconds

    def look(seconds):
        frame = window.frame(seconds - start)
        if not frame.shows_the_same(found[-1] if found else None):
            found.append(frame)

    for entry in entries:
        if entry.seconds is None:
            continue  # The process' end.
        if entry.seconds - last >= REST or entry.what == "echo":
            look(last)
        window.apply(entry)
        if entry.what in ("title", "write", "echo"):
            last = entry.seconds
        if is_progress(entry):
            look(last)
    look(last)
    return found


def as_text(found):
    """Every frame under a line with its time, its title and the taskbar's progress: the rows from the first on that differ
    from the frame before."""
    text, before = "", []
    for frame in found:
        same = 0
        while same < min(len(before), len(frame.rows)) and before[same] == frame.rows[same]:
            same += 1
        taskbar = f"  [taskbar: {frame.taskbar}]" if frame.taskbar else ""
        text += f"---- {frame.seconds:.1f} s  {frame.title}{taskbar}\n"
        text += "".join(f"{row}".rstrip() + "\n" for row in frame.rows[same:])
        before = frame.rows
    return text


COLUMNS, ROWS = 100, 27
CELL_WIDTH, CELL_HEIGHT, MARGIN, TITLE_HEIGHT = 8, 17, 12, 30


def as_picture(frame):
    """The lower end of the window as an SVG picture."""
    rows = [part for row in frame.rows for part in (textwrap.wrap(row, COLUMNS, drop_whitespace=False) or [""])][-ROWS:]
    width = COLUMNS * CELL_WIDTH + 2 * MARGIN
    height = TITLE_HEIGHT + ROWS * CELL_HEIGHT + 2 * MARGIN
    percent = int(frame.taskbar.rstrip("%")) if frame.taskbar.endswith("%") else 0
    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}"',
        '     font-family="Cascadia Mono, Consolas, DejaVu Sans Mono, monospace" font-size="13">',
        f'<rect width="{width}" height="{height}" rx="8" fill="#0c0c0c"/>',
        f'<path d="M0 8a8 8 0 0 1 8-8h{width - 16}a8 8 0 0 1 8 8v{TITLE_HEIGHT - 8}h-{width}z" fill="#2b2b2b"/>',
        f'<rect y="{TITLE_HEIGHT - 3}" width="{width * percent // 100}" height="3" fill="#16c60c"/>',
        f'<text x="{MARGIN}" y="19" fill="#ffffff">{html.escape(frame.title)}</text>',
        '<g fill="#cccccc" xml:space="preserve">',
    ]
    for i, row in enumerate(rows):
        if row.strip():
            y = TITLE_HEIGHT + MARGIN + (i + 1) * CELL_HEIGHT - 4
            # A given length keeps columns below each other in every font.
            length = len(row.rstrip()) * CELL_WIDTH
            lines.append(f'<text x="{MARGIN}" y="{y}" textLength="{length}">{html.escape(row.rstrip())}</text>')
    return "\n".join([*lines, "</g>", "</svg>"]) + "\n"
