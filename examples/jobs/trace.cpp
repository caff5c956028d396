// A picture becomes outlines. Here the picture is a ring, drawn pixel by pixel.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "tarvex/contours.h"

static void PrintPath(const tarvex::CArray<tarvex::BPOINT, tarvex::BPOINT>& nodes) {
    std::printf("M%.2f %.2f", nodes[0].pt.x, nodes[0].pt.y);
    for (int i = 1; i < nodes.GetSize(); ++i) {
        const tarvex::DPOINT &a = nodes[i - 1].cp2, &b = nodes[i].cp1, &to = nodes[i].pt;
        std::printf("C%.2f %.2f %.2f %.2f %.2f %.2f", a.x, a.y, b.x, b.y, to.x, to.y);
    }
    std::puts("Z");
}

int main() {
    const int size = 64;
    std::vector<std::uint8_t> levels;
    for (int i = 0; i < size * size; ++i) {
        const double r = std::hypot(i % size - 31.5, i / size - 31.5);
        levels.push_back(r < 24 && r > 10 ? 0 : 255);
    }

    //! [trace]
    const tarvex::GreyView picture{levels.data(), size, size, size};  // 0 is black, 255 white

    tarvex::OutlineOptions options;
    options.threshold = tarvex::OtsuThreshold(tarvex::CountLevels(picture));
    options.side = tarvex::FindShapeSide(picture, options.threshold);

    tarvex::CPolyPolyBezier outlines;
    if (!tarvex::TraceOutlines(picture, options, outlines)) return 1;
    for (int i = 0; i < outlines.GetSize(); ++i) PrintPath(outlines[i]);
    //! [trace]
    return outlines.GetSize() == 2 ? 0 : 1;  // the ring's outline and that of its hole
}
