// halvane-regsvr: registers the component's classes in the registry that
// halvane-desktop reads, or removes them again.
//
//     halvane-regsvr [-u] [library]
//
// Without a library, the component beside this program is meant.

#include <filesystem>
#include <iostream>
#include <string>

#include "host/component/ComponentHost.h"
#include "host/component/Registry.h"

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    bool unregister = false;
    std::string library;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "-u" || argument == "--unregister") {
            unregister = true;
        } else if (argument == "-h" || argument == "--help") {
            std::cout << "usage: halvane-regsvr [-u] [library]\n";
            return 0;
        } else {
            library = argument;
        }
    }
    if (library.empty()) {
        std::error_code error;
        // Beside the program in the build tree, in ../lib/halvane/ when installed.
        const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
        library = (folder / "libhalvane_component.so").string();
        const fs::path installed = folder / ".." / "lib" / "halvane" / "libhalvane_component.so";
        if (!fs::exists(library, error) && fs::exists(installed, error)) {
            library = fs::weakly_canonical(installed, error).string();
        }
    }
    library = fs::absolute(library).string();
    std::string error;
    const auto result = halvane::host::ComponentHost::RegisterServer(library, unregister, &error);
    if (result != halvane::host::S_OK) {
        std::cerr << "halvane-regsvr: " << error << "\n";
        return 1;
    }
    std::cout << (unregister ? "Unregistered " : "Registered ") << library << " in "
              << halvane::host::RegistryFile() << "\n";
    return 0;
}
