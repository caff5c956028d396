#include "tarvex/info_command.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "tarvex/input.h"
#include "tarvex/measure.h"
#include "tarvex/nodes.h"
#include "tarvex/picture_formats.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"
#include "tarvex/svg_reader.h"

namespace tarvex::app {

namespace {

using Json = nlohmann::ordered_json;

struct Measures {
    int contours = 0;
    int closed = 0;
    std::int64_t nodes = 0;
    std::optional<DRECT> frame;
    double length = 0;
    double signedArea = 0;
    bool hasClockwise = false;
    bool hasCounterClockwise = false;

    void Add(const Measures& other) {
        contours += other.contours;
        closed += other.closed;
        nodes += other.nodes;
        Unite(frame, other.frame);
        length += other.length;
        signedArea += other.signedArea;
        hasClockwise = hasClockwise || other.hasClockwise;
        hasCounterClockwise = hasCounterClockwise || other.hasCounterClockwise;
    }

    const char* Winding() const {
        if (hasClockwise) return hasCounterClockwise ? "mixed" : "clockwise";
        return hasCounterClockwise ? "counter-clockwise" : "none";
    }
};

/// An area this small against the contour's length squared is the rounding of none.
constexpr double NO_AREA = 1e-12;

Measures MeasuresOf(ContourView nodes) {
    const bool isClosed = nodes.front().pt == nodes.back().pt;
    Measures m;
    m.contours = 1;
    m.closed = isClosed ? 1 : 0;
    m.nodes = static_cast<std::int64_t>(nodes.size()) - m.closed;
    m.frame = FrameOf(nodes);
    m.length = GetBezierLength(nodes);
    m.signedArea = GetBezierArea(nodes);
    const double least = NO_AREA * m.length * m.length;
    m.hasClockwise = m.signedArea > least;
    m.hasCounterClockwise = m.signedArea < -least;
    return m;
}

Measures MeasuresOf(const CPolyPolyBezier& shape) {
    Measures all;
    for (int i = 0; i < shape.GetSize(); ++i) all.Add(MeasuresOf(ContourView(shape[i])));
    return all;
}

double Rounded(double value) {
    const double rounded = std::round(value * 1e6) / 1e6;
    return rounded == 0 ? 0 : rounded;  // no "-0"
}

void AddTo(Json& json, const Measures& m) {
    json["contours"] = m.contours;
    json["closed"] = m.closed;
    json["nodes"] = m.nodes;
    json["frame"] = nullptr;
    if (m.frame)
        json["frame"] = {Rounded(m.frame->left), Rounded(m.frame->top), Rounded(m.frame->right),
                         Rounded(m.frame->bottom)};
    json["length"] = Rounded(m.length);
    json["area"] = Rounded(std::fabs(m.signedArea));
    json["winding"] = m.Winding();
}

/// A number for people: up to three decimals, and none that are 0.
std::string Short(double value) {
    char text[400];
    std::snprintf(text, sizeof text, "%.3f", value);
    std::string number = text;
    number.erase(number.find_last_not_of('0') + 1);
    if (number.back() == '.') number.pop_back();
    return number == "-0" ? "0" : number;
}

std::string FrameText(const std::optional<DRECT>& frame) {
    if (!frame) return "none";
    return Short(frame->left) + "," + Short(frame->top) + " to " + Short(frame->right) + "," +
           Short(frame->bottom);
}

std::string SizeText(const DRECT& frame) {
    return Short(frame.right - frame.left) + " x " + Short(frame.bottom - frame.top);
}

/// Rows of cells, in columns as wide as their longest cell; the first `textColumns` to the left.
std::string Table(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string out;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i > 0) line += "  ";
            line += row[i] + std::string(widths[i] - row[i].size(), ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out += line + '\n';
    }
    return out;
}

struct ElementMeasures {
    const SvgElement* element;
    Measures measures;
};

std::string DrawingAsText(const std::string& name, const SvgDocument& drawing,
                          const std::vector<ElementMeasures>& elements, const Measures& all) {
    std::string out = Printable(name) + ": SVG drawing";
    if (drawing.page) out += ", " + SizeText(*drawing.page);
    out += "\n\n";
    out +=
        Table({{"  elements", std::to_string(elements.size())},
               {"  contours", std::to_string(all.contours) + " (" + std::to_string(all.closed) + " closed)"},
               {"  nodes", std::to_string(all.nodes)},
               {"  frame", FrameText(all.frame) + (all.frame ? " (" + SizeText(*all.frame) + ")" : "")},
               {"  length", Short(all.length)},
               {"  area", Short(std::fabs(all.signedArea))},
               {"  winding", all.Winding()}});
    if (elements.empty()) return out;
    std::vector<std::vector<std::string>> rows = {
        {"element", "id", "contours", "nodes", "frame", "length", "area", "winding"}};
    for (const auto& [element, m] : elements) {
        rows.push_back({element->kind, element->id.empty() ? "-" : Printable(element->id),
                        std::to_string(m.contours), std::to_string(m.nodes), FrameText(m.frame),
                        Short(m.length), Short(std::fabs(m.signedArea)), m.Winding()});
    }
    return out + '\n' + Table(rows);
}

Json DrawingAsJson(const std::string& file, const SvgDocument& drawing,
                   const std::vector<ElementMeasures>& elements, const Measures& all) {
    Json json;
    json["file"] = file;
    json["kind"] = "drawing";
    json["page"] = nullptr;
    if (const auto& page = drawing.page)
        json["page"] = {Rounded(page->left), Rounded(page->top), Rounded(page->right - page->left),
                        Rounded(page->bottom - page->top)};
    AddTo(json, all);
    json["elements"] = Json::array();
    for (const auto& [element, m] : elements) {
        Json one;
        one["element"] = element->kind;
        one["id"] = nullptr;
        if (!element->id.empty()) one["id"] = element->id;
        AddTo(one, m);
        json["elements"].push_back(std::move(one));
    }
    json["remarks"] = nullptr;
    if (!drawing.remarks.empty()) json["remarks"] = drawing.remarks;
    return json;
}

std::string AsText(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string DrawingInfo(const InfoOptions& options, const SvgDocument& drawing) {
    std::vector<ElementMeasures> elements;
    Measures all;
    for (const SvgElement& element : drawing.elements) {
        if (!element.isShown) continue;
        elements.push_back({&element, MeasuresOf(element.outline)});
        all.Add(elements.back().measures);
    }
    if (options.asJson) return AsText(DrawingAsJson(options.input, drawing, elements, all));
    return DrawingAsText(InputName(options.input), drawing, elements, all);
}

const char* NameOf(PictureKind kind) {
    switch (kind) {
        case PictureKind::Png:
            return "PNG";
        case PictureKind::Jpeg:
            return "JPEG";
        case PictureKind::Bmp:
            return "BMP";
        case PictureKind::Netpbm:
            return "PNM";
        case PictureKind::Unknown:
            break;
    }
    return "unknown";
}

const char* NameOf(PixelFormat format) {
    switch (format) {
        case PixelFormat::Bit1:
            return "black and white";
        case PixelFormat::Grey8:
            return "grey";
        case PixelFormat::GreyAlpha8:
            return "grey with alpha";
        case PixelFormat::Rgb8:
            return "RGB";
        case PixelFormat::Rgba8:
            break;
    }
    return "RGB with alpha";
}

std::string PictureInfo(const InfoOptions& options, PictureKind kind, const Picture& picture) {
    if (options.asJson) {
        Json json;
        json["file"] = options.input;
        json["kind"] = "picture";
        json["format"] = NameOf(kind);
        json["width"] = picture.width;
        json["height"] = picture.height;
        json["pixels"] = NameOf(picture.format);
        return AsText(json);
    }
    return Printable(InputName(options.input)) + ": " + NameOf(kind) + " picture, " +
           std::to_string(picture.width) + " x " + std::to_string(picture.height) + " pixels, " +
           NameOf(picture.format) + '\n';
}

bool IsKnown(Bytes start) { return PictureKindOf(start) != PictureKind::Unknown || LooksLikeSvg(start); }

std::vector<std::uint8_t> Read(const InfoOptions& options) {
    InputLimits limits;
    const std::uint64_t ofPicture = std::min(options.maxPixels, std::uint64_t{1} << 40) * 16;
    limits.maxBytes = MAX_SVG_BYTES + ofPicture;
    limits.sniffedBytes = 64;
    limits.isWorthReading = IsKnown;
    return ReadInput(options.input, limits);
}

}  // namespace

std::string InfoText(const InfoOptions& options) {
    const std::vector<std::uint8_t> bytes = Read(options);
    const PictureKind kind = PictureKindOf(bytes);
    try {
        if (kind != PictureKind::Unknown)
            return PictureInfo(options, kind, DecodePicture(bytes, {options.maxPixels}));
        if (!bytes.empty() && !IsKnown(bytes) && bytes[0] != 0x1F)
            throw SvgError("neither an SVG drawing nor a picture this program reads (PNG, JPEG, BMP or PNM)");
        const SvgDocument drawing = ParseSvg(bytes);
        if (!options.asJson) ReportRemarks(options.input, drawing.remarks);
        return DrawingInfo(options, drawing);
    } catch (const SvgError& error) {
        throw ProgramError(ExitStatus::File, InputName(options.input), error.what());
    } catch (const PictureError& error) {
        throw ProgramError(ExitStatus::File, InputName(options.input), error.what());
    }
}

}  // namespace tarvex::app
