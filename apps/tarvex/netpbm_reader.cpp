// The Netpbm family: PBM, PGM and PPM, plain (P1 to P3) and raw (P4 to P6), and PAM (P7).
//
// A header of decimal numbers between white space, with comments from # to the end of the line; then,
// after one byte of white space, the pixels. Values run up to a stated maximum of 1 to 65535, two bytes
// each (most significant first) when it is above 255.
#include <algorithm>
#include <array>
#include <string_view>

#include "tarvex/picture_formats.h"

namespace tarvex::app {

namespace {

[[noreturn]] void Damaged(const char* what) { throw PictureError(std::string("damaged PNM: ") + what); }

bool IsSpace(std::uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(std::uint8_t c) { return c >= '0' && c <= '9'; }

class Scanner {
  public:
    explicit Scanner(Bytes bytes) : m_bytes(bytes) {}

    bool AtEnd() const { return m_position >= m_bytes.size(); }
    Bytes Rest() const { return m_bytes.subspan(m_position); }

    void SkipSpaceAndComments() {
        while (!AtEnd()) {
            const std::uint8_t c = m_bytes[m_position];
            if (c == '#') {
                SkipLine();
            } else if (IsSpace(c)) {
                ++m_position;
            } else {
                return;
            }
        }
    }

    /// The next number, saturated at `most` + 1 so that none overflows.
    std::uint32_t Number(std::uint32_t most) {
        SkipSpaceAndComments();
        if (AtEnd()) Damaged("the data ends early");
        if (!IsDigit(m_bytes[m_position])) Damaged("a number is expected");
        std::uint64_t value = 0;
        while (!AtEnd() && IsDigit(m_bytes[m_position])) {
            value =
                std::min<std::uint64_t>(value * 10 + (m_bytes[m_position++] - '0'), std::uint64_t{most} + 1);
        }
        return static_cast<std::uint32_t>(value);
    }

    /// The next bit of a plain bitmap: the digits need no space between them.
    bool Bit() {
        SkipSpaceAndComments();
        if (AtEnd()) Damaged("the data ends early");
        const std::uint8_t c = m_bytes[m_position++];
        if (c != '0' && c != '1') Damaged("a bit is expected");
        return c == '1';
    }

    /// The single byte of white space that separates the header from raw pixels.
    void EndHeader() {
        if (AtEnd()) Damaged("the data ends early");
        if (!IsSpace(m_bytes[m_position])) Damaged("a number is expected");
        ++m_position;
    }

    std::string_view Word() {
        SkipSpaceAndComments();
        const std::size_t start = m_position;
        while (!AtEnd() && !IsSpace(m_bytes[m_position])) ++m_position;
        return {reinterpret_cast<const char*>(m_bytes.data()) + start, m_position - start};
    }

    void SkipLine() {
        while (!AtEnd() && m_bytes[m_position] != '\n' && m_bytes[m_position] != '\r') ++m_position;
    }

  private:
    Bytes m_bytes;
    std::size_t m_position = 2;
};

constexpr std::uint32_t MOST_PIXELS = 0x7fffffff;
constexpr std::uint32_t MOST_VALUE = 65535;

struct Header {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 1;
    std::uint32_t most = 1;  ///< value of white
};

PixelFormat FormatOf(std::uint32_t depth) { return static_cast<PixelFormat>(depth); }

void CheckHeader(const Header& h, const PictureLimits& limits) {
    CheckPictureSize(h.width, h.height, limits);
    if (h.most == 0 || h.most > MOST_VALUE) Damaged("its largest value is not in 1 to 65535");
}

/// Raises unless `count` values of at least `each` bytes can follow.
void CheckRest(const Scanner& in, std::uint64_t count, std::uint64_t each) {
    if (in.Rest().size() / each < count) Damaged("the data ends early");
}

Picture DecodePlainBitmap(Scanner& in, const Header& h) {
    CheckRest(in, std::uint64_t{h.width} * h.height, 1);
    Picture picture(static_cast<int>(h.width), static_cast<int>(h.height), PixelFormat::Bit1);
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* row = picture.Row(y);
        for (std::size_t x = 0; x < h.width; ++x) {
            if (!in.Bit()) row[x / 8] = static_cast<std::uint8_t>(row[x / 8] | (0x80 >> (x % 8)));
        }
    }
    return picture;
}

Picture DecodeRawBitmap(Scanner& in, const Header& h) {
    in.EndHeader();
    const std::size_t rowBytes = (std::size_t{h.width} + 7) / 8;
    CheckRest(in, h.height, rowBytes);
    const std::uint8_t* data = in.Rest().data();
    Picture picture(static_cast<int>(h.width), static_cast<int>(h.height), PixelFormat::Bit1);
    for (int y = 0; y < picture.height; ++y, data += rowBytes) {
        std::uint8_t* row = picture.Row(y);
        for (std::size_t i = 0; i < rowBytes; ++i) row[i] = static_cast<std::uint8_t>(~data[i]);
        ClearRowPadding(picture, y);
    }
    return picture;
}

/// The 8-bit values of 0..most, to the nearest.
std::vector<std::uint8_t> Scale(std::uint32_t most) {
    std::vector<std::uint8_t> scale(most + 1);
    for (std::uint32_t v = 0; v <= most; ++v)
        scale[v] = static_cast<std::uint8_t>((v * 255 + most / 2) / most);
    return scale;
}

/// Fills a picture's values in order from `next`, which gives each as the file has it.
template <class Next>
Picture DecodeValues(const Header& h, Next next) {
    const std::vector<std::uint8_t> scale = Scale(h.most);
    Picture picture(static_cast<int>(h.width), static_cast<int>(h.height), FormatOf(h.depth));
    for (std::uint8_t& out : picture.pixels) {
        const std::uint32_t value = next();
        if (value > h.most) Damaged("a value is larger than the stated maximum");
        out = scale[value];
    }
    return picture;
}

Picture DecodePlainValues(Scanner& in, const Header& h) {
    CheckRest(in, std::uint64_t{h.width} * h.height * h.depth, 2);  // a digit and a separator
    return DecodeValues(h, [&in, &h] { return in.Number(h.most); });
}

Picture DecodeRawValues(Scanner& in, const Header& h) {
    in.EndHeader();
    const bool isWide = h.most > 255;
    CheckRest(in, std::uint64_t{h.width} * h.height * h.depth, isWide ? 2 : 1);
    const std::uint8_t* data = in.Rest().data();
    if (h.most == 255) {
        Picture picture(static_cast<int>(h.width), static_cast<int>(h.height), FormatOf(h.depth));
        std::copy(data, data + picture.pixels.size(), picture.pixels.begin());
        return picture;
    }
    if (isWide) {
        return DecodeValues(h, [&data] {
            data += 2;
            return std::uint32_t{data[-2]} << 8 | data[-1];
        });
    }
    return DecodeValues(h, [&data] { return std::uint32_t{*data++}; });
}

Header ReadPamHeader(Scanner& in) {
    Header h;
    h.depth = h.most = 0;
    for (;;) {
        const std::string_view word = in.Word();
        if (word == "WIDTH") {
            h.width = in.Number(MOST_PIXELS);
        } else if (word == "HEIGHT") {
            h.height = in.Number(MOST_PIXELS);
        } else if (word == "DEPTH") {
            h.depth = in.Number(MOST_VALUE);
        } else if (word == "MAXVAL") {
            h.most = in.Number(MOST_VALUE);
        } else if (word == "TUPLTYPE") {
            in.SkipLine();  // the depth says as much
        } else if (word == "ENDHDR") {
            return h;
        } else {
            Damaged(word.empty() ? "the data ends early" : "its header has an unknown line");
        }
    }
}

Picture DecodePam(Scanner& in, const PictureLimits& limits) {
    const Header h = ReadPamHeader(in);
    CheckHeader(h, limits);
    if (h.depth < 1 || h.depth > 4) Damaged("its pixels do not have 1 to 4 values");
    return DecodeRawValues(in, h);
}

}  // namespace

Picture DecodeNetpbm(Bytes bytes, const PictureLimits& limits) {
    const int kind = bytes[1] - '0';
    Scanner in(bytes);
    if (kind == 7) return DecodePam(in, limits);
    Header h;
    h.width = in.Number(MOST_PIXELS);
    h.height = in.Number(MOST_PIXELS);
    const bool isBitmap = kind == 1 || kind == 4;
    if (!isBitmap) h.most = in.Number(MOST_VALUE);
    h.depth = kind == 3 || kind == 6 ? 3 : 1;
    CheckHeader(h, limits);
    const bool isRaw = kind >= 4;
    if (isBitmap) return isRaw ? DecodeRawBitmap(in, h) : DecodePlainBitmap(in, h);
    return isRaw ? DecodeRawValues(in, h) : DecodePlainValues(in, h);
}

}  // namespace tarvex::app
