"""Running a program for an algorithm: delivery, failure and cancel leave the
output folder as they should. A small stand-in plays `halvane`, told by its
environment how to behave."""

import os
import sys
import tempfile
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), ".."))
from halvane import runner  # noqa: E402

# Writes NAME.tif (and a side file) into --workdir the way halvane does:
# progress in ticks, the grid under a temporary name, then the rename.
STAND_IN = r'''#!PYTHON
import os, signal, sys, time
args = sys.argv[1:]
workdir = args[args.index("--workdir") + 1]
name = args[args.index("--name") + 1]
mode = os.environ.get("STAND_IN_MODE", "ok")
if mode == "ignore-term":
    signal.signal(signal.SIGTERM, signal.SIG_IGN)
# Beside the output folder, so that the test finds it after a cancel.
with open(os.environ["STAND_IN_PID"], "w") as f:
    f.write(str(os.getpid()))
sys.stderr.write("1/2 Computing: 0")
sys.stderr.flush()
partial = os.path.join(workdir, "." + name + ".part.tif")
with open(partial, "w") as f:
    f.write("half")
if mode in ("hang", "ignore-term"):
    sys.stderr.write("...10")
    sys.stderr.flush()
    time.sleep(60)
if mode == "fail":
    sys.stderr.write("\nhalvane %s: in.tif: no such file or folder\n" % args[0])
    sys.exit(1)
sys.stderr.write("...50...100 - done in 0.1 s\n2/2 Saving: 0...100 - done in 0.1 s\n")
with open(partial, "w") as f:
    f.write("grid " + " ".join(args))
with open(os.path.join(workdir, name + ".tif.aux.xml"), "w") as f:
    f.write("<aux/>")
os.replace(partial, os.path.join(workdir, name + ".tif"))
print(os.path.join(workdir, name + ".tif"))
'''


class Feedback:
    """What the runner uses of QgsProcessingFeedback."""

    def __init__(self, cancel_at=None):
        self.cancel_at = cancel_at
        self.progress = []
        self.console = []
        self.canceled = False

    def isCanceled(self):
        return self.canceled

    def setProgress(self, percent):
        self.progress.append(percent)
        if self.cancel_at is not None and percent >= self.cancel_at:
            self.canceled = True

    def setProgressText(self, text):
        pass

    def pushCommandInfo(self, text):
        pass

    def pushConsoleInfo(self, text):
        self.console.append(text)


def alive(pid: int) -> bool:
    try:
        os.kill(pid, 0)
    except ProcessLookupError:
        return False
    # A zombie is gone for our purpose.
    with open("/proc/%d/stat" % pid) as f:
        return f.read().split(") ")[1][0] != "Z"


class Run(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.addCleanup(self.dir.cleanup)
        self.program = os.path.join(self.dir.name, "bin", "halvane")
        os.makedirs(os.path.dirname(self.program))
        with open(self.program, "w") as f:
            f.write(STAND_IN.replace("PYTHON", sys.executable, 1))
        os.chmod(self.program, 0o755)
        self.out = os.path.join(self.dir.name, "out")
        os.makedirs(self.out)
        self.destination = os.path.join(self.out, "zones.tif")
        self.pid_file = os.path.join(self.dir.name, "pid")

    def run_stand_in(self, mode, feedback, **kw):
        os.environ["STAND_IN_MODE"] = mode
        self.addCleanup(os.environ.pop, "STAND_IN_MODE", None)
        os.environ["STAND_IN_PID"] = self.pid_file
        self.addCleanup(os.environ.pop, "STAND_IN_PID", None)
        return runner.run(self.program, "classify", ["--name", "ZONES", "in.tif"],
                          {"ZONES": self.destination}, feedback, **kw)

    def test_success_delivers_the_grid_and_its_side_files_only(self):
        with open(self.destination + ".aux.xml", "w") as f:
            f.write("<stale/>")
        feedback = Feedback()
        printed = self.run_stand_in("ok", feedback)
        self.assertEqual(sorted(os.listdir(self.out)), ["zones.tif", "zones.tif.aux.xml"])
        with open(self.destination) as f:
            self.assertTrue(f.read().startswith("grid classify --workdir "))
        with open(self.destination + ".aux.xml") as f:
            self.assertEqual(f.read(), "<aux/>")
        # The printed path is the grid's place, not the private folder's.
        self.assertEqual(printed, [self.destination])
        self.assertEqual(feedback.progress, sorted(feedback.progress))
        self.assertEqual(feedback.progress[-1], 100)

    def test_failure_says_the_programs_words_and_leaves_nothing(self):
        with self.assertRaises(runner.HalvaneError) as raised:
            self.run_stand_in("fail", Feedback())
        self.assertEqual(str(raised.exception), "halvane classify: in.tif: no such file or folder")
        self.assertEqual(os.listdir(self.out), [])

    def test_a_missing_grid_after_success_is_a_failure(self):
        with self.assertRaises(runner.HalvaneError):
            runner.run(self.program, "classify", ["--name", "OTHER", "in.tif"],
                       {"ZONES": self.destination}, Feedback())
        self.assertEqual(os.listdir(self.out), [])

    def cancel_while_hanging(self, mode):
        # The stand-in writes a partial grid, then hangs: cancel at its 10 %.
        feedback = Feedback(cancel_at=5)
        started = time.monotonic()
        with self.assertRaises(runner.Canceled):
            self.run_stand_in(mode, feedback)
        took = time.monotonic() - started
        self.assertTrue(os.path.exists(self.pid_file), "the stand-in never ran")
        with open(self.pid_file) as f:
            self.assertFalse(alive(int(f.read())), "the program outlived the cancel")
        self.assertEqual(os.listdir(self.out), [])
        return took

    def test_cancel_stops_the_program_and_removes_its_files(self):
        self.assertLess(self.cancel_while_hanging("hang"), 5)

    def test_cancel_kills_a_program_that_will_not_stop(self):
        grace = runner.STOP_GRACE_SECONDS
        runner.STOP_GRACE_SECONDS = 0.5
        self.addCleanup(setattr, runner, "STOP_GRACE_SECONDS", grace)
        self.assertLess(self.cancel_while_hanging("ignore-term"), 10)


class FindProgram(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.addCleanup(self.dir.cleanup)
        self.path = os.environ.get("PATH", "")
        self.addCleanup(os.environ.__setitem__, "PATH", self.path)

    def make(self, *parts, executable=True):
        path = os.path.join(self.dir.name, *parts)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as f:
            f.write("#!/bin/sh\n")
        os.chmod(path, 0o755 if executable else 0o644)
        return path

    def test_setting_names_the_program_or_its_folder(self):
        program = self.make("opt", "halvane")
        self.assertEqual(runner.find_program(program), program)
        self.assertEqual(runner.find_program(os.path.dirname(program)), program)

    def test_setting_that_names_nothing_runnable_finds_nothing(self):
        # Even with one on PATH: a wrong setting must not silently run another.
        os.environ["PATH"] = os.path.dirname(self.make("path", "halvane"))
        self.assertIsNone(runner.find_program(self.make("opt", "halvane", executable=False)))
        self.assertIsNone(runner.find_program(os.path.join(self.dir.name, "nowhere")))

    def test_path_then_the_installed_one_beside_the_plugin(self):
        here = os.path.join(self.dir.name, "usr", "share", "halvane", "qgis", "halvane")
        os.makedirs(here)
        os.environ["PATH"] = os.path.join(self.dir.name, "empty")
        self.assertIsNone(runner.find_program(None, here))
        installed = self.make("usr", "bin", "halvane")
        self.assertEqual(runner.find_program(None, here), installed)
        on_path = self.make("path", "halvane")
        os.environ["PATH"] = os.path.dirname(on_path)
        self.assertEqual(runner.find_program("", here), on_path)


if __name__ == "__main__":
    unittest.main()
