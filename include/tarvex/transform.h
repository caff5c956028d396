// Shape transforms and display.
#pragma once

#include "tarvex/envelope.h"
#include "tarvex/glyphs.h"
#include "tarvex/random.h"
#include "tarvex/scaledraw.h"
