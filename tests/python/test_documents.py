# SPDX-License-Identifier: MIT
"""What documents and docstrings show is what happens; the notebook runs; the types fit."""

import doctest
import os
import pathlib
import pkgutil
import re
import subprocess
import sys

import nbconvert.preprocessors
import nbformat
import pytest
import velmarind

ROOT = pathlib.Path(__file__).parents[2]
MODULES = [module.name for module in pkgutil.iter_modules(velmarind.__path__)
           if module.name not in ("__main__", "_native")]
OPTIONS = doctest.NORMALIZE_WHITESPACE | doctest.ELLIPSIS


def require_shown(test):
    output = []
    result = doctest.DocTestRunner(optionflags=OPTIONS).run(test, out=output.append)
    assert result.failed == 0, "".join(output)
    return result.attempted


@pytest.mark.parametrize("name", MODULES)
def test_docstrings_show_what_happens(name):
    module = __import__(f"velmarind.{name}", fromlist=[name])
    for test in doctest.DocTestFinder(exclude_empty=True).find(module, f"velmarind.{name}"):
        require_shown(test)


def test_every_task_has_an_example():
    finder = doctest.DocTestFinder()
    for name in ("lowpass highpass bandpass spectrum track_tremor detect_rest detect_saturation smooth_vectors "
                 "count_periods detect_levels resample find_peaks read inspect write block catalog").split():
        assert finder.find(getattr(velmarind, name), name)[0].examples, name


def test_the_page_shows_what_happens(tmp_path, monkeypatch):
    text = (ROOT / "docs/python.md").read_text()
    blocks = re.findall(r"^```python\n(.*?)^```", text, re.DOTALL | re.MULTILINE)
    os.symlink(ROOT / "examples", tmp_path / "examples")
    monkeypatch.chdir(tmp_path)  # it writes files
    test = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, "docs/python.md", "docs/python.md", 0)
    assert require_shown(test) > 40
    assert sorted(path.name for path in tmp_path.iterdir()) == ["examples", "my-highpass.yaml", "out-of-python.png"]


def test_the_page_tells_all_there_is():
    text = (ROOT / "docs/python.md").read_text()
    missing = [name for name in velmarind.__all__ if name[0].islower() and name not in text]
    assert missing == ["load_plugin"]
    for name in re.findall(r"velmarind\.([A-Za-z]\w*)", text):
        assert hasattr(velmarind, name), name


def test_the_notebook_runs(monkeypatch):
    monkeypatch.setenv("PYTHONPATH", str(pathlib.Path(velmarind.__file__).absolute().parents[1]))
    book = nbformat.read(ROOT / "examples/hand.ipynb", as_version=4)
    assert all(not cell.get("outputs") for cell in book.cells), "it is kept without outputs"
    run = nbconvert.preprocessors.ExecutePreprocessor(timeout=60, kernel_name="python3")
    done, _ = run.preprocess(book, {"metadata": {"path": str(ROOT / "examples")}})
    outputs = [output for cell in done.cells for output in cell.get("outputs", [])]
    assert any("image/png" in output.get("data", {}) for output in outputs)
    assert any("image/svg+xml" in output.get("data", {}) for output in outputs)


def test_the_types_fit():
    package = ROOT / "python/velmarind"
    done = subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", "--ignore-missing-imports", "--cache-dir", os.devnull, str(package)],
        capture_output=True, text=True, cwd=package.parent)
    assert done.returncode == 0, done.stdout + done.stderr
    assert (package / "py.typed").exists()


def test_the_module_is_the_command():
    done = subprocess.run([sys.executable, "-m", "velmarind", "blocks", "FilterGain"], capture_output=True, text=True)
    assert done.returncode == 0 and "Gain" in done.stdout
    done = subprocess.run([sys.executable, "-m", "velmarind", "run"], capture_output=True, text=True)
    assert done.returncode == 2


def test_only_numpy_is_needed():
    """Neither pandas nor Matplotlib nor tqdm is imported before it is needed."""
    code = ("import sys, numpy as np, velmarind; velmarind.lowpass(np.ones((9, 3)), cutoff=5, fs=100); "
            "sys.exit(' '.join({'pandas', 'matplotlib', 'tqdm', 'scipy'} & set(sys.modules)))")
    assert subprocess.run([sys.executable, "-c", code], capture_output=True, text=True).stderr.strip() == ""


def test_without_pandas_and_matplotlib_it_says_so():
    code = ("import sys; sys.modules['pandas'] = sys.modules['matplotlib'] = sys.modules['tqdm'] = None\n"
            "import velmarind, numpy as np\n"
            "response = velmarind.block('FilterGain').response(points=5)\n"
            "for act in (response.plot, velmarind.catalog):\n"
            "    try: act()\n"
            "    except velmarind.Error as error: print(error.found)\n")
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True)
    assert done.stdout.split("\n")[:2] == ["no Matplotlib", "no pandas"]
