# SPDX-License-Identifier: MIT
"""The wheel, made of what the build tree holds: it is whole where nothing else of the project is."""

import os
import subprocess
import sys
import zipfile
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
BUILD = os.environ.get("VELMARIND_BUILD")


@pytest.fixture(scope="module")
def unpacked(tmp_path_factory) -> Path:
    if not BUILD:
        pytest.skip("VELMARIND_BUILD says which build tree, as ctest does")
    folder = tmp_path_factory.mktemp("wheel")
    sys.path.insert(0, str(ROOT / "python" / "packaging"))
    import wheel_backend

    name = wheel_backend.build_wheel(str(folder), {"build": BUILD})
    with zipfile.ZipFile(folder / name) as wheel:
        assert wheel.testzip() is None
        for entry in wheel.infolist():
            target = Path(wheel.extract(entry, folder))
            target.chmod(entry.external_attr >> 16 & 0o777 or 0o644)
    return folder


def run(folder: Path, *arguments: str) -> str:
    environment = {name: value for name, value in os.environ.items() if name != "VELMARIND_BUILD"}
    environment["PYTHONPATH"] = str(folder)
    done = subprocess.run([sys.executable, *arguments], env=environment, cwd=folder, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stdout


def test_a_wheel_stands_alone(unpacked):
    script = """
import numpy as np
from velmarind import _native
block = _native.Block("FilterButterworth", {"RelativeCutOffFreq": "5 Hz"}, fs=100.0)
assert block.push(np.ones((3, 3))).shape == (3, 3)
assert len(_native.block_types()) == 45 and _native.describe("Peaks")["purpose"]
print(_native.library_folder()); print(_native.command_path())
print({line.split()[-1] for line in open("/proc/self/maps") if "/lib" in line and ("uillmere" in line or "elmarind" in line)})
"""
    folder, command, loaded = run(unpacked, "-c", script).splitlines()
    assert Path(folder) == unpacked / "velmarind" / "lib"
    assert Path(command) == unpacked / "velmarind" / "bin" / "quillmere"
    paths = eval(loaded)
    assert len(paths) >= 4
    assert all(Path(path).is_relative_to(unpacked) for path in paths), paths


def test_its_command_runs(unpacked):
    command = unpacked / "velmarind" / "bin" / "quillmere"
    named = subprocess.run([command, "blocks", "--names"], capture_output=True, text=True, check=True).stdout
    assert "FilterButterworth" in named and "Resample" in named


def test_every_file_is_on_its_record(unpacked):
    record = next(unpacked.glob("*.dist-info")) / "RECORD"
    names = {line.rsplit(",", 2)[0] for line in record.read_text().splitlines()}
    files = {path.relative_to(unpacked).as_posix() for path in unpacked.rglob("*") if path.is_file()}
    assert {name for name in files if not name.endswith((".whl", ".pyc"))} == names
    assert any(name.endswith("lib/libVelmarind.manual/FilterGain.yaml") for name in names)
