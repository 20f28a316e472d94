#include "platform/raster/Engine.h"

#include <gdal.h>
#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cmath>
#include <exception>
#include <limits>
#include <map>
#include <mutex>
#include <numeric>
#include <unordered_map>

#include "platform/raster/Team.h"

namespace halvane::raster {

runtime::Failure EngineFailure(std::string description) {
    return runtime::Failure(kEngineErrorNumber, kEngineSource, std::move(description));
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) ==
               std::tolower(static_cast<unsigned char>(y));
    });
}

namespace {

constexpr double kSnap = 1e-6;             // of a cell: coordinates closer than this coincide
constexpr double kMaxSide = 2147483647.0;  // cells a side of a GDAL raster holds
constexpr std::int64_t kRun = 256;  // cells per run of a fused program: they stay in L1 cache

bool SameSize(double a, double b) { return std::abs(a - b) <= 1e-9 * std::max(a, b); }

// Whole cells from a to b on a lattice of step cell, if b - a is (nearly) whole.
bool WholeCells(double from, double to, double cell, std::int64_t& cells) {
    const double exact = (to - from) / cell;
    const double rounded = std::round(exact);
    if (std::abs(exact - rounded) > kSnap) return false;
    cells = static_cast<std::int64_t>(rounded);
    return true;
}

// The offset in cells from grid `from` to congruent grid `to`, if they are.
bool Congruent(const Grid& from, const Grid& to, std::int64_t& dc, std::int64_t& dr) {
    return SameSize(to.cellX, from.cellX) && SameSize(to.cellY, from.cellY) &&
           WholeCells(to.left, from.left, to.cellX, dc) &&
           WholeCells(from.top, to.top, to.cellY, dr);
}

}  // namespace

Grid CombineGrids(const Grid& first, const Grid& second) {
    Grid out;
    out.cellX = std::max(first.cellX, second.cellX);
    out.cellY = std::max(first.cellY, second.cellY);
    const double xmin = std::max(first.left, second.left);
    const double xmax = std::min(first.Right(), second.Right());
    const double ymax = std::min(first.top, second.top);
    const double ymin = std::max(first.Bottom(), second.Bottom());
    // Snap inwards onto the first grid's lattice at the output cell size.
    const double c0 = std::ceil((xmin - first.left) / out.cellX - kSnap);
    const double c1 = std::floor((xmax - first.left) / out.cellX + kSnap);
    const double r0 = std::ceil((first.top - ymax) / out.cellY - kSnap);
    const double r1 = std::floor((first.top - ymin) / out.cellY + kSnap);
    out.left = first.left + c0 * out.cellX;
    out.top = first.top - r0 * out.cellY;
    // Counted in doubles first: grids shifted far apart give counts (or NaN)
    // that no integer holds.
    const double cols = c1 - c0, rows = r1 - r0;
    if (!(cols > 0) || !(rows > 0)) {
        throw EngineFailure("Map algebra: the input rasters do not overlap");
    }
    if (cols > kMaxSide || rows > kMaxSide) {
        throw EngineFailure("Map algebra: the output grid would be larger than GDAL can store");
    }
    out.cols = static_cast<std::int64_t>(cols);
    out.rows = static_cast<std::int64_t>(rows);
    return out;
}

namespace {

// Beyond its own grid a node has no cells, whatever its inputs hold there:
// a ring mean next to the edge of an intersection must not see past it.
void MaskOutside(const Grid& grid, const Window& window, double* cells) {
    if (window.col0 >= 0 && window.row0 >= 0 && window.col0 + window.cols <= grid.cols &&
        window.row0 + window.rows <= grid.rows) {
        return;
    }
    for (std::int64_t i = 0; i < window.rows; ++i) {
        const std::int64_t row = window.row0 + i;
        for (std::int64_t j = 0; j < window.cols; ++j) {
            const std::int64_t col = window.col0 + j;
            if (row < 0 || row >= grid.rows || col < 0 || col >= grid.cols) {
                cells[i * window.cols + j] = std::numeric_limits<double>::quiet_NaN();
            }
        }
    }
}

}  // namespace

struct WindowKey {
    const Node* node;
    Window window;
    bool operator==(const WindowKey&) const = default;
};
struct WindowKeyHash {
    std::size_t operator()(const WindowKey& key) const {
        std::size_t h = std::hash<const void*>()(key.node);
        for (std::int64_t v :
             {key.window.col0, key.window.row0, key.window.cols, key.window.rows}) {
            h = h * 1000003u ^ std::hash<std::int64_t>()(v);
        }
        return h;
    }
};

// A fused chain of cell-wise operators: steps over runs of cells. Operands are
// inputs that come as whole blocks (stored grids, focal operators, results read
// by several parents), constants, or the registers of earlier steps.
struct FusedProgram {
    enum Kind { kInput, kConstant, kRegister };
    struct Operand {
        Kind kind;
        std::size_t index;
    };
    struct Input {
        NodePtr node;
        const Grid* asker;    // grid of the operator that reads it
        std::int64_t dc, dr;  // that grid's window, relative to the root's
    };
    struct Step {
        const CellwiseNode* node;
        std::vector<Operand> in;
    };
    std::vector<Input> inputs;
    std::vector<double> constants;
    std::vector<Step> steps;  // step i writes register i; the last is the root

    void Emit(const CellwiseNode& node, std::int64_t dc, std::int64_t dr,
              const std::unordered_map<const Node*, int>& parents) {
        Step step{&node, {}};
        for (const NodePtr& child : node.children) {
            std::int64_t cdc = 0, cdr = 0;
            const auto* cellwise = dynamic_cast<const CellwiseNode*>(child.get());
            if (child->IsScalar()) {
                constants.push_back(child->value);
                step.in.push_back({kConstant, constants.size() - 1});
            } else if (cellwise && parents.at(cellwise) <= 1 &&
                       Congruent(node.grid, child->grid, cdc, cdr)) {
                Emit(*cellwise, dc + cdc, dr + cdr, parents);
                step.in.push_back({kRegister, steps.size() - 1});
            } else {
                inputs.push_back({child, &node.grid, dc, dr});
                step.in.push_back({kInput, inputs.size() - 1});
            }
        }
        steps.push_back(std::move(step));
    }
};

namespace {

// How many parents read each node below root: only blocks read twice are kept.
std::unordered_map<const Node*, int> ParentCounts(const NodePtr& root) {
    std::unordered_map<const Node*, int> parents;
    std::unordered_map<const Node*, bool> seen;
    std::vector<const Node*> stack{root.get()};
    while (!stack.empty()) {
        const Node* node = stack.back();
        stack.pop_back();
        if (seen[node]) continue;
        seen[node] = true;
        for (const NodePtr& child : node->children) {
            ++parents[child.get()];
            stack.push_back(child.get());
        }
    }
    return parents;
}

}  // namespace

struct EvalContext::State {
    std::unordered_map<const Node*, int> parents;
    std::unordered_map<const Node*, FusedProgram> programs;
    std::unordered_map<WindowKey, Block, WindowKeyHash> shared;
    // The reads of this tile by node, for the windows near them.
    std::unordered_map<const Node*, std::vector<std::pair<Window, Block>>> reads;
    std::vector<std::unique_ptr<Cells>> pool;
    std::map<std::string, GDALDatasetH> handles;
};

EvalContext::EvalContext(const NodePtr& root) : state_(std::make_unique<State>()) {
    state_->parents = ParentCounts(root);
}

EvalContext::~EvalContext() {
    state_->shared.clear();
    state_->reads.clear();
    for (auto& [path, handle] : state_->handles) GDALClose(handle);
}

Block EvalContext::NewBlock(std::int64_t cells) {
    std::unique_ptr<Cells> buffer;
    if (state_->pool.empty()) {
        buffer = std::make_unique<Cells>();
    } else {
        buffer = std::move(state_->pool.back());
        state_->pool.pop_back();
    }
    buffer->resize(static_cast<std::size_t>(cells));
    State* state = state_.get();
    return Block(buffer.release(),
                 [state](Cells* returned) { state->pool.emplace_back(returned); });
}

void EvalContext::EndTile() {
    state_->shared.clear();
    state_->reads.clear();
}

namespace {

bool Contains(const Window& outer, const Window& inner) {
    return inner.col0 >= outer.col0 && inner.row0 >= outer.row0 &&
           inner.col0 + inner.cols <= outer.col0 + outer.cols &&
           inner.row0 + inner.rows <= outer.row0 + outer.rows;
}

bool Overlap(const Window& a, const Window& b) {
    return a.col0 < b.col0 + b.cols && b.col0 < a.col0 + a.cols && a.row0 < b.row0 + b.rows &&
           b.row0 < a.row0 + a.rows;
}

}  // namespace

Block EvalContext::ReadNear(const NodePtr& node, const Window& window) {
    std::vector<std::pair<Window, Block>>& reads = state_->reads[node.get()];
    const auto part = [&](const Window& from, const Block& cells) {
        Block out = NewBlock(window.Cells());
        for (std::int64_t i = 0; i < window.rows; ++i) {
            const double* row = cells->data() + (window.row0 - from.row0 + i) * from.cols +
                                (window.col0 - from.col0);
            std::copy_n(row, window.cols, out->data() + i * window.cols);
        }
        return out;
    };
    for (const auto& [read, cells] : reads) {
        if (Contains(read, window)) return part(read, cells);
    }
    // A window shifted against an earlier one (the rugosity's eight neighbours)
    // is likely followed by more shifted as far: read around both at once.
    Window wide = window;
    for (const auto& [read, cells] : reads) {
        if (!Overlap(read, window) || Contains(window, read)) continue;
        const std::int64_t reach =
            std::max(std::abs(read.col0 - window.col0), std::abs(read.row0 - window.row0));
        const std::int64_t col0 = std::min(read.col0, window.col0) - reach;
        const std::int64_t row0 = std::min(read.row0, window.row0) - reach;
        wide = {col0, row0,
                std::max(read.col0 + read.cols, window.col0 + window.cols) + reach - col0,
                std::max(read.row0 + read.rows, window.row0 + window.rows) + reach - row0};
        break;
    }
    Block cells = NewBlock(wide.Cells());
    node->Compute(wide, *this, cells->data());
    MaskOutside(node->grid, wide, cells->data());
    reads.emplace_back(wide, cells);
    return wide == window ? cells : part(wide, cells);
}

Block EvalContext::Get(const NodePtr& node, const Window& window) {
    if (const NodePtr* same = node->SameCellsAs()) return Get(*same, window);
    const bool keep = state_->parents[node.get()] > 1;
    if (keep) {
        auto found = state_->shared.find({node.get(), window});
        if (found != state_->shared.end()) return found->second;
        if (node->IsRead()) {
            Block block = ReadNear(node, window);
            state_->shared.emplace(WindowKey{node.get(), window}, block);
            return block;
        }
    }
    Block block = NewBlock(window.Cells());
    node->Compute(window, *this, block->data());
    MaskOutside(node->grid, window, block->data());
    if (keep) state_->shared.emplace(WindowKey{node.get(), window}, block);
    return block;
}

Block EvalContext::Fetch(const NodePtr& child, const Grid& asker, const Window& window) {
    const Grid& g = child->grid;
    std::int64_t dc = 0;
    std::int64_t dr = 0;
    if (Congruent(asker, g, dc, dr)) {
        return Get(child, {window.col0 + dc, window.row0 + dr, window.cols, window.rows});
    }
    // Different lattices: each asking cell takes the child cell under its centre.
    std::vector<std::int64_t> cols(static_cast<std::size_t>(window.cols));
    std::vector<std::int64_t> rows(static_cast<std::size_t>(window.rows));
    for (std::int64_t j = 0; j < window.cols; ++j) {
        const double x = asker.left + (static_cast<double>(window.col0 + j) + 0.5) * asker.cellX;
        cols[j] = static_cast<std::int64_t>(std::floor((x - g.left) / g.cellX));
    }
    for (std::int64_t i = 0; i < window.rows; ++i) {
        const double y = asker.top - (static_cast<double>(window.row0 + i) + 0.5) * asker.cellY;
        rows[i] = static_cast<std::int64_t>(std::floor((g.top - y) / g.cellY));
    }
    const auto [c0, c1] = std::ranges::minmax(cols);
    const auto [r0, r1] = std::ranges::minmax(rows);
    const Window source{c0, r0, c1 - c0 + 1, r1 - r0 + 1};
    Block from = Get(child, source);
    Block out = NewBlock(window.Cells());
    for (std::int64_t i = 0; i < window.rows; ++i) {
        const double* sourceRow = from->data() + (rows[i] - r0) * source.cols;
        double* outRow = out->data() + i * window.cols;
        for (std::int64_t j = 0; j < window.cols; ++j) outRow[j] = sourceRow[cols[j] - c0];
    }
    return out;
}

void* EvalContext::DatasetHandle(const std::string& path) {
    auto found = state_->handles.find(path);
    if (found != state_->handles.end()) return found->second;
    GDALDatasetH handle =
        GDALOpenEx(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr);
    if (!handle) throw EngineFailure("Cannot read raster '" + path + "'");
    state_->handles.emplace(path, handle);
    return handle;
}

namespace {

// Beyond this many operators the blocks of a 512-cell tile no longer fit in cache.
constexpr std::size_t kDeepGraph = 24;

}  // namespace

void CellwiseNode::Compute(const Window& window, EvalContext& context, double* out) const {
    context.ComputeFused(*this, window, out);
}

void EvalContext::ComputeFused(const CellwiseNode& root, const Window& window, double* out) {
    auto [found, fresh] = state_->programs.try_emplace(&root);
    FusedProgram& program = found->second;
    if (fresh) program.Emit(root, 0, 0, state_->parents);

    std::vector<Block> inputs;
    for (const FusedProgram::Input& input : program.inputs) {
        inputs.push_back(
            Fetch(input.node, *input.asker,
                  {window.col0 + input.dc, window.row0 + input.dr, window.cols, window.rows}));
    }
    const std::size_t constants = program.constants.size();
    Block runs = NewBlock(static_cast<std::int64_t>(constants + program.steps.size()) * kRun);
    for (std::size_t k = 0; k < constants; ++k) {
        std::fill_n(runs->data() + k * kRun, kRun, program.constants[k]);
    }
    double* registers = runs->data() + constants * kRun;
    std::vector<const double*> in;
    const std::int64_t cells = window.Cells();
    for (std::int64_t start = 0; start < cells; start += kRun) {
        const std::int64_t n = std::min(kRun, cells - start);
        for (std::size_t i = 0; i < program.steps.size(); ++i) {
            const FusedProgram::Step& step = program.steps[i];
            in.clear();
            for (const FusedProgram::Operand& operand : step.in) {
                switch (operand.kind) {
                    case FusedProgram::kInput:
                        in.push_back(inputs[operand.index]->data() + start);
                        break;
                    case FusedProgram::kConstant:
                        in.push_back(runs->data() + operand.index * kRun);
                        break;
                    case FusedProgram::kRegister:
                        in.push_back(registers + operand.index * kRun);
                        break;
                }
            }
            // The root writes straight into the output.
            const bool last = i + 1 == program.steps.size();
            step.node->ApplyRun(in.data(), last ? out + start : registers + i * kRun, n);
        }
    }
}

EvalSettings& Settings() {
    static EvalSettings settings;
    return settings;
}

namespace {

// The roots of one evaluation under a single node, so that the operators they
// share count all their readers and keep their blocks for the tile.
class GroupNode final : public Node {
public:
    void Compute(const Window&, EvalContext&, double*) const override {
        throw EngineFailure("A group of grids has no cells of its own");
    }
};

}  // namespace

namespace {

std::int64_t TileSize(std::size_t deepest) {
    return Settings().tileSize > 0 ? Settings().tileSize : (deepest > kDeepGraph ? 128 : 512);
}

}  // namespace

std::int64_t TileSizeFor(const std::vector<NodePtr>& roots) {
    // The statistics of a floating grid are combined tile by tile, so they
    // are the same bits only over the same tiles: a pass that stores one
    // takes the tiles it would have alone.
    const bool floating = std::ranges::any_of(roots, [](const NodePtr& r) { return !r->integer; });
    std::size_t deepest = 0;
    for (const NodePtr& root : roots) {
        if (floating && root->integer) continue;
        deepest = std::max(deepest, ParentCounts(root).size() + 1);
    }
    return TileSize(deepest);
}

std::pair<std::int64_t, std::int64_t> SharedRows(std::int64_t rows, std::int64_t tileSize) {
    if (!InTeam()) return {0, rows};
    // Whole tile rows, so that every tile is the one a lone process computes,
    // and whole file blocks (Team.h).
    const std::int64_t unit = std::lcm(tileSize, std::int64_t{kFileBlockRows});
    const std::int64_t units = (rows + unit - 1) / unit;
    const auto [first, end] = ShareOf(units, CurrentTeam()->Rank(), CurrentTeam()->Size());
    return {std::min<std::int64_t>(first * unit, rows), std::min<std::int64_t>(end * unit, rows)};
}

Team*& CurrentTeam() {
    static Team* team = nullptr;
    return team;
}

namespace {

// The first byte of every exchange: the sender is working, or has ended.
constexpr char kWorking = 'w';
constexpr char kEnded = 'e';

}  // namespace

std::vector<std::string> Exchange(const std::string& bytes) {
    std::vector<std::string> all = CurrentTeam()->AllGather(kWorking + bytes);
    for (const std::string& part : all) {
        if (part.empty() || part.front() != kWorking) {
            LeftBehind() = true;
            throw EngineFailure("Another process of the run has failed");
        }
    }
    for (std::string& part : all) part.erase(0, 1);
    return all;
}

bool& LeftBehind() {
    static bool leftBehind = false;
    return leftBehind;
}

std::vector<std::string> EndTogether(const std::string& report) {
    for (;;) {
        std::vector<std::string> all = CurrentTeam()->AllGather(kEnded + report);
        if (std::ranges::all_of(all, [](const std::string& p) { return p.front() == kEnded; })) {
            for (std::string& part : all) part.erase(0, 1);
            return all;
        }
    }
}

void EvaluateTiles(const std::vector<NodePtr>& roots,
                   const std::function<void(std::size_t, const Window&, const double*)>& sink) {
    if (roots.empty()) return;
    auto group = std::make_shared<GroupNode>();
    group->grid = roots.front()->grid;
    group->children = roots;
    for (const NodePtr& root : roots) {
        const Grid& g = root->grid;
        if (g.cols != group->grid.cols || g.rows != group->grid.rows ||
            g.left != group->grid.left || g.top != group->grid.top ||
            g.cellX != group->grid.cellX || g.cellY != group->grid.cellY) {
            throw runtime::RuntimeFailure(runtime::kInvalidProcedureCall);
        }
    }
    const Grid& grid = group->grid;
    const NodePtr groupRoot = group;
    const std::int64_t size = TileSizeFor(roots);
    const auto [firstRow, endRow] = SharedRows(grid.rows, size);
    std::vector<Window> tiles;
    for (std::int64_t row = firstRow; row < endRow; row += size) {
        for (std::int64_t col = 0; col < grid.cols; col += size) {
            tiles.push_back(
                {col, row, std::min(size, grid.cols - col), std::min(size, grid.rows - row)});
        }
    }
    const int threads = Settings().threads > 0 ? Settings().threads : omp_get_max_threads();
    std::exception_ptr failure;
    std::mutex failureLock;
    std::atomic<bool> failed{false};
    std::mutex progressLock;
    std::int64_t done = 0;
    const auto total = static_cast<std::int64_t>(tiles.size());
#pragma omp parallel num_threads(threads)
    {
        EvalContext context(groupRoot);
        // Each thread takes one run of tiles in row order. The blocks of the
        // inputs that a tile's halo shares with the tiles above and below are
        // then read and decompressed once, by the thread's own reader; handed
        // out one by one, neighbouring tiles went to both threads, and every
        // block was read twice (270 MB instead of 140 MB for the ring 1..5 of
        // 8000 x 8000). Tiles of a grid cost about the same, so the runs end
        // together.
#pragma omp for schedule(static)
        for (std::size_t t = 0; t < tiles.size(); ++t) {
            if (failed.load()) continue;
            // An exception must not leave the loop: keep the first and skip the rest.
            try {
                // Each tile starts at another of the grids, so that threads
                // writing several grids seldom wait for the same one.
                for (std::size_t j = 0; j < roots.size(); ++j) {
                    const std::size_t k = (t + j) % roots.size();
                    Block block = context.Get(roots[k], tiles[t]);
                    sink(k, tiles[t], block->data());
                }
                if (Settings().onProgress) {
                    std::lock_guard lock(progressLock);
                    Settings().onProgress(++done, total);
                }
            } catch (...) {
                std::lock_guard lock(failureLock);
                if (!failure) failure = std::current_exception();
                failed = true;
            }
            context.EndTile();
        }
    }
    if (failure) std::rethrow_exception(failure);
}

void EvaluateTiles(const NodePtr& root,
                   const std::function<void(const Window&, const double*)>& sink) {
    EvaluateTiles(std::vector<NodePtr>{root}, [&](std::size_t, const Window& tile,
                                                  const double* values) { sink(tile, values); });
}

std::vector<double> EvaluateWindow(const NodePtr& root, const Window& window) {
    EvalContext context(root);
    Block block = context.Get(root, window);
    return {block->begin(), block->end()};
}

void Node::ComputeSampled(const Window& window, std::int64_t cols, std::int64_t rows,
                          EvalContext& context, double* out) const {
    if (cols == window.cols && rows == window.rows) {
        Compute(window, context, out);
        return;
    }
    std::vector<std::int64_t> picked(static_cast<std::size_t>(cols));
    for (std::int64_t j = 0; j < cols; ++j) picked[j] = SampledIndex(j, cols, window.cols);
    for (std::int64_t i = 0; i < rows; ++i) {
        const Window row{window.col0, window.row0 + SampledIndex(i, rows, window.rows), window.cols,
                         1};
        Block cells = context.NewBlock(row.Cells());
        Compute(row, context, cells->data());
        for (std::int64_t j = 0; j < cols; ++j) out[i * cols + j] = (*cells)[picked[j]];
        context.EndTile();
    }
}

std::vector<double> EvaluateSampled(const NodePtr& root, const Window& window, std::int64_t cols,
                                    std::int64_t rows) {
    const Grid& g = root->grid;
    if (cols < 1 || rows < 1 || cols > window.cols || rows > window.rows || window.col0 < 0 ||
        window.row0 < 0 || window.col0 + window.cols > g.cols ||
        window.row0 + window.rows > g.rows) {
        throw runtime::RuntimeFailure(runtime::kInvalidProcedureCall);
    }
    EvalContext context(root);
    std::vector<double> out(static_cast<std::size_t>(cols * rows));
    root->ComputeSampled(window, cols, rows, context, out.data());
    return out;
}

}  // namespace halvane::raster
