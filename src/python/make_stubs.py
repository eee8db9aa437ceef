#!/usr/bin/env python3
"""Writes the package's stub files, __init__.pyi and classes.pyi, into a folder, from the catalogue.

usage: make_stubs.py FOLDER, with the built package importable

What the package declares in its own code, the stubs only name again; classes, members and their documentation come from
the catalogue.
"""

import inspect
import keyword
import pathlib
import sys

import kaputil
from kaputil import _descriptions, _native

# What may be given for each type: the conversions take more than the type itself.
ALIASES = {
    "_Truth": "Union[bool, int, Variant]",
    "_Number": "Union[int, float, decimal.Decimal, Variant]",
    "_Date": "Union[datetime.date, str, Variant]",
    "_Text": "Union[str, Variant]",
}
ARGUMENTS = {"Boolean": "_Truth", "Date": "_Date", "String": "_Text", "Variant": "Any", "Object": "object"}

HEADER = """import datetime
import decimal
import enum
from typing import Any, Literal, Optional, Union, overload

"""


def quoted(text):
    """A docstring, its lines behind the first indented as they are given."""
    text = text.replace("\\", "\\\\").replace('"""', "'''")
    return f'"""{text} """' if text.endswith('"') else f'"""{text}"""'


def docstring(indent, documentation):
    first, *rest = documentation.splitlines()
    lines = [first, *(f"{indent}{line}" if line else "" for line in rest)]
    end = f"\n{indent}" if rest else ""
    return f"{indent}{quoted(chr(10).join(lines) + end)}\n"


def documented(indent, header, documentation):
    return f"{indent}{header}\n{docstring(indent + '    ', documentation)}"


def result_type(member):
    if member.object_class:
        return f"classes.{member.object_class}"
    python = _descriptions.python_type(member.type)
    if python is None:
        return "Any"
    return python.__name__ if python.__module__ == "builtins" else f"{python.__module__}.{python.__name__}"


def argument_type(parameter):
    if parameter.object_class:
        accepted = f"Optional[Union[classes.{parameter.object_class}, Variant]]"
    else:
        accepted = ARGUMENTS.get(parameter.type, "_Number")
    wide = accepted in ("Any", "object")
    return f"Union[{accepted}, Ref[Any]]" if parameter.by_reference and not wide else accepted


def parameter_text(parameter):
    text = f"{parameter.python_name}: {argument_type(parameter)}"
    if not parameter.optional:
        return text
    shown = isinstance(parameter.default, (bool, int, float, str))
    return f"{text} = {parameter.default!r}" if shown else f"{text} = ..."


def function_text(indent, member, *leading):
    parameters = ", ".join([*leading, *map(parameter_text, member.parameters)])
    result = result_type(member) if member.gives_value else "None"
    return documented(indent, f"def {member.name}({parameters}) -> {result}:", member.documentation)


def attribute_text(indent, member):
    if member.assignable:
        return f"{indent}{member.name}: {result_type(member)}\n{docstring(indent, member.documentation)}"
    header = f"def {member.name}(self) -> {result_type(member)}:"
    return f"{indent}@property\n" + documented(indent, header, member.documentation)


def member_text(indent, member, *leading):
    return attribute_text(indent, member) if member.attribute else function_text(indent, member, *leading)


def aliases():
    return "".join(f"{name} = {meaning}\n" for name, meaning in ALIASES.items())


def class_text(described):
    base = getattr(kaputil.classes, described.name).__base__.__name__
    parts = [f"class {described.name}({base}):\n{docstring('    ', described.documentation)}"]
    parts += [member_text("    ", one, "self") for one in described.members if not keyword.iskeyword(one.name)]
    return "\n".join(parts)


def enumeration_text(name, values):
    lines = [f"class {name}(enum.IntEnum):", *(f"    {key} = {value}" for key, value in values)]
    return "\n".join([*lines, "", *(f"{key} = {name}.{key}" for key, _ in values)]) + "\n"


def dispatch_text():
    """Dispatch tells the class of the names that the catalogue has; others may be registered."""
    known = [f'@overload\ndef Dispatch(name: Literal["{name}"]) -> classes.{made}: ...\n'
             for name, made in _native.programmatic_names()]
    header = f"def Dispatch{inspect.signature(kaputil.Dispatch)}:".replace("'", "")
    return "".join(known) + "@overload\n" + documented("", header, inspect.getdoc(kaputil.Dispatch))


def own_names():
    """What the package's own modules declare, by module."""
    functions = [name for name, value in vars(kaputil._functions).items()
                 if inspect.isfunction(value) and value.__module__ == "kaputil" and value is not kaputil.Dispatch]
    return {
        "_data_access": ["Row"],
        "_errors": ["AutomationError", "MemberNotFound"],
        "_events": ["Events", "WithEvents"],
        "_functions": functions,
        "_holders": ["Ref", "Variant"],
        "_marks": ["Empty", "Nothing"],
        "_objects": ["Object"],
    }


def package_stub():
    imports = ["from . import _native as _native\n", "from . import classes as classes\n", "from . import numbers as numbers\n"]
    for module, names in own_names().items():
        imports += [f"from .{module} import {name} as {name}\n" for name in names]
    parts = [quoted(kaputil.__doc__.splitlines()[0]) + "\n", HEADER + "".join(imports), aliases(), "__version__: str\n",
             dispatch_text()]
    parts += [member_text("", one) for one in _descriptions.global_class().members]
    parts += [enumeration_text(name, values) for name, values in _native.enumerations()]
    return "\n".join(parts)


def classes_stub():
    bases = ", ".join(sorted(base.__name__ for base in kaputil._data_access.BASES.values()))
    imports = (f"from . import classes\nfrom ._data_access import {bases}\n"
               "from ._holders import Ref, Variant\nfrom ._objects import Object\n")
    parts = [quoted(kaputil.classes.__doc__.splitlines()[0]) + "\n", HEADER + imports, aliases()]
    return "\n".join(parts + [class_text(one) for one in _descriptions.all_classes()])


def main():
    folder = pathlib.Path(sys.argv[1])
    kaputil.set_locale("en-GB")  # the language of the documentation, whatever the environment says
    (folder / "__init__.pyi").write_text(package_stub(), encoding="utf-8")
    (folder / "classes.pyi").write_text(classes_stub(), encoding="utf-8")


if __name__ == "__main__":
    main()
