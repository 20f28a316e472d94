#pragma once
// The map algebra operator and the surface operator, as the system calls them.

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "platform/raster/Storage.h"

namespace halvane::raster {

// Every call the system makes on the operators, one line each
// ("BindRaster inRaster", "Execute int(...)"), for `--trace` and for checks of
// the calling order. Empty: nothing is told.
using AlgebraJournal = std::function<void(const std::string& line)>;
AlgebraJournal& Journal();

// One object per computation: bindings, environment, Execute.
class RasterMapAlgebraOp {
public:
    RasterMapAlgebraOp();

    void BindRaster(const RasterPtr& raster, const std::string& name);
    void UnbindRaster(const std::string& name);

    // Checks the whole expression at once (syntax, functions and their
    // arguments, bindings, overlap of the inputs) and gives its raster. The
    // cells are computed when the raster is saved, summarised or read.
    RasterPtr Execute(const std::string& expression);

    // IRasterAnalysisEnvironment. Results are temporary whatever the output
    // workspace; the cell size and extent settings are kept but the output
    // grid always follows the inputs (largest cell, intersection).
    void OutWorkspace(const RasterWorkspacePtr& workspace);
    const RasterWorkspacePtr& OutWorkspace() const { return outWorkspace_; }
    void SetCellSize(int setting, const std::string& value);
    void SetExtent(int setting, const RasterPtr& raster);

private:
    struct NoCase {
        bool operator()(const std::string& a, const std::string& b) const;
    };
    std::map<std::string, RasterPtr, NoCase> bindings_;
    RasterWorkspacePtr outWorkspace_;
    std::optional<std::string> cellSize_;
    RasterPtr extent_;
};

class RasterSurfaceOp {
public:
    // measure 1: degrees, the only one the system uses.
    RasterPtr Slope(const RasterPtr& raster, int measure, double zFactor = 1.0);
};

}  // namespace halvane::raster
