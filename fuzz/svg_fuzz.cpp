// Drawings from anywhere: any bytes give outlines within the limits or an error; a drawing that can be
// read can be measured, bent and written, and what was written without a change can be read again.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "input.h"
#include "tarvex/bend.h"
#include "tarvex/measure.h"
#include "tarvex/nodes.h"
#include "tarvex/svg_reader.h"
#include "tarvex/svg_rewriter.h"

namespace tarvex::fuzz {
namespace {

using namespace app;

std::optional<SvgDocument> Parsed(std::span<const std::uint8_t> bytes) {
    try {
        return ParseSvg(bytes);
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

void TryInput(Input input) {
    const std::span<const std::uint8_t> bytes = input.Rest();
    auto drawing = Parsed(bytes);
    if (!drawing) return;
    const auto frame = Frame(*drawing);
    Require(!frame || std::fabs(frame->right - frame->left) < 2 * MAX_SVG_COORDINATE,
            "a drawing has a width");
    for (const SvgElement& element : drawing->elements) {
        for (int i = 0; i < element.outline.GetSize(); ++i) {
            const auto& contour = element.outline[i];
            const double area =
                GetBezierArea({contour.GetData(), static_cast<std::size_t>(contour.GetSize())});
            Require(std::isfinite(area), "an outline has an area");
        }
    }
    const std::string text = WriteDrawing(*drawing, {});
    Require(
        IsNearLimit(*drawing) || Parsed({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}),
        "what is written can be read");

    auto bent = Parsed(bytes);
    if (!frame || bent->elements.size() > 100) return;
    const double amount = int{bytes[bytes.size() / 2]} - 100;
    const int type = static_cast<int>(bytes.size() % 10) + 1;
    Bender bend(*frame, type, amount);
    for (SvgElement& element : bent->elements) bend.Bend(element.outline);
    try {
        (void)WriteDrawing(*bent, {});
    } catch (const SvgError&) {
        // Bending may lead beyond the coordinates that can be written.
    }
}

}  // namespace tarvex::fuzz
