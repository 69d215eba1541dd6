"""What the package shows: names, dir(), docstrings, stubs, errors about unknown members."""

from __future__ import annotations

import os
import pydoc
import re
import subprocess
import sys
from pathlib import Path
from typing import Any

import pytest
import qkel4x
from qkel4x import _core
from scripted import Host, talk

FOLDER = Path(__file__).parents[1]
CLASSES = {row["name"]: row for row in _core.member_table()}
MEMBERS = [(name, row) for name, table in CLASSES.items() for row in table["members"] if name != "IRegister"]


def python_class(name: str) -> Any:
    return getattr(qkel4x, name)


@pytest.mark.parametrize("class_name, row", MEMBERS, ids=lambda value: value if isinstance(value, str) else value["name"])
def test_every_member_is_there_and_explained(class_name: str, row: dict[str, Any]) -> None:
    member = getattr(python_class(class_name), row["name"])
    doc = member.__doc__
    assert len(doc.splitlines()[0]) > 5
    assert "Errors: " in doc
    if row["kind"] == "property":
        assert f"Type: {row['type']}" in doc
    else:
        assert doc.startswith(row["name"] + "(")
    if row["unit"] and row["type"] != "datetime.timedelta":
        assert f"Unit: {row['unit']}" in doc
    if row["range"]:
        assert f"Range: {row['range']}" in doc
    if row["modes"]:
        assert "Measurement modes: kel" in doc and "2016" in doc


def test_dir_shows_all_members_but_the_hidden_ones() -> None:
    driver = qkel4x.clsKEL4x()
    hidden = {row["name"] for row in CLASSES["clsKEL4x"]["members"] if row["hidden"]}
    shown = {row["name"] for row in CLASSES["clsKEL4x"]["members"] if not row["hidden"]}
    assert "MeasureNoiseGenerator" in hidden
    for names in (dir(driver), dir(qkel4x.clsKEL4x), dir(qkel4x.Session)):
        assert shown <= set(names)
        assert not hidden & set(names)
        assert {"IDriverSetup", "IDriverIdentify"} <= set(names)
    assert {name for name in dir(driver) if not name.startswith("_")} == shown | {"IDriverSetup", "IDriverIdentify"}


def test_hidden_members_work(driver: Any, host: Host) -> None:
    host.expect(talk(["> SENS:ATSC:NOISE?", "< 35.5"]))
    assert driver.MeasureNoiseGenerator == 35.5
    host.check()


def test_help_is_useful() -> None:
    text = pydoc.plain(pydoc.render_doc(qkel4x.clsKEL4x.RfCenterFrequency))
    for part in ("RfCenterFrequency", "float, read and write", "Hz", "42", "380"):
        assert part in text


@pytest.mark.parametrize("name, nearest", [("MeasureRfLevl", "MeasureRfLevel"), ("measuremode", "MeasureMode"), ("OnLine", "IDriverSetup.OnLine")])
def test_an_unknown_member_names_the_nearest(name: str, nearest: str) -> None:
    driver = qkel4x.clsKEL4x()
    with pytest.raises(AttributeError, match=f"no member '{name}'; the nearest is '{re.escape(nearest)}'"):
        getattr(driver, name)
    with pytest.raises(AttributeError, match=f"no member '{name}'; the nearest is '{re.escape(nearest)}'"):
        setattr(driver, name, 1)
    assert not hasattr(driver, name)


def test_unknown_members_of_the_other_classes() -> None:
    driver = qkel4x.clsKEL4x()
    with pytest.raises(AttributeError, match="'Settings'"):
        driver.IDriverSetup.Setings
    with pytest.raises(AttributeError, match="'OnLine'"):
        driver.IDriverSetup.Online = True
    with pytest.raises(AttributeError, match="'MerDb'"):
        qkel4x.clsStatistics().MerDB


def test_a_read_only_member_cannot_be_written() -> None:
    driver = qkel4x.clsKEL4x()
    with pytest.raises(AttributeError, match="clsKEL4x.MeasureRfLevel can only be read"):
        driver.MeasureRfLevel = 1  # type: ignore[misc]
    with pytest.raises(AttributeError, match="cannot be deleted"):
        del driver.MeasureMode


def test_the_registered_names() -> None:
    names = qkel4x.clsRegister()
    assert (names.GetClassDescription(), names.GetClassName()) == ("KEL4x", "clsKEL4x")
    assert (names.IRegister_GetClassDescription(), names.IRegister_GetClassName()) == ("KEL4x", "clsKEL4x")


def test_published_names_are_all_there() -> None:
    assert {"clsKEL4x", "clsStatistics", "clsRegister", "KelModes", "ErrorConstants", "ParameterNode"} <= set(qkel4x.__all__)
    for name in qkel4x.__all__:
        assert getattr(qkel4x, name) is not None
    assert qkel4x.KelMeasureModes.kelUndefined == -1
    assert qkel4x.ErrorConstants.qkelFuntionNotAvailable == 2019


def test_the_stubs_are_those_of_the_member_table(tmp_path: Path) -> None:
    subprocess.run([sys.executable, str(FOLDER / "make_stubs.py"), str(tmp_path)], check=True)
    for name in ("_core.pyi", "__init__.pyi"):
        made, kept = (tmp_path / name).read_text("utf-8"), (FOLDER / "package/qkel4x" / name).read_text("utf-8")
        assert made == kept, f"{name} is old: run bindings/python/make_stubs.py"


def test_types_hold() -> None:
    files = [FOLDER / "package/qkel4x", FOLDER / "make_stubs.py", FOLDER / "build_backend/qkel4x_build.py"]
    files += sorted((FOLDER / "examples").glob("*.py"))
    command = [sys.executable, "-m", "mypy", "--strict", "--no-error-summary", "--cache-dir", "mypy-cache", *map(str, files)]
    environment = {**os.environ, "MYPYPATH": str(FOLDER / "package")}
    result = subprocess.run(command, capture_output=True, text=True, env=environment)
    assert (result.returncode, result.stdout) == (0, "")


def test_the_version_has_one_source() -> None:
    cmake = (FOLDER.parents[1] / "CMakeLists.txt").read_text("utf-8")
    match = re.search(r"project\(qkel4x VERSION ([\d.]+)", cmake)
    assert match is not None and match[1] == qkel4x.__version__


def test_import_is_quick_and_brings_little() -> None:
    code = (
        "import sys, time; begin = time.process_time(); import qkel4x; took = time.process_time() - begin;"
        "heavy = {'csv', 'html', 'numpy', 'pyvisa', 'ipaddress', 'difflib', 'pathlib', 'dataclasses'} & set(sys.modules);"
        "print(took, *sorted(heavy))"
    )
    runs = [subprocess.check_output([sys.executable, "-c", code], text=True).split() for _ in range(5)]
    assert runs[0][1:] == []
    assert min(float(run[0]) for run in runs) < 0.060
