// Where stitches cross a column: inclinations from rail to rail.
#pragma once

#include <span>
#include <vector>

#include "breakup/columns.h"

namespace tarvex {

/// The two ends of an inclination, as indices of points of the rails.
struct Inclination {
    int first;
    int second;
};

enum class ColumnKind { Open, Ring };

/// Lays inclinations every `step` points of the line along the column's middle, and puts their ends into the
/// rails as points of their own. They are in order along both rails, cross neither each other nor, where the
/// column allows it, anything else, and turn by no more than 15 degrees from one to the next.
std::vector<Inclination> LayInclinations(Rails& rails, std::span<const DPOINT> line, int step,
                                         ColumnKind kind);

}  // namespace tarvex
