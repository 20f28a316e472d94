#include "apps/ProcessTeam.h"

#include <cstdlib>
#include <memory>

#include "platform/raster/Engine.h"
#include "platform/raster/Team.h"

#ifdef HALVANE_WITH_MPI
#include <mpi.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <thread>
#endif

namespace halvane::apps {
namespace {

#ifdef HALVANE_WITH_MPI

class MpiTeam final : public raster::Team {
public:
    MpiTeam() {
        MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
        MPI_Comm_size(MPI_COMM_WORLD, &size_);
    }
    int Rank() const override { return rank_; }
    int Size() const override { return size_; }

    std::vector<std::string> AllGather(const std::string& bytes) override {
        const long long mine = static_cast<long long>(bytes.size());
        std::vector<long long> sizes(static_cast<std::size_t>(size_));
        Check(
            MPI_Allgather(&mine, 1, MPI_LONG_LONG, sizes.data(), 1, MPI_LONG_LONG, MPI_COMM_WORLD));
        std::vector<int> counts(sizes.size()), offsets(sizes.size());
        long long total = 0;
        for (std::size_t k = 0; k < sizes.size(); ++k) {
            // One exchange holds at most 2 GiB: the per-tile statistics of a
            // grid of 10^11 cells are a few tens of megabytes.
            if (sizes[k] > std::numeric_limits<int>::max() - total) {
                throw std::length_error("too much to exchange between the processes");
            }
            counts[k] = static_cast<int>(sizes[k]);
            offsets[k] = static_cast<int>(total);
            total += sizes[k];
        }
        std::string all(static_cast<std::size_t>(total), '\0');
        Check(MPI_Allgatherv(bytes.data(), counts[static_cast<std::size_t>(rank_)], MPI_BYTE,
                             all.data(), counts.data(), offsets.data(), MPI_BYTE, MPI_COMM_WORLD));
        std::vector<std::string> parts;
        for (std::size_t k = 0; k < sizes.size(); ++k) {
            parts.push_back(all.substr(static_cast<std::size_t>(offsets[k]),
                                       static_cast<std::size_t>(counts[k])));
        }
        return parts;
    }

private:
    static void Check(int result) {
        if (result != MPI_SUCCESS) throw std::runtime_error("the processes lost each other");
    }

    int rank_ = 0;
    int size_ = 1;
};

// mpirun tells its processes so in their environment; a process started
// otherwise does not pay for starting MPI.
bool StartedByMpirun() {
    for (const char* name : {"OMPI_COMM_WORLD_SIZE", "PMIX_RANK", "PMI_SIZE"}) {
        if (std::getenv(name)) return true;
    }
    return false;
}

std::unique_ptr<MpiTeam>& Current() {
    static std::unique_ptr<MpiTeam> team;
    return team;
}

#endif

}  // namespace

ProcessTeam::ProcessTeam([[maybe_unused]] int& argc, [[maybe_unused]] char**& argv) {
#ifdef HALVANE_WITH_MPI
    if (!StartedByMpirun()) return;
    // Only the main thread exchanges; the engine's threads compute between exchanges.
    int provided = 0;
    MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &provided);
    Current() = std::make_unique<MpiTeam>();
    raster::CurrentTeam() = Current().get();
    // The processes on one node share its cores: each takes its share of
    // threads, unless the user said how many.
    if (!std::getenv("OMP_NUM_THREADS")) {
        MPI_Comm node;
        MPI_Comm_split_type(MPI_COMM_WORLD, MPI_COMM_TYPE_SHARED, 0, MPI_INFO_NULL, &node);
        int neighbours = 1;
        MPI_Comm_size(node, &neighbours);
        MPI_Comm_free(&node);
        const int cores = static_cast<int>(std::thread::hardware_concurrency());
        raster::Settings().threads = std::max(1, cores / std::max(1, neighbours));
    }
#endif
}

ProcessTeam::~ProcessTeam() {
#ifdef HALVANE_WITH_MPI
    if (!Current()) return;
    raster::CurrentTeam() = nullptr;
    Current().reset();
    MPI_Finalize();
#endif
}

}  // namespace halvane::apps
