"""The one exception of the package."""

from __future__ import annotations

_BASE = 0x80040000 - 0x100000000


class AutomationError(Exception):
    """A failed call of the driver, the host or a transport.

    number       as raised, a signed 32-bit number; an unsigned one is accepted and counts as the same
    source       what failed, for example "clsKEL4x.MeasureRfLevel"
    description  what went wrong

    Where the driver raised the error because of another one, that one is its __cause__.
    """

    def __init__(self, number: int, source: str = "", description: str = "") -> None:
        value = int(number)
        if not -0x80000000 <= value <= 0xFFFFFFFF:
            raise ValueError(f"an error number has 32 bits, and {value} does not fit")
        self.number: int = value - 0x100000000 if value > 0x7FFFFFFF else value
        self.source: str = str(source)
        self.description: str = str(description)
        super().__init__(self.number, self.source, self.description)

    @property
    def code(self) -> int:
        """The number less the object-error base, as ErrorConstants has it; a number without the base as it is."""
        return self.number - _BASE if _BASE <= self.number <= _BASE + 0xFFFF else self.number

    def __str__(self) -> str:
        description = self.description.strip() or "the call failed"
        where = f" in {self.source}" if self.source else ""
        return f"{description} (error {self.code}{where})"
