// Outlines of any picture with any options: closed, finite, near the picture, none without area.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "checks.h"
#include "input.h"
#include "tarvex/contours.h"

namespace tarvex::fuzz {
namespace {

struct Drawing {
    std::vector<std::uint8_t> levels;
    GreyView view;
};

/// The bytes again and again, over all of the picture; with few levels or many.
Drawing TakePicture(Input& input) {
    const int width = input.TakeBetween(0, 48);
    const int height = input.TakeBetween(0, 48);
    const int stride = width + input.TakeBetween(0, 3);
    const bool twoLevels = input.TakeBetween(0, 1) == 1;
    Drawing drawing;
    drawing.levels.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height), 0x55);
    const auto bytes = input.Rest();
    std::size_t next = 0;
    for (int y = 0; y < height && !bytes.empty(); ++y) {
        for (int x = 0; x < width; ++x, ++next) {
            const std::uint8_t byte = bytes[(twoLevels ? next / 8 : next) % bytes.size()];
            const std::uint8_t bit = (byte >> (next % 8) & 1) != 0 ? 255 : 0;
            drawing.levels[static_cast<std::size_t>(y) * static_cast<std::size_t>(stride) +
                           static_cast<std::size_t>(x)] = twoLevels ? bit : byte;
        }
    }
    drawing.view = {drawing.levels.data(), width, height, stride};
    return drawing;
}

OutlineOptions TakeOptions(Input& input) {
    OutlineOptions options;
    options.detail = input.TakeBetween(0, 17);
    options.side = input.TakeBetween(0, 1) == 0 ? ShapeSide::dark : ShapeSide::light;
    const int wild = input.TakeBetween(0, 15);
    options.threshold = wild == 1 ? input.Take<std::int32_t>() : input.Take<std::uint8_t>();
    options.minPoints = wild == 2 ? input.Take<std::int32_t>() : input.TakeBetween(0, 12);
    if (wild == 3) options.tolerance = input.Take<double>();
    if (wild == 4) options.tolerance = input.TakeBetween(0, 255) / 64.0;
    return options;
}

void CheckContour(const CArray<BPOINT, BPOINT>& contour, const GreyView& picture) {
    Require(contour.GetSize() >= 2, "an outline has a segment");
    Require(IsClosedExactly(contour), "an outline ends where it begins");
    RequireFinite(contour);
    for (const BPOINT& node : contour) Require(node.flags == 0, "nodes have no flags");
    constexpr double margin = 1.5;  // of a pixel
    const Box frame{0, static_cast<double>(picture.width), 0, static_cast<double>(picture.height)};
    Require(frame.Holds(AnchorBoxOf(contour), margin), "anchors lie in the picture, or beside it");
    Require(BoxOf(contour).HasArea(), "an outline has area");
}

}  // namespace

void TryInput(Input input) {
    OutlineOptions options = TakeOptions(input);
    const Drawing drawing = TakePicture(input);
    double part = 0;
    options.progress = [&part](double now) {
        Require(now >= part && now <= 1, "progress goes from 0 to 1");
        part = now;
        return true;
    };
    CPolyPolyBezier out;
    const bool can =
        drawing.view.width > 0 && drawing.view.height > 0 && options.detail >= 1 && options.detail <= 16;
    Require(TraceOutlines(drawing.view, options, out) == can, "only what is documented is refused");
    Require(can || out.IsEmpty(), "a refusal leaves nothing");
    for (int i = 0; i < out.GetSize(); ++i) CheckContour(out[i], drawing.view);
}

}  // namespace tarvex::fuzz
