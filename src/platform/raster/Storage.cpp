#include "platform/raster/Storage.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <fcntl.h>
#include <gdal.h>
#include <gdal_rat.h>
#include <ogr_srs_api.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <unordered_map>

#include "platform/raster/Operators.h"

namespace fs = std::filesystem;

namespace halvane::raster {
namespace {

constexpr std::int32_t kIntNoData = std::numeric_limits<std::int32_t>::min();
constexpr float kFloatNoData = -std::numeric_limits<float>::max();
constexpr const char* kValidCellsKey = "HALVANE_VALID_CELLS";

std::string LastGdalError() {
    const char* message = CPLGetLastErrorMsg();
    return message && *message ? std::string(": ") + message : std::string();
}

// Files that travel with a raster but are no rasters themselves.
bool IsSidecar(const std::string& file) {
    std::string lower = file;
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
    for (const char* suffix : {".aux.xml", ".aux", ".ovr", ".tfw", ".tifw", ".prj", ".xml", ".msk",
                               ".hdr", ".stx", ".rrd", ".lock"}) {
        const std::string s(suffix);
        if (lower.size() >= s.size() && lower.compare(lower.size() - s.size(), s.size(), s) == 0) {
            return true;
        }
    }
    return false;
}

bool IsGridFolder(const fs::path& path) {
    std::error_code ec;
    return fs::is_directory(path, ec) && fs::exists(path / "hdr.adf", ec);
}

bool IsRasterFile(const fs::path& path) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec) || IsSidecar(path.filename().string())) return false;
    return GDALIdentifyDriverEx(path.c_str(), GDAL_OF_RASTER, nullptr, nullptr) != nullptr;
}

// The name of a grid file is its file name cut at the first ".".
// A grid's name is its file's name without the last extension: a name made
// from a browsed "dem.tif", such as "dem.tif_50", is saved as "dem.tif_50.tif".
std::string Stem(const std::string& file) { return fs::path(file).stem().string(); }

// Whole values keep their cell type when stored; what a cell cannot hold is NoData.
double AsStored(double value, bool integer) {
    if (integer) {
        return std::isfinite(value) && value >= -2147483647.0 && value <= 2147483647.0
                   ? value
                   : std::numeric_limits<double>::quiet_NaN();
    }
    const auto stored = static_cast<float>(value);
    return std::isfinite(stored) ? stored : std::numeric_limits<double>::quiet_NaN();
}

// A tile's values as the grid will hold them.
std::vector<double> Stored(const double* values, std::int64_t cells, bool integer) {
    std::vector<double> stored(values, values + cells);
    for (double& v : stored) v = AsStored(v, integer);
    return stored;
}

// Accumulates statistics and distinct values over tiles from several threads.
class SummaryBuilder {
public:
    explicit SummaryBuilder(bool integer) : integer_(integer), keepTable_(integer) {}

    void Add(const double* values, std::int64_t cells) {
        Part part;
        std::unordered_map<std::int32_t, std::int64_t> counts;
        double low = std::numeric_limits<double>::infinity();
        double high = -low;
        for (std::int64_t i = 0; i < cells; ++i) {
            const double v = values[i];
            if (std::isnan(v)) continue;
            ++part.n;
            part.sum += v;
            low = std::min(low, v);
            high = std::max(high, v);
        }
        if (part.n == 0) return;
        part.min = low;
        part.max = high;
        part.mean = part.sum / static_cast<double>(part.n);
        for (std::int64_t i = 0; i < cells; ++i) {
            const double v = values[i];
            if (std::isnan(v)) continue;
            part.m2 += (v - part.mean) * (v - part.mean);
            if (integer_) part.sumSquares += static_cast<__int128>(v) * static_cast<__int128>(v);
        }
        if (keepTable_.load(std::memory_order_relaxed))
            CountValues(values, cells, low, high, counts);
        std::lock_guard lock(lock_);
        Merge(part);
        if (!keepTable_) return;
        for (const auto& [value, count] : counts) table_[value] += count;
        if (table_.size() > kMaxTableValues) {
            keepTable_ = false;
            table_.clear();
        }
    }

    GridSummary Finish() const {
        GridSummary summary;
        RasterStatistics& s = summary.statistics;
        s.validCells = total_.n;
        if (total_.n > 0) {
            s.Minimum = total_.min;
            s.Maximum = total_.max;
            if (integer_) {
                // Exact for whole numbers: n*sum(v^2) - sum(v)^2 in 128 bits.
                const auto n = static_cast<__int128>(total_.n);
                const auto sum = static_cast<__int128>(total_.sum);
                const __int128 spread = total_.sumSquares * n - sum * sum;
                s.Mean = static_cast<double>(static_cast<long double>(sum) / total_.n);
                s.StandardDeviation =
                    static_cast<double>(std::sqrt(static_cast<long double>(spread) /
                                                  (static_cast<long double>(total_.n) * total_.n)));
            } else {
                s.Mean = total_.mean;
                s.StandardDeviation = std::sqrt(total_.m2 / static_cast<double>(total_.n));
            }
        }
        if (keepTable_) {
            AttributeTable table;
            for (const auto& [value, count] : table_) table.push_back({value, count});
            std::ranges::sort(table, {}, &AttributeRow::Value);
            summary.table = std::move(table);
        }
        return summary;
    }

private:
    struct Part {
        std::int64_t n = 0;
        double sum = 0.0;  // whole numbers below 2^53 add exactly
        double mean = 0.0;
        double m2 = 0.0;
        __int128 sumSquares = 0;
        double min = 0.0;
        double max = 0.0;
    };

    void Merge(const Part& part) {
        if (total_.n == 0) {
            total_ = part;
            return;
        }
        // Chan et al.: combine means and squared deviations of two parts.
        const double n = static_cast<double>(total_.n + part.n);
        const double delta = part.mean - total_.mean;
        total_.m2 += part.m2 + delta * delta * static_cast<double>(total_.n) *
                                   static_cast<double>(part.n) / n;
        total_.mean += delta * static_cast<double>(part.n) / n;
        total_.n += part.n;
        total_.sum += part.sum;
        total_.sumSquares += part.sumSquares;
        total_.min = std::min(total_.min, part.min);
        total_.max = std::max(total_.max, part.max);
    }

    static void CountValues(const double* values, std::int64_t cells, double low, double high,
                            std::unordered_map<std::int32_t, std::int64_t>& counts) {
        const double range = high - low;
        if (range < 1 << 20) {
            // Narrow ranges, the usual case, count in an array.
            std::vector<std::int64_t> dense(static_cast<std::size_t>(range) + 1);
            for (std::int64_t i = 0; i < cells; ++i) {
                if (!std::isnan(values[i])) ++dense[static_cast<std::size_t>(values[i] - low)];
            }
            for (std::size_t k = 0; k < dense.size(); ++k) {
                if (dense[k])
                    counts[static_cast<std::int32_t>(low + static_cast<double>(k))] = dense[k];
            }
            return;
        }
        for (std::int64_t i = 0; i < cells; ++i) {
            if (!std::isnan(values[i])) ++counts[static_cast<std::int32_t>(values[i])];
        }
    }

    bool integer_;
    std::atomic<bool> keepTable_;
    std::mutex lock_;
    Part total_;
    std::unordered_map<std::int32_t, std::int64_t> table_;
};

GridSummary Summarize(const NodePtr& node, bool asStored) {
    SummaryBuilder builder(node->integer);
    EvaluateTiles(node, [&](const Window& tile, const double* values) {
        if (!asStored) return builder.Add(values, tile.Cells());
        builder.Add(Stored(values, tile.Cells(), node->integer).data(), tile.Cells());
    });
    return builder.Finish();
}

std::string Format(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

void WriteSummary(GDALDatasetH dataset, const GridSummary& summary, std::int64_t cells) {
    GDALRasterBandH band = GDALGetRasterBand(dataset, 1);
    const RasterStatistics& s = summary.statistics;
    if (s.validCells > 0) {
        GDALSetMetadataItem(band, "STATISTICS_MINIMUM", Format(s.Minimum).c_str(), nullptr);
        GDALSetMetadataItem(band, "STATISTICS_MAXIMUM", Format(s.Maximum).c_str(), nullptr);
        GDALSetMetadataItem(band, "STATISTICS_MEAN", Format(s.Mean).c_str(), nullptr);
        GDALSetMetadataItem(band, "STATISTICS_STDDEV", Format(s.StandardDeviation).c_str(),
                            nullptr);
    }
    GDALSetMetadataItem(
        band, "STATISTICS_VALID_PERCENT",
        Format(100.0 * static_cast<double>(s.validCells) / static_cast<double>(cells)).c_str(),
        nullptr);
    GDALSetMetadataItem(band, kValidCellsKey, std::to_string(s.validCells).c_str(), nullptr);
    if (!summary.table) return;
    GDALRasterAttributeTableH rat = GDALCreateRasterAttributeTable();
    GDALRATCreateColumn(rat, "Value", GFT_Integer, GFU_MinMax);
    GDALRATCreateColumn(rat, "Count", GFT_Real, GFU_PixelCount);
    GDALRATSetRowCount(rat, static_cast<int>(summary.table->size()));
    for (std::size_t row = 0; row < summary.table->size(); ++row) {
        const AttributeRow& r = (*summary.table)[row];
        GDALRATSetValueAsInt(rat, static_cast<int>(row), 0, r.Value);
        GDALRATSetValueAsDouble(rat, static_cast<int>(row), 1, static_cast<double>(r.Count));
    }
    GDALSetDefaultRAT(band, rat);
    GDALDestroyRasterAttributeTable(rat);
}

// What this engine stored with a grid it wrote, if it did.
std::optional<GridSummary> ReadSummary(const std::string& path) {
    GDALDatasetH dataset =
        GDALOpenEx(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr);
    if (!dataset) return std::nullopt;
    GDALRasterBandH band = GDALGetRasterBand(dataset, 1);
    std::optional<GridSummary> summary;
    if (const char* valid = GDALGetMetadataItem(band, kValidCellsKey, nullptr)) {
        GridSummary s;
        s.statistics.validCells = std::atoll(valid);
        auto item = [&](const char* key) {
            const char* text = GDALGetMetadataItem(band, key, nullptr);
            return text ? CPLAtof(text) : 0.0;
        };
        s.statistics.Mean = item("STATISTICS_MEAN");
        s.statistics.StandardDeviation = item("STATISTICS_STDDEV");
        s.statistics.Minimum = item("STATISTICS_MINIMUM");
        s.statistics.Maximum = item("STATISTICS_MAXIMUM");
        GDALRasterAttributeTableH rat = GDALGetDefaultRAT(band);
        if (rat) {
            AttributeTable table;
            for (int row = 0; row < GDALRATGetRowCount(rat); ++row) {
                table.push_back({GDALRATGetValueAsInt(rat, row, 0),
                                 static_cast<std::int64_t>(GDALRATGetValueAsDouble(rat, row, 1))});
            }
            s.table = std::move(table);
        }  // an integer grid of ours without one has too many values for a table
        summary = std::move(s);
    }
    GDALClose(dataset);
    return summary;
}

std::string TemporaryName(const std::string& name) {
    static std::atomic<unsigned> counter{0};
    return "." + name + ".part" + std::to_string(::getpid()) + "_" + std::to_string(counter++);
}

void RemoveFileAndSidecars(const fs::path& file) {
    std::error_code ec;
    fs::remove(file, ec);
    for (const char* suffix : {".aux.xml", ".ovr", ".msk"}) fs::remove(file.string() + suffix, ec);
}

}  // namespace

void EnsureGdal() {
    static std::once_flag once;
    std::call_once(once, [] {
        GDALAllRegister();
        CPLSetErrorHandler(CPLQuietErrorHandler);
        // The engine streams; a large block cache only raises the peak memory.
        if (!CPLGetConfigOption("GDAL_CACHEMAX", nullptr)) GDALSetCacheMax64(256LL << 20);
    });
}

// --- workspaces ---

std::string RasterWorkspace::Find(const std::string& name) const {
    std::error_code ec;
    std::string best;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_, ec)) {
        const std::string file = entry.path().filename().string();
        // A file raster answers to its name with or without its extension,
        // "dem" or "dem.tif", as the browse dialog names it.
        if (file.empty() || file[0] == '.') continue;
        if (!EqualsNoCase(Stem(file), name) && !EqualsNoCase(file, name)) continue;
        if (IsGridFolder(entry.path())) return entry.path().string();
        if (!IsRasterFile(entry.path())) continue;
        // Our own grids are <name>.tif; prefer them over other formats of the same name.
        const std::string ext = entry.path().extension().string();
        if (best.empty() || EqualsNoCase(ext, ".tif")) best = entry.path().string();
    }
    return best;
}

RasterDatasetPtr RasterWorkspace::OpenRasterDataset(const std::string& name) const {
    const std::string path = Find(name);
    if (path.empty()) throw EngineFailure("Grid '" + name + "' does not exist in " + path_);
    return RasterDataset::Open(path);
}

bool RasterWorkspaceFactory::IsWorkspace(const std::string& path) const {
    EnsureGdal();
    std::error_code ec;
    if (path.empty() || !fs::is_directory(path, ec)) return false;
    for (const fs::directory_entry& entry : fs::directory_iterator(path, ec)) {
        const std::string file = entry.path().filename().string();
        if (file.empty() || file[0] == '.') continue;
        if (EqualsNoCase(file, "info") && entry.is_directory(ec)) return true;
        if (IsGridFolder(entry.path()) || IsRasterFile(entry.path())) return true;
    }
    return false;
}

RasterWorkspacePtr RasterWorkspaceFactory::OpenFromFile(const std::string& path,
                                                        std::intptr_t /*hWnd*/) const {
    EnsureGdal();
    std::error_code ec;
    if (!fs::is_directory(path, ec)) throw EngineFailure("Workspace '" + path + "' does not exist");
    return std::make_shared<RasterWorkspace>(path);
}

RasterWorkspacePtr RasterWorkspaceFactory::Create(const std::string& path, const std::string& name,
                                                  const void* /*connectionProperties*/,
                                                  std::intptr_t hWnd) const {
    std::error_code ec;
    if (!fs::is_directory(path, ec)) throw EngineFailure("Folder '" + path + "' does not exist");
    const fs::path full = fs::path(path) / name;
    fs::create_directories(full / "info", ec);
    if (ec) throw EngineFailure("Cannot create workspace '" + full.string() + "': " + ec.message());
    return OpenFromFile(full.string(), hWnd);
}

// --- datasets ---

RasterDatasetPtr RasterDataset::Open(const std::string& path) {
    EnsureGdal();
    CPLErrorReset();
    GDALDatasetH dataset =
        GDALOpenEx(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr);
    if (!dataset) throw EngineFailure("Cannot open raster '" + path + "'" + LastGdalError());
    StoredBand band;
    band.path = path;
    double transform[6];
    const bool placed = GDALGetGeoTransform(dataset, transform) == CE_None;
    GDALRasterBandH first =
        GDALGetRasterCount(dataset) > 0 ? GDALGetRasterBand(dataset, 1) : nullptr;
    if (!first || !placed || transform[2] != 0.0 || transform[4] != 0.0 || transform[5] >= 0.0) {
        GDALClose(dataset);
        throw EngineFailure("Raster '" + path + "' is not a north-up grid with a georeference");
    }
    band.grid = {transform[0],
                 transform[3],
                 transform[1],
                 -transform[5],
                 GDALGetRasterXSize(dataset),
                 GDALGetRasterYSize(dataset)};
    const GDALDataType type = GDALGetRasterDataType(first);
    band.integer = !GDALDataTypeIsFloating(type) && !GDALDataTypeIsComplex(type);
    int hasNoData = 0;
    band.noData = GDALGetRasterNoDataValue(first, &hasNoData);
    band.hasNoData = hasNoData != 0;
    // Cells of a 32-bit band hold the NoData value rounded to 32 bits.
    if (type == GDT_Float32) band.noData = static_cast<float>(band.noData);
    band.spatialReference = std::make_shared<const std::string>(GDALGetProjectionRef(dataset));
    GDALClose(dataset);

    auto result = std::shared_ptr<RasterDataset>(new RasterDataset());
    result->node_ = MakeStored(band);
    result->path_ = path;
    result->name_ = IsGridFolder(path) ? fs::path(path).filename().string()
                                       : Stem(fs::path(path).filename().string());
    return result;
}

RasterDatasetPtr RasterDataset::Temporary(NodePtr node) {
    auto result = std::shared_ptr<RasterDataset>(new RasterDataset());
    result->node_ = std::move(node);
    return result;
}

RasterPtr RasterDataset::CreateDefaultRaster() {
    return std::make_shared<Raster>(node_, shared_from_this());
}

RasterDatasetPtr RasterDataset::Copy(const std::string& name, const RasterWorkspacePtr& workspace) {
    EnsureGdal();
    const RasterWorkspace& target = runtime::Deref(workspace);
    if (name.empty() || name.find('/') != std::string::npos || name[0] == '.') {
        throw EngineFailure("'" + name + "' is not a valid grid name");
    }
    if (!target.Find(name).empty()) {
        throw EngineFailure("Grid '" + name + "' already exists in " + target.PathName());
    }
    const Grid& grid = node_->grid;
    const bool integer = node_->integer;
    const fs::path folder(target.PathName());
    const fs::path partial = folder / (TemporaryName(name) + ".tif");
    const fs::path final = folder / (name + ".tif");

    // Measured on a 4000 x 4000 bathymetry (copy, slope, position index): ZSTD level 1
    // writes as fast as no compression at all; byte differencing shrinks floating
    // grids by a sixth for free but makes the small integer grids bigger and slower.
    // DEFLATE, LZW and LERC were 40-90% slower for no gain in size.
    const char* options[] = {
        "TILED=YES",        "BLOCKXSIZE=256",       "BLOCKYSIZE=256",
        "COMPRESS=ZSTD",    "ZSTD_LEVEL=1",         integer ? "PREDICTOR=1" : "PREDICTOR=2",
        "BIGTIFF=IF_SAFER", "NUM_THREADS=ALL_CPUS", nullptr};
    GDALDriverH driver = GDALGetDriverByName("GTiff");
    CPLErrorReset();
    GDALDatasetH out = GDALCreate(driver, partial.c_str(), static_cast<int>(grid.cols),
                                  static_cast<int>(grid.rows), 1, integer ? GDT_Int32 : GDT_Float32,
                                  const_cast<char**>(options));
    if (!out) throw EngineFailure("Cannot create '" + final.string() + "'" + LastGdalError());
    double transform[6] = {grid.left, grid.cellX, 0.0, grid.top, 0.0, -grid.cellY};
    GDALSetGeoTransform(out, transform);
    if (node_->spatialReference && !node_->spatialReference->empty()) {
        GDALSetProjection(out, node_->spatialReference->c_str());
    }
    GDALRasterBandH band = GDALGetRasterBand(out, 1);
    GDALSetRasterNoDataValue(band, integer ? kIntNoData : kFloatNoData);

    // Until the grid is complete, a failure removes what was written.
    struct PartialFile {
        GDALDatasetH dataset;
        fs::path path;
        ~PartialFile() {
            if (dataset) GDALClose(dataset);
            if (!path.empty()) RemoveFileAndSidecars(path);
        }
    } partialFile{out, partial};

    SummaryBuilder builder(integer);
    std::mutex writeLock;
    EvaluateTiles(node_, [&](const Window& tile, const double* values) {
        const std::vector<double> stored = Stored(values, tile.Cells(), integer);
        builder.Add(stored.data(), tile.Cells());
        std::vector<std::int32_t> ints;
        std::vector<float> floats;
        void* buffer = nullptr;
        if (integer) {
            ints.resize(stored.size());
            for (std::size_t i = 0; i < stored.size(); ++i) {
                ints[i] = std::isnan(stored[i]) ? kIntNoData : static_cast<std::int32_t>(stored[i]);
            }
            buffer = ints.data();
        } else {
            floats.resize(stored.size());
            for (std::size_t i = 0; i < stored.size(); ++i) {
                floats[i] = std::isnan(stored[i]) ? kFloatNoData : static_cast<float>(stored[i]);
            }
            buffer = floats.data();
        }
        std::lock_guard lock(writeLock);
        if (GDALRasterIO(band, GF_Write, static_cast<int>(tile.col0), static_cast<int>(tile.row0),
                         static_cast<int>(tile.cols), static_cast<int>(tile.rows), buffer,
                         static_cast<int>(tile.cols), static_cast<int>(tile.rows),
                         integer ? GDT_Int32 : GDT_Float32, 0, 0) != CE_None) {
            throw EngineFailure("Cannot write '" + final.string() + "'" + LastGdalError());
        }
    });
    GridSummary summary = builder.Finish();
    WriteSummary(out, summary, grid.Cells());
    CPLErrorReset();
    partialFile.dataset = nullptr;
    GDALClose(out);
    if (CPLGetLastErrorType() >= CE_Failure) {
        throw EngineFailure("Cannot write '" + final.string() + "'" + LastGdalError());
    }
    // The grid appears under its name only when complete, and never over another.
    if (::renameat2(AT_FDCWD, partial.c_str(), AT_FDCWD, final.c_str(), RENAME_NOREPLACE) != 0) {
        const int error = errno;
        if (error == EEXIST) {
            throw EngineFailure("Grid '" + name + "' already exists in " + target.PathName());
        }
        throw EngineFailure("Cannot store '" + final.string() + "': " + std::strerror(error));
    }
    // Without its side file the grid is still whole: statistics are then computed again.
    std::error_code ec;
    fs::rename(partial.string() + ".aux.xml", final.string() + ".aux.xml", ec);
    partialFile.path.clear();
    RasterDatasetPtr stored = Open(final.string());
    stored->summary_ = std::move(summary);
    return stored;
}

bool RasterDataset::CanDelete() const {
    if (IsTemporary()) return false;
    const fs::path path(path_);
    return ::access(path.c_str(), W_OK) == 0 && ::access(path.parent_path().c_str(), W_OK) == 0;
}

void RasterDataset::Delete() {
    if (!CanDelete()) throw EngineFailure("Cannot delete raster '" + path_ + "'");
    std::error_code ec;
    if (fs::is_directory(path_, ec)) {
        fs::remove_all(path_, ec);
    } else {
        RemoveFileAndSidecars(path_);
    }
}

const GridSummary& RasterDataset::Summary() {
    std::lock_guard lock(summaryLock_);
    if (!summary_ && !IsTemporary()) summary_ = ReadSummary(path_);
    if (!summary_) summary_ = Summarize(node_, IsTemporary());
    return *summary_;
}

const RasterStatistics& RasterDataset::Statistics() { return Summary().statistics; }

bool RasterDataset::HasTable() { return node_->integer && Summary().table.has_value(); }

const AttributeTable& RasterDataset::GetAttributeTable() {
    if (!HasTable()) throw EngineFailure("Raster '" + name_ + "' has no attribute table");
    return *Summary().table;
}

// --- rasters ---

Envelope Raster::Extent() const {
    const Grid& g = node_->grid;
    return {g.left, g.Bottom(), g.Right(), g.top};
}

Pnt Raster::MeanCellSize() const { return {node_->grid.cellX, node_->grid.cellY}; }

std::string Raster::SpatialReference() const {
    return node_->spatialReference ? *node_->spatialReference : std::string();
}

bool Raster::IsProjected() const {
    const std::string wkt = SpatialReference();
    if (wkt.empty()) return false;
    OGRSpatialReferenceH srs = OSRNewSpatialReference(wkt.c_str());
    const bool projected = srs && OSRIsProjected(srs);
    if (srs) OSRDestroySpatialReference(srs);
    return projected;
}

std::shared_ptr<RasterBand> Raster::Item(int index) {
    if (index != 0) throw runtime::RuntimeFailure(runtime::kSubscriptOutOfRange);
    if (!dataset_) dataset_ = RasterDataset::Temporary(node_);
    return std::make_shared<RasterBand>(dataset_);
}

std::vector<double> Raster::Read(const Window& window) const {
    EnsureGdal();
    return EvaluateWindow(node_, window);
}

std::vector<double> Raster::ReadSampled(const Window& window, std::int64_t cols,
                                        std::int64_t rows) const {
    EnsureGdal();
    return EvaluateSampled(node_, window, cols, rows);
}

}  // namespace halvane::raster
