// Drawings as outlines: every kind of element, what it inherits, and what must not be read.
#include "support/precompiled.h"

#include "tarvex/measure.h"
#include "tarvex/svg_reader.h"

namespace tarvex::app::test {
namespace {

SvgDocument Parse(const std::string& text) {
    return ParseSvg({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::string Root(const std::string& content, const std::string& attributes = "viewBox='0 0 200 100'") {
    return "<svg xmlns='http://www.w3.org/2000/svg' " + attributes + ">" + content + "</svg>";
}

std::string Text(const std::optional<DRECT>& r) {
    if (!r) return "none";
    const auto text = [](double v) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.4g", std::fabs(v) < 1e-9 ? 0 : v);
        return std::string(digits);
    };
    return text(r->left) + "," + text(r->top) + " " + text(r->right) + "," + text(r->bottom);
}

/// "kind left,top right,bottom" of each element that is shown.
std::string Outlines(const SvgDocument& drawing) {
    std::string text;
    for (const SvgElement& element : drawing.elements) {
        if (!element.isShown) continue;
        if (!text.empty()) text += "; ";
        text += element.kind + " " + Text(FrameOf(element.outline));
    }
    return text;
}

struct ReaderCase {
    const char* content;
    const char* outlines;
};

void ExpectOutlines(std::span<const ReaderCase> cases) {
    for (const ReaderCase& c : cases) {
        SCOPED_TRACE(c.content);
        EXPECT_EQ(Outlines(Parse(Root(c.content))), c.outlines);
    }
}

TEST(SvgReader, EveryKindOfElementIsRead) {
    const ReaderCase cases[] = {
        {"<path d='M1 2L3 4'/>", "path 1,2 3,4"},
        {"<rect x='1' y='2' width='3' height='4'/>", "rect 1,2 4,6"},
        {"<rect width='10' height='10' rx='2'/>", "rect 0,0 10,10"},
        {"<rect x='50%' y='50%' width='50%' height='10%'/>", "rect 100,50 200,60"},
        {"<rect width='1in' height='10mm'/>", "rect 0,0 96,37.8"},
        {"<circle cx='10' cy='20' r='5'/>", "circle 5,15 15,25"},
        {"<ellipse cx='10' cy='20' rx='5' ry='2'/>", "ellipse 5,18 15,22"},
        {"<ellipse rx='5'/>", "ellipse -5,-5 5,5"},
        {"<ellipse rx='5' ry='auto'/>", "ellipse -5,-5 5,5"},
        {"<line x1='1' y1='2' x2='3'/>", "line 1,0 3,2"},
        {"<polyline points='1,2 3 4,5-6'/>", "polyline 1,-6 5,4"},
        {"<polygon points=' 1 2 , 3 4 '/>", "polygon 1,2 3,4"},
        {"<rect/><circle/><path/><polygon/><ellipse/><rect width='-1' height='2'/>", ""},
    };
    ExpectOutlines(cases);
}

TEST(SvgReader, TransformsOfGroupsAndViewportsAreApplied) {
    const ReaderCase cases[] = {
        {"<g transform='translate(10)'><a><rect width='1' height='1' transform='scale(2)'/></a></g>",
         "rect 10,0 12,2"},
        {"<g transform='scale(2)'><g transform='translate(10 5)'><rect width='1' height='1'/></g>"
         "<rect width='1' height='1'/></g>",
         "rect 20,10 22,12; rect 0,0 2,2"},
        {"<rect x='1' width='1' height='2' transform='rotate(90)'/>", "rect -2,1 0,2"},
        {"<switch><g><line x2='2'/></g></switch>", "line 0,0 2,0"},
        {"<svg x='10' y='20'><line x2='2'/></svg>", "line 10,20 12,20"},
        {"<svg width='100' height='50'><line x2='50%'/></svg>", "line 0,0 50,0"},
        {"<svg width='100' height='50' viewBox='0 0 10 10'><rect width='10' height='10'/></svg>",
         "rect 25,0 75,50"},
        {"<svg width='100' height='50' viewBox='5 5 10 10' preserveAspectRatio='none'>"
         "<rect width='10' height='10'/></svg>",
         "rect -50,-25 50,25"},
        {"<svg width='100' height='50' viewBox='0 0 10 10' preserveAspectRatio='xMaxYMin'>"
         "<rect width='10' height='10'/></svg>",
         "rect 50,0 100,50"},
        {"<svg width='100' height='50' viewBox='0 0 10 10' preserveAspectRatio='xMinYMax slice'>"
         "<rect width='10' height='10'/></svg>",
         "rect 0,-50 100,50"},
    };
    ExpectOutlines(cases);
}

TEST(SvgReader, WhatDrawsNothingIsNotRead) {
    const ReaderCase cases[] = {
        {"<defs><rect width='1' height='1'/></defs>", ""},
        {"<symbol><rect width='1' height='1'/></symbol><clipPath><circle r='3'/></clipPath>", ""},
        {"<mask><rect width='1' height='1'/></mask><pattern><circle r='3'/></pattern><marker><circle "
         "r='1'/></marker>",
         ""},
        {"<g display='none'><rect width='1' height='1'/></g>", ""},
        {"<g style='display: none'><rect width='1' height='1' display='inline'/></g>", ""},
        {"<g visibility='hidden'><circle r='1'/><circle r='2' visibility='visible'/></g>",
         "circle -2,-2 2,2"},
        {"<x:rect xmlns:x='elsewhere' width='1' height='1'/>", ""},
    };
    ExpectOutlines(cases);
    EXPECT_EQ(
        Outlines(Parse(
            "<s:svg xmlns:s='http://www.w3.org/2000/svg'><s:g><s:circle r='1'/></s:g><circle/></s:svg>")),
        "circle -1,-1 1,1");
}

TEST(SvgReader, WhatIsLeftOutOrDamagedIsReported) {
    EXPECT_EQ(Parse(Root("<circle r='1'/>")).remarks, "");
    EXPECT_EQ(Parse(Root("<text/><use/><g><text><tspan/></text></g><image/><foreignObject/>")).remarks,
              "left out, being no outlines: 1 foreignObject, 1 image, 2 text, 1 use");
    const SvgDocument damaged = Parse(
        Root("<text/><path id='p' d='M0 0h1x'/><polyline id='l' points='0 0 1 1 2'/><circle id='c' r='wide'/>"
             "<rect id='r' width='1' height='1' transform='spin(1)'/>"));
    EXPECT_EQ(damaged.remarks,
              "left out, being no outlines: 1 text; "
              "damaged, and taken as far as it is sound: 1 length (in circle \"c\"), "
              "1 path data (in path \"p\"), 1 point list (in polyline \"l\"), 1 transform (in rect \"r\")");
    EXPECT_EQ(Outlines(damaged), "path 0,0 1,0; polyline 0,0 1,1; rect 0,0 1,1");
}

TEST(SvgReader, ThePageIsTheViewBoxOrTheSizeInPixels) {
    const std::pair<const char*, const char*> pages[] = {
        {"viewBox='1,2 3 4' width='10' height='10'", "1,2 4,6"},
        {"width='10' height='1in'", "0,0 10,96"},
        {"width='10'", "none"},
        {"", "none"},
        {"width='100%' height='100%'", "none"},
        {"viewBox='0 0 0 5'", "none"},
        {"viewBox='0 0 1e400 5'", "none"},
        {"viewBox='0 0 5' width='1' height='2'", "0,0 1,2"},
        {"width='-1' height='2'", "none"},
    };
    for (const auto& [attributes, page] : pages)
        EXPECT_EQ(Text(Parse(Root("", attributes)).page), page) << attributes;
}

TEST(SvgReader, StrokesAreInheritedWithTheScaleOfTheirElement) {
    const SvgDocument drawing =
        Parse(Root("<g stroke='red' stroke-width='2' transform='scale(3 12)'><circle r='1'/>"
                   "<circle r='1' style='stroke:none' stroke='blue'/>"
                   "<circle r='1' vector-effect='non-scaling-stroke' "
                   "style='stroke-width:1in;stroke-dasharray:1,2 3'/></g>"));
    ASSERT_EQ(drawing.elements.size(), 3u);
    const auto& e = drawing.elements;
    EXPECT_NEAR(e[0].scale, 6, 1e-12);
    EXPECT_TRUE(e[0].stroke.isPainted);
    EXPECT_EQ(e[0].stroke.lengths[0], std::vector<double>{2});
    EXPECT_EQ(e[0].stroke.lengths[1], std::nullopt);
    EXPECT_FALSE(e[1].stroke.isPainted);
    EXPECT_FALSE(e[2].stroke.isScaled);
    EXPECT_EQ(e[2].stroke.lengths[0], std::vector<double>{96});
    EXPECT_EQ(e[2].stroke.lengths[1], (std::vector<double>{1, 2, 3}));
}

TEST(SvgReader, DeclaredEntitiesOfPlainTextArePutInOnce) {
    const std::string drawing =
        "<!DOCTYPE svg PUBLIC \"-//x>\" \"y\" [ <!ENTITY ns 'http://www.w3.org/2000/svg'> <!ENTITY r \"7\">\n"
        "<!ENTITY % p 'q'> <!ENTITY far SYSTEM 'file:///etc/passwd'> <!ENTITY two '&r;&r;'> ]>"
        "<svg xmlns='&ns;'><circle r='&r;'/><circle r='&two;'/><circle r='&far;'/><circle r='&#49;'/></svg>";
    EXPECT_EQ(Outlines(Parse(drawing)), "circle -7,-7 7,7; circle -1,-1 1,1");
}

TEST(SvgReader, HostileDrawingsAreRefusedQuickly) {
    const auto nested = [](int depth) {
        std::string text;
        for (int i = 0; i < depth; ++i) text += "<g>";
        text += "<circle r='1'/>";
        for (int i = 0; i < depth; ++i) text += "</g>";
        return Root(text);
    };
    EXPECT_EQ(Outlines(Parse(nested(200))), "circle -1,-1 1,1");
    std::string bomb = "<!DOCTYPE svg [<!ENTITY a '" + std::string(1 << 20, 'x') + "'>]><svg><path d='";
    for (int i = 0; i < 1000; ++i) bomb += "&a;";
    bomb += "'/></svg>";
    const std::pair<std::string, const char*> cases[] = {
        {"", "the file is empty"},
        {"svg", "not an SVG drawing; of a picture, tarvex trace makes one"},
        {"\x1f\x8b\x08", "gunzip"},
        {"<html/>", "its root element is not svg"},
        {"<a:svg xmlns:a='b'><c:d/></a:svg", "damaged XML"},
        {"<svg><g></svg>", "damaged XML"},
        {"<svg><circle r='1'", "damaged XML"},
        {"<!-- no root -->", "damaged XML"},
        {nested(100'000), "nested deeper than 256"},
        {"<svg><text>" + nested(1000) + "</text></svg>", "nested deeper than 256"},
        {bomb, "entities make it too long"},
        {Root("<rect width='1e9' height='1'/>"), "reach 1e9"},
        {Root("<path d='M0 0L1e999 0'/>"), "reach 1e9"},
        {Root("<g transform='scale(1e200)'><g transform='scale(1e200)'><rect width='1' height='1'/></g></g>"),
         "reach 1e9"},
        {Root("<path d='M-1e308-1e308l1e308 1e308-1e308-1e308-1e308-1e308A1e308 1e308 1e308 1 1 5 5'/>"),
         "reach 1e9"},
        {Root("<path d='M0 0A1e-320 1e-320 0 1 1 1e-320 0A1e300 1 0 1 1 1e300 0'/>"), "reach 1e9"},
    };
    for (const auto& [text, message] : cases) {
        SCOPED_TRACE(text.substr(0, 100));
        try {
            Parse(text);
            ADD_FAILURE() << "was read";
        } catch (const SvgError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(message));
        }
    }
}

}  // namespace
}  // namespace tarvex::app::test
