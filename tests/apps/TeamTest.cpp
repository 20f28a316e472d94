// `halvane` under mpirun: every grid command run by a team of processes
// stores what the same command run alone stores, cell for cell, with the same
// statistics, table and metadata; and a team that loses a process leaves
// nothing under the output's name.
//
// The grid has 1300 rows: neither the processes nor the tiles divide them
// evenly, and with 512-row tiles a fourth process gets no band at all.

#include <cpl_string.h>
#include <gdal.h>
#include <gdal_rat.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "apps/WorkFolder.h"
#include "support/GridFiles.h"
#include "synth/Synth.h"

namespace halvane::apps {
namespace {

namespace fs = std::filesystem;

std::string ReadText(const fs::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Runs `halvane <args>` in `folder`, alone (processes 0) or under mpirun;
// the exit status, with stdout and stderr in the folder.
int RunHalvane(const fs::path& folder, int processes, const std::string& args) {
    std::string command = "cd '" + folder.string() + "' && ";
    if (processes > 0) {
        command +=
            std::string(HALVANE_MPIRUN) + " --oversubscribe -np " + std::to_string(processes) + " ";
    }
    command += std::string(HALVANE_PROGRAM) + " " + args + " > out.txt 2> err.txt";
    return std::system(command.c_str());
}

// Everything a stored grid holds that a reader sees, as text: cell type and
// size, georeference, every metadata item but the date, the band's
// statistics, its attribute table, colours and category names; and its cells.
struct Stored {
    std::string description;
    std::vector<double> cells;
};

Stored Load(const fs::path& path) {
    Stored stored;
    GDALDatasetH dataset = GDALOpen(path.c_str(), GA_ReadOnly);
    if (!dataset) {
        stored.description = "cannot open " + path.string();
        return stored;
    }
    std::ostringstream text;
    GDALRasterBandH band = GDALGetRasterBand(dataset, 1);
    const int cols = GDALGetRasterXSize(dataset), rows = GDALGetRasterYSize(dataset);
    text << GDALGetDataTypeName(GDALGetRasterDataType(band)) << " " << cols << "x" << rows << "\n";
    double transform[6];
    GDALGetGeoTransform(dataset, transform);
    for (const double t : transform) text << t << " ";
    text << "\n" << GDALGetProjectionRef(dataset) << "\n";
    for (char** item = GDALGetMetadata(dataset, nullptr); item && *item; ++item) {
        if (std::string(*item).rfind("TIFFTAG_DATETIME=", 0) != 0) text << *item << "\n";
    }
    for (char** item = GDALGetMetadata(band, nullptr); item && *item; ++item) text << *item << "\n";
    if (GDALRasterAttributeTableH table = GDALGetDefaultRAT(band)) {
        for (int row = 0; row < GDALRATGetRowCount(table); ++row) {
            for (int col = 0; col < GDALRATGetColumnCount(table); ++col) {
                text << GDALRATGetNameOfCol(table, col) << "="
                     << GDALRATGetValueAsString(table, row, col) << " ";
            }
            text << "\n";
        }
    }
    if (GDALColorTableH colors = GDALGetRasterColorTable(band)) {
        for (int k = 0; k < GDALGetColorEntryCount(colors); ++k) {
            const GDALColorEntry* e = GDALGetColorEntry(colors, k);
            text << e->c1 << "," << e->c2 << "," << e->c3 << " ";
        }
        text << "\n";
    }
    for (char** name = GDALGetRasterCategoryNames(band); name && *name; ++name) {
        text << *name << "|";
    }
    stored.description = text.str();
    stored.cells.resize(static_cast<std::size_t>(cols) * rows);
    if (GDALRasterIO(band, GF_Read, 0, 0, cols, rows, stored.cells.data(), cols, rows, GDT_Float64,
                     0, 0) != CE_None) {
        stored.description += "\ncannot read the cells";
    }
    GDALClose(dataset);
    return stored;
}

void Replace(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
        text.replace(at, from.size(), to);
        at += to.size();
    }
}

// The names in a folder, hidden ones included: a team must leave no
// temporaries or notes that a lone run would not.
std::vector<std::string> Names(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        names.push_back(entry.path().lexically_relative(folder).string());
    }
    std::ranges::sort(names);
    return names;
}

class TeamTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        // Open MPI refuses root unless told; CI runs in containers as root.
        ::setenv("OMPI_ALLOW_RUN_AS_ROOT", "1", 1);
        ::setenv("OMPI_ALLOW_RUN_AS_ROOT_CONFIRM", "1", 1);
        dir_ = new testing::TempDir();
        synth::WriteGeoTiff({900, 1300, 10.0, 7}, *dir_ / "dem.tif");
    }
    static void TearDownTestSuite() {
        delete dir_;
        dir_ = nullptr;
    }

    // Runs the commands in a fresh folder alone and in another with a team of
    // `processes`, and compares what the two runs stored and printed.
    void ExpectSameAsAlone(const std::vector<std::string>& commands, int processes) {
        const std::string label = commands.front() + " with " + std::to_string(processes);
        const fs::path alone = *dir_ / ("alone" + std::to_string(++runs_));
        const fs::path team = *dir_ / ("team" + std::to_string(runs_));
        for (const fs::path& folder : {alone, team}) fs::create_directories(folder);
        for (const std::string& command : commands) {
            ASSERT_EQ(RunHalvane(alone, 0, command), 0) << command << ReadText(alone / "err.txt");
            ASSERT_EQ(RunHalvane(team, processes, command), 0)
                << label << ": " << command << ReadText(team / "err.txt");
            EXPECT_EQ(ReadText(team / "out.txt"), ReadText(alone / "out.txt")) << label;
        }
        ASSERT_EQ(Names(team / "work"), Names(alone / "work")) << label;
        int grids = 0;
        for (const std::string& name : Names(alone / "work")) {
            if (fs::path(name).extension() != ".tif") continue;
            ++grids;
            Stored expected = Load(alone / "work" / name);
            Stored actual = Load(team / "work" / name);
            // Inputs are named by their paths, which differ in the run's folder only.
            Replace(expected.description, alone.filename().string(), "RUN");
            Replace(actual.description, team.filename().string(), "RUN");
            EXPECT_EQ(actual.description, expected.description) << label << ": " << name;
            // Bit for bit: NaN never shows, NoData is a value of the file.
            EXPECT_EQ(0, std::memcmp(actual.cells.data(), expected.cells.data(),
                                     expected.cells.size() * sizeof(double)))
                << label << ": " << name;
            EXPECT_EQ(actual.cells.size(), expected.cells.size()) << label << ": " << name;
        }
        EXPECT_GT(grids, 0) << label;
    }

    static inline testing::TempDir* dir_ = nullptr;
    static inline int runs_ = 0;
};

TEST_F(TeamTest, ClassifyAndRugosityUnderThreeProcessesStoreWhatOneStores) {
    ExpectSameAsAlone({"classify --quiet --workdir work ../dem.tif"}, 3);
    // 34 fused expressions: small tiles, so each process has several tile rows.
    ExpectSameAsAlone({"rugosity --quiet --workdir work --name RUG ../dem.tif"}, 3);
}

TEST_F(TeamTest, EachStageUnderThreeProcessesStoresWhatOneStores) {
    ExpectSameAsAlone({"bpi --quiet --workdir work --inner 1 --outer 5 ../dem.tif",
                       "standardize --quiet --workdir work work/tmpBroadBPI.tif",
                       "slope --quiet --workdir work --name S ../dem.tif",
                       "resample --quiet --workdir work --name R25 --cell-size 25 ../dem.tif",
                       // An integer grid of many values: its table is counted
                       // in parts across the processes.
                       "calc --quiet --workdir work --name C --bind d=../dem.tif "
                       "'con([d] < -50, int([d] / 3), 7)'",
                       // The assembled grid rewritten with overviews.
                       "calc --quiet --workdir work --name G --layout cog --bind d=../dem.tif "
                       "'[d] * 2'"},
                      3);
}

TEST_F(TeamTest, ClassifyStoresTheSameWithOneTwoAndFourProcesses) {
    // Four processes for three tile rows: one of them computes nothing.
    for (const int processes : {1, 2, 4}) {
        ExpectSameAsAlone({"classify --quiet --workdir work ../dem.tif"}, processes);
    }
}

TEST_F(TeamTest, AFailureOfOneProcessAloneFailsTheRunWithItsMessage) {
    // One command line per process: the second alone is given a grid that is
    // not there, and fails before the others' first exchange, which must not
    // leave them waiting.
    const fs::path folder = *dir_ / "one-fails";
    fs::create_directories(folder / "work");
    const std::string program = HALVANE_PROGRAM;
    const std::string command =
        std::string("cd '") + folder.string() + "' && " + HALVANE_MPIRUN +
        " --oversubscribe -np 1 " + program + " slope --workdir work --name S ../dem.tif : -np 1 " +
        program + " slope --workdir work --name S ../missing.tif : -np 1 " + program +
        " slope --workdir work --name S ../dem.tif" + " > out.txt 2> err.txt";
    EXPECT_NE(std::system(command.c_str()), 0);
    const std::string err = ReadText(folder / "err.txt");
    EXPECT_NE(err.find("halvane slope: ../missing.tif: no such file or folder"), std::string::npos)
        << err;
    EXPECT_EQ(ReadText(folder / "out.txt"), "");
    EXPECT_TRUE(Names(folder / "work").empty());
}

TEST_F(TeamTest, CommandsThatMakeNoGridRefuseToRunAsSeveralProcesses) {
    const fs::path folder = *dir_ / "refused";
    fs::create_directories(folder);
    for (const std::string command : {"info ../dem.tif", "demo --workdir work"}) {
        const int status = RunHalvane(folder, 2, command);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 0) << command;
        const std::string err = ReadText(folder / "err.txt");
        const std::size_t said = err.find("not under mpirun");
        EXPECT_NE(said, std::string::npos) << command << ": " << err;
        EXPECT_EQ(err.find("not under mpirun", said + 1), std::string::npos) << "said twice";
        EXPECT_EQ(ReadText(folder / "out.txt"), "") << command;
    }
    EXPECT_FALSE(fs::exists(folder / "work"));
}

// The ranks that mpirun started for `launcher`, by rank.
std::map<int, pid_t> Ranks(pid_t launcher) {
    std::map<int, pid_t> ranks;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::istringstream stat(ReadText(entry.path() / "stat"));
        std::string pid, comm, state;
        pid_t parent = 0;
        stat >> pid >> comm >> state >> parent;
        if (parent != launcher) continue;
        std::string environment = ReadText(entry.path() / "environ");
        std::replace(environment.begin(), environment.end(), '\0', '\n');
        const std::string key = "\nOMPI_COMM_WORLD_RANK=";
        const std::size_t at = ("\n" + environment).find(key);
        if (at == std::string::npos) continue;
        ranks[std::atoi(environment.c_str() + at + key.size() - 1)] = std::stoi(name);
    }
    return ranks;
}

TEST_F(TeamTest, ARankKilledMidRunLeavesNothingUnderTheOutputName) {
    const fs::path folder = *dir_ / "killed";
    fs::create_directories(folder / "work");
    // Large enough that the run is still going when a rank is killed.
    synth::WriteGeoTiff({2000, 2000, 10.0, 4}, (folder / "big.tif").string());
    std::ofstream(folder / "work" / "notes.txt") << "kept\n";
    const auto before = Names(folder / "work");
    const pid_t launcher = ::fork();
    if (launcher == 0) {
        ::chdir(folder.c_str());
        ::freopen("/dev/null", "w", stdout);
        ::freopen("err.txt", "w", stderr);
        ::execl(HALVANE_MPIRUN, "mpirun", "--oversubscribe", "-np", "3", HALVANE_PROGRAM,
                "classify", "--workdir", "work", "big.tif", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    // Mid-run: once the first stage has stored its grid.
    using namespace std::chrono_literals;
    std::map<int, pid_t> ranks;
    for (int wait = 0; wait < 600 && !fs::exists(folder / "work" / "tmpBroadBPI.tif"); ++wait) {
        std::this_thread::sleep_for(50ms);
    }
    ranks = Ranks(launcher);
    ASSERT_EQ(ranks.size(), 3u) << ReadText(folder / "err.txt");
    ::kill(ranks.at(1), SIGKILL);
    int status = 0;
    ::waitpid(launcher, &status, 0);
    EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << ReadText(folder / "err.txt");
    EXPECT_FALSE(fs::exists(folder / "work" / "ZONES.tif"));
    // The launcher may end before the ranks it stops are gone.
    for (const auto& [rank, pid] : ranks) {
        for (int wait = 0; wait < 200 && ::kill(pid, 0) == 0; ++wait) {
            std::this_thread::sleep_for(50ms);
        }
    }
    EXPECT_FALSE(fs::exists(folder / "work" / "ZONES.tif"));
    // The next run there puts the folder back as it was.
    RecoverAbandonedRuns(folder / "work");
    EXPECT_EQ(Names(folder / "work"), before);
}

}  // namespace
}  // namespace halvane::apps
