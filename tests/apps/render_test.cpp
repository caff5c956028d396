// `tarvex render` and what it paints with: colours as CSS writes them, rules, opacities, sizes.
#include "support/precompiled.h"

#include "apps/support/picture_matchers.h"
#include "apps/support/program.h"
#include "tarvex/svg_paint.h"

namespace tarvex::app::test {
namespace {

constexpr Rgba WHITE = {255, 255, 255, 255};
constexpr Rgba RED = {255, 0, 0, 255};

Picture Rendered(const std::string& drawing, const Arguments& more = {}) {
    const std::string png = OutputOf(Arguments{"render", "-", "-o", "-"} + more, drawing);
    return DecodePicture({reinterpret_cast<const std::uint8_t*>(png.data()), png.size()}, {});
}

TEST(SvgPaint, ReadsColoursAsCssWritesThem) {
    const std::pair<const char*, std::optional<Rgba>> cases[] = {
        {"red", RED},
        {"RebeccaPurple", Rgba{0x66, 0x33, 0x99, 255}},
        {"yellowgreen", Rgba{0x9A, 0xCD, 0x32, 255}},
        {"#f0c", Rgba{255, 0, 204, 255}},
        {"#F0C8", Rgba{255, 0, 204, 136}},
        {"#0a141E", Rgba{10, 20, 30, 255}},
        {"#0a141e28", Rgba{10, 20, 30, 40}},
        {"rgb(1, 2,300)", Rgba{1, 2, 255, 255}},
        {"rgb(100%,0%,50%)", Rgba{255, 0, 128, 255}},
        {"rgba(9 8 7 / 40%)", Rgba{9, 8, 7, 102}},
        {"rgba(9,8,7,.4)", Rgba{9, 8, 7, 102}},
        {"transparent", Rgba{0, 0, 0, 0}},
        {"#ff", std::nullopt},
        {"#ggg", std::nullopt},
        {"rgb(1,2)", std::nullopt},
        {"rgb(1,2,3,4,5)", std::nullopt},
        {"rgb(1,2,3", std::nullopt},
        {"rgbx(1,2,3)", std::nullopt},
        {"rgb)", std::nullopt},
        {"redd", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, colour] : cases) EXPECT_EQ(ParseColour(text), colour) << text;
}

TEST(Render, PaintsWhatEachPropertyAndItsInheritanceSay) {
    const std::pair<const char*, Rgba> cases[] = {
        {"<rect SIZE/>", {0, 0, 0, 255}},
        {"<g fill='red'><rect SIZE/></g>", RED},
        {"<g fill='blue'><rect SIZE fill='lime' style='fill:red'/></g>", RED},
        {"<g fill='red'><rect SIZE fill='inherit'/></g>", RED},
        {"<g fill='red'><rect SIZE fill='no colour'/></g>", RED},
        {"<g color='red'><rect SIZE fill='currentColor'/></g>", RED},
        {"<rect SIZE fill='url(#a) red'/>", RED},
        {"<rect SIZE fill='url(#a) none'/>", WHITE},
        {"<rect SIZE fill='url(#a'/>", {128, 128, 128, 255}},
        {"<rect SIZE fill='none'/>", WHITE},
        {"<rect SIZE fill='red' visibility='hidden'/>", WHITE},
        {"<g opacity='50%'><rect SIZE fill='red' fill-opacity='.4'/></g>", {255, 204, 204, 255}},
        {"<rect SIZE fill='blue'/><rect SIZE fill='#f008'/>", {136, 0, 119, 255}},
        {"<path d='M0 0h9v9h-9zM3 3h3v3h-3z' fill='red'/>", RED},
        {"<path d='M0 0h9v9h-9zM3 3h3v3h-3z' fill='red' fill-rule='evenodd'/>", WHITE},
        {"<path d='M0 0h9v9h-9zM3 3v3h3v-3z' fill='red'/>", WHITE},
        {"<path d='M0 4.5h9' fill='none' stroke='red' stroke-width='3'/>", RED},
        {"<path d='M0 4.5h9' stroke='red' stroke-width='0'/>", WHITE},
        {"<g transform='scale(3)'><path d='M0 1.5h3' stroke='red'/></g>", RED},
        {"<rect SIZE fill='blue' stroke='red' stroke-width='9'/>", RED},
    };
    for (const auto& [shape, colour] : cases) {
        std::string body = shape;
        for (std::size_t at; (at = body.find("SIZE")) != body.npos;)
            body.replace(at, 4, "width='9' height='9'");
        const Picture picture = Rendered("<svg viewBox='0 0 9 9'>" + body + "</svg>", {"--width", "9"});
        EXPECT_EQ(Shown(picture.At(4, 4)), Shown(colour)) << shape;
    }
}

TEST(Render, PaintsGradientsInTheMeanOfTheirColours) {
    const std::string ends = "<stop stop-color='red'/><stop offset='1' style='stop-color:blue'/>";
    const std::string step = "<stop offset='25%' stop-color='red'/><stop offset='.1' stop-color='blue'/>";
    const std::pair<std::string, Rgba> cases[] = {
        {"<linearGradient id='a'>" + ends + "</linearGradient>", {128, 0, 128, 255}},
        {"<radialGradient id='a'>" + ends + "</radialGradient>", {85, 0, 170, 255}},
        {"<linearGradient id='a'>" + step + "</linearGradient>", {64, 0, 191, 255}},
        {"<radialGradient id='a'>" + step + "</radialGradient>", {16, 0, 239, 255}},
        {"<radialGradient id='a' xlink:href='#b'/><linearGradient id='b' href='#c'/>"
         "<linearGradient id='c'>" +
             ends + "</linearGradient>",
         {85, 0, 170, 255}},
        {"<linearGradient id='a'><stop stop-color='red' stop-opacity='.2'/></linearGradient>",
         {255, 204, 204, 255}},
        {"<linearGradient id='a'><stop stop-color='red'/><stop offset='1' stop-color='blue' "
         "stop-opacity='0'/></linearGradient>",
         {255, 127, 127, 255}},
        {"<linearGradient id='a'/>", WHITE},
        {"<linearGradient id='a' href='#b'/><linearGradient id='b' href='#a'/>", WHITE},
        {"<pattern id='a'/>", {0, 128, 0, 255}},
    };
    for (const auto& [definition, colour] : cases) {
        for (const char* reference : {"url(#a) green", "url( '#a' ) green"}) {
            const Picture picture = Rendered("<svg viewBox='0 0 9 9'><path d='M0 0h9v9h-9z' fill=\"" +
                                                 std::string(reference) + "\"/>" + definition + "</svg>",
                                             {"--width", "9"});
            EXPECT_EQ(Shown(picture.At(4, 4)), Shown(colour)) << definition;
        }
    }
}

TEST(Render, ShadesPixelsByHowMuchOfThemIsCovered) {
    const Picture picture =
        Rendered("<svg viewBox='0 0 4 2'><path d='M.5 0h3v1h-3z'/><path d='M0 1L4 2H0z' fill='#008'/></svg>",
                 {"--width", "4"});
    EXPECT_TRUE(Shows(
        picture, 4, 2,
        [](int x, int y) -> Rgba {
            if (y == 0) return x == 0 || x == 3 ? Rgba{128, 128, 128, 255} : Rgba{0, 0, 0, 255};
            const double covered = 1 - (x + 0.5) / 4;
            const auto level = static_cast<std::uint8_t>(std::lround(255 * (1 - covered)));
            return {level, level, static_cast<std::uint8_t>(std::lround(255 - 119 * covered)), 255};
        },
        16))
        << "to within half of an eighth of a pixel";
}

TEST(Render, SizesThePictureByThePageOrTheOutlines) {
    struct Row {
        const char* drawing;
        std::vector<std::string> arguments;
        int width, height;
    };
    for (const Row& row :
         {Row{"<svg viewBox='5 5 200 100'><path d='M0 0h9v9'/></svg>", {}, 1024, 512},
          {"<svg viewBox='5 5 100 200'><path d='M0 0h9v9'/></svg>", {}, 512, 1024},
          {"<svg width='90' height='30'><path d='M0 0h9v9'/></svg>", {"--width", "30"}, 30, 10},
          {"<svg viewBox='0 0 1e-6 1e8'><path d='M0 0h9v9'/></svg>", {}, 1, 1024},
          {"<svg viewBox='0 0 1 1e-6'><path d='M0 0h9v9'/></svg>", {"--width", "7"}, 7, 1},
          {"<svg><path d='M10 10h96v46h-96z'/></svg>", {"--width", "100"}, 100, 50},
          {"<svg><path d='M10 10v50'/></svg>", {"--width", "2"}, 2, 52}}) {
        const Picture picture = Rendered(row.drawing, row.arguments);
        EXPECT_EQ(picture.width, row.width) << row.drawing;
        EXPECT_EQ(picture.height, row.height) << row.drawing;
    }
    const Picture framed = Rendered("<svg><path d='M10 10h96v46h-96z'/></svg>", {"--width", "100"});
    EXPECT_EQ(framed.At(0, 0), WHITE);
    EXPECT_EQ(framed.At(50, 25), (Rgba{0, 0, 0, 255}));
}

TEST(Render, RefusesWhatItCannotDraw) {
    const std::string drawing = "<svg viewBox='0 0 1 1'><path d='M0 0h9v9'/></svg>";
    ExpectFailures({
        {"render - -o -", 1, "no outlines", "<svg/>"},
        {"render - -o - --max-pixels 99 --width 10", 1, "more than 99 pixels", drawing},
        {"render - -o -", 3, "standard input: not an SVG drawing", "no drawing"},
        {"render - -o out.svg", 2, "its ending is not .png"},
        {"render - -o - --width 0", 2, "--width"},
    });
}

TEST(Render, DrawsWhatIsFarAwayAndHuge) {
    const Picture picture = Rendered(
        "<svg viewBox='0 0 1e-5 1e-5'><path d='M-9e8 0L9e8 1e-5' stroke='red' stroke-width='9e8'/></svg>",
        {"--width", "5"});
    EXPECT_EQ(picture.At(2, 2), RED);
}

}  // namespace
}  // namespace tarvex::app::test
