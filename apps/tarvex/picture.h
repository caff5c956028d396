// Pictures as the program reads them: PNG, JPEG, BMP and the Netpbm family, told apart by their
// content and never by their name.
//
// A picture is kept in the smallest form that holds it exactly to 8 bits a channel: scans and drawings
// are grey or even bilevel, and a 1-bit page of 16 million pixels should cost 2 MB and not 64.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarvex::app {

enum class PixelFormat : std::uint8_t {
    Bit1,        ///< one bit, most significant first; set is white. Rows padded to 32 bits, padding 0
    Grey8,       ///< 0 is black
    GreyAlpha8,  ///< grey, alpha
    Rgb8,        ///< red, green, blue
    Rgba8,       ///< red, green, blue, alpha
};

/// Bytes per pixel; 0 for Bit1.
constexpr std::size_t ChannelCount(PixelFormat format) { return static_cast<std::size_t>(format); }

struct Rgba {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;
    friend bool operator==(const Rgba&, const Rgba&) = default;
};

/// Rows from the top down, `stride` bytes each. Alpha is not premultiplied; 0 is transparent.
struct Picture {
    int width = 0;
    int height = 0;
    PixelFormat format = PixelFormat::Grey8;
    std::size_t stride = 0;
    std::vector<std::uint8_t> pixels;

    Picture() = default;
    /// All pixels 0. Both sides are at least 1.
    Picture(int pictureWidth, int pictureHeight, PixelFormat pixelFormat);

    std::uint8_t* Row(int y) { return pixels.data() + static_cast<std::size_t>(y) * stride; }
    const std::uint8_t* Row(int y) const { return pixels.data() + static_cast<std::size_t>(y) * stride; }
    /// Any pixel as a colour. Convenient, not fast: loops over whole rows read the format themselves.
    Rgba At(int x, int y) const;
};

struct PictureLimits {
    /// A picture of more pixels is refused before memory is taken for it.
    std::uint64_t maxPixels = 100'000'000;
};

/// What is wrong with the bytes of a picture, in one line without the file's name.
class PictureError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Decodes a whole picture. Anything short of that (an unknown kind, data that ends early or is
/// damaged, no pixels, more pixels than the limit) raises PictureError.
Picture DecodePicture(std::span<const std::uint8_t> bytes, const PictureLimits& limits);

/// Reads a picture from a file, or from standard input for "-". Raises ProgramError with
/// ExitStatus::File and a line naming the file.
Picture ReadPicture(const std::string& path, const PictureLimits& limits);

}  // namespace tarvex::app
