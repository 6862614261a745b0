# SPDX-License-Identifier: MIT
"""The engine of `quillmere batch --engine dask`: has recordings run by the workers of Dask.

The command starts it, and keeps what is to be kept: which recordings are to be run, what came of them, the
summary. The first line that comes in is settings in JSON, each other one a call of the command; each line
that goes out is an answer, as host/batch/EngineRun.h has them.
"""

from __future__ import annotations

import asyncio
import concurrent.futures
import contextlib
import importlib
import json
import logging
import os
import queue
import re
import secrets
import shlex
import signal
import sys
import threading
import time
from collections import deque
from typing import Any

from velmarind import _dask_task as task

NOTHING_RUN = 2
PATIENCE = float(os.environ.get("QUILLMERE_DASK_PATIENCE", "60"))  # seconds for a scheduler to come back
BETWEEN_LOOKS = 0.2
MOTION = "_motion.tsv"  # of BIDS
LINE_END = "\x1e"  # stands for one, in an answer
TO_END = 20.0  # seconds in which runs that are told to end do so


class Refusal(Exception):
    """A sentence, before anything was run."""


def say(text: str) -> None:
    print(f"quillmere: --engine: {text}", file=sys.stderr, flush=True)


def answer(*words: object) -> None:
    print(*words, flush=True)


class Engine:
    """A batch on a cluster. At most a few recordings for each thread of the workers wait at the scheduler: who
    starts it anew loses little, and whoever else works there isn't held up."""

    def __init__(self, settings: dict[str, Any], calls: list[list[str]]) -> None:
        self.settings: dict[str, Any] = {**settings, "token": secrets.token_hex(8), "folder": os.getcwd()}
        self.calls = calls
        self.waiting = deque(range(len(calls)))
        self.running: dict[Any, int] = {}  # futures, and what they are about
        self.ended: queue.SimpleQueue[Any] = queue.SimpleQueue()
        self.refused: set[str] = set()  # workers
        self.threads: dict[str, int] = {}
        self.had_threads = True
        self.looked = 0.0
        self.stopped = threading.Event()
        self.client: Any = None
        self.cluster: Any = None

    def run(self) -> int:
        with self.probe():
            try:
                self.connect()
                self.check_workers()
                while self.waiting or self.running:
                    if self.stopped.is_set():
                        self.interrupt()
                        break
                    if not self.look():
                        return 1
                    self.fill()
                    self.take()
            finally:
                self.leave()
        return 0

    @contextlib.contextmanager
    def probe(self) -> Any:
        """A file by which a worker shows that its folder is ours."""
        words = self.calls[0]
        folder = os.path.dirname(os.path.abspath(words[words.index("--folder") + 1]))
        self.settings["probe"] = os.path.join(folder, f".quillmere-{self.settings['token']}")
        if self.settings["ship"]:
            yield
            return
        os.makedirs(folder, exist_ok=True)
        with open(self.settings["probe"], "w", encoding="utf-8") as file:
            file.write(self.settings["token"])
        try:
            yield
        finally:
            os.unlink(self.settings["probe"])

    def connect(self) -> None:
        distributed: Any = importlib.import_module("distributed")
        address: Any = self.settings["scheduler"]
        if not address:  # threads are enough: each of them waits for a process
            self.cluster = distributed.LocalCluster(
                n_workers=1, threads_per_worker=self.settings["jobs"] or os.cpu_count(), processes=False,
                dashboard_address="127.0.0.1:0")
            address = self.cluster
        try:
            self.client = distributed.Client(address, timeout=min(10.0, PATIENCE), set_as_default=False, name="quillmere")
        except (OSError, ValueError) as error:
            reason = f"found no scheduler at {address}"
            raise Refusal(f"{reason} ({error}); expected one, as 'dask scheduler' starts it") from error
        link = self.client.dashboard_link
        if link and not self.settings["quiet"]:
            say(f"the dashboard is {re.sub('//[^:/]+', '//127.0.0.1', link) if self.cluster else link}")

    def check_workers(self) -> None:
        """At the start whatever is wrong is refused; later such a worker gets nothing."""
        self.settings["versions"] = task.versions(self.settings, self.settings["command"])
        end = time.monotonic() + PATIENCE
        while not self.client.nthreads() and time.monotonic() < end and not self.stopped.wait(BETWEEN_LOOKS):
            pass
        if self.stopped.is_set():
            return
        doubts = self.client.run(task.tell, self.settings)
        if not doubts:
            raise Refusal("found no worker at the scheduler; expected one at least, as 'dask worker' starts it")
        wrong = [f"the worker {address} has {doubt}" for address, doubt in sorted(doubts.items()) if doubt]
        if wrong:
            raise Refusal("; ".join(wrong))

    def look(self) -> bool:
        """Whether there is a scheduler; who is there."""
        if time.monotonic() - self.looked < 1.0 and self.client.status == "running":
            return True
        try:
            if self.client.status != "running":
                self.connect_again()
            self.threads = {address: count for address, count in self.client.nthreads().items()
                            if address not in self.refused}
        except (OSError, Refusal) as error:
            say(f"the scheduler is gone ({error}); the same with --resume does the rest")
            return False
        if not self.threads and self.had_threads:
            say("no worker is left; waiting for another")
        self.had_threads = bool(self.threads)
        self.looked = time.monotonic()
        # What only workers might run that are gone would wait for ever.
        for future in [future for future in self.running if future.velmarind_workers is not None
                       and not self.threads.keys() & future.velmarind_workers]:
            future.cancel()
        return True

    def connect_again(self) -> None:
        end = time.monotonic() + PATIENCE
        with contextlib.suppress(Exception):
            self.client.close(timeout=1)
        for future in list(self.running):
            self.give_back(future)
        say("the scheduler is gone; waiting for another one there")
        while not self.stopped.is_set():
            try:
                return self.connect()
            except Refusal:
                if time.monotonic() > end:
                    raise
                self.stopped.wait(BETWEEN_LOOKS)

    def fill(self) -> None:
        threads = sum(self.threads.values())
        most = self.settings["jobs"] or 2 * threads
        while self.waiting and len(self.running) < most and not self.stopped.is_set():
            number = self.waiting.popleft()
            try:
                files = self.files_of(number) if self.settings["ship"] else {}
            except OSError as error:
                answer("failed", number, f"cannot be sent: {error}")
                continue
            workers = list(self.threads) if self.refused else None
            future = self.client.submit(
                task.run, self.calls[number], files, self.settings, pure=False, workers=workers,
                key=f"{self.name_of(number)}-{secrets.token_hex(16)}")
            future.velmarind_workers = set(workers) if workers else None
            self.running[future] = number
            future.add_done_callback(self.ended.put)
        answer("running", min(len(self.running), threads))

    def name_of(self, number: int) -> str:
        """By which people know it: a task is called like its recording."""
        words = self.calls[number]
        return words[words.index("--input") + 1].partition("=")[2] if "--input" in words else f"recording {number}"

    def files_of(self, number: int) -> dict[str, bytes]:
        words = self.calls[number]
        paths = [words[1], *self.settings["files"]]
        paths += [words[at + 1].partition("=")[2] for at, word in enumerate(words) if word == "--input"]
        for motion in [path for path in paths if path.endswith(MOTION)]:  # has its channels beside it
            beside = [motion.removesuffix(MOTION) + name for name in ("_channels.tsv", "_motion.json")]
            paths += filter(os.path.exists, beside)
        files = {}
        for path in paths:
            with open(path, "rb") as file:
                files[path] = file.read()
        return files

    def take(self) -> None:
        with contextlib.suppress(queue.Empty):
            self.end(self.ended.get(timeout=BETWEEN_LOOKS))
            while True:
                self.end(self.ended.get_nowait())

    def give_back(self, future: Any) -> None:
        number = self.running.pop(future, None)
        if number is None:
            return
        self.waiting.appendleft(number)
        if "--resume" not in self.calls[number]:
            self.calls[number].append("--resume")  # it may be done, but for the word of it

    def end(self, future: Any) -> None:
        if future not in self.running:
            return
        if future.status not in ("finished", "error"):
            return self.give_back(future)  # the scheduler has forgotten it
        number = self.running[future]
        try:
            word, text, made = future.result(timeout=PATIENCE)
        except (OSError, TimeoutError, asyncio.CancelledError, concurrent.futures.CancelledError):
            return self.give_back(future)
        except Exception as error:  # Dask's own: it has lost several workers over it
            word, text, made = "failed", f"{type(error).__name__}: {error}", {}
        if word == task.REFUSED:
            self.leave_out(text)
            return self.give_back(future)
        del self.running[future]
        if self.settings["ship"]:
            self.lay_down(number, made)
        answer(word, number, text.replace("\n", LINE_END))

    def leave_out(self, worker: str) -> None:
        if worker in self.refused:
            return
        self.refused.add(worker)
        self.threads.pop(worker, None)
        with contextlib.suppress(Exception):
            doubt = self.client.run(task.tell, self.settings, workers=[worker])[worker]
            say(f"the worker {worker} has {doubt}; it gets no recordings")

    def lay_down(self, number: int, made: dict[str, bytes]) -> None:
        if not made:
            return
        folder = os.path.join(self.settings["arrivals"], str(number))
        os.makedirs(folder)
        for name, data in made.items():
            with open(os.path.join(folder, os.path.basename(name)), "wb") as file:
                file.write(data)

    def interrupt(self) -> None:
        """What runs is ended in order, what waits doesn't begin; what is done stays."""
        with contextlib.suppress(Exception):
            self.client.run(task.stop, self.settings)
        end = time.monotonic() + TO_END
        while self.running and time.monotonic() < end and self.client.status == "running":
            self.waiting.clear()
            self.take()
        with contextlib.suppress(Exception):
            self.client.cancel(list(self.running))

    def leave(self) -> None:
        if self.client is None:
            return
        with contextlib.suppress(Exception):
            if self.client.status == "running":
                self.client.run(task.forget, self.settings)
            self.client.close(timeout=2)
        with contextlib.suppress(Exception):
            if self.cluster is not None:
                self.cluster.close(timeout=2)


def main() -> int:
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # the command hears it, and tells
    import cloudpickle

    cloudpickle.register_pickle_by_value(task)
    logging.getLogger("distributed").setLevel(logging.CRITICAL)  # what matters is said here
    settings = json.loads(sys.stdin.readline())
    engine = Engine(settings, [shlex.split(line) for line in sys.stdin])
    signal.signal(signal.SIGTERM, lambda *_: engine.stopped.set())
    try:
        return engine.run()
    except Refusal as refusal:
        say(str(refusal))
        return NOTHING_RUN


if __name__ == "__main__":
    sys.exit(main())
