// The small languages inside SVG's attributes.
#include "support/precompiled.h"

#include "tarvex/svg_text.h"

namespace tarvex::app::test {
namespace {

TEST(SvgText, LengthsAreInUserUnits) {
    const std::pair<const char*, double> lengths[] = {
        {"12", 12},     {" 12 ", 12}, {"-1.5px", -1.5},    {"1in", 96},           {"2.54cm", 96},
        {"25.4mm", 96}, {"72pt", 96}, {"6pc", 96},         {"2em", 32},           {"2ex", 16},
        {"25%", 50},    {"1e2", 100}, {"1e400", HUGE_VAL}, {"-1e400", -HUGE_VAL}, {"1e-400", 0},
    };
    for (const auto& [text, value] : lengths) {
        const auto length = ParseLength(text, 200);
        ASSERT_TRUE(length.has_value()) << text;
        if (std::isinf(value)) {
            EXPECT_EQ(*length, value) << text;
        } else {
            EXPECT_NEAR(*length, value, 1e-12) << text;
        }
    }
    for (const char* text :
         {"", " ", "px", "1 px", "1furlong", "1,2", "--1", "nan", "inf", "0x10", "1e", "1e+px"})
        EXPECT_FALSE(ParseLength(text, 200).has_value()) << text;
}

struct TransformCase {
    const char* text;
    DPOINT image;  // of 10, 20
};

TEST(SvgText, TransformsActFromTheRight) {
    const TransformCase cases[] = {
        {"", {10, 20}},
        {"translate(1)", {11, 20}},
        {"translate(1,2)", {11, 22}},
        {" translate ( 1 2 ) ", {11, 22}},
        {"scale(2)", {20, 40}},
        {"scale(2 3)", {20, 60}},
        {"rotate(90)", {-20, 10}},
        {"rotate(90, 10, 20)", {10, 20}},
        {"rotate(90 10 10)", {0, 10}},
        {"skewX(45)", {30, 20}},
        {"skewY(45)", {10, 30}},
        {"matrix(1 2 3 4 5 6)", {75, 106}},
        {"translate(1 2) scale(2)", {21, 42}},
        {"scale(2),translate(1 2)", {22, 44}},
        {"scale(2)translate(1-2)", {22, 36}},
    };
    for (const TransformCase& c : cases) {
        const auto transform = ParseTransform(c.text);
        ASSERT_TRUE(transform.has_value()) << c.text;
        const DPOINT image = (*transform)({10, 20});
        EXPECT_NEAR(image.x, c.image.x, 1e-12) << c.text;
        EXPECT_NEAR(image.y, c.image.y, 1e-12) << c.text;
    }
    for (const char* text : {"rotate", "rotate(", "rotate()", "rotate(1 2)", "spin(1)", "scale(1 2 3)",
                             "translate(1,)", "matrix(1 2 3)", "translate(1))", "translate(1),",
                             "translate(1px)", "(1)", "translate(1,,2)", "skewX(1 2)"}) {
        EXPECT_FALSE(ParseTransform(text).has_value()) << text;
    }
}

TEST(SvgText, StyleDeclarationsAreFoundAndReplacedAndTheRestIsLeft) {
    const char* style =
        " fill : red;stroke-width:2 ; a:url(\"x;stroke-width:9\");b:url(data:x;y);stroke-width: 3;";
    EXPECT_EQ(StyleValue(style, "fill"), "red");
    EXPECT_EQ(StyleValue(style, "stroke-width"), "3") << "the last one counts";
    EXPECT_EQ(StyleValue(style, "stroke"), std::nullopt);
    EXPECT_EQ(StyleValue("", "fill"), std::nullopt);
    EXPECT_EQ(WithStyleValue(style, "stroke-width", "7"),
              "fill : red;a:url(\"x;stroke-width:9\");b:url(data:x;y);stroke-width:7");
    EXPECT_EQ(WithStyleValue("", "fill", "none"), "fill:none");
    EXPECT_EQ(StyleValue("a:url(never closed;fill:red", "fill"), std::nullopt);
    EXPECT_EQ(StyleValue("a:'never closed;fill:red", "fill"), std::nullopt);
}

}  // namespace
}  // namespace tarvex::app::test
