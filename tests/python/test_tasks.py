# SPDX-License-Identifier: MIT
"""Tasks: against scipy and numpy on the same arrays, and against the graphs that they carry."""

import warnings

import numpy as np
import pandas as pd
import pytest
import scipy.signal
import velmarind

TASKS = [
    velmarind.lowpass, velmarind.highpass, velmarind.bandpass, velmarind.spectrum, velmarind.track_tremor,
    velmarind.detect_rest, velmarind.detect_saturation, velmarind.smooth_vectors, velmarind.count_periods,
    velmarind.detect_levels, velmarind.resample, velmarind.find_peaks,
]


def steady_sosfilt(sos, x):
    zi = scipy.signal.sosfilt_zi(sos)[:, :, None] * x[0]
    return scipy.signal.sosfilt(sos, x, axis=0, zi=zi)[0]


def frame_of(values, freq="10ms", columns=("x", "y", "z")):
    index = pd.date_range("2024-05-01", periods=len(values), freq=freq)
    return pd.DataFrame(values, index=index, columns=list(columns))


@pytest.mark.parametrize("order", [1, 2, 3, 4, 6])
@pytest.mark.parametrize("cutoff", [0.5, 5, 20])
def test_lowpass_is_sosfilt_with_a_steady_start(wrist, order, cutoff):
    sos = scipy.signal.butter(order, cutoff, output="sos", fs=100)
    want = steady_sosfilt(sos, wrist)
    got = velmarind.lowpass(wrist, cutoff=cutoff, fs=100, order=order)
    assert np.max(np.abs(got - want)) < 1e-12 * np.max(np.abs(want))


@pytest.mark.parametrize("cutoff", [0.5, 5, 20])
def test_highpass_of_order_1_is_sosfilt_with_a_steady_start(wrist, cutoff):
    sos = scipy.signal.butter(1, cutoff, "highpass", output="sos", fs=100)
    want = steady_sosfilt(sos, wrist)
    assert np.max(np.abs(velmarind.highpass(wrist, cutoff=cutoff, fs=100) - want)) < 1e-12 * np.max(np.abs(wrist))


def gain_at(task, hertz, **options):
    """Of a sinusoid over its last whole second, when the begin is forgotten."""
    t = np.arange(4000) / 100
    wave = np.exp(2j * np.pi * hertz * t)
    sent = task(np.stack([wave.real, wave.imag], axis=1), fs=100, **options)[-100:]
    return np.sqrt(np.mean(sent[:, 0] ** 2 + sent[:, 1] ** 2))


@pytest.mark.parametrize("order", [1, 2, 3, 6])
def test_the_edge_of_a_highpass_has_half_the_power(order):
    assert gain_at(velmarind.highpass, 4.0, cutoff=4.0, order=order) == pytest.approx(np.sqrt(0.5), abs=1e-9)
    assert gain_at(velmarind.highpass, 0.5, cutoff=4.0, order=order) < (0.13 if order == 1 else 0.1)


def test_a_band_has_both_edges():
    inside, low, high = (gain_at(velmarind.bandpass, f, low=1.0, high=20.0, order=2) for f in (5.0, 1.0, 20.0))
    assert inside == pytest.approx(1, abs=0.03)
    assert low == pytest.approx(np.sqrt(0.5), abs=1e-4) and high == pytest.approx(np.sqrt(0.5), abs=0.01)
    with pytest.raises(velmarind.Error, match="low below high"):
        velmarind.bandpass(np.zeros(10), low=20, high=1, fs=100)


def test_filters_want_a_rate_and_give_tables_back(wrist):
    with pytest.raises(velmarind.Error, match="found no rate for lowpass; expected fs"):
        velmarind.lowpass(wrist, cutoff=5)
    with pytest.raises(TypeError):
        velmarind.lowpass(wrist, 5)  # hertz are named
    with pytest.raises(velmarind.Error, match="half"):
        velmarind.lowpass(wrist, cutoff=60, fs=100)
    calm = velmarind.lowpass(frame_of(wrist), cutoff=5)
    assert np.array_equal(calm.to_numpy(), velmarind.lowpass(wrist, cutoff=5, fs=100))
    with pytest.raises(velmarind.Error, match="transposition"):
        velmarind.lowpass(wrist.T, cutoff=5, fs=100)


@pytest.mark.parametrize("rows", [400, 401, 1000])
def test_a_spectrum_is_numpys(rng, rows):
    x = rng.normal(size=(rows, 2))
    n = rows - rows % 2
    found = velmarind.spectrum(x, fs=100, window=None)
    want = 2 * np.abs(np.fft.rfft(x[:n], axis=0)) / n
    assert np.allclose(found.frequency, np.fft.rfftfreq(n, 1 / 100)[:-1], rtol=1e-15)
    assert np.max(np.abs(found.amplitude[1:] - want[1:-1])) < 1e-12
    both = np.hypot(want[0] / 2, want[-1] / 2)  # the mean and half the rate, in one
    assert np.max(np.abs(found.amplitude[0] - both)) < 1e-12


@pytest.mark.parametrize("window, keeps", [("hanning", 0.5), ("hamming", 0.54), ("blackman", 0.42)])
def test_windows_are_numpys(rng, window, keeps):
    x = rng.normal(size=500)
    want = 2 * np.abs(np.fft.rfft(x * getattr(np, window)(500) / keeps)) / 500
    assert np.max(np.abs(velmarind.spectrum(x, fs=100, window=window).amplitude[1:] - want[1:-1])) < 1e-12
    with pytest.raises(velmarind.Error, match="hanning"):
        velmarind.spectrum(x, fs=100, window="hann")


def test_spectra_of_frames(rng):
    x = rng.normal(size=1000)
    found = velmarind.spectrum(x, fs=100, frame=2, hop=1)
    assert found.amplitude.shape == (9, 100) and found.time[0] == 1.99 and found.time[1] == 2.99
    one = velmarind.spectrum(x[100:300], fs=100).amplitude
    assert found.amplitude[1].tobytes() == one.tobytes()
    assert found.plot().get_ylabel() == "frequency (Hz)"
    assert velmarind.spectrum(frame_of(rng.normal(size=(300, 3)))).plot().get_legend() is not None
    with pytest.raises(velmarind.Error, match="frames of 2000"):
        velmarind.spectrum(x, fs=100, frame=20)
    with pytest.raises(velmarind.Error, match="prime"):
        velmarind.spectrum(np.zeros(2 * 99991), fs=100)


@pytest.mark.parametrize("prominence", [None, 0.3, 1.0])
@pytest.mark.parametrize("height", [None, 0.2])
def test_peaks_are_scipys(rng, prominence, height):
    x = np.cumsum(rng.normal(size=2000)) / 5
    x -= velmarind.lowpass(x, cutoff=0.5, fs=100)
    x[-1] = x.min() - 5  # all peaks are decided by the end
    got, found = velmarind.find_peaks(x, prominence=prominence, height=height)
    want, _ = scipy.signal.find_peaks(x, prominence=prominence, height=height)
    assert len(want) > 10 and got.tolist() == want.tolist()
    assert np.array_equal(found["peak_heights"], x[want])


def test_peaks_keep_their_distance(rng):
    x = velmarind.lowpass(rng.normal(size=5000), cutoff=5, fs=100)
    got, found = velmarind.find_peaks(x, interval=0.5, fs=100)
    assert np.min(np.diff(got)) >= 50 and np.array_equal(found["peak_times"], got / 100)
    everything, _ = velmarind.find_peaks(x)
    assert set(got) <= set(everything)
    highest = int(np.argmax(x))
    assert highest in got
    with pytest.raises(velmarind.Error, match="fs"):
        velmarind.find_peaks(x, interval=0.5)
    with pytest.raises(velmarind.Error, match="one channel"):
        velmarind.find_peaks(np.zeros((10, 3)))


def test_rows_that_share_a_stamp_keep_their_places(rng):
    index = np.arange(200) / 100
    index[51], index[101] = index[50], index[100]
    x = np.zeros(200)
    x[51], x[120] = 3, 2
    peaks, _ = velmarind.find_peaks(pd.Series(x, index=index), prominence=1)
    assert peaks.tolist() == [51, 120]
    level = velmarind.detect_levels(pd.Series(x, index=index), above=1).level
    assert np.flatnonzero(level).tolist() == [51, 120]
    turn = pd.DataFrame(rng.normal(size=(200, 3)), index=index)
    assert not velmarind.detect_rest(turn).noise[1:].isna().any().any()


def test_resample_goes_up_by_lines():
    x = np.array([0.0, 1.0, 4.0])
    assert velmarind.resample(x, fs=1, rate=4).tolist() == np.interp(np.arange(9) / 4, [0, 1, 2], x).tolist()
    assert velmarind.resample(x, fs=1, rate=2, hold=True).tolist() == [0, 0, 1, 1, 4]


def test_resample_goes_down_without_what_the_new_rate_cant_hold():
    t = np.arange(20000) / 200
    kept, gone = np.sin(2 * np.pi * 5 * t), np.sin(2 * np.pi * 60 * t)
    settled = slice(100, -100)
    slow = velmarind.resample(kept, fs=200, rate=50)
    want = np.sin(2 * np.pi * 5 * np.arange(len(slow)) / 50)
    assert np.max(np.abs(slow[settled] - want[settled])) < 1 - 10 ** (-0.1 / 20)  # within 0.1 dB
    assert np.max(np.abs(velmarind.resample(gone, fs=200, rate=50)[settled])) < 1e-3  # 60 dB lower


def test_resample_of_uneven_times(rng):
    times = np.cumsum(rng.uniform(0.005, 0.02, 1000))
    y, even = velmarind.resample(3 * times, t=times, rate=20, lowpass=False)
    assert np.max(np.abs(y - 3 * even)) < 1e-9 and np.allclose(np.diff(even), 0.05)
    frame = pd.DataFrame({"x": 3 * times}, index=times)
    assert np.array_equal(velmarind.resample(frame, rate=20, lowpass=False)["x"], y)
    with pytest.raises(TypeError):
        velmarind.resample(y, 100)  # a number of rows, as scipy's has it, isn't taken for a rate


def test_tremor_is_found_under_movement(rng):
    t = np.arange(6000) / 100
    trembles = (t > 20) & (t < 45)
    reach = 3 * np.sin(2 * np.pi * 0.4 * t)
    turn = reach + np.where(trembles, 0.3 * np.sin(2 * np.pi * 5.2 * t), 0) + rng.normal(0, 0.003, 6000)
    found = velmarind.track_tremor(frame_of(turn[:, None], columns=["gx"]))
    sure = (t > 26) & (t < 44)
    assert found.tremor[sure].all() and not found.tremor[t < 19].any() and not found.tremor[t > 49].any()
    assert np.all(np.abs(found.frequency[sure] - 5.2) < 0.3)
    assert len(found.spells) == 1 and found.spells["begin"][0] == pytest.approx(22, abs=3)
    assert len(found.plot().lines) == 3


def test_tremor_at_another_rate(rng):
    t = np.arange(4000) / 200
    found = velmarind.track_tremor(np.sin(2 * np.pi * 6 * t) + rng.normal(0, 0.01, 4000), fs=200)
    assert found.times["tremor"][1] == pytest.approx(0.01) and found.tremor[1000:].all()
    assert np.median(found.frequency[1000:]) == pytest.approx(6, abs=0.1)


def test_tremor_of_a_few_rows_is_none():
    found = velmarind.track_tremor(np.zeros(50), fs=100)
    assert not found.tremor.any() and found.spells.shape == (0, 3)


def test_rest(rng):
    turn = rng.normal(0, 0.01, (1000, 3)) + [0.1, 0, 0]
    turn[400:600] += rng.normal(0, 1, (200, 3)) + 2
    found = velmarind.detect_rest(turn, fs=100, bias=[0.1, 0, 0])
    assert not found.rest[0] and found.rest[100:400].all() and not found.rest[400:600].any()
    assert np.all(np.abs(found.noise[399] - 0.01) < 0.003) and np.isnan(found.noise[0]).all()
    again = velmarind.detect_rest(frame_of(turn), bias=[0.1, 0, 0])
    assert isinstance(again.rest, pd.Series) and np.array_equal(again.rest, found.rest)
    with pytest.raises(velmarind.Error, match="three columns"):
        velmarind.detect_rest(turn[:, :2], fs=100)


def test_saturation():
    x = np.array([[0.5], [2], [2], [2], [1], [-2], [np.nan]])
    assert velmarind.detect_saturation(x, low=-2, high=2)[:, 0].tolist() == [False, True, True, True, False, True, True]
    stuck = velmarind.detect_saturation(x, low=-2, high=2, steady=0.02, fs=100)
    assert stuck[:, 0].tolist() == [False, False, True, True, False, False, False]
    with pytest.raises(velmarind.Error, match="fs"):
        velmarind.detect_saturation(x, low=-2, high=2, steady=0.02)
    assert velmarind.detect_saturation(frame_of(np.zeros((5, 3))), low=-1, high=1).dtypes.tolist() == [bool] * 3


def test_vectors_follow_a_turn(rng):
    t = np.arange(1000) / 100
    angle = np.sin(2 * np.pi * 0.5 * t)
    up = np.stack([np.zeros(1000), np.sin(angle), np.cos(angle)], axis=1)
    gyro = np.stack([np.gradient(angle, t), np.zeros(1000), np.zeros(1000)], axis=1)
    noisy = up + rng.normal(0, 0.05, (1000, 3))
    found = velmarind.smooth_vectors(noisy, gyro=gyro, fs=100)
    assert np.sqrt(np.mean((found.accel - up)[200:] ** 2)) < 0.5 * np.sqrt(np.mean((noisy - up)[200:] ** 2))
    assert found.rotation.shape == (1000, 3, 3) and "magnet" not in found
    field = np.tile([0.5, 0, 0.866], (1000, 1))
    both = velmarind.smooth_vectors(noisy, gyro=gyro, magnet=field, fs=100)
    assert both.accel.tobytes() == found.accel.tobytes() and both.magnet.shape == (1000, 3)


def test_periods():
    wave = -np.cos(2 * np.pi * np.arange(1000) / 100)
    found = velmarind.count_periods(wave, tolerance=0.5)
    assert found.count == 9 and np.all(np.diff(found.rows) == 100)
    assert not found.counting[: found.rows[0]].any() and found.counting[found.rows[0] :].all()
    nothing = velmarind.count_periods(np.zeros(50), tolerance=0.5)
    assert nothing.count == 0 and len(nothing.rows) == 0
    with pytest.warns(velmarind.DataWarning, match="found 3 periods by row"):
        assert velmarind.count_periods(wave, tolerance=0.5, most=3).count == 3


def test_levels():
    x = np.concatenate([np.zeros(10), np.full(20, 3.0), np.full(10, 1.5), np.zeros(10), np.full(5, 3.0)])
    found = velmarind.detect_levels(x, above=2, below=1, fs=10)
    assert found.level.tolist() == [False] * 10 + [True] * 30 + [False] * 10 + [True] * 5
    assert found.spells.tolist() == [[1.0, 4.0, 3.0], [5.0, 5.4, 5.4 - 5.0]]  # the last up to the last row
    assert len(velmarind.detect_levels(x, above=2, below=1, least=5, fs=10).spells) == 0
    assert velmarind.detect_levels(frame_of(x[:, None], columns=["a"]), above=2).spells.columns.tolist() == [
        "begin", "end", "seconds"]


# Each task is the graph that it carries.


@pytest.mark.parametrize("task", TASKS, ids=lambda task: task.__name__)
def test_tasks_show_their_graphs(task):
    assert task.__name__ in repr(task.graph) and "MemorySource" in repr(task.graph)
    assert task.graph._repr_svg_().startswith("<svg") and task.graph_of().text == task.graph.text
    assert velmarind.Graph.from_text(task.graph.text) == task.graph_of()
    assert task.__doc__.count("Parameters\n    ----------") == 1


CHAINS = [
    (velmarind.lowpass, {"cutoff": 5.0, "order": 3}, {"fs": 100}),
    (velmarind.highpass, {"cutoff": 2.0, "order": 2}, {"fs": 100}),
    (velmarind.bandpass, {"low": 2.0, "high": 9.0, "order": 2}, {"fs": 100}),
    (velmarind.detect_saturation, {"low": -0.5, "high": 0.5, "steady": 0.03}, {"fs": 100}),
    (velmarind.resample, {"rate": 30.0}, {"fs": 100}),
]


@pytest.mark.parametrize("task, options, rate", CHAINS, ids=lambda each: getattr(each, "__name__", ""))
def test_chains_have_the_bits_of_their_graphs(wrist, task, options, rate):
    got = np.asarray(task(wrist, **options, **rate), dtype=np.float64)
    want = task.graph_of(**options).run(wrist, fs=100).tables["result"]["values"]
    assert got.tobytes() == want.tobytes()


def test_other_tasks_have_the_bits_of_their_graphs(wrist, rng):
    turn = rng.normal(0, 0.01, (500, 3))
    t = np.arange(500) / 100
    rest = velmarind.detect_rest.graph.run({"x": {"gyro": turn, "bias": np.zeros((500, 3)), "t": t}}).tables["result"]
    found = velmarind.detect_rest(turn, fs=100)
    assert np.array_equal(found.rest[1:], rest["values"][:, 0] > 0)
    assert found.noise[1:].tobytes() == np.ascontiguousarray(rest["values"][:, 1:]).tobytes()

    field = np.tile([0.5, 0, 0.866], (500, 1))
    data = {"x": {"accel": wrist[:500], "magnet": field, "gyro": turn, "t": t}}
    vectors = velmarind.smooth_vectors.graph.run(data)["result"]
    found = velmarind.smooth_vectors(wrist[:500], gyro=turn, magnet=field, fs=100)
    assert found.accel.tobytes() == np.ascontiguousarray(vectors.filter(regex="^accel")).tobytes()

    wave = -np.cos(2 * np.pi * t)
    periods = velmarind.count_periods.graph_of(tolerance=0.5).run(wave, fs=100)["result"]
    assert velmarind.count_periods(wave, tolerance=0.5).count == periods.filter(regex="^x").max().item()

    peaks = velmarind.find_peaks.graph.run(wave, fs=100).tables["result"]["values"]
    found = velmarind.find_peaks(wave, fs=100)[1]
    assert np.array_equal(peaks, np.stack([found["peak_times"], found["peak_heights"]], axis=1))

    frames = wave[:400].reshape(2, 200, 1)
    spectra = velmarind.spectrum.graph.run(frames, fs=1).tables["result"]["values"]
    assert spectra.tobytes() == velmarind.spectrum(wave[:400], fs=100, frame=2, hop=2).amplitude.tobytes()


def test_a_pause_doesnt_let_what_is_fast_through():
    t = np.concatenate([np.arange(6000) / 100, 660 + np.arange(6000) / 100])
    even, _ = velmarind.resample(np.sin(2 * np.pi * 40 * t), rate=50, t=t)
    assert np.sqrt(np.mean(even[100:2500] ** 2)) < 1e-3


def test_equal_times_have_no_rate_to_go_down_from():
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        velmarind.resample(np.arange(3.0), rate=50, t=[1, 1, 1])


def test_a_frame_is_a_number_of_seconds():
    with pytest.raises(velmarind.Error, match="frame"):
        velmarind.spectrum(np.zeros(500), fs=100, frame="2 s")


@pytest.mark.parametrize("count", [0, 1])
def test_a_row_alone_has_no_tremor_to_track(count):
    with pytest.raises(velmarind.Error, match="three seconds"):
        velmarind.track_tremor(np.zeros(count), fs=100)
