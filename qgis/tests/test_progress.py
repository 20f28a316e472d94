"""The progress reader on both styles of the command line's stderr, fed in
pieces as a pipe delivers them."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), ".."))
from halvane.progress import ProgressReader, ticks_fraction  # noqa: E402


def read(text: str, piece: int = 1) -> ProgressReader:
    reader = ProgressReader()
    for i in range(0, len(text), piece):
        reader.feed(text[i:i + piece])
    return reader


class Ticks(unittest.TestCase):
    def test_numbers_and_dots(self):
        # GDAL's ticks: a number every 10 %, a dot for each 2.5 % between.
        self.assertEqual(ticks_fraction("0"), 0.0)
        self.assertEqual(ticks_fraction("0...10...20"), 0.2)
        self.assertEqual(ticks_fraction("0...10...20.."), 0.25)
        self.assertEqual(ticks_fraction("0...10...20...30...40...50...60...70...80...90...100"), 1.0)

    def test_not_ticks(self):
        for text in ("", "...", "mean 3.5, x", "1/4", "abc"):
            self.assertIsNone(ticks_fraction(text), text)


class StageStyle(unittest.TestCase):
    LINE1 = "1/4 Broad-scale BPI, ring of 1 to 5 cells: 0...10...20...30...40...50...60...70...80...90...100 - done in 0.4 s\n"
    LINE2 = "2/4 Fine-scale BPI, ring of 1 to 3 cells: 0...10...20"

    def test_unfinished_stage_counts_its_ticks(self):
        # Stage 2 of 4, a fifth through: (1 + 0.2) / 4.
        reader = read(self.LINE1 + self.LINE2)
        self.assertAlmostEqual(reader.percent, 30.0)
        self.assertEqual(reader.label, "Fine-scale BPI, ring of 1 to 3 cells")
        self.assertEqual(reader.lines, [])

    def test_any_chunking_gives_the_same_answer(self):
        text = self.LINE1 + self.LINE2 + "..."
        answers = {round(read(text, piece).percent, 6) for piece in (1, 2, 3, 7, 64, len(text))}
        self.assertEqual(answers, {31.875})  # (1 + 0.275) / 4

    def test_a_stage_just_opened_is_at_its_start(self):
        self.assertAlmostEqual(read(self.LINE1 + "3/4 Slope:").percent, 50.0)
        self.assertAlmostEqual(read(self.LINE1 + "3/4 Slope: 0").percent, 50.0)

    def test_last_stage_done_is_the_end(self):
        reader = read("4/4 Zones of the dictionary: 0...10...20...30...40...50...60...70...80...90...100 - done in 2.0 s\n")
        self.assertAlmostEqual(reader.percent, 100.0)

    def test_stopped_stage_keeps_its_progress(self):
        reader = read("3/5 Rugosity: 0...10\n")
        self.assertAlmostEqual(reader.percent, 100.0 * 2.1 / 5)

    def test_errors_and_messages_are_lines_not_progress(self):
        text = ("1/2 Slope: 0...10\nhalvane classify: x.tif: no such file or folder\n"
                "mean 1.5, standard deviation 2\n")
        reader = read(text, 5)
        reader.finish()
        self.assertAlmostEqual(reader.percent, 5.0)
        self.assertEqual(reader.lines, ["halvane classify: x.tif: no such file or folder",
                                        "mean 1.5, standard deviation 2"])

    def test_bare_ticks(self):
        self.assertAlmostEqual(read("0...10...20...30.").percent, 32.5)
        self.assertAlmostEqual(read("0...10...20...30...40...50...60...70...80...90...100 - done.\n").percent, 100.0)


class BarStyle(unittest.TestCase):
    def test_bar_lines(self):
        reader = read("halvane bpi [########----------------] 12/30  Computing\n", 4)
        self.assertAlmostEqual(reader.percent, 40.0)
        self.assertEqual(reader.label, "halvane bpi Computing")

    def test_redrawn_in_place(self):
        reader = read("Processing [#---] 1/6  Start\rProcessing [####] 5/6  Almost\r")
        self.assertAlmostEqual(reader.percent, 100.0 * 5 / 6)
        self.assertEqual(reader.label, "Processing Almost")

    def test_a_bar_is_read_when_its_line_is_whole(self):
        reader = read("Processing [#---] 1/4  One\nProcessing [##--] 2/4  Tw")
        self.assertAlmostEqual(reader.percent, 25.0)
        reader.feed("o\n")
        self.assertAlmostEqual(reader.percent, 50.0)
        self.assertEqual(reader.label, "Processing Two")

    def test_position_beyond_range_is_clamped(self):
        self.assertAlmostEqual(read("x [####] 7/5\n").percent, 100.0)
        self.assertIsNone(read("x [] 3/0\n").percent)

    def test_feed_tells_only_changes(self):
        reader = ProgressReader()
        self.assertIsNone(reader.feed("a message\n"))
        self.assertEqual(reader.feed("t [#-] 1/2\n"), 50.0)
        self.assertIsNone(reader.feed("t [#-] 1/2\n"))


if __name__ == "__main__":
    unittest.main()
