# SPDX-License-Identifier: MIT
"""Filters and analyses motion recordings with graphs of small blocks.

`lowpass`, `spectrum`, `track_tremor` and the like do what is asked for most often; `block` makes a single
block, `Graph` a graph of them; `read`, `inspect` and `write` are for recordings, and `catalog` tells what
there is. Time runs down the rows everywhere. Whatever is refused is an `Error`, which says what was found,
what was expected and what to do.
"""

from __future__ import annotations

from velmarind._batch import BatchResult, batch
from velmarind._block import Block, Properties, Property, block
from velmarind._catalog import catalog
from velmarind._errors import Error
from velmarind._events import count_periods, detect_levels, find_peaks
from velmarind._filters import bandpass, highpass, lowpass, resample
from velmarind._graph import Complaint, Graph, RunResult
from velmarind._live import LiveRun
from velmarind._log import DataWarning
from velmarind._names import identifier
from velmarind._native import __version__, load_plugin
from velmarind._recordings import inspect, read, write
from velmarind._response import Response
from velmarind._results import Result
from velmarind._sensors import detect_rest, detect_saturation, smooth_vectors
from velmarind._spectra import Spectrum, spectrum
from velmarind._tremor import track_tremor

__all__ = [
    "BatchResult",
    "Block",
    "Complaint",
    "DataWarning",
    "Error",
    "Graph",
    "LiveRun",
    "Properties",
    "Property",
    "Response",
    "Result",
    "RunResult",
    "Spectrum",
    "__version__",
    "bandpass",
    "batch",
    "block",
    "catalog",
    "count_periods",
    "detect_levels",
    "detect_rest",
    "detect_saturation",
    "find_peaks",
    "highpass",
    "identifier",
    "inspect",
    "load_plugin",
    "lowpass",
    "read",
    "resample",
    "smooth_vectors",
    "spectrum",
    "track_tremor",
    "write",
]
