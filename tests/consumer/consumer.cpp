// Traces a disc with a hole and prints the outlines as an SVG path.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "tarvex/contours.h"

int main() {
    const int size = 64;
    std::vector<std::uint8_t> levels(size * size, 255);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const double r = std::hypot(x - 31.5, y - 31.5);
            if (r < 24 && r > 10) levels[static_cast<std::size_t>(y * size + x)] = 0;
        }
    }

    const tarvex::GreyView picture{levels.data(), size, size, size};
    tarvex::OutlineOptions options;
    options.threshold = tarvex::OtsuThreshold(tarvex::CountLevels(picture));
    options.side = tarvex::FindShapeSide(picture, options.threshold);
    tarvex::CPolyPolyBezier outlines;
    if (!tarvex::TraceOutlines(picture, options, outlines)) return 1;

    for (int i = 0; i < outlines.GetSize(); ++i) {
        const auto& nodes = *outlines.GetAt(i);
        std::printf("M%.2f %.2f", nodes.GetAt(0).pt.x, nodes.GetAt(0).pt.y);
        for (int k = 1; k < nodes.GetSize(); ++k) {
            const tarvex::BPOINT& from = nodes.GetAt(k - 1);
            const tarvex::BPOINT& to = nodes.GetAt(k);
            std::printf("C%.2f %.2f %.2f %.2f %.2f %.2f", from.cp2.x, from.cp2.y, to.cp1.x, to.cp1.y, to.pt.x,
                        to.pt.y);
        }
        std::puts("Z");
    }
    return outlines.GetSize() == 2 ? 0 : 1;
}
