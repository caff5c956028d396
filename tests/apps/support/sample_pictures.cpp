#include "apps/support/sample_pictures.h"

#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <random>

#include <jpeglib.h>

namespace tarvex::app::test {

namespace {

void PutLittle(FileBytes& out, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

/// One row of samples of any depth, packed with the most significant bit first.
FileBytes PackRow(const Samples& samples, int y) {
    FileBytes row;
    unsigned pending = 0;
    int bits = 0;
    for (int x = 0; x < samples.width; ++x) {
        for (int c = 0; c < samples.channels; ++c) {
            const std::uint32_t value = samples.At(x, y, c);
            for (int bit = samples.depth - 1; bit >= 0; --bit) {
                pending = pending << 1 | ((value >> bit) & 1);
                if (++bits % 8 == 0) row.push_back(static_cast<std::uint8_t>(pending));
            }
        }
    }
    if (bits % 8 != 0) row.push_back(static_cast<std::uint8_t>(pending << (8 - bits % 8)));
    return row;
}

void OnPngWrite(png_structp png, png_bytep data, std::size_t size) {
    auto* out = static_cast<FileBytes*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + size);
}

void SetPngColours(png_structp png, png_infop info, const PngSpec& spec) {
    if (!spec.palette.empty()) {
        png_color colours[256] = {};
        png_byte alphas[256] = {};
        bool hasAlpha = false;
        const int count = static_cast<int>(spec.palette.size());
        for (std::size_t i = 0; i < spec.palette.size(); ++i) {
            const Rgba& c = spec.palette[i];
            colours[i] = {c.red, c.green, c.blue};
            alphas[i] = c.alpha;
            hasAlpha = hasAlpha || c.alpha != 255;
        }
        png_set_PLTE(png, info, colours, count);
        if (hasAlpha) png_set_tRNS(png, info, alphas, count, nullptr);
    }
    if (!spec.colourKey.empty()) {
        png_color_16 key = {};
        key.gray = key.red = static_cast<png_uint_16>(spec.colourKey[0]);
        key.green = static_cast<png_uint_16>(spec.colourKey[spec.colourKey.size() == 3 ? 1 : 0]);
        key.blue = static_cast<png_uint_16>(spec.colourKey.back());
        png_set_tRNS(png, info, nullptr, 0, &key);
    }
}

/// A PNG up to its pixels, and what `writeOn` writes after that.
template <class WriteOn>
FileBytes WritePng(int width, int height, int depth, const PngSpec& spec, WriteOn writeOn) {
    FileBytes out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &out, OnPngWrite, nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), depth,
                 static_cast<int>(spec.colour), static_cast<int>(spec.interlace),
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    SetPngColours(png, info, spec);
    png_set_check_for_invalid_index(png, 0);
    png_write_info(png, info);
    writeOn(png);
    png_destroy_write_struct(&png, &info);
    return out;
}

/// An Exif block of one directory with one entry, the orientation.
FileBytes ExifBlock(int orientation, bool bigEndian) {
    FileBytes out = {'E', 'x', 'i', 'f', 0, 0};
    const auto put = [&](unsigned value, int size) {
        for (int i = 0; i < size; ++i) {
            out.push_back(static_cast<std::uint8_t>(value >> (8 * (bigEndian ? size - 1 - i : i))));
        }
    };
    out.insert(out.end(), 2, bigEndian ? 'M' : 'I');
    put(42, 2);
    put(8, 4);       // where the directory is
    put(1, 2);       // its entries
    put(0x0112, 2);  // orientation
    put(3, 2);       // of 16 bits
    put(1, 4);       // one of them
    put(static_cast<unsigned>(orientation), 2);
    put(0, 2);
    put(0, 4);  // no directory follows
    return out;
}

}  // namespace

FileBytes BytesOf(const std::string& text) { return FileBytes(text.begin(), text.end()); }

std::uint32_t Samples::At(int x, int y, int channel) const {
    return values[static_cast<std::size_t>((y * width + x) * channels + channel)];
}

Samples RandomSamples(int width, int height, int channels, int depth, unsigned seed) {
    Samples samples{width, height, channels, depth, {}};
    std::mt19937 random(seed);
    const auto count = static_cast<std::size_t>(width * height * channels);
    const std::uint32_t mask = (1u << depth) - 1;
    for (std::size_t i = 0; i < count; ++i)
        samples.values.push_back(static_cast<std::uint32_t>(random()) & mask);
    return samples;
}

FileBytes MakePng(const Samples& samples, const PngSpec& spec) {
    return WritePng(samples.width, samples.height, samples.depth, spec, [&samples](png_structp png) {
        std::vector<FileBytes> rows;
        for (int y = 0; y < samples.height; ++y) rows.push_back(PackRow(samples, y));
        std::vector<png_bytep> pointers;
        for (FileBytes& row : rows) pointers.push_back(row.data());
        png_write_image(png, pointers.data());
        png_write_end(png, nullptr);
    });
}

FileBytes MakePngHeader(int width, int height) {
    FileBytes out = WritePng(width, height, 8, {PngColour::Rgb, Interlace::None, {}, {}}, [](png_structp) {});
    const FileBytes emptyData = {0, 0, 0, 0, 'I', 'D', 'A', 'T', 0x35, 0xaf, 0x06, 0x1e};
    out.insert(out.end(), emptyData.begin(), emptyData.end());
    return out;
}

FileBytes MakeJpeg(const Samples& samples, const JpegSpec& spec) {
    jpeg_compress_struct jpeg = {};
    jpeg_error_mgr errors = {};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &buffer, &size);
    jpeg.image_width = static_cast<JDIMENSION>(samples.width);
    jpeg.image_height = static_cast<JDIMENSION>(samples.height);
    jpeg.input_components = samples.channels;
    const bool isInk = spec.colour == JpegColour::Cmyk || spec.colour == JpegColour::AdobeCmyk;
    jpeg.in_color_space = isInk ? JCS_CMYK : spec.colour == JpegColour::Grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 100, TRUE);
    for (int c = 0; c < jpeg.num_components; ++c)
        jpeg.comp_info[c].h_samp_factor = jpeg.comp_info[c].v_samp_factor = 1;
    if (spec.colour == JpegColour::Cmyk) jpeg.write_Adobe_marker = FALSE;
    if (spec.isProgressive) jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    if (spec.orientation != 0) {
        const FileBytes exif = ExifBlock(spec.orientation, spec.exifIsBigEndian);
        jpeg_write_marker(&jpeg, JPEG_APP0 + 1, exif.data(), static_cast<unsigned>(exif.size()));
    }
    for (int y = 0; y < samples.height; ++y) {
        FileBytes row = PackRow(samples, y);
        JSAMPROW pointer = row.data();
        jpeg_write_scanlines(&jpeg, &pointer, 1);
    }
    jpeg_finish_compress(&jpeg);
    FileBytes out(buffer, buffer + size);
    jpeg_destroy_compress(&jpeg);
    std::free(buffer);
    return out;
}

FileBytes MakeBmpAround(int width, int height, const FileBytes& data, const BmpSpec& spec) {
    FileBytes info;
    const auto put = [&info](std::initializer_list<std::pair<std::int64_t, int>> fields) {
        for (const auto& [value, size] : fields) PutLittle(info, static_cast<std::uint32_t>(value), size);
    };
    PutLittle(info, spec.headerSize, 4);
    if (spec.headerSize == 12) {
        put({{width, 2}, {height, 2}, {1, 2}, {spec.bits, 2}});
    } else {
        put({{width, 4}, {spec.isTopDown ? -height : height, 4}, {1, 2}, {spec.bits, 2}});
        put({{spec.compression, 4}, {std::ssize(data), 4}});
        put({{2835, 4}, {2835, 4}, {std::ssize(spec.palette), 4}, {0, 4}});
        for (const std::uint32_t mask : spec.masks) PutLittle(info, mask, 4);
        if (info.size() < spec.headerSize) info.resize(spec.headerSize);
    }
    for (const Rgba& c : spec.palette) {
        info.insert(info.end(), {c.blue, c.green, c.red});
        if (spec.headerSize != 12) info.push_back(0);
    }
    FileBytes out = {'B', 'M'};
    const auto pixelsAt = static_cast<std::uint32_t>(14 + info.size());
    PutLittle(out, pixelsAt + static_cast<std::uint32_t>(data.size()), 4);
    PutLittle(out, 0, 4);
    PutLittle(out, pixelsAt, 4);
    out.insert(out.end(), info.begin(), info.end());
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

FileBytes MakeBmp(int width, int height, const std::vector<std::uint32_t>& pixels, const BmpSpec& spec) {
    FileBytes data;
    for (int row = 0; row < height; ++row) {
        const int y = spec.isTopDown ? row : height - 1 - row;
        FileBytes packed;
        if (spec.bits <= 8) {
            Samples line{width, 1, 1, static_cast<int>(spec.bits), {}};
            const auto start = pixels.begin() + y * width;
            line.values.assign(start, start + width);
            packed = PackRow(line, 0);
        } else {
            for (int x = 0; x < width; ++x) {
                PutLittle(packed, pixels[static_cast<std::size_t>(y * width + x)],
                          static_cast<int>(spec.bits / 8));
            }
        }
        packed.resize((packed.size() + 3) / 4 * 4);
        data.insert(data.end(), packed.begin(), packed.end());
    }
    return MakeBmpAround(width, height, data, spec);
}

std::vector<NamedFile> OneOfEachKind() {
    std::vector<NamedFile> files;
    const auto add = [&files](const char* name, FileBytes bytes) {
        files.push_back({name, std::move(bytes)});
    };
    const std::vector<Rgba> colours = {{10, 20, 30, 255}, {200, 0, 0, 255}, {0, 200, 0, 128}, {9, 9, 9, 0}};
    const std::vector<Rgba> solid = {{10, 20, 30, 255}, {200, 0, 0, 255}, {0, 200, 0, 255}, {9, 9, 9, 255}};

    add("png bilevel", MakePng(RandomSamples(13, 5, 1, 1, 1), {}));
    add("png rgb, 16 bits, interlaced",
        MakePng(RandomSamples(5, 6, 3, 16, 2), {PngColour::Rgb, Interlace::Adam7, {}, {}}));
    add("png indexed, transparent",
        MakePng(RandomSamples(9, 4, 1, 2, 3), {PngColour::Indexed, Interlace::None, colours, {}}));
    add("png indexed, greys",
        MakePng(RandomSamples(9, 4, 1, 1, 3),
                {PngColour::Indexed, Interlace::None, {{1, 1, 1, 255}, {7, 7, 7, 255}}, {}}));
    add("jpeg grey", MakeJpeg(RandomSamples(9, 10, 1, 8, 4), {JpegColour::Grey, false, 0, false}));
    add("jpeg rgb, progressive, turned",
        MakeJpeg(RandomSamples(9, 10, 3, 8, 4), {JpegColour::Rgb, true, 6, true}));
    add("jpeg cmyk", MakeJpeg(RandomSamples(9, 10, 4, 8, 4), {JpegColour::AdobeCmyk, false, 0, false}));

    add("bmp bilevel", MakeBmp(13, 4, RandomSamples(13, 4, 1, 1, 5).values,
                               {1, 40, 0, false, {{0, 0, 0, 255}, {255, 255, 255, 255}}, {}}));
    add("bmp 4 bits, core header",
        MakeBmp(7, 3, RandomSamples(7, 3, 1, 2, 5).values, {4, 12, 0, false, solid, {}}));
    add("bmp 16 bits, fields",
        MakeBmp(5, 3, RandomSamples(5, 3, 1, 16, 6).values, {16, 40, 3, true, {}, {0xf800, 0x07e0, 0x001f}}));
    add("bmp 24 bits", MakeBmp(5, 3, RandomSamples(5, 3, 1, 24, 6).values, {24, 40, 0, false, {}, {}}));
    add("bmp rle8", MakeBmpAround(4, 3, {4, 1, 0, 0, 0, 3, 1, 2, 3, 0, 1, 0, 0, 0, 0, 2, 1, 0, 3, 2, 0, 1},
                                  {8, 40, 1, false, solid, {}}));
    add("bmp rle4",
        MakeBmpAround(5, 2, {5, 0x12, 0, 0, 0, 5, 0x12, 0x30, 0x10, 0, 0, 1}, {4, 40, 2, false, solid, {}}));

    add("pbm plain", BytesOf("P1\n# words\n3 2\n101\n0 1 0\n"));
    add("pgm plain", BytesOf("P2 2 2 300\n0 299\n300 7\n"));
    add("ppm plain", BytesOf("P3\n1 2\n255\n1 2 3\n255 0 9\n"));
    add("pbm raw", BytesOf(std::string("P4 9 2\n\xa5\x80\x0f\x00", 11)));
    add("pgm raw, 16 bits", BytesOf(std::string("P5 2 1 65535\n\x00\x01\xff\xff", 17)));
    add("ppm raw", BytesOf("P6 1 2 255\nabcdef"));
    add("pam", BytesOf("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nabcdefgh"));
    return files;
}

}  // namespace tarvex::app::test
