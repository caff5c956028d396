// Pictures reduced to few colours, as palette indices.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarvex/picture.h"

namespace tarvex::app {

/// A pixel counts as transparent when it is less than half opaque.
inline constexpr std::uint8_t OPAQUE_ALPHA = 128;

struct PaletteColor {
    Rgba color;
    std::uint64_t count = 0;  ///< pixels that have it
};

struct IndexedPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> indices;  ///< row by row from the top
    std::vector<PaletteColor> palette;  ///< every colour has pixels; a transparent one is the last
    bool hasTransparent = false;

    std::size_t OpaqueColors() const { return palette.size() - (hasTransparent ? 1 : 0); }
};

struct ReduceSettings {
    int colors = 8;  ///< the most opaque colours, 1 to 256; 255 of them in a picture with transparent pixels
    int level = 0;   ///< as CColorReduction takes it
};

/// Reduces the picture; what is transparent stays so and is not seen by the reduction. A picture in which the
/// reduction finds no colours is taken as it is, if that many will do. Raises ProgramError with
/// ExitStatus::NoResult and a line about `name` otherwise, and for a picture that is transparent all over.
IndexedPicture ReduceColors(const Picture& picture, const ReduceSettings& settings, const std::string& name);

/// "#rrggbb", or "#rgb" where that says the same.
std::string ColorText(const Rgba& color);

}  // namespace tarvex::app
