#include "host/component/Registry.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>

namespace halvane::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFileName = "classes.reg";

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::vector<std::string> ReadLines() {
    std::vector<std::string> lines;
    std::ifstream in(RegistryFile());
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::optional<RegistryEntry> Parse(const std::string& line) {
    if (line.empty() || line.front() == '#') return std::nullopt;
    const auto first = line.find('\t');
    if (first == std::string::npos) return std::nullopt;
    const auto second = line.find('\t', first + 1);
    if (second == std::string::npos) return std::nullopt;
    return RegistryEntry{line.substr(0, first), line.substr(first + 1, second - first - 1),
                         line.substr(second + 1)};
}

std::string Format(const RegistryEntry& entry) {
    return entry.progId + '\t' + entry.clsid + '\t' + entry.library;
}

bool WriteLines(const std::vector<std::string>& lines) {
    std::error_code error;
    const fs::path file = RegistryFile();
    fs::create_directories(file.parent_path(), error);
    const fs::path temporary = file.string() + ".tmp";
    {
        std::ofstream out(temporary, std::ios::trunc);
        for (const std::string& line : lines) out << line << '\n';
        out.flush();
        if (!out) return false;
    }
    fs::rename(temporary, file, error);
    return !error;
}

// Keeps the lines for which `drop` is false.
std::vector<std::string> Without(const std::vector<std::string>& lines,
                                 const std::function<bool(const RegistryEntry&)>& drop) {
    std::vector<std::string> kept;
    for (const std::string& line : lines) {
        const auto entry = Parse(line);
        if (!entry || !drop(*entry)) kept.push_back(line);
    }
    return kept;
}

}  // namespace

bool SameGuid(const std::string& a, const std::string& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
               return std::toupper(x) == std::toupper(y);
           });
}

std::string RegistryFolder() {
    if (std::string folder = Environment("HALVANE_REGISTRY"); !folder.empty()) return folder;
    if (std::string config = Environment("XDG_CONFIG_HOME"); !config.empty()) {
        return config + "/halvane";
    }
    return Environment("HOME") + "/.config/halvane";
}

std::string RegistryFile() { return RegistryFolder() + "/" + kFileName; }

std::vector<RegistryEntry> ReadRegistry() {
    std::vector<RegistryEntry> entries;
    for (const std::string& line : ReadLines()) {
        if (auto entry = Parse(line)) entries.push_back(*entry);
    }
    return entries;
}

bool RegisterEntries(const std::vector<RegistryEntry>& entries) {
    std::vector<std::string> lines = Without(ReadLines(), [&](const RegistryEntry& old) {
        for (const RegistryEntry& entry : entries) {
            if (old.progId == entry.progId || SameGuid(old.clsid, entry.clsid)) return true;
        }
        return false;
    });
    for (const RegistryEntry& entry : entries) lines.push_back(Format(entry));
    return WriteLines(lines);
}

bool UnregisterEntries(const std::vector<RegistryEntry>& entries) {
    if (!fs::exists(RegistryFile())) return true;
    return WriteLines(Without(ReadLines(), [&](const RegistryEntry& old) {
        for (const RegistryEntry& entry : entries) {
            if (old.progId == entry.progId && SameGuid(old.clsid, entry.clsid)) return true;
        }
        return false;
    }));
}

}  // namespace halvane::host
