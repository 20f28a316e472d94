// modUtil's raster access: names in paths, workspaces made on demand, and the
// routines that stay silent or report.

#include <gtest/gtest.h>

#include <filesystem>

#include "engine/RasterAccess.h"
#include "platform/reporting/ErrorHandling.h"
#include "support/GridFiles.h"
#include "support/ScriptedDesktop.h"
#include "support/Unprivileged.h"

namespace halvane {
namespace {

namespace fs = std::filesystem;

class RasterAccessTest : public testing::ScriptedDesktop {
protected:
    void SetUp() override {
        // A window kept from an earlier test would report to that test's desktop.
        ErrorHandling::ReleaseErrorWindow();
        ErrorHandling::m_bErrorTextBuilt = false;
    }
    void WriteDepth(const std::string& name) {
        const raster::Grid grid{0, 40, 10, 10, 4, 4};
        testing::WriteGrid(dir_ / name, grid, testing::Surface(grid, true));
    }

    testing::TempDir dir_;
};

TEST_F(RasterAccessTest, NamesInPaths) {
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"/data/work/dem.tif", "/data/work", "dem"},
        {"/data/work/dem.v2.tif", "/data/work", "dem"},
        {"/data/work/Depth", "/data/work", "Depth"},
        {"/data/work/", "/data/work", ""},
        {"/dem.tif", "", "dem"},
        {"dem.tif", "", ""},
        {"", "", ""},
    };
    for (const auto& [full, path, name] : cases) {
        EXPECT_EQ(PathOfRaster(full), path) << full;
        EXPECT_EQ(NameOfRaster(full), name) << full;
    }
}

TEST_F(RasterAccessTest, EmptyFolderBecomesAWorkspaceBySavingIntoIt) {
    const std::string folder = dir_.Path().string();
    EXPECT_EQ(GetRasterWorkspace(folder), nullptr);
    EXPECT_FALSE(RasterExists(folder + "/depth"));

    const raster::Grid grid{0, 40, 10, 10, 4, 4};
    testing::TempDir source;
    testing::WriteGrid(source / "in.tif", grid, testing::Surface(grid, true));
    raster::RasterMapAlgebraOp op;
    op.BindRaster(testing::OpenRaster(source / "in.tif"), "inRaster");
    EXPECT_EQ(MakePerminentGrid(op.Execute("[inRaster] + 1"), folder, "Plus1"), folder + "/Plus1");
    EXPECT_TRUE(fs::is_directory(dir_.Path() / "halvane_var" / "info"));
    EXPECT_NE(GetRasterWorkspace(folder), nullptr);
    EXPECT_TRUE(RasterExists(folder + "/PLUS1.tif"));  // cut at the first "."
    EXPECT_NE(OpenDatasetInWorkspace(GetRasterWorkspace(folder), "plus1"), nullptr);
    EXPECT_EQ(OpenDatasetInWorkspace(GetRasterWorkspace(folder), "nothing"), nullptr);
    EXPECT_EQ(OpenDatasetInWorkspace(nullptr, "plus1"), nullptr);
    // Saving under a name that exists fails to the caller.
    EXPECT_THROW(MakePerminentGrid(op.Execute("[inRaster] + 2"), folder, "plus1"),
                 runtime::Failure);
    EXPECT_TRUE(ui.Events().empty());
}

TEST_F(RasterAccessTest, OpenAndDeleteReportUnderTheirOwnNames) {
    WriteDepth("depth.tif");
    const std::string folder = dir_.Path().string();
    EXPECT_NE(OpenRasterDataset(folder, "Depth"), nullptr);
    EXPECT_TRUE(DeleteRaster(folder, "DEPTH"));
    EXPECT_FALSE(fs::exists(dir_.Path() / "depth.tif"));
    EXPECT_TRUE(ui.Events().empty());

    EXPECT_FALSE(DeleteRaster(folder, "depth"));
    ASSERT_EQ(ui.Events().size(), 2u);  // the failed open, then the empty reference
    EXPECT_NE(ui.Events()[0].text.find("OpenRasterDataset modUtil"), std::string::npos);
    EXPECT_NE(ui.Events()[1].text.find("DeleteRaster modUtil"), std::string::npos);
    EXPECT_NE(ui.Events()[1].text.find("Object variable or With block variable not set"),
              std::string::npos);
}

TEST_F(RasterAccessTest, AFolderThatVanishedIsOneReportWithItsCause) {
    const fs::path survey = dir_.Path() / "survey";
    fs::create_directory(survey);
    const raster::Grid grid{0, 40, 10, 10, 4, 4};
    testing::WriteGrid((survey / "depth.tif").string(), grid, testing::Surface(grid, true));
    EXPECT_NE(OpenRasterDataset(survey.string(), "depth"), nullptr);
    fs::remove_all(survey);

    EXPECT_EQ(OpenRasterDataset(survey.string(), "depth"), nullptr);
    EXPECT_EQ(Reports(), std::vector<std::string>{testing::OwnFailureReport(
                             "OpenRasterDataset modUtil ", raster::kEngineErrorNumber,
                             "Workspace '" + survey.string() + "' does not exist")});
}

TEST_F(RasterAccessTest, AGridTheUserMayNotDeleteStaysWithAnUntitledNotice) {
    WriteDepth("depth.tif");
    testing::UnprivilegedRun run;
    {
        const testing::ReadOnlyFolder readOnly(dir_.Path());
        run = testing::RunUnprivileged(ui, [&] { return DeleteRaster(dir_.Path(), "Depth"); });
    }
    ASSERT_TRUE(run.ran);
    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.events, (std::vector<ui::Event>{{"notice", "cannot delete raster", "", 0}}));
    EXPECT_TRUE(fs::exists(dir_.Path() / "depth.tif"));
}

TEST_F(RasterAccessTest, BrowseDialogsGiveTheFirstChoiceOrNothing) {
    ui.Select({"/data/work", "/data/other"});
    EXPECT_EQ(getWorkspaceInput("Choose the working directory", 0), "/data/work");
    ui.Select({});
    EXPECT_EQ(getRasterInput("Choose a grid", 0), "");
    ASSERT_EQ(ui.Events().size(), 2u);
    EXPECT_EQ(ui.Events()[0].title, "Choose the working directory");
    EXPECT_EQ(ui.Messages().size(), 0u);
}

}  // namespace
}  // namespace halvane
