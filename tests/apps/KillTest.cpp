// Runs of `halvane classify` on a 2000 x 2000 grid stopped by SIGINT, SIGTERM
// and SIGKILL at several moments: each leaves the working folder as it was
// before the run (SIGKILL: once the next run there has cleaned up), and the
// run made afterwards succeeds.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <string>

#include "apps/WorkFolder.h"
#include "support/GridFiles.h"
#include "synth/Synth.h"

namespace halvane::apps {
namespace {

namespace fs = std::filesystem;

std::map<std::string, ino_t> Contents(const fs::path& folder) {
    std::map<std::string, ino_t> contents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat info {};
        ::lstat(entry.path().c_str(), &info);
        contents[entry.path().lexically_relative(folder).string()] = info.st_ino;
    }
    return contents;
}

// A classify run whose stderr (the log style of its stage lines) the test reads.
class Classify {
public:
    Classify(const std::string& work, const std::string& input) {
        int pipeEnds[2];
        EXPECT_EQ(::pipe(pipeEnds), 0);
        pid_ = ::fork();
        if (pid_ == 0) {
            ::dup2(pipeEnds[1], STDERR_FILENO);
            const int null = ::open("/dev/null", O_WRONLY);
            ::dup2(null, STDOUT_FILENO);
            ::close(pipeEnds[0]);
            ::execl(HALVANE_PROGRAM, "halvane", "classify", "--workdir", work.c_str(),
                    input.c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(pipeEnds[1]);
        err_ = pipeEnds[0];
    }
    ~Classify() { ::close(err_); }

    // Reads stderr until `text` stands in it after `after`; false when the
    // run ended first.
    bool WaitFor(const std::string& after, const std::string& text) {
        char buffer[256];
        for (;;) {
            const std::size_t from = seen_.find(after);
            if (from != std::string::npos && seen_.find(text, from) != std::string::npos) break;
            const ssize_t n = ::read(err_, buffer, sizeof buffer);
            if (n <= 0) return false;
            seen_.append(buffer, static_cast<std::size_t>(n));
        }
        return true;
    }
    int Stop(int signal) {
        ::kill(pid_, signal);
        return Wait();
    }
    int Wait() {
        int status = 0;
        ::waitpid(pid_, &status, 0);
        return status;
    }
    const std::string& Seen() const { return seen_; }

private:
    pid_t pid_;
    int err_;
    std::string seen_;
};

TEST(KillTest, StoppedRunsLeaveTheFolderAsItWasAndTheNextRunSucceeds) {
    testing::TempDir dir;
    const std::string input = dir / "depth.tif";
    synth::WriteGeoTiff({2000, 2000, 10.0, 4}, input);
    const std::string work = dir / "work";
    // The slope of an earlier run, which the zone stage replaces.
    fs::create_directories(work);
    fs::copy_file(input, work + "/SLOPE.tif");
    const auto before = Contents(work);

    // Moments by the run's own progress rather than by the clock, which a
    // faster engine or a quieter machine would outrun: as the first stage
    // begins, halfway through the standardization, and a third into the stage
    // that writes slope, the class grids and zones.
    const struct {
        const char* stage;  // stopped once `progress` stands after this in its log
        const char* progress;
    } moments[] = {{"1/4 ", ": 0"}, {"3/4 ", "...50"}, {"4/4 ", "...30"}};
    for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
        for (const auto& moment : moments) {
            Classify run(work, input);
            ASSERT_TRUE(run.WaitFor(moment.stage, moment.progress)) << run.Seen();
            const int status = run.Stop(signal);
            const std::string at =
                std::string(strsignal(signal)) + " at " + moment.stage + moment.progress;
            if (signal == SIGKILL) {
                EXPECT_TRUE(WIFSIGNALED(status)) << at;
                // What the next run in the folder does first.
                RecoverAbandonedRuns(work);
            } else {
                ASSERT_TRUE(WIFEXITED(status)) << at;
                EXPECT_EQ(WEXITSTATUS(status), 128 + signal) << at;
            }
            EXPECT_EQ(Contents(work), before) << at << "\n" << run.Seen();
        }
    }
    Classify again(work, input);
    EXPECT_EQ(again.Wait(), 0);
    EXPECT_TRUE(fs::exists(work + "/ZONES.tif"));
    EXPECT_NE(Contents(work).at("SLOPE.tif"), before.at("SLOPE.tif"));
}

}  // namespace
}  // namespace halvane::apps
