"""Library objects: their common class, and the classes made from the catalogue's descriptions."""

from typing import Any, Callable, Dict, Iterator, List, Mapping, Tuple

from . import _native
from ._descriptions import Class, Member


class Object(_native.Object):
    """An object of the library: its members are its attributes, in any case.

    Properties are read and assigned; every other member is called, with positional or named arguments. An object belongs
    to the thread that made it.
    """

    __slots__ = ()

    def __init__(self) -> None:
        raise TypeError("objects of the library are made with kaputil.Dispatch")

    def __call__(self, *arguments: Any, **named: Any) -> Any:
        """Calls the default member."""
        return _native.call_default(self, arguments, named)

    def __getitem__(self, key: Any) -> Any:
        """Calls the default member: `rows["Nome"]` is `rows("Nome")`. Several arguments are a tuple."""
        return _native.call_default(self, _indexes(key), {})

    def __setitem__(self, key: Any, value: Any) -> None:
        """Assigns through the default member: `rows["Nome"] = value` as other languages write `rows("Nome") = value`."""
        _native.assign_default(self, _indexes(key), value)

    def __iter__(self) -> Iterator[Any]:
        """The elements of a collection; raises 438 for what is none."""
        return iter(_native.elements(self))

    def __dir__(self) -> List[str]:
        return [name for name in super().__dir__() if not name.startswith("_")]


def _indexes(key: Any) -> Tuple[Any, ...]:
    return key if isinstance(key, tuple) else (key,)


def make_class(description: Mapping[str, Any], bases: Mapping[str, type]) -> type:
    """The class of the objects that a description of the catalogue stands for, on the base that its name has, if any."""
    described = Class.described(description)
    body: Dict[str, Any] = {
        "__doc__": described.documentation,
        "__module__": "kaputil.classes",
        "__slots__": (),  # the layout of its base: an object gets its class when it has been made
    }
    for member in described.members:
        body[member.name] = _attribute(member) if member.attribute else _method(member)
        if member.default:
            body["__call__"] = member.call
    return type(described.name, (bases.get(described.name, Object),), body)


def global_function(member: Member) -> Callable[..., Any]:
    """A function that calls a member of the calling thread's predeclared object."""
    return _documented(_native.global_function(member.name), member, "kaputil")


def _attribute(member: Member) -> property:
    def assign(self: Object, value: Any) -> None:
        _native.assign(self, member.name, value)

    getter = _documented(member.function, member, "kaputil.classes", "self")
    return property(getter, assign if member.assignable else None, doc=member.documentation)


def _method(member: Member) -> Callable[..., Any]:
    return _documented(member.function, member, "kaputil.classes", "self")


def _documented(function: Callable[..., Any], member: Member, module: str, *leading: str) -> Callable[..., Any]:
    function.__name__ = function.__qualname__ = member.name
    function.__module__ = module
    function.__doc__ = member.documentation
    function.__signature__ = member.signature(*leading)  # type: ignore[attr-defined]
    return function
