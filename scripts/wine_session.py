"""A Windows session of one's own: a fresh prefix of Wine and a screen that nobody sees, both gone at the end."""

import os
import pathlib
import shutil
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
# What starts programs, by their bitness. That for 32 bits is in a package of a foreign architecture and may be missing.
LOADERS = {64: pathlib.Path("/usr/lib/wine/wine64"), 32: pathlib.Path("/usr/lib/wine/wine")}
SERVER = pathlib.Path("/usr/lib/wine/wineserver")


def windows_path(path):
    """A file of this host as programs of the session name it."""
    return "Z:" + str(pathlib.Path(path).resolve()).replace("/", "\\")


class WineSession:
    def __init__(self, prefix, language="C.UTF-8", bits=64):
        self.prefix = pathlib.Path(prefix)
        self.loader = LOADERS[bits]
        self.environment = dict(
            os.environ,
            WINEPREFIX=str(self.prefix),
            WINEARCH=f"win{bits}",
            WINEDEBUG="-all",
            # Components that would be downloaded and are not needed.
            WINEDLLOVERRIDES="mscoree,mshtml=",
            LC_ALL=language,
        )
        if bits == 32:
            # Where Debian's 32-bit Wine has a library that it does not find by itself.
            self.environment["WINEPATH"] = windows_path("/usr/i686-w64-mingw32/lib")
        # Clients' languages are those of their calls.
        self.environment.pop("KAPUTIL_LOCALE", None)

    def __enter__(self):
        shutil.rmtree(self.prefix, ignore_errors=True)
        self.prefix.parent.mkdir(parents=True, exist_ok=True)
        reading, writing = os.pipe()
        self.screen = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x768x24"],
            pass_fds=[writing], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()
        self.run("wineboot", "-i", timeout=300)
        return self

    def __exit__(self, *_):
        subprocess.run([SERVER, "-k"], env=self.environment, check=False)
        self.screen.terminate()
        self.screen.wait()

    def program_file(self, program, folder):
        """The file of a program, as Wine runs it without help: it starts a bare name through a program of its own, which
        takes as long again and now and then fails on a busy machine ("ShellExecuteEx failed: Internal error")."""
        file = pathlib.Path(folder or ".") / str(program).replace("\\", "/")
        if file.is_file():
            return windows_path(file)
        if (self.prefix / "drive_c" / "windows" / "system32" / f"{program}.exe").is_file():
            return f"C:\\windows\\system32\\{program}.exe"
        return str(program)

    def run(self, program, *arguments, folder=None, timeout=120, **variables):
        """Runs a program of the session; its exit code and everything that it printed.

        What it prints goes to a file: a pipe would also be held open by services that it is the first to need.
        """
        command = [self.program_file(program, folder), *map(str, arguments)]
        with tempfile.TemporaryFile() as printed:
            done = subprocess.run(
                [self.loader, *command], cwd=folder, env=dict(self.environment, **variables),
                stdin=subprocess.DEVNULL, stdout=printed, stderr=subprocess.STDOUT, timeout=timeout, check=False)
            printed.seek(0)
            return done.returncode, printed.read().decode("utf-8", "replace").replace("\r\n", "\n")
