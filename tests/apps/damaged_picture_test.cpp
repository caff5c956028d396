// What no reader may do with damaged files: crash, give part of a picture, or take memory on the word
// of a header.
#include "support/precompiled.h"

#include <optional>
#include <variant>

#include "apps/support/sample_pictures.h"
#include "tarvex/picture.h"

namespace tarvex::app::test {
namespace {

/// The picture, or why there is none.
std::variant<Picture, std::string> Decoded(const FileBytes& bytes, std::uint64_t maxPixels) {
    try {
        return DecodePicture(bytes, {maxPixels});
    } catch (const PictureError& error) {
        const std::string message = error.what();
        EXPECT_TRUE(!message.empty() && message.find('\n') == std::string::npos) << "an error is one line";
        return message;
    }
}

std::optional<Picture> TryDecode(const FileBytes& bytes, std::uint64_t maxPixels = 1'000'000) {
    const auto decoded = Decoded(bytes, maxPixels);
    const Picture* const picture = std::get_if<Picture>(&decoded);
    return picture != nullptr ? std::optional(*picture) : std::nullopt;
}

std::string ErrorOf(const FileBytes& bytes, std::uint64_t maxPixels = 100'000'000) {
    const auto decoded = Decoded(bytes, maxPixels);
    const std::string* const error = std::get_if<std::string>(&decoded);
    return error != nullptr ? *error : "none";
}

TEST(DamagedPicture, TruncatedAnywhereGivesAnErrorOrTheWholePicture) {
    for (const NamedFile& file : OneOfEachKind()) {
        SCOPED_TRACE(file.name);
        const std::optional<Picture> whole = TryDecode(file.bytes);
        ASSERT_TRUE(whole.has_value());
        for (std::size_t size = 0; size < file.bytes.size(); ++size) {
            // A copy of just that size, so that reading past its end is reading past an allocation.
            const FileBytes part(file.bytes.begin(), file.bytes.begin() + static_cast<std::ptrdiff_t>(size));
            const std::optional<Picture> picture = TryDecode(part);
            if (!picture) continue;
            EXPECT_EQ(picture->format, whole->format) << size << " bytes";
            EXPECT_EQ(picture->pixels, whole->pixels) << size << " bytes";
        }
    }
}

TEST(DamagedPicture, FlippedBitsGiveAnErrorOrAPictureWithinTheLimit) {
    std::mt19937 random(17);
    for (const NamedFile& file : OneOfEachKind()) {
        SCOPED_TRACE(file.name);
        for (int round = 0; round < 300; ++round) {
            FileBytes bytes = file.bytes;
            for (unsigned flips = 1 + random() % 4; flips > 0; --flips) {
                bytes[random() % bytes.size()] ^= static_cast<std::uint8_t>(1u << random() % 8);
            }
            const std::optional<Picture> picture = TryDecode(bytes, 100'000);
            if (!picture) continue;
            const auto width = static_cast<std::uint64_t>(picture->width);
            const auto height = static_cast<std::uint64_t>(picture->height);
            EXPECT_GT(width * height, 0u);
            EXPECT_LE(width * height, 100'000u);
            EXPECT_EQ(picture->pixels.size(), picture->stride * height);
        }
    }
}

/// Writes 65500 x 65500, the most that libjpeg takes, into the frame header of a JPEG file.
FileBytes HugeJpeg() {
    FileBytes file = MakeJpeg(RandomSamples(8, 8, 1, 8, 1), {JpegColour::Grey, false, 0, false});
    for (std::size_t i = 0; i + 9 < file.size(); ++i) {
        if (file[i] != 0xff || file[i + 1] != 0xc0) continue;
        file[i + 5] = file[i + 7] = 65500 >> 8;
        file[i + 6] = file[i + 8] = 65500 & 0xff;
        break;
    }
    return file;
}

TEST(DamagedPicture, ASizeAboveTheLimitIsRefusedByName) {
    const BmpSpec runs{8, 40, 1, false, {{0, 0, 0, 255}}, {}};
    const NamedFile cases[] = {
        {"100000 x 100000", MakePngHeader(100000, 100000)},
        {"100000 x 100000", MakeBmpAround(100000, 100000, {0, 1}, runs)},
        {"100000 x 100000", MakeBmpAround(100000, 100000, {0, 1}, {24, 40, 0, true, {}, {}})},
        {"100000 x 2147483648", MakeBmpAround(100000, INT32_MIN, {0, 1}, {24, 40, 0, false, {}, {}})},
        {"65500 x 65500", HugeJpeg()},
        {"100000 x 100000", BytesOf("P1 100000 100000\n1")},
        {"100000 x 100000", BytesOf("P4 100000 100000\n1")},
        {"2147483648 x 2147483648", BytesOf("P6 99999999999999999999 99999999999999999999 255\n1")},
        {"100000 x 100000", BytesOf("P7\nWIDTH 100000\nHEIGHT 100000\nDEPTH 4\nMAXVAL 255\nENDHDR\n")},
    };
    for (const NamedFile& c : cases) {
        EXPECT_THAT(ErrorOf(c.bytes), testing::AllOf(testing::HasSubstr(c.name + " pixels"),
                                                     testing::HasSubstr("limit of 100 million")));
    }
}

TEST(DamagedPicture, TheLimitIsInclusive) {
    const FileBytes file = BytesOf("P5 3 2 255\nabcdef");
    EXPECT_EQ(ErrorOf(file, 6), "none");
    EXPECT_THAT(ErrorOf(file, 5), testing::HasSubstr("3 x 2 pixels, more than the limit of 5"));
}

TEST(DamagedPicture, WhatHasNoPixelsForItsSizeAndWhatIsNoPictureIsRefused) {
    const std::string narrow = "ends early";  // within the limit of pixels, yet the file cannot hold them
    const FileBytes png = MakePng(RandomSamples(40, 40, 1, 8, 1), {});
    const std::pair<FileBytes, std::string> cases[] = {
        {BytesOf("P4 90000000 1\n"), narrow},
        {BytesOf("P5 1 90000000 255\n"), narrow},
        {BytesOf("P1 90000000 1\n0"), narrow},
        {BytesOf("P3 1 9000000 255\n0"), narrow},
        {MakeBmpAround(90'000'000, 1, {0, 0}, {24, 40, 0, false, {}, {}}), narrow},
        {FileBytes(png.begin(), png.end() - 30), "damaged PNG: the data ends early"},
        {BytesOf("P1 0 1\n"), "no pixels (0 x 1)"},
        {BytesOf("P4 1 0\n"), "no pixels"},
        {BytesOf("P7\nWIDTH 0\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\n"), "no pixels"},
        {MakeBmpAround(0, 3, {0, 0, 0, 0}, {24, 40, 0, false, {}, {}}), "no pixels"},
        {MakeBmpAround(3, 0, {0, 0, 0, 0}, {8, 12, 0, false, {{0, 0, 0, 255}}, {}}), "no pixels"},
        {{}, "empty"},
    };
    for (const auto& [file, message] : cases)
        EXPECT_THAT(ErrorOf(file), testing::HasSubstr(message)) << testing::PrintToString(file);
    for (const char* text : {"x", "P", "P4", "P8 1 1\n", "P4x", "<svg/>", "GIF89a", "\x89PNG\r\n"})
        EXPECT_THAT(ErrorOf(BytesOf(text)), testing::HasSubstr("not a picture")) << text;
}

}  // namespace
}  // namespace tarvex::app::test
