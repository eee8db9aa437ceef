"""Events of connections and recordsets."""

from __future__ import annotations

from types import TracebackType
from typing import Any, Optional, Type

from . import _native


class Events:
    """The connection between an object and a handler of its events; see WithEvents."""

    __slots__ = ("_source", "_handler", "_connection")

    def __init__(self, source: Any, handler: Any) -> None:
        self._source = source
        self._handler = handler
        self._connection: Optional[int] = _native.connect(source, handler)

    @property
    def handler(self) -> Any:
        """The object whose methods are called."""
        return self._handler

    def close(self) -> None:
        """Calls the handler no more. The object keeps its handlers until then, or as long as it lives."""
        connection, self._connection = self._connection, None
        if connection is not None:
            _native.disconnect(self._source, connection)

    def __enter__(self) -> Events:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()


def WithEvents(source: Any, handler: Any) -> Events:
    """Calls the methods of a handler, or of a new object of a class of handlers, for the events of a connection or recordset.

        class Watch:
            def WillMove(self, reason, status: kaputil.Ref, recordset):
                status.value = kaputil.adStatusCancel

        events = kaputil.WithEvents(recordset, Watch())
        ...
        events.close()

    Methods are named like the events, in any case; an event without one is passed over. A parameter that is annotated as Ref
    is passed by reference. What a method raises reaches the caller of the member that raised the event. Raises TypeError for
    an object without events.
    """
    return Events(source, handler() if isinstance(handler, type) else handler)
