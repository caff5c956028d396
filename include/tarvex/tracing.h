// Rasters: pixel access, line tracing, outlines of shapes.
#pragma once

#include "tarvex/raster.h"
#include "tarvex/shapetrace.h"
