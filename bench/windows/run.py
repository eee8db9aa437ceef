#!/usr/bin/env python3
"""Measures the COM module under Wine: the adapter beside a dispatch interface written by hand, and calls from a script
beside the empty loop and a component of the system's.

usage: run.py BUILD-FOLDER
"""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

from wine_session import WineSession  # noqa: E402


def main(build):
    folder = ROOT / build / "com"
    with WineSession(ROOT / "build" / "wine-bench") as session:
        session.run("regsvr32", "/s", "KapUtil26.dll", folder=folder)
        code, adapter = session.run("kaputil-com-bench.exe", folder=folder, timeout=600)
        _, script = session.run("cscript", "//nologo", "calls.vbs", folder=ROOT / "bench" / "windows", timeout=600)
        print(adapter + script, end="")
        return code


if __name__ == "__main__":
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    sys.exit(main(sys.argv[1]))
