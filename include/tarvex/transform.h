// Shape transforms and display.
#pragma once

#include "tarvex/envelope.h"
<<<<<<< HEAD
#include "tarvex/random.h"
=======
#include "tarvex/glyphs.h"
>>>>>>> 9e106fd (Turn characters of fonts into Bezier contours, and set text)
#include "tarvex/scaledraw.h"
