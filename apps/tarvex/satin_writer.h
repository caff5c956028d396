// A design as satin columns for Ink/Stitch (3.2 and 3.3), which makes machine files of it.
//
// What that reader asks for: each column one stroked path without fill, marked inkstitch:satin_column, whose
// data is two open rails in one direction and then the rungs; one rung or at least three, as two could be
// taken for rails themselves; each rung crosses each rail exactly once, sticking out by about a tenth, and
// none lies at the very ends. The namespace, a size in millimetres with a view box, and the version of the
// markup in the metadata, for else a dialogue opens.
#pragma once

#include <string>

#include "tarvex/stitch_design.h"

namespace tarvex::app {

struct SatinOptions {
    double mostSatin = 12;  ///< millimetres; a wider region becomes a fill
};

/// A whole SVG document in millimetres. Regions are ordered so that the needle jumps little: shapes in their
/// order, and within one the region next that begins or ends nearest, turned round if need be. Islands that
/// were not broken up are filled.
std::string WriteSatin(const StitchDesign& design, const SatinOptions& options);

}  // namespace tarvex::app
