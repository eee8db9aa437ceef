"""The extension behind the package; its functions are documented where the package wraps them."""

from typing import Any

class Object: ...

def __getattr__(name: str) -> Any: ...
