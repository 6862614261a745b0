# SPDX-License-Identifier: MIT
"""What a worker of Dask does for a batch. It is sent there as it stands, so that a worker needs the command
`quillmere` and nothing of this package."""

from __future__ import annotations

import contextlib
import json
import os
import shutil
import signal
import subprocess
import tempfile
from typing import Any

# What came of a recording: a word, why, and the files that were made where they have to be sent.
Answer = tuple[str, str, dict[str, bytes]]
LONGEST_PRINT = 8192
REFUSED = "refused"  # the worker, not the recording


def command_of(settings: dict[str, Any]) -> str:
    """The worker's own `quillmere`, that its PATH finds; else the file which it is where the batch began."""
    return shutil.which("quillmere") or str(settings["command"])


def versions(settings: dict[str, Any], command: str) -> dict[str, str]:
    """Those of the command and of its plug-ins."""
    plugins = [word for plugin in settings["plugins"] for word in ("--plugin", plugin)]
    try:
        calls = [[command, "--version"], [command, "blocks", "--json", *plugins]]
        told = [subprocess.run(call, capture_output=True, check=True, text=True, timeout=60).stdout for call in calls]
        found = {"quillmere": told[0].splitlines()[0].removeprefix("quillmere ")}
        for block in json.loads(told[1])["blocks"]:
            if block.get("version"):
                found[block["plugin"]] = block["version"]
        return found
    except subprocess.CalledProcessError as error:
        lines = (error.stderr or "").strip().splitlines()
        return {"quillmere": f"none that runs ({command}: {lines[-1] if lines else error})"}
    except (OSError, subprocess.SubprocessError, ValueError, IndexError, KeyError) as error:
        return {"quillmere": f"none that runs ({command}: {error})"}


def doubt(settings: dict[str, Any]) -> str:
    """Why this worker can't take part; empty when it can."""
    found, expected = versions(settings, command_of(settings)), settings["versions"]
    for name in sorted({*found, *expected}, key=lambda name: (name != "quillmere", name)):
        if found.get(name) != expected.get(name):
            return f"{name} {found.get(name, 'not there')}; expected {expected.get(name, 'none')}, as here"
    if settings["ship"]:
        return ""
    with contextlib.suppress(OSError), open(settings["probe"], encoding="utf-8") as probe:
        if probe.read() == settings["token"] and os.path.isdir(settings["folder"]):
            return ""
    return f"no file {settings['probe']} of this batch; expected a folder that all share, or --ship"


def state_of(worker: Any, settings: dict[str, Any]) -> dict[str, Any]:
    """What a worker remembers of a batch, as long as it lives."""
    batches = worker.__dict__.setdefault("quillmere_batches", {})
    state: dict[str, Any] = batches.setdefault(settings["token"], {"stopped": False, "processes": {}})
    return state


def tell(settings: dict[str, Any], dask_worker: Any = None) -> str:
    """The worker's doubt, which is found once."""
    state = state_of(dask_worker, settings)
    if "doubt" not in state:
        state["doubt"] = doubt(settings)
    return str(state["doubt"])


def stop(settings: dict[str, Any], dask_worker: Any = None) -> None:
    """Ends in order what the worker runs, and begins nothing more."""
    state = state_of(dask_worker, settings)
    state["stopped"] = True
    for process in list(state["processes"].values()):
        process.terminate()


def forget(settings: dict[str, Any], dask_worker: Any = None) -> None:
    dask_worker.__dict__.get("quillmere_batches", {}).pop(settings["token"], None)


def call(words: list[str], folder: str, settings: dict[str, Any], state: dict[str, Any]) -> tuple[str, str]:
    """Runs `quillmere` with these words."""
    with subprocess.Popen(
        [command_of(settings), *words, "--with-parent", str(os.getpid())], cwd=folder, text=True, errors="replace",
        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
    ) as process:
        state["processes"][process.pid] = process
        if state["stopped"]:
            process.terminate()
        printed = process.communicate()[1][-LONGEST_PRINT:].strip()
        del state["processes"][process.pid]
    code = process.returncode
    if code == 0:
        return "done", ""
    if state["stopped"]:
        return "interrupted", printed
    if code < 0:
        crash = f"its process was ended by signal {-code} ({signal.strsignal(-code)})"
        return "crashed", f"{crash}: {printed}" if printed else crash
    return "failed", printed or f"its process ended with the code {code}"


def run_shipped(words: list[str], files: dict[str, bytes], root: str, settings: dict[str, Any],
                state: dict[str, Any]) -> Answer:
    """Lays files below `root` as they lay at home, runs there, and gives back what was made."""
    def there(path: str) -> str:
        return root + os.path.abspath(os.path.join(settings["folder"], path))

    for path, data in files.items():
        os.makedirs(os.path.dirname(there(path)), exist_ok=True)
        with open(there(path), "wb") as file:
            file.write(data)
    moved = list(words)
    for number, word in enumerate(words):
        before = words[number - 1]
        if before == "--input":
            source, _, path = word.partition("=")
            moved[number] = f"{source}={root + path if os.path.isabs(path) else path}"
        elif (before in ("run", "--folder")) and os.path.isabs(word):
            moved[number] = root + word
    folder = there(words[words.index("--folder") + 1])
    os.makedirs(there("."), exist_ok=True)
    word, text = call(moved, there("."), settings, state)
    made = {}
    names = sorted(os.listdir(folder)) if os.path.isdir(folder) else []
    for name in [name for name in names if not name.endswith(".partial")]:  # of a run that has failed
        with open(os.path.join(folder, name), "rb") as result:
            made[name] = result.read()
    if "status.json" in made:  # speaks of home
        made["status.json"] = made["status.json"].replace(json.dumps(root)[1:-1].encode(), b"")
    return word, text.replace(root, ""), made


def run(words: list[str], files: dict[str, bytes], settings: dict[str, Any]) -> Answer:
    """Runs one recording. Nothing of it is an exception: Dask tries again only where a worker is lost."""
    from distributed import get_worker

    worker = get_worker()
    state = state_of(worker, settings)
    if state["stopped"]:
        return "interrupted", "", {}
    reason = tell(settings, worker)
    if reason:
        return REFUSED, worker.address, {}
    try:
        if not settings["ship"]:
            return (*call(words, settings["folder"], settings, state), {})
        with tempfile.TemporaryDirectory(prefix="quillmere-", dir=worker.local_directory) as root:
            return run_shipped(words, files, root, settings, state)
    except OSError as error:
        return "failed", f"at the worker {worker.address}: {error}", {}
