// Pictures as PNG files.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "tarvex/picture.h"

namespace tarvex::app {

/// The bytes of a PNG file in the picture's own format: 1-bit or 8-bit grey, RGB, with or without alpha.
std::string EncodePng(const Picture& picture);

/// The bytes of an indexed PNG file: one palette index per pixel, row by row from the top, stored with
/// as few bits as the palette allows. 1 to 256 colours; transparent ones are kept. Raises
/// std::invalid_argument for another number of colours, of pixels, or an index beyond the palette.
std::string EncodeIndexedPng(int width, int height, std::span<const std::uint8_t> indices,
                             std::span<const Rgba> palette);

}  // namespace tarvex::app
