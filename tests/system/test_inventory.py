"""What part 1 says of the machine and of what else is on it: a clean machine, a crowded one, and injected files."""

import contextlib

import golden
import lab
import programs

INJECTED = "INJECTED INTO VISTREL'S OWN FOLDER"
NOTHING_INJECTED = "Nothing found. No proxy DLL and no ReShade files beside Vistrel.exe."
ADVICE = (
    "\n"
    ">>> Something is injecting itself into Vistrel. This is what to undo first, before anything else in this report "
    "is worth reading.\n"
    ">>> ReShade belongs on the GAME, never on Vistrel.exe. Run the ReShade uninstaller against this folder, or delete "
    "the files listed above.\n"
    ">>> The symptom it produces is AI depth that runs and reports timings while no 3D ever reaches the headset."
)
PROXY_DLLS = [
    "dxgi.dll",
    "d3d9.dll",
    "d3d10.dll",
    "d3d11.dll",
    "d3d12.dll",
    "d3d8.dll",
    "opengl32.dll",
    "dinput8.dll",
    "winmm.dll",
    "version.dll",
    "dbghelp.dll",
]
RESHADE_FILES = ["ReShade.ini", "ReShade64.dll", "ReShade32.dll", "ReShadePreset.ini", "ReShade.log"]


def inventory(run):
    """The report from the header of part 1 to the end of the injection check."""
    text = run.report_text
    start = text.index(lab.header("PART 1 - BASELINE, NOTHING ELSE RUNNING"))
    injected = text.index(lab.header(INJECTED), start)
    return text[start : text.index("\n\n== ", injected) + 1]


def test_clean_machine(tmp_path, install, run_tool):
    with programs.in_foreground(tmp_path, "WindowsTerminal.exe", "C:\\Ambulo\\vistrel_diag.exe"):
        run = run_tool(*lab.CHEAP, scenario="desktop-pc")
    golden.check("inventory-clean.txt", inventory(run), install)


def test_crowded_machine(tmp_path, install, run_tool):
    environment = programs.add_proxy_dlls(install, "winmm.dll", "dxgi.dll")
    install.write("ReShade.ini", "")
    (install.folder / "reshade-shaders").mkdir()
    preferences = {
        "C:\\Games\\A\\game.exe": "GpuPreference=2;",
        "C:\\Program Files\\Ambulo\\VISTREL.exe": "GpuPreference=1;",
        "D:\\Spiele für Éva\\SteamVR\\bin\\win64\\VRServer.exe": "GpuPreference=2;",
        "D:\\ゲーム\\vrcompositor.exe": "GpuPreference=0;",
    }
    with contextlib.ExitStack() as machine:
        machine.enter_context(programs.gpu_preferences(preferences))
        for name in ("Ambulo.exe", "VRSERVER.EXE", "obs64.exe", "explorer2.exe", "obs64.exe", "Parsec.exe"):
            machine.enter_context(programs.asleep(tmp_path, name))
        machine.enter_context(programs.in_foreground(tmp_path, "ゲーム.exe", "ゲームの時間"))
        run = run_tool(*lab.CHEAP, scenario="many-displays", env=environment)
    golden.check("inventory-crowded.txt", inventory(run), install)


def test_gpu_preferences_only_for_other_programs(run_tool):
    with programs.gpu_preferences({"C:\\game.exe": "GpuPreference=2;"}):
        run = run_tool(*lab.CHEAP, scenario="desktop-pc")
    assert run.section("PER-APP GPU OVERRIDES") == (
        "Nothing set for Vistrel or SteamVR (this is the normal case).\n"
        "(GpuPreference=1 means integrated, =2 means high performance.)"
    )


def test_everything_injected(install, run_tool):
    environment = programs.add_proxy_dlls(install, *PROXY_DLLS)
    for name in RESHADE_FILES:
        install.write(name, "")
    (install.folder / "reshade-shaders").mkdir()
    run = run_tool(*lab.CHEAP, scenario="desktop-pc", env=environment)
    assert run.exit_code == 0
    found = [f"PROXY DLL      : {name}   <- not ours" for name in PROXY_DLLS]
    found += [f"ReShade file   : {name}" for name in [*RESHADE_FILES, "reshade-shaders"]]
    assert run.section(INJECTED) == "\n".join(found) + "\n" + ADVICE


def test_capitals_in_a_folder_with_a_non_ascii_name(tmp_path):
    install = lab.Install(tmp_path / "Ünïcødé ゲーム")
    clean = lab.run_tool(install, *lab.CHEAP, scenario="desktop-pc")
    assert clean.section(INJECTED) == NOTHING_INJECTED
    environment = programs.add_proxy_dlls(install, "DBGHELP.DLL")
    crowded = lab.run_tool(install, *lab.CHEAP, scenario="desktop-pc", env=environment)
    assert crowded.section(INJECTED) == "PROXY DLL      : dbghelp.dll   <- not ours\n" + ADVICE
