// The walk over the XML tree. What an element inherits (the transform, the viewport that percentages
// refer to, stroke and paint) is passed down by value. The tree's depth is checked before, without recursion,
// so the walk can recurse.
#include "tarvex/svg_reader.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <map>
#include <string_view>
#include <utility>

#include "tarvex/input.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"
#include "tarvex/svg_gradient.h"
#include "tarvex/svg_path.h"
#include "tarvex/svg_property.h"
#include "tarvex/svg_text.h"
#include "tarvex/view.h"
#include "tarvex/xml_entities.h"

namespace tarvex::app {

namespace {

using Bytes = std::span<const std::uint8_t>;

struct Size {
    double width = 100;
    double height = 100;

    double Diagonal() const { return std::sqrt((width * width + height * height) / 2); }
};

struct Inherited {
    Affine toRoot;
    Size viewport;
    bool isShown = true;
    bool isVisible = true;
    SvgStroke stroke;
    SvgPaint paint;
};

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

class DepthCheck : public pugi::xml_tree_walker {
  public:
    bool for_each(pugi::xml_node&) override { return depth() < MAX_SVG_DEPTH; }
};

bool RefersToOthers(const pugi::xml_node& node) {
    for (const pugi::xml_attribute& attribute : node.attributes()) {
        const std::string_view name = attribute.name();
        if (name.substr(0, 6) == "marker") continue;
        if (std::string_view(attribute.value()).find("url(") != std::string_view::npos) return true;
    }
    return false;
}

std::optional<DRECT> ViewBox(const pugi::xml_node& node) {
    const auto numbers = ParseNumbers(node.attribute("viewBox").value());
    if (!numbers || numbers->size() != 4) return std::nullopt;
    const std::vector<double>& n = *numbers;
    const auto isTooFar = [](double v) { return !(std::fabs(v) < MAX_SVG_COORDINATE); };
    if (std::any_of(n.begin(), n.end(), isTooFar) || !(n[2] > 0) || !(n[3] > 0)) return std::nullopt;
    return DRECT{n[0], n[0] + n[2], n[1], n[1] + n[3]};
}

/// Where on a free space of 1 the alignment (xMin, Mid, Max) puts what it aligns.
double AlignmentOf(std::string_view word) { return word == "Min" ? 0 : word == "Max" ? 1 : 0.5; }

/// From a view box to the viewport that shows it, by the rules of preserveAspectRatio.
Affine ViewBoxTransform(const DRECT& box, const Size& viewport, std::string_view aspect) {
    double sx = viewport.width / (box.right - box.left);
    double sy = viewport.height / (box.bottom - box.top);
    double x = 0;
    double y = 0;
    if (aspect.substr(0, 4) != "none") {
        const bool isCut = aspect.find("slice") != aspect.npos;
        sx = sy = isCut ? std::max(sx, sy) : std::min(sx, sy);
        const bool isNamed = aspect.size() >= 8 && aspect[0] == 'x' && aspect[4] == 'Y';
        x = AlignmentOf(isNamed ? aspect.substr(1, 3) : "Mid") *
            (viewport.width - sx * (box.right - box.left));
        y = AlignmentOf(isNamed ? aspect.substr(5, 3) : "Mid") *
            (viewport.height - sy * (box.bottom - box.top));
    }
    return {sx, 0, 0, sy, x - sx * box.left, y - sy * box.top};
}

CPolyPolyBezier Shape(const std::vector<Contour>& contours, const Affine& toRoot) {
    CPolyPolyBezier shape;
    shape.SetSize(static_cast<int>(contours.size()));
    for (std::size_t i = 0; i < contours.size(); ++i) {
        auto nodes = std::make_unique<CArray<BPOINT, BPOINT>>();
        nodes->SetSize(static_cast<int>(contours[i].size()));
        std::copy(contours[i].begin(), contours[i].end(), nodes->GetData());
        shape.SetAt(static_cast<int>(i), nodes.release());
    }
    CView3D view;
    const Affine& m = toRoot;
    view.SetMat({{m.a, m.b, 0, 0}, {m.c, m.d, 0, 0}, {0, 0, 1, 0}, {m.e, m.f, 0, 1}});
    shape.ApplyTransformation(view);
    return shape;
}

void RequireWithinLimit(const CPolyPolyBezier& shape) {
    for (int i = 0; i < shape.GetSize(); ++i) {
        for (const BPOINT& node : shape[i]) {
            for (const DPOINT& p : {node.cp1, node.pt, node.cp2}) {
                if (!(std::fabs(p.x) < MAX_SVG_COORDINATE) || !(std::fabs(p.y) < MAX_SVG_COORDINATE))
                    throw SvgError("its coordinates reach 1e9 or beyond");
            }
        }
    }
}

bool IsSingleLine(const Contour& nodes) {
    const auto same = [](const DPOINT& a, const DPOINT& b) { return a.x == b.x && a.y == b.y; };
    return nodes.size() == 2 && same(nodes[0].pt, nodes[0].cp2) && same(nodes[1].cp1, nodes[1].pt);
}

class Reader {
  public:
    SvgDocument Read(std::unique_ptr<pugi::xml_document> xml) {
        m_document.xml = std::move(xml);
        const pugi::xml_node root = m_document.xml->document_element();
        const std::string_view name = root.name();
        const std::size_t colon = name.find(':');
        m_prefix = colon == name.npos ? std::string_view() : name.substr(0, colon + 1);
        if (LocalName(root) != "svg") throw SvgError("not an SVG drawing: its root element is not svg");
        m_gradients = GradientColours(root);
        Inherited state;
        SetPage(root, state);
        Own(root, state);
        Children(root, state);
        m_document.remarks = Remarks();
        return std::move(m_document);
    }

  private:
    /// The name without the prefix that the root uses; empty for elements of other vocabularies.
    std::string_view LocalName(const pugi::xml_node& node) const {
        const std::string_view name = node.name();
        if (name.substr(0, m_prefix.size()) != m_prefix) return {};
        const std::string_view local = name.substr(m_prefix.size());
        return local.find(':') == local.npos ? local : std::string_view();
    }

    void SetPage(const pugi::xml_node& root, Inherited& state) {
        m_document.page = ViewBox(root);
        if (!m_document.page) {
            // Percentages of an unknown whole are no size.
            const auto width = ParseLength(root.attribute("width").value(), 0);
            const auto height = ParseLength(root.attribute("height").value(), 0);
            const auto isSize = [](const std::optional<double>& v) {
                return v && *v > 0 && *v < MAX_SVG_COORDINATE;
            };
            if (isSize(width) && isSize(height)) m_document.page = DRECT{0, *width, 0, *height};
        }
        if (const auto& page = m_document.page) {
            state.viewport = {page->right - page->left, page->bottom - page->top};
        }
    }

    // What an element has of its own, and its children inherit

    void Own(const pugi::xml_node& node, Inherited& state) {
        if (const auto display = Property(node, "display"))
            state.isShown = state.isShown && *display != "none";
        if (const auto visibility = Property(node, "visibility"); visibility && *visibility != "inherit")
            state.isVisible = *visibility == "visible";
        if (const auto stroke = Property(node, "stroke"); stroke && *stroke != "inherit")
            state.stroke.isPainted = *stroke != "none";
        for (std::size_t i = 0; i < STROKE_LENGTHS.size(); ++i) {
            const auto value = Property(node, STROKE_LENGTHS[i]);
            if (value && *value != "inherit")
                state.stroke.lengths[i] = Lengths(*value, state.viewport.Diagonal());
        }
        for (std::size_t i = 0; i < SvgPaint::PROPERTIES.size(); ++i) {
            if (const auto value = Property(node, SvgPaint::PROPERTIES[i]))
                state.paint.Set(i, *value, m_gradients);
        }
        m_document.hasReferences = m_document.hasReferences || RefersToOthers(node);
    }

    static std::optional<std::vector<double>> Lengths(std::string_view list, double whole) {
        std::vector<double> lengths;
        while (!list.empty()) {
            const std::size_t end = list.find_first_of(", \t\r\n");
            const std::string_view one = list.substr(0, end);
            if (!one.empty()) {
                const auto length = ParseLength(one, whole);
                if (!length || !(std::fabs(*length) < MAX_SVG_COORDINATE)) return std::nullopt;
                lengths.push_back(*length);
            }
            list = end == list.npos ? std::string_view() : list.substr(end + 1);
        }
        if (lengths.empty()) return std::nullopt;
        return lengths;
    }

    void ApplyTransform(const pugi::xml_node& node, Inherited& state) {
        const pugi::xml_attribute attribute = node.attribute("transform");
        if (!attribute) return;
        if (const auto transform = ParseTransform(attribute.value())) {
            state.toRoot = state.toRoot * *transform;
        } else {
            Damaged("transform", node);
        }
    }

    void Viewport(const pugi::xml_node& node, Inherited& state) {
        const Size outer = state.viewport;
        const double x = Length(node, "x", outer.width, 0);
        const double y = Length(node, "y", outer.height, 0);
        state.viewport = {Length(node, "width", outer.width, outer.width),
                          Length(node, "height", outer.height, outer.height)};
        state.toRoot = state.toRoot * Affine{1, 0, 0, 1, x, y};
        const auto box = ViewBox(node);
        if (!box) return;
        const char* aspect = node.attribute("preserveAspectRatio").value();
        state.toRoot = state.toRoot * ViewBoxTransform(*box, state.viewport, aspect);
        state.viewport = {box->right - box->left, box->bottom - box->top};
    }

    // Elements

    void Children(const pugi::xml_node& parent, const Inherited& inherited) {
        for (const pugi::xml_node& child : parent.children()) {
            if (child.type() == pugi::node_element) Element(child, inherited);
        }
    }

    void Element(const pugi::xml_node& node, const Inherited& inherited) {
        const std::string_view kind = LocalName(node);
        if (kind == "style") m_document.hasStyleSheet = true;
        if (IsOneOf(kind, {"text", "use", "image", "foreignObject"})) {
            m_document.leftOut.push_back(node);
            ++m_leftOut[std::string(kind)].count;
            return;
        }
        const bool isContainer = IsOneOf(kind, {"g", "a", "switch", "svg"});
        const bool isShape =
            IsOneOf(kind, {"path", "rect", "circle", "ellipse", "line", "polyline", "polygon"});
        if (!isContainer && !isShape) return;
        Inherited state = inherited;
        Own(node, state);
        ApplyTransform(node, state);
        if (isContainer) {
            if (kind == "svg") Viewport(node, state);
            m_document.containers.push_back(node);
            Children(node, state);
        } else {
            Outline(node, kind, state);
        }
    }

    void Outline(const pugi::xml_node& node, std::string_view kind, const Inherited& state) {
        SvgElement element;
        const std::vector<Contour> contours = ContoursOf(node, kind, state.viewport);
        if (contours.empty()) return;
        element.outline = Shape(contours, state.toRoot);
        element.isLines = std::all_of(contours.begin(), contours.end(), IsSingleLine);
        RequireWithinLimit(element.outline);
        element.kind = kind;
        element.id = node.attribute("id").value();
        element.isShown = state.isShown && state.isVisible;
        element.scale = state.toRoot.Scale();
        element.stroke = state.stroke;
        element.paint = state.paint;
        if (const auto effect = Property(node, "vector-effect"))
            element.stroke.isScaled = *effect != "non-scaling-stroke";
        element.node = node;
        m_document.elements.push_back(std::move(element));
    }

    std::vector<Contour> ContoursOf(const pugi::xml_node& node, std::string_view kind, const Size& whole) {
        if (kind == "path") return PathOutline(node);
        if (kind == "rect") return RectOutline(node, whole);
        if (kind == "circle") {
            const double r = Length(node, "r", whole.Diagonal(), 0);
            return EllipseContours(Point(node, "cx", "cy", whole), r, r);
        }
        if (kind == "ellipse") {
            // One radius that is missing, or "auto", is the other.
            const auto rx = MaybeLength(node, "rx", whole.width);
            const auto ry = MaybeLength(node, "ry", whole.height);
            return EllipseContours(Point(node, "cx", "cy", whole), rx.value_or(ry.value_or(0)),
                                   ry.value_or(rx.value_or(0)));
        }
        if (kind == "line")
            return PolylineContours({Point(node, "x1", "y1", whole), Point(node, "x2", "y2", whole)}, false);
        return PointsOutline(node, kind == "polygon");
    }

    std::vector<Contour> PathOutline(const pugi::xml_node& node) {
        PathContours path = ParsePathData(node.attribute("d").value());
        if (!path.isSound) Damaged("path data", node);
        return std::move(path.contours);
    }

    std::vector<Contour> RectOutline(const pugi::xml_node& node, const Size& whole) {
        const DPOINT corner = Point(node, "x", "y", whole);
        const auto rx = MaybeLength(node, "rx", whole.width);
        const auto ry = MaybeLength(node, "ry", whole.height);
        return RectContours({corner.x, corner.y, Length(node, "width", whole.width, 0),
                             Length(node, "height", whole.height, 0), rx.value_or(ry.value_or(0)),
                             ry.value_or(rx.value_or(0))});
    }

    /// As SVG prescribes, a damaged list draws up to its last whole point.
    std::vector<Contour> PointsOutline(const pugi::xml_node& node, bool isClosed) {
        std::vector<DPOINT> points;
        SvgScanner scanner(node.attribute("points").value());
        scanner.SkipSpaces();
        while (!scanner.IsAtEnd()) {
            const auto x = scanner.Number();
            scanner.SkipSeparator();
            const auto y = x ? scanner.Number() : std::nullopt;
            if (!y) {
                Damaged("point list", node);
                break;
            }
            points.push_back({*x, *y});
            scanner.SkipSeparator();
        }
        return PolylineContours(points, isClosed);
    }

    std::optional<double> MaybeLength(const pugi::xml_node& node, const char* name, double whole) {
        const pugi::xml_attribute attribute = node.attribute(name);
        if (!attribute || std::string_view(attribute.value()) == "auto") return std::nullopt;
        const auto length = ParseLength(attribute.value(), whole);
        if (!length) Damaged("length", node);
        return length;
    }

    double Length(const pugi::xml_node& node, const char* name, double whole, double otherwise) {
        return MaybeLength(node, name, whole).value_or(otherwise);
    }

    DPOINT Point(const pugi::xml_node& node, const char* x, const char* y, const Size& whole) {
        return {Length(node, x, whole.width, 0), Length(node, y, whole.height, 0)};
    }

    // Remarks

    struct Noted {
        int count = 0;
        std::string first;  ///< the element's name, for damage
    };

    void Damaged(const char* what, const pugi::xml_node& node) {
        Noted& noted = m_damaged[what];
        if (++noted.count > 1) return;
        const std::string id = node.attribute("id").value();
        noted.first = std::string(node.name()) +
                      (id.empty() ? " at byte " + std::to_string(node.offset_debug()) : " \"" + id + '"');
    }

    static std::string Counted(const std::map<std::string, Noted>& notes) {
        std::string text;
        for (const auto& [what, noted] : notes) {
            if (!text.empty()) text += ", ";
            text += std::to_string(noted.count) + ' ' + what;
            if (!noted.first.empty()) text += (noted.count > 1 ? " (first in " : " (in ") + noted.first + ')';
        }
        return text;
    }

    std::string Remarks() const {
        std::string remarks;
        if (!m_leftOut.empty()) remarks = "left out, being no outlines: " + Counted(m_leftOut);
        if (m_damaged.empty()) return remarks;
        if (!remarks.empty()) remarks += "; ";
        return remarks + "damaged, and taken as far as it is sound: " + Counted(m_damaged);
    }

    SvgDocument m_document;
    std::string_view m_prefix;
    GradientColours m_gradients;
    std::map<std::string, Noted> m_leftOut;
    std::map<std::string, Noted> m_damaged;
};

}  // namespace

bool LooksLikeSvg(std::span<const std::uint8_t> start) {
    for (const std::uint8_t byte : start) {
        if (byte == '<') return true;
        const bool isMark = byte == 0xEF || byte == 0xBB || byte == 0xBF || byte == 0xFE || byte == 0xFF;
        if (!isMark && byte != 0 && byte != ' ' && byte != '\t' && byte != '\r' && byte != '\n') return false;
    }
    return false;
}

SvgDocument ParseSvg(Bytes bytes) {
    if (bytes.empty()) throw SvgError("the file is empty");
    if (bytes.size() >= 2 && bytes[0] == 0x1F && bytes[1] == 0x8B)
        throw SvgError("compressed: unpack it with gunzip first");
    if (!LooksLikeSvg(bytes)) throw SvgError("not an SVG drawing; of a picture, tarvex trace makes one");
    auto xml = std::make_unique<pugi::xml_document>();
    constexpr unsigned flags = pugi::parse_default | pugi::parse_comments | pugi::parse_pi |
                               pugi::parse_ws_pcdata | pugi::parse_declaration | pugi::parse_doctype;
    const std::string expanded = ExpandEntities(bytes, MAX_SVG_BYTES);
    const pugi::xml_parse_result result = expanded.empty()
                                              ? xml->load_buffer(bytes.data(), bytes.size(), flags)
                                              : xml->load_buffer(expanded.data(), expanded.size(), flags);
    if (result.status == pugi::status_out_of_memory) throw SvgError("not enough memory for the drawing");
    if (!result) {
        throw SvgError(std::string("damaged XML: ") + result.description() + " at byte " +
                       std::to_string(result.offset));
    }
    DepthCheck depth;
    if (!xml->traverse(depth))
        throw SvgError("its elements are nested deeper than " + std::to_string(MAX_SVG_DEPTH));
    return Reader().Read(std::move(xml));
}

SvgDocument ReadSvg(const std::string& path) {
    InputLimits limits;
    limits.maxBytes = MAX_SVG_BYTES;
    limits.sniffedBytes = 64;
    limits.isWorthReading = LooksLikeSvg;
    const std::vector<std::uint8_t> bytes = ReadInput(path, limits);
    try {
        return ParseSvg(bytes);
    } catch (const SvgError& error) {
        throw ProgramError(ExitStatus::File, InputName(path), error.what());
    }
}

void ReportRemarks(const std::string& path, const std::string& remarks) {
    if (!remarks.empty()) Tell(InputName(path) + ": " + remarks);
}

}  // namespace tarvex::app
