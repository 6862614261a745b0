# SPDX-License-Identifier: MIT
"""Blocks of the extension: what goes in, what comes out, and what is refused."""

import gc
import math
import sys
import threading

import numpy as np
import pytest

from velmarind import _native
from velmarind._native import Block, Error

SMOOTH = {"Order": 4, "RelativeCutOffFreq": "5 Hz", "Mode": "LowPass"}


def smooth() -> Block:
    return Block("FilterButterworth", SMOOTH, fs=100.0)


def noise(rows: int, columns: int = 3) -> np.ndarray:
    return np.random.default_rng(1).standard_normal((rows, columns))


def refusal(action) -> Error:
    with pytest.raises(Error) as raised:
        action()
    return raised.value


def test_chunks_give_the_bits_of_one_call():
    x = noise(1000)
    whole = smooth().push(x)
    block = smooth()
    parts = np.concatenate([block.push(x[i : i + 7]) for i in range(0, len(x), 7)])
    assert parts.tobytes() == whole.tobytes()


def test_a_run_is_fresh_and_leaves_the_block_alone():
    x = noise(50)
    block = smooth()
    first = block.push(x[:25])
    assert block.run(x).tobytes() == smooth().push(x).tobytes()
    assert np.concatenate([first, block.push(x[25:])]).tobytes() == block.run(x).tobytes()
    block.reset()
    assert block.push(x).tobytes() == block.run(x).tobytes()


def test_hertz_become_numbers():
    block = smooth()
    assert block.get("RelativeCutOffFreq") == 0.1
    block.set("RelativeCutOffFreq", "10 Hz")
    assert block.get("RelativeCutOffFreq") == 0.2
    assert [c["written"] for c in block.conversions] == ["10 Hz"]
    assert block.fresh().get("RelativeCutOffFreq") == 0.2


def test_a_quantity_that_is_as_written_becomes_a_number_too():
    block = Block("Durations", {}, fs=100)
    block.set("Gap", "500 ms")
    assert [c["written"] for c in block.conversions] == ["500 ms"]
    block.set("Gap", "0.25 s")
    assert block.get("Gap") == 0.25 and block.conversions == []
    block.set("Gap", "250 ms")
    block.set("Gap", 3.0)
    assert block.get("Gap") == 3.0 and block.conversions == []


def test_a_unit_goes_by_the_choice_that_is_in_force():
    block = Block("Peaks", {"Axis": "Frequency"}, fs=100)
    block.set("Distance", "2 Hz")
    assert block.get("Distance") == 2.0
    with pytest.raises(Error, match="2000 ms"):
        block.set("Distance", "2000 ms")
    assert block.get("Distance") == 2.0
    block.set("Axis", "Time")
    block.set("Distance", "2000 ms")
    assert block.get("Distance") == 2.0


def test_more_steps_than_any_memory_holds_are_refused():
    wave = Block("FilterFunctionGenerator", {}, fs=100)
    with pytest.raises(Error, match="2305843009213693952 steps of .*; expected 1000000000000 at most"):
        wave.push(2**61)
    assert len(wave.push(10)) == 10


def test_a_number_takes_the_place_of_a_quantity():
    block = smooth()
    block.set("RelativeCutOffFreq", 0.3)
    assert block.get("RelativeCutOffFreq") == 0.3 and block.conversions == []


def test_what_a_mask_hides_is_no_number():
    gain = Block("FilterGain", {"Gain": 2})
    hidden = np.ma.masked_equal([[1, 2], [100, 3]], 100)
    assert np.array_equal(gain.push(hidden), [[2, 4], [np.nan, 6]], equal_nan=True)
    assert gain.push(np.ma.masked_array([[1.0, 2.0]])).tolist() == [[2, 4]]
    assert np.array_equal(gain.push_all(hidden)["output"][1], [[2, 4], [np.nan, 6]], equal_nan=True)
    with pytest.raises(Error, match="an array of <U1"):
        gain.push(np.ma.masked_array(["a", "b"]))


def test_axes_come_back_as_they_went_in():
    gain = Block("FilterGain", {"Gain": 2.0})
    assert gain.push(np.array([1.0, 2.0])).tolist() == [2.0, 4.0]
    assert gain.push(np.array([[1.0, 2.0]])).tolist() == [[2.0, 4.0]]
    assert gain.push(np.arange(8.0).reshape(2, 2, 2)).tolist() == (2 * np.arange(8.0).reshape(2, 2, 2)).tolist()
    assert gain.push([[1, 2], [3, 4]]).tolist() == [[2.0, 4.0], [6.0, 8.0]]
    assert gain.push(np.empty((0, 2))).shape == (0, 2)


@pytest.mark.parametrize("make", [np.asfortranarray, lambda x: x[:, ::-1][:, ::-1], lambda x: x.astype(">f8"),
                                  lambda x: x.astype(np.float32)])
def test_arrays_that_lie_otherwise_are_copied(make):
    x = np.round(noise(300), 2).astype(np.float32).astype(float)
    assert smooth().push(make(x)).tobytes() == smooth().push(x).tobytes()


def test_an_array_that_lies_well_is_not_copied_and_what_comes_out_is_the_callers_own():
    x = np.zeros((200_000, 3))
    x.flags.writeable = False
    references = sys.getrefcount(x)
    y = smooth().push(x)
    assert sys.getrefcount(x) == references
    y[:] = 1.0
    assert y.flags.owndata or y.base is not None
    assert not np.shares_memory(x, y)


def test_results_outlive_blocks():
    for rows in (1, 5, 100_000):
        block = smooth()
        y = block.push(np.ones((rows, 2)))
        again = y.copy()
        block.push(np.zeros((rows, 2)))
        del block
        gc.collect()
        assert y.tobytes() == again.tobytes()


def test_all_outputs_come_with_their_times():
    got = Block("FilterGain", {"Gain": 2.0}, fs=10.0).push_all(np.ones((3, 1)))
    (times, values), = got.values()
    assert times.tolist() == [0.0, 0.1, 0.2]
    assert values.tolist() == [[2.0], [2.0], [2.0]]


def test_times_go_on_with_the_rows_and_may_be_given():
    block = Block("FilterGain", fs=10.0)
    block.push(np.ones((3, 1)))
    assert block.push_all(np.ones((2, 1)))["output"][0].tolist() == [3 / 10.0, 4 / 10.0]
    assert block.push_all(np.ones((2, 1)), 7.0)["output"][0].tolist() == [7.0, 7.1]
    assert block.push_all(np.ones((2, 1)), [5.0, 9.0])["output"][0].tolist() == [5.0, 9.0]
    unknown = Block("FilterGain").push_all(np.ones((2, 1)))["output"][0]
    assert all(math.isnan(time) for time in unknown)


def test_other_inputs_go_in_with_their_rows():
    block = smooth()
    x = np.ones((6, 1))
    plain = block.run(x)
    reset = np.full((6, 1), np.nan)
    assert block.run_all(x, None, {"reset": reset})["out"][1].tobytes() == plain.tobytes()
    error = refusal(lambda: block.run_all(x, None, {"rest": 1.0}))
    assert error.nearest == "reset"
    assert "found 2 rows" in str(refusal(lambda: block.run_all(x, None, {"reset": [1.0, 2.0]})))


def test_refusals_say_what_was_found_and_expected():
    error = refusal(lambda: Block("FilterButerworth"))
    assert error.nearest == "FilterButterworth"
    error = refusal(lambda: smooth().set("Order", 99))
    assert (error.property, error.expected) == ("Order", "a whole number from 0 to 10")
    assert error.block == "block"
    assert len(error.complaints) == 1
    assert "without fs" in str(refusal(lambda: Block("FilterButterworth", SMOOTH)))
    assert len(refusal(lambda: Block("FilterGain", {"Gian": 1, "Giam": 2})).complaints) == 2
    assert "neither fs nor t" in str(refusal(lambda: Block("FilterFrequency").push([[1.0]])))
    assert "fs = -1" in str(refusal(lambda: Block("FilterGain", fs=-1.0)))
    for wrong in ("abc", [["a"]], None, np.zeros((2, 2, 2, 2)), 3.0, np.array([1j])):
        assert "for x" in str(refusal(lambda: smooth().push(wrong)))
    with pytest.raises(TypeError):
        smooth().push()


def test_a_setting_that_is_refused_keeps_what_it_had():
    block = smooth()
    refusal(lambda: block.set("Order", 99))
    assert block.get("Order") == 4
    assert block.fresh().get("Order") == 4


def test_commands_in_front_of_the_rows_hold_for_fresh_blocks():
    x = np.sin(np.arange(400) * 0.3)
    block = Block("FilterPeriodCounter")
    before = block.run(x)
    block.fire("Reset")
    after = block.run(x)
    assert 0 < len(after) < len(before)  # it says nothing more than when a period ends
    assert "expected a command" in str(refusal(lambda: smooth().fire("Order")))


def test_a_block_without_inputs_is_told_its_steps():
    source = Block("FilterFunctionGenerator")
    assert len(source.push(5)) == 5
    assert "number of its steps" in str(refusal(lambda: source.push(np.ones((2, 2)))))


def test_samples_of_several_shapes_come_as_a_list():
    gain = Block("FilterGain")
    assert isinstance(gain.push(np.ones((2, 3))), np.ndarray)
    class Wide(Block):
        def __init__(self):
            super().__init__("FilterGain")
            self.mine = 3
    wide = Wide()
    assert wide.push(np.ones((2, 3))).shape == (2, 3) and wide.mine == 3


def test_a_derived_class_without_a_block_says_so():
    class Empty(Block):
        def __init__(self):
            pass
    with pytest.raises(TypeError):
        Empty().push(np.ones((1, 1)))


def test_threads_have_blocks_of_their_own_and_one_gets_in_at_a_time():
    x = noise(200_000)
    wanted = smooth().push(x).tobytes()
    shared, results, refused = smooth(), [], []

    def work():
        results.append(smooth().push(x).tobytes() == wanted)
        try:
            shared.push(x)
        except Error as error:
            refused.append(str(error))

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [True] * 4
    assert all("one thread at a time" in text for text in refused)


def test_every_type_can_be_described_and_made():
    assert len(_native.block_types()) == 45
    for type in _native.block_types():
        told = _native.describe(type)
        block = Block(type, fs=100.0)
        assert [pin["name"] for pin in told["inputs"]] == block.inputs
        assert {state["name"] for state in block.properties()} >= {s["name"] for s in told["properties"]}
        for state in block.properties():
            if state["kind"] != "command":
                np.testing.assert_equal(state["value"], state["default"])


def test_responses():
    response = smooth().response(points=10)
    assert response["frequency"].tolist() == pytest.approx(np.linspace(0, 1, 11))
    assert abs(response["sine"][1]) == pytest.approx(math.sqrt(0.5), rel=1e-6)
    assert "<svg" in smooth().response_svg("smooth", points=10)
