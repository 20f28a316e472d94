#pragma once
// The processes that mpirun starts for one command form a team
// (platform/raster/Team.h): each computes a band of every grid. Without MPI
// in the build, or when not started by mpirun, the process runs alone.

namespace halvane::apps {

class ProcessTeam {
public:
    ProcessTeam(int& argc, char**& argv);
    ~ProcessTeam();
    ProcessTeam(const ProcessTeam&) = delete;
    ProcessTeam& operator=(const ProcessTeam&) = delete;
};

}  // namespace halvane::apps
