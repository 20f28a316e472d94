// Every function and operator against plain loops written here, on small grids
// with NoData, edges and partial overlaps.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>

#include "platform/raster/MapAlgebra.h"
#include "support/GridFiles.h"

namespace halvane::raster {
namespace {

using testing::kNoData;

void ExpectCells(const std::vector<double>& actual, const std::vector<double>& expected,
                 double tolerance = 0.0) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (std::isnan(expected[i])) {
            EXPECT_TRUE(std::isnan(actual[i])) << "cell " << i << " is " << actual[i];
        } else {
            EXPECT_NEAR(actual[i], expected[i], tolerance) << "cell " << i;
        }
    }
}

class MapAlgebraTest : public ::testing::Test {
protected:
    // a: whole numbers with one hole; b: fractions with a zero and a hole.
    void SetUp() override {
        a_ = {4, -3, 2, kNoData, 0, 7, -8, 5, 1, 2, -1, 3};
        b_ = {0.5, 0, -2.25, 1, kNoData, 3.5, -0.75, 2, 10, -4, 0.25, 6};
        testing::WriteGrid(dir_ / "a.tif", grid_, a_, true);
        testing::WriteGrid(dir_ / "b.tif", grid_, b_);
        op_.BindRaster(testing::OpenRaster(dir_ / "a.tif"), "a");
        op_.BindRaster(testing::OpenRaster(dir_ / "b.tif"), "b");
    }

    std::vector<double> Run(const std::string& expression, bool integer) {
        RasterPtr result = op_.Execute(expression);
        EXPECT_EQ(result->IsInteger(), integer) << expression;
        return testing::ReadAll(result);
    }

    // f over the cells; NoData where an input that f reads is NoData.
    std::vector<double> Cellwise(const std::function<double(double, double)>& f, bool readsA = true,
                                 bool readsB = true) {
        std::vector<double> out;
        for (std::size_t i = 0; i < a_.size(); ++i) {
            const bool hole = (readsA && std::isnan(a_[i])) || (readsB && std::isnan(b_[i]));
            out.push_back(hole ? kNoData : f(a_[i], b_[i]));
        }
        return out;
    }

    testing::TempDir dir_;
    Grid grid_{1000, 2000, 10, 10, 4, 3};
    std::vector<double> a_, b_;
    RasterMapAlgebraOp op_;
};

TEST_F(MapAlgebraTest, OperatorsFollowValueTypeAndNoDataRules) {
    ExpectCells(Run("[a] + [b]", false), Cellwise([](double x, double y) { return x + y; }));
    ExpectCells(Run("[a] * 2 - 1", true),
                Cellwise([](double x, double) { return x * 2 - 1; }, true, false));
    ExpectCells(Run("[a] / 2", false),
                Cellwise([](double x, double) { return x / 2; }, true, false));
    ExpectCells(Run("[a] / [b]", false),
                Cellwise([](double x, double y) { return y == 0 ? kNoData : x / y; }));
    ExpectCells(Run("[b] - -3.25", false),
                Cellwise([](double, double y) { return y + 3.25; }, false, true));
    ExpectCells(Run("int([b] * 3 + .5)", true),
                Cellwise([](double, double y) { return std::trunc(y * 3 + .5); }, false, true));
    ExpectCells(Run("Sqr([a])", true),
                Cellwise([](double x, double) { return x * x; }, true, false));
    ExpectCells(
        Run("SQRT([b])", false),
        Cellwise([](double, double y) { return y < 0 ? kNoData : std::sqrt(y); }, false, true));
    ExpectCells(Run("con([a] >= 2, [a], 0)", true),
                Cellwise([](double x, double) { return x >= 2 ? x : 0; }, true, false));
    ExpectCells(Run("con([b] < 1, 1.5, [a])", false),
                Cellwise([](double x, double y) { return y < 1 ? 1.5 : x; }));
    ExpectCells(Run("Sum([a], [b], 1)", false),
                Cellwise([](double x, double y) { return x + y + 1; }));
    ExpectCells(Run("sum([a], [A])", true),
                Cellwise([](double x, double) { return 2 * x; }, true, false));
}

// A number that is a power of two divides by multiplying with its exact
// reciprocal: every quotient must still be the division's, to the bit.
TEST_F(MapAlgebraTest, QuotientsByPowersOfTwoAreTheDivisionsToTheBit) {
    for (const char* divisor : {"2", "-2", "0.125", "1024", "0.0009765625", "3", "0.1"}) {
        const double d = std::strtod(divisor, nullptr);
        const std::vector<double> cells = Run(std::string("[b] / ") + divisor, false);
        const std::vector<double> expected =
            Cellwise([d](double, double y) { return y / d; }, false, true);
        ASSERT_EQ(cells.size(), expected.size());
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (std::isnan(expected[i])) {
                EXPECT_TRUE(std::isnan(cells[i])) << divisor << ", cell " << i;
            } else {
                EXPECT_EQ(std::bit_cast<std::uint64_t>(cells[i]),
                          std::bit_cast<std::uint64_t>(expected[i]))
                    << divisor << ", cell " << i;
            }
        }
    }
    // Dividing by zero stays NoData.
    ExpectCells(Run("[b] / 0", false), std::vector<double>(b_.size(), kNoData));
}

TEST_F(MapAlgebraTest, ExecuteRejectsAtOnceNamingThePlaceAndProblem) {
    const std::map<std::string, std::string> cases = {
        {"sum([a]", "syntax error at the end of 'sum([a]': expected ')'"},
        {"[a] >= 1", "position 5"},
        {"Foo([a])", "unknown function 'Foo' at position 1"},
        {"[zz] + 1", "unbound raster 'zz'"},
        {"Focalmean([a], annulus, 1 5, 5)", "syntax error at position 27"},
        {"Focalmean([a], circle, 1, 5)", "annulus"},
        {"Focalmean([a], annulus, 5, 1)", "inner radius < outer radius"},
        {"Resample([a], 10, Cubik)", "unknown resampling method 'Cubik'"},
        {"Resample([a], 10, )", "expected a value"},
        {"int([a], 2)", "int takes 1 argument, not 2"},
        {"1 + 2", "has no raster"},
        {"[a] + ", "end of the expression"},
        {"[a] + 1.2.3", "malformed number"},
    };
    for (const auto& [expression, message] : cases) {
        try {
            op_.Execute(expression);
            ADD_FAILURE() << expression << " was accepted";
        } catch (const runtime::Failure& failure) {
            EXPECT_EQ(failure.number, kEngineErrorNumber);
            EXPECT_NE(failure.description.find(message), std::string::npos)
                << expression << ": " << failure.description;
        }
    }
    op_.UnbindRaster("A");  // names are matched without regard to case
    EXPECT_THROW(op_.Execute("[a] + 1"), runtime::Failure);
}

// Mean over inner < d <= outer, straight from the definition.
std::vector<double> RingMean(const Grid& g, const std::vector<double>& v, double inner,
                             double outer) {
    std::vector<double> out;
    const auto reach = static_cast<std::int64_t>(std::ceil(outer));
    for (std::int64_t r = 0; r < g.rows; ++r) {
        for (std::int64_t c = 0; c < g.cols; ++c) {
            double sum = 0;
            int n = 0;
            for (std::int64_t rr = std::max<std::int64_t>(0, r - reach);
                 rr < std::min(g.rows, r + reach + 1); ++rr) {
                for (std::int64_t cc = std::max<std::int64_t>(0, c - reach);
                     cc < std::min(g.cols, c + reach + 1); ++cc) {
                    const std::int64_t dy = rr - r, dx = cc - c;
                    const double d = std::sqrt(static_cast<double>(dx * dx + dy * dy));
                    if (d <= inner || d > outer || std::isnan(v[rr * g.cols + cc])) continue;
                    sum += v[rr * g.cols + cc];
                    ++n;
                }
            }
            out.push_back(n ? sum / n : kNoData);
        }
    }
    return out;
}

TEST(FocalMeanTest, RingMatchesDefinitionForWholeAndFractionalRadii) {
    testing::TempDir dir;
    const Grid grid{0, 230, 10, 10, 23, 19};
    std::vector<double> values = testing::Surface(grid, false);
    for (double& v : values) v = static_cast<float>(v);  // as the grid stores them
    for (std::size_t i = 0; i < values.size(); i += 7) values[i] = kNoData;
    // A block of holes wider than the smallest ring leaves cells with nothing to average.
    for (int r = 8; r < 13; ++r) {
        for (int c = 8; c < 13; ++c) values[r * 23 + c] = kNoData;
    }
    testing::WriteGrid(dir / "z.tif", grid, values);
    RasterMapAlgebraOp op;
    op.BindRaster(testing::OpenRaster(dir / "z.tif"), "z");
    for (auto [inner, outer] :
         {std::pair{1.0, 5.0}, {0.0, 1.0}, {1.5, 2.5}, {2.0, 3.2}, {0.5, 7.0}, {3.0, 5.0},
          // Rings wider than the grid: one reaching past it, one beyond it altogether.
          {15.0, 9000.0}, {8000.0, 9000.0}}) {
        const std::string expression =
            "Focalmean([z], annulus, " + std::to_string(inner) + ", " + std::to_string(outer) + ")";
        ExpectCells(testing::ReadAll(op.Execute(expression)), RingMean(grid, values, inner, outer),
                    1e-9);
    }
}

TEST(AlignmentTest, PartlyOverlappingGridsMeetOnTheFirstLattice) {
    testing::TempDir dir;
    const Grid first{0, 80, 10, 10, 10, 8};   // x 0..100, y 0..80
    const Grid second{25, 65, 20, 20, 5, 4};  // x 25..125, y -15..65
    const std::vector<double> a = testing::Surface(first, true, 1);
    const std::vector<double> b = testing::Surface(second, true, 2);
    testing::WriteGrid(dir / "a.tif", first, a);
    testing::WriteGrid(dir / "b.tif", second, b);
    RasterMapAlgebraOp op;
    op.BindRaster(testing::OpenRaster(dir / "a.tif"), "a");
    op.BindRaster(testing::OpenRaster(dir / "b.tif"), "b");
    RasterPtr sum = op.Execute("[a] + [b]");
    // Intersection x 25..100, y 0..65, snapped inwards to 20 m steps from (0, 80).
    const Grid& g = sum->GetGrid();
    EXPECT_EQ(g.left, 40);
    EXPECT_EQ(g.top, 60);
    EXPECT_EQ(g.cellX, 20);
    EXPECT_EQ(g.cols, 3);
    EXPECT_EQ(g.rows, 3);
    std::vector<double> expected;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            const double x = 50 + 20 * c, y = 50 - 20 * r;  // cell centres
            const int ac = static_cast<int>(x / 10), ar = static_cast<int>((80 - y) / 10);
            const int bc = static_cast<int>((x - 25) / 20), br = static_cast<int>((65 - y) / 20);
            expected.push_back(a[ar * 10 + ac] + b[br * 5 + bc]);
        }
    }
    ExpectCells(testing::ReadAll(sum), expected);
    // A ring mean at the edge of the intersection sees nothing beyond it.
    op.BindRaster(sum, "sum");
    ExpectCells(testing::ReadAll(op.Execute("Focalmean([sum], annulus, 0, 1.5)")),
                RingMean(g, expected, 0, 1.5), 1e-9);

    // A copy moved one cell right and down shows each cell its upper-left neighbour.
    RasterPtr shifted = op.Execute("Shift([a], 10, -10)");
    EXPECT_EQ(shifted->Extent().XMin, 10);
    EXPECT_EQ(shifted->Extent().YMin, -10);
    op.BindRaster(shifted, "shift1");
    RasterPtr difference = op.Execute("[a] - [shift1]");
    EXPECT_EQ(difference->GetGrid().cols, 9);
    EXPECT_EQ(difference->GetGrid().rows, 7);
    std::vector<double> neighbours;
    for (int r = 1; r < 8; ++r) {
        for (int c = 1; c < 10; ++c) neighbours.push_back(a[r * 10 + c] - a[(r - 1) * 10 + c - 1]);
    }
    ExpectCells(testing::ReadAll(difference), neighbours);

    RasterMapAlgebraOp apart;
    apart.BindRaster(testing::OpenRaster(dir / "a.tif"), "a");
    apart.BindRaster(apart.Execute("Shift([a], 500, 500)"), "far");
    EXPECT_THROW(apart.Execute("[a] + [far]"), runtime::Failure);
    // Found by fuzzing: a grid shifted beyond any integer count of cells is
    // refused, not counted in an overflowing integer.
    EXPECT_THROW(apart.Execute("Shift([a], 500010, 4e+21) + [a]"), runtime::Failure);
    EXPECT_THROW(apart.Execute("[a] + Shift([a], -4e+21, 0)"), runtime::Failure);
    // Also found by fuzzing: brackets nested without end are a syntax error,
    // not a stack overflow; 200 levels still parse.
    EXPECT_THROW(apart.Execute(std::string(100000, '(') + "[a]"), runtime::Failure);
    EXPECT_NO_THROW(apart.Execute(std::string(199, '(') + "[a]" + std::string(199, ')')));
    // Operators in a row build a tree as deep: 30 000 of them overflowed the
    // stack of a sanitized build; 4096 still evaluate.
    const auto chain = [](int operators) {
        std::string text = "[a]";
        for (int i = 0; i < operators; ++i) text += i % 2 ? "+[a]" : "-[a]";
        return text;
    };
    EXPECT_THROW(apart.Execute(chain(30000)), runtime::Failure);
    RasterPtr longest = apart.Execute(chain(4096));
    // 2048 subtractions and 2048 additions of the same cells leave them as they were.
    ExpectCells(testing::ReadAll(longest), testing::ReadAll(testing::OpenRaster(dir / "a.tif")));
}

TEST(ResampleTest, CubicReproducesPlanesAndFallsBackToNearest) {
    testing::TempDir dir;
    const Grid grid{0, 120, 10, 10, 12, 12};
    std::vector<double> plane;
    for (int r = 0; r < 12; ++r) {
        for (int c = 0; c < 12; ++c) plane.push_back(2.0 * (5 + 10 * c) + 3.0 * (115 - 10 * r));
    }
    plane[5 * 12 + 5] = kNoData;
    testing::WriteGrid(dir / "p.tif", grid, plane);
    RasterMapAlgebraOp op;
    op.BindRaster(testing::OpenRaster(dir / "p.tif"), "inRaster");
    for (const char* method : {"Cubic", "Bilinear", "Nearest"}) {
        RasterPtr result = op.Execute(std::string("Resample([inRaster], 20, ") + method + ")");
        ASSERT_EQ(result->GetGrid().cols, 6);
        EXPECT_EQ(result->GetGrid().top, 120);
        const bool cubic = std::string(method) == "Cubic";
        std::vector<double> expected;
        for (int r = 0; r < 6; ++r) {
            for (int c = 0; c < 6; ++c) {
                const double x = 10 + 20 * c, y = 110 - 20 * r;
                // Nearest: the cell under the centre, which lies on a corner of four.
                const int nc = static_cast<int>(x / 10), nr = static_cast<int>((120 - y) / 10);
                // Bilinear reads source cells 2c..2c+1, cubic 2c-1..2c+2 (the hole is 5,5).
                const int lo = cubic ? 1 : 0, hi = cubic ? 4 : 5;
                const bool inside = c >= lo && c <= hi && r >= lo && r <= hi;
                const bool hole =
                    cubic ? (r == 2 || r == 3) && (c == 2 || c == 3) : r == 2 && c == 2;
                const bool interpolated = std::string(method) != "Nearest" && inside && !hole;
                // Both kernels reproduce a plane exactly.
                expected.push_back(interpolated ? 2.0 * x + 3.0 * y : plane[nr * 12 + nc]);
            }
        }
        ExpectCells(testing::ReadAll(result), expected, 1e-9);
    }
}

TEST(SlopeTest, HornWithCentreValueForMissingNeighbours) {
    testing::TempDir dir;
    const Grid grid{0, 60, 10, 10, 7, 6};
    std::vector<double> z;
    for (int r = 0; r < 6; ++r) {
        for (int c = 0; c < 7; ++c) z.push_back(0.5 * 10 * c - 0.25 * 10 * r + (c == 4 ? 3 : 0));
    }
    z[2 * 7 + 2] = kNoData;
    testing::WriteGrid(dir / "z.tif", grid, z);
    RasterPtr slope = RasterSurfaceOp().Slope(testing::OpenRaster(dir / "z.tif"), 1);
    EXPECT_FALSE(slope->IsInteger());
    std::vector<double> expected;
    for (int r = 0; r < 6; ++r) {
        for (int c = 0; c < 7; ++c) {
            const double centre = z[r * 7 + c];
            auto at = [&](int dr, int dc) {
                const int rr = r + dr, cc = c + dc;
                if (rr < 0 || cc < 0 || rr >= 6 || cc >= 7 || std::isnan(z[rr * 7 + cc])) {
                    return centre;
                }
                return z[rr * 7 + cc];
            };
            const double gx =
                (at(-1, 1) + 2 * at(0, 1) + at(1, 1) - at(-1, -1) - 2 * at(0, -1) - at(1, -1)) / 80;
            const double gy =
                (at(1, -1) + 2 * at(1, 0) + at(1, 1) - at(-1, -1) - 2 * at(-1, 0) - at(-1, 1)) / 80;
            expected.push_back(std::isnan(centre)
                                   ? kNoData
                                   : std::atan(std::sqrt(gx * gx + gy * gy)) * 180 / M_PI);
        }
    }
    const std::vector<double> cells = testing::ReadAll(slope);
    ExpectCells(cells, expected, 1e-9);
    // Away from the step and the hole the plane's own slope shows.
    EXPECT_NEAR(cells[4 * 7 + 1], std::atan(std::hypot(0.5, 0.25)) * 180 / M_PI, 1e-9);
}

}  // namespace
}  // namespace halvane::raster
