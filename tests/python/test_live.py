# SPDX-License-Identifier: MIT
"""Runs that are turned, fed and watched while they go on."""

import gc
import os
import threading

import numpy as np
import pandas as pd
import pytest
import velmarind

PATIENCE = 20  # seconds for what takes milliseconds on a machine that has nothing else to do


def graph():
    made = velmarind.Graph("live")
    made.add("wrist", "MemorySource")
    made.add("scale", "FilterGain", Gain=2)
    made.add("out", "MemorySink")
    made.connect("wrist.accel", "scale.input")
    made.connect("scale.output", "out.accel")
    return made


def start(**options):
    return graph().start(feeds={"wrist": {"accel": 3}}, rates={"wrist": 100}, **options)


def test_what_is_fed_comes_out(wrist):
    with start() as run:
        run.feed("wrist", wrist[:400])
        run.feed("wrist", pd.DataFrame(wrist[400:], index=np.arange(400, 1000) / 100))
        run.end_feed("wrist")
        parts = [rows for sink, rows in run if sink == "out"]
    together = pd.concat(parts)
    assert np.array_equal(together.to_numpy(), 2 * wrist) and together.index[-1] == 9.99
    assert run.state == "ended"


def test_settings_turn_while_it_runs(wrist):
    told = []
    changed = threading.Event()

    def note(state):
        told.append((state["name"], state["value"]))
        changed.set()

    with start() as run:
        watch = run.observe("scale.*", note)
        assert run["scale.Gain"] == 2
        run["scale.Gain"] = 5
        assert run["scale.Gain"] == 5 and changed.wait(PATIENCE)
        watch.close()
        run["scale.Gain"] = 6
        assert [each["name"] for each in run.settings("scale.*")] == ["scale.Gain"]
        with pytest.raises(velmarind.Error, match="Gain"):
            run["scale.Gian"] = 4
        run.feed("wrist", wrist)
        run.end_feed("wrist")
        assert run.wait(PATIENCE)
        result = run.result()
    assert told == [("scale.Gain", 5.0)]
    assert np.array_equal(result["out"].to_numpy(), 6 * wrist) and result.state == "whole"


def test_a_run_over_data_ends_by_itself(wrist):
    with graph().start(wrist, fs=100, speed=float("inf")) as run:
        assert run.wait(PATIENCE)
        assert len(run.read("out")) == len(run.take("out")) == 1000 and len(run.take("out")) == 0
        assert "wrist.accel" in run.statistics() and run.sinks == ["out"]


def test_an_exception_inside_interrupts_it(wrist):
    with pytest.raises(ZeroDivisionError):
        with start() as run:
            run.feed("wrist", wrist[:10])
            1 / 0
    assert run.state in ("ended", "failed")
    with pytest.raises(velmarind.Error, match="ZeroDivisionError"):
        run.result()


def test_a_run_that_fails_is_told(tmp_path):
    (tmp_path / "bad.csv").write_text("t,ax\n0,1\n0.01,oops\n")
    made = velmarind.Graph("bad")
    made.add("wrist", "RecordingSource", file=str(tmp_path / "bad.csv"), time="t", pins={"accel": ["ax"]})
    made.add("out", "MemorySink")
    made.connect("wrist.accel", "out.accel")
    with pytest.raises(velmarind.Error, match="oops") as caught:
        with made.start(speed=float("inf")) as run:
            run.wait(PATIENCE)
    assert caught.value.result.state == "failed"
    with start() as run:
        run.interrupt("enough")
    with pytest.raises(velmarind.Error, match="enough"):
        run.result()


def test_a_forked_child_leaves_the_run_alone(wrist):
    frame = pd.DataFrame(wrist, index=pd.Index(np.arange(1000) / 100, name="t"), columns=["x", "y", "z"])
    made = velmarind.Graph("files")
    made.add("wrist", "RecordingSource", file="nowhere.csv", time="t", pins={"accel": ["x", "y", "z"]})
    made.add("out", "MemorySink")
    made.connect("wrist.accel", "out.accel")
    with made.start(frame, speed=float("inf")) as run:
        child = os.fork()
        if child == 0:
            run.__exit__(None, None, None)
            os._exit(0)
        assert os.waitpid(child, 0)[1] == 0
        assert run.wait(PATIENCE)
        assert len(run.take("out")) == 1000


def test_what_cant_be_called_is_refused():
    with start() as run:
        with pytest.raises(velmarind.Error, match="expected what can be called"):
            run.observe("scale.*", 3)
        with pytest.raises(velmarind.Error) as caught:
            run["scale.Gain"] = "much"
        assert (caught.value.block, caught.value.property) == ("scale", "Gain")


def test_leaving_ends_it_in_order(wrist):
    with start() as run:
        run.feed("wrist", wrist[:10])
    assert run.state == "ended" and "LiveRun: ended" in repr(run)


def test_observers_and_garbage(wrist):
    """Callbacks while the collector runs, and settings that several threads turn."""
    count = 0

    def note(state):
        nonlocal count
        count += 1
        gc.collect()

    with start() as run:
        run.observe("*", note)

        def turn(first):
            for number in range(50):
                run["scale.Gain"] = float(first + number)
                run.feed("wrist", wrist[number : number + 1])

        threads = [threading.Thread(target=turn, args=(begin,)) for begin in (100, 200, 300)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(PATIENCE)
        run.end_feed("wrist")
        assert sum(len(rows) for _, rows in run) == 150
    assert count > 0


def test_rows_of_the_wrong_shape_are_refused(wrist):
    with start() as run:
        with pytest.raises(velmarind.Error):
            run.feed("wrist", np.zeros((5, 2)))
        with pytest.raises(velmarind.Error, match="transposition"):
            run.feed("wrist", wrist.T)
        with pytest.raises(velmarind.Error):
            run.feed("nobody", wrist)
        with pytest.raises(velmarind.Error) as caught:
            run.feed("nobody", wrist)
        assert caught.value.block == "nobody"


def test_dates_of_all_pieces_count_from_the_first():
    index = pd.date_range("2026-05-01 10:00", periods=6, freq="10ms")
    table = pd.DataFrame({"x": np.arange(6.0)}, index=index)
    graph = velmarind.Graph("pieces")
    graph.add("wrist", "MemorySource")
    graph.add("out", "MemorySink")
    graph.connect("wrist.x", "out.x")
    with graph.start(feeds={"wrist": {"x": 1}}) as run:
        run.feed("wrist", table.iloc[:3])
        run.feed("wrist", table.iloc[3:])
        run.end_feed("wrist")
        run.wait()
        assert run.read("out").index.tolist() == [0.0, 0.01, 0.02, 0.03, 0.04, 0.05]
