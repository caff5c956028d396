// One character's outline, fetched from the platform's font engine and placed at the pen.
#include "tarvex/glyphs.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <span>

#include "platform/handles.h"
#include "tarvex/view.h"
#include "transform/glyph_parser.h"

namespace tarvex {
namespace {

FIXED ToFixed(double value) {
    const auto raw = static_cast<std::int32_t>(value * 65536);
    return {static_cast<WORD>(raw & 0xFFFF), static_cast<SHORT>(raw >> 16)};
}

MAT2 Identity() { return {ToFixed(1.0), ToFixed(0), ToFixed(0), ToFixed(1.0)}; }

void Place(CPolyPolyBezier& out, const DRECT& frame, const DPOINT& origin, double leftBearing) {
    CView3D view;
    view.Translate(frame.left, 0, 0);
    view.Translate(-origin.x, -origin.y, 0);
    if (leftBearing != 0) view.Translate(-leftBearing, 0, 0);
    out.ApplyTransformation(view);
}

}  // namespace

int GetTTOutlinePoints(tagLOGFONTW& font, unsigned int ch, CPolyPolyBezier& out, DPOINT& origin,
                       int applyLeftBearing) {
    const UniqueFont made(CreateFontIndirectW(&font));
    if (!made) return 0;
    const UniqueDC dc(CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr));
    const SelectedObject selected(dc.Get(), made.Get());

    const MAT2 identity = Identity();
    GLYPHMETRICS metrics{};
    ABCFLOAT widths{};
    if (!selected || GetCharABCWidthsFloatW(dc.Get(), ch, ch, &widths) == FALSE) return 0;  // memory is short
    const double a = widths.abcfA;
    const double c = widths.abcfC;
    const DWORD size = GetGlyphOutlineW(dc.Get(), ch, GGO_NATIVE, &metrics, 0, nullptr, &identity);
    if (size == 0 || size == GDI_ERROR) {
        origin.x += a + widths.abcfB + c;
        return 0;
    }

    const std::unique_ptr<std::byte[]> buffer(new (std::nothrow) std::byte[size]);
    if (buffer == nullptr) return 0;
    if (GetGlyphOutlineW(dc.Get(), ch, GGO_NATIVE, &metrics, size, buffer.get(), &identity) == GDI_ERROR)
        return 0;
    AppendNativeOutline(std::span(buffer.get(), size), out);

    DRECT frame{};
    out.CalcFrame(frame, 1.0);
    Place(out, frame, origin, applyLeftBearing != 0 ? a : 0);
    origin.x += std::fabs(frame.right - frame.left) + a + c;
    return out.GetSize();
}

}  // namespace tarvex
