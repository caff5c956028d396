// BMP pictures: 1 to 32 bits a pixel, indexed, run-length encoded or with bit fields, stored upwards
// or downwards, with the headers of OS/2 1.x, Windows 3 and its later versions.
//
// The file is a 14-byte file header (with the offset of the pixels), an information header whose
// first field is its own length, colour masks where a header has no room for them, the palette, and
// rows padded to 32 bits. Everything is little-endian. Where files in the wild bend the format, this
// reader bends with them as far as the picture's pixels stay certain: a run that goes past the end of
// its row stops there, and an alpha channel that is 0 everywhere was never meant.
#include <algorithm>
#include <bit>
#include <cstring>

#include "tarvex/picture_formats.h"

namespace tarvex::app {

namespace {

constexpr std::size_t FILE_HEADER = 14;
constexpr std::uint32_t CORE_HEADER = 12;
constexpr std::uint32_t INFO_HEADER = 40;

enum Compression : std::uint32_t { Plain = 0, Rle8 = 1, Rle4 = 2, BitFields = 3, AlphaBitFields = 6 };

[[noreturn]] void Damaged(const char* what) { throw PictureError(std::string("damaged BMP: ") + what); }

/// Little-endian integers at any offset; reading past the end is damage.
class LittleEndian {
  public:
    explicit LittleEndian(Bytes bytes) : m_bytes(bytes) {}

    std::uint32_t Get(std::size_t at, unsigned size) const {
        if (at > m_bytes.size() || m_bytes.size() - at < size) Damaged("the data ends early");
        std::uint32_t value = 0;
        for (unsigned i = size; i-- > 0;) value = value << 8 | m_bytes[at + i];
        return value;
    }
    std::uint32_t Word(std::size_t at) const { return Get(at, 2); }
    std::uint32_t Long(std::size_t at) const { return Get(at, 4); }

  private:
    Bytes m_bytes;
};

struct Header {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    bool isTopDown = false;
    unsigned bits = 0;
    std::uint32_t compression = Plain;
    std::uint32_t masks[4] = {};  ///< red, green, blue, alpha; a mask of 0 is a channel not there
    std::size_t paletteAt = 0;
    std::size_t paletteSize = 0;
    std::size_t paletteEntry = 4;
    std::size_t pixelsAt = 0;

    bool IsIndexed() const { return bits <= 8; }
};

void SetDefaultMasks(Header& h) {
    const std::uint32_t step = h.bits == 16 ? 5 : 8;
    const std::uint32_t low = (1u << step) - 1;
    for (unsigned i = 0; i < 3; ++i) h.masks[i] = low << (step * (2 - i));
}

/// Masks of overlapping or scattered bits would make the pixels a guess.
void CheckMasks(const Header& h) {
    std::uint32_t seen = 0;
    for (const std::uint32_t mask : h.masks) {
        const std::uint32_t shifted = mask == 0 ? 0 : mask >> std::countr_zero(mask);
        if ((shifted & (shifted + 1)) != 0 || (seen & mask) != 0) Damaged("its colour masks make no sense");
        seen |= mask;
    }
    if (h.bits == 16 && seen > 0xffff) Damaged("its colour masks make no sense");
}

void ReadCoreHeader(const LittleEndian& in, Header& h) {
    h.width = in.Word(18);
    h.height = in.Word(20);
    h.bits = in.Word(24);
    h.paletteAt = FILE_HEADER + CORE_HEADER;
    h.paletteEntry = 3;
}

void ReadInfoHeader(const LittleEndian& in, std::uint32_t headerSize, Header& h) {
    const auto width = static_cast<std::int32_t>(in.Long(18));
    const auto height = static_cast<std::int32_t>(in.Long(22));
    if (width < 0) Damaged("its width is negative");
    h.width = static_cast<std::uint64_t>(width);
    h.height = static_cast<std::uint64_t>(height < 0 ? -std::int64_t{height} : std::int64_t{height});
    h.isTopDown = height < 0;
    h.bits = in.Word(28);
    h.compression = in.Long(30);
    h.paletteSize = in.Long(46);
    h.paletteAt = FILE_HEADER + headerSize;
    const bool hasFields = h.compression == BitFields || h.compression == AlphaBitFields;
    if (!hasFields || h.IsIndexed()) return;
    // The masks follow the 40-byte header, and are its next fields in the longer ones: same place.
    const bool hasAlpha = h.compression == AlphaBitFields || headerSize >= 56;
    for (unsigned i = 0; i < (hasAlpha ? 4u : 3u); ++i)
        h.masks[i] = in.Long(FILE_HEADER + INFO_HEADER + std::size_t{4} * i);
    if (headerSize == INFO_HEADER) h.paletteAt += hasAlpha ? 16 : 12;
}

void CheckKind(const Header& h) {
    const bool knownBits = h.bits == 1 || h.bits == 2 || h.bits == 4 || h.bits == 8 || h.bits == 16 ||
                           h.bits == 24 || h.bits == 32;
    if (!knownBits) Damaged("its number of bits a pixel is unknown");
    const bool hasFields = h.compression == BitFields || h.compression == AlphaBitFields;
    const bool fits = h.compression == Plain || (h.compression == Rle8 && h.bits == 8) ||
                      (h.compression == Rle4 && h.bits == 4) || (hasFields && (h.bits == 16 || h.bits == 32));
    if (!fits) {
        throw PictureError("a BMP with a compression this program does not read (" +
                           std::to_string(h.compression) + ", " + std::to_string(h.bits) + " bits)");
    }
}

Header ReadHeader(Bytes bytes) {
    const LittleEndian in(bytes);
    Header h;
    h.pixelsAt = in.Long(10);
    const std::uint32_t headerSize = in.Long(FILE_HEADER);
    if (headerSize == CORE_HEADER) {
        ReadCoreHeader(in, h);
    } else if (headerSize >= INFO_HEADER && headerSize <= 1024) {
        ReadInfoHeader(in, headerSize, h);
    } else {
        Damaged("its header has an unknown length");
    }
    CheckKind(h);
    if (h.pixelsAt < h.paletteAt) Damaged("its pixels overlap its header");
    if (h.IsIndexed()) {
        const std::size_t most = std::size_t{1} << h.bits;
        if (h.paletteSize == 0 || h.paletteSize > most) h.paletteSize = most;
    } else {
        h.paletteSize = 0;
        if (h.compression == Plain) SetDefaultMasks(h);
        CheckMasks(h);
    }
    return h;
}

Palette ReadPalette(Bytes bytes, const Header& h) {
    // Some writers give a short palette without saying so; the pixels' offset tells where it ends.
    std::size_t count = h.paletteSize;
    if (h.pixelsAt > h.paletteAt) count = std::min(count, (h.pixelsAt - h.paletteAt) / h.paletteEntry);
    const LittleEndian in(bytes);
    Palette palette;
    palette.colours.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t bgr = in.Get(h.paletteAt + i * h.paletteEntry, 3);
        palette.colours[i] = {static_cast<std::uint8_t>(bgr >> 16), static_cast<std::uint8_t>(bgr >> 8),
                              static_cast<std::uint8_t>(bgr), 255};
    }
    return palette;
}

std::size_t RowBytes(const Header& h) { return static_cast<std::size_t>((h.width * h.bits + 31) / 32 * 4); }

/// The row of the file that shows the picture's row `y`.
std::size_t FileRow(const Header& h, int y) {
    const auto row = static_cast<std::size_t>(y);
    return h.isTopDown ? row : static_cast<std::size_t>(h.height) - 1 - row;
}

/// The file's rows, all of them there. The last row's padding may be missing.
Bytes PlainRows(Bytes bytes, const Header& h) {
    const std::size_t lastRow = static_cast<std::size_t>((h.width * h.bits + 7) / 8);
    const std::uint64_t needed = RowBytes(h) * (h.height - 1) + lastRow;
    if (h.pixelsAt > bytes.size() || bytes.size() - h.pixelsAt < needed) Damaged("the data ends early");
    return bytes.subspan(h.pixelsAt);
}

// ---------------------------------------------------------------------------------------------
// Indexed pixels

/// One bit a pixel in black and white: whole bytes, turned over when index 0 is white.
Picture DecodeBitmap(Bytes bytes, const Header& h, const Palette& palette) {
    const Bytes rows = PlainRows(bytes, h);
    const std::uint8_t flip = palette.colours[0].red;
    Picture picture(static_cast<int>(h.width), static_cast<int>(h.height), PixelFormat::Bit1);
    const std::size_t used = (static_cast<std::size_t>(h.width) + 7) / 8;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* in = rows.data() + FileRow(h, y) * RowBytes(h);
        std::uint8_t* out = picture.Row(y);
        for (std::size_t i = 0; i < used; ++i) out[i] = in[i] ^ flip;
        ClearRowPadding(picture, y);
    }
    return picture;
}

Picture DecodeIndices(Bytes bytes, const Header& h) {
    const Bytes rows = PlainRows(bytes, h);
    Picture indices(static_cast<int>(h.width), static_cast<int>(h.height), PixelFormat::Grey8);
    const unsigned perByte = 8 / h.bits;
    const auto mask = static_cast<std::uint8_t>((1u << h.bits) - 1);
    for (int y = 0; y < indices.height; ++y) {
        const std::uint8_t* in = rows.data() + FileRow(h, y) * RowBytes(h);
        std::uint8_t* out = indices.Row(y);
        for (std::size_t x = 0; x < indices.stride; ++x) {
            const unsigned shift = (perByte - 1 - static_cast<unsigned>(x % perByte)) * h.bits;
            out[x] = static_cast<std::uint8_t>(in[x / perByte] >> shift) & mask;
        }
    }
    return indices;
}

/// Run-length encoded rows, from the bottom up. Pairs of bytes: (n, v) is a run of n pixels; (0, n)
/// with n > 2 is n pixels as they are, padded to 16 bits; (0, 0) ends the row, (0, 1) the picture,
/// (0, 2) moves right and up by the next two bytes. What is skipped is index 0.
class RunDecoder {
  public:
    RunDecoder(Bytes data, const Header& h)
        : m_data(data),
          m_bits(h.bits),
          m_width(static_cast<std::size_t>(h.width)),
          m_height(static_cast<std::size_t>(h.height)),
          m_isTopDown(h.isTopDown),
          m_indices(static_cast<int>(h.width), static_cast<int>(h.height), PixelFormat::Grey8) {}

    Picture Decode() {
        while (m_y < m_height && !LacksOnlyTheEnd()) {
            const std::size_t count = Next();
            const std::uint8_t value = Next();
            if (count > 0) {
                for (std::size_t i = 0; i < count; ++i) Put(Part(value, i));
            } else if (value == 0) {
                EndRow();
            } else if (value == 1) {
                break;
            } else if (value == 2) {
                Move();
            } else {
                CopyLiteral(value);
            }
        }
        return std::move(m_indices);
    }

  private:
    /// Every pixel is there and the data is over: some writers leave out the closing mark.
    bool LacksOnlyTheEnd() const {
        return m_position == m_data.size() && m_y + 1 == m_height && m_x == m_width;
    }

    std::uint8_t Next() {
        if (m_position >= m_data.size()) Damaged("the data ends early");
        return m_data[m_position++];
    }

    /// The index of pixel `i` of a run of `value`: 4-bit runs alternate between its halves.
    std::uint8_t Part(std::uint8_t value, std::size_t i) const {
        if (m_bits == 8) return value;
        return i % 2 == 0 ? value >> 4 : value & 15;
    }

    void Put(std::uint8_t index) {
        if (m_x >= m_width) return;
        const std::size_t row = m_isTopDown ? m_y : m_height - 1 - m_y;
        m_indices.pixels[row * m_width + m_x++] = index;
    }

    void CopyLiteral(std::size_t count) {
        const std::size_t size = m_bits == 8 ? count : (count + 1) / 2;
        std::uint8_t value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (m_bits == 8 || i % 2 == 0) value = Next();
            Put(Part(value, i));
        }
        if (size % 2 != 0) Next();
    }

    void Move() {
        const std::size_t right = Next();
        const std::size_t up = Next();
        if (right > m_width - m_x || up >= m_height - m_y) Damaged("a move leaves the picture");
        m_x += right;
        m_y += up;
    }

    void EndRow() {
        m_x = 0;
        ++m_y;
    }

    Bytes m_data;
    std::size_t m_position = 0;
    unsigned m_bits;
    std::size_t m_width;
    std::size_t m_height;
    bool m_isTopDown;
    Picture m_indices;
    std::size_t m_x = 0;
    std::size_t m_y = 0;
};

Picture DecodeRuns(Bytes bytes, const Header& h) {
    if (h.pixelsAt > bytes.size()) Damaged("the data ends early");
    return RunDecoder(bytes.subspan(h.pixelsAt), h).Decode();
}

// ---------------------------------------------------------------------------------------------
// Pixels with their own colour

/// The 8-bit value of one masked channel, widened or narrowed to the nearest.
class Channel {
  public:
    explicit Channel(std::uint32_t mask)
        : m_mask(mask), m_shift(mask == 0 ? 0 : std::countr_zero(mask)), m_most(mask >> m_shift) {}

    std::uint8_t Of(std::uint32_t pixel) const {
        if (m_most == 255) return static_cast<std::uint8_t>((pixel & m_mask) >> m_shift);
        if (m_most == 0) return 0;
        const std::uint64_t value = (pixel & m_mask) >> m_shift;
        return static_cast<std::uint8_t>((value * 255 + m_most / 2) / m_most);
    }

  private:
    std::uint32_t m_mask;
    int m_shift;
    std::uint64_t m_most;
};

void DropUnusedAlpha(Picture& picture) {
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4) {
        if (picture.pixels[i] != 0) return;
    }
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4) picture.pixels[i] = 255;
}

Picture DecodeColours(Bytes bytes, const Header& h) {
    const Bytes rows = PlainRows(bytes, h);
    const bool hasAlpha = h.masks[3] != 0;
    Picture picture(static_cast<int>(h.width), static_cast<int>(h.height),
                    hasAlpha ? PixelFormat::Rgba8 : PixelFormat::Rgb8);
    const Channel red(h.masks[0]), green(h.masks[1]), blue(h.masks[2]), alpha(h.masks[3]);
    const unsigned size = h.bits / 8;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* in = rows.data() + FileRow(h, y) * RowBytes(h);
        std::uint8_t* out = picture.Row(y);
        for (int x = 0; x < picture.width; ++x, in += size) {
            std::uint32_t pixel = 0;
            for (unsigned i = size; i-- > 0;) pixel = pixel << 8 | in[i];
            *out++ = red.Of(pixel);
            *out++ = green.Of(pixel);
            *out++ = blue.Of(pixel);
            if (hasAlpha) *out++ = alpha.Of(pixel);
        }
    }
    if (hasAlpha) DropUnusedAlpha(picture);
    return picture;
}

}  // namespace

Picture DecodeBmp(Bytes bytes, const PictureLimits& limits) {
    const Header h = ReadHeader(bytes);
    CheckPictureSize(h.width, h.height, limits);
    if (!h.IsIndexed()) return DecodeColours(bytes, h);
    const Palette palette = ReadPalette(bytes, h);
    if (h.compression != Plain) return Coloured(DecodeRuns(bytes, h), palette);
    if (h.bits == 1 && palette.IsBlackAndWhite()) return DecodeBitmap(bytes, h, palette);
    return Coloured(DecodeIndices(bytes, h), palette);
}

}  // namespace tarvex::app
