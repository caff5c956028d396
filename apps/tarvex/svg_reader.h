// SVG drawings as outlines, and back: the XML stays, its drawable elements become paths.
//
// What is read: path, rect, circle, ellipse, line, polyline and polygon, with the transforms of groups,
// links, switches and nested svg elements (their view boxes included) applied, so that all outlines
// are in the root's user space: x right, y down, the unit that of its viewBox, or else the pixel of
// 1/96 inch. What stands in definitions (defs, symbol, clipPath, mask, pattern, marker) draws nothing
// by itself and is left as it is.
//
// What draws but is no outline (text, use, image, foreignObject) is left out of the outlines and of
// what is written, and reported. So is damage in attributes, for which SVG prescribes what still draws.
//
//     SvgDocument drawing = ParseSvg(bytes);
//     for (SvgElement& element : drawing.elements) element.outline.ApplyTransformation(view);
//     std::string text = WriteDrawing(drawing, {});
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "tarvex/containers.h"
#include "tarvex/svg_paint.h"

namespace tarvex::app {

/// A longer file is refused.
inline constexpr std::uint64_t MAX_SVG_BYTES = std::uint64_t{64} << 20;
/// Elements nested deeper are refused.
inline constexpr int MAX_SVG_DEPTH = 256;
/// Coordinates and sizes of this magnitude and beyond are refused.
inline constexpr double MAX_SVG_COORDINATE = 1e9;

/// What is wrong with a drawing, in one line without the file's name.
class SvgError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The lengths of a stroke that grow with the drawing, as properties and in this order.
inline constexpr std::array<const char*, 3> STROKE_LENGTHS = {"stroke-width", "stroke-dasharray",
                                                              "stroke-dashoffset"};

struct SvgStroke {
    bool isPainted = false;
    bool isScaled = true;  ///< false for vector-effect="non-scaling-stroke"
    /// In the element's own units, in the order of STROKE_LENGTHS; none where a property is not set or
    /// is no list of lengths.
    std::array<std::optional<std::vector<double>>, 3> lengths;
};

struct SvgElement {
    std::string kind;         ///< "path", "rect", ...
    std::string id;           ///< empty when it has none
    CPolyPolyBezier outline;  ///< in the root's user space
    bool isShown = true;      ///< false inside display="none" and for visibility="hidden"
    double scale = 1;         ///< how much larger the root's user space shows the element's own units
    SvgStroke stroke;
    SvgPaint paint;
    bool isLines = false;  ///< nothing but single lines, which fill nothing, however they are bent later
    pugi::xml_node node;
};

/// A drawing. Elements are in the order in which they are drawn.
struct SvgDocument {
    std::unique_ptr<pugi::xml_document> xml;
    std::vector<SvgElement> elements;
    /// What the root shows: its viewBox, or its width and height in pixels; none when it has neither.
    std::optional<DRECT> page;
    /// What was left out or is damaged, in the words of a message; empty when all is well.
    std::string remarks;
    /// Whether fills, clips, masks or filters are referred to: they are not changed with the outlines.
    bool hasReferences = false;
    bool hasStyleSheet = false;

    std::vector<pugi::xml_node> containers;  ///< groups and nested svg elements whose transforms are applied
    std::vector<pugi::xml_node> leftOut;
};

/// Whether bytes can be the beginning of a drawing: their first character is "<".
bool LooksLikeSvg(std::span<const std::uint8_t> start);

/// Reads a drawing; raises SvgError unless it is one, within the limits above. General entities with
/// plain text, as drawing programs declare for namespaces, are put in; others stay as they stand.
SvgDocument ParseSvg(std::span<const std::uint8_t> bytes);

/// Reads a drawing from a file, or from standard input for "-", and says on standard error, in one
/// line, what was left out. Raises ProgramError with ExitStatus::File.
SvgDocument ReadSvg(const std::string& path);

/// Says on standard error, in one line, what a changed drawing leaves out or does not carry along.
void ReportRemarks(const std::string& path, const std::string& remarks);

}  // namespace tarvex::app
