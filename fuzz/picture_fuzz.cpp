// Pictures from anywhere: any bytes give a picture within the limit or an error, and a picture that
// can be read can be written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tarvex/picture.h"
#include "tarvex/png_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarvex::app;
    constexpr PictureLimits limits{1 << 16};
    try {
        const Picture picture = DecodePicture({data, size}, limits);
        const auto width = static_cast<std::uint64_t>(picture.width);
        const auto height = static_cast<std::uint64_t>(picture.height);
        if (picture.width < 1 || picture.height < 1 || width * height > limits.maxPixels) std::abort();
        const std::string png = EncodePng(picture);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(png.data());
        if (DecodePicture({bytes, png.size()}, limits).pixels != picture.pixels) std::abort();
    } catch (const PictureError&) {
        return 0;
    }
    return 0;
}
