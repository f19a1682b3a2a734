"""The tool in a terminal: keys are sent through a pseudo-terminal, and the screen is read.

Wine's console draws its window with escape sequences and handles keys like the one of Windows: it edits the line,
echoes it, and turns Ctrl-C into an event.
"""

import codecs
import re
import termios
import time

import pexpect

import lab

ROWS, COLUMNS = 500, 1000  # Nothing scrolls and no line wraps.
CONTROL_C = "\x03"
SEQUENCE = re.compile(r"\x1b\[([?0-9;]*)([A-Za-z])|\x1b\][^\x07\x1b]*(?:\x07|\x1b\\)|\x1b[()][A-Z0-9]|\x1b[=>78]")


class Screen:
    """The parts of a terminal that Wine's console uses. Keeps every row that was ever written."""

    def __init__(self):
        self.rows = [[]]
        self.row = self.column = 0
        self.rest = ""
        self.shown = []  # Every line, each time a piece of it was written, in that order; a line may be written over.

    def feed(self, text):
        text = self.rest + text
        self.rest = ""
        position = 0
        while position < len(text):
            if text[position] != "\x1b":
                self._character(text[position])
                position += 1
                if position == len(text) or text[position] in "\x1b\r\n":
                    self.shown.append("".join(self.rows[self.row]).rstrip())
                continue
            match = SEQUENCE.match(text, position)
            if match is None:  # Incomplete so far.
                self.rest = text[position:]
                return
            if match[2]:
                self._sequence(match[1], match[2])
            position = match.end()

    def text(self):
        return "\n".join("".join(row).rstrip() for row in self.rows)

    def _character(self, character):
        if character == "\r":
            self.column = 0
        elif character == "\n":
            self._go_to(self.row + 1, self.column)
        elif character == "\b":
            self.column = max(self.column - 1, 0)
        elif character >= " ":
            row = self.rows[self.row]
            row.extend(" " * (self.column + 1 - len(row)))
            row[self.column] = character
            self.column += 1

    def _go_to(self, row, column):
        self.row, self.column = max(row, 0), max(column, 0)
        while len(self.rows) <= self.row:
            self.rows.append([])

    def _sequence(self, parameters, final):
        if parameters.startswith("?"):
            return  # Shows and hides the cursor.
        numbers = [int(number or 0) for number in parameters.split(";")]
        count = numbers[0] or 1
        if final == "C":
            self.column += count
        elif final == "D":
            self.column = max(self.column - count, 0)
        elif final in "AB":
            self._go_to(self.row + (count if final == "B" else -count), self.column)
        elif final == "H":
            self._go_to(count - 1, (numbers[1] or 1) - 1 if len(numbers) > 1 else 0)
        elif final == "G":
            self.column = count - 1
        elif final == "K":
            del self.rows[self.row][self.column :]
        elif final == "J":
            del self.rows[self.row][self.column :]
            del self.rows[self.row + 1 :]


class Terminal:
    """A run of the tool with a person at the terminal; ends with the `with` block."""

    def __init__(self, install, *arguments, scenario=None, env=None):
        front, more = [], {}
        if scenario is not None:
            front, more, _ = lab.simulated(scenario, install.folder.parent)
        command = [*front, lab.windows_path(install.exe), *arguments]
        self.child = pexpect.spawn(
            str(lab.ROOT / "scripts" / "wine"),
            [str(part) for part in command],
            env=lab.environment(TERM="xterm", **more, **(env or {})),
            cwd=str(install.folder),
            dimensions=(ROWS, COLUMNS),
            echo=False,
        )
        self.screen = Screen()
        self.decoder = codecs.getincrementaldecoder("utf-8")("replace")
        self.seen = 0  # Where in the screen's text the line begins that the person has read up to.

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.child.close(force=True)

    def read(self):
        """Reads the output of a tenth of a second. False at the program's end."""
        try:
            self.screen.feed(self.decoder.decode(self.child.read_nonblocking(65536, 0.1)))
        except pexpect.TIMEOUT:
            pass
        except pexpect.EOF:
            return False
        return True

    def wait_for(self, text, seconds=lab.HANGING_SECONDS):
        """Reads until the text is on the screen, below the text of the previous wait."""
        deadline = time.monotonic() + seconds
        alive = True
        while text not in self.screen.text()[self.seen :]:
            assert alive and time.monotonic() < deadline, f"no {text!r} on the screen:\n{self.screen.text()}"
            alive = self.read()
        end = self.screen.text().index(text, self.seen) + len(text)
        self.seen = self.screen.text().rindex("\n", 0, end) + 1  # A line may be written over.

    def answer(self, prompt, keys):
        self.wait_for(prompt)
        self.wait_until_read_from()
        self.child.send(keys)

    def wait_until_read_from(self, seconds=lab.HANGING_SECONDS):
        """Until the program reads for the first time, keys would mean what they mean at a shell: Ctrl-C a signal, and
        Enter a line feed."""
        deadline = time.monotonic() + seconds
        while termios.tcgetattr(self.child.child_fd)[3] & termios.ICANON:
            assert time.monotonic() < deadline, f"nothing is read:\n{self.screen.text()}"
            self.read()

    def wait_for_end(self, seconds=lab.HANGING_SECONDS):
        """The exit code, as the shell that started the program sees it."""
        deadline = time.monotonic() + seconds
        while self.read():
            assert time.monotonic() < deadline, f"still running:\n{self.screen.text()}"
        self.child.close()
        return self.child.exitstatus
