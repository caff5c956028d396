// All of the library.
#pragma once

#include "tarvex/bezier.h"
#include "tarvex/breakup.h"
#include "tarvex/clipper.h"
#include "tarvex/colors.h"
#include "tarvex/containers.h"
#include "tarvex/framework.h"
#include "tarvex/geometry.h"
#include "tarvex/matrices.h"
#include "tarvex/module.h"
#include "tarvex/nodes.h"
#include "tarvex/platform.h"
#include "tarvex/records.h"
#include "tarvex/shaping.h"
#include "tarvex/stitch.h"
#include "tarvex/tracing.h"
#include "tarvex/transform.h"
