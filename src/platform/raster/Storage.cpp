#include "platform/raster/Storage.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <fcntl.h>
#include <gdal.h>
#include <gdal_rat.h>
#include <ogr_srs_api.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <limits>
#include <unordered_map>
#include <utility>

#include "platform/raster/Meter.h"
#include "platform/raster/Operators.h"
#include "platform/raster/Team.h"
#include "platform/runtime/Version.h"

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

// A tile's values as the grid will hold them, in a buffer of the calling thread.
const double* Stored(const double* values, std::int64_t cells, bool integer) {
    double* stored = ThreadBuffer<double, Scratch::kStored>(static_cast<std::size_t>(cells));
    for (std::int64_t i = 0; i < cells; ++i) stored[i] = AsStored(values[i], integer);
    return stored;
}

// Accumulates statistics and distinct values over tiles from several threads.
// The tiles' partial statistics are combined in the order of the tiles, not
// of their completion, so the result is the same whatever the threads did,
// and whatever processes computed the tiles (Pack, Absorb).
class SummaryBuilder {
public:
    explicit SummaryBuilder(bool integer) : integer_(integer), keepTable_(integer) {}

    // A builder of an integer grid whose operators keep its values within
    // [low, high] counts them in that window from the first tile on.
    SummaryBuilder(bool integer, double low, double high) : SummaryBuilder(integer) {
        if (integer && low >= -2147483647.0 && high <= 2147483647.0 && high - low < kWidest) {
            Expect(static_cast<std::int32_t>(low), static_cast<std::int32_t>(high));
        }
    }

    // Adds a tile of an integer grid, and fills ints with its cells as the
    // file holds them, NoData as noData. Most tiles take one pass, which
    // counts each value in the window that earlier tiles (or the grid's
    // operators) set; a tile with a value outside it, or one that is not
    // whole, takes the way of Add and moves the window to its range.
    void AddInts(const Window& tile, const double* values, std::int32_t noData,
                 std::int32_t* ints) {
        const std::int64_t cells = tile.Cells();
        const std::uint64_t window = window_.load(std::memory_order_relaxed);
        if (window != 0 && cells <= kMostCells) {
            const auto base = static_cast<std::int32_t>(window >> 32);
            const auto width = static_cast<std::int64_t>(window & 0xffffffffu);
            auto* slots =
                ThreadBuffer<std::uint32_t, Scratch::kSlots>(static_cast<std::size_t>(cells));
            bool negativeZero = false;
            if (PlaceInWindow(values, cells, base, width, noData, ints, slots, negativeZero)) {
                // A place past the window's for NoData, counted and ignored.
                const std::int64_t stride = width + 1;
                thread_local std::vector<std::uint32_t> tallies;
                tallies.assign(static_cast<std::size_t>(stride * kTallies), 0);
                Tally(slots, cells, stride, tallies.data());
                Part part = TilePart(tile);
                double low = 0.0, high = 0.0;
                std::unordered_map<std::int32_t, std::int64_t> counts;
                const bool countValues = keepTable_.load(std::memory_order_relaxed);
                FromTallies(tallies.data(), stride, base, width, part, low, high,
                            countValues ? &counts : nullptr);
                if (!negativeZero || (low != 0.0 && high != 0.0)) {
                    return Keep(part, low, high, counts);
                }
            }
        }
        const double* stored = Stored(values, cells, true);
        const auto [low, high] = Add(tile, stored);
        for (std::int64_t i = 0; i < cells; ++i) {
            ints[i] = std::isnan(stored[i]) ? noData : static_cast<std::int32_t>(stored[i]);
        }
        const double seen = high - low + 1.0;
        // Nothing valid leaves low above high.
        if (!(low <= high && low >= -2147483647.0 && high <= 2147483647.0 && seen <= kWidest)) {
            return;
        }
        // Room for the tiles to come, whose values spread further than one tile's.
        const double spare = std::min(std::max(seen, 256.0), (kWidest - seen) / 2);
        double first = low - spare, last = high + spare;
        if (window != 0) {
            const auto base = static_cast<double>(static_cast<std::int32_t>(window >> 32));
            const auto end = base + static_cast<double>(window & 0xffffffffu);
            if (low >= base && high < end) return;  // not whole, or a -0
            // The window grows to take this tile in, or moves to it when it cannot.
            if (std::max(last, end - 1.0) - std::min(first, base) < kWidest) {
                first = std::min(first, base);
                last = std::max(last, end - 1.0);
            }
        }
        Expect(std::max(first, -2147483647.0), std::min(last, 2147483647.0));
    }

    // Adds a tile's values; returns their range (low > high when none is valid).
    std::pair<double, double> Add(const Window& tile, const double* values) {
        const std::int64_t cells = tile.Cells();
        Part part = TilePart(tile);
        std::unordered_map<std::int32_t, std::int64_t> counts;
        double low = std::numeric_limits<double>::infinity();
        double high = -low;
        const bool countValues = keepTable_.load(std::memory_order_relaxed);
        const bool whole =
            integer_ && AddWhole(values, cells, part, low, high, countValues ? &counts : nullptr);
        if (!whole) {
            // In locals, not in part or low and high, whose addresses went
            // to AddWhole: each step would wait for the last one's store.
            std::int64_t n = 0;
            double sum = 0.0, lo = low, hi = high;
            for (std::int64_t i = 0; i < cells; ++i) {
                const double v = values[i];
                if (std::isnan(v)) continue;
                ++n;
                sum += v;
                lo = v < lo ? v : lo;
                hi = hi < v ? v : hi;
            }
            part.n = n;
            part.sum = sum;
            low = lo;
            high = hi;
            if (integer_) {
                __int128 squares = 0;
                for (std::int64_t i = 0; i < cells; ++i) {
                    if (!std::isnan(values[i])) squares += Square(values[i]);
                }
                part.sumSquares = squares;
            }
        }
        if (part.n == 0) return {low, high};
        // Integer grids need no squared deviations: theirs come from the sums.
        if (!integer_) {
            const double mean = part.sum / static_cast<double>(part.n);
            double m2 = 0.0;
            for (std::int64_t i = 0; i < cells; ++i) {
                const double v = values[i];
                if (std::isnan(v)) continue;
                m2 += (v - mean) * (v - mean);
            }
            part.m2 = m2;
        }
        if (countValues && !whole) CountValues(values, cells, low, high, counts);
        Keep(part, low, high, counts);
        return {low, high};
    }

    // What this builder learnt, to be absorbed by a builder of another process.
    std::string Pack() const {
        std::string bytes;
        const auto append = [&](const void* data, std::size_t size) {
            bytes.append(static_cast<const char*>(data), size);
        };
        const std::uint64_t parts = parts_.size();
        append(&parts, sizeof parts);
        append(parts_.data(), parts_.size() * sizeof(Part));
        const std::uint64_t values = keepTable_ ? table_.size() : ~std::uint64_t{0};
        append(&values, sizeof values);
        if (!keepTable_) return bytes;
        for (const auto& entry : table_) {
            append(&entry.first, sizeof entry.first);
            append(&entry.second, sizeof entry.second);
        }
        return bytes;
    }

    // Adds what another builder packed, as though its tiles had been added here.
    void Absorb(const std::string& bytes) {
        std::size_t at = 0;
        const auto take = [&](void* data, std::size_t size) {
            if (at + size > bytes.size()) throw EngineFailure("Statistics of a band are cut short");
            // A member without a band has no parts, and an empty vector's
            // data may be null, which memcpy must not be given.
            if (size == 0) return;
            std::memcpy(data, bytes.data() + at, size);
            at += size;
        };
        std::uint64_t parts = 0;
        take(&parts, sizeof parts);
        const std::size_t first = parts_.size();
        parts_.resize(first + parts);
        take(parts_.data() + first, parts * sizeof(Part));
        std::uint64_t values = 0;
        take(&values, sizeof values);
        if (values == ~std::uint64_t{0}) keepTable_ = false;
        for (std::uint64_t k = 0; k < values && keepTable_; ++k) {
            std::pair<std::int32_t, std::int64_t> entry;
            take(&entry.first, sizeof entry.first);
            take(&entry.second, sizeof entry.second);
            table_[entry.first] += entry.second;
        }
        if (!keepTable_ || table_.size() > kMaxTableValues) {
            keepTable_ = false;
            table_.clear();
        }
    }

    // Forgets everything, then absorbs every packed builder in order.
    void AbsorbAll(const std::vector<std::string>& packs) {
        parts_.clear();
        table_.clear();
        keepTable_ = integer_;
        for (const std::string& pack : packs) Absorb(pack);
    }

    GridSummary Finish() {
        // Tile order: the combination of floating means and deviations is
        // not associative, and this order is the same for every run.
        std::ranges::sort(parts_, {}, [](const Part& p) { return std::pair(p.row0, p.col0); });
        total_ = Part{};
        for (const Part& part : parts_) Merge(part);
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
            for (const auto& [value, count] : table_) {
                AttributeRow& row = table.emplace_back();
                row.Value = value;
                row.Count = count;
            }
            std::ranges::sort(table, {}, &AttributeRow::Value);
            summary.table = std::move(table);
        }
        return summary;
    }

private:
    static constexpr std::int64_t kWidest = std::int64_t{1} << 16;
    static constexpr std::int64_t kTallies = 4;
    static constexpr std::int64_t kMostCells = std::int64_t{1} << 21;

    struct Part {
        std::int64_t n = 0;
        double sum = 0.0;  // whole numbers below 2^53 add exactly
        double mean = 0.0;
        double m2 = 0.0;
        __int128 sumSquares = 0;
        double min = 0.0;
        double max = 0.0;
        std::int64_t row0 = 0;  // of the tile
        std::int64_t col0 = 0;
    };

    // Count, sum, squares, range and, when counts is given, the count of each
    // value, of a tile whose values are all whole, fit in 32 bits and lie
    // within a narrow range, and whose cells are few enough for a double sum
    // of them to be exact (so part.sum is what adding them one by one gives).
    // False, with nothing touched, otherwise: the caller adds them one by one.
    //
    // One pass finds the range; a second counts each value, and everything
    // else comes from the counts in exact integers. The counts go to four
    // tallies in turn, since a run of equal values (a class grid is mostly
    // zeros) would otherwise wait on one memory cell at every step. A -0 is
    // the one value whose place in the tile would show, in the range, so a
    // tile holding one, whose range touches 0, is left to the caller too.
    static bool AddWhole(const double* values, std::int64_t cells, Part& part, double& low,
                         double& high, std::unordered_map<std::int32_t, std::int64_t>* counts) {
        if (cells > kMostCells) return false;
        std::int32_t lo = std::numeric_limits<std::int32_t>::max();
        std::int32_t hi = std::numeric_limits<std::int32_t>::min();
        bool negativeZero = false;
        for (std::int64_t i = 0; i < cells; ++i) {
            const double v = values[i];
            if (std::isnan(v)) continue;
            if (!(std::abs(v) <= 2147483647.0)) return false;
            const auto whole = static_cast<std::int32_t>(v);
            if (static_cast<double>(whole) != v) return false;
            negativeZero |= whole == 0 && std::signbit(v);
            lo = std::min(lo, whole);
            hi = std::max(hi, whole);
        }
        if (lo > hi) return true;  // nothing valid: part.n stays 0
        if (negativeZero && (lo == 0 || hi == 0)) return false;
        const std::int64_t width = std::int64_t{hi} - lo + 1;
        if (width > kWidest) return false;

        thread_local std::vector<std::uint32_t> tallies;
        tallies.assign(static_cast<std::size_t>(width * kTallies), 0);
        std::uint32_t* tally = tallies.data();
        for (std::int64_t i = 0; i < cells; ++i) {
            const double v = values[i];
            if (std::isnan(v)) continue;
            ++tally[(i % kTallies) * width + (static_cast<std::int32_t>(v) - lo)];
        }
        FromTallies(tally, width, lo, width, part, low, high, counts);
        return true;
    }

    // What AddWhole learns from the tallies, stride apart, of the values
    // base .. base + width - 1: the range is that of the values counted.
    static void FromTallies(const std::uint32_t* tally, std::int64_t stride, std::int32_t base,
                            std::int64_t width, Part& part, double& low, double& high,
                            std::unordered_map<std::int32_t, std::int64_t>* counts) {
        std::int64_t n = 0, sum = 0;
        __int128 squares = 0;
        for (std::int64_t k = 0; k < width; ++k) {
            std::int64_t count = 0;
            for (std::int64_t t = 0; t < kTallies; ++t) count += tally[t * stride + k];
            if (count == 0) continue;
            const std::int64_t value = base + k;
            if (n == 0) low = static_cast<double>(value);
            high = static_cast<double>(value);
            n += count;
            sum += count * value;
            squares += static_cast<__int128>(count) * (value * value);
            if (counts) (*counts)[static_cast<std::int32_t>(value)] = count;
        }
        part.n = n;
        part.sum = static_cast<double>(sum);
        part.sumSquares = squares;
    }

    // The first pass of AddInts, vectorized: each cell as the file holds
    // it, and its place in the tallies (width for NoData). False when a
    // value is not a whole one within [base, base + width).
    HALVANE_CELL_LOOP static bool PlaceInWindow(const double* values, std::int64_t cells,
                                                std::int32_t base, std::int64_t width,
                                                std::int32_t noData, std::int32_t* ints,
                                                std::uint32_t* slots, bool& negativeZero) {
        const double first = base;
        const double end = first + static_cast<double>(width);
        const auto none = static_cast<std::uint32_t>(width);
        // Flags as numbers, tests without branches and -0 by its bits: the
        // loop vectorizes only so.
        std::int32_t outside = 0, signedZero = 0;
        for (std::int64_t i = 0; i < cells; ++i) {
            const double v = values[i];
            const std::int32_t valid = !std::isnan(v);
            const std::int32_t inside = (v >= first) & (v < end);
            // Converted only within the window, where the cell type holds it.
            const auto whole = static_cast<std::int32_t>(inside ? v : first);
            const std::int32_t exact = static_cast<double>(whole) == v;
            outside |= valid & ~(inside & exact);
            ints[i] = valid ? whole : noData;
            slots[i] = valid ? static_cast<std::uint32_t>(whole - base) : none;
            signedZero |= std::bit_cast<std::uint64_t>(v) == std::bit_cast<std::uint64_t>(-0.0);
        }
        negativeZero = signedZero != 0;
        return outside == 0;
    }

    // The second: each cell counted at its place, in the four tallies in turn.
    static void Tally(const std::uint32_t* slots, std::int64_t cells, std::int64_t stride,
                      std::uint32_t* tally) {
        std::uint32_t* const t[kTallies] = {tally, tally + stride, tally + 2 * stride,
                                            tally + 3 * stride};
        std::int64_t i = 0;
        for (; i + kTallies <= cells; i += kTallies) {
            ++t[0][slots[i]];
            ++t[1][slots[i + 1]];
            ++t[2][slots[i + 2]];
            ++t[3][slots[i + 3]];
        }
        for (; i < cells; ++i) ++t[i % kTallies][slots[i]];
    }

    static Part TilePart(const Window& tile) {
        Part part;
        part.row0 = tile.row0;
        part.col0 = tile.col0;
        return part;
    }

    // Takes in a tile's part, with the range and the counts of its values.
    void Keep(Part& part, double low, double high,
              const std::unordered_map<std::int32_t, std::int64_t>& counts) {
        if (part.n == 0) return;
        part.min = low;
        part.max = high;
        part.mean = part.sum / static_cast<double>(part.n);
        std::lock_guard lock(lock_);
        parts_.push_back(part);
        if (!keepTable_) return;
        for (const auto& [value, count] : counts) table_[value] += count;
        if (table_.size() > kMaxTableValues) {
            keepTable_ = false;
            table_.clear();
        }
    }

    // The values AddInts counts in one pass are low .. high, as far as the
    // tallies allow.
    void Expect(double low, double high) {
        const auto base = static_cast<std::uint32_t>(static_cast<std::int32_t>(low));
        const auto width =
            static_cast<std::uint64_t>(std::min(high - low + 1.0, static_cast<double>(kWidest)));
        window_.store(std::uint64_t{base} << 32 | width, std::memory_order_relaxed);
    }

    // v^2 of a whole v, exactly. Every stored cell type fits in 32 bits, so its
    // square fits in 64, which is much cheaper than converting a double to 128.
    static __int128 Square(double v) {
        if (std::abs(v) <= 2147483648.0) {
            const auto whole = static_cast<std::int64_t>(v);
            return whole * whole;
        }
        return static_cast<__int128>(v) * static_cast<__int128>(v);
    }

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
    // AddInts' window: its first value in the high half, its width in the
    // low half; 0 while there is none.
    std::atomic<std::uint64_t> window_ = 0;
    std::mutex lock_;
    std::vector<Part> parts_;
    Part total_;
    std::unordered_map<std::int32_t, std::int64_t> table_;
};

// In a team, one member's failure fails every member alike: each learns the
// first one by rank and fails with its description, so that all of them
// leave the work at the same point. Alone, a failure goes on as it is.
void Agree(const std::exception_ptr& failure) {
    if (!InTeam()) {
        if (failure) std::rethrow_exception(failure);
        return;
    }
    std::string mine;
    if (failure) {
        try {
            std::rethrow_exception(failure);
        } catch (const std::exception& error) {
            mine = error.what();
        } catch (...) {
            mine = "A process of the team stopped";
        }
        if (mine.empty()) mine = "A process of the team failed";
    }
    std::vector<std::string> all;
    try {
        all = Exchange(mine);
    } catch (...) {
        // A member that left the run fails the others; this one's own failure comes first.
        if (failure) std::rethrow_exception(failure);
        throw;
    }
    if (failure) std::rethrow_exception(failure);
    for (const std::string& other : all) {
        if (!other.empty()) throw EngineFailure(other);
    }
}

// Runs work, then agrees with the team on whether it succeeded everywhere.
template <class Work>
void Together(Work&& work) {
    std::exception_ptr failure;
    try {
        work();
    } catch (...) {
        failure = std::current_exception();
    }
    Agree(failure);
}

GridSummary Summarize(const NodePtr& node, bool asStored) {
    SummaryBuilder builder(node->integer);
    Together([&] {
        EvaluateTiles(node, [&](const Window& tile, const double* values) {
            builder.Add(tile, asStored ? Stored(values, tile.Cells(), node->integer) : values);
        });
    });
    // In a team every member learns the statistics of the whole grid.
    if (InTeam()) builder.AbsorbAll(Exchange(builder.Pack()));
    return builder.Finish();
}

std::string Format(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

// The cell type of a stored grid, and the NoData value it is written with.
struct CellType {
    GDALDataType type;
    double noData;
};

// The smallest type that holds every value the grid's operators allow, with
// one value to spare for NoData; floating grids stay 32-bit.
CellType CellTypeOf(const Node& node) {
    if (!node.integer) return {GDT_Float32, kFloatNoData};
    if (node.low >= 0.0 && node.high <= 254.0) return {GDT_Byte, 255.0};
    if (node.low >= 0.0 && node.high <= 65534.0) return {GDT_UInt16, 65535.0};
    if (node.low >= -32767.0 && node.high <= 32767.0) return {GDT_Int16, -32768.0};
    return {GDT_Int32, static_cast<double>(kIntNoData)};
}

// The range of values a band's cell type can hold.
std::pair<double, double> RangeOf(GDALDataType type) {
    switch (type) {
        case GDT_Byte:
            return {0.0, 255.0};
        case GDT_UInt16:
            return {0.0, 65535.0};
        case GDT_Int16:
            return {-32768.0, 32767.0};
        case GDT_UInt32:
            return {0.0, 4294967295.0};
        case GDT_Int32:
            return {-2147483648.0, 2147483647.0};
        default:
            return {-std::numeric_limits<double>::infinity(),
                    std::numeric_limits<double>::infinity()};
    }
}

// Column names of the attribute table of a grid of classes.
constexpr const char* kNameColumn = "Class_Name";
constexpr const char* kColorColumns[] = {"Red", "Green", "Blue"};

bool Named(const AttributeTable& table) {
    return std::ranges::any_of(
        table, [](const AttributeRow& r) { return !r.Class_Name.empty() || r.color; });
}

// Colour table and category names, indexed by value, for viewers that know
// no attribute tables. Only bands of non-negative values can index them.
void WriteClassesByValue(GDALRasterBandH band, const AttributeTable& table, GDALDataType type) {
    if (table.empty() || table.front().Value < 0 || (type != GDT_Byte && type != GDT_UInt16)) {
        return;
    }
    const int entries = table.back().Value + 1;
    GDALColorTableH colors = GDALCreateColorTable(GPI_RGB);
    // TIFF palettes hold no alpha: values without a class are black.
    const GDALColorEntry none = {0, 0, 0, 255};
    for (int i = 0; i < entries; ++i) GDALSetColorEntry(colors, i, &none);
    std::vector<std::string> names(static_cast<std::size_t>(entries));
    for (const AttributeRow& row : table) {
        names[static_cast<std::size_t>(row.Value)] = row.Class_Name;
        if (!row.color) continue;
        const GDALColorEntry entry = {row.color->red, row.color->green, row.color->blue, 255};
        GDALSetColorEntry(colors, row.Value, &entry);
    }
    GDALSetRasterColorTable(band, colors);
    GDALDestroyColorTable(colors);
    CPLStringList list;
    for (const std::string& name : names) list.AddString(name.c_str());
    GDALSetRasterCategoryNames(band, list.List());
}

void WriteSummary(GDALDatasetH dataset, const GridSummary& summary, std::int64_t cells,
                  GDALDataType type) {
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
    const AttributeTable& table = *summary.table;
    const bool named = Named(table);
    GDALRasterAttributeTableH rat = GDALCreateRasterAttributeTable();
    GDALRATCreateColumn(rat, "Value", GFT_Integer, GFU_MinMax);
    GDALRATCreateColumn(rat, "Count", GFT_Real, GFU_PixelCount);
    if (named) {
        GDALRATCreateColumn(rat, kNameColumn, GFT_String, GFU_Name);
        GDALRATCreateColumn(rat, kColorColumns[0], GFT_Integer, GFU_Red);
        GDALRATCreateColumn(rat, kColorColumns[1], GFT_Integer, GFU_Green);
        GDALRATCreateColumn(rat, kColorColumns[2], GFT_Integer, GFU_Blue);
    }
    GDALRATSetRowCount(rat, static_cast<int>(table.size()));
    for (std::size_t i = 0; i < table.size(); ++i) {
        const AttributeRow& r = table[i];
        const int row = static_cast<int>(i);
        GDALRATSetValueAsInt(rat, row, 0, r.Value);
        GDALRATSetValueAsDouble(rat, row, 1, static_cast<double>(r.Count));
        if (!named) continue;
        GDALRATSetValueAsString(rat, row, 2, r.Class_Name.c_str());
        const Rgb color = r.color.value_or(Rgb{});
        GDALRATSetValueAsInt(rat, row, 3, color.red);
        GDALRATSetValueAsInt(rat, row, 4, color.green);
        GDALRATSetValueAsInt(rat, row, 5, color.blue);
    }
    GDALSetDefaultRAT(band, rat);
    GDALDestroyRasterAttributeTable(rat);
    if (named) WriteClassesByValue(band, table, type);
}

// "YYYY:MM:DD HH:MM:SS", the form of the TIFF date tag, in local time.
std::string TiffDateNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y:%m:%d %H:%M:%S", &local);
    return text;
}

// Which program made the grid, when, and from what.
void WriteProvenance(GDALDatasetH dataset, const GridDescription& description) {
    const WriterDescription& writer = Writer();
    auto item = [&](const std::string& key, const std::string& value) {
        GDALSetMetadataItem(dataset, key.c_str(), value.c_str(), nullptr);
    };
    item("TIFFTAG_SOFTWARE", writer.software);
    item("TIFFTAG_DATETIME", TiffDateNow());
    if (!description.expression.empty()) item("HALVANE_EXPRESSION", description.expression);
    for (const auto& [name, source] : description.inputs) item("HALVANE_INPUT_" + name, source);
    if (!writer.commandLine.empty()) item("HALVANE_COMMAND", writer.commandLine);
    for (const auto& [key, value] : description.items) item(key, value);
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
            auto column = [&](const char* name) {
                for (int c = 0; c < GDALRATGetColumnCount(rat); ++c) {
                    if (EqualsNoCase(GDALRATGetNameOfCol(rat, c), name)) return c;
                }
                return -1;
            };
            const int nameColumn = column(kNameColumn);
            const int colorColumns[] = {column(kColorColumns[0]), column(kColorColumns[1]),
                                        column(kColorColumns[2])};
            const bool colored = std::ranges::none_of(colorColumns, [](int c) { return c < 0; });
            AttributeTable table;
            for (int row = 0; row < GDALRATGetRowCount(rat); ++row) {
                AttributeRow& r = table.emplace_back();
                r.Value = GDALRATGetValueAsInt(rat, row, 0);
                r.Count = static_cast<std::int64_t>(GDALRATGetValueAsDouble(rat, row, 1));
                if (nameColumn >= 0) r.Class_Name = GDALRATGetValueAsString(rat, row, nameColumn);
                if (!colored) continue;
                auto channel = [&](int k) {
                    return static_cast<std::uint8_t>(
                        std::clamp(GDALRATGetValueAsInt(rat, row, colorColumns[k]), 0, 255));
                };
                r.color = Rgb{channel(0), channel(1), channel(2)};
            }
            s.table = std::move(table);
        }  // an integer grid of ours without one has too many values for a table
        summary = std::move(s);
    }
    GDALClose(dataset);
    return summary;
}

// Rewrites a finished tiled grid as a cloud-optimized one: overviews down to
// one block, and the headers of all levels ahead of their cells, smallest
// level first, so that a reader over the network fetches only what it shows.
void WriteCloudOptimized(const fs::path& source, const fs::path& target, bool integer) {
    GDALDatasetH in = GDALOpen(source.c_str(), GA_ReadOnly);
    if (!in) throw EngineFailure("Cannot read '" + source.string() + "'" + LastGdalError());
    const char* options[] = {
        "COMPRESS=ZSTD",
        "LEVEL=1",
        integer ? "PREDICTOR=NO" : "PREDICTOR=STANDARD",
        "BLOCKSIZE=256",
        integer ? "OVERVIEW_RESAMPLING=NEAREST" : "OVERVIEW_RESAMPLING=AVERAGE",
        "NUM_THREADS=ALL_CPUS",
        "BIGTIFF=IF_SAFER",
        nullptr};
    CPLErrorReset();
    GDALDatasetH out = GDALCreateCopy(GDALGetDriverByName("COG"), target.c_str(), in, FALSE,
                                      const_cast<char**>(options), nullptr, nullptr);
    const std::string failure = LastGdalError();
    GDALClose(in);
    if (!out) throw EngineFailure("Cannot write '" + target.string() + "'" + failure);
    GDALClose(out);
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

WriteSettings& Writing() {
    static WriteSettings settings;
    return settings;
}

WriterDescription& Writer() {
    static WriterDescription writer{std::string("Halvane ") + runtime::kVersion, ""};
    return writer;
}

bool IsRaster(const std::string& path) {
    EnsureGdal();
    CPLPushErrorHandler(CPLQuietErrorHandler);
    GDALDatasetH dataset =
        GDALOpenEx(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr);
    CPLPopErrorHandler();
    if (dataset) GDALClose(dataset);
    return dataset != nullptr;
}

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
    std::tie(band.low, band.high) = RangeOf(type);
    int hasNoData = 0;
    band.noData = GDALGetRasterNoDataValue(first, &hasNoData);
    band.hasNoData = hasNoData != 0;
    // Cells of a 32-bit band hold the NoData value rounded to 32 bits.
    if (type == GDT_Float32) band.noData = static_cast<float>(band.noData);
    // NoData at an end of the type's range is no value, so a byte grid saved
    // again stays a byte grid.
    if (band.hasNoData && band.noData == band.high) band.high -= 1.0;
    if (band.hasNoData && band.noData == band.low) band.low += 1.0;
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

namespace {

// Until a grid is complete, a failure removes what was written.
struct PartialFile {
    GDALDatasetH dataset = nullptr;
    fs::path path;
    PartialFile() = default;
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;
    ~PartialFile() {
        if (dataset) GDALClose(dataset);
        if (!path.empty()) RemoveFileAndSidecars(path);
    }
};

}  // namespace

// One grid on its way to the workspace: the file it is written to under a
// temporary name, and what is learnt of its values while they are written.
struct RasterDataset::PendingWrite {
    RasterDataset* source;
    std::string name;
    fs::path final;
    CellType cellType;
    PartialFile file;
    GDALRasterBandH band = nullptr;
    std::mutex lock;
    SummaryBuilder builder;
    // The rows the file holds: all of them, or in a team this process's band.
    std::int64_t firstRow = 0;
    std::int64_t endRow = 0;
    // The file is a team's grid, whose blocks are copied from the bands.
    bool assembled = false;
    // Blocks that tiles have filled in part, by index along the rows.
    struct Gathered {
        std::vector<std::byte> cells;
        std::int64_t filled = 0;
    };
    std::unordered_map<std::int64_t, Gathered> gathered;

    PendingWrite(RasterDataset& dataset, std::string gridName, const RasterWorkspace& target)
        : source(&dataset),
          name(std::move(gridName)),
          final(fs::path(target.PathName()) / (name + ".tif")),
          cellType(CellTypeOf(*dataset.node_)),
          builder(dataset.node_->integer, dataset.node_->low, dataset.node_->high),
          endRow(dataset.node_->grid.rows) {}
};

void RasterDataset::CheckCopy(const std::string& name, const RasterWorkspace& target) const {
    if (name.empty() || name.find('/') != std::string::npos || name[0] == '.') {
        throw EngineFailure("'" + name + "' is not a valid grid name");
    }
    if (!target.Find(name).empty()) {
        throw EngineFailure("Grid '" + name + "' already exists in " + target.PathName());
    }
}

void RasterDataset::StartCopy(PendingWrite& writing) {
    const Grid& grid = node_->grid;
    const bool integer = node_->integer;
    const std::int64_t rows = writing.endRow - writing.firstRow;
    // A member of a team with more members than tile rows has no band.
    if (rows == 0) return;
    writing.file.path = writing.final.parent_path() / (TemporaryName(writing.name) + ".tif");
    // Measured on a 4000 x 4000 bathymetry (copy, slope, position index): ZSTD level 1
    // writes as fast as no compression at all; byte differencing shrinks floating
    // grids by a sixth for free but makes the small integer grids bigger and slower.
    // DEFLATE, LZW and LERC were 40-90% slower for no gain in size.
    // The assembled file of a team gets its blocks from the bands' files
    // afterwards: GDAL must not fill them in when it closes it.
    const char* options[] = {"TILED=YES",
                             "BLOCKXSIZE=256",
                             "BLOCKYSIZE=256",
                             "COMPRESS=ZSTD",
                             "ZSTD_LEVEL=1",
                             integer ? "PREDICTOR=1" : "PREDICTOR=2",
                             "BIGTIFF=IF_SAFER",
                             "NUM_THREADS=ALL_CPUS",
                             writing.assembled ? "SPARSE_OK=TRUE" : nullptr,
                             nullptr};
    GDALDriverH driver = GDALGetDriverByName("GTiff");
    CPLErrorReset();
    writing.file.dataset =
        GDALCreate(driver, writing.file.path.c_str(), static_cast<int>(grid.cols),
                   static_cast<int>(rows), 1, writing.cellType.type, const_cast<char**>(options));
    if (!writing.file.dataset) {
        writing.file.path.clear();
        throw EngineFailure("Cannot create '" + writing.final.string() + "'" + LastGdalError());
    }
    GDALDatasetH out = writing.file.dataset;
    const double top = grid.top - grid.cellY * static_cast<double>(writing.firstRow);
    double transform[6] = {grid.left, grid.cellX, 0.0, top, 0.0, -grid.cellY};
    GDALSetGeoTransform(out, transform);
    if (node_->spatialReference && !node_->spatialReference->empty()) {
        GDALSetProjection(out, node_->spatialReference->c_str());
    }
    writing.band = GDALGetRasterBand(out, 1);
    GDALSetRasterNoDataValue(writing.band, writing.cellType.noData);
}

void RasterDataset::WriteTile(PendingWrite& writing, const Window& tile, const double* values) {
    const bool integer = node_->integer;
    const auto intNoData = static_cast<std::int32_t>(writing.cellType.noData);
    const std::int64_t cells = tile.Cells();
    void* buffer = nullptr;
    if (integer) {
        auto* ints = ThreadBuffer<std::int32_t, Scratch::kCells>(static_cast<std::size_t>(cells));
        writing.builder.AddInts(tile, values, intNoData, ints);
        buffer = ints;
    } else {
        const double* stored = Stored(values, cells, false);
        writing.builder.Add(tile, stored);
        auto* floats = ThreadBuffer<float, Scratch::kCells>(static_cast<std::size_t>(cells));
        for (std::int64_t i = 0; i < cells; ++i) {
            floats[i] = std::isnan(stored[i]) ? kFloatNoData : static_cast<float>(stored[i]);
        }
        buffer = floats;
    }
    WriteBlocks(writing, tile, buffer);
}

// Tiles go to the file block by block, past GDAL's block cache. Through the
// cache, their blocks stayed there until some thread, often a reader that
// needed room, pushed them out and waited for their compression while the
// writer's lock was held, so that the threads took turns. A block that a
// tile covers in part is gathered until its other tiles have come. The cells
// come as WriteTile makes them: 32-bit integers or floats.
void RasterDataset::WriteBlocks(PendingWrite& writing, const Window& tile,
                                const void* cells) const {
    constexpr std::int64_t kBlock = kFileBlockRows;
    const std::int64_t row0 = tile.row0 - writing.firstRow;
    const std::int64_t fileRows = writing.endRow - writing.firstRow;
    const std::int64_t gridCols = node_->grid.cols;
    const std::int64_t blocksAcross = (gridCols + kBlock - 1) / kBlock;
    const GDALDataType type = writing.cellType.type;
    const int size = GDALGetDataTypeSizeBytes(type);
    const GDALDataType cellType = node_->integer ? GDT_Int32 : GDT_Float32;
    const int cellSize = GDALGetDataTypeSizeBytes(cellType);
    const auto* from = static_cast<const std::byte*>(cells);
    const auto blockBytes = static_cast<std::size_t>(kBlock * kBlock * size);
    thread_local std::vector<std::byte> own;
    for (std::int64_t by = row0 / kBlock; by * kBlock < row0 + tile.rows; ++by) {
        for (std::int64_t bx = tile.col0 / kBlock; bx * kBlock < tile.col0 + tile.cols; ++bx) {
            // The part of the tile in this block, in the file's rows.
            const std::int64_t r0 = std::max(row0, by * kBlock);
            const std::int64_t r1 = std::min(row0 + tile.rows, (by + 1) * kBlock);
            const std::int64_t c0 = std::max(tile.col0, bx * kBlock);
            const std::int64_t c1 = std::min(tile.col0 + tile.cols, (bx + 1) * kBlock);
            const std::int64_t blockCells =
                std::min(kBlock, fileRows - by * kBlock) * std::min(kBlock, gridCols - bx * kBlock);
            const std::int64_t partCells = (r1 - r0) * (c1 - c0);
            const auto copy = [&](std::byte* block) {
                for (std::int64_t r = r0; r < r1; ++r) {
                    GDALCopyWords64(from + ((r - row0) * tile.cols + (c0 - tile.col0)) * cellSize,
                                    cellType, cellSize,
                                    block + ((r - by * kBlock) * kBlock + c0 - bx * kBlock) * size,
                                    type, size, c1 - c0);
                }
            };
            const auto write = [&](const std::byte* block) {
                if (GDALWriteBlock(writing.band, static_cast<int>(bx), static_cast<int>(by),
                                   const_cast<std::byte*>(block)) != CE_None) {
                    throw EngineFailure("Cannot write '" + writing.final.string() + "'" +
                                        LastGdalError());
                }
            };
            if (partCells == blockCells) {
                // What lies beyond the grid's edge in an edge block is no cell.
                own.assign(blockBytes, std::byte{0});
                copy(own.data());
                std::lock_guard lock(writing.lock);
                write(own.data());
                continue;
            }
            std::lock_guard lock(writing.lock);
            PendingWrite::Gathered& gathered = writing.gathered[by * blocksAcross + bx];
            if (gathered.cells.empty()) gathered.cells.assign(blockBytes, std::byte{0});
            copy(gathered.cells.data());
            gathered.filled += partCells;
            if (gathered.filled < blockCells) continue;
            write(gathered.cells.data());
            writing.gathered.erase(by * blocksAcross + bx);
        }
    }
}

GridSummary RasterDataset::FinishWrite(PendingWrite& writing) {
    if (!InTeam()) {
        GridSummary summary = writing.builder.Finish();
        if (summary.table && description_.nameClasses) description_.nameClasses(*summary.table);
        Complete(writing, summary);
        return summary;
    }
    Team& team = *CurrentTeam();
    Together([&] {
        if (!writing.file.dataset) return;
        CPLErrorReset();
        GDALDatasetH band = std::exchange(writing.file.dataset, nullptr);
        GDALClose(band);
        if (CPLGetLastErrorType() >= CE_Failure) {
            throw EngineFailure("Cannot write '" + writing.final.string() + "'" + LastGdalError());
        }
    });
    // Every member learns the statistics of the whole grid, combined alike,
    // and where the other bands lie.
    writing.builder.AbsorbAll(Exchange(writing.builder.Pack()));
    const std::vector<std::string> bands =
        Exchange(std::to_string(writing.firstRow) + "\n" + writing.file.path.string());
    GridSummary summary = writing.builder.Finish();
    if (summary.table && description_.nameClasses) description_.nameClasses(*summary.table);
    // The first member assembles the bands into the grid's temporary file.
    Together([&] {
        if (team.Rank() != 0) return;
        PartialFile own;
        std::swap(own.path, writing.file.path);
        writing.firstRow = 0;
        writing.endRow = node_->grid.rows;
        writing.assembled = true;
        StartCopy(writing);
        Describe(writing, summary);
        std::vector<std::pair<std::int64_t, std::string>> parts;
        for (const std::string& band : bands) {
            const std::size_t split = band.find('\n');
            std::string path = band.substr(split + 1);
            if (!path.empty())
                parts.emplace_back(std::stoll(band.substr(0, split)), std::move(path));
        }
        CopyBlocks(parts, writing);
        Lay(writing);
    });
    return summary;
}

namespace {

// libtiff's complaints about one file, kept for the failure that ends its use;
// its warnings (the GeoTIFF and GDAL tags it does not know) are no concern.
struct TiffFile {
    TIFF* tiff = nullptr;
    std::string error;

    TiffFile(const std::string& path, const char* mode) {
        TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
        TIFFOpenOptionsSetErrorHandlerExtR(options, &TiffFile::Error, this);
        TIFFOpenOptionsSetWarningHandlerExtR(options, &TiffFile::Warning, this);
        tiff = TIFFOpenExt(path.c_str(), mode, options);
        TIFFOpenOptionsFree(options);
    }
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;
    ~TiffFile() {
        if (tiff) TIFFClose(tiff);
    }
    // Closing writes the directory: its failure is the file's failure.
    bool Close() {
        TIFFClose(std::exchange(tiff, nullptr));
        return error.empty();
    }
    std::string Why() const { return error.empty() ? std::string() : ": " + error; }

    static int Error(TIFF*, void* self, const char*, const char* format, va_list args) {
        auto& file = *static_cast<TiffFile*>(self);
        if (file.error.empty()) {
            char text[512];
            std::vsnprintf(text, sizeof text, format, args);
            file.error = text;
        }
        return 1;
    }
    static int Warning(TIFF*, void*, const char*, const char*, va_list) { return 1; }
};

// What must agree for a compressed block of one file to be a block of another.
std::vector<std::uint64_t> BlockLayout(TIFF* tiff) {
    std::uint32_t width = 0, blockWidth = 0, blockHeight = 0;
    std::uint16_t compression = 0, predictor = 1, bits = 0, format = 1;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &blockWidth);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &blockHeight);
    TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
    TIFFGetField(tiff, TIFFTAG_PREDICTOR, &predictor);
    TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &format);
    return {width,     blockWidth, blockHeight, compression,
            predictor, bits,       format,      static_cast<std::uint64_t>(TIFFIsTiled(tiff))};
}

}  // namespace

void RasterDataset::CopyBlocks(const std::vector<std::pair<std::int64_t, std::string>>& bands,
                               const PendingWrite& writing) {
    const std::string failure = "Cannot write '" + writing.final.string() + "'";
    // Opened once: every closing writes the whole directory again at the end
    // of the file, and a grid of 10^10 cells has a million blocks.
    TiffFile out(writing.file.path.string(), "r+");
    if (!out.tiff) throw EngineFailure(failure + out.Why());
    const std::vector<std::uint64_t> layout = BlockLayout(out.tiff);
    const auto blockRows = static_cast<std::int64_t>(layout[2]);
    const auto blocksAcross = static_cast<std::int64_t>((layout[0] + layout[1] - 1) / layout[1]);
    std::vector<unsigned char> bytes;
    for (const auto& [firstRow, path] : bands) {
        TiffFile in(path, "r");
        if (!in.tiff) throw EngineFailure("Cannot read '" + path + "'" + in.Why());
        if (BlockLayout(in.tiff) != layout || firstRow % blockRows != 0) {
            throw EngineFailure(failure + ": the band in '" + path +
                                "' is not laid out as the grid");
        }
        std::uint64_t* sizes = nullptr;
        if (!TIFFGetField(in.tiff, TIFFTAG_TILEBYTECOUNTS, &sizes)) {
            throw EngineFailure("Cannot read '" + path + "'" + in.Why());
        }
        // Blocks run along rows, and a band has the grid's width: the band's
        // blocks are a run of the grid's, from its first row's.
        const auto first = static_cast<std::uint32_t>(firstRow / blockRows * blocksAcross);
        const std::uint32_t blocks = TIFFNumberOfTiles(in.tiff);
        for (std::uint32_t block = 0; block < blocks; ++block) {
            const auto size = static_cast<tmsize_t>(sizes[block]);
            bytes.resize(static_cast<std::size_t>(size));
            if (TIFFReadRawTile(in.tiff, block, bytes.data(), size) != size) {
                throw EngineFailure("Cannot read '" + path + "'" + in.Why());
            }
            if (TIFFWriteRawTile(out.tiff, first + block, bytes.data(), size) != size) {
                throw EngineFailure(failure + out.Why());
            }
        }
    }
    if (!out.Close()) throw EngineFailure(failure + out.Why());
}

void RasterDataset::Complete(PendingWrite& writing, const GridSummary& summary) {
    Describe(writing, summary);
    Lay(writing);
}

void RasterDataset::Describe(PendingWrite& writing, const GridSummary& summary) {
    WriteSummary(writing.file.dataset, summary, node_->grid.Cells(), writing.cellType.type);
    WriteProvenance(writing.file.dataset, description_);
    CPLErrorReset();
    GDALDatasetH out = writing.file.dataset;
    writing.file.dataset = nullptr;
    GDALClose(out);
    if (CPLGetLastErrorType() >= CE_Failure) {
        throw EngineFailure("Cannot write '" + writing.final.string() + "'" + LastGdalError());
    }
}

void RasterDataset::Lay(PendingWrite& writing) {
    if (raster::Writing().cloudOptimized) {
        const fs::path plain = writing.file.path;
        PartialFile cloudOptimized;
        cloudOptimized.path = writing.final.parent_path() / (TemporaryName(writing.name) + ".tif");
        WriteCloudOptimized(plain, cloudOptimized.path, node_->integer);
        std::swap(writing.file.path, cloudOptimized.path);
    }
}

RasterDatasetPtr RasterDataset::Store(PendingWrite& writing, GridSummary summary,
                                      const RasterWorkspace& target) {
    if (!InTeam()) return StoreHere(writing, std::move(summary), target);
    // The first member stores the grid; the others open it once it stands.
    RasterDatasetPtr stored;
    Together([&] {
        if (CurrentTeam()->Rank() == 0) stored = StoreHere(writing, summary, target);
    });
    if (stored) return stored;
    stored = Open(writing.final.string());
    stored->summary_ = std::move(summary);
    return stored;
}

RasterDatasetPtr RasterDataset::StoreHere(PendingWrite& writing, GridSummary summary,
                                          const RasterWorkspace& target) {
    const fs::path& written = writing.file.path;
    const fs::path& final = writing.final;
    // The grid appears under its name only when complete, and never over another.
    if (::renameat2(AT_FDCWD, written.c_str(), AT_FDCWD, final.c_str(), RENAME_NOREPLACE) != 0) {
        const int error = errno;
        if (error == EEXIST) {
            throw EngineFailure("Grid '" + writing.name + "' already exists in " +
                                target.PathName());
        }
        throw EngineFailure("Cannot store '" + final.string() + "': " + std::strerror(error));
    }
    // Without its side file the grid is still whole: statistics are then computed again.
    std::error_code ec;
    fs::rename(written.string() + ".aux.xml", final.string() + ".aux.xml", ec);
    writing.file.path.clear();
    RasterDatasetPtr stored = Open(final.string());
    stored->summary_ = std::move(summary);
    return stored;
}

RasterDatasetPtr RasterDataset::Copy(const std::string& name, const RasterWorkspacePtr& workspace) {
    return CopyAll({{shared_from_this(), name}}, workspace).front();
}

std::vector<RasterDatasetPtr> RasterDataset::CopyAll(
    const std::vector<std::pair<RasterDatasetPtr, std::string>>& grids,
    const RasterWorkspacePtr& workspace) {
    EnsureGdal();
    const RasterWorkspace& target = runtime::Deref(workspace);
    std::vector<RasterDatasetPtr> stored;
    // One at a time, as when each grid is copied on its own: the first that
    // cannot be stored fails, and the grids before it stand.
    const auto oneByOne = [&] {
        for (std::size_t k = stored.size(); k < grids.size(); ++k) {
            stored.push_back(CopyAll({grids[k]}, workspace).front());
        }
        return stored;
    };
    if (grids.size() > 1) {
        std::vector<std::string> names;
        for (const auto& [dataset, name] : grids) {
            // What would fail on its own is left to the one-by-one path, so
            // that the same grids stand after the same failure.
            if (!dataset || !dataset->node_) return oneByOne();
            const Grid& a = dataset->node_->grid;
            const Grid& b = grids.front().first->node_->grid;
            const bool sameGrid = a.cols == b.cols && a.rows == b.rows && a.left == b.left &&
                                  a.top == b.top && a.cellX == b.cellX && a.cellY == b.cellY;
            if (!sameGrid) return oneByOne();
            try {
                dataset->CheckCopy(name, target);
            } catch (const runtime::Failure&) {
                return oneByOne();
            }
            // A copy: clang 14 does not let a lambda capture a structured binding.
            const std::string& grid = name;
            if (std::ranges::any_of(names, [&](const auto& n) { return EqualsNoCase(n, grid); }))
                return oneByOne();
            names.push_back(name);
        }
    }
    if (grids.size() == 1) {
        if (!grids.front().first) throw runtime::RuntimeFailure(runtime::kObjectNotSet);
        grids.front().first->CheckCopy(grids.front().second, target);
    }

    std::vector<std::unique_ptr<PendingWrite>> writings;
    std::vector<GridSummary> summaries;
    std::vector<NodePtr> roots;
    try {
        std::string stage;
        for (const auto& [dataset, name] : grids) stage += (stage.empty() ? "" : "+") + name;
        const StageMeter meter(stage);
        for (const auto& [dataset, name] : grids) roots.push_back(dataset->node_);
        // Plain names, not a structured binding: clang 14 refuses to capture those.
        const auto rows = SharedRows(roots.front()->grid.rows, TileSizeFor(roots));
        const auto firstRow = rows.first;
        const auto endRow = rows.second;
        Together([&] {
            for (const auto& [dataset, name] : grids) {
                writings.push_back(std::make_unique<PendingWrite>(*dataset, name, target));
                writings.back()->firstRow = firstRow;
                writings.back()->endRow = endRow;
                dataset->StartCopy(*writings.back());
            }
            EvaluateTiles(roots, [&](std::size_t k, const Window& tile, const double* values) {
                writings[k]->source->WriteTile(*writings[k], tile, values);
            });
        });
        for (auto& writing : writings) summaries.push_back(writing->source->FinishWrite(*writing));
    } catch (const runtime::Failure&) {
        // A team does not try the grids one by one: every member would have
        // to fail alike at every step. The run fails as a whole instead.
        if (grids.size() == 1 || InTeam()) throw;
        // Which of the grids would have failed first is known only one by one.
        writings.clear();
        return oneByOne();
    }
    for (std::size_t k = 0; k < writings.size(); ++k) {
        stored.push_back(writings[k]->source->Store(*writings[k], std::move(summaries[k]), target));
    }
    return stored;
}

std::vector<std::pair<std::string, std::string>> RasterDataset::StoredItems() const {
    std::vector<std::pair<std::string, std::string>> items;
    if (IsTemporary()) return items;
    GDALDatasetH dataset =
        GDALOpenEx(path_.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr);
    if (!dataset) return items;
    for (char** item = GDALGetMetadata(dataset, nullptr); item && *item; ++item) {
        char* key = nullptr;
        const char* value = CPLParseNameValue(*item, &key);
        if (key && value) items.emplace_back(key, value);
        CPLFree(key);
    }
    GDALClose(dataset);
    return items;
}

bool RasterDataset::CanDelete() const {
    if (IsTemporary()) return false;
    const fs::path path(path_);
    return ::access(path.c_str(), W_OK) == 0 && ::access(path.parent_path().c_str(), W_OK) == 0;
}

void RasterDataset::Delete() {
    if (!CanDelete()) throw EngineFailure("Cannot delete raster '" + path_ + "'");
    const StageMeter meter("delete " + name_);
    // In a team the first process deletes, once every process has come this
    // far: none of them then looks for the grid while it goes, and all see it
    // gone afterwards.
    Together([] {});
    Together([&] {
        if (InTeam() && CurrentTeam()->Rank() != 0) return;
        std::error_code ec;
        if (fs::is_directory(path_, ec)) {
            fs::remove_all(path_, ec);
        } else {
            RemoveFileAndSidecars(path_);
        }
    });
}

const GridSummary& RasterDataset::Summary() {
    std::lock_guard lock(summaryLock_);
    if (!summary_ && !IsTemporary()) summary_ = ReadSummary(path_);
    if (!summary_) {
        const StageMeter meter("statistics " + (IsTemporary() ? std::string("(computed)") : name_));
        summary_ = Summarize(node_, IsTemporary());
    }
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

namespace {

// What `ask` answers of the raster's reference system, or `none` without one.
template <class T>
T AskReference(const std::string& wkt, T none, const std::function<T(OGRSpatialReferenceH)>& ask) {
    if (wkt.empty()) return none;
    OGRSpatialReferenceH srs = OSRNewSpatialReference(wkt.c_str());
    if (!srs) return none;
    T answer = ask(srs);
    OSRDestroySpatialReference(srs);
    return answer;
}

}  // namespace

bool Raster::IsProjected() const {
    return AskReference<bool>(SpatialReference(), false,
                              [](OGRSpatialReferenceH srs) { return OSRIsProjected(srs) != 0; });
}

std::string Raster::SpatialReferenceName() const {
    return AskReference<std::string>(SpatialReference(), "", [](OGRSpatialReferenceH srs) {
        const char* name = OSRGetName(srs);
        return std::string(name ? name : "");
    });
}

std::optional<int> Raster::EpsgCode() const {
    return AskReference<std::optional<int>>(
        SpatialReference(), std::nullopt, [](OGRSpatialReferenceH srs) -> std::optional<int> {
            // The code the reference carries, else the one it matches outright.
            const char* type = OSRGetAuthorityName(srs, nullptr);
            if (!type || !EqualsNoCase(type, "EPSG")) {
                if (OSRAutoIdentifyEPSG(srs) != OGRERR_NONE) return std::nullopt;
                type = OSRGetAuthorityName(srs, nullptr);
            }
            const char* code = OSRGetAuthorityCode(srs, nullptr);
            if (!type || !EqualsNoCase(type, "EPSG") || !code) return std::nullopt;
            return std::atoi(code);
        });
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
