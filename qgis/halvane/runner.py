"""Runs `halvane` for an algorithm: progress, cancel, and all-or-nothing outputs.

The program writes into a private folder made beside the first destination,
and its grids are renamed onto the destinations only once it has succeeded.
A failed or cancelled run therefore leaves nothing under the output names,
whatever the program itself leaves behind, and the intermediate grids of a
command (classify's SLOPE, say) only appear when they were asked for.

Nothing here needs QGIS: `feedback` is anything with the methods of
QgsProcessingFeedback that are used, so the module is tested on its own.
"""

import codecs
import os
import queue
import shutil
import signal
import subprocess
import tempfile
import threading
from typing import Dict, List, Optional, Sequence

from .progress import ProgressReader

PROGRAM = "halvane"
# How long a program asked to stop may tidy up before it is killed.
STOP_GRACE_SECONDS = 5.0


class HalvaneError(Exception):
    """A run that failed, with the program's own words when it had any."""


class Canceled(HalvaneError):
    pass


def find_program(setting: Optional[str] = None, here: Optional[str] = None) -> Optional[str]:
    """The `halvane` to run: the setting (the program, or its folder) when it is
    given, else the one on PATH, else the one installed with this plugin
    (share/halvane/qgis/halvane beside bin/halvane)."""
    if setting:
        candidate = os.path.join(setting, PROGRAM) if os.path.isdir(setting) else setting
        return candidate if os.path.isfile(candidate) and os.access(candidate, os.X_OK) else None
    found = shutil.which(PROGRAM)
    if found:
        return found
    here = here or os.path.dirname(os.path.abspath(__file__))
    beside = os.path.normpath(os.path.join(here, "..", "..", "..", "..", "bin", PROGRAM))
    return beside if os.path.isfile(beside) and os.access(beside, os.X_OK) else None


def _pump(stream, tag: str, chunks: "queue.Queue") -> None:
    # Raw reads: ticks come without line breaks, and must show as they come.
    decoder = codecs.getincrementaldecoder("utf-8")(errors="replace")
    fd = stream.fileno()
    while True:
        try:
            data = os.read(fd, 4096)
        except OSError:
            break
        if not data:
            break
        chunks.put((tag, decoder.decode(data)))
    chunks.put((tag, None))


def _stop(process: subprocess.Popen) -> None:
    """Asks the program (and anything it started) to stop, then makes it."""
    for sig, wait in ((signal.SIGTERM, STOP_GRACE_SECONDS), (signal.SIGKILL, None)):
        try:
            os.killpg(process.pid, sig)
        except ProcessLookupError:
            return
        try:
            process.wait(timeout=wait)
            return
        except subprocess.TimeoutExpired:
            continue


def _grid_files(folder: str, name: str) -> List[str]:
    """NAME.tif and its side files (NAME.tif.aux.xml, ...) in folder."""
    grid = name + ".tif"
    return sorted(f for f in os.listdir(folder) if f == grid or f.startswith(grid + "."))


def _place(source: str, destination: str) -> None:
    """Renames source onto destination, through a hidden temporary in the
    destination's folder when they lie on different file systems."""
    try:
        os.replace(source, destination)
    except OSError:
        folder, base = os.path.split(destination)
        fd, temporary = tempfile.mkstemp(prefix="." + base + ".", dir=folder or ".")
        os.close(fd)
        try:
            shutil.copyfile(source, temporary)
            os.replace(temporary, destination)
        except BaseException:
            os.unlink(temporary)
            raise


def _deliver(scratch: str, outputs: Dict[str, str]) -> None:
    for name, destination in outputs.items():
        files = _grid_files(scratch, name)
        if name + ".tif" not in files:
            raise HalvaneError("halvane wrote no grid %s" % name)
        # Side files of an older grid at the destination would describe the wrong one.
        folder = os.path.dirname(destination) or "."
        stale = os.path.basename(destination) + "."
        for old in os.listdir(folder):
            if old.startswith(stale) and old[len(stale):] in ("aux.xml", "ovr", "msk"):
                os.unlink(os.path.join(folder, old))
        # The grid last, so that its side files are in place when it appears.
        for f in sorted(files, key=lambda f: f == name + ".tif"):
            _place(os.path.join(scratch, f), destination + f[len(name) + 4:])


def run(program: str, command: str, arguments: Sequence[str], outputs: Dict[str, str],
        feedback, poll_seconds: float = 0.1) -> List[str]:
    """Runs `program command --workdir SCRATCH arguments...` and moves the grids
    named in `outputs` (NAME -> destination .tif path) onto their destinations.
    Returns what the program printed on stdout, as lines. Raises Canceled when
    feedback was cancelled and HalvaneError when the run failed."""
    if not outputs:
        raise ValueError("a run needs at least one output")
    for destination in outputs.values():
        os.makedirs(os.path.dirname(os.path.abspath(destination)), exist_ok=True)
    first = os.path.dirname(os.path.abspath(next(iter(outputs.values()))))
    scratch = tempfile.mkdtemp(prefix=".halvane-qgis-", dir=first)
    try:
        line = [program, command, "--workdir", scratch] + list(arguments)
        feedback.pushCommandInfo(" ".join(_quoted(w) for w in line))
        process = subprocess.Popen(line, cwd=scratch, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   start_new_session=True)
        chunks: "queue.Queue" = queue.Queue()
        pumps = [threading.Thread(target=_pump, args=(s, t, chunks), daemon=True)
                 for s, t in ((process.stdout, "out"), (process.stderr, "err"))]
        for pump in pumps:
            pump.start()
        reader = ProgressReader()
        out: List[str] = []
        open_streams = 2
        try:
            while open_streams:
                if feedback.isCanceled():
                    _stop(process)
                    raise Canceled("halvane %s was cancelled" % command)
                try:
                    tag, text = chunks.get(timeout=poll_seconds)
                except queue.Empty:
                    continue
                if text is None:
                    open_streams -= 1
                elif tag == "out":
                    out.append(text)
                else:
                    shown = len(reader.lines)
                    if reader.feed(text) is not None:
                        feedback.setProgress(reader.percent)
                        if reader.label:
                            feedback.setProgressText(reader.label)
                    for message in reader.lines[shown:]:
                        feedback.pushConsoleInfo(message)
            status = process.wait()
        finally:
            if process.poll() is None:
                _stop(process)
            # The pumps end at the pipes' end, which the stopped group gives;
            # their descriptors are closed only then, not from under them.
            for pump in pumps:
                pump.join(timeout=2.0)
            for stream in (process.stdout, process.stderr):
                stream.close()
        shown = len(reader.lines)
        reader.finish()
        for message in reader.lines[shown:]:
            feedback.pushConsoleInfo(message)
        if feedback.isCanceled():
            raise Canceled("halvane %s was cancelled" % command)
        if status != 0:
            raise HalvaneError(_failure(command, status, reader.lines))
        _deliver(scratch, outputs)
        feedback.setProgress(100)
        printed = "".join(out)
        for name, destination in outputs.items():
            printed = printed.replace(os.path.join(scratch, name + ".tif"), destination)
        return printed.splitlines()
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


def _failure(command: str, status: int, lines: List[str]) -> str:
    # The program's one-line error names what failed; older ones may print
    # a report over several lines, which are all worth showing.
    own = [l for l in lines if l.startswith("halvane")]
    said = own[-1] if own else "\n".join(lines[-5:])
    if status < 0:
        return "halvane %s was stopped by signal %d. %s" % (command, -status, said)
    return said or "halvane %s failed with exit status %d" % (command, status)


def _quoted(word: str) -> str:
    if word and all(c.isalnum() or c in "-_./=:,+@%" for c in word):
        return word
    return "'" + word.replace("'", "'\\''") + "'"
