#!/usr/bin/env python3
"""Tests the COM module in a fresh Windows session: the client that knows only the system's interfaces, every script in
its script host, registration by the system's own tool, the examples and those of the reference, and a program in each
language that does all the steps of the command line's demo. A 32-bit module is looked at from outside, and tested the
same way where 32-bit Wine is installed.

usage: run.py BUILD-FOLDER [FILTER]
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import reference_script  # noqa: E402
from wine_session import LOADERS, WineSession, windows_path  # noqa: E402

SCRIPTS = ROOT / "tests" / "com" / "scripts"
EXAMPLES = ROOT / "examples" / "windows"
STORY = ROOT / "tests" / "com" / "story"
OTHER_MAKERS = {
    "Outlook.Application": "{7d1f5b53-5d0b-4b53-9c56-1f5f6f7d1a01}",
    "ADODB.Connection": "{7d1f5b53-5d0b-4b53-9c56-1f5f6f7d1a02}",
}
OBJDUMP = {64: "x86_64-w64-mingw32-objdump", 32: "i686-w64-mingw32-objdump"}
ENTRY_POINTS = {"DllCanUnloadNow", "DllGetClassObject", "DllInstall", "DllRegisterServer", "DllUnregisterServer"}


class Report:
    def __init__(self):
        self.passed = 0
        self.failed = []

    def add(self, name, good, output):
        if good:
            self.passed += 1
            return
        self.failed.append(name)
        print(f"FAILED {name}\n{output.rstrip()}\n", flush=True)


def check_exports(report, module, bits):
    """The module exports the entry points, and needs nothing beside itself but the system."""
    text = subprocess.run([OBJDUMP[bits], "-p", module], capture_output=True, text=True, check=True).stdout
    listed = text.split("[Ordinal/Name Pointer] Table")[1].split("\n\n")[0]
    names = {line.split()[-1].split("@")[0] for line in listed.splitlines()[1:] if line.strip()}
    report.add("exports", names == ENTRY_POINTS, f"{sorted(names)}")
    foreign = [line for line in text.splitlines() if "DLL Name:" in line and "lib" in line.lower()]
    report.add("imports", not foreign, "\n".join(foreign))


def check_types(report, module):
    """The type library of a module that this Windows cannot load."""
    client = ROOT / "build" / "windows64" / "com"
    with WineSession(ROOT / "build" / "wine-com") as session:
        run_client(report, session, client, "Each/TypeLibrary.Has*",
                   KAPUTIL_TYPE_LIBRARIES=windows_path(module.parent))


def register_other_makers(session, folder):
    """Puts the tests' own mail client and data-access objects in the place of those that users have."""
    classes = "HKLM\\Software\\Classes"
    module = windows_path(folder / "kaputil-com-others.dll")
    for name, identity in OTHER_MAKERS.items():
        server = f"{classes}\\CLSID\\{identity}\\InprocServer32"
        session.run("reg", "add", f"{classes}\\{name}\\CLSID", "/ve", "/d", identity, "/f")
        session.run("reg", "add", server, "/ve", "/d", module, "/f")
        session.run("reg", "add", server, "/v", "ThreadingModel", "/d", "Apartment", "/f")


def run_client(report, session, folder, tests, **variables):
    code, output = session.run(
        "kaputil-com-client.exe", "--gtest_brief=1", f"--gtest_filter={tests}", folder=folder, timeout=600,
        KAPUTIL_DLL=windows_path(folder / "KapUtil26.dll"), KAPUTIL_SCRIPTS=windows_path(SCRIPTS), **variables)
    report.add(f"client {tests} {' '.join(variables)}".rstrip(), code == 0 and "[  PASSED  ]" in output, output)
    return output


def run_test_script(report, session, script, folder):
    """The script host tells of no failure by its exit code: a line at the end says that the script came there."""
    copy = folder / script.name
    end = 'WScript.Echo("at the end")'
    copy.write_text(script.read_text("utf-8") + "\n" + end + "\n", "utf-8")
    _, output = session.run("cscript", "//nologo", copy.name, folder=folder)
    report.add(f"cscript {script.name}", output == "at the end\n", output)


def run_example(report, session, example, build):
    if example.suffix != ".cpp":
        _, output = session.run("cscript", "//nologo", example.name, folder=example.parent)
    else:
        _, output = session.run(example.stem + ".exe", folder=build / "com" / "examples")
    report.add(f"example {example.name}", output == example.with_suffix(".txt").read_text("utf-8"), output)


def run_reference(report, session, build):
    """The examples of the reference, as its pages show them for scripts."""
    with tempfile.TemporaryDirectory() as folder:
        found = reference_script.run(session, build / "kaputil.exe", pathlib.Path(folder))
    report.add("the reference's examples", not found, "\n".join(found))


def run_stories(report, session, build, place):
    """The demo as clients of several languages do it, each with a company of its own: all tell the same."""
    made = place / "company.db"
    code, output = session.run(build / "kaputil.exe", "demo", "--database", windows_path(made))
    report.add("the company of the stories", made.is_file(), f"{code}\n{output}")
    for story in ("story.vbs", "story.js", "story.exe"):
        folder = place / story
        folder.mkdir()
        company = folder / "company.db"
        shutil.copy(made, company)
        teller = ["cscript", "//nologo", windows_path(STORY / story)]
        if story.endswith(".exe"):
            teller = [build / "com" / story]
        _, output = session.run(*teller, windows_path(company), windows_path(folder))
        report.add(f"story {story}", output == (STORY / "story.txt").read_text("utf-8"), output)


def test_module(report, session, build):
    """Everything there is to test of the module of a build."""
    folder = build / "com"
    # First what needs a system that does not know the module.
    run_client(report, session, folder, "Unregistered*")
    code, output = session.run("regsvr32", "/s", "KapUtil26.dll", folder=folder)
    report.add("regsvr32", code == 0, output)
    run_client(report, session, folder, "-Unregistered*")
    with tempfile.TemporaryDirectory() as copies:
        for script in sorted([*SCRIPTS.rglob("*.vbs"), *SCRIPTS.rglob("*.js")]):
            run_test_script(report, session, script, pathlib.Path(copies))
    for example in sorted([*EXAMPLES.glob("*.vbs"), *EXAMPLES.glob("*.js"), *EXAMPLES.glob("*.cpp")]):
        run_example(report, session, example, build)
    run_reference(report, session, build)
    with tempfile.TemporaryDirectory() as place:
        run_stories(report, session, build, pathlib.Path(place))
    code, output = session.run("regsvr32", "/s", "/u", "KapUtil26.dll", folder=folder)
    report.add("regsvr32 /u", code == 0, output)
    code, output = session.run("reg", "query", "HKLM\\Software\\Classes\\KapUtil.CProprieta")
    report.add("nothing is left", code != 0, output)


def test_some(report, session, build, wanted):
    folder = build / "com"
    session.run("regsvr32", "/s", "KapUtil26.dll", folder=folder)
    print(run_client(report, session, folder, wanted))


def main(folder, wanted=None):
    report = Report()
    build = ROOT / folder
    module = build / "com" / "KapUtil26.dll"
    bits = 32 if build.name.startswith("windows32") else 64
    check_exports(report, module, bits)
    if bits == 32:
        check_types(report, module)
    if LOADERS[bits].is_file():
        with WineSession(ROOT / "build" / "wine-com", bits=bits) as session:
            register_other_makers(session, module.parent)
            if wanted:
                test_some(report, session, build, wanted)
            else:
                test_module(report, session, build)
    else:
        print(f"{bits}-bit Wine is not installed: the module was not run")

    print(f"{report.passed} passed, {len(report.failed)} failed" + "".join(f"\n  {name}" for name in report.failed))
    return 1 if report.failed else 0


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    sys.exit(main(*sys.argv[1:]))
