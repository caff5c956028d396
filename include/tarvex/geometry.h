// Plane geometry: free functions on lines, angles, circles, polylines and polygons, and ellipses.
#pragma once

#include "tarvex/ellipse.h"
#include "tarvex/lines.h"
#include "tarvex/polygons.h"
#include "tarvex/view.h"
