# SPDX-License-Identifier: MIT
"""Graphs, recordings and live runs of the extension."""

import os
import subprocess
import sys
import textwrap
import threading
import time

import numpy as np
import pytest

from velmarind import _native
from velmarind._native import Error, Graph


def doubled() -> Graph:
    graph = Graph("doubled")
    graph.add("in", "MemorySource")
    graph.add("gain", "FilterGain", {"Gain": 2.0})
    graph.add("out", "RecordingSink", {"file": "never.csv", "columns": {"a": ["x", "y"]}})
    graph.connect("in.a", "gain.input")
    graph.connect("gain.output", "out.a")
    return graph


def rows(count: int = 50) -> dict:
    return {"in": {"pins": {"a": np.arange(2.0 * count).reshape(count, 2)}, "fs": 10.0}}


def refusal(action) -> Error:
    with pytest.raises(Error) as raised:
        action()
    return raised.value


def test_a_graph_runs_from_memory_to_memory(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    told = []
    result = doubled().run(rows(), progress=told.append)
    table = result["tables"]["out"]
    assert result["outcome"]["state"] == "whole"
    assert table["columns"] == ["x", "y"] and table["pins"] == ["a", "a"] and table["time_name"] == "t"
    assert table["time"].tolist() == [i / 10.0 for i in range(50)]
    assert table["values"].tobytes() == (2.0 * rows()["in"]["pins"]["a"]).tobytes()
    assert told[-1]["rows"] == 50
    assert not os.listdir(tmp_path)


def test_without_keep_results_are_files(tmp_path):
    graph = doubled().changed(outputs={"out": str(tmp_path / "r.csv")}, set={"gain.Gain": 3})
    result = graph.run(rows(2), keep=False)
    assert result["tables"] == {}
    assert (tmp_path / "r.csv").read_text() == "t,x,y\n0,0,3\n0.1,6,9\n"


def test_what_is_wrong_comes_at_once_with_its_parts():
    graph = doubled()
    graph.add("more", "FilterGian")
    graph.connect("gain.outputt", "more.input")
    error = refusal(lambda: graph.run(rows()))
    assert {c["nearest"] for c in error.complaints} >= {"FilterGain", "output"}
    told = graph.check(rows())
    assert told["ready"] is False and len(told["complaints"]) == len(error.complaints)
    assert doubled().check(rows(), keep=True)["ready"] is True
    assert "the source 'on'" in str(refusal(lambda: doubled().run({"on": rows()["in"]})))
    assert "no samples in memory" in str(refusal(lambda: doubled().run()))


def test_descriptions():
    graph = doubled()
    graph.at(1.0, set={"gain.Gain": 0.5})
    again = Graph.from_text(graph.text())
    assert again == graph and again != doubled() and graph.copy() == graph
    told = graph.describe()
    assert told["connections"][0] == {"sender": "in.a", "receiver": "gain.input"}
    assert told["blocks"][1]["settings"] == {"Gain": "2"}
    assert told["sources"] == ["in"] and told["sinks"] == ["out"]
    values = graph.run(rows(20))["tables"]["out"]["values"]
    assert values[5].tolist() == [20.0, 22.0] and values[15].tolist() == [15.0, 15.5]
    assert refusal(lambda: graph.changed(set={"gian.Gain": 1})).nearest == "gain"
    assert "[b].csv" in graph.changed(outputs={"out": "[b].csv"}).text()


def test_what_progress_raises_ends_the_run():
    class Enough(Exception):
        pass

    def stop(_):
        raise Enough

    long = {"in": {"pins": {"a": np.zeros((3_000_000, 2))}, "fs": 10.0}}
    with pytest.raises(Enough):
        doubled().run(long, progress=stop)


def test_a_recording_is_written_and_read(tmp_path):
    path = str(tmp_path / "walk.csv")
    values = np.array([[1.0, 0.1], [np.nan, 0.2], [3.0, 1 / 3]])
    _native.write(path, [0.0, 0.01, 0.02], values, ["ax", "force"], units=["g", ""])
    assert open(path).readline() == "t,ax [g],force\n"
    reading = _native.read(path)
    table = reading["table"]
    np.testing.assert_array_equal(table["values"], values)
    assert table["columns"] == ["ax [g]", "force"] and table["units"] == ["g", ""]
    assert reading["rate"] == 100.0 and reading["source"]["rows"] == 3
    assert _native.read(path, columns=["force"])["table"]["values"].tolist() == [[0.1], [0.2], [1 / 3]]
    assert _native.inspect(path)["rows"] == 3
    again = str(tmp_path / "again.csv")
    _native.write(again, table["time"], table["values"], table["columns"], units=table["units"])
    assert open(again).read() == open(path).read()
    with pytest.raises(Error, match="walk2"):
        _native.read(str(tmp_path / "walk2.csv"))
    assert "exp" in str(refusal(lambda: _native.read(path, {"onBadRw": "skip"})))


def test_nothing_of_somebody_elses_is_written_over(tmp_path):
    path = tmp_path / "mine.csv"
    path.write_text("dear diary\n")
    with pytest.raises(Error):
        _native.write(str(path), [0.0], [[1.0]], ["a"])
    assert path.read_text() == "dear diary\n"
    _native.write(str(path), [0.0], [[1.0]], ["a"], overwrite=True)
    assert path.read_text() == "t,a\n0,1\n"


def fed(speed: float = float("inf")):
    return doubled().start(feeds={"in": {"a": 2}}, rates={"in": 10.0}, speed=speed)


def test_rows_are_fed_to_a_live_run_and_taken_out():
    run = fed()
    run.feed("in", [[1.0, 2.0], [3.0, 4.0]])
    assert run.wait_rows("out", 10.0)
    got = run.take("out")
    while len(got["time"]) < 2:
        run.wait_rows("out", 10.0)
        more = run.take("out")
        got = {"time": np.append(got["time"], more["time"]), "values": np.vstack([got["values"], more["values"]])}
    assert got["time"].tolist() == [0.0, 0.1] and got["values"].tolist() == [[2.0, 4.0], [6.0, 8.0]]
    assert not run.wait_rows("out", 0.01)
    run.set("gain.Gain", 5)
    assert run.get("gain.Gain") == 5.0
    run.feed("in", [[1.0, 1.0]], t=7.0)
    run.end_feed("in")
    assert run.wait(20.0)
    assert run.state == "ended" and run.outcome()["state"] == "whole"
    assert run.read("out")["values"].tolist() == [[5.0, 5.0]] and run.read("out")["time"].tolist() == [7.0]
    assert "takes no more" in str(refusal(lambda: run.feed("in", [[1.0, 1.0]])))


def test_rows_without_times_follow_those_with_times():
    run = fed()
    run.feed("in", np.ones((2, 2)))
    run.feed("in", np.ones((2, 2)), t=7.0)
    run.feed("in", np.ones((1, 2)))
    run.feed("in", np.ones((2, 2)), t=[20.0, 20.5])
    run.feed("in", np.ones((2, 2)))
    run.end_feed("in")
    assert run.wait(20.0)
    assert run.read("out")["time"].tolist() == [0.0, 0.1, 7.0, 7.1, 7.2, 20.0, 20.5, 20.6, 20.7]


def test_what_was_fed_comes_out_before_a_run_is_stopped():
    run = fed()
    run.feed("in", np.ones((5000, 2)))
    assert run.stop(60.0)
    assert len(run.read("out")["time"]) == 5000


def test_a_live_run_refuses_by_name():
    run = fed()
    assert refusal(lambda: run.get("gain.Gian")).nearest
    assert "3 columns" in str(refusal(lambda: run.feed("in", [[1.0, 2.0, 3.0]])))
    assert refusal(lambda: run.take("uot")).nearest == "out"
    assert "goes on" in str(refusal(run.outcome))
    assert "can't be called" in str(refusal(lambda: run.observe("*", 3)))
    assert {state["name"] for state in run.list("gain.*")} == {"gain.Gain"}
    assert run.stop(20.0)


def test_observers_may_do_what_they_like():
    run = fed()
    heard, done = [], threading.Event()

    def tell(state):
        heard.append(state["value"])
        run.get("gain.Gain")  # which takes the gate under which the change was made
        if state["value"] < 20:
            run.set("gain.Gain", state["value"] + 1)
        else:
            done.set()

    watch = run.observe("gain.*", tell)
    run.set("gain.Gain", 3.0)
    assert done.wait(20.0)
    assert heard == [float(i) for i in range(3, 21)] and watch.missed == 0
    watch.close()
    run.set("gain.Gain", 1.0)
    assert run.stop(20.0)
    assert heard[-1] == 20.0


def run_apart(script: str, timeout: float = 60.0) -> subprocess.CompletedProcess:
    """In an interpreter of its own, since it ends with it."""
    begin = """
        import gc, os, sys, threading, time
        import numpy as np
        from velmarind._native import Error, Graph
        def start():
            graph = Graph("live")
            graph.add("in", "MemorySource")
            graph.add("gain", "FilterGain")
            graph.add("out", "RecordingSink", {"file": "never.csv"})
            graph.connect("in.a", "gain.input")
            graph.connect("gain.output", "out.a")
            return graph.start(feeds={"in": {"a": 1}}, rates={"in": 1000.0})
    """
    text = textwrap.dedent(begin) + textwrap.dedent(script)
    return subprocess.run([sys.executable, "-c", text], capture_output=True, text=True, timeout=timeout)


def expect_clean(script: str) -> str:
    done = run_apart(script)
    assert (done.returncode, done.stderr) == (0, ""), done
    return done.stdout


def test_the_interpreter_exits_while_a_run_lives():
    assert expect_clean("""
        run = start()
        heard = []
        watch = run.observe("*", lambda state: heard.append(state))
        run.feed("in", np.ones((1000, 1)))
        run.set("gain.Gain", 2)
        print("over")
    """) == "over\n"


def test_the_interpreter_exits_while_callbacks_are_called():
    expect_clean("""
        run = start()
        def again(state):
            run.set("gain.Gain", (state["value"] + 1) % 7)
        run.observe("gain.*", again)
        run.set("gain.Gain", 3)
        time.sleep(0.2)
    """)


def test_the_interpreter_exits_while_another_thread_is_at_work():
    expect_clean("""
        from velmarind._native import Block
        def work():
            block = Block("FilterGain")
            while True:
                block.push(np.ones((100_000, 3)))
        threading.Thread(target=work, daemon=True).start()
        time.sleep(0.2)
    """)


def test_garbage_is_collected_while_threads_call_back():
    expect_clean("""
        def observe(run):
            run.observe("*", lambda state: [object() for _ in range(10)])
        runs = [start() for _ in range(3)]
        for run in runs:
            observe(run)
        stop = threading.Event()
        def write(run):
            value = 0
            while not stop.is_set():
                value = (value + 1) % 100
                run.set("gain.Gain", value)
        threads = [threading.Thread(target=write, args=(run,)) for run in runs]
        for thread in threads: thread.start()
        until = time.monotonic() + 0.5
        while time.monotonic() < until:
            cycle = [start()]
            cycle.append(cycle)
            del cycle
            gc.collect()
        stop.set()
        for thread in threads: thread.join()
        for run in runs: assert run.stop(20.0)
    """)


def test_a_forked_child_is_refused_the_run_and_may_do_all_else():
    assert expect_clean("""
        import warnings
        warnings.simplefilter("ignore")
        from velmarind._native import Block
        run = start()
        run.observe("*", lambda state: None)
        run.feed("in", np.ones((10, 1)))
        child = os.fork()
        if child == 0:
            try:
                run.set("gain.Gain", 3)
            except Error as error:
                assert "forked" in str(error), error
                assert Block("FilterGain").push(np.ones((3, 1))).shape == (3, 1)
                other = start()
                assert other.stop(20.0)
                print("child", flush=True)
                sys.exit(0)
            sys.exit(1)
        assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
        assert run.stop(20.0)
        print("parent")
    """) == "child\nparent\n"


def test_who_interrupts_a_run_gets_it_ended_in_order():
    script = """
        import signal
        graph = Graph("endless")
        graph.add("noise", "FilterFunctionGenerator")
        graph.add("out", "RecordingSink", {"file": "x"})
        graph.connect("noise.out", "out.a")
        threading.Timer(0.3, lambda: os.kill(os.getpid(), signal.SIGINT)).start()
        try:
            graph.run(rounds=10**12)
        except KeyboardInterrupt:
            print("interrupted")
    """
    assert expect_clean(script) == "interrupted\n"


def test_a_run_may_go_away_in_its_own_callback():
    expect_clean("""
        done = threading.Event()
        def begin():
            run = start()
            def tell(state, run=[run]):
                run[0].get("gain.Gain")
                run.clear()
                done.set()
            run.observe("*", tell)
            run.set("gain.Gain", 2)
        begin()
        assert done.wait(20.0)
        time.sleep(0.1)
    """)


def test_a_pipe_that_nobody_writes_can_be_given_up(tmp_path):
    pipe = str(tmp_path / "pipe")
    os.mkfifo(pipe)
    assert expect_clean(f"""
        import signal
        graph = Graph("waiting")
        graph.add("in", "RecordingSource", {{"file": {pipe!r}, "rate": 10, "pins": {{"a": ["x"]}}}})
        graph.add("out", "RecordingSink", {{"file": "x"}})
        graph.connect("in.a", "out.a")
        threading.Timer(0.3, lambda: os.kill(os.getpid(), signal.SIGINT)).start()
        try:
            graph.run()
        except KeyboardInterrupt:
            print("given up")
    """) == "given up\n"


def waiting_for(pipe) -> Graph:
    os.mkfifo(pipe)
    graph = Graph("waiting")
    graph.add("in", "RecordingSource", {"file": str(pipe), "rate": 10, "pins": {"a": ["x"]}})
    graph.add("out", "MemorySink")
    graph.connect("in.a", "out.a")
    return graph


@pytest.mark.parametrize("begin", [Graph.run, lambda graph: graph.check(mode="offline"), Graph.start])
def test_others_go_on_while_a_pipe_is_waited_for(tmp_path, begin):
    """Who writes it may need blocks first."""
    graph = waiting_for(tmp_path / "pipe")
    waiting = threading.Thread(target=begin, args=[graph])
    waiting.start()
    made = threading.Event()

    def make():
        time.sleep(0.2)  # the other one waits by then, in all likelihood
        _native.Block("FilterGain", {"Gain": 2})
        doubled().run(rows())
        made.set()

    other = threading.Thread(target=make)
    other.start()
    was_in_time = made.wait(30.0)
    (tmp_path / "pipe").write_text("x\n1\n2\n")
    waiting.join()
    other.join()
    assert was_in_time


@pytest.mark.parametrize("seconds", ["float('inf')", "1e300"])
def test_a_wait_for_ever_hears_who_interrupts(seconds):
    assert expect_clean(f"""
        import signal
        run = start()
        threading.Timer(0.3, lambda: os.kill(os.getpid(), signal.SIGINT)).start()
        try:
            run.wait({seconds})
        except KeyboardInterrupt:
            print("interrupted")
        run.stop()
    """) == "interrupted\n"


def test_lists_that_hold_themselves_are_refused():
    assert expect_clean("""
        from velmarind._native import Block
        items = []
        items.append(items)
        for held in (items, {"in": items}):
            try:
                Block("FilterGain", {"Gain": held})
            except RecursionError:
                print("refused")
    """) == "refused\nrefused\n"


def test_runs_of_several_threads_stand_beside_each_other():
    wanted = doubled().run(rows(20_000))["tables"]["out"]["values"].tobytes()
    got = []
    threads = [threading.Thread(target=lambda: got.append(doubled().run(rows(20_000))["tables"]["out"]["values"]))
               for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert [values.tobytes() for values in got] == [wanted] * 4
