// How smooth an edge is, as its points show it.
#pragma once

#include <vector>

#include "raster/skeleton/line_graph.h"

namespace tarvex {

/// How far the points of lines, about a pixel apart, lie beside the smooth curves along them: seven of ten no
/// farther than this, where lines bend gently. 0 when no line is long enough to tell.
double ScatterOf(const std::vector<skeleton::Line>& lines);

}  // namespace tarvex
