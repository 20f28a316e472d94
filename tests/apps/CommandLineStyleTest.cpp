// What a user of the command line sees when things go wrong and while they
// go on: one-line errors, one bar per stage, nothing of the desktop's texts,
// runs that leave their folder as they found it when they fail, and the
// options and formats of the commands.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "apps/CommandLine.h"
#include "support/GridFiles.h"
#include "support/Halvane.h"
#include "synth/Synth.h"

namespace halvane::apps {
namespace {

namespace fs = std::filesystem;

struct Outcome {
    int status;
    std::string out, err;
};

Outcome Halvane(const std::vector<std::string>& args) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const int status = testing::Halvane(args);
    const std::string err = ::testing::internal::GetCapturedStderr();
    return {status, ::testing::internal::GetCapturedStdout(), err};
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// Every file and folder below `folder` with its inode: the same names on the
// same files, whatever their times.
std::map<std::string, ino_t> Contents(const fs::path& folder) {
    std::map<std::string, ino_t> contents;
    if (!fs::exists(folder)) return contents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat info {};
        ::lstat(entry.path().c_str(), &info);
        contents[entry.path().lexically_relative(folder).string()] = info.st_ino;
    }
    return contents;
}

class CommandLineStyleTest : public ::testing::Test {
protected:
    void SetUp() override { synth::WriteGeoTiff({60, 50, 10.0, 7}, input_); }
    testing::TempDir dir_;
    const std::string input_ = dir_ / "depth.tif";
    const std::string work_ = dir_ / "work";
};

TEST_F(CommandLineStyleTest, ErrorsAreOneLineNamingWhatAndWhy) {
    const std::string empty = dir_ / "empty.tif";
    std::ofstream(empty).flush();
    const std::string text = dir_ / "notes.tif";
    std::ofstream(text) << "depths to come\n";
    const std::string missing = dir_ / "nowhere.tif";
    const struct {
        std::vector<std::string> args;
        int status;
        std::string line;
    } cases[] = {
        {{"slope", "--workdir", work_, "--name", "s", missing},
         1,
         "halvane slope: " + missing + ": no such file or folder"},
        {{"rugosity", "--workdir", work_, "--name", "r", empty},
         1,
         "halvane rugosity: " + empty + ": the file is empty, not a grid"},
        {{"classify", "--workdir", work_, text},
         1,
         "halvane classify: " + text + ": not a raster that GDAL can read"},
        {{"calc", "--workdir", work_, "--name", "c", "--bind", "a=" + input_,
          "Focalmean([a], annulus, 5, 1)"},
         1,
         "halvane calc: Map algebra: Focalmean needs 0 <= inner radius < outer radius, not 5 "
         "and 1"},
        {{"classify", "--workdir", work_, "--broad", "5,1", input_},
         2,
         "halvane classify: --broad 5,1: the inner radius must be at least 0 and less than the "
         "outer (see halvane classify --help)"},
        {{"bpi", "--workdir", work_, "--inner", "one", "--outer", "3", input_},
         2,
         "halvane bpi: --inner one --outer 3: the radii are numbers of cells (see halvane bpi "
         "--help)"},
        {{"resample", "--workdir", work_, "--name", "r", "--cell-size", "20", "--method", "Spline",
          input_},
         2,
         "halvane resample: --method Spline: the methods are nearest, bilinear and cubic (see "
         "halvane resample --help)"},
    };
    for (const auto& c : cases) {
        const Outcome run = Halvane(c.args);
        EXPECT_EQ(run.status, c.status) << c.line;
        EXPECT_EQ(run.err, c.line + "\n");
        EXPECT_EQ(run.out, "");
        // Nothing of a refused or failed run stays behind, not even the folder.
        EXPECT_FALSE(fs::exists(work_)) << c.line;
    }
    // With --trace the full report and its call chain come first.
    const Outcome traced =
        Halvane({"slope", "--trace", "--workdir", work_, "--name", "s", input_ + "x"});
    EXPECT_EQ(traced.status, 1);
    EXPECT_EQ(Lines(traced.err).back(), "halvane slope: " + input_ + "x: no such file or folder");
}

TEST_F(CommandLineStyleTest, ProgressIsOneLinePerStageAndNothingOfTheDesktop) {
    const Outcome run = Halvane({"classify", "--workdir", work_, input_});
    ASSERT_EQ(run.status, 0) << run.err;
    const std::vector<std::string> stages = {
        "Broad-scale BPI, ring of 1 to 5 cells", "Fine-scale BPI, ring of 1 to 3 cells",
        "Standardized BPI at both scales", "Slope, class grids and zones"};
    const std::vector<std::string> lines = Lines(run.err);
    ASSERT_EQ(lines.size(), stages.size()) << run.err;
    for (std::size_t i = 0; i < stages.size(); ++i) {
        const std::regex line(std::to_string(i + 1) + "/4 " + stages[i] +
                              ": 0\\.\\.\\.10\\.\\.\\.20\\.\\.\\.30\\.\\.\\.40\\.\\.\\.50\\.\\.\\."
                              "60\\.\\.\\.70\\.\\.\\.80\\.\\.\\.90\\.\\.\\.100 - done in "
                              "[0-9]+\\.[0-9] s");
        EXPECT_TRUE(std::regex_match(lines[i], line)) << lines[i];
    }
    EXPECT_EQ(Lines(run.out).front(), work_ + "/ZONES.tif");

    const Outcome quiet = Halvane({"slope", "--quiet", "--workdir", work_, "--name", "s", input_});
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.err, "");
    EXPECT_EQ(quiet.out, work_ + "/s.tif\n");
    const Outcome one =
        Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "2", input_});
    EXPECT_EQ(one.err.rfind("1/1 BPI, ring of 1 to 2 cells: 0...10...", 0), 0u) << one.err;
    EXPECT_EQ(Lines(one.err).size(), 1u);
}

TEST_F(CommandLineStyleTest, FailedRunLeavesTheFolderAsItFoundIt) {
    // A folder with a slope the run would replace, and a grid tmpFineBPI,
    // which the fine-scale stage refuses to write over: the run fails half-way.
    ASSERT_EQ(Halvane({"slope", "--workdir", work_, "--name", "SLOPE", input_}).status, 0);
    ASSERT_EQ(Halvane({"calc", "--workdir", work_, "--name", "tmpFineBPI", "--bind", "a=" + input_,
                       "int([a] * 0)"})
                  .status,
              0);
    const auto before = Contents(work_);
    const Outcome failed = Halvane({"classify", "--workdir", work_, input_});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(Lines(failed.err).back(),
              "halvane classify: Grid 'tmpFineBPI' already exists in " + work_);
    EXPECT_EQ(failed.out, "");
    EXPECT_EQ(Contents(work_), before);
    // A zone grid of the name is refused before anything runs.
    const Outcome refused = Halvane({"classify", "--workdir", work_, "--name", "SLOPE", input_});
    EXPECT_EQ(refused.err, "halvane classify: " + work_ +
                               "/SLOPE: a grid of that name exists already; give another --name "
                               "or --workdir\n");
    EXPECT_EQ(Contents(work_), before);

    // Once the name is free the run succeeds, and replaces SLOPE as Finish does.
    fs::remove(work_ + "/tmpFineBPI.tif");
    fs::remove(work_ + "/tmpFineBPI.tif.aux.xml");
    const ino_t slope = before.at("SLOPE.tif");
    EXPECT_EQ(Halvane({"classify", "--workdir", work_, input_}).status, 0);
    const auto after = Contents(work_);
    EXPECT_NE(after.at("SLOPE.tif"), slope);
    EXPECT_TRUE(after.count("ZONES.tif"));
    EXPECT_FALSE(after.count("tmpFineBPI.tif"));
}

TEST_F(CommandLineStyleTest, OptionsHelpAndTableFormats) {
    // The methods by their short names, in any case, give the page's grids.
    for (const auto& [alias, page] : {std::pair{"BILINEAR", "Bilinear Interoplation"},
                                      std::pair{"nearest", "Nearest Neighbor"}}) {
        ASSERT_EQ(Halvane({"resample", "--workdir", work_, "--name", std::string("a") + alias,
                           "--cell-size", "25", "--method", alias, input_})
                      .status,
                  0);
        ASSERT_EQ(Halvane({"resample", "--workdir", work_, "--name", std::string("p") + alias,
                           "--cell-size", "25", "--method", page, input_})
                      .status,
                  0);
        const auto byAlias = testing::ReadAll(testing::OpenRaster(work_ + "/a" + alias + ".tif"));
        const auto byPage = testing::ReadAll(testing::OpenRaster(work_ + "/p" + alias + ".tif"));
        ASSERT_EQ(byAlias.size(), byPage.size());
        for (std::size_t i = 0; i < byAlias.size(); ++i) {
            if (std::isnan(byPage[i])) {
                EXPECT_TRUE(std::isnan(byAlias[i])) << alias << " " << i;
            } else {
                EXPECT_EQ(byAlias[i], byPage[i]) << alias << " " << i;
            }
        }
    }

    // Every option of every command is in its help, and every help has an example.
    for (const Command& command : Commands()) {
        const Outcome help = Halvane({command.name, "--help"});
        EXPECT_EQ(help.status, 0);
        for (const std::string& option : command.valueOptions) {
            EXPECT_NE(help.out.find("  " + option + " "), std::string::npos)
                << command.name << " " << option;
        }
        EXPECT_NE(help.out.find("Example: halvane " + std::string(command.name)), std::string::npos)
            << command.name;
    }
    const std::string classifyHelp = Halvane({"classify", "--help"}).out;
    for (const char* told : {"in cells; default 1,5", "in cells; default 1,3", "default ZONES",
                             "default\n                         cubic", "--quiet", "--trace"}) {
        EXPECT_NE(classifyHelp.find(told), std::string::npos) << told;
    }

    // Two inputs: a sub-folder each, one table, in each format.
    const std::string second = dir_ / "second.tif";
    synth::WriteGeoTiff({40, 30, 10.0, 9}, second);
    const Outcome text = Halvane({"classify", "--workdir", work_ + "/t", input_, second});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_TRUE(fs::exists(work_ + "/t/depth/ZONES.tif"));
    EXPECT_TRUE(fs::exists(work_ + "/t/second/ZONES.tif"));
    const std::vector<std::string> lines = Lines(text.out);
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[2].rfind("input", 0), 0u) << text.out;
    EXPECT_EQ(
        std::ranges::count_if(
            lines, [](const std::string& l) { return l.find("all zones") != std::string::npos; }),
        2);

    const Outcome json =
        Halvane({"classify", "--format", "json", "--workdir", work_ + "/j", input_});
    ASSERT_EQ(json.status, 0);
    const Outcome csv = Halvane({"classify", "--format", "csv", "--workdir", work_ + "/c", input_});
    ASSERT_EQ(csv.status, 0);
    const std::vector<std::string> rows = Lines(csv.out);
    EXPECT_EQ(rows.front(), "input,class,zone,cells,share_percent,area_km2");
    // Each CSV row is one zone of the JSON, with the same cells.
    std::int64_t total = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        std::vector<std::string> fields;
        std::istringstream row(rows[i]);
        for (std::string field; std::getline(row, field, ',');) fields.push_back(field);
        ASSERT_EQ(fields.size(), 6u) << rows[i];
        EXPECT_EQ(fields[0], input_);
        const std::string zone = "{\"class\": " + fields[1] + ", \"zone\": \"" + fields[2] +
                                 "\", \"cells\": " + fields[3] + ",";
        EXPECT_NE(json.out.find(zone), std::string::npos) << zone << "\n" << json.out;
        total += std::stoll(fields[3]);
    }
    EXPECT_EQ(json.out.rfind("[{\"input\": \"" + input_ + "\", \"grid\": \"", 0), 0u);
    EXPECT_NE(json.out.find("\"cells\": " + std::to_string(total) + ", \"zones\": ["),
              std::string::npos);
    EXPECT_EQ(json.out.substr(json.out.size() - 5), "}]}]\n");
}

}  // namespace
}  // namespace halvane::apps
