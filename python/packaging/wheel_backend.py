# SPDX-License-Identifier: MIT
"""Builds the wheel for pip: CMake makes what is compiled, and this packs it, with nothing but the standard library.

`pip wheel . --config-settings build=build/dev` takes what a build tree holds already."""

import base64
import hashlib
import os
import re
import subprocess
import sys
import sysconfig
import tempfile
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
NAME = "velmarind"


def version() -> str:
    found = re.search(r"project\(Velmarind VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())
    assert found is not None
    return found.group(1)


def tag() -> str:
    interpreter = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = re.sub(r"[^0-9A-Za-z]", "_", sysconfig.get_platform())
    return f"{interpreter}-{interpreter}-{platform}"


def metadata_folder() -> str:
    return f"{NAME}-{version()}.dist-info"


def metadata() -> dict[str, str]:
    about = (
        f"Metadata-Version: 2.1\nName: {NAME}\nVersion: {version()}\n"
        "Summary: Filters, graphs and recordings of movement, over NumPy arrays and pandas tables\n"
        "License: MIT\nRequires-Python: >=3.11\nRequires-Dist: numpy\n"
        "Provides-Extra: all\nRequires-Dist: pandas; extra == 'all'\n"
        "Requires-Dist: matplotlib; extra == 'all'\nRequires-Dist: tqdm; extra == 'all'\n"
    )
    wheel = f"Wheel-Version: 1.0\nGenerator: {NAME}\nRoot-Is-Purelib: false\nTag: {tag()}\n"
    return {"METADATA": about, "WHEEL": wheel}


def run(*command: str) -> None:
    print("+", *command, file=sys.stderr, flush=True)
    subprocess.run(command, check=True, stdout=sys.stderr)


def compile_into(build: Path) -> None:
    run("cmake", "-S", str(ROOT), "-B", str(build), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
        "-DCMAKE_CXX_FLAGS_RELEASE=-O3 -DNDEBUG", "-DVELMARIND_TESTS=OFF", "-DCMAKE_INSTALL_LIBDIR=lib",
        f"-DVELMARIND_PYTHON_INTERPRETER={sys.executable}")
    run("cmake", "--build", str(build), "--target", "velmarind_python")


def resolve_links(folder: Path) -> None:
    """A wheel has no links: what is loaded by a link's name gets that name."""
    for link in [path for path in folder.rglob("*") if path.is_symlink()]:
        os.replace(link.resolve(), link)


def stage(build: Path, folder: Path) -> None:
    package = folder / NAME
    run("cmake", "--install", str(build), "--prefix", str(package), "--component", "python")
    resolve_links(package)
    sources = ROOT / "python" / NAME
    for path in sorted([*sources.glob("*.py"), *sources.glob("*.pyi"), sources / "py.typed"]):
        (package / path.name).write_bytes(path.read_bytes())


def record_line(name: str, data: bytes) -> str:
    digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
    return f"{name},sha256={digest},{len(data)}\n"


def pack(folder: Path, wheel: Path) -> None:
    record = ""
    with zipfile.ZipFile(wheel, "w", zipfile.ZIP_DEFLATED) as archive:

        def add(name: str, data: bytes, mode: int = 0o644) -> None:
            nonlocal record
            entry = zipfile.ZipInfo(name, (2000, 1, 1, 0, 0, 0))
            entry.external_attr = (0o100000 | mode) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, data)
            record += record_line(name, data)

        for path in sorted(path for path in folder.rglob("*") if path.is_file()):
            add(path.relative_to(folder).as_posix(), path.read_bytes(), path.stat().st_mode & 0o777)
        for name, text in metadata().items():
            add(f"{metadata_folder()}/{name}", text.encode())
        own = f"{metadata_folder()}/RECORD"
        archive.writestr(own, record + f"{own},,\n")


# What pip calls.


def get_requires_for_build_wheel(config_settings=None) -> list[str]:
    return []


def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None) -> str:
    folder = Path(metadata_directory) / metadata_folder()
    folder.mkdir()
    for name, text in metadata().items():
        (folder / name).write_text(text)
    return folder.name


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None) -> str:
    given = (config_settings or {}).get("build")
    build = Path(given).resolve() if given else ROOT / "build" / "wheel"
    if not given:
        compile_into(build)
    wheel = Path(wheel_directory) / f"{NAME}-{version()}-{tag()}.whl"
    with tempfile.TemporaryDirectory() as folder:
        stage(build, Path(folder))
        pack(Path(folder), wheel)
    return wheel.name


def build_sdist(sdist_directory, config_settings=None) -> str:
    raise NotImplementedError("the project is installed from a clone; there is no source package")
