// Rasters: pixel access, line tracing, outlines of shapes and of grey pictures, regions of colour, centre
// lines.
#pragma once

#include "tarvex/autotrace.h"
#include "tarvex/colortrace.h"
#include "tarvex/contours.h"
#include "tarvex/edges.h"
#include "tarvex/imagetrace.h"
#include "tarvex/raster.h"
#include "tarvex/shapetrace.h"
#include "tarvex/skeleton.h"
