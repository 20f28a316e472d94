#pragma once
// The browse buttons of the setup page and the required-data dialogs: a
// raster chosen in the browse dialog lands in a path box and, through the
// caller, in the session.

#include <functional>
#include <string>

#include "platform/raster/Fwd.h"

class QLineEdit;

namespace halvane::pages {

class Page;

// Writes a chosen grid's name and folder into the session.
using StoreGrid = std::function<void(const std::string& name, const std::string& folder)>;

// The session's input grid: g_s_InputDataSet and g_s_InputDataPath.
void StoreInputGrid(const std::string& name, const std::string& folder);

// Browses for a grid that must be projected. A cancelled dialog changes
// nothing; an unprojected grid gets a notice and changes nothing either.
// Otherwise the box shows the full path, `store` runs, and a raster layer is
// made from the path and dropped, as a test that the raster opens.
void BrowseProjectedGrid(Page& page, const std::string& title, QLineEdit& box,
                         const StoreGrid& store);

// The working directory's browse button: the chosen folder goes into `box` and
// the session's g_s_WorkingDir; a cancelled dialog empties both.
void BrowseWorkingDir(Page& page, QLineEdit& box);

// The layer test alone, between the busy pointer and the pointer back.
void TestRasterOpens(const std::string& path);

// The grid `name` in the raster workspace `folder`.
raster::RasterDatasetPtr OpenInFolder(const std::string& folder, const std::string& name);

// The full path split at its last separator; npos when there is none.
std::size_t LastSeparator(const std::string& path);

}  // namespace halvane::pages
