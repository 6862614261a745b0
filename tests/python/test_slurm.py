# SPDX-License-Identifier: MIT
"""Batches on a cluster with Slurm: a controller and a node of our own on loopback, as processes of the test."""

import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import time

import pytest
from velmarind import _native

BUILD = os.environ.get("VELMARIND_BUILD")
PLUGIN = f"{BUILD}/lib/libcrash_plugin.so"
COMMAND = _native.command_path()
PATIENCE = 120  # seconds, on a busy machine
SEARCHED = os.environ["PATH"] + ":/usr/sbin:/sbin"
pytestmark = [
    pytest.mark.skipif(not BUILD, reason="VELMARIND_BUILD says which build tree, as ctest does"),
    pytest.mark.skipif(not shutil.which("slurmctld", path=SEARCHED) or not shutil.which("slurmd", path=SEARCHED),
                       reason="Debian's slurm-wlm, which scripts/install --with-checks installs")]

CONFIGURATION = """ClusterName=loopback
SlurmctldHost={host}(127.0.0.1)
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/none
CredType=cred/none
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
SlurmctldPort={controller}
SlurmdPort={node}
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SchedulerType=sched/builtin
SchedulerParameters=sched_interval=1
MpiDefault=none
ReturnToService=2
SwitchType=switch/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
MaxArraySize=5
NodeName={host} NodeAddr=127.0.0.1 CPUs=2 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
"""
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


def wait_until(condition, what, log):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, f"no {what} within {PATIENCE} s: {log.read_text()[-2000:]}"
        time.sleep(0.1)


@pytest.fixture(scope="module")
def slurm(tmp_path_factory):
    """The environment in which commands find the cluster."""
    folder = tmp_path_factory.mktemp("slurm")
    for name in ("state", "spool"):
        (folder / name).mkdir()
    with socket.create_server(("127.0.0.1", 0)) as one, socket.create_server(("127.0.0.1", 0)) as other:
        ports = {"controller": one.getsockname()[1], "node": other.getsockname()[1]}
    user = subprocess.run(["id", "-un"], capture_output=True, text=True, check=True).stdout.strip()
    (folder / "slurm.conf").write_text(CONFIGURATION.format(
        host=socket.gethostname().split(".")[0], user=user, folder=folder, **ports))
    environment = {**os.environ, "PATH": SEARCHED, "SLURM_CONF": str(folder / "slurm.conf")}
    processes = []
    log = folder / "log"

    def answers():
        told = subprocess.run(["sinfo", "--noheader", "--format=%t"], env=environment, capture_output=True, text=True)
        return told.stdout.strip() == "idle"

    try:
        with open(log, "ab") as out:
            for program in ("slurmctld", "slurmd"):
                processes.append(subprocess.Popen([program, "-D", "-c", "-f", environment["SLURM_CONF"]], stdout=out,
                                                  stderr=out, stdin=subprocess.DEVNULL, env=environment))
        wait_until(answers, "idle node", log)
        yield environment, log
    finally:
        for process in processes:
            process.send_signal(signal.SIGTERM)
        for process in processes:
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()


@pytest.fixture
def study(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "study").mkdir()
    (tmp_path / "g.yaml").write_text(GRAPH)
    for number in range(4):
        write(f"r{number}", number, -1, -1)
    write("crash", 1, 666)
    return tmp_path


def write(name, *values):
    pathlib.Path(f"study/{name}.csv").write_text("t,x\n" + "".join(f"{i},{x}\n" for i, x in enumerate(values)))


def call(slurm, *words, folder=None):
    ended = subprocess.run([COMMAND, "batch", *words], env=slurm[0], cwd=folder, capture_output=True, text=True,
                           timeout=PATIENCE)
    return ended.returncode, ended.stdout, ended.stderr


def await_queue(slurm):
    def is_empty():
        told = subprocess.run(["squeue", "--noheader"], env=slurm[0], capture_output=True, text=True, check=True)
        return not told.stdout.strip()
    wait_until(is_empty, "end of the jobs", slurm[1])


def states():
    return {path.parent.name: json.loads(path.read_text())["state"]
            for path in pathlib.Path("results").glob("*/status.json")}


def test_an_array_runs_the_study(slurm, study, tmp_path_factory):
    words = ["g.yaml", "--in", f"{study}/study/*.csv", "--out", f"{study}/results", "--engine", "slurm"]
    code, out, err = call(slurm, *words, "--per-task", "2", "--slurm", "time=00:05:00 cpus-per-task=2")
    assert code == 0 and out.startswith("Submitted batch job "), out + err
    await_queue(slurm)
    assert states() == {"r0": "done", "r1": "done", "r2": "done", "r3": "done", "crash": "crashed"}
    told = [path.read_text() for path in pathlib.Path("results").glob("slurm-*_*.out")]
    assert len(told) == 3 and sum("2 recordings: 2 done" in text for text in told) == 1, told
    assert any("its process was ended by signal 6" in text for text in told)
    # From anywhere: the summary, and the rest.
    elsewhere = tmp_path_factory.mktemp("elsewhere")
    assert call(slurm, "--collect", "--out", f"{study}/results", folder=elsewhere)[0] == 0
    assert len(pathlib.Path("results/summary.csv").read_text().splitlines()) == 6
    before = {name: pathlib.Path(f"results/{name}/status.json").read_text() for name in ("r0", "r1", "r2", "r3")}
    write("crash", 1)
    words[0] = f"{study}/g.yaml"
    code, out, err = call(slurm, *words, "--resume", folder=elsewhere)
    assert code == 0 and "\n1 recording in " in out, out + err
    await_queue(slurm)
    assert states() == dict.fromkeys(["r0", "r1", "r2", "r3", "crash"], "done")
    assert all(pathlib.Path(f"results/{name}/status.json").read_text() == text for name, text in before.items())
    assert call(slurm, *words, "--resume", folder=elsewhere)[1].startswith("5 recordings: 5 done (5 before)")


def test_a_queue_that_takes_no_more_is_told(slurm, study):
    words = ["g.yaml", "--in", "study/*.csv", "--out", "results", "--engine", "slurm", "--per-task", "1"]
    code, _, err = call(slurm, *words)
    assert code == 2 and "Invalid job array specification" in err, err
    assert "fewer jobs wait with a larger --per-task" in err
    assert not states()
