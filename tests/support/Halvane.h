#pragma once
// The command line run in-process, as `halvane ARGS...` would run it.

#include <string>
#include <vector>

#include "apps/CommandLine.h"

namespace halvane::testing {

inline int Halvane(std::vector<std::string> args) {
    args.insert(args.begin(), "halvane");
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(arg.data());
    return apps::Main(static_cast<int>(argv.size()), argv.data());
}

}  // namespace halvane::testing
