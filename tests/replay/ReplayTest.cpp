// Recorded sessions replayed through `halvane-desktop --replay`, as a user or
// a bug report would run them.
//
// Every *.replay script of this folder is one test. It runs against a fresh
// folder of its own: ${DATA} holds the grids below, a text file,
// notes.txt, and a copy of every file of data/ here; ${WORK} is a working
// folder that holds one grid, "taken"; ${RESOURCES} is the folder beside the
// programs that holds the default dictionary. Lines "#= {...}" are what the session
// must show: the events the replay writes, of the kinds these lines name,
// must be exactly these, in this order; events of other kinds may come
// between them.

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
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
    // The default dictionary and the help lie beside the program.
    static std::string Resources() { return fs::path(HALVANE_DESKTOP).parent_path().string(); }

    std::string Expand(std::string text) const {
        text = std::regex_replace(text, std::regex(R"(\$\{DATA\})"), Data());
        text = std::regex_replace(text, std::regex(R"(\$\{RESOURCES\})"), Resources());
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

// The script `name` of this folder, with `more` lines after it, replayed in `folder`.
Outcome ReplayFile(const SessionFolder& folder, const std::string& name,
                   const std::string& more = {}) {
    std::ifstream in(std::string(HALVANE_REPLAY_DIR) + "/" + name + ".replay");
    std::stringstream script;
    script << in.rdbuf() << more;
    return folder.Replay(folder.Expand(script.str()));
}

// The command line's stages on `dem` into `folder`, with the radii classify
// uses unless told (broad 1 to 5, fine 1 to 3): broad5, fine3 and their
// standardized broad5std, fine3std. False when a run fails.
bool CommandLineStages(const std::string& dem, const TempDir& folder) {
    const QString work = QString::fromStdString(folder.Path().string());
    const QString input = QString::fromStdString(dem);
    if (Halvane({"bpi", "--workdir", work, "--inner", "1", "--outer", "5", "--scale", "broad",
                 "--name", "broad5", input}) != 0 ||
        Halvane({"bpi", "--workdir", work, "--inner", "1", "--outer", "3", "--scale", "fine",
                 "--name", "fine3", input}) != 0) {
        return false;
    }
    for (const char* scale : {"broad5", "fine3"}) {
        const QString bpi = QString::fromStdString(folder / (std::string(scale) + ".tif"));
        if (Halvane({"standardize", "--workdir", work, "--name", QString(scale) + "std", bpi}) != 0) {
            return false;
        }
    }
    return true;
}

// The grids that the wizard leaves are the command line's, cell for cell.
TEST(ReplayedRun, TheWizardsGridsAreTheCommandLines) {
    SessionFolder folder;
    const Outcome outcome = ReplayFile(folder, "wizard-to-standardization");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;

    TempDir cli;
    ASSERT_TRUE(CommandLineStages(folder.Data() + "/dem.tif", cli));
    for (const char* grid : {"broad5", "fine3", "broad5std", "fine3std"}) {
        SCOPED_TRACE(grid);
        const std::vector<double> wizard = Cells(folder.Work() + "/" + grid + ".tif");
        EXPECT_TRUE(SameCells(wizard, Cells(cli / (std::string(grid) + ".tif"))));
        // Not a grid of nothing: the BPI of a wavy surface, and its z-scores, have both signs.
        EXPECT_GT(*std::max_element(wizard.begin(), wizard.end()), 0);
        EXPECT_LT(*std::min_element(wizard.begin(), wizard.end()), 0);
    }
}

// The classification command's zone grid, on the standardized grids that the
// command line's bpi and standardize make, is the command line's whole
// classify of the same bathymetry, cell for cell.
TEST(ReplayedRun, TheClassificationCommandsZonesAreTheCommandLines) {
    SessionFolder folder;
    TempDir stages;
    ASSERT_TRUE(CommandLineStages(folder.Data() + "/dem.tif", stages));
    // In place of the fixture's grids of the same names, which the script browses.
    fs::copy_file(stages / "broad5std.tif", folder.Data() + "/broadstd.tif",
                  fs::copy_options::overwrite_existing);
    fs::copy_file(stages / "fine3std.tif", folder.Data() + "/finestd.tif",
                  fs::copy_options::overwrite_existing);

    const Outcome outcome = ReplayFile(folder, "classify-short-route");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;

    TempDir whole;
    ASSERT_EQ(Halvane({"classify", "--workdir", QString::fromStdString(whole.Path().string()),
                       QString::fromStdString(folder.Data() + "/dem.tif")}),
              0);
    const std::vector<double> wizard = Cells(folder.Work() + "/ZONES.tif");
    EXPECT_TRUE(SameCells(wizard, Cells(whole / "ZONES.tif")));
    // Not a grid of one class: the wavy surface falls into several zones.
    std::set<double> zones(wizard.begin(), wizard.end());
    EXPECT_GE(zones.size(), 3u);
}

// The wizard's whole route, from the welcome page to the completion page with
// the pages' default radii and the default dictionary, leaves the command
// line's classify of the same bathymetry, cell for cell, and nothing of its
// temporaries; the map's zone layer labels each value the grid holds with the
// dictionary's name for it.
TEST(ReplayedRun, TheWizardsWholeRouteIsTheCommandLinesClassify) {
    SessionFolder folder;
    // The zone layer's classes, checked below against the dictionary's file.
    const Outcome outcome = ReplayFile(folder, "wizard-to-zones", "get map.ZONES\n");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;

    TempDir whole;
    ASSERT_EQ(Halvane({"classify", "--workdir", QString::fromStdString(whole.Path().string()),
                       QString::fromStdString(folder.Data() + "/dem.tif")}),
              0);
    const std::vector<double> wizard = Cells(folder.Work() + "/ZONES.tif");
    const std::vector<double> cli = Cells(whole / "ZONES.tif");
    EXPECT_TRUE(SameCells(wizard, cli));
    std::set<std::string> left;
    for (const auto& entry : fs::directory_iterator(folder.Work())) {
        if (entry.path().extension() == ".tif") left.insert(entry.path().stem().string());
    }
    EXPECT_EQ(left, (std::set<std::string>{"SLOPE", "ZONES", "taken"}));

    // The dictionary's names, by record, read straight from its file.
    std::ifstream file(SessionFolder::Resources() + "/def_dict.xml");
    const std::string xml{std::istreambuf_iterator<char>(file), {}};
    std::map<int, std::string> names;
    const std::regex record(R"(<Class>(\d+)</Class>\s*<Zone>([^<]*)</Zone>)");
    for (auto it = std::sregex_iterator(xml.begin(), xml.end(), record);
         it != std::sregex_iterator(); ++it) {
        names[std::stoi((*it)[1])] = (*it)[2];
    }
    ASSERT_GE(names.size(), 10u);
    QJsonArray expected;
    for (double value : std::set<double>(cli.begin(), cli.end())) {
        if (std::isnan(value) || value == 0) continue;
        const int zone = static_cast<int>(value);
        expected.append(QString::fromStdString(std::to_string(zone) + " " + names.at(zone)));
    }
    ASSERT_GE(expected.size(), 3);
    bool seen = false;
    for (const std::string& line : outcome.lines) {
        const QJsonObject event = QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
        if (event.value("name").toString() != QStringLiteral("map.ZONES")) continue;
        seen = true;
        EXPECT_EQ(event.value("classes").toArray(), expected) << line;
    }
    EXPECT_TRUE(seen) << "the script reads the zone layer's classes";
}

// The rugosity command run on the desktop, through its browse buttons, a
// name, Finish and Yes, leaves the command line's rugosity of the same
// bathymetry, cell for cell, and its layer on the map.
TEST(ReplayedRun, TheRugosityCommandsGridIsTheCommandLines) {
    SessionFolder folder;
    const Outcome outcome = ReplayFile(folder, "rugosity-standalone");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;

    TempDir cli;
    ASSERT_EQ(Halvane({"rugosity", "--workdir", QString::fromStdString(cli.Path().string()),
                       "--name", "rugged", QString::fromStdString(folder.Data() + "/dem.tif")}),
              0);
    const std::vector<double> desktop = Cells(folder.Work() + "/rugged.tif");
    EXPECT_TRUE(SameCells(desktop, Cells(cli / "rugged.tif")));
    // A true surface is never smaller than its plan, and the wavy one is larger.
    const auto valid = std::count_if(desktop.begin(), desktop.end(), [](double v) {
        EXPECT_TRUE(std::isnan(v) || v >= 1.0) << v;
        return !std::isnan(v);
    });
    EXPECT_GT(valid, 0);
    EXPECT_GT(*std::max_element(desktop.begin(), desktop.end()), 1.0);

    // Every look at the map after Yes finds the grid's layer on it.
    int looks = 0;
    for (const std::string& line : outcome.lines) {
        const QJsonObject event = QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
        if (event.value("name").toString() != QStringLiteral("map")) continue;
        ++looks;
        EXPECT_EQ(event.value("layers").toArray(), QJsonArray{"rugged"}) << line;
    }
    EXPECT_GT(looks, 0) << "the script looks at the map";
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
