"""Builds the wheel of qkel4x with CMake and the calling interpreter, and with nothing but the standard library.

What pip calls: build_wheel, build_sdist and their hooks. The version stands in the project() line of CMakeLists.txt.
"""

from __future__ import annotations

import base64
import gzip
import hashlib
import io
import os
import re
import shutil
import subprocess
import sys
import sysconfig
import tarfile
import tomllib
import zipfile
import zlib
from pathlib import Path
from typing import Any

ROOT = Path(__file__).resolve().parents[3]
LEFT_OUT = {".git", "build", "__pycache__"}


def version() -> str:
    """The project's version, where it is written."""
    match = re.search(r"project\(qkel4x VERSION (\d+(?:\.\d+)*)", (ROOT / "CMakeLists.txt").read_text("utf-8"))
    if match is None:
        raise RuntimeError("CMakeLists.txt has no project(qkel4x VERSION ...) line")
    return match[1]


def _tag() -> str:
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = re.sub(r"[-.]", "_", sysconfig.get_platform())
    return f"{python}-{python}{getattr(sys, 'abiflags', '')}-{platform}"


def _metadata() -> str:
    project: dict[str, Any] = tomllib.loads((ROOT / "pyproject.toml").read_text("utf-8"))["project"]
    lines = [
        "Metadata-Version: 2.1",
        f"Name: {project['name']}",
        f"Version: {version()}",
        f"Summary: {project['description']}",
        f"Requires-Python: {project['requires-python']}",
        "License: MIT",
        "Description-Content-Type: text/markdown",
    ]
    for extra, requirements in project["optional-dependencies"].items():
        lines.append(f"Provides-Extra: {extra}")
        lines += [f"Requires-Dist: {requirement} ; extra == '{extra}'" for requirement in requirements]
    readme = ROOT / project["readme"]
    return "\n".join([*lines, "", readme.read_text("utf-8") if readme.exists() else "", ""])


def _information() -> dict[str, bytes]:
    """The files that describe the package, by name."""
    wheel = f"Wheel-Version: 1.0\nGenerator: qkel4x_build\nRoot-Is-Purelib: false\nTag: {_tag()}\n"
    return {
        "METADATA": _metadata().encode(),
        "WHEEL": wheel.encode(),
        "LICENSE": (ROOT / "LICENSE").read_bytes(),
    }


def prepare_metadata_for_build_wheel(metadata_directory: str, config_settings: object = None) -> str:
    """Describes the package without building it."""
    folder = Path(metadata_directory) / f"qkel4x-{version()}.dist-info"
    folder.mkdir()
    for name, content in _information().items():
        (folder / name).write_bytes(content)
    return folder.name


def _build() -> Path:
    """Configures and builds; returns the folder of the package."""
    # Interpreters of one version may have different headers: each has a folder to itself.
    folder = ROOT / "build" / f"wheel-{_tag()}-{zlib.crc32(sys.executable.encode()):08x}"
    cmake = shutil.which("cmake")
    if cmake is None:
        raise RuntimeError("qkel4x is built with CMake 3.25 or later, and there is no cmake on the path")
    configure = [
        *(cmake, "-S", str(ROOT), "-B", str(folder)),
        *("-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_MODULE_LINKER_FLAGS=-s"),
        *("-DQKEL4X_PYTHON=ON", "-DQKEL4X_TESTS=OFF", "-DQKEL4X_APPS=OFF"),
        f"-DPython_EXECUTABLE={sys.executable}",
    ]
    if shutil.which("ninja") is not None:
        configure += ["-G", "Ninja"]
    subprocess.run(configure, check=True)
    jobs = str(os.cpu_count() or 1)
    subprocess.run(
        [cmake, "--build", str(folder), "--config", "Release", "--target", "qkel4x_python_package", "-j", jobs],
        check=True,
    )
    return folder / "python" / "qkel4x"


def build_wheel(
    wheel_directory: str, config_settings: object = None, metadata_directory: str | None = None
) -> str:
    """Builds the package and zips it."""
    package = _build()
    name = f"qkel4x-{version()}-{_tag()}.whl"
    info = f"qkel4x-{version()}.dist-info"
    suffix = sysconfig.get_config_var("EXT_SUFFIX")
    files = {
        f"qkel4x/{path.name}": path.read_bytes()
        for path in sorted(package.iterdir())
        if path.suffix in (".py", ".pyi", ".typed") or path.name in (f"_core{suffix}", "py.typed")
    }
    if f"qkel4x/_core{suffix}" not in files:
        raise RuntimeError(f"the build made no extension module for this interpreter (_core{suffix})")
    files |= {f"{info}/{name}": content for name, content in _information().items()}
    record = io.StringIO()
    for path, content in files.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
        record.write(f"{path},sha256={digest},{len(content)}\n")
    record.write(f"{info}/RECORD,,\n")
    files[f"{info}/RECORD"] = record.getvalue().encode()
    with zipfile.ZipFile(Path(wheel_directory) / name, "w", zipfile.ZIP_DEFLATED) as wheel:
        for path, content in files.items():
            entry = zipfile.ZipInfo(path)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = (0o755 if path.endswith(".so") else 0o644) << 16
            wheel.writestr(entry, content)
    return name


def build_sdist(sdist_directory: str, config_settings: object = None) -> str:
    """Packs the source tree."""
    stem = f"qkel4x-{version()}"
    buffer = io.BytesIO()
    with tarfile.open(fileobj=buffer, mode="w", format=tarfile.PAX_FORMAT) as archive:
        for path in sorted(ROOT.rglob("*")):
            inside = path.relative_to(ROOT)
            if path.is_file() and not LEFT_OUT.intersection(inside.parts):
                archive.add(path, f"{stem}/{inside.as_posix()}", recursive=False)
        metadata = _metadata().encode()
        entry = tarfile.TarInfo(f"{stem}/PKG-INFO")
        entry.size = len(metadata)
        archive.addfile(entry, io.BytesIO(metadata))
    (Path(sdist_directory) / f"{stem}.tar.gz").write_bytes(gzip.compress(buffer.getvalue(), mtime=0))
    return f"{stem}.tar.gz"


def get_requires_for_build_wheel(config_settings: object = None) -> list[str]:
    """Nothing from an index: pybind11 and CMake come from the system."""
    return []


def get_requires_for_build_sdist(config_settings: object = None) -> list[str]:
    """Nothing."""
    return []
