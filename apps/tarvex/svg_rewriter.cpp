#include "tarvex/svg_rewriter.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "tarvex/decimal.h"
#include "tarvex/measure.h"
#include "tarvex/svg_text.h"

namespace tarvex::app {

namespace {

/// Nearer to 1 than this is no change of scale.
constexpr double SCALE_SLACK = 1e-9;

std::string Decimal(double value, int precision) {
    return std::string(DecimalText(ToUnits(value, precision), precision, LeadingZero::Kept).View());
}

/// The same name with the prefix that the node's has, and `local` after it.
std::string Renamed(const pugi::xml_node& node, std::string_view local) {
    const std::string_view name = node.name();
    const std::size_t colon = name.find(':');
    return std::string(name.substr(0, colon == name.npos ? 0 : colon + 1)) + std::string(local);
}

void SetAttribute(pugi::xml_node node, const char* name, const std::string& value) {
    pugi::xml_attribute attribute = node.attribute(name);
    if (!attribute) attribute = node.append_attribute(name);
    attribute.set_value(value.c_str());
}

/// Sets a property where it is declared: in the style, which wins, or as an attribute.
void SetProperty(pugi::xml_node node, const char* name, const std::string& value) {
    const pugi::xml_attribute style = node.attribute("style");
    if (StyleValue(style.value(), name)) {
        SetAttribute(node, "style", WithStyleValue(style.value(), name, value));
    } else {
        SetAttribute(node, name, value);
    }
}

bool IsRescaled(const SvgElement& element, double scale) {
    return element.stroke.isPainted && element.stroke.isScaled &&
           std::fabs(element.scale * scale - 1) > SCALE_SLACK;
}

double StrokeWidth(const SvgElement& element, double scale) {
    if (!element.stroke.isPainted) return 0;
    const auto& width = element.stroke.lengths[0];
    const double own = width && !width->empty() ? std::max(0.0, width->front()) : 1;
    return element.stroke.isScaled ? own * element.scale * scale : own;
}

void ScaleStroke(const SvgElement& element, double scale, int precision) {
    if (!IsRescaled(element, scale)) return;
    for (std::size_t i = 0; i < STROKE_LENGTHS.size(); ++i) {
        const bool isWidth = i == 0;  // which is 1 when nobody says
        if (!element.stroke.lengths[i] && !isWidth) continue;
        const std::vector<double> lengths = element.stroke.lengths[i].value_or(std::vector<double>{1});
        std::string text;
        for (const double length : lengths) {
            if (!text.empty()) text += ' ';
            text += Decimal(length * element.scale * scale, std::min(precision + 1, MAX_PRECISION));
        }
        SetProperty(element.node, STROKE_LENGTHS[i], text);
    }
}

void BecomePath(const SvgElement& element, int precision) {
    static constexpr const char* GEOMETRY[] = {"transform", "d",  "x",  "y",     "width", "height",
                                               "cx",        "cy", "r",  "rx",    "ry",    "x1",
                                               "y1",        "x2", "y2", "points"};
    pugi::xml_node node = element.node;
    for (const char* name : GEOMETRY) node.remove_attribute(name);
    node.set_name(Renamed(node, "path").c_str());
    std::vector<ContourView> contours;
    for (int i = 0; i < element.outline.GetSize(); ++i) contours.emplace_back(element.outline[i]);
    SetAttribute(node, "d", SvgPathData(contours, precision));
    if (element.isLines)
        SetAttribute(node, "style", WithStyleValue(node.attribute("style").value(), "fill", "none"));
}

void BecomeGroup(pugi::xml_node node) {
    const std::string_view name = node.name();
    const bool isNested = name == "svg" || (name.size() > 4 && name.substr(name.size() - 4) == ":svg");
    node.remove_attribute("transform");
    if (!isNested) return;
    for (const char* attribute : {"x", "y", "width", "height", "viewBox", "preserveAspectRatio"})
        node.remove_attribute(attribute);
    node.set_name(Renamed(node, "g").c_str());
}

/// A size attribute of the root times `growth`, in its own unit; one in percent, or none, stays.
void GrowSize(pugi::xml_node root, const char* name, double growth, int precision) {
    const std::string_view text = root.attribute(name).value();
    SvgScanner scanner(text);
    scanner.SkipSpaces();
    const auto number = scanner.Number();
    if (!number || !ParseLength(text, 0) || scanner.Peek() == '%') return;
    SetAttribute(root, name, Decimal(*number * growth, precision) + std::string(scanner.Rest()));
}

/// `page` with its edges moved outwards to whole units of the last decimal, so that nothing of it is cut.
DRECT RoundedOutwards(const DRECT& page, const std::optional<DRECT>& old, int precision) {
    const double unit = std::pow(10, -precision);
    const auto outwards = [&](double v, double kept, bool isKept, double (*round)(double)) {
        return isKept && v == kept ? v : round(v / unit) * unit;
    };
    const DRECT base = old.value_or(DRECT{});
    const auto down = [](double v) { return std::floor(v); };
    const auto up = [](double v) { return std::ceil(v); };
    return {outwards(page.left, base.left, old.has_value(), down),
            outwards(page.right, base.right, old.has_value(), up),
            outwards(page.top, base.top, old.has_value(), down),
            outwards(page.bottom, base.bottom, old.has_value(), up)};
}

void GrowPage(const SvgDocument& drawing, const std::optional<DRECT>& needed, int precision) {
    if (!needed) return;
    const DRECT page = RoundedOutwards(*needed, drawing.page, precision);
    const auto& old = drawing.page;
    if (old && old->left == page.left && old->right == page.right && old->top == page.top &&
        old->bottom == page.bottom) {
        return;
    }
    const double width = page.right - page.left;
    const double height = page.bottom - page.top;
    pugi::xml_node root = drawing.xml->document_element();
    SetAttribute(root, "viewBox",
                 Decimal(page.left, precision) + ' ' + Decimal(page.top, precision) + ' ' +
                     Decimal(width, precision) + ' ' + Decimal(height, precision));
    if (!old) return;
    GrowSize(root, "width", width / (old->right - old->left), precision);
    GrowSize(root, "height", height / (old->bottom - old->top), precision);
}

void RequireFinite(const SvgElement& element) {
    constexpr double most = MAX_SVG_COORDINATE * 1000;
    for (int i = 0; i < element.outline.GetSize(); ++i) {
        for (const BPOINT& node : element.outline[i]) {
            for (const double v : {node.cp1.x, node.cp1.y, node.pt.x, node.pt.y, node.cp2.x, node.cp2.y}) {
                if (!(std::fabs(v) < most)) throw SvgError("the result is too large to be written");
            }
        }
    }
}

struct TextWriter : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
};

}  // namespace

int PrecisionFor(double size) {
    constexpr double parts = 20'000;
    int precision = 2;
    for (double unit = 0.01; precision < MAX_PRECISION && size < unit * parts; unit /= 10) ++precision;
    return precision;
}

std::optional<DRECT> PageWithOutlines(const SvgDocument& drawing, double scale) {
    std::optional<DRECT> page = drawing.page;
    for (const SvgElement& element : drawing.elements) {
        if (!element.isShown) continue;
        const auto frame = FrameOf(element.outline);
        if (!frame) continue;
        const double margin = StrokeWidth(element, scale) / 2;
        Unite(page, DRECT{frame->left - margin, frame->right + margin, frame->top - margin,
                          frame->bottom + margin});
    }
    return page;
}

std::string WriteDrawing(SvgDocument& drawing, const RewriteOptions& options) {
    for (const SvgElement& element : drawing.elements) RequireFinite(element);
    const std::optional<DRECT> page = PageWithOutlines(drawing, options.scale);
    const double size = page ? std::max(page->right - page->left, page->bottom - page->top) : 0;
    const int precision = options.precision.value_or(PrecisionFor(size));
    for (const SvgElement& element : drawing.elements) {
        ScaleStroke(element, options.scale, precision);
        BecomePath(element, precision);
    }
    for (const pugi::xml_node& container : drawing.containers) BecomeGroup(container);
    for (const pugi::xml_node& node : drawing.leftOut) node.parent().remove_child(node);
    GrowPage(drawing, page, precision);

    const pugi::xml_node first = drawing.xml->first_child();
    if (first.type() == pugi::node_declaration) {
        pugi::xml_attribute encoding = first.attribute("encoding");
        if (encoding) encoding.set_value("UTF-8");
    }
    TextWriter writer;
    drawing.xml->save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    writer.text += '\n';
    return std::move(writer.text);
}

}  // namespace tarvex::app
