#!/usr/bin/env python3
"""Makes the wheel of the Python package. pip calls the functions below (pyproject.toml); by itself it packs what is built:

    python_wheel.py BUILD FOLDER        writes the wheel of a configured build with the target kaputil-python into FOLDER
"""

import base64
import hashlib
import os
import pathlib
import re
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
# A fixed time, so that the same files make the same wheel.
TIME = (2020, 1, 1, 0, 0, 0)

METADATA = """\
Metadata-Version: 2.1
Name: kaputil
Version: {version}
Summary: KAP Utility 2.6: records, numbering, settings and a database in one file for business programs
License: All rights reserved
Platform: Linux
Classifier: Development Status :: 5 - Production/Stable
Classifier: Intended Audience :: Developers
Classifier: License :: Other/Proprietary License
Classifier: Natural Language :: Italian
Classifier: Operating System :: POSIX :: Linux
Classifier: Private :: Do Not Upload
Classifier: Programming Language :: C++
Classifier: Programming Language :: Python :: 3
Classifier: Topic :: Database
Classifier: Topic :: Office/Business
Classifier: Typing :: Typed
Requires-Python: >=3.8
Description-Content-Type: text/markdown

{description}"""

WHEEL = """\
Wheel-Version: 1.0
Generator: kaputil
Root-Is-Purelib: false
Tag: {tag}
"""


def version():
    text = (ROOT / "include/kaputil/catalogue/version.hpp").read_text(encoding="utf-8")
    return re.search(r'#define KAPUTIL_VERSION "([\d.]+)"', text).group(1)


def tag():
    """For the interpreter that runs this, on this kind of machine; the host's libraries are not in the wheel."""
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    return f"{python}-{python}-{re.sub('[-.]', '_', sysconfig.get_platform())}"


def description():
    """The guide to the package. What it links to beside itself is not in the wheel, so the links become plain text."""
    text = (ROOT / "docs/python.md").read_text(encoding="utf-8")
    return re.sub(r"\[([^\]]+)\]\((?!https?:)[^)]*\)", r"\1", re.sub(r"<!--.*?-->\n", "", text, flags=re.DOTALL))


def information():
    """The files of the wheel's own folder, but its list."""
    return {"METADATA": METADATA.format(version=version(), description=description()), "WHEEL": WHEEL.format(tag=tag())}


def record_line(name, data):
    digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
    return f"{name},sha256={digest},{len(data)}\n"


def run(*command, **variables):
    subprocess.run([str(part) for part in command], check=True, stdout=sys.stderr, env={**os.environ, **variables})


def pack(build, folder):
    """Packs what `build` installs; gives the wheel's name."""
    folder_of_information = f"kaputil-{version()}.dist-info"
    files = {f"{folder_of_information}/{name}": text.encode() for name, text in information().items()}
    with tempfile.TemporaryDirectory() as staged:
        # Below a root of its own: the build may be for a folder that does not depend on the prefix.
        run("cmake", "--install", build, "--component", "python", "--strip", DESTDIR=staged)
        package = next(pathlib.Path(staged).glob("**/kaputil"))
        for path in sorted(package.iterdir()):
            files[f"kaputil/{path.name}"] = path.read_bytes()
    record = f"{folder_of_information}/RECORD"
    files[record] = ("".join(record_line(name, data) for name, data in files.items()) + f"{record},,\n").encode()

    name = f"kaputil-{version()}-{tag()}.whl"
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(folder / name, "w", zipfile.ZIP_DEFLATED) as wheel:
        for path, data in files.items():
            entry = zipfile.ZipInfo(path, TIME)
            entry.external_attr = (0o755 if path.endswith(".so") else 0o644) << 16
            wheel.writestr(entry, data, zipfile.ZIP_DEFLATED)
    return name


# What pip calls.


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    build = ROOT / "build/wheel"
    run("cmake", "--preset", "release", "-S", ROOT, "-B", build, f"-Dpython3Program={sys.executable}",
        *(f"-DKAPUTIL_BUILD_{part}=OFF" for part in ("TOOLS", "SQLITE_EXTENSION", "TESTS", "EXAMPLES", "BENCH")))
    run("cmake", "--build", build, "--target", "kaputil-python")
    return pack(build, wheel_directory)


def build_sdist(sdist_directory, config_settings=None):
    raise NotImplementedError("there is no archive of the sources: install from the clone, or from a wheel")


def main():
    print(pack(pathlib.Path(sys.argv[1]), sys.argv[2]))


if __name__ == "__main__":
    main()
