# SPDX-License-Identifier: MIT
"""Blocks in Python: what goes in and comes out, their settings by name, their documentation."""

import copy
import inspect
import logging
import pickle

import numpy as np
import pandas as pd
import pytest
import velmarind
from velmarind import _native

BUTTERWORTH = {"Order": 4, "RelativeCutOffFreq": "5 Hz"}


def made(type):
    """A new FilterFFT is paused, of which a warning tells."""
    return velmarind.block(type, fs=100, **({"Pause": False} if type == "FilterFFT" else {}))


def table(values, freq="10ms"):
    index = pd.date_range("2024-05-01 10:00", periods=len(values), freq=freq, name="when")
    return pd.DataFrame(values, index=index, columns=["x", "y", "z"])


def test_push_is_the_operation_of_the_extension():
    assert velmarind.Block.push is _native.Block.push
    assert "push" not in type(velmarind.block("FilterGain")).__dict__


def test_hertz_and_seconds_need_a_rate():
    with pytest.raises(velmarind.Error, match="5 Hz"):
        velmarind.block("FilterButterworth", RelativeCutOffFreq="5 Hz")
    assert velmarind.block("FilterButterworth", fs=100, RelativeCutOffFreq="5 Hz").RelativeCutOffFreq == 0.1
    with pytest.raises(velmarind.Error, match="above 0"):
        velmarind.block("FilterGain", fs=0)
    with pytest.raises(velmarind.Error, match="'fast'"):
        velmarind.block("FilterGain", fs="fast")


def test_the_rate_may_come_from_data(wrist):
    block = velmarind.block("FilterButterworth", fs=table(wrist), **BUTTERWORTH)
    assert block.fs == 100
    with pytest.raises(velmarind.Error, match="50 rows a second; expected 100"):
        block(table(wrist, "20ms"))


def test_arrays_come_back_in_their_form(wrist):
    block = velmarind.block("FilterButterworth", fs=100, **BUTTERWORTH)
    assert block(wrist).shape == (1000, 3)
    assert block(wrist[:, 0]).shape == (1000,)
    assert block(wrist[:, 0]).tobytes() == block(wrist)[:, 0].tobytes()
    assert block(np.asfortranarray(wrist)).tobytes() == block(wrist).tobytes()
    assert block(wrist.tolist()).tobytes() == block(wrist).tobytes()


def test_a_call_leaves_the_state_of_push_alone(wrist):
    block = velmarind.block("FilterButterworth", fs=100, **BUTTERWORTH)
    first = block.push(wrist[:500])
    block(wrist)
    assert np.concatenate([first, block.push(wrist[500:])]).tobytes() == block(wrist).tobytes()
    block.reset()
    assert block.push(wrist).tobytes() == block(wrist).tobytes()


def test_tables_come_back_with_their_index(wrist):
    block = velmarind.block("FilterButterworth", fs=100, **BUTTERWORTH)
    frame = table(wrist)
    calm = block(frame)
    assert calm.index.equals(frame.index) and list(calm.columns) == ["x", "y", "z"]
    assert np.array_equal(calm.to_numpy(), block(wrist))
    column = block(frame["y"])
    assert isinstance(column, pd.Series) and column.name == "y" and column.index.equals(frame.index)


def test_what_has_times_of_its_own_comes_with_them(wrist):
    half = velmarind.block("Resample", Rate=50.0, LowPass=False)(table(wrist))
    assert half.index[0] == pd.Timestamp("2024-05-01 10:00") and half.index[1] - half.index[0] == pd.Timedelta("20ms")
    assert np.array_equal(half.to_numpy(), wrist[::2])
    seconds = pd.DataFrame(wrist, index=pd.Index(np.arange(1000) / 100, name="t"))
    assert velmarind.block("Resample", Rate=50.0, LowPass=False)(seconds).index[1] == 0.02


@pytest.mark.parametrize("shape", [(3, 1000), (1, 30), (12, 30)])
def test_channels_down_the_rows_are_refused(shape):
    with pytest.raises(velmarind.Error, match=r"did you mean its transposition, x\.T\?") as caught:
        velmarind.block("FilterGain")(np.zeros(shape))
    assert caught.value.found == f"{shape[0]} rows and {shape[1]} columns" and caught.value.nearest == "x.T"


def test_wide_rows_go_in_as_samples():
    assert velmarind.block("FilterGain")(np.ones((3, 1, 1000))).size == 3000


@pytest.mark.parametrize("x, found", [
    (np.array(["1.5", "2"]), "an array of <U3"),
    (np.ones(5) * 1j, "an array of complex128"),
    (np.array(["2024-01-01"], dtype="datetime64[ns]"), r"an array of datetime64\[ns\]"),
    ([[1, 2], [3]], "rows of several lengths|object"),
    (3.0, "3.0; expected rows"),
    (pd.DataFrame({"a": [1.0], "when": [pd.Timestamp("2024-01-01")]}), "a column 'when' of datetime64"),
    (pd.Series(["1"]), "a column 'None' of object"),
])
def test_what_is_no_number_is_refused(x, found):
    with pytest.raises(velmarind.Error, match=found):
        velmarind.block("FilterGain")(x)
    with pytest.raises(velmarind.Error, match=found):
        velmarind.lowpass(x, cutoff=5, fs=100)


def test_what_is_missing_is_not_a_number():
    double = velmarind.block("FilterGain", Gain=2)
    masked = np.ma.masked_array([1, 2, 3], mask=[False, True, False])
    assert np.array_equal(double(masked), [2, np.nan, 6], equal_nan=True)
    assert np.array_equal(double(pd.Series([1, None, 3], dtype="Int64")), [2, np.nan, 6], equal_nan=True)
    assert double(np.array([True, False])).tolist() == [2, 0]
    assert double(pd.DataFrame({"a": [True], "b": [3]})).to_numpy().tolist() == [[2, 6]]


@pytest.mark.parametrize("act, name", [
    (lambda x: velmarind.lowpass(x, cutoff=None, fs=100), "cutoff"),
    (lambda x: velmarind.highpass(x, cutoff=[5], fs=100), "cutoff"),
    (lambda x: velmarind.bandpass(x, low="3 Hz", high=12, fs=100), "low"),
    (lambda x: velmarind.detect_saturation(x, low=None, high=1), "low"),
    (lambda x: velmarind.find_peaks(x, prominence="much"), "prominence"),
    (lambda x: velmarind.resample(x, rate="50", fs=100), "rate"),
])
def test_options_that_are_no_numbers_are_refused(act, name):
    with pytest.raises(velmarind.Error, match=f"for {name}; expected a number") as caught:
        act(np.zeros(50))
    assert caught.value.property == name


def test_uneven_times_are_refused(rng):
    index = pd.Index(np.cumsum(rng.choice([0.001, 0.02], 200)), name="t")
    frame = pd.DataFrame(np.zeros((200, 3)), index=index)
    with pytest.raises(velmarind.Error, match="velmarind.resample"):
        velmarind.lowpass(frame, cutoff=5)
    back = pd.Series(np.zeros(4), index=[0.0, 0.01, 0.005, 0.02])
    with pytest.raises(velmarind.Error, match="goes back behind row 1"):
        velmarind.lowpass(back, cutoff=5)


def test_little_jitter_and_pauses_are_no_harm(rng):
    times = np.arange(500) / 100 + rng.normal(0, 5e-4, 500)
    times[250:] += 3
    assert velmarind.block("FilterGain", fs=pd.Series(0, index=times)).fs == pytest.approx(100, rel=1e-3)


def test_a_few_repeated_stamps_are_no_harm(wrist):
    times = np.arange(1000) / 100
    times[100::50] = times[99::50][: len(times[100::50])]
    assert velmarind.lowpass(pd.DataFrame(wrist, index=times), cutoff=5).shape == (1000, 3)
    with pytest.raises(velmarind.Error, match="a time in row 1 that is no number"):
        velmarind.lowpass(pd.Series(np.zeros(3), index=[0.0, np.nan, 0.02]), cutoff=5)
    with pytest.raises(velmarind.Error, match="goes back"):
        velmarind.lowpass(pd.Series([1.0, 2.0], index=[0.5, 0.5]), cutoff=5)


def test_other_inputs_go_by_keyword(rng):
    turn = rng.normal(0, 0.01, (300, 3))
    rest = velmarind.block("FilterFlagStatic", fs=100, Windows_Size="0.5 s", StdDevIni=1.0)
    found = rest(turn, _3bias=np.zeros((300, 3)))
    assert list(found) == ["FlagStatic", "StdDev"] and found.FlagStatic is found["FlagStatic"]
    again = rest(_3g=turn, **{"3bias": np.zeros((300, 3))})
    assert found.StdDev.tobytes() == again.StdDev.tobytes()
    assert len(found.times["FlagStatic"]) == 299
    with pytest.raises(velmarind.Error, match="found input 'bias'; expected one of _3g, _3bias; did you mean _3bias"):
        rest(turn, bias=np.zeros((300, 3)))


def test_generators_take_a_number_of_steps():
    wave = velmarind.block("FilterFunctionGenerator", Mode="sinusoid", SignalPeriod=8, SampleRate=1)
    assert wave(8).shape[0] == 8


def test_settings_go_by_attribute_and_by_name():
    block = velmarind.block("FilterBandPass", fs=100, Low_Cutoff_Freq_relative="2 Hz", Order=2)
    low = block.properties["Low Cutoff Freq. (relative)"]
    assert low.value == 0.04 and low.minimum == 0 and low.maximum == 1 and low.writable and "hertz" in low.unit
    block.Low_Cutoff_Freq_relative = "4 Hz"
    assert low.value == 0.08 == block.Low_Cutoff_Freq_relative
    block.properties["Order"].value = 1
    block.properties["High_Cutoff_Freq_relative"] = 0.5
    assert block.Order == 1 and block.properties["High Cutoff Freq. (relative)"].value == 0.5
    assert "Order" in block.properties and "Ordr" not in block.properties and len(block.properties) == 3
    with pytest.raises(velmarind.Error, match="did you mean Order"):
        block.Ordr = 3
    with pytest.raises(AttributeError, match="Order"):
        block.Ordr
    with pytest.raises(velmarind.Error, match="did you mean Order") as caught:
        block.properties["Ordr"]
    assert caught.value.property == "Ordr" and caught.value.nearest == "Order"
    with pytest.raises(velmarind.Error, match="11"):
        block.Order = 11
    assert block.Order == 1


def test_doubts_about_settings_are_warnings():
    with pytest.warns(velmarind.DataWarning, match="^'band' .* the low edge has to lie below the high one"):
        velmarind.block("FilterBandPass", id="band", Low_Cutoff_Freq_relative=0.5)


def test_refusals_know_their_block():
    for act in (
        lambda: velmarind.block("FilterButterworth", id="smooth", fs=100, Mode="Lowpas"),
        lambda: velmarind.block("FilterButterworth", id="smooth", Order=2.5),
        lambda: setattr(velmarind.block("FilterButterworth", id="smooth"), "Order", 99),
    ):
        with pytest.raises(velmarind.Error) as caught:
            act()
        assert caught.value.block == "smooth"
    assert caught.value.property == "Order"


def test_blocks_can_be_copied_and_sent(wrist):
    block = velmarind.block("FilterButterworth", fs=100, id="smooth", **BUTTERWORTH)
    block.push(wrist)
    for again in (copy.copy(block), copy.deepcopy(block), pickle.loads(pickle.dumps(block))):
        assert (again.type, again.id, again.fs) == ("FilterButterworth", "smooth", 100)
        assert again.push(wrist).tobytes() == block(wrist).tobytes()


def test_copies_have_what_was_fired_before_the_first_row(wrist):
    block = velmarind.block("FilterPeriodCounter", fs=100, Nb_Period=3)
    block.fire("Reset")
    wave = np.sin(2 * np.pi * np.arange(1000) / 100)
    plain = velmarind.block("FilterPeriodCounter", fs=100, Nb_Period=3)
    counted = block.run(wave)
    assert block.commands == ["Reset"] and len(counted) != len(plain.run(wave))
    again = pickle.loads(pickle.dumps(block))
    for other in (copy.copy(block), copy.deepcopy(again), block.fresh()):
        assert other.commands == ["Reset"] and np.array_equal(other.push(wave), counted)


def test_choices_and_commands():
    block = velmarind.block("FilterButterworth", fs=100, Mode="HiPass")
    assert block.Mode == "HiPass" and block.properties["Mode"].labels == ["LowPass", "HiPass"]
    block.push(np.ones((5, 1)))
    block.properties["Init"].fire()
    assert block.push(np.full((1, 1), 7.0))[0, 0] == pytest.approx(0, abs=1e-12)


@pytest.mark.parametrize("type", _native.block_types())
def test_every_literal_name_has_an_identifier_of_its_own(type):
    block = made(type)
    names = list(block.properties)
    identifiers = [velmarind.identifier(name) for name in names]
    assert all(each.isidentifier() for each in identifiers) and len(set(identifiers)) == len(names)
    pins = [velmarind.identifier(name) for name in block.inputs]
    assert all(each.isidentifier() for each in pins) and len(set(pins)) == len(pins)
    for name in names:
        assert block.properties[velmarind.identifier(name)].name == name
        assert repr(block.properties[name]).startswith(name)


@pytest.mark.parametrize("type", _native.block_types())
def test_every_block_is_documented_by_its_page(type):
    doc = inspect.getdoc(made(type))
    page = _native.describe(type)
    assert doc.startswith(page["purpose"])
    for setting in page["properties"]:
        assert setting["name"] in doc and setting["meaning"].split()[0] in doc
    assert "\nOutputs\n-------\n" in doc


def test_a_repr_tells_what_was_set():
    block = velmarind.block("FilterButterworth", fs=100, **BUTTERWORTH)
    assert repr(block) == "FilterButterworth(fs=100, RelativeCutOffFreq=5 Hz, Order=4)"


def test_unknown_types_and_settings_are_refused_with_what_is_near():
    with pytest.raises(velmarind.Error, match="FilterButterworth"):
        velmarind.block("FilterButerworth")
    with pytest.raises(velmarind.Error) as caught:
        velmarind.block("FilterButterworth", fs=100, id="smooth", Ordr=4)
    error = caught.value
    assert isinstance(error, ValueError) and error.nearest == "Order" and error.complaints
    assert error.complaints[0]["nearest"] == "Order"


def test_conversions_are_logged(caplog):
    with caplog.at_level(logging.INFO, "velmarind"):
        velmarind.block("FilterButterworth", fs=100, RelativeCutOffFreq="5 Hz")
    assert "5 Hz is 0.1 of half the rate" in caplog.text


def test_responses(wrist):
    response = velmarind.block("FilterButterworth", Order=2, RelativeCutOffFreq=0.1).response(fs=100, points=50)
    assert response.frequency[0] == 0 and response.frequency[-1] == pytest.approx(50)
    at = int(np.argmin(np.abs(response.frequency - 5)))
    assert response.gain[at] == pytest.approx(np.sqrt(0.5), abs=1e-6)
    axes = response.plot()
    assert axes.get_xlabel() == "frequency (Hz)" and len(axes.lines) == 1


def test_results_say_what_there_is(wrist):
    found = velmarind.block("FilterPeriodCounter", Nb_Period=2)(wrist[:, 0])
    assert "Nb Period: " in repr(found) and dict(found).keys() == {"Nb Period", "Is Counting"}
    with pytest.raises(AttributeError, match="did you mean Is_Counting"):
        found.Is_Countin
    with pytest.raises(KeyError, match="Nb Period"):
        found["count"]


def test_times_may_be_a_column_of_a_table():
    frame = pd.DataFrame({"t": [0.0, 0.5, 2.0], "x": [0.0, 1.0, 4.0]})
    even = velmarind.block("Resample", Rate=1, LowPass=False, Gap=100)
    assert even(frame["x"].to_numpy(), frame["t"]).tolist() == [0.0, 2.0, 4.0]
    dates = pd.Series(pd.to_datetime(["2026-05-01 10:00:00", "2026-05-01 10:00:00.5", "2026-05-01 10:00:02"]))
    assert even(frame["x"].to_numpy(), dates).tolist() == [0.0, 2.0, 4.0]
