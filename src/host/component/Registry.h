#pragma once
// The registry the component registers in and the host reads: a plain text
// file, one class a line,
//
//     <ProgID> TAB <class identifier> TAB <absolute path of the library>
//
// with blank lines and lines starting with '#' ignored (and kept). It lies in
// the folder named by $HALVANE_REGISTRY, else $XDG_CONFIG_HOME/halvane, else
// ~/.config/halvane, as "classes.reg". Tests point $HALVANE_REGISTRY at a
// folder of their own. No toolkit here.

#include <string>
#include <vector>

namespace halvane::host {

struct RegistryEntry {
    std::string progId;
    std::string clsid;
    std::string library;
    bool operator==(const RegistryEntry&) const = default;
};

// Class identifiers compare without regard to case.
bool SameGuid(const std::string& a, const std::string& b);

// The folder and the file, worked out anew at each call.
std::string RegistryFolder();
std::string RegistryFile();

// The entries of the file, in file order; none when it does not exist.
std::vector<RegistryEntry> ReadRegistry();

// Records `entries`: every line of the file with the same ProgID or class
// identifier as one of them is replaced, the others are kept. Makes the folder
// and the file when needed; writes a temporary file and renames it. False
// when the file cannot be written.
bool RegisterEntries(const std::vector<RegistryEntry>& entries);

// Removes every line that records one of `entries`' ProgID with its class
// identifier, whatever the library; keeps every other line. True also when
// there was nothing to remove; false when the file cannot be written.
bool UnregisterEntries(const std::vector<RegistryEntry>& entries);

}  // namespace halvane::host
