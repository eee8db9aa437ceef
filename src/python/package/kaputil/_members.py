"""The members of Python objects, as the library asks for them."""

from __future__ import annotations

import inspect
import re
from typing import Any, FrozenSet, Optional, Tuple, get_origin

from ._holders import Ref

_ABSENT = object()
_NO_REFERENCES: Tuple[FrozenSet[int], FrozenSet[str]] = (frozenset(), frozenset())

# An annotation that `from __future__ import annotations` left as a text.
_REF_TEXT = re.compile(r"(kaputil\.)?Ref(\[.*\])?")


def find_attribute(target: Any, name: str) -> Optional[str]:
    """The attribute that a member's name stands for: spelt exactly so, or else the first in another case.

    No property is read for it. Only a class with a __getattr__ is asked for what it makes on demand.
    """
    if inspect.getattr_static(target, name, _ABSENT) is not _ABSENT:
        return name
    folded = name.casefold()
    for known in dir(target):
        if known.casefold() == folded:
            return known
    if hasattr(type(target), "__getattr__") and hasattr(target, name):
        return name
    return None


def references(function: Any) -> Tuple[FrozenSet[int], FrozenSet[str]]:
    """The positions and names of a function's parameters that are annotated as Ref."""
    annotations = getattr(function, "__annotations__", None)
    if not isinstance(annotations, dict) or not any(map(_is_reference, annotations.values())):
        return _NO_REFERENCES
    parameters = inspect.signature(function).parameters
    names = [name for name, one in parameters.items() if _is_reference(one.annotation)]
    order = list(parameters)
    return frozenset(map(order.index, names)), frozenset(names)


def _is_reference(annotation: object) -> bool:
    if isinstance(annotation, str):
        return _REF_TEXT.fullmatch(annotation) is not None
    return annotation is Ref or get_origin(annotation) is Ref
