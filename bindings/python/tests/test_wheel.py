"""The wheel: built by the package's own backend, as pip calls it, and installed elsewhere."""

from __future__ import annotations

import importlib.util
import os
import subprocess
import sys
import sysconfig
import tarfile
import zipfile
from pathlib import Path
from typing import Any

import pytest
import qkel4x

ROOT = Path(__file__).parents[3]


@pytest.fixture
def backend(monkeypatch: pytest.MonkeyPatch) -> Any:
    spec = importlib.util.spec_from_file_location("qkel4x_build", ROOT / "bindings/python/build_backend/qkel4x_build.py")
    assert spec is not None and spec.loader is not None
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    # The package of this build, instead of a second build of everything.
    monkeypatch.setattr(module, "_build", lambda: Path(qkel4x.__file__).parent)
    return module


def test_the_wheel_works_where_it_is_unpacked(backend: Any, tmp_path: Path) -> None:
    name = backend.build_wheel(str(tmp_path))
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    assert name == f"qkel4x-{qkel4x.__version__}-{python}-{python}-{sysconfig.get_platform().replace('-', '_')}.whl"
    place = tmp_path / "site"
    with zipfile.ZipFile(tmp_path / name) as wheel:
        names = wheel.namelist()
        record = wheel.read(f"qkel4x-{qkel4x.__version__}.dist-info/RECORD").decode()
        metadata = wheel.read(f"qkel4x-{qkel4x.__version__}.dist-info/METADATA").decode()
        wheel.extractall(place)
    assert [line.split(",")[0] for line in record.splitlines()] == names
    assert f"Version: {qkel4x.__version__}" in metadata
    assert {"qkel4x/py.typed", "qkel4x/_core.pyi", "qkel4x/__init__.pyi", "qkel4x/visa.py"} <= set(names)
    code = "import qkel4x, importlib.metadata as m; print(qkel4x.__file__, m.version('qkel4x'), qkel4x.clsKEL4x() is None)"
    environment = {**os.environ, "PYTHONPATH": str(place)}
    out = subprocess.check_output([sys.executable, "-c", code], text=True, env=environment).split()
    assert out == [str(place / "qkel4x/__init__.py"), qkel4x.__version__, "False"]


def test_the_description_needs_no_build(backend: Any, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(backend, "_build", None)
    folder = tmp_path / backend.prepare_metadata_for_build_wheel(str(tmp_path))
    assert folder.name == f"qkel4x-{qkel4x.__version__}.dist-info"
    assert f"Version: {qkel4x.__version__}" in (folder / "METADATA").read_text("utf-8")
    assert (folder / "WHEEL").exists()


def test_the_source_archive_holds_what_a_build_needs(backend: Any, tmp_path: Path) -> None:
    with tarfile.open(tmp_path / backend.build_sdist(str(tmp_path))) as archive:
        names = {name.partition("/")[2] for name in archive.getnames()}
    assert {"PKG-INFO", "pyproject.toml", "CMakeLists.txt", "bindings/python/CMakeLists.txt", "driver/clsKEL4x.h"} <= names
    assert not any(name.startswith(("build/", ".git/")) for name in names)
