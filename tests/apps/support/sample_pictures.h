// Picture files made in the test, byte for byte under its control.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tarvex/picture.h"

namespace tarvex::app::test {

using FileBytes = std::vector<std::uint8_t>;

FileBytes BytesOf(const std::string& text);

/// Channel values as a file stores them (0 .. 2^depth - 1), row by row, channels of a pixel together.
struct Samples {
    int width = 0;
    int height = 0;
    int channels = 1;
    int depth = 8;
    std::vector<std::uint32_t> values;

    std::uint32_t At(int x, int y, int channel) const;
};

/// Fixed pseudo-random values; every value of the depth can occur.
Samples RandomSamples(int width, int height, int channels, int depth, unsigned seed);

enum class Interlace { None, Adam7 };

/// The colour types of the PNG format.
enum class PngColour { Grey = 0, Rgb = 2, Indexed = 3, GreyAlpha = 4, Rgba = 6 };

struct PngSpec {
    PngColour colour = PngColour::Grey;
    Interlace interlace = Interlace::None;
    std::vector<Rgba> palette;             ///< for Indexed; alpha other than 255 makes a tRNS chunk
    std::vector<std::uint32_t> colourKey;  ///< one value a channel: the transparent colour of Grey or Rgb
};

FileBytes MakePng(const Samples& samples, const PngSpec& spec);
/// A PNG that announces a size and has no pixels.
FileBytes MakePngHeader(int width, int height);

enum class JpegColour { Grey, Rgb, Cmyk, AdobeCmyk };

struct JpegSpec {
    JpegColour colour = JpegColour::Rgb;
    bool isProgressive = false;
    int orientation = 0;  ///< 1..8 adds an Exif block that says so
    bool exifIsBigEndian = false;
};

/// Best quality, all channels at full resolution.
FileBytes MakeJpeg(const Samples& samples, const JpegSpec& spec);

struct BmpSpec {
    unsigned bits = 24;
    std::uint32_t headerSize = 40;  ///< 12 is the header of OS/2 1.x
    std::uint32_t compression = 0;
    bool isTopDown = false;
    std::vector<Rgba> palette;
    std::vector<std::uint32_t> masks;  ///< red, green, blue and perhaps alpha
};

/// `pixels` are values of `bits` bits, row by row from the picture's top.
FileBytes MakeBmp(int width, int height, const std::vector<std::uint32_t>& pixels, const BmpSpec& spec);
/// The same header around any data.
FileBytes MakeBmpAround(int width, int height, const FileBytes& data, const BmpSpec& spec);

/// One small file of each kind, for damage: their names, and their bytes.
struct NamedFile {
    std::string name;
    FileBytes bytes;
};
std::vector<NamedFile> OneOfEachKind();

}  // namespace tarvex::app::test
