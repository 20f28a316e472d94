#include "apps/CommandLine.h"

int main(int argc, char** argv) { return halvane::apps::Main(argc, argv); }
