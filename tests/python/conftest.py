# SPDX-License-Identifier: MIT
"""The tests run in the project's folder, so that documents and docstrings read its examples."""

import logging
import os
import pathlib
import warnings

import matplotlib
import numpy as np
import pytest

matplotlib.use("Agg")
ROOT = pathlib.Path(__file__).parents[2]


@pytest.fixture(autouse=True)
def in_the_projects_folder(monkeypatch):
    monkeypatch.chdir(ROOT)


@pytest.fixture(autouse=True)
def warnings_are_errors():
    """What isn't expected fails; tests of warnings expect them."""
    import velmarind

    with warnings.catch_warnings():
        warnings.simplefilter("error", velmarind.DataWarning)
        yield


@pytest.fixture
def rng():
    return np.random.default_rng(20)


@pytest.fixture
def wrist(rng):
    """Ten seconds of three axes at 100 rows a second."""
    t = np.arange(1000) / 100
    slow = np.stack([np.sin(t), np.cos(t), 0.2 * t], axis=1)
    return slow + 0.1 * rng.standard_normal((1000, 3))


def same_bits(a, b):
    a, b = np.asarray(a), np.asarray(b)
    return a.shape == b.shape and a.dtype == b.dtype and a.tobytes() == b.tobytes()
