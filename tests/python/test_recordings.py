# SPDX-License-Identifier: MIT
"""Recordings as tables, and tables as recordings."""

import numpy as np
import pandas as pd
import pytest
import velmarind

HAND = "examples/recordings/rest-tremor.csv"


def test_a_recording_is_a_table():
    hand = velmarind.read(HAND)
    want = pd.read_csv(HAND).set_index("timestamp")
    assert hand.index.name == "timestamp" and hand.attrs["rate"] == 92.7743
    assert np.array_equal(hand.index, want.index) and list(hand.columns) == list(want.columns)
    assert np.array_equal(hand.to_numpy(), want.to_numpy())
    assert hand.attrs["source"]["file"] == HAND and hand.attrs["source"]["form"]
    assert hand.attrs["repairs"]["repairs"]["skippedRows"] == 0
    few = velmarind.read(HAND, columns=["gy", "gx"])
    assert list(few.columns) == ["gy", "gx"]


def test_units_and_repairs(tmp_path):
    path = tmp_path / "walk.csv"
    path.write_text("t,acc [g]\n0,1\n0.01,2\n0.01,3\n0.02,4\n0.03,NA\n")
    with pytest.warns(velmarind.DataWarning):
        walk = velmarind.read(path, time="t", duplicates="drop", missing=["NA"])
    assert walk.attrs["units"] == {walk.columns[0]: "g"}
    assert walk.iloc[:3, 0].tolist() == [1, 2, 4] and np.isnan(walk.iloc[3, 0])
    assert walk.attrs["repairs"]["timeRepairs"]["repeated"]["count"] == 1


def test_dates(tmp_path):
    path = tmp_path / "back.csv"
    path.write_text("time,x\n" + "".join(f"2019-08-06 10:25:{50 + k // 50:02d}.{k % 50 * 20:03d},{k}\n" for k in range(120)))
    back = velmarind.read(path, dates=True)
    assert back.index[1] == pd.Timestamp("2019-08-06 10:25:50.02")
    assert velmarind.read(path).index[1] == pytest.approx(0.02)
    with pytest.raises(velmarind.Error, match="count from no date"):
        velmarind.read(HAND, dates=True)


def test_what_cant_be_read_says_why(tmp_path):
    with pytest.raises(velmarind.Error, match="nowhere.csv"):
        velmarind.read(tmp_path / "nowhere.csv")
    bad = tmp_path / "bad.csv"
    bad.write_text("t,x\n0,1\n0.01,one\n0.02,3\n")
    with pytest.raises(velmarind.Error, match='found "one"; expected a number') as caught:
        velmarind.read(bad, time="t", columns=["x"])
    assert "bad.csv" in str(caught.value)


def test_written_numbers_come_back_to_the_bit(tmp_path, rng):
    frame = pd.DataFrame(rng.normal(size=(50, 2)), index=pd.Index(np.arange(50) / 64, name="time"), columns=["a", "b"])
    frame.attrs["units"] = {"a": "g"}
    velmarind.write(tmp_path / "x.csv", frame)
    back = velmarind.read(tmp_path / "x.csv", time="time")
    assert back.to_numpy().tobytes() == frame.to_numpy().tobytes() and back.index.equals(frame.index)
    assert list(back.attrs["units"].values()) == ["g"]
    other = tmp_path / "mine.csv"
    other.write_text("mine")
    with pytest.raises(velmarind.Error, match="mine.csv"):
        velmarind.write(other, frame)
    assert other.read_text() == "mine"
    velmarind.write(other, frame, overwrite=True)
    with pytest.raises(velmarind.Error, match="transposition"):
        velmarind.write(tmp_path / "y.csv", np.zeros((3, 500)), fs=100)
    with pytest.raises(velmarind.Error, match="say fs=100"):
        velmarind.write(tmp_path / "y.csv", np.zeros((3, 1)))


def test_an_account_of_a_recording():
    found = velmarind.inspect(HAND)
    assert found["rows"] == 862 and found["times"]["isSteady"] and found["columns"][1]["name"] == "gx"


def test_progress_is_told_and_may_end_it(tmp_path):
    velmarind.write(tmp_path / "long.csv", np.zeros((200000, 2)), fs=100)
    told = []
    velmarind.read(tmp_path / "long.csv", progress=told.append)
    assert all({"rows", "bytes"} <= set(each) for each in told)
    velmarind.read(HAND, progress=True)


def test_columns_may_be_patterns(tmp_path):
    path = tmp_path / "a.csv"
    path.write_text("t,ax,ay,gx,b\n0,1,2,3,4\n1,5,6,7,8\n")
    assert velmarind.read(path, columns=["g*", "a?"], time="t").columns.tolist() == ["gx", "ax", "ay"]
    with pytest.raises(velmarind.Error, match="'h\\*'"):
        velmarind.read(path, columns=["h*"], time="t")


def test_a_row_without_numbers_comes_back(tmp_path):
    x = np.array([[1.0, 2.0], [np.nan, np.nan], [3.0, np.nan]])
    velmarind.write(tmp_path / "a.csv", x, fs=100)
    assert np.array_equal(velmarind.read(tmp_path / "a.csv", missing=[""]).to_numpy(), x, equal_nan=True)


def test_each_column_has_a_name_of_its_own(tmp_path):
    frame = pd.DataFrame({"t": [1.0, 2.0]}, index=pd.Index([0.0, 0.01], name="t"))
    velmarind.write(tmp_path / "a.csv", frame)
    back = velmarind.read(tmp_path / "a.csv", time="t_")
    assert back["t"].tolist() == [1.0, 2.0] and back.index.tolist() == [0.0, 0.01]
    with pytest.raises(velmarind.Error, match="two columns"):
        velmarind.write(tmp_path / "b.csv", np.eye(2), fs=100, columns=["x", "x"])
