// Keeps rounding from making crossings without end.
#pragma once

#include "shaping/clip/sweep.h"

namespace tarvex::clip {

/// Cuts every piece at the vertices that it passes nearer than `reach` units in the last place of the
/// vertex's coordinates, so that it goes through them. The pieces may then cross or coincide.
void LeadThroughVertices(Arrangement& arrangement, double reach);

}  // namespace tarvex::clip
