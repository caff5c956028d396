// Drawings from anywhere: any bytes give outlines within the limits or an error; a drawing that can be
// read can be measured, bent and written, and what was written without a change can be read again.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "tarvex/bend.h"
#include "tarvex/measure.h"
#include "tarvex/nodes.h"
#include "tarvex/svg_reader.h"
#include "tarvex/svg_rewriter.h"

namespace {

using namespace tarvex;
using namespace tarvex::app;

std::optional<SvgDocument> Parsed(const std::uint8_t* data, std::size_t size) {
    try {
        return ParseSvg({data, size});
    } catch (const SvgError&) {
        return std::nullopt;
    }
}

std::optional<DRECT> Frame(const SvgDocument& drawing) {
    std::optional<DRECT> frame;
    for (const SvgElement& element : drawing.elements) Unite(frame, FrameOf(element.outline));
    return frame;
}

/// Just below the limit, rounding can reach it.
bool IsNearLimit(const SvgDocument& drawing) {
    for (const SvgElement& element : drawing.elements) {
        for (int i = 0; i < element.outline.GetSize(); ++i) {
            for (const BPOINT& node : element.outline[i]) {
                for (const double v :
                     {node.cp1.x, node.cp1.y, node.pt.x, node.pt.y, node.cp2.x, node.cp2.y}) {
                    if (std::fabs(v) > MAX_SVG_COORDINATE - 1) return true;
                }
            }
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto drawing = Parsed(data, size);
    if (!drawing) return 0;
    const auto frame = Frame(*drawing);
    if (frame && !(std::fabs(frame->right - frame->left) < 2 * MAX_SVG_COORDINATE)) std::abort();
    for (const SvgElement& element : drawing->elements) {
        for (int i = 0; i < element.outline.GetSize(); ++i) {
            const auto& contour = element.outline[i];
            const double area =
                GetBezierArea({contour.GetData(), static_cast<std::size_t>(contour.GetSize())});
            if (!std::isfinite(area)) std::abort();
        }
    }
    const std::string text = WriteDrawing(*drawing, {});
    if (!IsNearLimit(*drawing) && !Parsed(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()))
        std::abort();

    auto bent = Parsed(data, size);
    if (!frame || bent->elements.size() > 100) return 0;
    const double amount = int{data[size / 2]} - 100;
    const int type = static_cast<int>(size % 10) + 1;
    Bender bend(*frame, type, amount);
    for (SvgElement& element : bent->elements) bend.Bend(element.outline);
    try {
        (void)WriteDrawing(*bent, {});
    } catch (const SvgError&) {
        return 0;
    }
    return 0;
}
