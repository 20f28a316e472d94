// libhalvane_core.so holds the layers from the pages down, taken whole from
// their static libraries (see CMakeLists.txt); this unit only gives the
// library a source of its own.
