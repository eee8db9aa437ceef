#!/usr/bin/env python3
"""Builds and runs a program that uses the library as its users do.

    run.py BUILD FOLDER WAY     WAY: install, find_package, pkg-config, add_subdirectory or wheel

`install` puts the built library below FOLDER, where the others find it. KAPUTIL_CONSUMER_FLAGS are the compiler's options for a
library that is built with sanitizers. As a part of the program's own project the library is compiled once more; all of it, which
takes minutes, with KAPUTIL_CONSUMER_WHOLE only.
"""

import os
import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
EXPECTED = "<CODICE>12</CODICE><NOME>Ferramenta Rossi</NOME>\nCProprieta IClassi 429 2.6.0.5\n"
FLAGS = os.environ.get("KAPUTIL_CONSUMER_FLAGS", "")
PYTHON_PROGRAM = """
import kaputil
cn = kaputil.Dispatch("ADODB.Connection")
cn.Open("Provider=KapLocal;Data Source=:memory:")
cn.Execute("CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40))")
cn.Execute("INSERT INTO Clienti VALUES (12, 'Ferramenta Rossi')")
record = kaputil.Ref(None)
kaputil.DB_Read(cn, "SELECT * FROM Clienti", record)
print(record.value)
try:
    kaputil.Dispatch("KapUtil.Nessuno")
except kaputil.AutomationError as error:
    print(kaputil.Dispatch("KapUtil.CProprieta").__class__.__name__, "IClassi", error.number, kaputil.__version__)
"""


def run(*command, **variables):
    done = subprocess.run([str(part) for part in command], env={**os.environ, **variables}, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} ends with {done.returncode}:\n{done.stdout}")
    return done.stdout


def expect(printed):
    if printed != EXPECTED:
        sys.exit(f"the program printed\n{printed}instead of\n{EXPECTED}")


def configure(folder, *options):
    run("cmake", "-S", HERE, "-B", folder, "-G", "Ninja", f"-DCMAKE_CXX_FLAGS={FLAGS}", *options)


def make(folder, *targets):
    run("cmake", "--build", folder, "--target", *targets, "--parallel", "2")


def install(build, folder):
    shutil.rmtree(folder / "prefix", ignore_errors=True)  # the other ways may be at work beside it
    for component in ("library", "development"):
        run("cmake", "--install", build, "--prefix", folder / "prefix", "--component", component)


def find_package(_, folder):
    # The library's own dependencies are none of its clients': they are not even looked for.
    refused = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in ("SQLite3", "ODBC", "PkgConfig", "Threads")]
    configure(folder / "find_package", f"-DCMAKE_PREFIX_PATH={folder / 'prefix'}", *refused)
    make(folder / "find_package", "consumer")
    expect(run(folder / "find_package/consumer"))


def pkg_config(_, folder):
    library = next((folder / "prefix").glob("lib*/**/libkaputil.so"))
    options = run("pkg-config", "--cflags", "--libs", "kaputil", PKG_CONFIG_PATH=str(library.parent / "pkgconfig")).split()
    program = folder / "by_pkg_config"
    run(os.environ.get("CXX", "c++"), "-std=c++20", *FLAGS.split(), HERE / "consumer.cpp", *options, "-o", program)
    expect(run(program, LD_LIBRARY_PATH=str(library.parent)))


def add_subdirectory(_, folder):
    project = folder / "subdirectory"
    configure(project, f"-DKAPUTIL_SOURCE={ROOT}", "-DKAPUTIL_UNITY=ON", "-DKAPUTIL_PCH=ON", "-DKAPUTIL_UNITY_FILES=40")
    if os.environ.get("KAPUTIL_CONSUMER_WHOLE"):
        make(project, "consumer")
        expect(run(project / "consumer"))
    else:
        # The same files were compiled for the library itself: what may differ is how they are found.
        make(project, "kaputil_core", "CMakeFiles/consumer.dir/consumer.cpp.o")


def wheel(build, folder):
    environment = folder / "environment"
    run(sys.executable, ROOT / "scripts/python_wheel.py", build, folder / "wheels", LD_PRELOAD="")
    run(sys.executable, "-m", "venv", environment, LD_PRELOAD="")
    archive = next((folder / "wheels").glob("*.whl"))
    run(environment / "bin/python", "-m", "pip", "install", "--quiet", "--no-index", "--no-deps", archive, LD_PRELOAD="")
    expect(run(environment / "bin/python", "-I", "-c", PYTHON_PROGRAM))


def main():
    build, folder, way = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve(), sys.argv[3]
    folder.mkdir(parents=True, exist_ok=True)
    globals()[way.replace("-", "_")](build, folder)


if __name__ == "__main__":
    main()
