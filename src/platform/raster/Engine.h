#pragma once
// The evaluation engine under the map algebra: a graph of operators, each with
// the grid it produces, evaluated tile by tile with the halo each operator
// needs. Cells are doubles while computed; NaN is NoData.

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/runtime/Failure.h"

// Cell loops marked so are also compiled for the wider vector units of newer
// processors, the one to run picked as the program starts. Each operation is
// still the same correctly rounded one (nothing is fused or reordered), so the
// cells are the same bits on every processor; only more go per instruction.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__)
#define HALVANE_CELL_LOOP \
    __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define HALVANE_CELL_LOOP
#endif

namespace halvane::raster {

// The number the engine's failures carry, as a platform component reports an
// unspecified failure.
inline constexpr std::int32_t kEngineErrorNumber = -2147467259;
inline constexpr const char* kEngineSource = "Halvane raster engine";

runtime::Failure EngineFailure(std::string description);

bool EqualsNoCase(std::string_view a, std::string_view b);

// Cell lattice of a grid: upper-left corner, cell sizes, and size in cells.
struct Grid {
    double left = 0.0;
    double top = 0.0;
    double cellX = 1.0;
    double cellY = 1.0;
    std::int64_t cols = 0;
    std::int64_t rows = 0;

    double Right() const { return left + cellX * static_cast<double>(cols); }
    double Bottom() const { return top - cellY * static_cast<double>(rows); }
    std::int64_t Cells() const { return cols * rows; }
};

// A rectangle of cells in a grid's own indices; it may reach beyond the grid,
// where every cell is NoData.
struct Window {
    std::int64_t col0 = 0;
    std::int64_t row0 = 0;
    std::int64_t cols = 0;
    std::int64_t rows = 0;

    std::int64_t Cells() const { return cols * rows; }
    bool operator==(const Window&) const = default;
};

// The output of an expression covers the intersection of its inputs at the
// largest input cell size, on the lattice of the first one. Fails when the
// inputs do not overlap.
Grid CombineGrids(const Grid& first, const Grid& second);

class EvalContext;
class Node;
using NodePtr = std::shared_ptr<const Node>;

class Node {
public:
    virtual ~Node() = default;

    // Fills out (window.Cells() values, row by row) with the cells of this
    // node in its own grid.
    virtual void Compute(const Window& window, EvalContext& context, double* out) const = 0;

    // Fills out (cols x rows values, row by row) with the cells of `window`,
    // which lies within the grid, thinned out to cols x rows: each output cell
    // takes the cell under its centre. A drawing of a large grid needs a few
    // cells of many, so this computes only the rows it keeps.
    virtual void ComputeSampled(const Window& window, std::int64_t cols, std::int64_t rows,
                                EvalContext& context, double* out) const;

    // A node without a grid stands for one value on every cell.
    bool IsScalar() const { return scalar; }

    // The node whose cells these are, index for index, when this node only
    // moves them (a shift): the evaluator then hands out that node's blocks.
    virtual const NodePtr* SameCellsAs() const { return nullptr; }
    // True when the cells are read from storage: a cell costs little next to a
    // request, so nearby windows of one tile are served from one wider read.
    virtual bool IsRead() const { return false; }

    Grid grid;
    bool integer = false;
    bool scalar = false;
    double value = 0.0;  // of a scalar
    // Every value of the node lies within [low, high], infinite where the
    // operators cannot tell; an integer grid is stored in the smallest cell
    // type that holds this range.
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    std::shared_ptr<const std::string> spatialReference;  // WKT, may be empty
    std::vector<NodePtr> children;
};

// An operator that works cell by cell on inputs over its own grid. Chains of
// them are fused: evaluated a short run of cells at a time through every
// operator, so the intermediate values stay in the processor's cache.
class CellwiseNode : public Node {
public:
    // out[i] from in[k][i], k over the children, for n cells.
    virtual void ApplyRun(const double* const* in, double* out, std::int64_t n) const = 0;

    void Compute(const Window& window, EvalContext& context, double* out) const final;
};

// Leaves new elements unset: every node writes each cell of its block, and
// a vector clearing them first did so for megabytes a tile.
template <class T>
struct UnsetAllocator : std::allocator<T> {
    template <class U>
    struct rebind {
        using other = UnsetAllocator<U>;
    };
    UnsetAllocator() = default;
    template <class U>
    UnsetAllocator(const UnsetAllocator<U>&) noexcept {}
    template <class U>
    void construct(U* place) noexcept {
        ::new (static_cast<void*>(place)) U;
    }
    template <class U, class... Args>
    void construct(U* place, Args&&... args) {
        ::new (static_cast<void*>(place)) U(std::forward<Args>(args)...);
    }
};
using Cells = std::vector<double, UnsetAllocator<double>>;

// A block of cells handed between nodes; shared when a node feeds several.
using Block = std::shared_ptr<Cells>;

// Per-thread state of one evaluation: dataset handles, a pool of buffers and
// the blocks of nodes that feed more than one parent.
class EvalContext {
public:
    explicit EvalContext(const NodePtr& root);
    ~EvalContext();
    EvalContext(const EvalContext&) = delete;
    EvalContext& operator=(const EvalContext&) = delete;

    // node's cells over window in node's grid.
    Block Get(const NodePtr& node, const Window& window);
    // child's cells at the centres of window's cells in grid `asker`.
    Block Fetch(const NodePtr& child, const Grid& asker, const Window& window);

    Block NewBlock(std::int64_t cells);
    // Forgets the shared blocks: called between tiles to bound memory.
    void EndTile();

    // Opaque per-thread handle cache for dataset reads.
    void* DatasetHandle(const std::string& path);

    // Evaluates node fused with the cell-wise operators below it that feed
    // only it and share its lattice.
    void ComputeFused(const CellwiseNode& node, const Window& window, double* out);

private:
    // node's cells over window, from a read of this tile that holds them, else
    // from a new read, wider when it is near an earlier one.
    Block ReadNear(const NodePtr& node, const Window& window);

    struct State;
    std::unique_ptr<State> state_;
};

// Evaluation settings; tests vary them, the product keeps the defaults.
struct EvalSettings {
    // Side of a square tile; 0 picks one by the graph: large tiles make the halos
    // of focal operators cheap, small ones keep the blocks of deep graphs (the
    // 34 fused rugosity expressions) in cache.
    std::int64_t tileSize = 0;
    int threads = 0;  // 0: all cores
    // Told after every finished tile, one call at a time; for a progress bar.
    std::function<void(std::int64_t done, std::int64_t total)> onProgress;
};
EvalSettings& Settings();

// The side of the square tiles that an evaluation of these roots uses.
std::int64_t TileSizeFor(const std::vector<NodePtr>& roots);

// The rows [first, end) of a grid of `rows` rows that this process computes:
// all of them alone, in a team its band of whole tile rows that starts on a
// stored file's block edge (Team.h).
std::pair<std::int64_t, std::int64_t> SharedRows(std::int64_t rows, std::int64_t tileSize);

// Evaluates root over its whole grid (in a team: over this process's rows),
// tile by tile on all threads, and hands each tile to sink (called
// concurrently from several threads).
void EvaluateTiles(const NodePtr& root,
                   const std::function<void(const Window&, const double*)>& sink);

// Evaluates several roots of one grid over shared tiles: each tile is computed
// for all of them before the next, so what they have in common (the grids they
// read, the operators they share) is read and computed once per tile, not once
// per root. sink gets the index of the root. Roots of different grids fail with 5.
void EvaluateTiles(const std::vector<NodePtr>& roots,
                   const std::function<void(std::size_t, const Window&, const double*)>& sink);

// The cells of root over one window, on the calling thread.
std::vector<double> EvaluateWindow(const NodePtr& root, const Window& window);

// The cell of `window` under the centre of each cell of a cols x rows lattice
// laid over it, on the calling thread. The window must lie within root's grid
// and hold at least cols x rows cells; anything else fails with 5.
std::vector<double> EvaluateSampled(const NodePtr& root, const Window& window, std::int64_t cols,
                                    std::int64_t rows);

// The scratch buffers of the operators and the writer, one set per thread.
enum class Scratch { kRowSums, kRowCounts, kRingSums, kRingCounts, kStored, kCells, kSlots };

// A buffer of the calling thread for `Slot` holding at least n values, with
// whatever it held before. It keeps its memory from tile to tile: fresh memory
// costs a page fault and a clearing per page, more than the work done on a tile.
template <class T, Scratch Slot>
T* ThreadBuffer(std::size_t n) {
    thread_local std::vector<T> buffer;
    if (buffer.size() < n) buffer.resize(n);
    return buffer.data();
}

// Index of the source cell under the centre of sample `index` when `count`
// samples cover `cells` cells.
inline std::int64_t SampledIndex(std::int64_t index, std::int64_t count, std::int64_t cells) {
    return (2 * index + 1) * cells / (2 * count);
}

}  // namespace halvane::raster
