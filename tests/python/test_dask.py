# SPDX-License-Identifier: MIT
"""Batches on a cluster of Dask: a scheduler and workers as processes on loopback, and what can happen to them.

Each worker finds a `quillmere` of its own on its PATH, which notes what it is called with and then is the command:
so it shows who ran what, and how often."""

import contextlib
import json
import os
import pathlib
import re
import resource
import signal
import socket
import subprocess
import sys
import time

import pytest

pytest.importorskip("distributed", reason="python3-distributed, which scripts/install --with-checks installs")
import velmarind  # noqa: E402
from velmarind import _native  # noqa: E402

BUILD = os.environ.get("VELMARIND_BUILD")
pytestmark = pytest.mark.skipif(not BUILD, reason="VELMARIND_BUILD says which build tree, as ctest does")
PLUGIN = f"{BUILD}/lib/libcrash_plugin.so"
COMMAND = _native.command_path()
PATIENCE = 120  # seconds for what takes less than one, on a busy machine

GRAPH = f"""format: 1
plugins: [{PLUGIN}]
blocks:
  - {{id: in, type: RecordingSource, properties: {{file: none.csv, time: t, pins: {{x: [x]}}}}}}
  - {{id: crash, type: Crash}}
  - {{id: out, type: RecordingSink, properties: {{file: out.csv}}}}
connections:
  - {{from: in, to: crash}}
  - {{from: crash, to: out.x}}
"""


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, f"no {what} within {PATIENCE} s"
        time.sleep(0.02)


class Cluster:
    def __init__(self, folder):
        self.folder = folder
        self.processes = {}
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.address = f"127.0.0.1:{free.getsockname()[1]}"

    def start(self, name, *words, before=(), environment=None, **options):
        with open(self.folder / f"{name}.log", "ab") as log:
            self.processes[name] = subprocess.Popen(
                [*before, sys.executable, "-m", *words], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                env={**os.environ, **(environment or {})}, **options)

    def start_scheduler(self):
        host, port = self.address.split(":")
        self.start("scheduler", "distributed.cli.dask_scheduler", "--host", host, "--port", port, "--no-dashboard")

    def start_worker(self, name, version=None, disk=None, **options):
        """`version` is what its command says of itself; `disk` mounts that folder as a small one."""
        programs = self.folder / f"bin-{name}"
        programs.mkdir(exist_ok=True)
        told = f'[ "$1" != --version ] || exec echo "quillmere {version}"\n' if version else ""
        (programs / "quillmere").write_text(
            f'#!/bin/sh\n{told}[ "$1" != run ] || echo "$*" >> {self.folder}/runs-{name}\nexec {COMMAND} "$@"\n')
        (programs / "quillmere").chmod(0o755)
        scratch = disk or self.folder / f"scratch-{name}"
        self.start(name, "distributed.cli.dask_worker", f"tcp://{self.address}", "--host", "127.0.0.1", "--nthreads",
                   "1", "--no-nanny", "--no-dashboard", "--name", name, "--local-directory", str(scratch),
                   environment={"PATH": f"{programs}:{os.environ['PATH']}"}, **options)

    def await_workers(self, count):
        import distributed

        with distributed.Client(f"tcp://{self.address}", timeout=PATIENCE, set_as_default=False) as client:
            client.wait_for_workers(count, timeout=PATIENCE)
            wait_until(lambda: len(client.scheduler_info()["workers"]) == count, f"{count} workers")

    def runs(self, *names):
        """The recordings that workers have begun, as often as they have."""
        texts = [path.read_text() for name in names if (path := self.folder / f"runs-{name}").exists()]
        return re.findall(r"--input in=study/(\S+)\.csv", "".join(texts))

    def kill(self, name):
        process = self.processes.pop(name)
        process.kill()
        process.wait()

    def close(self):
        for name in list(self.processes):
            self.kill(name)


@pytest.fixture(scope="module")
def shared(tmp_path_factory):
    """A scheduler and two workers that nothing happens to."""
    cluster = Cluster(tmp_path_factory.mktemp("cluster"))
    cluster.start_scheduler()
    cluster.start_worker("one")
    cluster.start_worker("two")
    with contextlib.closing(cluster):
        cluster.await_workers(2)
        yield cluster


@pytest.fixture
def own(tmp_path):
    cluster = Cluster(tmp_path)
    cluster.start_scheduler()
    with contextlib.closing(cluster):
        yield cluster


@pytest.fixture
def study(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "study").mkdir()
    (tmp_path / "g.yaml").write_text(GRAPH)
    return tmp_path


def write(study, name, *values):
    (study / "study" / f"{name}.csv").write_text("t,x\n" + "".join(f"{i},{x}\n" for i, x in enumerate(values)))


def write_slow(study, count, rows=150, first=0):
    """Rows of -1 take a millisecond each. A run reads on what it has begun with."""
    for number in range(first, count):
        write(study, f"r{number}.new", number, *[-1] * rows)
        os.replace(f"study/r{number}.new.csv", f"study/r{number}.csv")


ENDLESS = 1_000_000  # rows


def words(cluster, *more):
    return [COMMAND, "batch", "g.yaml", "--in", "study/*.csv", "--out", "results", "--engine",
            f"dask://{cluster.address}", *more]


def begin(call, stderr=subprocess.PIPE, **environment):
    return subprocess.Popen(call, stdout=subprocess.PIPE, stderr=stderr, text=True,
                            env={**os.environ, "QUILLMERE_PYTHON": sys.executable, **environment})


def finish(process):
    out, err = process.communicate(timeout=PATIENCE)
    return process.returncode, out, err


def status(name):
    return json.loads(pathlib.Path(f"results/{name}/status.json").read_text())


def states():
    return {path.parent.name: json.loads(path.read_text())["state"]
            for path in pathlib.Path("results").glob("*/status.json")}


def results(folder):
    return {str(path.relative_to(folder)): path.read_bytes() for path in pathlib.Path(folder).glob("*/out.csv")}


def all_done(count):
    return {f"r{number}": "done" for number in range(count)}


def test_it_is_the_batch_of_one_machine(shared, study):
    write_slow(study, 4, rows=3)
    write(study, "crash", 1, 666)
    (study / "study" / "bad.csv").write_text("t,y\n0,1\n")
    code, out, err = finish(begin(words(shared)))
    assert code == 1, err
    assert out.startswith("6 recordings: 4 done, 2 failed"), out
    assert "failed: study/crash.csv: its process was ended by signal 6 (Aborted): nobody expects 666\n" in err
    assert "  again: quillmere run g.yaml --input in=study/crash.csv --folder results/crash\n" in err
    assert "found no column 'x'" in err
    assert states() == {**all_done(4), "crash": "crashed", "bad": "failed"}
    assert status("crash")["failure"].endswith("nobody expects 666")
    begun = shared.runs("one", "two")
    assert sorted(begun) == ["bad", "crash", "r0", "r1", "r2", "r3"], "none twice: a bad file stays one"
    assert shared.runs("one") and shared.runs("two")
    subprocess.run([COMMAND, "batch", "g.yaml", "--in", "study/r*.csv", "--out", "here", "--quiet"], check=True)
    assert results("results") == results("here")
    summary = pathlib.Path("results/summary.csv").read_text()
    assert [line.split(",")[2] for line in summary.splitlines()[1:]] == ["failed", "crashed", *["done"] * 4]
    assert not list(pathlib.Path("results").glob(".*")), "nothing of the engine is left"
    # With --resume only the rest goes there, and what is said of the others is taken over.
    write(study, "bad", 1)
    code, out, err = finish(begin(words(shared, "--resume")))
    assert (code, shared.runs("one", "two")[6:].count("r0")) == (1, 0)
    assert out.startswith("6 recordings: 5 done (4 before), 1 failed"), out + err
    import distributed

    with distributed.Client(f"tcp://{shared.address}", set_as_default=False) as client:
        names = client.run_on_scheduler(lambda dask_scheduler: list(dask_scheduler.task_prefixes))
    assert "study/r0.csv" in names, "the dashboard has recordings by name"


def test_bytes_go_there_and_back(shared, study, tmp_path_factory, monkeypatch):
    write_slow(study, 3, rows=2)
    write(study, "crash", 666)
    (study / "results" / "r0").mkdir(parents=True)
    (study / "results" / "r0" / "out.csv").write_text("somebody's own\n")
    absolute = study / "study" / "r*.csv"
    call = words(shared, "--ship", "--in", str(absolute))
    code, out, err = finish(begin(call))
    assert (code, out[:33]) == (1, "4 recordings: 2 done, 2 failed (i"), err
    assert "found the file 'results/r0/out.csv', which no run has written" in err
    assert (study / "results" / "r0" / "out.csv").read_text() == "somebody's own\n"
    assert status("r1")["recording"] == "study/r1.csv" and status("crash")["state"] == "crashed"
    assert status("r1")["inputs"][0]["file"] == "study/r1.csv"
    # What it says is what a run here would say, so nothing has changed for another batch here.
    code, out, err = finish(begin([*words(shared)[:7], "--resume"]))
    assert out.startswith("4 recordings: 2 done (2 before), 2 failed"), out + err
    begun = len(shared.runs("one", "two"))
    code, out, err = finish(begin([*words(shared, "--resume", "--ship", "--overwrite")]))
    assert out.startswith("4 recordings: 3 done (2 before), 1 failed"), out + err
    assert len(shared.runs("one", "two")) == begun + 2
    assert not list(pathlib.Path("results").glob(".*"))


def test_the_function_is_the_command(shared, study):
    write_slow(study, 2, rows=1)
    write(study, "bad", "x")
    made = velmarind.batch("g.yaml", "study/*.csv", "results", engine=f"dask://{shared.address}", statistic="mean")
    assert (made.done, made.failed, made.whole) == (2, 1, False)
    assert list(made.summary["recording"]) == ["study/bad.csv", "study/r0.csv", "study/r1.csv"]
    assert list(made.failures["recording"]) == ["study/bad.csv"]
    here = velmarind.batch("g.yaml", ["study/r*.csv"], "results", resume=True, set={"in.file": "none.csv"}, jobs=1)
    assert here.whole and here.done == 2
    with pytest.raises(velmarind.Error, match="found no graph|cannot be opened|nowhere.yaml"):
        velmarind.batch("nowhere.yaml", "study/*.csv", "results")


def test_it_needs_no_cluster(study):
    write_slow(study, 3, rows=1)
    code, out, err = finish(begin([*words(Cluster(study))[:-1], "dask", "--jobs", "2"]))
    assert (code, states()) == (0, all_done(3)), err


def test_what_is_not_there_is_told(study):
    write_slow(study, 1, rows=1)
    nowhere = Cluster(study)
    code, _, err = finish(begin(words(nowhere), QUILLMERE_DASK_PATIENCE="0.5"))
    assert code == 2 and f"found no scheduler at tcp://{nowhere.address}" in err, err
    code, _, err = finish(begin(words(nowhere), QUILLMERE_PYTHON="/bin/false"))
    assert code == 2 and "found no Python with the packages velmarind and distributed (/bin/false)" in err, err
    code, _, err = finish(begin([*words(nowhere)[:-1], "dask://somewhere"]))
    assert code == 2 and "expected dask://HOST:PORT, or dask alone" in err
    assert not pathlib.Path("results/r0").exists()


def test_a_worker_that_is_killed_costs_nothing_but_time(own, study):
    own.start_worker("one")
    own.start_worker("two")
    own.await_workers(2)
    write_slow(study, 8)
    batch = begin(words(own))
    wait_until(lambda: len(own.runs("two")) >= 2, "recording that two has done, and another that it has begun")
    own.kill("two")
    code, out, err = finish(batch)
    assert (code, states()) == (0, all_done(8)), err
    begun, lost = own.runs("one", "two"), own.runs("two")
    assert all(begun.count(name) == 1 or name in lost for name in begun), "only what it had is begun again"


def began_of_done():
    return {name: status(name)["began"] for name, state in states().items() if state == "done"}


def write_two_and_endless(study, count):
    write_slow(study, 2, rows=1)
    write_slow(study, count, rows=ENDLESS, first=2)


def test_a_scheduler_that_is_restarted_goes_on(own, study):
    own.start_worker("one")
    own.await_workers(1)
    write_two_and_endless(study, 4)
    batch = begin(words(own))
    wait_until(lambda: len(own.runs("one")) == 3, "two recordings that are done, and another")
    own.kill("scheduler")
    own.kill("one")
    before = began_of_done()
    write_slow(study, 4, rows=1, first=2)
    own.start_scheduler()
    own.start_worker("three")
    code, out, err = finish(batch)
    assert (code, states()) == (0, all_done(4)), err
    assert sorted(before) == ["r0", "r1"] and before.items() <= began_of_done().items(), "what was done stays"


def test_a_scheduler_that_is_gone_ends_it(own, study):
    own.start_worker("one")
    own.await_workers(1)
    write_two_and_endless(study, 4)
    batch = begin(words(own), QUILLMERE_DASK_PATIENCE="1")
    wait_until(lambda: len(own.runs("one")) == 3, "two recordings that are done, and another")
    own.close()
    code, out, err = finish(batch)
    assert code == 1 and "the scheduler is gone" in err and "the same with --resume does the rest" in err, err
    assert out.startswith("4 recordings: 2 done, 0 failed, 2 left"), out


def test_another_version_is_refused(own, study):
    own.start_worker("one")
    own.start_worker("old", version="0.9")
    own.await_workers(2)
    write_slow(study, 5)
    code, _, err = finish(begin(words(own)))
    version = velmarind.__version__
    assert code == 2 and re.search(rf"the worker tcp://\S+ has quillmere 0.9; expected {version}, as here", err), err
    assert not own.runs("one", "old") and not states()
    # One that comes later is told, and gets nothing.
    own.kill("old")
    own.await_workers(1)
    write_slow(study, 5, rows=ENDLESS)
    with open("told", "w") as told:
        batch = begin(words(own), stderr=told)
    wait_until(lambda: own.runs("one"), "recording that has begun")
    own.start_worker("old", version="0.9")
    wait_until(lambda: "has quillmere 0.9; expected" in pathlib.Path("told").read_text(), "word on the worker")
    batch.send_signal(signal.SIGINT)
    assert finish(batch)[0] == 1
    assert "it gets no recordings" in pathlib.Path("told").read_text() and not own.runs("old")


def test_a_full_disk_costs_what_comes_to_it(own, study):
    disk = study / "disk"
    disk.mkdir()
    mount = ["unshare", "-rm", "sh", "-c", f'mount -t tmpfs -o size=64k none {disk} && exec "$@"', "sh"]
    mounts = subprocess.run([*mount, "true"], capture_output=True).returncode == 0
    limit = {} if mounts else {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (65536, 65536))}
    own.start_worker("full", disk=disk, before=mount if mounts else (), **limit)
    own.await_workers(1)
    write_slow(study, 1, rows=1)
    write(study, "large", *[1.0] * 20000)
    code, out, err = finish(begin(words(own, "--ship")))
    assert (code, out[:30]) == (1, "2 recordings: 1 done, 1 failed"), err
    assert re.search(r"failed: study/large.csv: at the worker tcp://\S+: .*(No space left on device|File too large)",
                     err), err
    own.kill("full")
    own.start_worker("one")
    own.await_workers(1)
    code, out, err = finish(begin(words(own, "--ship", "--resume")))
    assert (code, out[:40]) == (0, "2 recordings: 2 done (1 before), 0 faile"), err
    assert len(results("results")["large/out.csv"].splitlines()) == 20001


def test_whoever_ends_it_keeps_what_is_done(own, study):
    own.start_worker("one")
    own.await_workers(1)
    write_two_and_endless(study, 5)
    batch = begin(words(own))
    wait_until(pathlib.Path("results/r2/out.csv.partial").exists, "two recordings that are done, and another")
    batch.send_signal(signal.SIGINT)
    code, out, err = finish(batch)
    assert code == 1 and "interrupted; the same with --resume does the rest" in err and "failed: " not in err, err
    assert states() == {"r0": "done", "r1": "done", "r2": "interrupted"}, "what waited has not begun"
    before = began_of_done()
    write_slow(study, 5, rows=1, first=2)
    code, out, err = finish(begin(words(own, "--resume")))
    assert (code, states()) == (0, all_done(5)), err
    assert before.items() <= began_of_done().items(), "none is done twice"


def test_nothing_runs_on_when_the_command_is_killed(own, study):
    own.start_worker("one")
    own.await_workers(1)
    write_slow(study, 3, rows=ENDLESS)
    batch = begin(words(own))
    wait_until(lambda: list(pathlib.Path("results").glob("*/out.csv.partial")), "recording that has begun")
    batch.kill()
    wait_until(lambda: set(states().values()) == {"interrupted"}, "status of a run that was ended")
    finish(batch)
