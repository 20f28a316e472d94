#pragma once
// A command-line run is all or nothing in its working folder. The run notes
// what the folder holds before it starts (hard links of its files, in a
// hidden `.halvane-run-<pid>` folder there); when it fails or is stopped it
// removes what it added and puts back what it removed, and when it succeeds
// it drops the note. A run killed outright (SIGKILL) leaves its note, and the
// next run in that folder rolls that run back first, once its process is
// gone; it also removes temporaries (".NAME.part<pid>_N.tif") of processes
// that are gone.

#include <filesystem>
#include <string>

namespace halvane::apps {

class WorkFolderRun {
public:
    // Makes the folder when it is missing; rolls back the runs there whose
    // process is gone.
    explicit WorkFolderRun(const std::filesystem::path& folder);
    // Rolls back unless Keep was called.
    ~WorkFolderRun();
    WorkFolderRun(const WorkFolderRun&) = delete;
    WorkFolderRun& operator=(const WorkFolderRun&) = delete;

    // The run succeeded: what it wrote stays.
    void Keep();
    // The folder as it was before the run; false when something could not be
    // put back or removed.
    bool RollBack();

private:
    std::filesystem::path folder_;
    std::filesystem::path note_;
    bool created_ = false;  // the run made the folder
    bool done_ = false;
};

// The runs noted in `folder` whose process is gone, rolled back, and the
// temporaries of gone processes removed; for tests and for WorkFolderRun.
void RecoverAbandonedRuns(const std::filesystem::path& folder);

}  // namespace halvane::apps
