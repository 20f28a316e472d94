#include "apps/WorkFolder.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fstream>
#include <functional>
#include <optional>
#include <set>
#include <vector>

namespace halvane::apps {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNotePrefix = ".halvane-run-";

bool ProcessAlive(long pid) {
    return pid > 0 && (::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM);
}

// The process number in a name that starts with `prefix` and goes on with
// digits; none when it does not.
std::optional<long> PidAfter(const std::string& name, const std::string& prefix) {
    if (name.rfind(prefix, 0) != 0) return std::nullopt;
    std::size_t end = prefix.size();
    while (end < name.size() && std::isdigit(static_cast<unsigned char>(name[end]))) ++end;
    if (end == prefix.size()) return std::nullopt;
    return std::stol(name.substr(prefix.size(), end - prefix.size()));
}

// The pid of a temporary grid ".NAME.part<pid>_<n>.tif" and its side files.
std::optional<long> TemporaryPid(const std::string& name) {
    if (name.empty() || name[0] != '.') return std::nullopt;
    const std::size_t part = name.rfind(".part");
    if (part == std::string::npos || part == 0) return std::nullopt;
    return PidAfter(name.substr(part), ".part");
}

struct Listing {
    std::set<std::string> files, folders;  // relative to the working folder
};

// Everything below the folder but the notes of runs.
Listing List(const fs::path& folder) {
    Listing listing;
    std::error_code error;
    fs::recursive_directory_iterator it(folder, error), end;
    for (; !error && it != end; it.increment(error)) {
        const fs::path relative = it->path().lexically_relative(folder);
        const bool folderEntry = it->is_directory(error) && !it->is_symlink(error);
        if (it.depth() == 0 && folderEntry &&
            relative.filename().string().rfind(kNotePrefix, 0) == 0) {
            it.disable_recursion_pending();
            continue;
        }
        (folderEntry ? listing.folders : listing.files).insert(relative.string());
    }
    return listing;
}

// Takes the folder back to the listing in `note`: files added since are
// removed (only those written at `since` or later, when given), files that
// went are linked back from the note, folders added are removed when empty.
bool RollBackTo(const fs::path& folder, const fs::path& note,
                std::optional<fs::file_time_type> since) {
    Listing before;
    std::ifstream in(note / "before");
    for (std::string line; std::getline(in, line);) {
        if (line.size() < 2) continue;
        (line[0] == 'd' ? before.folders : before.files).insert(line.substr(2));
    }
    bool whole = true;
    std::error_code error;
    const Listing now = List(folder);
    for (const std::string& file : now.files) {
        if (before.files.count(file)) continue;
        const fs::path path = folder / file;
        if (since && fs::last_write_time(path, error) < *since && !error) continue;
        if (!fs::remove(path, error) && error) whole = false;
    }
    for (const std::string& file : before.files) {
        const fs::path path = folder / file;
        const fs::path kept = note / "kept" / file;
        if (!fs::exists(kept, error)) continue;  // it could not be kept
        // A file of that name written by the run stands in for the one kept.
        if (fs::exists(fs::symlink_status(path, error))) {
            if (fs::equivalent(path, kept, error) || !fs::remove(path, error)) continue;
        }
        fs::create_directories(path.parent_path(), error);
        fs::create_hard_link(kept, path, error);
        if (error) whole = false;
    }
    // Deepest first, so that a folder's sub-folders go before it.
    std::vector<std::string> added;
    for (const std::string& sub : now.folders) {
        if (!before.folders.count(sub)) added.push_back(sub);
    }
    std::ranges::sort(added, std::greater<>());
    for (const std::string& sub : added) fs::remove(folder / sub, error);
    fs::remove_all(note, error);
    return whole && !error;
}

}  // namespace

void RecoverAbandonedRuns(const fs::path& folder) {
    std::error_code error;
    std::vector<fs::path> notes, temporaries;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (const auto pid = PidAfter(name, kNotePrefix); pid && !ProcessAlive(*pid)) {
            notes.push_back(entry.path());
        } else if (const auto owner = TemporaryPid(name); owner && !ProcessAlive(*owner)) {
            temporaries.push_back(entry.path());
        }
    }
    for (const fs::path& note : notes) {
        // A run killed while it took its note had changed nothing yet.
        if (!fs::exists(note / "before", error)) {
            fs::remove_all(note, error);
            continue;
        }
        const auto since = fs::last_write_time(note / "before", error);
        RollBackTo(folder, note, error ? std::nullopt : std::optional(since));
    }
    for (const fs::path& temporary : temporaries) fs::remove_all(temporary, error);
}

WorkFolderRun::WorkFolderRun(const fs::path& folder) : folder_(fs::absolute(folder)) {
    std::error_code error;
    created_ = !fs::exists(folder_, error);
    fs::create_directories(folder_);
    RecoverAbandonedRuns(folder_);
    note_ = folder_ / (kNotePrefix + std::to_string(::getpid()));
    fs::remove_all(note_, error);
    const Listing before = List(folder_);
    fs::create_directories(note_ / "kept");
    std::ofstream out(note_ / "before.part");
    for (const std::string& sub : before.folders) out << "d " << sub << "\n";
    for (const std::string& file : before.files) {
        out << "f " << file << "\n";
        // A link keeps the file whole whatever the run does to its name.
        const fs::path kept = note_ / "kept" / file;
        fs::create_directories(kept.parent_path(), error);
        fs::create_hard_link(folder_ / file, kept, error);
    }
    out.close();
    // Complete or absent: a run killed while noting has changed nothing yet.
    fs::rename(note_ / "before.part", note_ / "before");
}

WorkFolderRun::~WorkFolderRun() {
    if (!done_) RollBack();
}

void WorkFolderRun::Keep() {
    std::error_code error;
    fs::remove_all(note_, error);
    done_ = true;
}

bool WorkFolderRun::RollBack() {
    done_ = true;
    const bool whole = RollBackTo(folder_, note_, std::nullopt);
    std::error_code error;
    if (created_ && fs::is_empty(folder_, error)) fs::remove(folder_, error);
    return whole;
}

}  // namespace halvane::apps
