"""KAP Utility: classes that business programs call by name.

    import kaputil
    p = kaputil.Dispatch("KapUtil.CProprieta")
    p.Scrivi("Codice", 12)
    p.Leggi("codice")            # '12'
    kaputil.KapRound(2.675, 2)   # a member of the predeclared StdFunctions instance
"""

import atexit

from . import _native


class AutomationError(Exception):
    """What a member raises: a number that programs compare, a source, and a description for people."""

    def __init__(self, number=0, description="", source=""):
        super().__init__(number, description, source)
        self.number = number
        self.description = description
        self.source = source

    def __str__(self):
        return f"{self.number}: {self.description}"


class MemberNotFound(AutomationError, AttributeError):
    """An object has no member of the name asked for (438)."""


class _Empty:
    """The value of a Variant that nobody assigned; false."""

    def __bool__(self):
        return False

    def __repr__(self):
        return "kaputil.Empty"


class _Nothing:
    """The unset object reference; false."""

    def __bool__(self):
        return False

    def __repr__(self):
        return "kaputil.Nothing"


class Ref:
    """Holds an argument passed by reference; .value is what the member left in it."""

    def __init__(self, value=None):
        self.value = value

    def __repr__(self):
        return f"kaputil.Ref({self.value!r})"


Empty = _Empty()
Nothing = _Nothing()

_native.set_package_types(AutomationError, MemberNotFound, Empty, Nothing, Ref)
atexit.register(_native.unregister_all)

Dispatch = _native.Dispatch
Object = _native.Object
Variant = _native.Variant
change_type = _native.change_type
format = _native.format
invoke = _native.invoke
is_date = _native.is_date
is_numeric = _native.is_numeric
locale = _native.locale
message_log = _native.message_log
register = _native.register
set_locale = _native.set_locale
unregister = _native.unregister


def __getattr__(name):
    """The members of the predeclared StdFunctions instance, in any case."""
    if name.startswith("__"):
        raise AttributeError(name)
    return _native.global_member(name)


def __dir__():
    return sorted([name for name in globals() if not name.startswith("_")] + _native.global_names())
