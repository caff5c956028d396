// JPEG pictures, through libjpeg: grey, RGB and CMYK, turned upright as their camera noted.
//
// libjpeg's error handler must not return, so it jumps; the same rule as for PNG keeps that safe:
// owners live in DecodeJpeg, and libjpeg runs in steps whose frames hold nothing to destroy.
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>  // wants <cstdio> before it

#include <jerror.h>

#include "tarvex/picture_formats.h"

namespace tarvex::app {

namespace {

/// A progressive file may announce scans without end, each of which costs a pass over the picture.
constexpr int MAX_SCANS = 500;

struct JpegReader {
    Bytes bytes;
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg_progress_mgr progress{};
    std::jmp_buf onError;
    char message[JMSG_LENGTH_MAX] = "";
    std::uint8_t* row = nullptr;

    JpegReader(Bytes source) : bytes(source) {}
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;
    ~JpegReader() { jpeg_destroy_decompress(&jpeg); }
};

JpegReader& ReaderOf(j_common_ptr jpeg) { return *static_cast<JpegReader*>(jpeg->client_data); }

[[noreturn]] void OnError(j_common_ptr jpeg) {
    JpegReader& reader = ReaderOf(jpeg);
    jpeg->err->format_message(jpeg, reader.message);
    std::longjmp(reader.onError, 1);
}

/// Warnings are damage that libjpeg would paper over with grey; those that are not damage pass.
void OnMessage(j_common_ptr jpeg, int level) {
    if (level >= 0) return;
    switch (jpeg->err->msg_code) {
        case JWRN_EXTRANEOUS_DATA:
        case JWRN_TOO_MUCH_DATA:
        case JWRN_ADOBE_XFORM:
        case JWRN_JFIF_MAJOR:
        case JWRN_NOT_SEQUENTIAL:
            return;
        default:
            OnError(jpeg);
    }
}

void OnProgress(j_common_ptr jpeg) {
    if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number <= MAX_SCANS) return;
    JpegReader& reader = ReaderOf(jpeg);
    std::snprintf(reader.message, sizeof reader.message, "it has more than %d scans", MAX_SCANS);
    std::longjmp(reader.onError, 1);
}

bool Guarded(JpegReader& reader, void (*step)(JpegReader&)) {
    if (setjmp(reader.onError)) return false;
    step(reader);
    return true;
}

void Start(JpegReader& r) {
    jpeg_create_decompress(&r.jpeg);
    r.jpeg.client_data = &r;
    r.jpeg.progress = &r.progress;
    r.progress.progress_monitor = OnProgress;
    jpeg_mem_src(&r.jpeg, r.bytes.data(), r.bytes.size());
    jpeg_save_markers(&r.jpeg, JPEG_APP0 + 1, 0xffff);
    jpeg_read_header(&r.jpeg, TRUE);
}

void StartRows(JpegReader& r) {
    switch (r.jpeg.jpeg_color_space) {
        case JCS_GRAYSCALE:
            r.jpeg.out_color_space = JCS_GRAYSCALE;
            break;
        case JCS_CMYK:
        case JCS_YCCK:
            r.jpeg.out_color_space = JCS_CMYK;
            break;
        default:
            r.jpeg.out_color_space = JCS_RGB;
            break;
    }
    jpeg_start_decompress(&r.jpeg);
}

void ReadRow(JpegReader& r) { jpeg_read_scanlines(&r.jpeg, &r.row, 1); }

void Finish(JpegReader& r) { jpeg_finish_decompress(&r.jpeg); }

void Step(JpegReader& reader, void (*step)(JpegReader&)) {
    if (!Guarded(reader, step)) throw PictureError(std::string("damaged JPEG: ") + reader.message);
}

std::uint8_t Product(unsigned a, unsigned b) { return static_cast<std::uint8_t>((a * b + 127) / 255); }

/// Ink to light, without a colour profile. Files with an Adobe marker store ink upside down.
void ConvertInk(const std::uint8_t* cmyk, std::uint8_t* rgb, int width, bool isInverted) {
    const unsigned flip = isInverted ? 0 : 255;
    for (int x = 0; x < width; ++x, cmyk += 4, rgb += 3) {
        const unsigned light = cmyk[3] ^ flip;
        for (int channel = 0; channel < 3; ++channel) rgb[channel] = Product(cmyk[channel] ^ flip, light);
    }
}

/// Reads unsigned integers in the byte order that an Exif block chose; 0 beyond the end.
class ExifReader {
  public:
    ExifReader(Bytes bytes, bool bigEndian) : m_bytes(bytes), m_bigEndian(bigEndian) {}

    std::uint32_t Get(std::size_t at, unsigned size) const {
        if (at > m_bytes.size() || m_bytes.size() - at < size) return 0;
        std::uint32_t value = 0;
        for (unsigned i = 0; i < size; ++i)
            value = value << 8 | m_bytes[at + (m_bigEndian ? i : size - 1 - i)];
        return value;
    }

  private:
    Bytes m_bytes;
    bool m_bigEndian;
};

/// The orientation tag of the first directory of an Exif block (Exif 2.3, section 4.6.2), or 1.
int ExifOrientation(Bytes block) {
    constexpr std::size_t prefix = 6;  // "Exif", 0, 0
    if (block.size() < prefix + 8 || std::memcmp(block.data(), "Exif\0", prefix) != 0) return 1;
    const Bytes tiff = block.subspan(prefix);
    const bool bigEndian = tiff[0] == 'M';
    if (tiff[0] != tiff[1] || (tiff[0] != 'M' && tiff[0] != 'I')) return 1;
    const ExifReader reader(tiff, bigEndian);
    const std::size_t directory = reader.Get(4, 4);
    const std::uint32_t entries = reader.Get(directory, 2);
    for (std::uint32_t i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + std::size_t{12} * i;
        if (reader.Get(entry, 2) == 0x0112) return static_cast<int>(reader.Get(entry + 8, 2));
    }
    return 1;
}

int OrientationOf(const JpegReader& reader) {
    for (auto marker = reader.jpeg.marker_list; marker != nullptr; marker = marker->next) {
        const int orientation = ExifOrientation({marker->data, marker->data_length});
        if (orientation != 1) return orientation;
    }
    return 1;
}

}  // namespace

Picture DecodeJpeg(Bytes bytes, const PictureLimits& limits) {
    JpegReader reader(bytes);
    reader.jpeg.err = jpeg_std_error(&reader.errors);
    reader.errors.error_exit = OnError;
    reader.errors.emit_message = OnMessage;
    // jpeg_create_decompress clears all but the error manager, and may itself fail.
    reader.jpeg.client_data = &reader;

    Step(reader, Start);
    CheckPictureSize(reader.jpeg.image_width, reader.jpeg.image_height, limits);
    Step(reader, StartRows);

    const bool isGrey = reader.jpeg.out_color_space == JCS_GRAYSCALE;
    const bool isInk = reader.jpeg.out_color_space == JCS_CMYK;
    const int width = static_cast<int>(reader.jpeg.output_width);
    Picture picture(width, static_cast<int>(reader.jpeg.output_height),
                    isGrey ? PixelFormat::Grey8 : PixelFormat::Rgb8);
    std::vector<std::uint8_t> ink(isInk ? static_cast<std::size_t>(width) * 4 : 0);
    for (int y = 0; y < picture.height; ++y) {
        reader.row = isInk ? ink.data() : picture.Row(y);
        Step(reader, ReadRow);
        if (isInk) ConvertInk(ink.data(), picture.Row(y), width, reader.jpeg.saw_Adobe_marker != FALSE);
    }
    const int orientation = OrientationOf(reader);  // finishing forgets the markers
    Step(reader, Finish);
    return Upright(std::move(picture), orientation);
}

}  // namespace tarvex::app
