// Edges of any small picture, by any options: a result of the picture's size, the same for its negative, and
// curves of finite coordinates within it.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "checks.h"
#include "input.h"
#include "tarvex/edges.h"

namespace tarvex::fuzz {
namespace {

std::vector<std::uint8_t> BitsOf(const CEdgeDetect& edges, int width, int height) {
    BITMAP bitmap{};
    Require(GetObject(edges.Bitmap(), sizeof bitmap, &bitmap) != 0, "there is a bitmap");
    Require(bitmap.bmWidth == width && bitmap.bmHeight == height && bitmap.bmBitsPixel == 1,
            "of the right size");
    const auto* const bytes = static_cast<const std::uint8_t*>(bitmap.bmBits);
    return {bytes, bytes + static_cast<std::ptrdiff_t>(bitmap.bmWidthBytes) * height};
}

}  // namespace

void TryInput(Input input) {
    EdgeOptions options;
    const int kind = input.TakeBetween(0, 7);
    options.method = (kind & 1) != 0 ? EdgeMethod::ShenCastan : EdgeMethod::Canny;
    options.sigma = (kind & 2) != 0 ? input.Take<double>() : input.Take<std::uint8_t>() / 32.0;
    if ((kind & 4) != 0) options.thresholds = EdgeThresholds{input.Take<float>(), input.Take<float>()};
    const int width = input.TakeBetween(1, 70);
    const int height = input.TakeBetween(1, 70);
    std::vector<std::uint8_t> levels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (std::uint8_t& level : levels) level = input.Take<std::uint8_t>();

    CEdgeDetect edges;
    Require(edges.Detect(GreyView{levels.data(), width, height, width}, options), "small pictures are done");
    const auto bits = BitsOf(edges, width, height);
    for (std::uint8_t& level : levels) level = static_cast<std::uint8_t>(255 - level);
    CEdgeDetect negative;
    Require(negative.Detect(GreyView{levels.data(), width, height, width}, options), "so are negatives");
    Require(bits == BitsOf(negative, width, height), "a negative has the same edges");

    CPolyPolyBezier curves;
    Require(edges.Output(curves), "edges become curves");
    const Box frame{0, width - 1.0, 0, height - 1.0};
    for (int i = 0; i < curves.GetSize(); ++i) {
        RequireFinite(curves[i]);
        Require(frame.Holds(AnchorBoxOf(curves[i]), 1), "curves stay in the picture");
    }
}

}  // namespace tarvex::fuzz
