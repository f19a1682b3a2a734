"""The settings file and the product's log, found, applied and quoted by the finished tool.

The name of this user's data folder contains characters that no single-byte code page has together.
"""

import lab
import programs
import pytest

IN_EFFECT = "VISTREL SETTINGS IN EFFECT"
VERBATIM = "VISTREL SETTINGS, VERBATIM"
LOG = "WHAT VISTREL ITSELF LOGGED LAST RUN"

DEFAULTS = """\
Vistrel version  : 1.74
settings.json   : (not found)
  -> BUILT-IN DEFAULTS are being measured, not this user's setup. Put the exe in the Vistrel folder for a real answer.
Warp algorithm  : Vistrel 3D (stereo_warp) (vistrel_image_algo=2)
Search steps    : 20   <- march length per pixel per eye
Depth source    : AI model
Depth model     : Square Normal (392) (392x392)
AI rate limit   : 30 fps (auto=on)
3D enabled      : yes
Separation      : 13.9 mm    Depth strength: 1.61    Screen depth: 0.38
Screen scale    : 1.00  (3.00 m wide)
Cinema / OptFlow/ FSR3 : off / off / off
Wait for GPU    : OFF   (default; background can show through the picture in patches under heavy GPU load)"""

NOTE = '(only the "vistrel_*" keys are quoted; the rest of the file belongs to Ambulo and is deliberately left out)'


@pytest.fixture
def local_data(tmp_path):
    """The local application data folder of the test's user."""
    folder = tmp_path / "Jürgen Świątek 日本"
    folder.mkdir()
    with lab.user_with(folder):
        yield folder


@pytest.fixture
def user_data(local_data):
    """The product's folder in it, which does not exist yet."""
    return local_data / "Vistrel"


def write(path, content):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content.encode("utf-8") if isinstance(content, str) else content)
    return path


def applied(run):
    """The path of the settings file and the screen scale, as printed in the section."""
    lines = dict(line.split(":", 1) for line in run.section(IN_EFFECT).split("\n") if ":" in line)
    return lines["settings.json   "].strip(), lines["Screen scale    "].split()[0]


def test_without_a_file_the_defaults_are_measured(run_tool, user_data):
    run = run_tool(*lab.CHEAP)
    assert run.exit_code == 0
    assert run.section(IN_EFFECT) == DEFAULTS
    assert run.section(VERBATIM) == "No settings file was found, so there is nothing to quote."
    assert run.section(LOG) == "\n".join(
        [
            f"No log at {lab.windows_path(user_data)}\\vistrel_init_log.txt",
            "",
            "This is the single most useful thing to send, and it is off by default. To produce one:",
            '  1. In Vistrel, Debug tab -> turn on "Show Vistrel debug log".',
            "  2. Press Start, let it reach the state you are reporting, press Stop.",
            "  3. Run this tool again - the log will be quoted here.",
        ]
    )
    assert user_data.is_dir(), "the product's folder is made when it is not there"
    assert not any(user_data.iterdir()), "and nothing is written into it"


def test_the_users_file_comes_first(run_tool, install, user_data):
    path = write(
        user_data / "usersettings.json",
        '{\r\n  "osc_port": 9000,\r\n  "vistrel_scale": 1.5,\r\n\t"vistrel_fsr3": true\r\n}\r\n',
    )
    install.write("settings.json", '{"vistrel_scale": 2}')
    run = run_tool(*lab.CHEAP)
    assert applied(run) == (lab.windows_path(path), "1.50")
    assert "BUILT-IN DEFAULTS" not in run.report_text
    assert run.section(VERBATIM) == (
        f'{lab.windows_path(path)}\n{NOTE}\n\n  "vistrel_scale": 1.5,\n  "vistrel_fsr3": true'
    )


def test_then_the_file_beside_the_tool(run_tool, install, user_data):
    install.write("settings.json", '{"vistrel_scale": 2} and the rest is not looked at')
    install.write("../settings.json", '{"vistrel_scale": 3}')
    assert applied(run_tool(*lab.CHEAP)) == (install.windows_folder + "\\settings.json", "2.00")


def test_then_the_file_one_level_up(run_tool, install, user_data):
    install.write("../settings.json", '{"other": 1}')
    run = run_tool(*lab.CHEAP)
    path = install.windows_folder + "\\..\\settings.json"
    assert applied(run) == (path, "1.00")
    assert run.section(VERBATIM) == (
        f"{path}\n{NOTE}\n\n  (no vistrel_* keys in the file - every Vistrel setting is at its built-in default)"
    )


def test_the_steam_file_is_not_looked_for(run_tool, user_data):
    write(user_data / "usersettings_steam.json", '{"vistrel_scale": 2}')
    assert applied(run_tool(*lab.CHEAP)) == ("(not found)", "1.00")


def test_a_broken_file_hides_a_good_one(run_tool, install, user_data):
    path = write(user_data / "usersettings.json", '{"vistrel_scale": 1.5,\n}')
    install.write("settings.json", '{"vistrel_scale": 2}')
    run = run_tool(*lab.CHEAP)
    assert run.section(IN_EFFECT) == DEFAULTS
    assert run.section(VERBATIM) == "No settings file was found, so there is nothing to quote."
    assert (
        f"\n!! settings.json found at {lab.windows_path(path)} but could not be parsed: "
        "[json.exception.parse_error.101] parse error at line 2, column 1: syntax error while parsing object key - "
        f"unexpected '}}'; expected string literal\n\n{lab.header(IN_EFFECT)}\n"
    ) in run.report_text


def test_an_empty_file_is_a_broken_one(run_tool, install, user_data):
    install.write("settings.json", "")
    install.write("../settings.json", '{"vistrel_scale": 3}')
    run = run_tool(*lab.CHEAP)
    assert run.section(IN_EFFECT) == DEFAULTS
    assert f"!! settings.json found at {install.windows_folder}\\settings.json but could not be parsed: " in (
        run.report_text
    )


def test_keys_before_a_wrong_one_apply(run_tool, install, user_data):
    install.write("settings.json", '{"vistrel_scale": 1.5, "vistrel_pseudo_3d": 0, "vistrel_cinema_mode": true}')
    run = run_tool(*lab.CHEAP)
    assert run.section(IN_EFFECT) == DEFAULTS.replace("1.00  (3.00 m wide)", "1.50  (4.50 m wide)")
    assert (
        "could not be parsed: [json.exception.type_error.302] type must be boolean, but is number\n"
    ) in run.report_text


def test_a_folder_of_that_name_is_skipped(run_tool, install, user_data):
    (user_data / "usersettings.json").mkdir(parents=True)
    (install.folder / "settings.json").mkdir()
    install.write("../settings.json", '{"vistrel_scale": 3}')
    run = run_tool(*lab.CHEAP)
    assert applied(run) == (install.windows_folder + "\\..\\settings.json", "3.00")
    assert "!! settings.json" not in run.report_text


def test_a_locked_file_is_skipped(run_tool, install, user_data):
    path = write(user_data / "usersettings.json", '{"vistrel_scale": 1.5}')
    install.write("settings.json", '{"vistrel_scale": 2}')
    with programs.held(path, "none"):
        run = run_tool(*lab.CHEAP)
    assert applied(run) == (install.windows_folder + "\\settings.json", "2.00")
    assert "!! settings.json" not in run.report_text
    with programs.held(path, "read"):
        assert applied(run_tool(*lab.CHEAP)) == (lab.windows_path(path), "1.50")


def test_without_a_data_folder_the_current_directory_is_used(run_tool, local_data, tmp_path):
    write(tmp_path / "elsewhere" / "usersettings.json", '{"vistrel_scale": 4}')
    local_data.rename(local_data.with_name("away"))
    try:
        run = run_tool(*lab.CHEAP, cwd=tmp_path / "elsewhere")
    finally:
        local_data.with_name("away").rename(local_data)
    assert applied(run) == (".\\usersettings.json", "4.00")
    assert run.section(LOG).startswith("No log at .\\vistrel_init_log.txt\n")
    assert not (tmp_path / "elsewhere" / "Vistrel").exists()


def test_the_last_run_of_the_log_is_quoted(run_tool, user_data):
    path = write(
        user_data / "vistrel_init_log.txt",
        "Initializing D3D11 Match found\r\nERROR of an earlier run\r\n"
        "Initializing D3D11 Match found: Größe 100%s\r\nunrelated\r\nDirectML ready\r\nFAILED\r\n  it failed",
    )
    with programs.held(path, "write"):
        run = run_tool(*lab.CHEAP)
    assert run.section(LOG) == (
        f"{lab.windows_path(path)}\n\n"
        "  Initializing D3D11 Match found: Größe 100%s\n  DirectML ready\n    it failed"
    )


def test_a_long_run_is_quoted_from_its_end(run_tool, user_data):
    lines = [f"line {i} failed" for i in range(100_000)]
    path = write(user_data / "vistrel_init_log.txt", "Initializing D3D11 ERROR\n" + "\n".join(lines))
    quoted = run_tool(*lab.CHEAP).section(LOG).split("\n")
    assert quoted == [lab.windows_path(path), ""] + ["  " + line for line in lines[-60:]]


def test_a_log_without_relevant_lines(run_tool, user_data):
    write(user_data / "vistrel_init_log.txt", b"")
    assert run_tool(*lab.CHEAP).section(LOG) == (
        "The log exists but carries none of the lines that decide whether depth happens - it is probably from a run "
        "that never pressed Start."
    )


def test_an_unreadable_log_counts_as_missing(run_tool, user_data):
    path = write(user_data / "vistrel_init_log.txt", "ERROR\n")
    with programs.held(path, "none"):
        assert run_tool(*lab.CHEAP).section(LOG).startswith(f"No log at {lab.windows_path(path)}\n")


def test_binary_files_do_no_harm(run_tool, user_data):
    rubbish = bytes(range(256)) * 64
    write(user_data / "vistrel_init_log.txt", rubbish.replace(b"\x1a", b"") + b"\nERROR\n")
    write(user_data / "usersettings.json", b"\xef\xbb\xbf{}\n" + rubbish.replace(b"\x1a", b"") + b"\n vistrel_x\n")
    run = run_tool(*lab.CHEAP)
    assert run.exit_code == 0
    assert run.section(VERBATIM).endswith("\n\n  vistrel_x")
    assert run.section(LOG).endswith("\n\n  ERROR")
