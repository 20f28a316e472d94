#pragma once
// The command line: `halvane <command> [options]`. Each command is a small
// function over parsed arguments; the table in CommandLine.cpp lists them.

#include <map>
#include <string>
#include <vector>

namespace halvane::apps {

struct Arguments {
    std::multimap<std::string, std::string> options;  // "--bind" -> "a=/x.tif", ...
    std::vector<std::string> positional;
    bool help = false;

    bool Has(const std::string& option) const { return options.count(option) > 0; }
    // The single value of a required option; throws UsageError when missing.
    std::string Required(const std::string& option) const;
    std::string Optional(const std::string& option, const std::string& fallback = "") const;
};

struct UsageError {
    std::string message;
};

struct Command {
    const char* name;
    const char* summary;
    const char* usage;                      // options and arguments, shown by --help
    std::vector<std::string> valueOptions;  // options that take a value
    std::vector<std::string> flags;         // options that stand alone
    int (*run)(const Arguments& arguments);
};

// Fails as a usage error, naming `given` (the option as typed), unless both
// radii are numbers with 0 <= inner < outer.
void CheckRadii(const std::string& given, const std::string& inner, const std::string& outer);

// --method as the resampling page names it: "nearest", "bilinear" and "cubic"
// in any case, or the page's own texts; "Cubic Convolution" when absent.
std::string MethodOf(const Arguments& arguments);

// Parses argv after the command name; options not listed fail as usage errors.
Arguments Parse(const Command& command, const std::vector<std::string>& args);

// Every command of the tool, in the order --help lists them.
const std::vector<Command>& Commands();

int Main(int argc, char** argv);

}  // namespace halvane::apps
