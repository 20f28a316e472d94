// The command line's stage bars as a terminal sees them: redrawn in place,
// never running back over several passes of the engine, and ended with a line
// break before anything else is printed, also when the run stops half-way.

#include <gtest/gtest.h>

#include <sstream>

#include "platform/reporting/CommandLineStyle.h"

namespace halvane::reporting {
namespace {

// The percent each redraw of the terminal's line shows, in order.
std::vector<int> Percents(const std::string& text) {
    std::vector<int> percents;
    for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
        percents.push_back(std::stoi(text.substr(at - 3, 3)));
    }
    return percents;
}

TEST(StageBarsTest, TerminalBarsRedrawInPlaceOnlyForwardAndEndTheirLine) {
    std::ostringstream out;
    {
        StageBars bars(out, {"bpi", false, false, true}, 2);
        bars.Begin("First");
        // Two passes of four blocks: the second starts again from its first block.
        for (int pass = 0; pass < 2; ++pass) {
            for (int done = 1; done <= 4; ++done) bars.Pass(done, 4);
        }
        bars.Begin("Second");
        bars.Fraction(0.5);
        bars.Fraction(0.25);  // a step back is not drawn
        bars.Stop();
    }
    const std::string text = out.str();
    const std::size_t firstEnd = text.find('\n');
    ASSERT_NE(firstEnd, std::string::npos);
    const std::string first = text.substr(0, firstEnd);
    const std::string second = text.substr(firstEnd + 1);
    // First: 0, then 90% of the way over each pass's share of what is left,
    // then 100 with its seconds when the next stage begins.
    const double afterOne = 0.9;
    const double afterTwo = afterOne + (1 - afterOne) * 0.9;
    EXPECT_EQ(Percents(first),
              (std::vector<int>{0, 23, 45, 68, 90, 92, 95, 97, static_cast<int>(afterTwo * 100 + .5),
                                100}));
    EXPECT_EQ(first.substr(first.size() - 2), " s");
    EXPECT_EQ(first.find("  1/2  First"), 1u);
    // Second: 0, 50, and the line ends where it stopped, without 100.
    EXPECT_EQ(Percents(second), (std::vector<int>{0, 50}));
    EXPECT_EQ(second.back(), '\n');
    EXPECT_EQ(second.find('\n'), second.size() - 1);
}

TEST(StageBarsTest, QuietShowsNothingAndAStopRequestEndsTheRunAtTheNextStep) {
    std::ostringstream out;
    StageBars bars(out, {"classify", false, true, false}, 1);
    bars.Begin("Only");
    bars.Pass(1, 2);
    RequestStop(15);
    try {
        bars.Pass(2, 2);
        ADD_FAILURE() << "the stop request was not noticed";
    } catch (const runtime::RunStopped& stop) {
        EXPECT_EQ(stop.signal, 15);
    }
    ClearStopRequest();
    bars.End();
    EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace halvane::reporting
