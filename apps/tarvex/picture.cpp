#include "tarvex/picture.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "tarvex/input.h"
#include "tarvex/picture_formats.h"
#include "tarvex/program_error.h"

namespace tarvex::app {

namespace {

std::size_t StrideOf(int width, PixelFormat format) {
    const auto columns = static_cast<std::size_t>(width);
    return format == PixelFormat::Bit1 ? (columns + 31) / 32 * 4 : columns * ChannelCount(format);
}

bool StartsWith(Bytes bytes, std::string_view magic) {
    return bytes.size() >= magic.size() && std::memcmp(bytes.data(), magic.data(), magic.size()) == 0;
}

bool IsNetpbmStart(Bytes bytes) {
    if (bytes.size() < 3 || bytes[0] != 'P' || bytes[1] < '1' || bytes[1] > '7') return false;
    const std::uint8_t next = bytes[2];
    return next == ' ' || (next >= '\t' && next <= '\r') || next == '#';
}

/// The size of a picture in words people use: "100 million" rather than nine digits.
std::string Counted(std::uint64_t n) {
    if (n >= 1'000'000 && n % 1'000'000 == 0) return std::to_string(n / 1'000'000) + " million";
    return std::to_string(n);
}

template <std::size_t Channels>
void CopyTurned(const Picture& from, Picture& to, int orientation) {
    const bool swapped = orientation >= 5;
    const bool mirrorX = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool mirrorY = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    for (int y = 0; y < to.height; ++y) {
        std::uint8_t* out = to.Row(y);
        for (int x = 0; x < to.width; ++x, out += Channels) {
            const int u = swapped ? y : x;
            const int v = swapped ? x : y;
            const int sourceX = mirrorX ? from.width - 1 - u : u;
            const int sourceY = mirrorY ? from.height - 1 - v : v;
            std::memcpy(out, from.Row(sourceY) + static_cast<std::size_t>(sourceX) * Channels, Channels);
        }
    }
}

}  // namespace

Picture::Picture(int pictureWidth, int pictureHeight, PixelFormat pixelFormat)
    : width(pictureWidth), height(pictureHeight), format(pixelFormat), stride(StrideOf(width, format)) {
    pixels.resize(stride * static_cast<std::size_t>(height));
}

Rgba Picture::At(int x, int y) const {
    const std::uint8_t* row = Row(y);
    const auto column = static_cast<std::size_t>(x);
    if (format == PixelFormat::Bit1) {
        const std::uint8_t value = (row[column / 8] >> (7 - column % 8)) & 1 ? 255 : 0;
        return {value, value, value, 255};
    }
    const std::uint8_t* p = row + column * ChannelCount(format);
    switch (format) {
        case PixelFormat::GreyAlpha8:
            return {p[0], p[0], p[0], p[1]};
        case PixelFormat::Rgb8:
            return {p[0], p[1], p[2], 255};
        case PixelFormat::Rgba8:
            return {p[0], p[1], p[2], p[3]};
        default:
            return {p[0], p[0], p[0], 255};
    }
}

PictureKind PictureKindOf(Bytes start) {
    if (StartsWith(start, "\x89PNG\r\n\x1a\n")) return PictureKind::Png;
    if (StartsWith(start, "\xff\xd8\xff")) return PictureKind::Jpeg;
    if (StartsWith(start, "BM")) return PictureKind::Bmp;
    if (IsNetpbmStart(start)) return PictureKind::Netpbm;
    return PictureKind::Unknown;
}

void CheckPictureSize(std::uint64_t width, std::uint64_t height, const PictureLimits& limits,
                      const std::string& subject) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    if (width == 0 || height == 0) throw PictureError(subject + " has no pixels (" + size + ")");
    constexpr std::uint64_t longest = std::numeric_limits<std::int32_t>::max();
    if (width > longest || height > longest || width > limits.maxPixels / height) {
        throw PictureError(subject + " has " + size + " pixels, more than the limit of " +
                           Counted(limits.maxPixels) + " (--max-pixels)");
    }
}

void ClearRowPadding(Picture& picture, int y) {
    const auto width = static_cast<std::size_t>(picture.width);
    std::uint8_t* row = picture.Row(y);
    std::size_t byte = width / 8;
    if (width % 8 != 0) {
        row[byte] = static_cast<std::uint8_t>(row[byte] & (0xff00 >> (width % 8)));
        ++byte;
    }
    std::fill(row + byte, row + picture.stride, std::uint8_t{0});
}

bool Palette::IsGrey() const {
    return std::all_of(colours.begin(), colours.end(),
                       [](const Rgba& c) { return c.red == c.green && c.green == c.blue; });
}

bool Palette::IsOpaque() const {
    return std::all_of(colours.begin(), colours.end(), [](const Rgba& c) { return c.alpha == 255; });
}

bool Palette::IsBlackAndWhite() const {
    const Rgba black{0, 0, 0, 255};
    const Rgba white{255, 255, 255, 255};
    return colours.size() == 2 &&
           ((colours[0] == black && colours[1] == white) || (colours[0] == white && colours[1] == black));
}

Picture Coloured(Picture indices, const Palette& palette) {
    const auto largest = std::max_element(indices.pixels.begin(), indices.pixels.end());
    if (largest != indices.pixels.end() && *largest >= palette.colours.size()) {
        throw PictureError("damaged picture: a pixel has a colour that is not in the palette");
    }
    if (palette.IsOpaque() && palette.IsGrey()) {
        for (std::uint8_t& value : indices.pixels) value = palette.colours[value].red;
        return indices;
    }
    const bool hasAlpha = !palette.IsOpaque();
    Picture picture(indices.width, indices.height, hasAlpha ? PixelFormat::Rgba8 : PixelFormat::Rgb8);
    std::uint8_t* out = picture.pixels.data();
    for (const std::uint8_t index : indices.pixels) {
        const Rgba& colour = palette.colours[index];
        *out++ = colour.red;
        *out++ = colour.green;
        *out++ = colour.blue;
        if (hasAlpha) *out++ = colour.alpha;
    }
    return picture;
}

Picture Upright(Picture picture, int orientation) {
    if (orientation < 2 || orientation > 8) return picture;
    const bool swapped = orientation >= 5;
    Picture turned(swapped ? picture.height : picture.width, swapped ? picture.width : picture.height,
                   picture.format);
    if (picture.format == PixelFormat::Grey8) {
        CopyTurned<1>(picture, turned, orientation);
    } else if (picture.format == PixelFormat::Rgb8) {
        CopyTurned<3>(picture, turned, orientation);
    } else {
        return picture;  // only JPEG files carry an orientation, and they are grey or RGB
    }
    return turned;
}

Picture DecodePicture(Bytes bytes, const PictureLimits& limits) {
    switch (PictureKindOf(bytes)) {
        case PictureKind::Png:
            return DecodePng(bytes, limits);
        case PictureKind::Jpeg:
            return DecodeJpeg(bytes, limits);
        case PictureKind::Bmp:
            return DecodeBmp(bytes, limits);
        case PictureKind::Netpbm:
            return DecodeNetpbm(bytes, limits);
        case PictureKind::Unknown:
            break;
    }
    if (bytes.empty()) throw PictureError("the file is empty");
    throw PictureError("not a picture this program reads (PNG, JPEG, BMP or PNM)");
}

Picture ReadPicture(const std::string& path, const PictureLimits& limits) {
    // No picture within the limit needs more: 8 bytes a pixel raw, and as much again for what
    // surrounds the pixels. An endless stream stops there, one that is no picture much earlier.
    InputLimits inputLimits;
    inputLimits.maxBytes =
        std::min(limits.maxPixels, std::uint64_t{1} << 40) * 16 + (std::uint64_t{64} << 20);
    inputLimits.sniffedBytes = SNIFFED_BYTES;
    inputLimits.isWorthReading = [](Bytes start) { return PictureKindOf(start) != PictureKind::Unknown; };
    const std::vector<std::uint8_t> bytes = ReadInput(path, inputLimits);
    try {
        return DecodePicture(bytes, limits);
    } catch (const PictureError& error) {
        throw ProgramError(ExitStatus::File, InputName(path), error.what());
    } catch (const std::bad_alloc&) {
        throw ProgramError(ExitStatus::File, InputName(path), "not enough memory for the picture");
    }
}

}  // namespace tarvex::app
