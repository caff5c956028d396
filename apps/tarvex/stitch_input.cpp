// Pictures are traced; drawings give their own curves wherever the even-odd rule tells what they fill.
#include "tarvex/stitch_input.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

#include "tarvex/bezier.h"
#include "tarvex/canvas.h"
#include "tarvex/contours.h"
#include "tarvex/grey.h"
#include "tarvex/input.h"
#include "tarvex/measure.h"
#include "tarvex/picture.h"
#include "tarvex/polygons.h"
#include "tarvex/program_error.h"
#include "tarvex/stitch_design.h"
#include "tarvex/svg_reader.h"

namespace tarvex::app {

namespace {

/// The longer side of the rendering that a fill is compared with and, if need be, traced from.
constexpr int RENDERED_SIDE = 1500;
constexpr double MOST_DIFFERENCE = 0.01;  ///< of the area, between a fill and its contours
constexpr int SMALL_PICTURE = 128;

std::string Hex(const Rgba& colour) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", colour.red, colour.green, colour.blue);
    return text;
}

void Trace(const GreyView& picture, CPolyPolyBezier& out) {
    OutlineOptions options;
    options.threshold = OtsuThreshold(CountLevels(picture));
    options.side = FindShapeSide(picture, options.threshold);
    options.detail = std::max(picture.width, picture.height) <= SMALL_PICTURE ? 2 : 1;
    TraceOutlines(picture, options, out);
}

FilledShapes FromPicture(Picture picture) {
    FilledShapes result;
    result.width = picture.width;
    result.height = picture.height;
    result.millimetresPerUnit = MILLIMETRES_PER_PIXEL;
    const Ground ground = FindGround(picture);
    const GreyPicture grey(std::move(picture), ground);
    FilledShape shape;
    shape.colour = "#000000";
    Trace(grey.View(), shape.contours);
    if (!shape.contours.IsEmpty()) result.shapes.push_back(std::move(shape));
    return result;
}

/// What an attribute like width="80mm" says in millimetres; 0 when it does not say so.
double Millimetres(const char* text) {
    double value = 0;
    const char* end = text + std::string_view(text).size();
    const auto [unit, error] = std::from_chars(text, end, value);
    if (error != std::errc{} || !(value > 0)) return 0;
    const std::string_view name(unit, static_cast<std::size_t>(end - unit));
    static constexpr std::pair<std::string_view, double> units[] = {{"mm", 1},
                                                                    {"cm", 10},
                                                                    {"in", 25.4},
                                                                    {"pt", 25.4 / 72},
                                                                    {"pc", 25.4 / 6},
                                                                    {"px", MILLIMETRES_PER_PIXEL},
                                                                    {"", MILLIMETRES_PER_PIXEL}};
    for (const auto& [known, millimetres] : units) {
        if (name == known) return value * millimetres;
    }
    return 0;
}

/// The area that a picture's ink covers, black being all of a pixel.
double InkArea(const GreyView& picture) {
    double ink = 0;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* row = picture.Row(y);
        for (int x = 0; x < picture.width; ++x) ink += 255 - row[x];
    }
    return ink / 255;
}

/// The area inside by the even-odd rule of contours that do not cross.
double NestedArea(const CPolyPolyBezier& shape) {
    std::vector<CArray<DPOINT, DPOINT>> polygons;
    for (int i = 0; i < shape.GetCount(); ++i) {
        if (shape[i].GetSize() < 2) continue;
        polygons.emplace_back();
        GetPolyline(shape[i], polygons.back(), 0.5);
    }
    double area = 0;
    for (std::size_t i = 0; i < polygons.size(); ++i) {
        if (polygons[i].GetSize() < 3) continue;
        double twice = 0;
        for (int k = 1; k < polygons[i].GetSize(); ++k)
            twice += polygons[i][k - 1].x * polygons[i][k].y - polygons[i][k].x * polygons[i][k - 1].y;
        const auto& last = polygons[i][polygons[i].GetUpperBound()];
        twice += last.x * polygons[i][0].y - polygons[i][0].x * last.y;
        bool inside = false;
        for (std::size_t k = 0; k < polygons.size(); ++k) {
            if (k != i && IsPointInPolygon(polygons[k], polygons[i][0], nullptr) != 0) inside = !inside;
        }
        area += (inside ? -1 : 1) * std::fabs(twice) / 2;
    }
    return area;
}

/// Moves and scales all nodes.
template <class Map>
void MapNodes(CPolyPolyBezier& shape, Map map) {
    for (int i = 0; i < shape.GetCount(); ++i) {
        for (BPOINT& node : shape[i]) {
            node.pt = map(node.pt);
            node.cp1 = map(node.cp1);
            node.cp2 = map(node.cp2);
        }
    }
}

/// What an element fills, as contours that do not cross.
void TakeFill(const SvgElement& element, CPolyPolyBezier& out) {
    const auto frame = FrameOf(element.outline);
    if (!frame) return;
    const double side = std::max(frame->right - frame->left, frame->bottom - frame->top);
    if (!(side > 0)) return;
    const double scale = RENDERED_SIDE / side;
    constexpr double margin = 4;
    const auto toPicture = [&](const DPOINT& p) {
        return DPOINT{(p.x - frame->left) * scale + margin, (p.y - frame->top) * scale + margin};
    };
    const int width = static_cast<int>(std::ceil((frame->right - frame->left) * scale + 2 * margin));
    const int height = static_cast<int>(std::ceil((frame->bottom - frame->top) * scale + 2 * margin));
    Canvas canvas(width, height, 2);
    canvas.SetView({frame->left - margin / scale, frame->top - margin / scale}, scale);
    canvas.Fill(element.outline, {0, 0, 0, 255},
                element.paint.IsEvenOdd() ? FillRule::EvenOdd : FillRule::NonZero);
    const GreyPicture drawn(canvas.Average(), Ground::white);
    const double ink = InkArea(drawn.View());
    out.Copy(element.outline);
    MapNodes(out, toPicture);
    out.EnsureClosed();
    if (std::fabs(NestedArea(out) - ink) > MOST_DIFFERENCE * ink) {
        OutlineOptions options;
        TraceOutlines(drawn.View(), options, out);
    }
    MapNodes(out, [&](const DPOINT& p) {
        return DPOINT{(p.x - margin) / scale + frame->left, (p.y - margin) / scale + frame->top};
    });
}

FilledShapes FromDrawing(const SvgDocument& drawing) {
    FilledShapes result;
    result.remarks = drawing.remarks;
    std::optional<DRECT> frame;
    for (const SvgElement& element : drawing.elements) {
        const auto paint = element.paint.Fill();
        if (!element.isShown || element.isLines || !paint || paint->alpha == 0) continue;
        FilledShape shape;
        shape.colour = Hex(*paint);
        TakeFill(element, shape.contours);
        Unite(frame, FrameOf(shape.contours));
        if (!shape.contours.IsEmpty()) result.shapes.push_back(std::move(shape));
    }
    const DRECT page = drawing.page ? *drawing.page : frame.value_or(DRECT{0, 1, 0, 1});
    result.corner = {page.left, page.top};
    result.width = page.right - page.left;
    result.height = page.bottom - page.top;
    const double millimetres = Millimetres(drawing.xml->document_element().attribute("width").as_string());
    result.millimetresPerUnit = millimetres > 0 ? millimetres / result.width : MILLIMETRES_PER_PIXEL;
    return result;
}

}  // namespace

FilledShapes ReadFilledShapes(const std::string& path, std::uint64_t maxPixels) {
    const std::vector<std::uint8_t> bytes = ReadInput(path, {});
    try {
        if (LooksLikeSvg(bytes)) return FromDrawing(ParseSvg(bytes));
        return FromPicture(DecodePicture(bytes, {maxPixels}));
    } catch (const PictureError& error) {
        throw ProgramError(ExitStatus::File, InputName(path), error.what());
    } catch (const SvgError& error) {
        throw ProgramError(ExitStatus::File, InputName(path), error.what());
    }
}

}  // namespace tarvex::app
