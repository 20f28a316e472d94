#pragma once
// Several processes that compute one grid together, each a band of whole tile
// rows of it, reading its band and halo from the shared inputs (see
// docs/scale-out.md). The engine only needs to exchange bytes between them;
// the program that starts the processes provides the means, so the engine
// stays free of any message-passing library.

#include <string>
#include <utility>
#include <vector>

namespace halvane::raster {

class Team {
public:
    virtual ~Team() = default;
    virtual int Rank() const = 0;
    virtual int Size() const = 0;
    // Every member's bytes in rank order, at every member. Every member must
    // make the same calls in the same order.
    virtual std::vector<std::string> AllGather(const std::string& bytes) = 0;
};

// The team this process computes in; null when it computes alone.
Team*& CurrentTeam();

// True when this process is one of several.
inline bool InTeam() { return CurrentTeam() && CurrentTeam()->Size() > 1; }

// The first and end rank of the band of tile rows that member `rank` of
// `size` computes, out of `tileRows`.
inline std::pair<long long, long long> ShareOf(long long tileRows, int rank, int size) {
    return {tileRows * rank / size, tileRows * (rank + 1) / size};
}

}  // namespace halvane::raster
