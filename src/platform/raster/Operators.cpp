#include "platform/raster/Operators.h"

#include <gdal.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/runtime/Convert.h"

namespace halvane::raster {
namespace {

constexpr double kNoData = std::numeric_limits<double>::quiet_NaN();

// A cell-wise operator over N inputs.
template <std::size_t N, class F>
class FunctionNode final : public CellwiseNode {
public:
    explicit FunctionNode(F f) : f_(std::move(f)) {}

    void ApplyRun(const double* const* in, double* out, std::int64_t n) const override {
        Apply(in, out, n, std::make_index_sequence<N>());
    }

private:
    template <std::size_t... K>
    HALVANE_CELL_LOOP void Apply(const double* const* in, double* out, std::int64_t n,
                                 std::index_sequence<K...>) const {
        for (std::int64_t i = 0; i < n; ++i) out[i] = f_(in[K][i]...);
    }

    F f_;
};

// Grid, cell type and spatial reference of a node over these inputs; a node
// whose inputs are all scalars is a scalar itself.
void Place(Node& node, const std::vector<NodePtr>& inputs) {
    node.children = inputs;
    node.scalar = true;
    for (const NodePtr& input : inputs) {
        if (input->IsScalar()) continue;
        if (node.scalar) {
            node.grid = input->grid;
            node.spatialReference = input->spatialReference;
            node.scalar = false;
        } else {
            node.grid = CombineGrids(node.grid, input->grid);
        }
    }
}

template <std::size_t N, class F>
std::shared_ptr<Node> MakeCellwise(std::array<NodePtr, N> inputs, bool integer, F f) {
    auto node = std::make_shared<FunctionNode<N, F>>(f);
    Place(*node, std::vector<NodePtr>(inputs.begin(), inputs.end()));
    node->integer = integer;
    if (node->scalar) {
        std::array<double, N> values{};
        for (std::size_t k = 0; k < N; ++k) values[k] = inputs[k]->value;
        node->value = std::apply(f, values);
        node->low = node->high = node->value;
    }
    return node;
}

// Narrows the range a node's values lie in; an undefined bound (infinity
// times zero, say) leaves it unknown.
NodePtr Within(std::shared_ptr<Node> node, double low, double high) {
    if (!node->scalar && !std::isnan(low) && !std::isnan(high)) {
        node->low = low;
        node->high = high;
    }
    return node;
}

class StoredNode final : public Node {
public:
    explicit StoredNode(StoredBand band) : band_(std::move(band)) {}

    bool IsRead() const override { return true; }

    void Compute(const Window& window, EvalContext& context, double* out) const override {
        std::fill(out, out + window.Cells(), kNoData);
        const std::int64_t c0 = std::max<std::int64_t>(window.col0, 0);
        const std::int64_t r0 = std::max<std::int64_t>(window.row0, 0);
        const std::int64_t c1 = std::min(window.col0 + window.cols, grid.cols);
        const std::int64_t r1 = std::min(window.row0 + window.rows, grid.rows);
        if (c0 >= c1 || r0 >= r1) return;
        Read({c0, r0, c1 - c0, r1 - r0}, c1 - c0, r1 - r0, window.cols, context,
             out + (r0 - window.row0) * window.cols + (c0 - window.col0));
    }

    // GDAL picks the same cells, and reads them from an overview when the
    // file has one.
    void ComputeSampled(const Window& window, std::int64_t cols, std::int64_t rows,
                        EvalContext& context, double* out) const override {
        Read(window, cols, rows, cols, context, out);
    }

private:
    // The cells of `window` (within the grid) at cols x rows into out, whose
    // rows are `stride` values apart.
    void Read(const Window& window, std::int64_t cols, std::int64_t rows, std::int64_t stride,
              EvalContext& context, double* out) const {
        auto dataset = static_cast<GDALDatasetH>(context.DatasetHandle(band_.path));
        GDALRasterIOExtraArg extra;
        INIT_RASTERIO_EXTRA_ARG(extra);
        extra.eResampleAlg = GRIORA_NearestNeighbour;
        const CPLErr err = GDALRasterIOEx(
            GDALGetRasterBand(dataset, 1), GF_Read, static_cast<int>(window.col0),
            static_cast<int>(window.row0), static_cast<int>(window.cols),
            static_cast<int>(window.rows), out, static_cast<int>(cols), static_cast<int>(rows),
            GDT_Float64, sizeof(double), static_cast<GSpacing>(sizeof(double) * stride), &extra);
        if (err != CE_None) {
            throw EngineFailure("Cannot read raster '" + band_.path + "': " + CPLGetLastErrorMsg());
        }
        if (!band_.hasNoData) return;
        for (std::int64_t r = 0; r < rows; ++r) NoDataToNaN(out + r * stride, cols, band_.noData);
    }

    HALVANE_CELL_LOOP static void NoDataToNaN(double* row, std::int64_t cols, double noData) {
        for (std::int64_t c = 0; c < cols; ++c) row[c] = row[c] == noData ? kNoData : row[c];
    }

    StoredBand band_;
};

class ShiftNode final : public Node {
public:
    const NodePtr* SameCellsAs() const override { return &children[0]; }

    void Compute(const Window& window, EvalContext& context, double* out) const override {
        // Same cells, other place: the child's indices are this node's indices.
        Block block = context.Get(children[0], window);
        std::copy(block->begin(), block->end(), out);
    }
};

// The mean over a ring inner < d <= outer (in cells) around every cell, from
// per-row prefix sums of values and valid counts: O(outer) per cell.
class FocalMeanNode final : public Node {
public:
    FocalMeanNode(double inner, double outer) {
        const double inner2 = inner * inner;
        const double outer2 = outer * outer;
        reach_ = static_cast<std::int64_t>(std::floor(outer));
        for (std::int64_t dy = -reach_; dy <= reach_; ++dy) {
            const double dy2 = static_cast<double>(dy * dy);
            spans_.push_back({Widest(outer2, dy2), Widest(inner2, dy2)});
            const auto [wide, narrow] = spans_.back();
            if (wide >= 0) ringCells_ += 2 * wide + 1 - (narrow >= 0 ? 2 * narrow + 1 : 0);
        }
    }

    void Compute(const Window& window, EvalContext& context, double* out) const override {
        // Nothing lies farther from a cell than the grid is wide or high, so a
        // ring wider than the grid reads no halo beyond that: a radius in the
        // thousands over a small grid would otherwise want gigabytes per tile.
        const std::int64_t reach = std::min(reach_, std::max(grid.cols, grid.rows));
        const std::int64_t width = window.cols + 2 * reach;
        const std::int64_t height = window.rows + 2 * reach;
        Block source =
            context.Get(children[0], {window.col0 - reach, window.row0 - reach, width, height});
        // Away from gaps and edges every ring is whole: its count is known
        // and only the sums need running.
        const bool whole =
            std::none_of(source->begin(), source->end(), [](double v) { return std::isnan(v); });
        const auto prefixes = static_cast<std::size_t>((width + 1) * height);
        double* sums = ThreadBuffer<double, Scratch::kRowSums>(prefixes);
        std::int64_t* counts =
            whole ? nullptr : ThreadBuffer<std::int64_t, Scratch::kRowCounts>(prefixes);
        for (std::int64_t r = 0; r < height; ++r) {
            const double* row = source->data() + r * width;
            double* s = sums + r * (width + 1);
            s[0] = 0.0;
            if (whole) {
                for (std::int64_t c = 0; c < width; ++c) s[c + 1] = s[c] + row[c];
                continue;
            }
            std::int64_t* n = counts + r * (width + 1);
            n[0] = 0;
            for (std::int64_t c = 0; c < width; ++c) {
                const bool valid = !std::isnan(row[c]);
                s[c + 1] = s[c] + (valid ? row[c] : 0.0);
                n[c + 1] = n[c] + (valid ? 1 : 0);
            }
        }
        const auto cols = static_cast<std::size_t>(window.cols);
        double* total = ThreadBuffer<double, Scratch::kRingSums>(cols);
        std::int64_t* valid = ThreadBuffer<std::int64_t, Scratch::kRingCounts>(cols);
        for (std::int64_t r = 0; r < window.rows; ++r) {
            std::fill_n(total, cols, 0.0);
            std::fill_n(valid, cols, whole ? ringCells_ : 0);
            for (std::int64_t dy = -reach; dy <= reach; ++dy) {
                // Past the halo every prefix is flat (no valid cells), so
                // clamping a span to it leaves every sum and count as it was.
                const std::int64_t outer = std::min(spans_[dy + reach_].first, reach);
                const std::int64_t inner = std::min(spans_[dy + reach_].second, reach);
                if (outer < 0) continue;
                const std::int64_t offset = (r + reach + dy) * (width + 1) + reach;
                AddSpan(total, sums + offset, window.cols, outer, inner);
                if (!whole) AddSpan(valid, counts + offset, window.cols, outer, inner);
            }
            Divide(total, valid, window.cols, out + r * window.cols);
        }
    }

private:
    // total[c] += the sum over the row's span c - outer .. c + outer, less
    // the one over c - inner .. c + inner, from the row's prefix sums s.
    template <class T>
    HALVANE_CELL_LOOP static void AddSpan(T* total, const T* s, std::int64_t cols,
                                          std::int64_t outer, std::int64_t inner) {
        for (std::int64_t c = 0; c < cols; ++c) total[c] += s[c + outer + 1] - s[c - outer];
        if (inner < 0) return;
        for (std::int64_t c = 0; c < cols; ++c) total[c] -= s[c + inner + 1] - s[c - inner];
    }

    HALVANE_CELL_LOOP static void Divide(const double* total, const std::int64_t* valid,
                                         std::int64_t cols, double* out) {
        for (std::int64_t c = 0; c < cols; ++c) {
            out[c] = valid[c] > 0 ? total[c] / static_cast<double>(valid[c]) : kNoData;
        }
    }

    // The largest dx with dx^2 + dy^2 <= limit2, or -1 when there is none.
    static std::int64_t Widest(double limit2, double dy2) {
        if (dy2 > limit2) return -1;
        auto dx = static_cast<std::int64_t>(std::floor(std::sqrt(limit2 - dy2)));
        while (static_cast<double>((dx + 1) * (dx + 1)) + dy2 <= limit2) ++dx;
        while (dx >= 0 && static_cast<double>(dx * dx) + dy2 > limit2) --dx;
        return dx;
    }

    std::int64_t reach_ = 0;
    std::int64_t ringCells_ = 0;  // in a ring that lies whole within valid cells
    std::vector<std::pair<std::int64_t, std::int64_t>> spans_;  // outer, inner half-widths per dy
};

double Cubic(double t) {
    // Cubic convolution kernel with a = -0.5.
    constexpr double a = -0.5;
    t = std::abs(t);
    if (t <= 1.0) return ((a + 2.0) * t - (a + 3.0)) * t * t + 1.0;
    if (t < 2.0) return ((a * t - 5.0 * a) * t + 8.0 * a) * t - 4.0 * a;
    return 0.0;
}

class ResampleNode final : public Node {
public:
    explicit ResampleNode(ResampleMethod method) : method_(method) {}

    void Compute(const Window& window, EvalContext& context, double* out) const override {
        const Grid& g = children[0]->grid;
        const std::int64_t before = method_ == ResampleMethod::kCubic ? 1 : 0;
        const std::int64_t after = method_ == ResampleMethod::kNearest ? 0
                                   : method_ == ResampleMethod::kCubic ? 2
                                                                       : 1;
        // Source position of every output centre, in source cell units (centre of cell i at i).
        std::vector<double> xs(static_cast<std::size_t>(window.cols));
        std::vector<double> ys(static_cast<std::size_t>(window.rows));
        for (std::int64_t j = 0; j < window.cols; ++j) {
            xs[j] =
                (grid.left + (static_cast<double>(window.col0 + j) + 0.5) * grid.cellX - g.left) /
                    g.cellX -
                0.5;
        }
        for (std::int64_t i = 0; i < window.rows; ++i) {
            ys[i] =
                (g.top - (grid.top - (static_cast<double>(window.row0 + i) + 0.5) * grid.cellY)) /
                    g.cellY -
                0.5;
        }
        const std::int64_t c0 = static_cast<std::int64_t>(std::floor(xs.front())) - before;
        const std::int64_t c1 = static_cast<std::int64_t>(std::floor(xs.back() + 0.5)) + after;
        const std::int64_t r0 = static_cast<std::int64_t>(std::floor(ys.front())) - before;
        const std::int64_t r1 = static_cast<std::int64_t>(std::floor(ys.back() + 0.5)) + after;
        const Window source{c0, r0, c1 - c0 + 1, r1 - r0 + 1};
        Block block = context.Get(children[0], source);
        const double* src = block->data();
        auto at = [&](std::int64_t col, std::int64_t row) {
            return src[(row - r0) * source.cols + (col - c0)];
        };
        for (std::int64_t i = 0; i < window.rows; ++i) {
            const double y = ys[i];
            const auto iy = static_cast<std::int64_t>(std::floor(y));
            const double ty = y - static_cast<double>(iy);
            for (std::int64_t j = 0; j < window.cols; ++j) {
                const double x = xs[j];
                const auto ix = static_cast<std::int64_t>(std::floor(x));
                const double tx = x - static_cast<double>(ix);
                const double nearest = at(static_cast<std::int64_t>(std::floor(x + 0.5)),
                                          static_cast<std::int64_t>(std::floor(y + 0.5)));
                double value = nearest;
                if (method_ == ResampleMethod::kBilinear) {
                    const double v00 = at(ix, iy), v10 = at(ix + 1, iy);
                    const double v01 = at(ix, iy + 1), v11 = at(ix + 1, iy + 1);
                    value =
                        (v00 * (1 - tx) + v10 * tx) * (1 - ty) + (v01 * (1 - tx) + v11 * tx) * ty;
                } else if (method_ == ResampleMethod::kCubic) {
                    value = 0.0;
                    for (std::int64_t m = -1; m <= 2; ++m) {
                        double line = 0.0;
                        for (std::int64_t n = -1; n <= 2; ++n) {
                            line += at(ix + n, iy + m) * Cubic(tx - static_cast<double>(n));
                        }
                        value += line * Cubic(ty - static_cast<double>(m));
                    }
                }
                // A missing neighbour (NoData or beyond the edge) falls back to nearest.
                out[i * window.cols + j] = std::isnan(value) ? nearest : value;
            }
        }
    }

private:
    ResampleMethod method_;
};

class SlopeNode final : public Node {
public:
    void Compute(const Window& window, EvalContext& context, double* out) const override {
        const std::int64_t width = window.cols + 2;
        Block block =
            context.Get(children[0], {window.col0 - 1, window.row0 - 1, width, window.rows + 2});
        const double* z = block->data();
        const double toDegrees = 180.0 / M_PI;
        for (std::int64_t i = 0; i < window.rows; ++i) {
            for (std::int64_t j = 0; j < window.cols; ++j) {
                const double* centre = z + (i + 1) * width + (j + 1);
                const double e = *centre;
                if (std::isnan(e)) {
                    out[i * window.cols + j] = kNoData;
                    continue;
                }
                // A neighbour beyond the edge or without data takes the centre's value.
                auto at = [&](std::int64_t di, std::int64_t dj) {
                    const double v = centre[di * width + dj];
                    return std::isnan(v) ? e : v;
                };
                const double a = at(-1, -1), b = at(-1, 0), c = at(-1, 1);
                const double d = at(0, -1), f = at(0, 1);
                const double g = at(1, -1), h = at(1, 0), k = at(1, 1);
                const double dzdx = ((c + 2 * f + k) - (a + 2 * d + g)) / (8 * grid.cellX);
                const double dzdy = ((g + 2 * h + k) - (a + 2 * b + c)) / (8 * grid.cellY);
                out[i * window.cols + j] = std::atan(std::hypot(dzdx, dzdy)) * toDegrees;
            }
        }
    }
};

void RequireRaster(const NodePtr& operand, const char* function) {
    if (operand->IsScalar()) {
        throw EngineFailure(std::string("Map algebra: ") + function +
                            " needs a raster, not a number");
    }
}

// 1 / v for a number v that is a power of two whose reciprocal a double holds
// exactly, and 0 for anything else: dividing by v is multiplying by it then.
double ExactReciprocal(const Node& divisor) {
    if (!divisor.IsScalar() || !std::isfinite(divisor.value) || divisor.value == 0.0) return 0.0;
    int exponent = 0;
    if (std::abs(std::frexp(divisor.value, &exponent)) != 0.5) return 0.0;
    const double reciprocal = 1.0 / divisor.value;
    return std::isfinite(reciprocal) && reciprocal * divisor.value == 1.0 ? reciprocal : 0.0;
}

}  // namespace

NodePtr MakeStored(const StoredBand& band) {
    auto node = std::make_shared<StoredNode>(band);
    node->grid = band.grid;
    node->integer = band.integer;
    node->spatialReference = band.spatialReference;
    node->low = band.low;
    node->high = band.high;
    return node;
}

NodePtr MakeScalar(double value, bool integer) {
    return MakeCellwise<0>({}, integer, [value]() { return value; });
}

NodePtr MakeUnary(UnaryOp op, NodePtr operand) {
    const bool integer = operand->integer;
    switch (op) {
        case UnaryOp::kInt: {
            const double low = std::trunc(operand->low), high = std::trunc(operand->high);
            return Within(
                MakeCellwise<1>({std::move(operand)}, true, [](double x) { return std::trunc(x); }),
                low, high);
        }
        case UnaryOp::kSqr: {
            const double low = operand->low, high = operand->high;
            const double top = std::max(low * low, high * high);
            return Within(
                MakeCellwise<1>({std::move(operand)}, integer, [](double x) { return x * x; }),
                low <= 0.0 && high >= 0.0 ? 0.0 : std::min(low * low, high * high), top);
        }
        case UnaryOp::kSqrt:
            // Computed before the choice, so that the loop vectorizes: the
            // root of a negative is NaN, as its result is.
            return MakeCellwise<1>({std::move(operand)}, false, [](double x) {
                const double root = std::sqrt(x);
                return x < 0.0 ? kNoData : root;
            });
    }
    return nullptr;
}

NodePtr MakeBinary(const std::string& op, NodePtr lhs, NodePtr rhs) {
    const bool integer = lhs->integer && rhs->integer;
    const double a0 = lhs->low, a1 = lhs->high, b0 = rhs->low, b1 = rhs->high;
    std::array<NodePtr, 2> in{std::move(lhs), std::move(rhs)};
    auto compare = [&](auto test) {
        return Within(MakeCellwise<2>(std::move(in), true,
                                      [test](double a, double b) {
                                          return std::isnan(a) || std::isnan(b)
                                                     ? kNoData
                                                     : (test(a, b) ? 1.0 : 0.0);
                                      }),
                      0.0, 1.0);
    };
    if (op == "+") {
        return Within(MakeCellwise<2>(std::move(in), integer, std::plus<>()), a0 + b0, a1 + b1);
    }
    if (op == "-") {
        return Within(MakeCellwise<2>(std::move(in), integer, std::minus<>()), a0 - b1, a1 - b0);
    }
    if (op == "*") {
        const double products[] = {a0 * b0, a0 * b1, a1 * b0, a1 * b1};
        const bool defined = std::ranges::none_of(products, [](double p) { return std::isnan(p); });
        return Within(MakeCellwise<2>(std::move(in), integer, std::multiplies<>()),
                      defined ? std::ranges::min(products) : kNoData,
                      defined ? std::ranges::max(products) : kNoData);
    }
    if (op == "/") {
        if (const double reciprocal = ExactReciprocal(*in[1]); reciprocal != 0.0) {
            // The same correctly rounded quotient, for a fraction of a division's time.
            return MakeCellwise<1>({std::move(in[0])}, false,
                                   [reciprocal](double a) { return a * reciprocal; });
        }
        // The quotient is computed before the choice, so that the loop vectorizes.
        return MakeCellwise<2>(std::move(in), false, [](double a, double b) {
            const double quotient = a / b;
            return b == 0.0 ? kNoData : quotient;
        });
    }
    if (op == "<") return compare(std::less<>());
    if (op == "<=") return compare(std::less_equal<>());
    if (op == ">") return compare(std::greater<>());
    if (op == ">=") return compare(std::greater_equal<>());
    throw EngineFailure("Map algebra: unknown operator '" + op + "'");
}

NodePtr MakeCon(NodePtr condition, NodePtr whenTrue, NodePtr whenFalse) {
    const bool integer = whenTrue->integer && whenFalse->integer;
    const double low = std::min(whenTrue->low, whenFalse->low);
    const double high = std::max(whenTrue->high, whenFalse->high);
    return Within(
        MakeCellwise<3>({std::move(condition), std::move(whenTrue), std::move(whenFalse)}, integer,
                        [](double c, double a, double b) {
                            return std::isnan(c) ? kNoData : (c != 0.0 ? a : b);
                        }),
        low, high);
}

class SumNode final : public CellwiseNode {
public:
    void ApplyRun(const double* const* in, double* out, std::int64_t n) const override {
        Add(in, children.size(), out, n);
    }

private:
    HALVANE_CELL_LOOP static void Add(const double* const* in, std::size_t terms, double* out,
                                      std::int64_t n) {
        std::fill_n(out, n, 0.0);
        for (std::size_t k = 0; k < terms; ++k) {
            for (std::int64_t i = 0; i < n; ++i) out[i] += in[k][i];
        }
    }
};

NodePtr MakeSum(std::vector<NodePtr> operands) {
    auto node = std::make_shared<SumNode>();
    node->integer = std::ranges::all_of(operands, [](const NodePtr& n) { return n->integer; });
    Place(*node, operands);
    node->low = node->high = 0.0;
    for (const NodePtr& operand : operands) {
        node->low += operand->low;
        node->high += operand->high;
        if (node->scalar) node->value += operand->value;
    }
    if (std::isnan(node->low) || std::isnan(node->high)) {
        node->low = -std::numeric_limits<double>::infinity();
        node->high = std::numeric_limits<double>::infinity();
    }
    return node;
}

NodePtr MakeFocalMean(NodePtr operand, double inner, double outer) {
    RequireRaster(operand, "Focalmean");
    if (!(inner >= 0.0) || !(outer > inner)) {
        throw EngineFailure("Map algebra: Focalmean needs 0 <= inner radius < outer radius, not " +
                            runtime::CStr(inner) + " and " + runtime::CStr(outer));
    }
    if (outer > 10000.0) throw EngineFailure("Map algebra: Focalmean radius too large");
    auto node = std::make_shared<FocalMeanNode>(inner, outer);
    Place(*node, {std::move(operand)});
    node->integer = false;
    return node;
}

NodePtr MakeShift(NodePtr operand, double x, double y) {
    RequireRaster(operand, "Shift");
    auto node = std::make_shared<ShiftNode>();
    Place(*node, {std::move(operand)});
    node->integer = node->children[0]->integer;
    node->low = node->children[0]->low;
    node->high = node->children[0]->high;
    // The lower-left corner moves to (x, y).
    node->grid.left = x;
    node->grid.top = y + node->grid.cellY * static_cast<double>(node->grid.rows);
    return node;
}

NodePtr MakeResample(NodePtr operand, double cellSize, ResampleMethod method) {
    RequireRaster(operand, "Resample");
    if (!(cellSize > 0.0)) throw EngineFailure("Map algebra: Resample needs a cell size above 0");
    auto node = std::make_shared<ResampleNode>(method);
    Place(*node, {std::move(operand)});
    const Grid& source = node->children[0]->grid;
    node->integer = method == ResampleMethod::kNearest && node->children[0]->integer;
    if (method == ResampleMethod::kNearest) {
        node->low = node->children[0]->low;
        node->high = node->children[0]->high;
    }
    node->grid.cellX = cellSize;
    node->grid.cellY = cellSize;
    node->grid.cols =
        std::max<std::int64_t>(1, std::llround((source.Right() - source.left) / cellSize));
    node->grid.rows =
        std::max<std::int64_t>(1, std::llround((source.top - source.Bottom()) / cellSize));
    return node;
}

NodePtr MakeSlope(NodePtr operand) {
    RequireRaster(operand, "Slope");
    auto node = std::make_shared<SlopeNode>();
    Place(*node, {std::move(operand)});
    node->integer = false;
    return node;
}

}  // namespace halvane::raster
