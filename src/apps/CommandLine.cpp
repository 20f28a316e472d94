#include "apps/CommandLine.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <set>
#include <string_view>

#include "apps/AnalysisCommands.h"
#include "apps/ClassifyCommands.h"
#include "apps/DemoCommands.h"
#include "apps/RasterCommands.h"
#include "platform/raster/Storage.h"
#include "platform/runtime/Version.h"

namespace halvane::apps {

std::string Arguments::Required(const std::string& option) const {
    auto found = options.find(option);
    if (found == options.end()) throw UsageError{option + " is required"};
    return found->second;
}

std::string Arguments::Optional(const std::string& option, const std::string& fallback) const {
    auto found = options.find(option);
    return found == options.end() ? fallback : found->second;
}

Arguments Parse(const Command& command, const std::vector<std::string>& args) {
    Arguments parsed;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string arg = args[i];
        if (arg == "--help" || arg == "-h") {
            parsed.help = true;
            continue;
        }
        if (arg.rfind("--", 0) != 0 || arg == "--") {
            parsed.positional.push_back(arg);
            continue;
        }
        std::string value;
        const std::size_t equals = arg.find('=');
        const bool inlineValue = equals != std::string::npos;
        if (inlineValue) {
            value = arg.substr(equals + 1);
            arg = arg.substr(0, equals);
        }
        const auto listed = [&](const std::vector<std::string>& names) {
            return std::ranges::find(names, arg) != names.end();
        };
        if (listed(command.flags) && !inlineValue) {
            parsed.options.emplace(arg, "");
            continue;
        }
        if (!listed(command.valueOptions)) throw UsageError{"unknown option " + arg};
        if (!inlineValue) {
            if (i + 1 >= args.size()) throw UsageError{arg + " needs a value"};
            value = args[++i];
        }
        parsed.options.emplace(arg, value);
    }
    return parsed;
}

const std::vector<Command>& Commands() {
    static const std::vector<Command> commands = {
        {"calc",
         "evaluate a map algebra expression and save the grid",
         "--workdir DIR --name NAME [--bind NAME=PATH]... [--trace] 'EXPRESSION'",
         {"--workdir", "--name", "--bind"},
         {"--trace"},
         RunCalc},
        {"slope",
         "slope in degrees (Horn) of a grid",
         "--workdir DIR --name NAME [--trace] INPUT",
         {"--workdir", "--name"},
         {"--trace"},
         RunSlope},
        {"bpi",
         "bathymetric position index: each cell minus the mean of a ring around it",
         "--workdir DIR --inner CELLS --outer CELLS [--scale broad|fine] [--name NAME]\n"
         "       [--trace] INPUT\n\n"
         "The radii are counted in cells and go into the expression as written. Without\n"
         "--name the grid is saved as tmpBroadBPI or tmpFineBPI.",
         {"--workdir", "--inner", "--outer", "--scale", "--name"},
         {"--trace"},
         RunBpi},
        {"standardize",
         "a BPI grid as 100 times its z-score",
         "--workdir DIR [--scale broad|fine] [--name NAME] [--trace] BPI_GRID\n\n"
         "Without --name the grid is saved as tmpBroadstd or tmpFinestd.",
         {"--workdir", "--scale", "--name"},
         {"--trace"},
         RunStandardize},
        {"resample",
         "a grid at a new cell size",
         "--workdir DIR --name NAME --cell-size SIZE [--method METHOD] [--trace] INPUT\n\n"
         "METHOD is \"Cubic Convolution\" (the default), \"Bilinear Interoplation\" or\n"
         "\"Nearest Neighbor\", as the resampling page lists them.",
         {"--workdir", "--name", "--cell-size", "--method"},
         {"--trace"},
         RunResample},
        {"rugosity",
         "surface area over planar area of each cell and its eight neighbours",
         "--workdir DIR --name NAME [--trace] INPUT",
         {"--workdir", "--name"},
         {"--trace"},
         RunRugosity},
        {"classify",
         "the whole classification: BPI at two scales, standardization, slope, zones",
         "--workdir DIR [--dictionary FILE] [--broad INNER,OUTER] [--fine INNER,OUTER]\n"
         "       [--resample CELLSIZE [--method METHOD]] [--name NAME] [--trace] INPUT\n\n"
         "Runs the wizard's whole route on a projected bathymetric grid and prints the\n"
         "zone grid's path and its table of classes. Radii are in cells (broad 1,5 and\n"
         "fine 1,3 unless given); the dictionary is the default one beside the program\n"
         "unless given; the zone grid is named ZONES unless given. With --resample the\n"
         "input is first resampled to NAME_res.",
         {"--workdir", "--dictionary", "--broad", "--fine", "--resample", "--method", "--name"},
         {"--trace"},
         RunClassify},
        {"dictionary",
         "a classification dictionary as a table",
         "show FILE",
         {},
         {},
         RunDictionary},
        {"demo",
         "the whole classification of the bundled sample, with a table and pictures",
         "[--workdir DIR] [--input GRID]\n\n"
         "Classifies the sample beside the program (or GRID) with the default dictionary,\n"
         "then computes its rugosity, into DIR (./halvane-demo unless given), and writes\n"
         "zones.png and bathymetry.png there. Grids that exist are never overwritten.",
         {"--workdir", "--input"},
         {},
         RunDemo},
        {"map",
         "a picture of a grid: its map, a legend, a scale bar and a north arrow",
         "--out FILE.png [--dictionary FILE] [--title TEXT] [--hillshade] GRID\n\n"
         "A zone grid (integers with a value table) is drawn one colour per class, as the\n"
         "map shows it, labelled from the dictionary's zones; any other grid is stretched\n"
         "over a colour ramp, shaded by its relief with --hillshade.",
         {"--out", "--dictionary", "--title"},
         {"--hillshade"},
         RunMap},
        {"info",
         "size, cell size, extent, type, statistics and value table of a grid",
         "[--json] PATH",
         {},
         {"--json"},
         RunInfo},
    };
    return commands;
}

namespace {

// The words as a shell would take them back: quoted where they hold anything
// but plain characters.
std::string ShellText(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        if (!text.empty()) text += ' ';
        const bool plain = !word.empty() && std::ranges::all_of(word, [](unsigned char c) {
            return std::isalnum(c) ||
                   std::string_view("-_./=:,+@%").find(c) != std::string_view::npos;
        });
        if (plain) {
            text += word;
            continue;
        }
        text += '\'';
        for (char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
        text += '\'';
    }
    return text;
}

// The commands that write grids take --layout: "plain" (the default) writes
// tiled GeoTIFFs in one pass, "cog" cloud-optimized ones with overviews.
constexpr const char* kLayoutOption = "--layout";
constexpr const char* kLayoutHelp =
    "\n\nGrids are written as tiled GeoTIFFs in one pass; --layout cog writes\n"
    "cloud-optimized GeoTIFFs with internal overviews instead (a second pass).";

bool WritesGrids(const Command& command) {
    static const std::set<std::string> writers = {"calc",     "slope",    "bpi",      "standardize",
                                                  "resample", "rugosity", "classify", "demo"};
    return writers.count(command.name) > 0;
}

void ApplyLayout(const Arguments& arguments) {
    if (!arguments.Has(kLayoutOption)) return;
    const std::string layout = arguments.Required(kLayoutOption);
    if (layout != "cog" && layout != "plain") {
        throw UsageError{std::string(kLayoutOption) + " takes cog or plain, not '" + layout + "'"};
    }
    raster::Writing().cloudOptimized = layout == "cog";
}

void PrintOverview(std::ostream& out) {
    out << "Usage: halvane <command> [options]\n\nCommands:\n";
    for (const Command& command : Commands()) {
        out << "  " << command.name << std::string(13 - std::string(command.name).size(), ' ')
            << command.summary << "\n";
    }
    out << "\n'halvane <command> --help' shows the options of one command.\n";
}

}  // namespace

int Main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() == 1 && args[0] == "--version") {
        std::cout << "halvane " << runtime::kVersion << "\n";
        return 0;
    }
    // The grids of this run name it and take its layout; what the process
    // writes afterwards (a test's own grids, say) does neither.
    raster::Writer().commandLine = ShellText({argv, argv + argc});
    struct EndOfRun {
        ~EndOfRun() {
            raster::Writer().commandLine.clear();
            raster::Writing() = raster::WriteSettings{};
        }
    } endOfRun;
    if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        PrintOverview(args.empty() ? std::cerr : std::cout);
        return args.empty() ? 2 : 0;
    }
    const auto command =
        std::ranges::find_if(Commands(), [&](const Command& c) { return args[0] == c.name; });
    if (command == Commands().end()) {
        std::cerr << "halvane: unknown command '" << args[0] << "'\n\n";
        PrintOverview(std::cerr);
        return 2;
    }
    Command accepted = *command;
    if (WritesGrids(accepted)) accepted.valueOptions.push_back(kLayoutOption);
    const std::string usage = std::string("Usage: halvane ") + command->name + " " +
                              command->usage + (WritesGrids(accepted) ? kLayoutHelp : "");
    try {
        const Arguments arguments = Parse(accepted, {args.begin() + 1, args.end()});
        if (arguments.help) {
            std::cout << usage << "\n\n" << command->summary << "\n";
            return 0;
        }
        ApplyLayout(arguments);
        return command->run(arguments);
    } catch (const UsageError& error) {
        std::cerr << "halvane " << command->name << ": " << error.message << "\n" << usage << "\n";
        return 2;
    }
}

}  // namespace halvane::apps
