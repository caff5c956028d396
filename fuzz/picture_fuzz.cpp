// Pictures from anywhere: any bytes give a picture within the limit or an error, and a picture that
// can be read can be written and read again.
#include <cstddef>
#include <cstdint>
#include <string>

#include "input.h"
#include "tarvex/picture.h"
#include "tarvex/png_writer.h"

namespace tarvex::fuzz {

using namespace app;

void TryInput(Input input) {
    constexpr PictureLimits limits{1 << 16};
    try {
        const Picture picture = DecodePicture(input.Rest(), limits);
        const auto width = static_cast<std::uint64_t>(picture.width);
        const auto height = static_cast<std::uint64_t>(picture.height);
        Require(picture.width >= 1 && picture.height >= 1 && width * height <= limits.maxPixels,
                "a picture has pixels, and no more than the limit");
        const std::string png = EncodePng(picture);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(png.data());
        Require(DecodePicture({bytes, png.size()}, limits).pixels == picture.pixels,
                "what is written can be read, and is the same");
    } catch (const PictureError&) {
        // A damaged picture is refused.
    }
}

}  // namespace tarvex::fuzz
