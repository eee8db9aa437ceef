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

# Of each kind of thing that registration writes, one: a name, a class, and both type libraries.
REGISTERED = ("KapUtil.CProprieta", "KapLocal.Connection", "CLSID\\{80368bd9-a134-4db3-b976-3eff993d4529}",
              "TypeLib\\{749c4a7f-4612-49ed-994a-2e3285c059ca}", "TypeLib\\{e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b01}")

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

    def registered(self, root):
        """What of the library is registered for everybody (HKLM) or for the user (HKCU)."""
        return [name for name in REGISTERED if self.run("reg", "query", f"{root}\\Software\\Classes\\{name}")[0] == 0]

    def expect_registered(self, what, root=None):
        """Everything for everybody or for the user, nothing for the other; without a root nothing at all."""
        wanted = {place: list(REGISTERED) if place == root else [] for place in ("HKLM", "HKCU")}
        found = {place: self.registered(place) for place in wanted}
        self.expect(what, found == wanted, found)

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
    installation.expect_registered("register.cmd registers the classes for everybody", "HKLM")
    installation.expect("examples\\edit_a_record.vbs runs", *installation.example_works())
    code, printed = installation.run("x64\\kaputil.exe", "classes")
    installation.expect("kaputil classes lists the classes", code == 0 and "StdFunctions" in printed, printed)
    installation.run("cmd", "/c", "unregister.cmd")
    installation.expect_registered("unregister.cmd removes them")
    installation.expect("nothing works afterwards", not installation.example_works()[0])

    installation.run("regsvr32", "/s", "x64\\KapUtil26.dll")
    installation.expect("regsvr32 registers one of them", *installation.example_works())
    installation.run("regsvr32", "/s", "/u", "x64\\KapUtil26.dll")
    installation.run("regsvr32", "/s", "/n", "/i:user", "x64\\KapUtil26.dll")
    installation.expect_registered("and for the user alone", "HKCU")
    installation.run("regsvr32", "/s", "/u", "/n", "/i:user", "x64\\KapUtil26.dll")
    installation.expect_registered("which is removed, too")


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

    def expect_gone():
        installation.expect_registered("removing it leaves nothing registered")
        installation.expect("nor a file", not programs.exists(), files_of(programs))

    for words in ((), ("REINSTALL=ALL", "REINSTALLMODE=vamus")):
        msiexec("/i", package, *words)
        installation.expect("its files are where programs are", files_of(programs) == wanted, files_of(programs))
        installation.expect_registered("the classes are registered for everybody", "HKLM")
        installation.expect("an example runs", *installation.example_works())
    msiexec("/x", package)
    expect_gone()

    msiexec("/i", package, "MSIINSTALLPERUSER=1")
    installation.expect("its files are there for the user alone, too", files_of(programs) == wanted, files_of(programs))
    installation.expect_registered("for the user alone the classes are the user's", "HKCU")
    # Wine never looks at the user's own classes, so that no program is run here.
    server = f"HKCU\\Software\\Classes\\{REGISTERED[2]}\\InprocServer32"
    shown = installation.run("reg", "query", server, "/ve")[1]
    installation.expect("they are served by the file that was installed",
                        "C:\\Program Files\\KapUtil\\x64\\KapUtil26.dll" in shown, shown)
    msiexec("/x", package, "MSIINSTALLPERUSER=1")
    expect_gone()


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
