#include "apps/CommandLine.h"
#include "apps/ProcessTeam.h"

int main(int argc, char** argv) {
    const halvane::apps::ProcessTeam team(argc, argv);
    return halvane::apps::Main(argc, argv);
}
