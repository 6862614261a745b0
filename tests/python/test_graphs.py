# SPDX-License-Identifier: MIT
"""Graphs from files and in code, run to their end."""

import copy
import os
import pickle
import signal
import threading

import numpy as np
import pandas as pd
import pytest
import velmarind

CALM = """
format: 1
name: calm
parameters: {cutoff: 5 Hz}
blocks:
  - {id: wrist, type: RecordingSource, properties: {file: wrist.csv, time: t, pins: {accel: [ax, ay, az]}}}
  - {id: smooth, type: FilterButterworth, properties: {Order: 2, RelativeCutOffFreq: "${cutoff}"}}
  - {id: result, type: RecordingSink, properties: {file: calm.csv}}
connections:
  - {from: wrist.accel, to: smooth.in}
  - {from: smooth.out, to: result.accel}
"""


@pytest.fixture
def calm(tmp_path):
    return velmarind.Graph.from_text(CALM, str(tmp_path / "calm.yaml"))


@pytest.fixture
def frame(wrist):
    return pd.DataFrame(wrist, index=pd.Index(np.arange(1000) / 100, name="t"), columns=["ax", "ay", "az"])


def in_code():
    graph = velmarind.Graph("calm")
    graph.add("wrist", "MemorySource")
    graph.add("smooth", "FilterButterworth", Order=2, RelativeCutOffFreq="5 Hz")
    graph.add("result", "MemorySink")
    graph.connect("wrist.accel", "smooth.in")
    graph.connect("smooth.out", "result.accel")
    return graph


def test_a_table_goes_through_a_graph_of_files(calm, frame, tmp_path):
    want = velmarind.lowpass(frame.to_numpy(), cutoff=5, fs=100, order=2)
    result = calm.run(frame)
    assert result.state == "whole" and list(result) == ["result"] and not list(tmp_path.iterdir())
    assert np.array_equal(result["result"].to_numpy(), want)
    assert list(result["result"].columns) == ["accel[0]", "accel[1]", "accel[2]"]
    assert result["result"].index[1] == 0.01
    assert "5 Hz is 0.1 of half the rate" in result.conversions[0] and result.losses == []
    assert result.repairs["wrist"]["repairs"]["skippedRows"] == 0
    assert len(result.plot().lines) == 3 and "1000 rows" in repr(result)


def test_a_file_goes_through_a_graph(calm, frame, tmp_path):
    velmarind.write(tmp_path / "mine.csv", frame)
    from_file = calm.run(tmp_path / "mine.csv", outputs={"result": tmp_path / "out.csv"})
    assert list(from_file) == [] and from_file.outcome["sinks"][0]["complete"]
    back = velmarind.read(tmp_path / "out.csv", time="t")
    assert np.array_equal(back.to_numpy(), calm.run(frame)["result"].to_numpy())


def test_a_table_isnt_read_as_the_sources_own_file(frame, tmp_path):
    text = CALM.replace("time: t,", "time: 'stamp [us]', timeUnit: ms, separator: semicolon, decimal: comma, skipLines: 3,")
    graph = velmarind.Graph.from_text(text, str(tmp_path / "calm.yaml"))
    result = graph.run(frame)["result"]
    assert result.index[1] == 0.01
    assert np.array_equal(result.to_numpy(), velmarind.lowpass(frame.to_numpy(), cutoff=5, fs=100, order=2))
    counted = velmarind.Graph.from_text(CALM.replace("time: t,", "rate: 50,"), str(tmp_path / "calm.yaml"))
    assert counted.run(frame)["result"].index[1] == 0.01
    with pytest.raises(velmarind.Error, match="100 rows a second; expected 50"):
        graph.run(frame, fs=50)
    with pytest.raises(velmarind.Error, match="100 rows a second; expected 50"):
        in_code().run(frame, fs=50)


def test_graphs_can_be_copied_and_sent(calm):
    assert copy.copy(calm) == calm and pickle.loads(pickle.dumps(calm)) == calm
    assert pickle.loads(pickle.dumps(calm)).path == calm.path


def test_arrays_go_through_a_graph_in_code(wrist):
    want = velmarind.lowpass(wrist, cutoff=5, fs=100, order=2)
    for data in (wrist, {"wrist": wrist}, {"wrist": {"accel": wrist, "fs": 100}}, {"accel": wrist}):
        assert np.array_equal(in_code().run(data, fs=100)["result"].to_numpy(), want)
    timed = {"wrist": {"accel": wrist, "t": np.arange(1000) / 100}}
    assert np.array_equal(in_code().run(timed)["result"].to_numpy(), want)
    with pytest.raises(velmarind.Error, match="fs"):
        in_code().run(wrist)
    with pytest.raises(velmarind.Error, match="did you mean accel"):
        in_code().run({"wrist": {"acel": wrist}}, fs=100)
    with pytest.raises(velmarind.Error, match="did you mean wrist"):
        in_code().run({"wirst": wrist}, fs=100)


def test_settings_and_parameters_of_one_run(calm, frame):
    result = calm.run(frame, set={"smooth.Order": 4}, params={"cutoff": "2 Hz"})
    assert np.array_equal(result["result"], velmarind.lowpass(frame.to_numpy(), cutoff=2, fs=100, order=4))
    assert calm == velmarind.Graph.from_text(CALM, calm.path)


def test_complaints_are_objects(calm, frame):
    broken = velmarind.Graph.from_text(CALM.replace("Order", "Ordr"), calm.path)
    found = broken.check(frame)
    assert [(each.severity, each.line, each.nearest) for each in found] == [("error", 7, "Order")]
    assert str(found[0]) == found[0].sentence and "did you mean Order?" in found[0].sentence
    assert calm.check(frame) == []
    with pytest.raises(velmarind.Error) as caught:
        broken.run(frame)
    error = caught.value
    assert error.line == 7 and error.nearest == "Order" and len(error.complaints) == 1
    again = pickle.loads(pickle.dumps(error))
    assert str(again) == str(error) and again.nearest == "Order"


def test_a_broken_file_says_what_is_wrong_with_it(tmp_path, frame):
    (tmp_path / "broken.yaml").write_text("format: 1\nblocks:\n  - {id: a, type: FilterGian}\n")
    with pytest.raises(velmarind.Error, match="FilterGain") as caught:
        velmarind.Graph.load(tmp_path / "broken.yaml").run(frame)
    assert caught.value.line == 3 and caught.value.nearest == "FilterGain"


def test_a_run_that_fails_midway_raises_with_what_it_had(calm, frame, tmp_path):
    text = "t,ax,ay,az\n" + "".join(f"{k / 100},1,2,3\n" for k in range(6000)) + "60,oops,2,3\n"
    (tmp_path / "bad.csv").write_text(text)
    with pytest.raises(velmarind.Error, match="oops") as caught:
        calm.run(tmp_path / "bad.csv")
    assert caught.value.result.state == "failed" and len(caught.value.result["result"]) > 5000


def test_doubts_are_warnings(calm, frame):
    doubtful = frame.copy()
    doubtful.iloc[500, 0] = np.inf
    with pytest.warns(velmarind.DataWarning, match="finite"):
        calm.run(doubtful)
    with pytest.warns(velmarind.DataWarning), pytest.raises(velmarind.Error):
        calm.run(doubtful, strict=True)


def test_progress_may_end_a_run(calm, wrist, tmp_path):
    velmarind.write(tmp_path / "long.csv", np.zeros((300000, 3)), fs=100, columns=["ax", "ay", "az"])

    def enough(progress):
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        calm.run(tmp_path / "long.csv", progress=enough)
    calm.run(tmp_path / "long.csv", progress=True)


def test_reports(calm, frame, tmp_path):
    calm.run(frame, report=tmp_path / "run.html")
    assert "<html" in (tmp_path / "run.html").read_text()[:500].lower()


def test_timelines_and_files(tmp_path, wrist):
    graph = in_code()
    graph.at(5, set={"smooth.Order": 1})
    turned = graph.run(wrist, fs=100)["result"].to_numpy()
    still = in_code().run(wrist, fs=100)["result"].to_numpy()
    assert np.array_equal(turned[:500], still[:500]) and not np.array_equal(turned[500:], still[500:])
    graph.save(tmp_path / "mine.yaml")
    assert velmarind.Graph.load(tmp_path / "mine.yaml") == graph
    with pytest.raises(FileExistsError):
        graph.save(tmp_path / "mine.yaml")


def test_graphs_show_themselves(calm):
    assert repr(calm).splitlines()[0] == "Graph calm: 3 blocks" and "wrist.accel -> smooth.in" in repr(calm)
    svg = calm._repr_svg_()
    assert svg.count("<rect") == 3 and svg.count("<path") == 2 and "FilterButterworth" in svg
    loop = velmarind.Graph("a <loop>")
    loop.add("a", "FilterGain")
    loop.add("b", "FilterGain")
    loop.connect("a", "b")
    loop.connect("b", "a")
    assert loop._repr_svg_().count("<path") == 2 and "a &lt;loop&gt;" in loop._repr_svg_()


@pytest.mark.parametrize("name", ["tremor", "tremor-real", "flags", "vectors", "events", "calm-wrist", "live-wrist"])
def test_graphs_of_the_examples_are_drawn(name):
    graph = velmarind.Graph.load(f"examples/{name}.yaml")
    assert graph._repr_svg_().count("<rect") == len(graph.text.split("type:")) - 1


def test_control_c_ends_a_run_in_order(tmp_path):
    graph = velmarind.Graph("endless")
    graph.add("clock", "FilterFunctionGenerator", Mode="sinusoid", SignalPeriod=10, SampleRate=1)
    graph.add("result", "RecordingSink", file=str(tmp_path / "out.csv"))
    graph.connect("clock", "result.x")
    timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    with pytest.raises(KeyboardInterrupt):
        graph.run(rounds=10**12, keep=False)
    timer.join()
    assert [path.name for path in tmp_path.iterdir()] == ["out.csv.partial"]
    assert (tmp_path / "out.csv.partial").read_text().startswith("t,x[0]\n")


def test_warnings_name_the_callers_line(calm, frame):
    doubtful = frame.copy()
    doubtful.iloc[500, 0] = np.inf
    with pytest.warns(velmarind.DataWarning) as caught:
        calm.run(doubtful)
    assert {warning.filename for warning in caught} == {__file__}
    with pytest.warns(velmarind.DataWarning) as caught:
        velmarind.block("FilterFFT")
    assert caught[0].filename == __file__


def test_rows_without_numbers_come_to_a_source_of_files():
    graph = velmarind.Graph("missing")
    graph.add("in", "RecordingSource", file="nowhere.csv", time="t", pins={"x": ["x"], "y": ["y"]})
    graph.add("out", "MemorySink")
    graph.connect("in.x", "out.x")
    graph.connect("in.y", "out.y")
    index = pd.Index([0.0, 0.01, 0.02])
    table = pd.DataFrame({"x": [1.0, np.nan, 3.0], "y": [np.nan, np.nan, 6.0]}, index=index)
    found = graph.run(table)["out"]
    assert np.array_equal(found.to_numpy(), table.to_numpy(), equal_nan=True)


def test_a_graph_of_a_file_is_itself_in_another_folder(tmp_path, monkeypatch):
    (tmp_path / "in.csv").write_text("t,x\n0,1\n1,2\n")
    (tmp_path / "g.yaml").write_text("""format: 1
blocks:
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}
  - {id: out, type: MemorySink}
connections:
  - {from: in.x, to: out.x}
""")
    monkeypatch.chdir(tmp_path)
    graph = velmarind.Graph.load("g.yaml")
    monkeypatch.chdir("/")
    assert len(pickle.loads(pickle.dumps(graph)).run()["out"]) == 2
    assert len(graph.run()["out"]) == 2
