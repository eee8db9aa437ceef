"""Reads the guides as somebody who does what they say.

A block behind a line <!-- file: NAME --> is written to that file. In a block `console` each line `$ ...` is a command, and the
lines below it are what it prints. A block `python` is a program, and the block `text` behind it what that prints.
"""

import pathlib
import re
import subprocess

GUIDES = pathlib.Path(__file__).parents[2] / "docs" / "guide"
BLOCK = re.compile(r"(?:^<!-- (?P<kind>file|example): (?P<name>\S+) -->\n)?^```(?P<language>\w*)\n(?P<text>.*?)^```$",
                   re.DOTALL | re.MULTILINE)


def pages():
    return sorted(GUIDES.glob("*/*.md"))


class Reader:
    """Does what a guide says in a folder; `python` is the interpreter that has the package, None when there is none."""

    def __init__(self, folder, python, environment):
        self.folder = folder
        self.python = python
        self.environment = dict(environment)
        self.environment.pop("KAPUTIL_CONNECTION", None)

    def run(self, *command, **changes):
        environment = {**self.environment, **changes}
        done = subprocess.run(command, cwd=self.folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              encoding="utf-8", timeout=120)
        return "".join(f"{line.rstrip()}\n" for line in done.stdout.splitlines())

    def console(self, text):
        """The block with what its commands print, in the place of what stands there."""
        shown = ""
        for line in text.splitlines():
            if line.startswith("$ "):
                # What must be loaded first into an interpreter with the package is not for other programs.
                shown += f"{line}\n" + self.run("bash", "-c", line[2:], LD_PRELOAD="")
        return shown

    def follow(self, page):
        """The page as it should be."""
        printed = None

        def block(found):
            nonlocal printed
            text, language = found["text"], found["language"]
            whole = found[0]
            if found["kind"] == "file":
                (self.folder / found["name"]).write_text(text, encoding="utf-8")
            elif found["kind"] is None and language == "console":
                return whole.replace(f"\n{text}```", f"\n{self.console(text)}```")
            elif found["kind"] is None and language == "python":
                if self.python:
                    printed = self.run(self.python, "-c", text, PYTHONIOENCODING="utf-8")
            elif language == "text" and printed is not None:
                whole, printed = f"```text\n{printed}```", None
            return whole

        return BLOCK.sub(block, page)
