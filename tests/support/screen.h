// Whether tests can look at what was drawn on the screen: a desktop without a display takes drawing and
// gives nothing back.
#pragma once

#include "tarvex/platform.h"

namespace tarvex::test {

inline bool CanReadScreen() {
    const HDC screen = GetDC(nullptr);
    const bool can =
        SetPixel(screen, 0, 0, RGB(1, 2, 3)) != CLR_INVALID && GetPixel(screen, 0, 0) != CLR_INVALID;
    ReleaseDC(nullptr, screen);
    return can;
}

}  // namespace tarvex::test
