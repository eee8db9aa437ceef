#!/usr/bin/env python3
"""Makes the installer for Windows: a package of the system's own installation service with the files of the archive. It
registers both libraries, for everybody or for the user alone, and takes the registration back when it is removed.

usage: windows_installer.py INSTALLER
"""

import pathlib
import subprocess
import sys
import tempfile
import uuid
from xml.sax.saxutils import quoteattr

import package_windows

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Names that stay for ever: packages with the first replace each other, files keep their identity by the second.
PRODUCT_LINE = uuid.UUID("5d0f3c52-6f1e-4a8c-9f0b-1f4a26c0de01")
COMPONENTS = uuid.UUID("5d0f3c52-6f1e-4a8c-9f0b-1f4a26c0de02")

# What regsvr32 is called with, the files' folder, and when. Sequence numbers lie between those of the service's own actions:
# files are removed at 3500 and written at 4000.
EVERYBODY, ALONE = "NOT MSIINSTALLPERUSER", "MSIINSTALLPERUSER"
WIDTHS = {"x64": "[System64Folder]", "x86": "[SystemFolder]"}
REGISTER, UNREGISTER = 4100, 3400

# The kinds of custom actions: a program started in a folder, as a part of the transaction; for everybody it runs with the
# rights of the service.
IN_FOLDER, DEFERRED, WITH_RIGHTS, GO_ON = 34, 1024, 2048, 64


def version():
    text = (ROOT / "CMakeLists.txt").read_text("utf-8")
    return text.split("project(KapUtil VERSION ")[1].split()[0]


def component(name, number):
    """A file as a component of its own, which is what the service counts."""
    return (f'<Component Id="C{number}" Guid="{uuid.uuid5(COMPONENTS, name)}" Win64="yes">'
            f'<File Id="F{number}" Name={quoteattr(pathlib.PurePosixPath(name).name)} Source={quoteattr(name)} '
            'KeyPath="yes"/></Component>')


def description(names):
    """The package as its compiler reads it."""
    folders = {"": []}
    for number, name in enumerate(names):
        folder = name.rpartition("/")[0]
        folders.setdefault(folder, []).append(component(name, number))
    inner = "".join(f'<Directory Id="{folder.upper()}" Name="{folder}">{"".join(parts)}</Directory>'
                    for folder, parts in folders.items() if folder)
    references = "".join(f'<ComponentRef Id="C{number}"/>' for number in range(len(names)))
    product = uuid.uuid5(PRODUCT_LINE, version())
    return f"""<?xml version="1.0" encoding="utf-8"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
  <Product Id="{product}" Name="KapUtil" Language="1040" Codepage="1252" Version="{version()}" Manufacturer="KapUtil"
           UpgradeCode="{PRODUCT_LINE}">
    <Package InstallerVersion="500" Compressed="yes" Languages="1040" Description="KapUtil {version()}"
             Comments="Libreria di automazione per programmi a 64 e a 32 bit"/>
    <Media Id="1" Cabinet="kaputil.cab" EmbedCab="yes"/>
    <Property Id="ALLUSERS" Value="2"/>
    <MajorUpgrade DowngradeErrorMessage="Una versione pi&#249; recente di KapUtil &#232; gi&#224; installata."/>
    <Directory Id="TARGETDIR" Name="SourceDir">
      <Directory Id="ProgramFiles64Folder">
        <Directory Id="INSTALLDIR" Name="KapUtil">{"".join(folders[""])}{inner}</Directory>
      </Directory>
    </Directory>
    <Feature Id="KapUtil" Level="1" Title="KapUtil">{references}</Feature>
  </Product>
</Wix>
"""


def actions():
    """Registration and its removal: (name, kind, folder, command, condition, sequence)."""
    for width, system in WIDTHS.items():
        for who, condition, switch, rights in (("Everybody", EVERYBODY, "", WITH_RIGHTS),
                                               ("Alone", ALONE, "/n /i:user ", 0)):
            # A computer without 32-bit programs has no such regsvr32: that is no fault.
            kind = IN_FOLDER + DEFERRED + rights + (GO_ON if width == "x86" else 0)
            command = f'"{system}regsvr32.exe" /s {{}}{switch}"[{width.upper()}]KapUtil26.dll"'
            order = (1 if width == "x86" else 0) + (2 if who == "Alone" else 0)
            yield (f"Register{who}{width}", kind, width.upper(), command.format(""), f"NOT REMOVE AND {condition}",
                   REGISTER + order)
            yield (f"Unregister{who}{width}", kind | GO_ON, width.upper(), command.format("/u "),
                   f'REMOVE~="ALL" AND {condition}', UNREGISTER + order)


def quoted(text):
    return "'" + text.replace("'", "''") + "'"


def add_actions(installer):
    """The compiler knows no programs that are started in a folder, so they are added to its tables."""
    queries = []
    for name, kind, folder, command, condition, sequence in actions():
        queries.append("INSERT INTO `CustomAction` (`Action`, `Type`, `Source`, `Target`) VALUES "
                       f"({quoted(name)}, {kind}, {quoted(folder)}, {quoted(command)})")
        queries.append("INSERT INTO `InstallExecuteSequence` (`Action`, `Condition`, `Sequence`) VALUES "
                       f"({quoted(name)}, {quoted(condition)}, {sequence})")
    subprocess.run(["msibuild", installer, "-q", *queries], check=True)


def main(installer):
    files = dict(package_windows.contents())
    # Registration is the installer's own work.
    for script in ("register.cmd", "unregister.cmd"):
        del files[script]
    with tempfile.TemporaryDirectory() as place:
        folder = pathlib.Path(place)
        for name, data in files.items():
            (folder / name).parent.mkdir(exist_ok=True)
            (folder / name).write_bytes(data)
        (folder / "kaputil.wxs").write_text(description(sorted(files)), "utf-8")
        subprocess.run(["wixl", "--arch", "x64", "--output", pathlib.Path(installer).resolve(), "kaputil.wxs"],
                       cwd=folder, check=True)
    add_actions(installer)
    print(installer)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    main(sys.argv[1])
