"""Reads how far a `halvane` run has come from what it writes on stderr.

The command line has written progress in two styles, and a plugin may meet
either with the program it finds:

* bars, one line per step when stderr is not a terminal (and redrawn in place
  after a carriage return when it is)::

      halvane bpi [########------------] 12/30  Computing

* GDAL's ticks, one line per stage, prefixed by the stage's number::

      2/4 Fine-scale BPI, ring of 1 to 3 cells: 0...10...20...100 - done in 0.8 s

  or bare ticks (``0...10...20``) without a stage. A tick that is not a number
  is 2.5 %: ``20..`` reads as 25 %.

Ticks arrive a few characters at a time with no line break until the stage
ends, so the reader takes the stream in any chunks and looks at the
unfinished line as well as the finished ones. Everything else (messages,
reports, errors) is kept as lines for the log.
"""

import re
from typing import List, Optional

_BAR = re.compile(r"^(?P<title>.*?)\s*\[[#\-]*\]\s+(?P<pos>-?\d+)/(?P<max>-?\d+)(?:\s+(?P<message>.*))?$")
_STAGE = re.compile(r"^(?P<stage>\d+)/(?P<stages>\d+)\s+(?P<name>.*):\s*(?P<ticks>[\d.]*)(?P<rest>.*)$")
_TICKS = re.compile(r"^(?:\d{1,3}|\.)(?:\d{1,3}|\.)*$")
_TICK = 2.5  # per cent: GDAL's dot


def ticks_fraction(ticks: str) -> Optional[float]:
    """The fraction (0 to 1) that GDAL-style ticks such as ``0...10..`` stand for."""
    if not ticks or not _TICKS.match(ticks):
        return None
    numbers = list(re.finditer(r"\d+", ticks))
    if not numbers:
        return None
    last = numbers[-1]
    percent = float(last.group()) + _TICK * ticks[last.end():].count(".")
    return max(0.0, min(percent, 100.0)) / 100.0


class ProgressReader:
    """Takes stderr as it comes and tells the run's progress in per cent."""

    def __init__(self) -> None:
        self._pending = ""
        self.percent: Optional[float] = None  # the whole run's, once known
        self.label = ""  # what the run is doing, for the progress text
        self.lines: List[str] = []  # the lines that are not progress

    def feed(self, text: str) -> Optional[float]:
        """Reads a chunk; returns the progress when the chunk moved it, else None."""
        before = (self.percent, self.label)
        self._pending += text.replace("\r\n", "\n")
        # A carriage return redraws a bar in place: the text before it is over.
        parts = re.split(r"[\r\n]", self._pending)
        self._pending = parts.pop()
        for line in parts:
            if not self._read(line, finished=True) and line.strip():
                self.lines.append(line.rstrip())
        if self._pending:
            self._read(self._pending, finished=False)
        return self.percent if (self.percent, self.label) != before else None

    def finish(self) -> None:
        """The stream ended: an unfinished line that is no progress is a message."""
        if self._pending and not self._read(self._pending, finished=True) and self._pending.strip():
            self.lines.append(self._pending.rstrip())
        self._pending = ""

    def _read(self, line: str, finished: bool) -> bool:
        text = line.strip()
        stage = _STAGE.match(text)
        if stage and 0 < int(stage.group("stages")):
            done = stage.group("rest").lstrip().startswith("- done")
            fraction = 1.0 if done else ticks_fraction(stage.group("ticks"))
            if fraction is not None or (not finished and not stage.group("rest")):
                stages = int(stage.group("stages"))
                number = min(max(int(stage.group("stage")), 1), stages)
                self._set(100.0 * (number - 1 + (fraction or 0.0)) / stages, stage.group("name"))
                return True
        bar = _BAR.match(text) if finished else None  # a bar's line comes whole
        if bar:
            position, maximum = int(bar.group("pos")), int(bar.group("max"))
            if maximum > 0:
                label = " ".join(p for p in (bar.group("title"), bar.group("message")) if p)
                self._set(100.0 * max(0, min(position, maximum)) / maximum, label)
            return True
        bare = text.split(" - done")[0] if " - done" in text else text
        fraction = ticks_fraction(bare)
        if fraction is not None and ("..." in bare or " - done" in text or bare == "0"):
            self._set(100.0 if " - done" in text else 100.0 * fraction, self.label)
            return True
        return False

    def _set(self, percent: float, label: str) -> None:
        self.percent = percent
        self.label = label.strip()
