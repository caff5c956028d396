// The readers behind DecodePicture, one per family of formats, and what they share.
#pragma once

#include <cstdint>
#include <span>

#include "tarvex/picture.h"

namespace tarvex::app {

using Bytes = std::span<const std::uint8_t>;

enum class PictureKind { Unknown, Png, Jpeg, Bmp, Netpbm };

/// Longest beginning of a file that PictureKindOf looks at.
inline constexpr std::size_t SNIFFED_BYTES = 16;

PictureKind PictureKindOf(Bytes start);

Picture DecodePng(Bytes bytes, const PictureLimits& limits);
Picture DecodeJpeg(Bytes bytes, const PictureLimits& limits);
Picture DecodeBmp(Bytes bytes, const PictureLimits& limits);
Picture DecodeNetpbm(Bytes bytes, const PictureLimits& limits);

/// Raises PictureError unless a picture of this size has pixels, within the limit. Each reader calls
/// it before it takes memory on the word of a header. `subject` is what the message calls the picture.
void CheckPictureSize(std::uint64_t width, std::uint64_t height, const PictureLimits& limits,
                      const std::string& subject = "the picture");

/// Clears the bits of a Bit1 row that lie past its width.
void ClearRowPadding(Picture& picture, int y);

/// Colours of an indexed picture.
struct Palette {
    std::vector<Rgba> colours;

    bool IsGrey() const;
    bool IsOpaque() const;
    /// Two colours, black and white in either order.
    bool IsBlackAndWhite() const;
};

/// The picture whose palette indices stand in a Grey8 picture, in the smallest format that shows its
/// palette. Raises PictureError for an index beyond the palette.
Picture Coloured(Picture indices, const Palette& palette);

/// The picture turned upright, given the orientation 1..8 that cameras write into their files
/// (1 is upright; other values change nothing).
Picture Upright(Picture picture, int orientation);

}  // namespace tarvex::app
