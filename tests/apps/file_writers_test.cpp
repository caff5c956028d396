// JSON and PNG files: what is written reads back.
#include "support/precompiled.h"

#include <nlohmann/json.hpp>

#include "apps/support/picture_matchers.h"
#include "apps/support/sample_pictures.h"
#include "tarvex/json_writer.h"
#include "tarvex/picture.h"
#include "tarvex/png_writer.h"

namespace tarvex::app::test {
namespace {

TEST(WriteJson, GivesTheSizeAndEveryNodeInTheDocumentedForm) {
    BPOINT first;
    first.cp1 = {-0.125, 1};
    first.pt = {2, 3};
    first.cp2 = {0.5, std::nan("")};
    BPOINT second = first;
    second.pt = {1e300, -0.001};
    const std::vector<BPOINT> closed = {first, second, first};
    const std::vector<BPOINT> open = {first, second};
    const std::vector<ContourView> contours = {closed, open, {}};

    const nlohmann::json read = nlohmann::json::parse(WriteJson({640, 480.5, 2}, contours));
    const nlohmann::json a = {-0.13, 1, 2, 3, 0.5, 0};
    const nlohmann::json b = {-0.13, 1, 1e13, 0, 0.5, 0};
    const nlohmann::json expected = {
        {"width", 640},
        {"height", 480.5},
        {"contours",
         {{{"closed", true}, {"nodes", {a, b, a}}},
          {{"closed", false}, {"nodes", nlohmann::json::array({a, b})}},
          {{"closed", false}, {"nodes", nlohmann::json::array()}}}},
    };
    EXPECT_EQ(read, expected);
    EXPECT_EQ(nlohmann::json::parse(WriteJson({1, 1, 0}, {})).at("contours").size(), 0u);
}

TEST(EncodePng, EveryFormatReadsBackAsItWas) {
    for (const PixelFormat format : {PixelFormat::Bit1, PixelFormat::Grey8, PixelFormat::GreyAlpha8,
                                     PixelFormat::Rgb8, PixelFormat::Rgba8}) {
        SCOPED_TRACE(static_cast<int>(format));
        Picture picture(37, 11, format);
        std::mt19937 random(19);
        if (format == PixelFormat::Bit1) {
            for (int y = 0; y < 11; ++y) {
                for (int i = 0; i < 4; ++i) picture.Row(y)[i] = static_cast<std::uint8_t>(random());
                picture.Row(y)[4] = static_cast<std::uint8_t>(random() & 0xf8);
            }
        } else {
            for (std::uint8_t& byte : picture.pixels) byte = static_cast<std::uint8_t>(random());
        }
        const Picture read = DecodePicture(BytesOf(EncodePng(picture)), {});
        EXPECT_EQ(read.format, format);
        EXPECT_EQ(read.pixels, picture.pixels);
    }
}

TEST(EncodeIndexedPng, EveryNumberOfColoursReadsBack) {
    for (const std::size_t count : {1u, 2u, 3u, 4u, 5u, 16u, 17u, 255u, 256u}) {
        SCOPED_TRACE(count);
        std::vector<Rgba> palette;
        for (std::size_t i = 0; i < count; ++i) {
            const auto v = static_cast<std::uint8_t>(i);
            palette.push_back(
                {v, static_cast<std::uint8_t>(255 - v), 7, static_cast<std::uint8_t>(i == 1 ? 0 : 255)});
        }
        std::vector<std::uint8_t> indices;
        for (std::size_t i = 0; i < std::size_t{19} * 15; ++i)
            indices.push_back(static_cast<std::uint8_t>(i % count));
        const Picture read = DecodePicture(BytesOf(EncodeIndexedPng(19, 15, indices, palette)), {});
        EXPECT_TRUE(Shows(read, 19, 15, [&](int x, int y) {
            return palette[indices[static_cast<std::size_t>(y * 19 + x)]];
        }));
    }
}

TEST(EncodeIndexedPng, RefusesWhatNoPngCanHold) {
    const std::vector<Rgba> two(2);
    EXPECT_THROW(EncodeIndexedPng(2, 1, std::vector<std::uint8_t>{0, 2}, two), std::invalid_argument);
    EXPECT_THROW(EncodeIndexedPng(2, 1, std::vector<std::uint8_t>{0}, two), std::invalid_argument);
    EXPECT_THROW(EncodeIndexedPng(0, 1, {}, two), std::invalid_argument);
    EXPECT_THROW(EncodeIndexedPng(1, 1, std::vector<std::uint8_t>{0}, {}), std::invalid_argument);
    EXPECT_THROW(EncodeIndexedPng(1, 1, std::vector<std::uint8_t>{0}, std::vector<Rgba>(257)),
                 std::invalid_argument);
}

}  // namespace
}  // namespace tarvex::app::test
