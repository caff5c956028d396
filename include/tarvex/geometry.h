// Plane geometry: free functions on lines, angles, circles, polylines and polygons.
#pragma once

#include "tarvex/lines.h"
#include "tarvex/polygons.h"
#include "tarvex/view.h"
