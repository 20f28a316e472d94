#pragma once
// Stored grids: workspaces (folders), datasets by name, band 0 with its
// statistics and attribute table, and the raster a computation works on.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/raster/Engine.h"
#include "platform/raster/Fwd.h"

namespace halvane::raster {

struct Envelope {
    double XMin = 0.0;
    double YMin = 0.0;
    double XMax = 0.0;
    double YMax = 0.0;
};

struct Pnt {
    double X = 0.0;
    double Y = 0.0;
};

struct RasterStatistics {
    double Mean = 0.0;
    double StandardDeviation = 0.0;  // population
    double Minimum = 0.0;
    double Maximum = 0.0;
    std::int64_t validCells = 0;
};

struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Rgb&) const = default;
};

struct AttributeRow {
    std::int32_t Value = 0;
    std::int64_t Count = 0;
    // What the value stands for in a grid of classes; empty elsewhere.
    std::string Class_Name;
    std::optional<Rgb> color;
};
using AttributeTable = std::vector<AttributeRow>;

// What a computed grid says of itself when it is stored, beyond its cells:
// where it came from, and for a grid of classes what its values mean.
struct GridDescription {
    std::string expression;
    // Bound name and the path of its grid, or the expression of a computed one.
    std::vector<std::pair<std::string, std::string>> inputs;
    // Further metadata items, key and value.
    std::vector<std::pair<std::string, std::string>> items;
    // Names and colours the rows of the grid's table; the stored file then
    // carries them as its attribute table, colour table and category names.
    std::function<void(AttributeTable&)> nameClasses;
};

// The program that writes grids, told in every grid it writes.
struct WriterDescription {
    std::string software;     // name and version
    std::string commandLine;  // empty outside the command line
};
WriterDescription& Writer();

// How grids are written.
struct WriteSettings {
    // A cloud-optimized GeoTIFF, with internal overviews (nearest for integer
    // grids, average for floating ones) ahead of the cells; else a plain
    // tiled GeoTIFF, written in one pass. Off by default: the second pass
    // can cost more than the one-pass write itself (bench/, "overviews").
    bool cloudOptimized = false;
};
WriteSettings& Writing();

// True when GDAL opens the file or folder at `path` as a raster.
bool IsRaster(const std::string& path);

// An integer grid keeps a table up to this many distinct values.
inline constexpr std::size_t kMaxTableValues = 65536;

// Everything one pass over a grid learns about its values.
struct GridSummary {
    RasterStatistics statistics;
    std::optional<AttributeTable> table;
};

class RasterWorkspace {
public:
    explicit RasterWorkspace(std::string path) : path_(std::move(path)) {}

    const std::string& PathName() const { return path_; }

    // Opens a grid by name, matched without regard to case. Fails if it isn't there.
    RasterDatasetPtr OpenRasterDataset(const std::string& name) const;

    // The file or folder of the grid with this name, or empty.
    std::string Find(const std::string& name) const;

private:
    std::string path_;
};

class RasterWorkspaceFactory {
public:
    // A folder that exists and holds a raster or an "info" folder.
    bool IsWorkspace(const std::string& path) const;
    // Fails when the folder does not exist.
    RasterWorkspacePtr OpenFromFile(const std::string& path, std::intptr_t hWnd) const;
    // Makes the folder path/name as an empty raster workspace.
    RasterWorkspacePtr Create(const std::string& path, const std::string& name,
                              const void* connectionProperties, std::intptr_t hWnd) const;
};

class RasterDataset : public std::enable_shared_from_this<RasterDataset> {
public:
    // A grid on disk: a file GDAL reads, or a grid folder.
    static RasterDatasetPtr Open(const std::string& path);
    // The not yet stored result of a computation.
    static RasterDatasetPtr Temporary(NodePtr node);

    const std::string& Name() const { return name_; }  // empty for a temporary
    const std::string& Path() const { return path_; }  // empty for a temporary
    bool IsTemporary() const { return path_.empty(); }

    RasterPtr CreateDefaultRaster();

    bool CanCopy() const { return static_cast<bool>(node_); }
    // Stores the grid as name in workspace. Never overwrites: an existing name
    // fails, and a failed copy leaves nothing under the name.
    RasterDatasetPtr Copy(const std::string& name, const RasterWorkspacePtr& workspace);
    // Stores each computed grid under its name, as Copy does one after the
    // other, but in one pass over shared tiles: what the grids read in common
    // is read once. The grids stand in the order given; where one of them
    // cannot be stored, the grids before it stand and the failure is Copy's.
    static std::vector<RasterDatasetPtr> CopyAll(
        const std::vector<std::pair<RasterDatasetPtr, std::string>>& grids,
        const RasterWorkspacePtr& workspace);
    // Fails as Copy fails before it writes a cell: a name that is not valid
    // or that the workspace already holds.
    void CheckCopy(const std::string& name, const RasterWorkspace& target) const;

    bool CanDelete() const;
    void Delete();

    const RasterStatistics& Statistics();
    bool HasTable();
    const AttributeTable& GetAttributeTable();

    const NodePtr& Node() const { return node_; }

    // The dataset-level metadata items of a stored grid's file, in the file's
    // order; none for a computed grid.
    std::vector<std::pair<std::string, std::string>> StoredItems() const;

    // What Copy stores with the cells of a computed grid.
    GridDescription& Description() { return description_; }
    const GridDescription& Description() const { return description_; }

private:
    struct PendingWrite;
    void StartCopy(PendingWrite& writing);
    void WriteTile(PendingWrite& writing, const Window& tile, const double* values);
    void WriteBlocks(PendingWrite& writing, const Window& tile, const void* cells) const;
    GridSummary FinishWrite(PendingWrite& writing);
    // The bands (first row, path) that the members of a team wrote, into the
    // closed file being written, block by compressed block.
    static void CopyBlocks(const std::vector<std::pair<std::int64_t, std::string>>& bands,
                           const PendingWrite& writing);
    // Describe, then Lay.
    void Complete(PendingWrite& writing, const GridSummary& summary);
    // Statistics, table and provenance into the file, which is then closed.
    void Describe(PendingWrite& writing, const GridSummary& summary);
    // The closed file in the layout asked for (cloud-optimized or plain).
    void Lay(PendingWrite& writing);
    static RasterDatasetPtr Store(PendingWrite& writing, GridSummary summary,
                                  const RasterWorkspace& target);
    static RasterDatasetPtr StoreHere(PendingWrite& writing, GridSummary summary,
                                      const RasterWorkspace& target);
    const GridSummary& Summary();

    NodePtr node_;
    std::string path_;
    std::string name_;
    std::mutex summaryLock_;
    std::optional<GridSummary> summary_;
    GridDescription description_;
};

class RasterBand {
public:
    explicit RasterBand(RasterDatasetPtr dataset) : dataset_(std::move(dataset)) {}

    const RasterStatistics& Statistics() const { return dataset_->Statistics(); }
    const RasterDatasetPtr& RasterDataset() const { return dataset_; }
    bool HasTable() const { return dataset_->HasTable(); }
    const raster::AttributeTable& AttributeTable() const { return dataset_->GetAttributeTable(); }

private:
    RasterDatasetPtr dataset_;
};

// A raster as bound to an expression or returned from Execute.
class Raster {
public:
    Raster(NodePtr node, RasterDatasetPtr dataset)
        : node_(std::move(node)), dataset_(std::move(dataset)) {}

    const NodePtr& Node() const { return node_; }
    // The stored grid, or the computed one with its description.
    const RasterDatasetPtr& Dataset() const { return dataset_; }
    const Grid& GetGrid() const { return node_->grid; }
    bool IsInteger() const { return node_->integer; }

    Envelope Extent() const;
    Pnt MeanCellSize() const;
    std::string SpatialReference() const;
    bool IsProjected() const;
    // The reference system's name, and its EPSG code when it has one.
    std::string SpatialReferenceName() const;
    std::optional<int> EpsgCode() const;

    // Band 0, the only one; any other index fails.
    std::shared_ptr<RasterBand> Item(int index);

    // The cells of a window, row by row; NaN is NoData.
    std::vector<double> Read(const Window& window) const;
    // The cells of a window within the grid thinned out to cols x rows, each
    // the cell under the centre of its sample; for drawing a grid at a scale
    // where it has more cells than the screen has pixels.
    std::vector<double> ReadSampled(const Window& window, std::int64_t cols,
                                    std::int64_t rows) const;

private:
    NodePtr node_;
    RasterDatasetPtr dataset_;  // the stored grid, or made on first use for a result
};

// Sets GDAL up once for the engine: drivers, a bounded block cache, and
// failures reported through our own descriptions instead of stderr.
void EnsureGdal();

}  // namespace halvane::raster
