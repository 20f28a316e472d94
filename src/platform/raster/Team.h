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

// An exchange of the run's work: every member's bytes in rank order. A member
// that has left the run (EndTogether) makes it fail on every member still in
// it, so that a failure of one member alone, before an exchange the others
// wait in, does not leave them waiting: they fail too and end with it.
std::vector<std::string> Exchange(const std::string& bytes);

// The end of a run on this member, which hands over `report` (what it would
// tell of a failure; empty when it succeeded). Waits until every member has
// ended, taking part in the exchanges of those still working, and returns the
// reports of all of them in rank order.
std::vector<std::string> EndTogether(const std::string& report);

// True once an exchange of this process found that another member had left
// the run: this member's failure is then only the echo of that one's.
bool& LeftBehind();

// The team this process computes in; null when it computes alone.
Team*& CurrentTeam();

// True when this process is one of several.
inline bool InTeam() { return CurrentTeam() && CurrentTeam()->Size() > 1; }

// Every band starts on an edge of the stored files' blocks (their height is
// this), so that the first process assembles a grid by copying each band's
// compressed blocks as they are, with no decompressing and compressing again.
constexpr long long kFileBlockRows = 256;

// The first and end rank of the band of units (rows of tiles and blocks)
// that member `rank` of `size` computes, out of `units`.
inline std::pair<long long, long long> ShareOf(long long units, int rank, int size) {
    return {units * rank / size, units * (rank + 1) / size};
}

}  // namespace halvane::raster
