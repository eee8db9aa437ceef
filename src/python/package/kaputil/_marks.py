"""The two values of automation that Python has no value for."""


class _Mark:
    """One value of its own; false."""

    def __init__(self, name: str) -> None:
        self._name = name

    def __bool__(self) -> bool:
        return False

    def __repr__(self) -> str:
        return f"kaputil.{self._name}"

    def __reduce__(self) -> str:
        # Copies and pickles are the mark itself.
        return self._name


Empty = _Mark("Empty")
Empty.__doc__ = "The value of a Variant that nobody assigned; false."

Nothing = _Mark("Nothing")
Nothing.__doc__ = "The unset object reference; false."
