// Plane geometry: free functions on lines, angles, circles, polylines and polygons, offsets, and ellipses.
#pragma once

#include "tarvex/ellipse.h"
#include "tarvex/lines.h"
#include "tarvex/offset.h"
#include "tarvex/polygons.h"
#include "tarvex/view.h"
