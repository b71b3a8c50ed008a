// A dispatched family for the dispatch tests: each path's variant reports its own path id.
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS {
constexpr int path_id = TAV_PATH_ID;
}

extern "C" int TAV_PATH_NAME(test, which_path)(int offset) { return tav::TAV_PATH_NS::path_id + offset; }
