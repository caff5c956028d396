// Characters of fonts as Bezier contours.
//
//     LOGFONTW font{};
//     font.lfHeight = -2048;  // the em's height, in pixels
//     DPOINT pen;
//     for (const wchar_t c : std::wstring(L"Text")) {
//         CPolyPolyBezier glyph;
//         GetTTOutlinePoints(font, static_cast<unsigned>(c), glyph, pen, 1);
//         // glyph stands where the pen was, and the pen has moved on
//     }
#pragma once

#include "tarvex/containers.h"
#include "tarvex/export.h"
#include "tarvex/platform.h"

namespace tarvex {

/// Appends the contours of a character's outline to `out`, places them at the pen `origin` and moves the pen
/// to where the next character begins. Returns the number of contours in `out` afterwards, or 0 when the
/// character has no outline (a space, or a font of bitmaps), the font cannot be made or memory is short.
///
/// Units are pixels, `font.lfHeight` of them high as `CreateFontIndirectW` explains; x runs to the right and,
/// unlike in fonts, y downwards, with the baseline at `origin.y`. **Coordinates are whole numbers** before
/// the glyph is placed (halves round up), so ask for a large height, such as -2048, and scale the outlines
/// down. Contours are closed. Curves are the font's quadratic ones raised to cubic ones, with handles rounded
/// towards their anchor too; a straight segment has both handles on its anchors. Filled by the non-zero rule.
///
/// Placement. Let F be the frame of `out` (`CPolyPolyBezier::CalcFrame` at resolution 1) and A, B, C the
/// character's widths (`GetCharABCWidthsFloatW`). The left edge of F goes to `origin.x`, or to `origin.x` + A
/// when `applyLeftBearing` is not 0. **Everything in `out` is moved**, so pass it empty for each character.
/// The pen moves by the width of F, A and C, and for a character without an outline by A + B + C; it does not
/// move when there is no font. With an escapement the outline is turned, the pen still moves along x.
///
/// The font is made at every call. Off Windows the last few fonts stay open for that, and finding another
/// takes as long as a hundred glyphs: draw a font's characters together. A font that is installed meanwhile
/// is found once others have taken the place of what was found for its name. On Windows, whose engine takes
/// 16-bit characters, `ch` is one of those; elsewhere any Unicode character.
TARVEX_API int GetTTOutlinePoints(tagLOGFONTW& font, unsigned int ch, CPolyPolyBezier& out, DPOINT& origin,
                                  int applyLeftBearing);

}  // namespace tarvex
