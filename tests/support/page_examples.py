"""The examples of the reference, as its pages show them in one language."""

import html.parser
import pathlib
import re


class PageReader(html.parser.HTMLParser):
    """The scripts of one language on a page: what all begin with, and the examples by member ("" of the class)."""

    def __init__(self, language):
        super().__init__()
        self.wanted = f"form {language}"
        self.setup, self.examples = "", []
        self.member, self.in_setup, self.in_form, self.script = "", False, False, None

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        if tag == "section":
            self.member = values["id"]
        elif tag == "h2":
            self.in_setup = values.get("id") == "setup"
        elif tag == "div":
            self.in_form = values.get("class") == self.wanted
        elif tag == "pre" and self.in_form:
            self.script = ""

    def handle_data(self, data):
        if self.script is not None:
            self.script += data

    def handle_endtag(self, tag):
        if tag == "pre" and self.script is not None:
            if self.in_setup:
                self.setup = self.script
            else:
                self.examples.append((self.member, self.script))
            self.script, self.in_form = None, False


def examples(folder, language):
    """(name, what stands in front, example) of every class and member that has one, on the pages below a folder."""
    for page in sorted(pathlib.Path(folder).glob("*.html")):
        reader = PageReader(language)
        reader.feed(page.read_text("utf-8"))
        for member, script in reader.examples:
            yield page.stem + ("." + member if member else ""), reader.setup, script


def expectations(script, printing, mark):
    """The comments behind what an example prints, in order: what is behind the mark in lines with the printing word."""
    parts = (line.rpartition(mark) for line in script.splitlines() if printing in line)
    return [comment.strip() for _, found, comment in parts if found]


def plain(line):
    """What is printed, as every language and locale means it: whole numbers without a fraction, a decimal point."""
    line = re.sub(r"(?<=\d),(?=\d)", ".", line)
    line = re.sub(r"\b(\d+)\.0\b", r"\1", line)
    return line.replace("Vero", "True").replace("Falso", "False")
