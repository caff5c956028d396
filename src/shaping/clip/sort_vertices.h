// Puts an arrangement's vertices in order.
#pragma once

#include "shaping/clip/sweep.h"

namespace tarvex::clip {

/// Sorts the vertices in sweep order, each once, and turns the pieces round that then go down. Pieces
/// whose ends are one vertex go.
void SortVertices(Arrangement& arrangement);

}  // namespace tarvex::clip
