// Three views of one design. SVG and PNG show the same things in the same colours.
#include "tarvex/stitch_writers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>

#include "tarvex/canvas.h"
#include "tarvex/decimal.h"
#include "tarvex/png_writer.h"
#include "tarvex/svg_paint.h"

namespace tarvex::app {

namespace {

using Line = std::vector<DPOINT>;

constexpr std::array<const char*, 6> REGION_COLOURS = {"#8ecae6", "#ffb703", "#b5e48c",
                                                       "#f4a6c0", "#cdb4db", "#ffd6a5"};
constexpr const char* FIRST_RAIL = "#d00000";
constexpr const char* SECOND_RAIL = "#0000d0";
constexpr const char* INCLINATION = "#202020";
constexpr const char* CUT = "#00a000";
constexpr const char* LEFT_OUT = "#bbbbbb";
constexpr double LINE_WIDTH = 0.002;  ///< of the longer side
constexpr int SAMPLES = 3;

struct Item {
    std::vector<Line> lines;
    const char* colour;
    bool isFilled;
};

struct DrawnLayer {
    const char* name;
    std::vector<Item> items;
};

void ForEachIsland(const StitchDesign& design, const std::function<void(const IslandBreakUp&)>& visit) {
    for (const StitchShape& shape : design.shapes) {
        for (const IslandBreakUp& island : shape.islands) visit(island);
    }
}

std::vector<Line> OutlineOf(const StitchRegion& region) {
    if (region.isRing) return {region.first, region.second};
    Line around = region.first;
    around.insert(around.end(), region.second.rbegin(), region.second.rend());
    around.push_back(around.front());
    return {around};
}

std::vector<DrawnLayer> Layers(const StitchDesign& design) {
    DrawnLayer leftOut{"not broken up", {}}, regions{"regions", {}}, rails{"rails", {}},
        inclinations{"inclinations", {}}, cuts{"cuts", {}};
    std::size_t colour = 0;
    ForEachIsland(design, [&](const IslandBreakUp& island) {
        if (island.end != BreakUpEnd::Done) leftOut.items.push_back({island.contours, LEFT_OUT, true});
        for (const StitchRegion& region : island.regions) {
            regions.items.push_back(
                {OutlineOf(region), REGION_COLOURS[colour++ % REGION_COLOURS.size()], true});
            rails.items.push_back({{region.first}, FIRST_RAIL, false});
            rails.items.push_back({{region.second}, SECOND_RAIL, false});
            Item lines{{}, INCLINATION, false};
            for (const auto& [a, b] : region.inclinations)
                lines.lines.push_back(
                    {region.first[static_cast<std::size_t>(a)], region.second[static_cast<std::size_t>(b)]});
            inclinations.items.push_back(std::move(lines));
        }
        Item lines{{}, CUT, false};
        for (const DLINE& cut : island.cuts) lines.lines.push_back({cut.p1, cut.p2});
        if (!lines.lines.empty()) cuts.items.push_back(std::move(lines));
    });
    return {leftOut, regions, inclinations, rails, cuts};
}

double LongerSide(const StitchDesign& design) { return std::max(design.width, design.height); }

std::string Number(double value) {
    constexpr int precision = 3;
    return std::string(DecimalText(ToUnits(value, precision), precision, LeadingZero::Kept).View());
}

std::string PathData(const Item& item) {
    std::string data;
    for (const Line& line : item.lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            data += i == 0 ? 'M' : i == 1 ? 'L' : ' ';
            data += Number(line[i].x) + ',' + Number(line[i].y);
        }
        if (item.isFilled) data += 'Z';
    }
    return data;
}

/// How a break-up ended, for programs and for people.
struct EndText {
    BreakUpEnd end;
    const char* name;
    const char* explanation;
};
constexpr std::array<EndText, 10> END_TEXTS = {{
    {BreakUpEnd::Done, "done", "broken up"},
    {BreakUpEnd::EmptyFrame, "empty-frame", "nothing is large enough"},
    {BreakUpEnd::NoRaster, "no-raster", "there is no memory for its rendering"},
    {BreakUpEnd::TooComplicated, "too-complicated",
     "the outline is too detailed for its size (see --no-complexity-check)"},
    {BreakUpEnd::TooManyLines, "too-many-lines", "the skeleton falls into 500 lines or more"},
    {BreakUpEnd::UncutJunction, "uncut-junction", "a junction of strokes could not be cut"},
    {BreakUpEnd::Aborted, "aborted", "interrupted"},
    {BreakUpEnd::TimedOut, "timed-out", "it takes more than 60 seconds"},
    {BreakUpEnd::TooManyPasses, "too-many-passes", "strokes still meet after six passes"},
    {BreakUpEnd::NotSplit, "not-split", "a region has no two sides to stitch between"},
}};

const EndText& TextOf(BreakUpEnd end) {
    const auto* found = std::find_if(END_TEXTS.begin(), END_TEXTS.end(),
                                     [end](const EndText& text) { return text.end == end; });
    return found == END_TEXTS.end() ? END_TEXTS.back() : *found;
}

CPolyPolyBezier AsContours(const std::vector<Line>& lines) {
    CPolyPolyBezier contours;
    for (const Line& line : lines) {
        auto contour = std::make_unique<CArray<BPOINT, BPOINT>>();
        contour->SetSize(static_cast<int>(line.size()));
        for (int i = 0; i < contour->GetSize(); ++i) {
            BPOINT& node = (*contour)[i];
            node.cp1 = node.pt = node.cp2 = line[static_cast<std::size_t>(i)];
        }
        contours.Add(std::move(contour));
    }
    return contours;
}

/// What the island's outer contour holds without its holes.
double AreaOf(const IslandBreakUp& island) {
    double area = 0;
    for (std::size_t i = 0; i < island.contours.size(); ++i) {
        const Line& contour = island.contours[i];
        double twice = 0;
        for (std::size_t k = 0; k < contour.size(); ++k) {
            const DPOINT &a = contour[k], &b = contour[(k + 1) % contour.size()];
            twice += a.x * b.y - b.x * a.y;
        }
        area += (i == 0 ? 0.5 : -0.5) * std::fabs(twice);
    }
    return area;
}

nlohmann::ordered_json PointsOf(const Line& line) {
    auto points = nlohmann::ordered_json::array();
    const auto rounded = [](double v) { return std::round(v * 1e4) / 1e4; };
    for (const DPOINT& p : line) points.push_back({rounded(p.x), rounded(p.y)});
    return points;
}

}  // namespace

std::string Explained(BreakUpEnd end) { return TextOf(end).explanation; }

std::string WriteStitchSvg(const StitchDesign& design) {
    const double lineWidth = LINE_WIDTH * LongerSide(design);
    std::string out =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" "
        "xmlns:inkscape=\"http://www.inkscape.org/namespaces/inkscape\""
        " width=\"" +
        Number(design.width * design.millimetresPerUnit) + "mm\" height=\"" +
        Number(design.height * design.millimetresPerUnit) + "mm\" viewBox=\"" + Number(design.corner.x) +
        ' ' + Number(design.corner.y) + ' ' + Number(design.width) + ' ' + Number(design.height) + "\">\n";
    for (const DrawnLayer& layer : Layers(design)) {
        if (layer.items.empty()) continue;
        out += std::string("<g inkscape:groupmode=\"layer\" inkscape:label=\"") + layer.name +
               "\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n";
        for (const Item& item : layer.items) {
            if (item.isFilled) {
                out += std::string("<path fill-rule=\"evenodd\" fill=\"") + item.colour + '"';
            } else {
                out += std::string("<path fill=\"none\" stroke=\"") + item.colour + "\" stroke-width=\"" +
                       Number(lineWidth) + '"';
            }
            out += " d=\"" + PathData(item) + "\"/>\n";
        }
        out += "</g>\n";
    }
    return out + "</svg>\n";
}

std::string WriteStitchPng(const StitchDesign& design, int side) {
    const double scale = side / LongerSide(design);
    const auto pixels = [scale](double length) {
        return std::max(1, static_cast<int>(std::ceil(length * scale)));
    };
    Canvas canvas(pixels(design.width), pixels(design.height), SAMPLES);
    canvas.SetView(design.corner, scale);
    for (const DrawnLayer& layer : Layers(design)) {
        for (const Item& item : layer.items) {
            const Rgba colour = ParseColour(item.colour).value_or(Rgba{});
            if (item.isFilled) {
                canvas.Fill(AsContours(item.lines), colour, FillRule::EvenOdd);
            } else {
                canvas.Stroke(AsContours(item.lines), colour, LINE_WIDTH * side);
            }
        }
    }
    return EncodePng(canvas.Average());
}

std::string WriteStitchJson(const StitchDesign& design) {
    using Json = nlohmann::ordered_json;
    Json shapes = Json::array();
    for (const StitchShape& shape : design.shapes) {
        Json islands = Json::array();
        for (const IslandBreakUp& island : shape.islands) {
            Json regions = Json::array(), cuts = Json::array();
            for (const StitchRegion& region : island.regions) {
                Json inclinations = Json::array();
                for (const auto& [a, b] : region.inclinations) inclinations.push_back({a, b});
                regions.push_back({{"ring", region.isRing},
                                   {"rails", {PointsOf(region.first), PointsOf(region.second)}},
                                   {"inclinations", std::move(inclinations)}});
            }
            for (const DLINE& cut : island.cuts) cuts.push_back({cut.p1.x, cut.p1.y, cut.p2.x, cut.p2.y});
            islands.push_back({{"result", TextOf(island.end).name},
                               {"area", AreaOf(island)},
                               {"pixelsPerUnit", island.pixelsPerUnit},
                               {"regions", std::move(regions)},
                               {"cuts", std::move(cuts)}});
        }
        shapes.push_back({{"colour", shape.colour}, {"islands", std::move(islands)}});
    }
    const Json all = {{"corner", {design.corner.x, design.corner.y}},
                      {"width", design.width},
                      {"height", design.height},
                      {"millimetresPerUnit", design.millimetresPerUnit},
                      {"shapes", std::move(shapes)}};
    return all.dump() + '\n';
}

}  // namespace tarvex::app
