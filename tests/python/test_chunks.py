# SPDX-License-Identifier: MIT
"""Pushing a recording in chunks of any size gives the bits of one call: every block, with random settings."""

import zlib

import numpy as np
import pytest
import velmarind
from velmarind import _native

ROWS = 300
DRAWS = 6  # of settings, for each block
FS = 100.0

# Blocks of which what comes in isn't rows of three columns.
FRAMES = {
    "FilterFFT", "FilterFastFourierTransform", "FilterBlackmanWindow", "FilterHammingWindow", "FilterHanningWindow",
}
MATRICES = {"FilterAbsoluteErode", "FilterRelativeErode", "FilterRemoveStill", "FilterResample", "Unframe"}
ONE_COLUMN = {"FilterHysteresis", "FilterEdge", "FilterPeriodCounter", "FilterThreshold", "FilterWFLC", "Peaks",
              "Durations", "FilterThresholdLeveler", "FilterFrequency"}
# Other inputs that a block can't do without, or that its chunks have to keep in step with.
BESIDE = {
    "FilterFlagStatic": {"3bias": 3},
    "FilterSphericalFiltering": {"3a": 3, "3m": 3},
    "Logic": {"b": 3},
    "Join": {"in2": 2, "in3": 1},
    "FilterButterworth": {"reset": 1},
    "FilterHysteresis": {"Reset": 1},
}
# These draw other numbers each time, by their rules.
RANDOM = {"FilterGaussianWhiteNoiseGenerator"}
# These stamp the time of day.
WALL_CLOCK = {"FilterInvGain", "FilterEdge", "FilterGaussianWhiteNoiseGenerator"}
WALL_CLOCK_PINS = {"gain", "coeffs"}

# Settings whose limits are wider than what a recording of three seconds can use.
DRAWN = {
    ("FilterResample", "Matrix size"): lambda rng: int(rng.integers(0, 8)),
    ("Columns", "Pick"): lambda rng: rng.integers(0, 3, (1, int(rng.integers(1, 5)))),
    ("Affine", "Matrix"): lambda rng: rng.normal(size=(2, 3)),
    ("Affine", "Offset"): lambda rng: rng.normal(size=(1, 2)),
    ("FilterThresholdLeveler", "Thresholds"): lambda rng: np.array([[-2.0, -0.5], [-0.5, 0.5], [0.5, 2.0]]),
    ("FilterThresholdLeveler", "Levels"): lambda rng: rng.normal(size=(3, 1)),
    ("FilterIIR", "XCoeffs"): lambda rng: rng.normal(size=(1, int(rng.integers(1, 5)))),
    ("FilterIIR", "YCoeffs"): lambda rng: 0.4 * rng.normal(size=(1, 2)),
    ("FilterIIR", "InitValue"): lambda rng: rng.normal(size=(1, 3)),
    ("FilterPeriodCounter", "Nb Period"): lambda rng: int(rng.integers(1, 9)),
    ("Resample", "Rate"): lambda rng: float(rng.choice([33.0, 50.0, 100.0, 250.0])),
    ("Unframe", "Rate"): lambda rng: float(rng.choice([0.0, 1000.0])),
    ("Unframe", "Hop"): lambda rng: int(rng.integers(0, 5)),
    ("FilterWFLC", "Mu"): lambda rng: float(rng.uniform(0, 0.05)),
    ("FilterWFLC", "Mu0"): lambda rng: float(rng.uniform(0, 0.001)),
    ("FilterWFLC", "Wf0"): lambda rng: float(rng.uniform(0.1, 1)),
    ("Durations", "Least"): lambda rng: float(rng.uniform(0, 0.1)),
    ("Durations", "Gap"): lambda rng: float(rng.uniform(0, 0.1)),
    ("Peaks", "Axis"): lambda rng: "Time",
    ("Peaks", "Height"): lambda rng: float(rng.uniform(-3, 0)),
    ("Peaks", "Prominence"): lambda rng: float(rng.uniform(0, 0.3)),
    ("Peaks", "Distance"): lambda rng: float(rng.uniform(0, 0.1)),
    ("Norm", "Columns"): lambda rng: int(rng.integers(0, 4)),
}


def drawn_setting(type, each, rng):
    name, kind = each["name"], each["kind"]
    if (type, name) in DRAWN:
        return DRAWN[type, name](rng)
    if kind == "flag":
        return bool(rng.integers(2))
    if kind == "choice":
        return str(rng.choice(each["labels"]))
    low = -3.0 if each["minimum"] is None else max(each["minimum"], -3.0)
    high = 3.0 if each["maximum"] is None else min(each["maximum"], low + 12.0)
    if kind in ("whole number", "count"):
        return int(rng.integers(int(np.ceil(low)), max(int(high), int(np.ceil(low))) + 1))
    if kind == "number":
        return float(rng.uniform(low, max(high, low)))
    return None


def drawn_settings(type, rng):
    """Some of the settings, at random; those that fit together, by the block's own word."""
    made = _native.Block(type, {}, FS)
    for _ in range(200):
        settings = {}
        for each in made.properties():
            value = drawn_setting(type, each, rng)
            wanted = (type, each["name"]) in DRAWN or rng.random() < 0.7
            if value is not None and wanted and each["writable"]:
                settings[each["name"]] = value
        if type in ("FilterFFT", "FilterFastFourierTransform"):
            settings["Pause"] = False
        try:
            return _native.Block(type, settings, FS), settings
        except velmarind.Error:
            continue
    raise AssertionError(f"found no settings that {type} takes in 200 draws")


def drawn_rows(type, rng):
    if type in FRAMES:
        return rng.normal(size=(ROWS, 16, 1))
    if type in MATRICES:
        return rng.normal(size=(ROWS, 6, 3))
    rows = np.cumsum(rng.normal(size=(ROWS, 3)), axis=0) / 5
    rows[rng.random((ROWS, 3)) < 0.05] = 0.0
    return rows[:, :1].copy() if type in ONE_COLUMN else rows


def drawn_beside(type, rng):
    beside = {}
    for name, width in BESIDE.get(type, {}).items():
        rows = rng.normal(size=(ROWS, width))
        beside[name] = (rng.random((ROWS, 1)) < 0.02).astype(float) if name.lower() == "reset" else rows
    return beside


def chunk_sizes(wish, rng):
    sizes = []
    while sum(sizes) < ROWS:
        sizes.append(min(int(rng.integers(1, 60)) if wish == "random" else wish, ROWS - sum(sizes)))
    return sizes


def in_chunks(block, rows, times, beside, sizes):
    begin, parts = 0, []
    for size in sizes:
        piece = slice(begin, begin + size)
        x = size if rows is None else rows[piece]
        t = None if times is None else times[piece]
        parts.append(block.push_all(x, t, {name: value[piece] for name, value in beside.items()}))
        begin += size
    parts.append(block.finish_all())
    return parts


def samples_of(parts, pin):
    """Each sample by itself, whatever the shape in which they came."""
    return [np.atleast_1d(sample) for part in parts for sample in part[pin][1]]


def require_same(type, pin, settings, whole, parts):
    all_at_once, piecewise = samples_of([whole], pin), samples_of(parts, pin)
    assert len(all_at_once) == len(piecewise), (type, pin, settings)
    for number, (one, other) in enumerate(zip(all_at_once, piecewise)):
        assert one.shape == other.shape, (type, pin, settings, number)
        assert one.tobytes() == other.tobytes(), (type, pin, settings, number, one, other)
    if type not in WALL_CLOCK and pin not in WALL_CLOCK_PINS:
        stamps = np.concatenate([part[pin][0] for part in parts])
        assert whole[pin][0].tobytes() == stamps.tobytes(), (type, pin, settings)


@pytest.mark.parametrize("type", _native.block_types())
def test_any_chunks_give_the_bits_of_one_call(type):
    rng = np.random.default_rng(zlib.crc32(type.encode()))
    came = 0
    for draw in range(DRAWS):
        block, settings = drawn_settings(type, rng)
        rows = None if block.main_input is None else drawn_rows(type, rng)
        times = None if rows is None else np.arange(ROWS) / FS
        beside = drawn_beside(type, rng)
        commands = [each["name"] for each in block.properties() if each["kind"] == "command"]
        fired = commands if type == "FilterPeriodCounter" else []
        for size in (1, 7, 100, "random"):
            one, other = block.fresh(), block.fresh()
            for each in (one, other):
                for command in fired:
                    each.fire(command)
            whole = one.run_all(ROWS if rows is None else rows, times, beside)
            parts = in_chunks(other, rows, times, beside, chunk_sizes(size, rng))
            for pin in block.outputs:
                came += len(whole[pin][0])
                if type in RANDOM:
                    assert len(whole[pin][0]) == sum(len(part[pin][0]) for part in parts) == ROWS
                else:
                    require_same(type, pin, settings, whole, parts)
    assert came > 0, f"{type} sent nothing in {DRAWS} draws"


@pytest.mark.parametrize("type", sorted(set(_native.block_types()) - RANDOM))
def test_push_in_any_chunks_gives_the_bits_of_run(type):
    """The main output by the quick way, without times where the block doesn't reckon with them."""
    rng = np.random.default_rng(zlib.crc32(type.encode()) + 1)
    for draw in range(DRAWS):
        block, settings = drawn_settings(type, rng)
        rows = None if block.main_input is None else drawn_rows(type, rng)
        times = np.arange(ROWS) / FS if block.reads_times and rows is not None else None
        whole = block.run(ROWS if rows is None else rows, times)
        for size in (1, 7, 100, "random"):
            other, begin, parts = block.fresh(), 0, []
            for count in chunk_sizes(size, rng):
                piece = slice(begin, begin + count)
                parts.extend(other.push(count if rows is None else rows[piece], None if times is None else times[piece]))
                begin += count
            parts.extend(other.finish())
            assert len(whole) == len(parts), (type, settings, size)
            for one, more in zip(whole, parts):
                assert np.asarray(one).tobytes() == np.asarray(more).tobytes(), (type, settings, size)


def with_odd_numbers(rows, rng):
    """Some that aren't finite, zeros of both signs, and ones too small to be normal."""
    odd = rng.choice([np.nan, np.inf, -np.inf, -0.0, 0.0, 5e-324, 1e-310], size=rows.shape)
    return np.where(rng.random(rows.shape) < 0.01, odd, rows)


def write_one(type, blocks, rng):
    """The same new setting to all of them, or none where it is refused."""
    settings = [each for each in blocks[0].properties() if each["kind"] != "command" and each["writable"]]
    if not settings:
        return
    each = settings[int(rng.integers(len(settings)))]
    value = drawn_setting(type, each, rng)
    if value is None or each["name"] == "Pause":
        return
    for block in blocks:
        try:
            block.set(each["name"], value)
        except velmarind.Error:
            pass


def any_nan(samples):
    return [np.where(np.isnan(sample), np.nan, sample).tobytes() for sample in map(np.asarray, samples)]


@pytest.mark.parametrize("type", sorted(set(_native.block_types()) - RANDOM))
def test_a_setting_between_chunks_and_odd_numbers(type):
    """Where a chunk begins a setting counts for its first row, whether rows come one by one or all at once."""
    rng = np.random.default_rng(zlib.crc32(type.encode()) + 2)
    for draw in range(DRAWS):
        block, settings = drawn_settings(type, rng)
        if block.main_input is None:
            return
        rows = drawn_rows(type, rng) if draw % 2 else with_odd_numbers(drawn_rows(type, rng), rng)
        times = np.arange(ROWS) / FS if block.reads_times else None
        together, single = block.fresh(), block.fresh()
        begin = 0
        for size in (3, 40, 100, 157):
            piece = slice(begin, begin + size)
            got = together.push(rows[piece], None if times is None else times[piece])
            wanted = []
            for row in range(begin, begin + size):
                one = slice(row, row + 1)
                wanted.extend(single.push(rows[one], None if times is None else times[one]))
            assert any_nan(got) == any_nan(wanted), (type, settings, begin)
            write_one(type, (together, single), rng)
            begin += size


def test_push_and_run_are_the_main_output_of_all(wrist):
    block = velmarind.block("FilterButterworth", fs=100, RelativeCutOffFreq="5 Hz", Order=4)
    everything = block.run_all(wrist)["out"][1]
    assert block.run(wrist).tobytes() == everything.tobytes()
    assert block(wrist).tobytes() == everything.tobytes()
    pieces = [block.push(wrist[row : row + 1]) for row in range(len(wrist))]
    assert np.concatenate(pieces).tobytes() == everything.tobytes()


def test_there_are_forty_five_blocks():
    assert len(_native.block_types()) == 45
