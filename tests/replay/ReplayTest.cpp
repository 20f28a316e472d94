// Recorded sessions replayed through `halvane-desktop --replay`, as a user or
// a bug report would run them.
//
// Every *.replay script of this folder is one test. It runs against a fresh
// folder of its own: ${DATA} holds the grids below, a text file,
// notes.txt, and a copy of every file of data/ here; ${WORK} is a working folder that holds one grid, "taken". Lines "#= {...}" are what the session
// must show: the events the replay writes, of the kinds these lines name,
// must be exactly these, in this order; events of other kinds may come
// between them.

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "support/GridFiles.h"

namespace halvane {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

struct Outcome {
    int exitCode = -1;
    std::vector<std::string> lines;
    std::string errors;
};

// The folder a script runs against.
class SessionFolder {
public:
    SessionFolder() {
        fs::create_directories(Data());
        fs::create_directories(Work());
        fs::create_directories(Registry());
        const raster::Grid tenMetres{500000, 6000000, 10, 10, 40, 30};
        testing::WriteGrid(Data() + "/dem.tif", tenMetres, Depths(tenMetres));
        const raster::Grid fiveMetres{500000, 6000000, 5, 5, 20, 20};
        testing::WriteGrid(Data() + "/other.tif", fiveMetres, Depths(fiveMetres));
        // A longer name, for default grid names at the length limit.
        testing::WriteGrid(Data() + "/survey.tif", tenMetres, Depths(tenMetres));
        const raster::Grid degrees{4.0, 52.0, 0.001, 0.001, 20, 20};
        testing::WriteGrid(Data() + "/lonlat.tif", degrees, Depths(degrees), false,
                           testing::EpsgWkt(4326));
        testing::WriteGrid(Data() + "/broadstd.tif", tenMetres, Depths(tenMetres), true);
        testing::WriteGrid(Data() + "/finestd.tif", tenMetres, Depths(tenMetres), true);
        testing::WriteGrid(Work() + "/taken.tif", tenMetres, Depths(tenMetres));
        std::ofstream(Data() + "/notes.txt") << "soundings of the 12th, not a grid\n";
        // Files that scripts need as they are, such as dictionaries.
        const fs::path files = fs::path(HALVANE_REPLAY_DIR) / "data";
        if (fs::is_directory(files)) {
            for (const auto& entry : fs::directory_iterator(files)) {
                fs::copy_file(entry.path(), fs::path(Data()) / entry.path().filename());
            }
        }
    }

    std::string Data() const { return root_ / "data"; }
    std::string Work() const { return root_ / "work"; }
    std::string Registry() const { return root_ / "registry"; }
    std::string Script() const { return root_ / "session.replay"; }

    std::string Expand(std::string text) const {
        text = std::regex_replace(text, std::regex(R"(\$\{DATA\})"), Data());
        return std::regex_replace(text, std::regex(R"(\$\{WORK\})"), Work());
    }

    Outcome Replay(const std::string& script) const {
        const std::string file = Script();
        std::ofstream(file) << script;
        QProcess desktop;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HALVANE_REGISTRY"), QString::fromStdString(Registry()));
        desktop.setProcessEnvironment(environment);
        desktop.start(QStringLiteral(HALVANE_DESKTOP),
                      {QStringLiteral("--replay"), QString::fromStdString(file)});
        Outcome outcome;
        if (!desktop.waitForFinished(120000)) return outcome;
        outcome.exitCode = desktop.exitCode();
        std::istringstream out(desktop.readAllStandardOutput().toStdString());
        for (std::string line; std::getline(out, line);) outcome.lines.push_back(line);
        outcome.errors = desktop.readAllStandardError().toStdString();
        return outcome;
    }

private:
    static std::vector<double> Depths(const raster::Grid& grid) {
        return testing::Surface(grid, false);
    }

    TempDir root_;
};

// One event as a canonical text: the keys in order, so that a script may
// write them in any order.
std::string Canonical(const std::string& json, std::string* event = nullptr) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(json), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        ADD_FAILURE() << "not a JSON object: " << json;
        return json;
    }
    if (event) *event = document.object().value(QStringLiteral("event")).toString().toStdString();
    return document.toJson(QJsonDocument::Compact).toStdString();
}

std::vector<std::string> Scripts() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(HALVANE_REPLAY_DIR)) {
        if (entry.path().extension() == ".replay") names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class ReplayScript : public ::testing::TestWithParam<std::string> {};

TEST_P(ReplayScript, ShowsWhatItsSessionMustShow) {
    SessionFolder folder;
    std::ifstream in(std::string(HALVANE_REPLAY_DIR) + "/" + GetParam() + ".replay");
    std::stringstream text;
    text << in.rdbuf();
    const std::string script = folder.Expand(text.str());

    std::vector<std::string> expected;
    std::set<std::string> kinds;
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("#= ", 0) != 0) continue;
        std::string kind;
        expected.push_back(Canonical(line.substr(3), &kind));
        kinds.insert(kind);
    }
    ASSERT_FALSE(expected.empty()) << "a script without expectations proves nothing";

    const Outcome outcome = folder.Replay(script);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    std::vector<std::string> shown;
    for (const std::string& line : outcome.lines) {
        std::string kind;
        std::string event = Canonical(line, &kind);
        if (kinds.count(kind)) shown.push_back(std::move(event));
    }
    std::string session;
    for (const std::string& line : outcome.lines) session += line + "\n";
    EXPECT_EQ(shown, expected) << "The whole session:\n" << session;
}

INSTANTIATE_TEST_SUITE_P(Sessions, ReplayScript, ::testing::ValuesIn(Scripts()),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

// Whole grids, NoData cells alike where both have none.
bool SameCells(const std::vector<double>& a, const std::vector<double>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!(a[i] == b[i] || (std::isnan(a[i]) && std::isnan(b[i])))) return false;
    }
    return true;
}

std::vector<double> Cells(const std::string& path) {
    return testing::ReadAll(testing::OpenRaster(path));
}

// The command line, as a user runs it; its status, or -1 if it did not end.
int Halvane(const QStringList& arguments) {
    QProcess cli;
    cli.start(QStringLiteral(HALVANE_CLI), arguments);
    if (!cli.waitForFinished(120000)) return -1;
    return cli.exitCode();
}

// The grids that the wizard leaves are the command line's, cell for cell.
TEST(ReplayedRun, TheWizardsGridsAreTheCommandLines) {
    SessionFolder folder;
    std::ifstream in(std::string(HALVANE_REPLAY_DIR) + "/wizard-to-standardization.replay");
    std::stringstream script;
    script << in.rdbuf();
    const Outcome outcome = folder.Replay(folder.Expand(script.str()));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;

    TempDir cli;
    const QString work = QString::fromStdString(cli.Path().string());
    const QString dem = QString::fromStdString(folder.Data() + "/dem.tif");
    ASSERT_EQ(Halvane({"bpi", "--workdir", work, "--inner", "1", "--outer", "5", "--scale", "broad",
                       "--name", "broad5", dem}),
              0);
    ASSERT_EQ(Halvane({"bpi", "--workdir", work, "--inner", "1", "--outer", "3", "--scale", "fine",
                       "--name", "fine3", dem}),
              0);
    for (const char* scale : {"broad5", "fine3"}) {
        const QString bpi = QString::fromStdString(cli / (std::string(scale) + ".tif"));
        ASSERT_EQ(Halvane({"standardize", "--workdir", work, "--name", QString(scale) + "std", bpi}), 0);
    }
    for (const char* grid : {"broad5", "fine3", "broad5std", "fine3std"}) {
        SCOPED_TRACE(grid);
        const std::vector<double> wizard = Cells(folder.Work() + "/" + grid + ".tif");
        EXPECT_TRUE(SameCells(wizard, Cells(cli / (std::string(grid) + ".tif"))));
        // Not a grid of nothing: the BPI of a wavy surface, and its z-scores, have both signs.
        EXPECT_GT(*std::max_element(wizard.begin(), wizard.end()), 0);
        EXPECT_LT(*std::min_element(wizard.begin(), wizard.end()), 0);
    }
}

// A script that names what does not exist stops at that line, with one line
// saying which, after what ran before it was written out.
TEST(ReplayFormat, StopsAtTheFirstLineItCannotRun) {
    SessionFolder folder;
    struct Case {
        std::string badLine;
        std::string says;
    };
    const Case cases[] = {
        {"press frmIntro.cmdNext", "unknown action 'press'"},
        {"click frmNowhere.cmdNext", "unknown page 'frmNowhere'"},
        {"click frmIntro.cmdNowhere", "unknown control 'frmIntro.cmdNowhere'"},
        {"get frmZoneSetup_resampling.g_b_Resample(2)",
         "unknown control 'frmZoneSetup_resampling.g_b_Resample(2)'"},
        {"command clsCmdHalvaneNowhere", "unknown command 'clsCmdHalvaneNowhere'"},
        {"answer question Maybe", "unknown answer 'question Maybe'"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.badLine);
        const Outcome outcome =
            folder.Replay("# first the wizard\n\ncommand clsCmdHalvaneIntro\n" + c.badLine +
                          "\nclick frmIntro.cmdNext\n");
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.errors, "halvane-desktop: " + folder.Script() + ":4: " + c.says + "\n");
        // Actions are checked as the script is read, controls as they are reached.
        const bool ranFirst = c.says.rfind("unknown control", 0) == 0 ||
                              c.says.rfind("unknown command", 0) == 0;
        EXPECT_EQ(!outcome.lines.empty(), ranFirst);
        for (const std::string& line : outcome.lines) {
            EXPECT_EQ(line.find("frmZoneSetup_inputdata"), std::string::npos) << line;
        }
    }
}

TEST(ReplayFormat, AnswersWhatTheScriptDidNotQueueWithCancelOrNo) {
    SessionFolder folder;
    const Outcome outcome = folder.Replay(
        "command clsCmdHalvaneIntro\n"
        "click frmIntro.cmdNext\n"
        "answer raster " + folder.Data() + "/dem.tif\n"
        "click frmZoneSetup_inputdata.cmdOpenWS\n"
        "get session.g_s_WorkingDir\n"
        "click frmZoneSetup_inputdata.cmdCancel\n"
        "get shown\n");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    const std::vector<std::string> expected = {
        R"({"event":"load","page":"frmIntro"})",
        R"({"event":"show","page":"frmIntro"})",
        R"({"event":"load","page":"frmZoneSetup_inputdata"})",
        R"({"event":"show","page":"frmZoneSetup_inputdata"})",
        R"({"event":"hide","page":"frmIntro"})",
        // A raster answer is no answer for a folder dialog: it stays queued.
        R"({"event":"unanswered","kind":"folder"})",
        R"({"event":"value","name":"session.g_s_WorkingDir","text":""})",
        R"({"event":"unanswered","kind":"question"})",
        R"({"answer":"No","event":"message","kind":"question","text":"Are you sure you want to exit?  All changes not saved will be lost.","title":"Exit?"})",
        R"({"event":"shown","pages":["frmZoneSetup_inputdata"]})",
    };
    std::vector<std::string> shown;
    for (const std::string& line : outcome.lines) shown.push_back(Canonical(line));
    std::vector<std::string> canonical;
    for (const std::string& line : expected) canonical.push_back(Canonical(line));
    EXPECT_EQ(shown, canonical);
}

}  // namespace
}  // namespace halvane
