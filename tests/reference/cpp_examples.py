#!/usr/bin/env python3
"""Makes a source file of the C++ examples that the reference's pages show: cpp_examples.py PAGES SOURCE"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))

from page_examples import examples, expectations  # noqa: E402


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n") + '"'


def main(pages, source):
    headers, functions, table = set(), [], []
    for number, (name, setup, script) in enumerate(examples(pages, "cpp")):
        lines = (setup + script).splitlines()
        headers.update(line for line in lines if line.startswith("#include"))
        body = "\n".join("    " + line for line in lines if line and not line.startswith("#include"))
        functions.append(f"// {name}\nvoid example{number}() {{\n{body}\n}}\n")
        expected = "".join(line + "\n" for line in expectations(script, "std::cout", "  // "))
        table.append(f"    {{{quoted(name)}, &example{number}, {quoted(expected)}}},")
    text = "\n".join(['#include "reference/examples.hpp"', "", *sorted(headers), "", "namespace kap::test {", "namespace {", "",
                      "\n".join(functions), "constexpr Example kExamples[] = {", *table, "};", "", "}  // namespace", "",
                      "std::span<const Example> cppExamples() {", "    return kExamples;", "}", "", "}  // namespace kap::test", ""])
    pathlib.Path(source).write_text(text, "utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
