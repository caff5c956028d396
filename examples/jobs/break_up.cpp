// A filled shape is broken up where its strokes meet: a letter T becomes columns for satin stitches.
#include <cstdio>
#include <memory>
#include <utility>

#include "tarvex/breakup.h"

int main() {
    //! [break-up]
    tarvex::CPolyPolyBezier shape;
    auto letter = std::make_unique<tarvex::CArray<tarvex::BPOINT, tarvex::BPOINT>>();
    for (const tarvex::DPOINT p : {tarvex::DPOINT{0, 0},
                                   {300, 0},
                                   {300, 60},
                                   {180, 60},
                                   {180, 400},
                                   {120, 400},
                                   {120, 60},
                                   {0, 60},
                                   {0, 0}})
        letter->Add({p, p, p});
    shape.Add(std::move(letter));

    std::size_t columns = 0;
    for (const tarvex::IslandBreakUp& island : tarvex::BreakUpShape(shape, {})) {
        if (island.end != tarvex::BreakUpEnd::Done) return 1;
        for (const tarvex::StitchRegion& column : island.regions) {
            // a stitch line for each inclination, from rail to rail
            for (const auto& [first, second] : column.inclinations) {
                const tarvex::DPOINT& a = column.first[static_cast<std::size_t>(first)];
                const tarvex::DPOINT& b = column.second[static_cast<std::size_t>(second)];
                std::printf("M%.1f %.1fL%.1f %.1f", a.x, a.y, b.x, b.y);
            }
            std::puts("");
            ++columns;
        }
    }
    //! [break-up]
    return columns >= 2 ? 0 : 1;
}
