"""The tool on a console that behaves like the one of Windows, with a scripted person.

The console is in tests/lab/console; console_script.h there documents the scripts and console_host.h the records.
test_terminal.py runs the tool in a real terminal with Wine's console, which is more permissive.
"""

import re
from dataclasses import dataclass

import lab

LEFT_ALONE = 98  # The exit code when the program waits for a person whose script has ended.
ENDED_BY_CTRL_C = 0xC000013A & 0xFF  # Wine passes only the last byte.
ESCAPE = re.compile(r"\\(?:x([0-9A-F]{2})|(.))")
ENTRY = re.compile(r'(?:at ([0-9.]+) s )?([A-Za-z][A-Za-z -]*?)(?: "(.*)"| (0x[0-9A-F]+|[0-9]+))?')


def unescaped(text):
    return ESCAPE.sub(lambda match: chr(int(match[1], 16)) if match[1] else {"r": "\r", "n": "\n"}.get(match[2], match[2]), text)


def escaped(text):
    return text.replace("\\", "\\\\").replace("\r", "\\r")


@dataclass
class Entry:
    """One line of a record."""

    seconds: float | None
    what: str
    text: str | None
    number: int | None


def read_record(path):
    entries = []
    for line in path.read_bytes().decode("utf-8").split("\n")[:-1]:
        match = ENTRY.fullmatch(line)
        assert match, line
        seconds, what, text, number = match.groups()
        entries.append(
            Entry(
                float(seconds) if seconds else None,
                what,
                unescaped(text) if text is not None else None,
                int(number, 0) if number else None,
            )
        )
    return entries


@dataclass
class Sitting:
    """The result of a run with a scripted person."""

    run: lab.Run
    entries: list

    @property
    def shown(self):
        """Everything that was written or echoed, in order."""
        return "".join(entry.text for entry in self.entries if entry.what in ("write", "echo"))

    def of(self, what):
        """The values of the entries of a kind, in order."""
        return [entry.text if entry.text is not None else entry.number for entry in self.entries if entry.what == what]

    def happened(self, what):
        return any(entry.what == what for entry in self.entries)

    def left_as(self, what, found):
        """The final value of a setting that was `found` at the start."""
        return (self.of(what) or [found])[-1]


def script(*steps, **settings):
    """A script's text. A step is a statement, or a pair of one that takes a text and the text."""
    lines = [f"{name.replace('_', ' ')} {value}".rstrip() for name, value in settings.items()]
    lines += [step if isinstance(step, str) else f"{step[0]} {escaped(step[1])}" for step in steps]
    return "\n".join(lines) + "\n"


def answers(prompt, keys="\r"):
    """Steps of a person who waits for the prompt and for the program to read, and then types."""
    return [("sees", prompt), "reads", ("types", keys)]


def sit(install, *arguments, steps, settings=None, scenario, env=None, dies=False, **options):
    scratch = install.folder.parent
    script_file, record = scratch / "person.txt", scratch / "record.txt"
    script_file.write_text(script(*steps, **(settings or {})), encoding="utf-8")
    record.unlink(missing_ok=True)
    variables = {
        "VISTREL_LAB_CONSOLE": lab.windows_path(script_file),
        "VISTREL_LAB_CONSOLE_RECORD": lab.windows_path(record),
    }
    run = lab.run_tool(install, *arguments, scenario=scenario, env={**variables, **(env or {})}, dies=dies, **options)
    return Sitting(run, read_record(record))
