#include "apps/CommandLine.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <set>
#include <string_view>

#include "apps/AnalysisCommands.h"
#include "apps/ClassifyCommands.h"
#include "apps/DemoCommands.h"
#include "apps/RasterCommands.h"
#include "platform/raster/Storage.h"
#include "platform/raster/Team.h"
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

namespace {

std::string Lower(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool IsNumber(const std::string& text, double& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return end == text.c_str() + text.size() && std::isfinite(value);
}

}  // namespace

void CheckRadii(const std::string& given, const std::string& inner, const std::string& outer) {
    double in = 0.0, out = 0.0;
    if (!IsNumber(inner, in) || !IsNumber(outer, out)) {
        throw UsageError{given + ": the radii are numbers of cells"};
    }
    if (in < 0.0 || in >= out) {
        throw UsageError{given + ": the inner radius must be at least 0 and less than the outer"};
    }
}

std::string MethodOf(const Arguments& arguments) {
    const std::string given = arguments.Optional("--method", "cubic");
    static const std::pair<const char*, const char*> methods[] = {
        {"nearest", "Nearest Neighbor"},
        {"bilinear", "Bilinear Interoplation"},
        {"cubic", "Cubic Convolution"},
    };
    for (const auto& [alias, page] : methods) {
        if (Lower(given) == alias || Lower(given) == Lower(page)) return page;
    }
    throw UsageError{"--method " + given + ": the methods are nearest, bilinear and cubic"};
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
         "--workdir DIR --name NAME [--bind NAME=PATH]... 'EXPRESSION'\n\n"
         "  --workdir DIR      folder the grid is saved in (made when missing)\n"
         "  --name NAME        name of the saved grid: DIR/NAME.tif\n"
         "  --bind NAME=PATH   the grid at PATH as [NAME] in the expression; repeatable\n"
         "  EXPRESSION         map algebra, e.g. con([s] > 5, 1, 0); radii of Focalmean\n"
         "                     are in cells\n\n"
         "Example: halvane calc --workdir work --name steep --bind s=work/SLOPE.tif \\\n"
         "           'con([s] > 5, 1, 0)'",
         {"--workdir", "--name", "--bind"},
         {},
         RunCalc},
        {"slope",
         "slope in degrees (Horn) of a grid",
         "--workdir DIR --name NAME INPUT\n\n"
         "  --workdir DIR   folder the grid is saved in (made when missing)\n"
         "  --name NAME     name of the saved grid: DIR/NAME.tif\n"
         "  INPUT           a bathymetric grid, depths in metres\n\n"
         "Example: halvane slope --workdir work --name degrees depth.tif",
         {"--workdir", "--name"},
         {},
         RunSlope},
        {"bpi",
         "bathymetric position index: each cell minus the mean of a ring around it",
         "--workdir DIR --inner CELLS --outer CELLS [--scale broad|fine] [--name NAME] INPUT\n\n"
         "  --workdir DIR    folder the grid is saved in (made when missing)\n"
         "  --inner CELLS    inner radius of the ring, in cells (0 <= inner < outer)\n"
         "  --outer CELLS    outer radius of the ring, in cells\n"
         "  --scale SCALE    broad or fine; default broad\n"
         "  --name NAME      default tmpBroadBPI or tmpFineBPI, after the scale\n"
         "  INPUT            a bathymetric grid\n\n"
         "The radii go into the expression as written.\n\n"
         "Example: halvane bpi --workdir work --inner 1 --outer 5 depth.tif",
         {"--workdir", "--inner", "--outer", "--scale", "--name"},
         {},
         RunBpi},
        {"standardize",
         "a BPI grid as 100 times its z-score",
         "--workdir DIR [--scale broad|fine] [--name NAME] BPI_GRID\n\n"
         "  --workdir DIR    folder the grid is saved in (made when missing)\n"
         "  --scale SCALE    broad or fine; default broad\n"
         "  --name NAME      default tmpBroadstd or tmpFinestd, after the scale\n"
         "  BPI_GRID         a grid that bpi wrote\n\n"
         "Prints the grid's path, then its mean and standard deviation.\n\n"
         "Example: halvane standardize --workdir work work/tmpBroadBPI.tif",
         {"--workdir", "--scale", "--name"},
         {},
         RunStandardize},
        {"resample",
         "a grid at a new cell size",
         "--workdir DIR --name NAME --cell-size SIZE [--method METHOD] INPUT\n\n"
         "  --workdir DIR      folder the grid is saved in (made when missing)\n"
         "  --name NAME        name of the saved grid: DIR/NAME.tif\n"
         "  --cell-size SIZE   the new cell size, in the grid's units (metres)\n"
         "  --method METHOD    nearest, bilinear or cubic (any case; the resampling\n"
         "                     page's texts too); default cubic\n"
         "  INPUT              a grid\n\n"
         "Example: halvane resample --workdir work --name coarse --cell-size 20 \\\n"
         "           --method bilinear depth.tif",
         {"--workdir", "--name", "--cell-size", "--method"},
         {},
         RunResample},
        {"rugosity",
         "surface area over planar area of each cell and its eight neighbours",
         "--workdir DIR --name NAME INPUT\n\n"
         "  --workdir DIR   folder the grid is saved in (made when missing)\n"
         "  --name NAME     name of the saved grid: DIR/NAME.tif\n"
         "  INPUT           a bathymetric grid, depths in metres\n\n"
         "Example: halvane rugosity --workdir work --name RUGOSITY depth.tif",
         {"--workdir", "--name"},
         {},
         RunRugosity},
        {"classify",
         "the whole classification: BPI at two scales, standardization, slope, zones",
         "--workdir DIR [options] INPUT...\n\n"
         "  --workdir DIR          folder of the run (made when missing); with several\n"
         "                         inputs, one sub-folder each, named after the input\n"
         "  --dictionary FILE      classification dictionary; default the one installed\n"
         "                         with the program\n"
         "  --broad INNER,OUTER    broad-scale BPI ring, in cells; default 1,5\n"
         "  --fine INNER,OUTER     fine-scale BPI ring, in cells; default 1,3\n"
         "  --resample CELLSIZE    resample the input first to this cell size, in\n"
         "                         metres, as NAME_res\n"
         "  --method METHOD        with --resample: nearest, bilinear or cubic; default\n"
         "                         cubic\n"
         "  --name NAME            the zone grid's name; default ZONES\n"
         "  --format FORMAT        the zone table: table (default), json or csv\n"
         "  INPUT                  projected bathymetric grids, depths in metres\n\n"
         "Prints the zone grid's path and its table of classes: class, zone, cells,\n"
         "share of the zoned cells and area in km2 (one table for all inputs). Only\n"
         "SLOPE and the zone grid stay in the folder; SLOPE is replaced, as the\n"
         "wizard's Finish replaces it.\n\n"
         "Example: halvane classify --workdir work --broad 1,25 --fine 1,5 depth.tif",
         {"--workdir", "--dictionary", "--broad", "--fine", "--resample", "--method", "--name",
          "--format"},
         {},
         RunClassify},
        {"dictionary",
         "a classification dictionary as a table",
         "show FILE\n\n"
         "Example: halvane dictionary show resources/def_dict.xml",
         {},
         {},
         RunDictionary},
        {"demo",
         "the whole classification of the bundled sample, with a table and pictures",
         "[--workdir DIR] [--input GRID] [--format FORMAT]\n\n"
         "  --workdir DIR     folder of the run; default ./halvane-demo\n"
         "  --input GRID      the grid to classify; default the bundled sample\n"
         "  --format FORMAT   the zone table: table (default), json or csv\n\n"
         "Classifies the grid with the default dictionary, then computes its\n"
         "rugosity, and writes zones.png and bathymetry.png. Grids that exist are\n"
         "never overwritten.\n\n"
         "Example: halvane demo --workdir /tmp/demo",
         {"--workdir", "--input", "--format"},
         {},
         RunDemo},
        {"map",
         "a picture of a grid: its map, a legend, a scale bar and a north arrow",
         "--out FILE.png [--dictionary FILE] [--title TEXT] [--hillshade] GRID\n\n"
         "  --out FILE.png      the picture to write\n"
         "  --dictionary FILE   labels of a zone grid's classes; default none\n"
         "  --title TEXT        default the grid's file name\n"
         "  --hillshade         shade a stretched grid by its relief\n\n"
         "A zone grid (integers with a value table) is drawn one colour per class, as\n"
         "the map shows it; any other grid is stretched over a colour ramp.\n\n"
         "Example: halvane map --out zones.png --dictionary def_dict.xml work/ZONES.tif",
         {"--out", "--dictionary", "--title"},
         {"--hillshade"},
         RunMap},
        {"info",
         "size, cell size, extent, type, statistics and value table of a grid",
         "[--json] PATH\n\n"
         "  --json   one JSON object: also the reference system, class names and\n"
         "           provenance\n\n"
         "Example: halvane info --json work/ZONES.tif",
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
    "\n  --layout LAYOUT   plain (default): tiled GeoTIFFs in one pass; cog:\n"
    "                    cloud-optimized GeoTIFFs with internal overviews (a second pass)";

// Taken by every command.
constexpr const char* kCommonHelp =
    "\n  --quiet           no progress on stderr\n"
    "  --trace           on failure the full report with its call chain, and every\n"
    "                    map algebra call as it is made\n"
    "  --help            this text";

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
    // The commands that make grids split their work over a team; the others
    // would only do the same thing once per process (demo drawing one picture
    // from all of them at once).
    static const std::set<std::string> teamed = {"calc",     "slope",    "bpi",     "standardize",
                                                 "resample", "rugosity", "classify"};
    if (raster::InTeam() && !teamed.contains(command->name)) {
        if (raster::CurrentTeam()->Rank() == 0) {
            std::cerr << "halvane " << command->name
                      << ": runs as one process, not under mpirun (only calc, bpi, standardize, "
                         "slope, resample, rugosity and classify run as several)\n";
        }
        return 2;
    }
    Command accepted = *command;
    if (WritesGrids(accepted)) accepted.valueOptions.push_back(kLayoutOption);
    accepted.flags.insert(accepted.flags.end(), {"--quiet", "--trace"});
    try {
        const Arguments arguments = Parse(accepted, {args.begin() + 1, args.end()});
        if (arguments.help) {
            std::cout << "halvane " << command->name << ": " << command->summary
                      << "\n\nUsage: halvane " << command->name << " " << command->usage
                      << "\n\nCommon options:" << (WritesGrids(accepted) ? kLayoutHelp : "")
                      << kCommonHelp << "\n";
            return 0;
        }
        ApplyLayout(arguments);
        return command->run(arguments);
    } catch (const UsageError& error) {
        std::cerr << "halvane " << command->name << ": " << error.message << " (see halvane "
                  << command->name << " --help)\n";
        return 2;
    }
}

}  // namespace halvane::apps
