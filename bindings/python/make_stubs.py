"""Writes the typing stubs out of the member table: make_stubs.py [folder]. By default into package/qkel4x."""

from __future__ import annotations

import sys
import textwrap
from pathlib import Path
from typing import Any

from qkel4x import _core

HEAD = '''\
# Made by make_stubs.py from the member table; a test holds it to that.
'''

CORE_HEAD = '''
import datetime
from collections.abc import Callable, Iterator
from enum import IntEnum
from typing import Any, Generic, TypeVar, overload

_Read = TypeVar("_Read", covariant=True)
_Write = TypeVar("_Write", contravariant=True)
_Date = datetime.datetime | datetime.date | datetime.time | float
_Value = None | bool | int | float | str

class _Setting(Generic[_Read, _Write]):
    """A property that takes more types than it gives."""

    @overload
    def __get__(self, instance: None, owner: type) -> _Setting[_Read, _Write]: ...
    @overload
    def __get__(self, instance: object, owner: type | None = None) -> _Read: ...
    def __set__(self, instance: object, value: _Write) -> None: ...

__version__: str
__all__: list[str]

class ParameterNode:
    """A setting or a group of settings: a name, a value, an option list, a read-only flag and children."""

    def __init__(self) -> None: ...
    @property
    def Name(self) -> str: ...
    OptionList: str
    ReadOnly: bool
    def Initialise(
        self, name: str, code1: int, code2: int, option_list: str = "", description: str = ""
    ) -> None: ...
    def Item(self, path: str) -> ParameterNode: ...
    def AddChild(
        self, name: str, code1: int, code2: int, option_list: str = "", description: str = ""
    ) -> ParameterNode: ...
    def AddTree(self, tree: Any, index1: int = -1, index2: int = -1) -> None: ...
    def GetValue(self, i: int = -1, j: int = -1) -> _Value: ...
    def SetValue(self, i: int, j: int, value: _Value) -> None: ...
    def __iter__(self) -> Iterator[ParameterNode]: ...

class Bench:
    def __init__(self, virtual_clock: bool, serial_device: str, trace_file: str) -> None: ...
    def trace_lost(self) -> str: ...
    def last_error(self) -> str: ...

def GetDisplayValue(list: str, index: int) -> str:
    """The display name of the entry at a position, counted from 0, of an option list."""

def register_class(name: str, factory: Callable[[], Any]) -> None: ...
def unregister_class(name: str) -> None: ...
def set_wait(function: Callable[[float], object] | None) -> None: ...
def set_simulation(flag: bool | Callable[[], bool]) -> None: ...
def set_log(log: Any) -> None: ...
def set_reporter(reporter: Any) -> None: ...
def host_state() -> Any: ...
def restore_host(state: Any) -> None: ...
def enumerations() -> list[type[IntEnum]]: ...
def member_table() -> list[dict[str, Any]]: ...
'''


def docstring(text: str, indent: int) -> str:
    lines = textwrap.dedent(text).strip().splitlines()
    wrapped = [part for line in lines for part in textwrap.wrap(line, 108 - indent, subsequent_indent="  ") or [""]]
    body = "\n".join(wrapped).replace("\\", "\\\\")
    if body.endswith('"'):
        body += " "
    quoted = f'"""{body}"""' if len(wrapped) == 1 else f'"""{body}\n"""'
    return textwrap.indent(quoted, " " * indent)


def enumeration(published: Any) -> str:
    members = "\n".join(f"    {member.name} = {member.value}" for member in published)
    return f"class {published.__name__}(IntEnum):\n{docstring(published.__doc__, 4)}\n\n{members}\n"


def member(row: dict[str, Any], enumerations: set[str]) -> str:
    name, kind, type_name = row["name"], row["kind"], row["type"]
    doc = docstring(row["doc"], 8)
    if kind != "property":
        arguments, result = row["signature"].split(" -> ")
        for published in enumerations:
            arguments = arguments.replace(f": {published}", f": {published} | int")
        separator = ", " if arguments != "()" else ""
        return f"    def {name}(self{separator}{arguments[1:]} -> {result}:\n{doc}\n"
    if row["writable"] and (type_name in enumerations or type_name == "datetime.datetime"):
        written = "_Date" if type_name == "datetime.datetime" else f"{type_name} | int"
        return f"    {name}: _Setting[{type_name}, {written}]\n{docstring(row['doc'], 4)}\n"
    text = f"    @property\n    def {name}(self) -> {type_name}:\n{doc}\n"
    if row["writable"]:
        text += f"\n    @{name}.setter\n    def {name}(self, value: {type_name}) -> None: ...\n"
    return text


def published_class(row: dict[str, Any], enumerations: set[str]) -> str:
    extra = {
        "clsKEL4x": "    @overload\n    def __init__(self) -> None: ...\n"
        "    @overload\n    def __init__(self, bench: Bench) -> None: ...\n\n"
        "    @property\n    def IDriverSetup(self) -> IDriverSetup:\n"
        '        """How a host sets up the driver: Name, Settings and OnLine."""\n\n'
        "    @property\n    def IDriverIdentify(self) -> IDriverIdentify:\n"
        '        """How a host asks the driver what instrument it is talking to."""\n',
        "clsStatistics": "    def __init__(self) -> None: ...\n",
        "clsRegister": "    def __init__(self) -> None: ...\n"
        "    def GetClassDescription(self) -> str: ...\n    def GetClassName(self) -> str: ...\n",
    }.get(row["name"], "")
    members = [extra] if extra else []
    members += [member(entry, enumerations) for entry in row["members"]]
    return f"class {row['name']}:\n{docstring(row['doc'], 4)}\n\n" + "\n".join(members)


def stubs() -> dict[str, str]:
    """The text of each stub by file name."""
    enumerations = _core.enumerations()
    names = {published.__name__ for published in enumerations}
    classes = [row for row in _core.member_table() if row["name"] != "IRegister"]
    parts = [enumeration(published) for published in enumerations]
    parts += [published_class(row, names) for row in classes]
    reexported = "".join(f"from ._core import {name} as {name}\n" for name in sorted(_core.__all__))
    package = (
        "\nfrom . import host as host\n"
        f"{reexported}from ._core import __version__ as __version__\n"
        "from ._errors import AutomationError as AutomationError\n"
        "from ._session import Session as Session\nfrom ._session import open as open\n"
    )
    return {"_core.pyi": HEAD + CORE_HEAD + "\n" + "\n".join(parts), "__init__.pyi": HEAD + package}


if __name__ == "__main__":
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent / "package" / "qkel4x"
    for name, text in stubs().items():
        (folder / name).write_text(text, "utf-8")
