// What comes out of font files: native outlines of any bytes become closed contours, and kerning tables of
// any bytes are read within them.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "checks.h"
#include "input.h"
#include "platform/font_kerning.h"
#include "transform/glyph_parser.h"

namespace tarvex::fuzz {
namespace {

/// A copy of exactly the input's size, so that a byte too many is seen.
std::vector<std::byte> Rest(const Input& input) {
    const auto bytes = std::as_bytes(input.Rest());
    return {bytes.begin(), bytes.end()};
}

void ParseOutline(const Input& input) {
    CPolyPolyBezier out;
    AppendNativeOutline(Rest(input), out);
    for (int i = 0; i < out.GetSize(); ++i) {
        Require(out[i].GetSize() == 1 || IsClosed(out[i]), "contours are closed");
        EachPoint(out[i], [](const DPOINT& p) {
            Require(p.x == std::floor(p.x) && p.y == std::floor(p.y), "coordinates are whole");
            Require(std::fabs(p.x) < 120000 && std::fabs(p.y) < 120000, "coordinates stay near their range");
        });
    }
}

void Kern(Input& input) {
    const auto left = input.Take<std::uint16_t>();
    const auto right = input.Take<std::uint16_t>();
    const platform::KerningTable table(Rest(input));
    const int value = table.Adjustment(left, right);
    Require(table.HasPairs() || value == 0, "without pairs nothing is kerned");
    Require(table.Adjustment(left, right) == value, "the same pair is kerned the same");
}

}  // namespace

void TryInput(Input input) {
    if (input.TakeBetween(0, 1) == 0) {
        ParseOutline(input);
    } else {
        Kern(input);
    }
}

}  // namespace tarvex::fuzz
