"""The classes of the catalogue, for isinstance, help and annotations; objects are made with kaputil.Dispatch.

    from kaputil.classes import Recordset

    def names(rows: Recordset) -> list[str]:
        return [field.Name for field in rows.Fields]
"""

from __future__ import annotations

from typing import Any, List

from . import _native


def __getattr__(name: str) -> Any:
    found = None if name.startswith("_") else _native.class_named(name)
    if found is None:
        raise AttributeError(f"the catalogue has no class {name}")
    globals()[name] = found
    return found


def __dir__() -> List[str]:
    return sorted(_native.class_names())
