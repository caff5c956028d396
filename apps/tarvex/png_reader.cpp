// PNG pictures, through libpng.
//
// libpng reports errors by longjmp, which skips destructors. So everything that owns memory lives in
// DecodePng, and libpng is called only in steps: plain functions over a PngReader, whose frames hold
// nothing that needs destroying, each run inside the one setjmp of Guarded.
#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include "tarvex/picture_formats.h"

namespace tarvex::app {

namespace {

struct PngReader {
    Bytes bytes;
    std::size_t position = 0;
    char message[160] = "";
    png_structp png = nullptr;
    png_infop info = nullptr;

    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int bitDepth = 0;
    int colourType = 0;
    bool hasTransparency = false;
    png_colorp palette = nullptr;
    int paletteSize = 0;
    png_bytep paletteAlpha = nullptr;
    int paletteAlphaSize = 0;

    png_bytep* rows = nullptr;

    PngReader(Bytes source) : bytes(source) {}
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
};

void OnError(png_structp png, png_const_charp message) {
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    std::snprintf(reader->message, sizeof reader->message, "%s", message);
    png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

void OnRead(png_structp png, png_bytep out, std::size_t size) {
    auto* reader = static_cast<PngReader*>(png_get_io_ptr(png));
    if (size > reader->bytes.size() - reader->position) png_error(png, "the data ends early");
    std::memcpy(out, reader->bytes.data() + reader->position, size);
    reader->position += size;
}

bool Guarded(PngReader& reader, void (*step)(PngReader&)) {
    if (setjmp(png_jmpbuf(reader.png))) return false;
    step(reader);
    return true;
}

void ReadHeader(PngReader& r) {
    png_set_read_fn(r.png, &r, OnRead);
    png_set_user_limits(r.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // ours is a count of pixels
    png_read_info(r.png, r.info);
    png_get_IHDR(r.png, r.info, &r.width, &r.height, &r.bitDepth, &r.colourType, nullptr, nullptr, nullptr);
    r.hasTransparency = png_get_valid(r.png, r.info, PNG_INFO_tRNS) != 0;
    if (r.colourType != PNG_COLOR_TYPE_PALETTE) return;
    png_get_PLTE(r.png, r.info, &r.palette, &r.paletteSize);
    png_get_tRNS(r.png, r.info, &r.paletteAlpha, &r.paletteAlphaSize, nullptr);
}

void PrepareRows(PngReader& r) {
    if (r.bitDepth == 16) png_set_scale_16(r.png);
    const bool isIndexed = r.colourType == PNG_COLOR_TYPE_PALETTE;
    const bool isBitmap = r.colourType == PNG_COLOR_TYPE_GRAY && r.bitDepth == 1 && !r.hasTransparency;
    if (isIndexed) png_set_packing(r.png);  // one index a byte, looked up here
    if (!isIndexed && !isBitmap) png_set_expand(r.png);
    png_set_interlace_handling(r.png);
    png_read_update_info(r.png, r.info);
}

void ReadRows(PngReader& r) {
    png_read_image(r.png, r.rows);
    png_read_end(r.png, nullptr);
}

/// The format of the rows as they arrive.
PixelFormat FormatFor(const PngReader& r) {
    switch (r.colourType) {
        case PNG_COLOR_TYPE_GRAY:
            if (r.hasTransparency) return PixelFormat::GreyAlpha8;
            return r.bitDepth == 1 ? PixelFormat::Bit1 : PixelFormat::Grey8;
        case PNG_COLOR_TYPE_GRAY_ALPHA:
            return PixelFormat::GreyAlpha8;
        case PNG_COLOR_TYPE_RGB_ALPHA:
            return PixelFormat::Rgba8;
        case PNG_COLOR_TYPE_PALETTE:
            return PixelFormat::Grey8;
        default:
            return r.hasTransparency ? PixelFormat::Rgba8 : PixelFormat::Rgb8;
    }
}

Palette PaletteOf(const PngReader& r) {
    Palette palette;
    for (int i = 0; i < r.paletteSize; ++i) {
        const std::uint8_t alpha = i < r.paletteAlphaSize ? r.paletteAlpha[i] : std::uint8_t{255};
        palette.colours.push_back({r.palette[i].red, r.palette[i].green, r.palette[i].blue, alpha});
    }
    return palette;
}

void Step(PngReader& reader, void (*step)(PngReader&)) {
    if (!Guarded(reader, step)) throw PictureError(std::string("damaged PNG: ") + reader.message);
}

}  // namespace

Picture DecodePng(Bytes bytes, const PictureLimits& limits) {
    PngReader reader(bytes);
    reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reader, OnError, OnWarning);
    if (reader.png == nullptr) throw std::bad_alloc();
    reader.info = png_create_info_struct(reader.png);
    if (reader.info == nullptr) throw std::bad_alloc();

    Step(reader, ReadHeader);
    CheckPictureSize(reader.width, reader.height, limits);
    Step(reader, PrepareRows);

    Picture picture(static_cast<int>(reader.width), static_cast<int>(reader.height), FormatFor(reader));
    if (png_get_rowbytes(reader.png, reader.info) > picture.stride) {
        throw PictureError("damaged PNG: its rows do not fit its header");
    }
    std::vector<png_bytep> rows(reader.height);
    for (int y = 0; y < picture.height; ++y) rows[static_cast<std::size_t>(y)] = picture.Row(y);
    reader.rows = rows.data();
    Step(reader, ReadRows);

    if (reader.colourType == PNG_COLOR_TYPE_PALETTE) return Coloured(std::move(picture), PaletteOf(reader));
    if (picture.format == PixelFormat::Bit1) {
        for (int y = 0; y < picture.height; ++y) ClearRowPadding(picture, y);
    }
    return picture;
}

}  // namespace tarvex::app
