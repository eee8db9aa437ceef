"""KAP Utility: classes that business programs call by name.

    import kaputil
    p = kaputil.Dispatch("KapUtil.CProprieta")
    p.Scrivi("Codice", 12)
    p.Leggi("codice")            # '12'
    kaputil.KapRound(2.675, 2)   # a member of the predeclared StdFunctions instance

The members of the predeclared instance are the package's own, in any case. kaputil.classes holds the classes, which
help() and dir() show with their members; kaputil.numbers makes the register of document numbers.
"""

import atexit as _atexit
import enum as _enum
import sys as _sys
import types as _types

from . import _data_access, _errors, _members, _native, _objects, classes, numbers
from ._data_access import Row
from ._descriptions import global_class as _global_class
from ._errors import AutomationError, MemberNotFound
from ._events import Events, WithEvents
from ._functions import (
    Dispatch,
    change_type,
    format,
    invoke,
    is_date,
    is_numeric,
    locale,
    message_log,
    register,
    set_locale,
    unregister,
)
from ._holders import Ref, Variant
from ._marks import Empty, Nothing
from ._objects import Object

for _public in (
    *(AutomationError, MemberNotFound, Events, Ref, Row, Variant, Object, WithEvents),
    *(Dispatch, change_type, format, invoke, is_date, is_numeric, locale, message_log, register, set_locale, unregister),
):
    _public.__module__ = __name__  # where programs find it

_native.set_package(
    automation_error=AutomationError,
    member_not_found=MemberNotFound,
    empty=Empty,
    nothing=Nothing,
    ref=Ref,
    variant=Variant,
    object=Object,
    make_class=lambda description: _objects.make_class(description, _data_access.BASES),
    error_parts=_errors.parts,
    find_attribute=_members.find_attribute,
    references=_members.references,
)
# Before the interpreter ends: the library outlives it and must not call it then.
_atexit.register(_native.unregister_all)

__version__ = _native.version()

# The members of the predeclared object: functions of the package, and properties that are read from it each time.
_global_members = {member.name.casefold(): member for member in _global_class().members}
for _member in _global_members.values():
    if not _member.attribute:
        globals()[_member.name] = _objects.global_function(_member)

for _name, _values in _native.enumerations():
    globals()[_name] = _enum.IntEnum(_name, _values, module=__name__)
    globals().update(globals()[_name].__members__)


class _Package(_types.ModuleType):
    """This package: a name that it has not is a member of the predeclared object in another case, or a property."""

    def __getattr__(self, name):
        if name.startswith("__"):
            raise AttributeError(f"module {self.__name__!r} has no attribute {name!r}")
        member = _global_members.get(name.casefold())
        if member is None:
            return getattr(_native.predeclared(), name)  # which raises that there is none
        if member.attribute:
            return _native.get(_native.predeclared(), member.name)
        return globals()[member.name]

    def __setattr__(self, name, value):
        member = _global_members.get(name.casefold())
        if member is not None and member.attribute:
            setattr(_native.predeclared(), member.name, value)
        else:
            super().__setattr__(name, value)

    def __dir__(self):
        own = [name for name in globals() if not name.startswith("_")]
        return sorted({*own, *(member.name for member in _global_members.values())})


_sys.modules[__name__].__class__ = _Package
