// A picture of few colours becomes painted regions whose borders fit together: a flag with a disc.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "tarvex/colortrace.h"

int main() {
    const int width = 90, height = 60;
    std::vector<std::uint16_t> labels;
    for (int i = 0; i < width * height; ++i) {
        const int x = i % width, y = i / width;
        const bool isDisc = std::hypot(x - 44.5, y - 29.5) < 18;
        labels.push_back(isDisc ? 2 : x < width / 2 ? 0 : 1);
    }

    //! [color]
    // Each pixel has the number of its colour; CColorReduction (colors.h) finds those of a photograph.
    const tarvex::LabelView picture{labels.data(), width, height, width};
    const char* const colors[] = {"#1c5d7a", "#f2efe6", "#c9722b"};

    tarvex::RegionOptions options;
    options.style = tarvex::RegionStyle::cutout;  // exact tiles: no gaps, no overlap
    const auto painted = tarvex::TraceRegions(picture, options);
    for (const tarvex::PaintedRegions& regions : painted)
        std::printf("%s: %d contours\n", colors[regions.label], regions.outlines.GetSize());
    //! [color]
    return painted.size() == 3 ? 0 : 1;
}
