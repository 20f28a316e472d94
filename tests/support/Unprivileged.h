#pragma once
// Runs part of a test as a user who may not write into a folder the test made
// read-only. The suite may run as root, for whom every grid can be deleted;
// the part then runs in a child process that has become "nobody", and the
// scripted desktop's records of the child come back to the test.

#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/ui/ScriptedServices.h"

namespace halvane::testing {

// Makes a folder readable and searchable by everyone and writable by no one
// for its lifetime, then gives it back its permissions.
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(std::filesystem::path folder)
        : folder_(std::move(folder)), saved_(std::filesystem::status(folder_).permissions()) {
        std::filesystem::permissions(folder_, static_cast<std::filesystem::perms>(0555));
    }
    ~ReadOnlyFolder() { std::filesystem::permissions(folder_, saved_); }
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

private:
    std::filesystem::path folder_;
    std::filesystem::perms saved_;
};

struct UnprivilegedRun {
    bool ran = false;               // the child could drop its privileges and finished the body
    bool result = false;            // what the body gave
    std::vector<ui::Event> events;  // what `ui` recorded in the child, in order
};

// Runs `body` in a child process, as "nobody" when the test runs as root and
// as the test's own user otherwise. The body must not reach the engine's
// parallel evaluation: the threads of the parent do not exist in the child.
inline UnprivilegedRun RunUnprivileged(const ui::ScriptedServices& ui,
                                       const std::function<bool()>& body) {
    constexpr uid_t kNobody = 65534;
    int channel[2];
    if (::pipe(channel) != 0) return {};
    const std::size_t before = ui.Events().size();
    const pid_t child = ::fork();
    if (child == 0) {
        // A child that still may delete goes on into the run, whose parallel
        // evaluation would hang it: it ends by the alarm instead.
        ::alarm(60);
        ::close(channel[0]);
        if (::geteuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
            ::_exit(2);
        }
        bool result = false;
        try {
            result = body();
        } catch (...) {
            ::_exit(3);
        }
        // Each field ends in a NUL, which no message text holds.
        std::string record;
        for (std::size_t i = before; i < ui.Events().size(); ++i) {
            const ui::Event& event = ui.Events()[i];
            for (const std::string& field :
                 {event.kind, event.text, event.title, std::to_string(event.flags)}) {
                record += field;
                record += '\0';
            }
        }
        for (std::size_t sent = 0; sent < record.size();) {
            const ssize_t n = ::write(channel[1], record.data() + sent, record.size() - sent);
            if (n <= 0) ::_exit(4);
            sent += static_cast<std::size_t>(n);
        }
        ::_exit(result ? 1 : 0);
    }
    ::close(channel[1]);
    std::string record;
    char buffer[4096];
    for (ssize_t n; (n = ::read(channel[0], buffer, sizeof buffer)) > 0;) record.append(buffer, n);
    ::close(channel[0]);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) > 1) {
        return {};
    }
    UnprivilegedRun run{true, WEXITSTATUS(status) == 1, {}};
    std::vector<std::string> fields;
    for (std::size_t start = 0, end; (end = record.find('\0', start)) != std::string::npos;
         start = end + 1) {
        fields.push_back(record.substr(start, end - start));
    }
    for (std::size_t i = 0; i + 4 <= fields.size(); i += 4) {
        run.events.push_back({fields[i], fields[i + 1], fields[i + 2], std::stoi(fields[i + 3])});
    }
    return run;
}

}  // namespace halvane::testing
