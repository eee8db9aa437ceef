#!/usr/bin/env python3
"""Makes the archive for Windows: both modules, the type library, the command line, scripts that register and remove them,
examples and the page that says how. The same build gives the same bytes.

usage: package_windows.py ARCHIVE
"""

import pathlib
import sys
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = {"x64": "windows64", "x86": "windows32"}
EPOCH = (1980, 1, 1, 0, 0, 0)

REGISTER = """@echo off
rem Registers KapUtil for both kinds of programs: for everybody when started as administrator, otherwise for you alone.
"%SystemRoot%\\System32\\regsvr32.exe" {switch}"%~dp0x64\\KapUtil26.dll"
if exist "%SystemRoot%\\SysWOW64\\regsvr32.exe" "%SystemRoot%\\SysWOW64\\regsvr32.exe" {switch}"%~dp0x86\\KapUtil26.dll"
"""


def contents():
    """The files of the archive by their names there."""
    for folder, preset in FOLDERS.items():
        build = ROOT / "build" / preset
        for name in ("KapUtil26.dll", "KapUtil26.tlb", "KapLocal.tlb", "KapUtil26.manifest"):
            yield f"{folder}/{name}", (build / "com" / name).read_bytes()
        yield f"{folder}/kaputil.exe", (build / "kaputil.exe").read_bytes()
    yield "register.cmd", REGISTER.format(switch="").replace("\n", "\r\n").encode("ascii")
    remove = REGISTER.format(switch="/u ").replace("Registers KapUtil", "Removes KapUtil's registration")
    yield "unregister.cmd", remove.replace("\n", "\r\n").encode("ascii")
    for example in sorted((ROOT / "examples" / "windows").iterdir()):
        if example.suffix != ".txt":
            yield f"examples/{example.name}", example.read_text("utf-8").replace("\n", "\r\n").encode("utf-8")
    page = (ROOT / "docs" / "windows.md").read_text("utf-8").split("\n## For those who build it\n")[0]
    # The mark of UTF-8 in front: older editors take the text for another code page without it.
    yield "LEGGIMI.txt", page.replace("\n", "\r\n").encode("utf-8-sig")


def main(archive):
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as out:
        for name, data in contents():
            out.writestr(zipfile.ZipInfo(f"kaputil/{name}", EPOCH), data, zipfile.ZIP_DEFLATED)
    print(archive)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    main(sys.argv[1])
