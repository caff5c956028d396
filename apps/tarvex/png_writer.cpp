// As in the reader, libpng's longjmp passes only over frames that hold nothing to destroy: memory is
// owned by the exported functions, and the growing output by the PngOutput they hand in. The append
// itself may run out of memory; it catches that and turns it into an error of libpng's.
#include "tarvex/png_writer.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <new>
#include <stdexcept>

namespace tarvex::app {

namespace {

struct PngOutput {
    std::string bytes;
    png_structp png = nullptr;
    png_infop info = nullptr;
    char message[160] = "";

    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int bitDepth = 8;
    int colourType = PNG_COLOR_TYPE_GRAY;
    png_color palette[256] = {};
    png_byte alpha[256] = {};
    int paletteSize = 0;
    int alphaSize = 0;
    bool packs = false;
    png_bytepp rows = nullptr;

    PngOutput() = default;
    PngOutput(const PngOutput&) = delete;
    PngOutput& operator=(const PngOutput&) = delete;
    ~PngOutput() { png_destroy_write_struct(&png, &info); }
};

void OnError(png_structp png, png_const_charp message) {
    auto* output = static_cast<PngOutput*>(png_get_error_ptr(png));
    std::snprintf(output->message, sizeof output->message, "%s", message);
    png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

bool Append(std::string& bytes, png_bytep data, std::size_t size) noexcept {
    try {
        bytes.append(reinterpret_cast<const char*>(data), size);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void OnWrite(png_structp png, png_bytep data, std::size_t size) {
    auto* output = static_cast<PngOutput*>(png_get_io_ptr(png));
    if (!Append(output->bytes, data, size)) png_error(png, "not enough memory");
}

void OnFlush(png_structp) {}

bool WriteAll(PngOutput& o) {
    if (setjmp(png_jmpbuf(o.png))) return false;
    png_set_write_fn(o.png, &o, OnWrite, OnFlush);
    png_set_user_limits(o.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_IHDR(o.png, o.info, o.width, o.height, o.bitDepth, o.colourType, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (o.paletteSize > 0) png_set_PLTE(o.png, o.info, o.palette, o.paletteSize);
    if (o.alphaSize > 0) png_set_tRNS(o.png, o.info, o.alpha, o.alphaSize, nullptr);
    png_write_info(o.png, o.info);
    if (o.packs) png_set_packing(o.png);
    png_write_image(o.png, o.rows);
    png_write_end(o.png, o.info);
    return true;
}

/// `rowAt` gives the bytes of each row, which libpng does not change.
template <class RowAt>
std::string Encode(PngOutput& output, RowAt rowAt) {
    output.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &output, OnError, OnWarning);
    if (output.png == nullptr) throw std::bad_alloc();
    output.info = png_create_info_struct(output.png);
    if (output.info == nullptr) throw std::bad_alloc();
    std::vector<png_bytep> rows(output.height);
    for (std::size_t y = 0; y < rows.size(); ++y) rows[y] = const_cast<png_bytep>(rowAt(y));
    output.rows = rows.data();
    if (!WriteAll(output)) throw std::runtime_error(std::string("PNG: ") + output.message);
    return std::move(output.bytes);
}

int ColourType(PixelFormat format) {
    switch (format) {
        case PixelFormat::GreyAlpha8:
            return PNG_COLOR_TYPE_GRAY_ALPHA;
        case PixelFormat::Rgb8:
            return PNG_COLOR_TYPE_RGB;
        case PixelFormat::Rgba8:
            return PNG_COLOR_TYPE_RGB_ALPHA;
        default:
            return PNG_COLOR_TYPE_GRAY;
    }
}

void SetPalette(PngOutput& output, std::span<const Rgba> palette) {
    output.paletteSize = static_cast<int>(palette.size());
    for (std::size_t i = 0; i < palette.size(); ++i) {
        output.palette[i] = {palette[i].red, palette[i].green, palette[i].blue};
        output.alpha[i] = palette[i].alpha;
        if (palette[i].alpha != 255) output.alphaSize = static_cast<int>(i) + 1;
    }
}

}  // namespace

std::string EncodePng(const Picture& picture) {
    PngOutput output;
    output.width = static_cast<png_uint_32>(picture.width);
    output.height = static_cast<png_uint_32>(picture.height);
    output.bitDepth = picture.format == PixelFormat::Bit1 ? 1 : 8;
    output.colourType = ColourType(picture.format);
    return Encode(output, [&picture](std::size_t y) { return picture.Row(static_cast<int>(y)); });
}

std::string EncodeIndexedPng(int width, int height, std::span<const std::uint8_t> indices,
                             std::span<const Rgba> palette) {
    if (palette.empty() || palette.size() > 256)
        throw std::invalid_argument("a PNG palette has 1 to 256 colours");
    if (width < 1 || height < 1 ||
        indices.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
        throw std::invalid_argument("not one palette index for each pixel");
    }
    if (std::any_of(indices.begin(), indices.end(), [&](std::uint8_t i) { return i >= palette.size(); })) {
        throw std::invalid_argument("an index beyond the palette");
    }
    PngOutput output;
    output.width = static_cast<png_uint_32>(width);
    output.height = static_cast<png_uint_32>(height);
    output.bitDepth = palette.size() <= 2 ? 1 : palette.size() <= 4 ? 2 : palette.size() <= 16 ? 4 : 8;
    output.packs = output.bitDepth < 8;
    output.colourType = PNG_COLOR_TYPE_PALETTE;
    SetPalette(output, palette);
    return Encode(output,
                  [&](std::size_t y) { return indices.data() + y * static_cast<std::size_t>(width); });
}

}  // namespace tarvex::app
