#!/usr/bin/env python3
"""Tests the archive and the installer for Windows: what they hold, and what their page says, followed in a fresh Windows
session.

usage: package.py ARCHIVE INSTALLER
"""

import os
import pathlib
import sys
import tempfile
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

from wine_session import WineSession, windows_path  # noqa: E402

CONTENTS = """
LEGGIMI.txt
examples/clienti.ps1
examples/documento.bas
examples/edit_a_record.vbs
examples/elenco.js
examples/esporta.vbs
examples/giroconto.vbs
examples/impostazioni.vbs
examples/ini.vbs
examples/numeri.vbs
examples/ordini.vbs
examples/property_string.cpp
examples/proprieta.js
examples/registro.vbs
examples/righe.vbs
examples/valori.vbs
register.cmd
unregister.cmd
x64/KapLocal.tlb
x64/KapUtil26.dll
x64/KapUtil26.manifest
x64/KapUtil26.tlb
x64/kaputil.exe
x86/KapLocal.tlb
x86/KapUtil26.dll
x86/KapUtil26.manifest
x86/KapUtil26.tlb
x86/kaputil.exe
""".split()

# The kind of machine in a program's header.
MACHINES = {"x64": 0x8664, "x86": 0x014C}


def machine_of(program):
    data = program.read_bytes()
    header = int.from_bytes(data[0x3C:0x40], "little")
    return int.from_bytes(data[header + 4:header + 6], "little")


class Installation:
    """The archive unpacked, in a session that has never seen it."""

    def __init__(self, session, folder):
        self.session = session
        self.folder = folder
        self.failures = 0

    def expect(self, what, good, shown=""):
        print(("ok      " if good else "FAILED  ") + what + ("" if good else f"\n{shown}"), flush=True)
        self.failures += not good

    def run(self, *command, **variables):
        return self.session.run(*command, folder=self.folder, **variables)

    def is_registered(self, root, name="KapUtil.CProprieta"):
        return self.run("reg", "query", f"{root}\\Software\\Classes\\{name}")[0] == 0

    def example_works(self):
        printed = self.run("cscript", "//nologo", "examples\\edit_a_record.vbs")[1]
        expected = (ROOT / "examples" / "windows" / "edit_a_record.txt").read_text("utf-8")
        return printed == expected, printed


def test_contents(archive, installation):
    with zipfile.ZipFile(archive) as packed:
        names = sorted(name.removeprefix("kaputil/") for name in packed.namelist())
        packed.extractall(installation.folder.parent)
    installation.expect("it holds what it should and nothing else", names == CONTENTS, "\n".join(names))
    for folder, machine in MACHINES.items():
        for program in ("KapUtil26.dll", "kaputil.exe"):
            found = machine_of(installation.folder / folder / program)
            installation.expect(f"{folder}/{program} is for that kind of program", found == machine, hex(found))
    page = (installation.folder / "LEGGIMI.txt").read_text("utf-8-sig")
    parts = ("# KapUtil su Windows\n", "## Installare\n", "## Rimuovere\n", "# KapUtil on Windows\n", "## Installing\n", "## Removing\n")
    places = [page.find(part) for part in parts]
    installation.expect("its page tells in both languages how to install and remove it",
                        -1 not in places and places == sorted(places), page)


def test_page(installation):
    """Step by step as the page has it."""
    installation.expect("nothing works before", not installation.example_works()[0])
    installation.run("cmd", "/c", "register.cmd")
    installation.expect("register.cmd registers the classes for everybody", installation.is_registered("HKLM"))
    installation.expect("examples\\edit_a_record.vbs runs", *installation.example_works())
    code, printed = installation.run("x64\\kaputil.exe", "classes")
    installation.expect("kaputil classes lists the classes", code == 0 and "StdFunctions" in printed, printed)
    installation.run("cmd", "/c", "unregister.cmd")
    installation.expect("unregister.cmd removes them", not installation.is_registered("HKLM"))
    installation.expect("nothing works afterwards", not installation.example_works()[0])

    installation.run("regsvr32", "/s", "x64\\KapUtil26.dll")
    installation.expect("regsvr32 registers one of them", *installation.example_works())
    installation.run("regsvr32", "/s", "/u", "x64\\KapUtil26.dll")
    installation.run("regsvr32", "/s", "/n", "/i:user", "x64\\KapUtil26.dll")
    installation.expect("and for the user alone", installation.is_registered("HKCU") and not installation.is_registered("HKLM"))
    installation.run("regsvr32", "/s", "/u", "/n", "/i:user", "x64\\KapUtil26.dll")
    installation.expect("which is removed, too", not installation.is_registered("HKCU"))


def test_installer(installation, installer):
    """For everybody, over itself, and for the user alone; each time removed without a trace."""
    def msiexec(*words):
        code, printed = installation.run("msiexec", *words, "/qn")
        installation.expect(f"msiexec {words[0]} succeeds", code == 0, f"{code}\n{printed}")

    def files_of(root):
        return sorted(str(path.relative_to(root)).replace(os.sep, "/") for path in root.rglob("*") if path.is_file())

    scripts = {"register.cmd", "unregister.cmd"}
    wanted = [name for name in CONTENTS if name not in scripts]
    package = windows_path(installer)
    programs = installation.session.prefix / "drive_c" / "Program Files" / "KapUtil"
    for words in ((), ("REINSTALL=ALL", "REINSTALLMODE=vamus")):
        msiexec("/i", package, *words)
        installation.expect("its files are where programs are", files_of(programs) == wanted, files_of(programs))
        installation.expect("the classes are registered for everybody",
                            installation.is_registered("HKLM") and not installation.is_registered("HKCU"))
        installation.expect("an example runs", *installation.example_works())
    msiexec("/x", package)
    installation.expect("removing it leaves nothing registered", not installation.is_registered("HKLM"))
    installation.expect("nor a file", not files_of(programs), files_of(programs))

    msiexec("/i", package, "MSIINSTALLPERUSER=1")
    installation.expect("for the user alone the classes are the user's",
                        installation.is_registered("HKCU") and not installation.is_registered("HKLM"))
    installation.expect("an example runs", *installation.example_works())
    msiexec("/x", package, "MSIINSTALLPERUSER=1")
    installation.expect("which is removed, too", not installation.is_registered("HKCU"))


def main(archive, installer):
    with tempfile.TemporaryDirectory() as place, WineSession(ROOT / "build" / "wine-package") as session:
        installation = Installation(session, pathlib.Path(place) / "kaputil")
        test_contents(archive, installation)
        test_page(installation)
        test_installer(installation, installer)
    return 1 if installation.failures else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    sys.exit(main(*sys.argv[1:]))
