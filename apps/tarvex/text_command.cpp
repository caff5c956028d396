// Text is set, placed, bent if that is asked for, and written with a path for each glyph.
#include "tarvex/text_command.h"

#include <algorithm>
#include <stdexcept>

#include "tarvex/bend.h"
#include "tarvex/input.h"
#include "tarvex/measure.h"
#include "tarvex/output.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"
#include "tarvex/svg_rewriter.h"
#include "tarvex/svg_writer.h"
#include "tarvex/view.h"

namespace tarvex::app {

namespace {

constexpr std::size_t MOST_BYTES = 1'000'000;

/// `\n` becomes a line's end and `\\` a backslash; any other backslash stays.
std::string WithoutEscapes(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPair = text[i] == '\\' && i + 1 < text.size();
        if (isPair && (text[i + 1] == 'n' || text[i + 1] == '\\')) {
            plain += text[++i] == 'n' ? '\n' : '\\';
        } else {
            plain += text[i];
        }
    }
    return plain;
}

std::vector<std::wstring> LinesOf(const TextOptions& options) {
    const bool isInput = options.text == "-";
    try {
        if (!isInput) return TextLines(WithoutEscapes(options.text));
        InputLimits limits;
        limits.maxBytes = MOST_BYTES;
        const auto bytes = ReadInput("-", limits);
        std::string text(bytes.begin(), bytes.end());
        if (text.ends_with('\n')) text.pop_back();
        return TextLines(text);
    } catch (const std::invalid_argument& error) {
        throw ProgramError(isInput ? ExitStatus::File : ExitStatus::Usage,
                           isInput ? InputName("-") : "the text", error.what());
    }
}

std::optional<DRECT> FrameOfAll(const std::vector<CPolyPolyBezier>& glyphs) {
    std::optional<DRECT> frame;
    for (const CPolyPolyBezier& glyph : glyphs) Unite(frame, FrameOf(glyph));
    return frame;
}

/// The page of straight text: as wide as its widest line and as high as the font says.
DRECT LinesFrame(const SetText& text) {
    DRECT frame;
    for (const SetLine& line : text.lines) frame.right = std::max(frame.right, line.width);
    frame.bottom = text.ascent + text.descent + text.lineAdvance * static_cast<double>(text.lines.size() - 1);
    return frame;
}

void Warp(std::vector<CPolyPolyBezier>& glyphs, const TextWarp& warp, const DRECT& frame) {
    const double whole = frame.bottom - frame.top;
    Bender bend(frame, warp.type, warp.isPercent ? warp.amount / 100 * whole : warp.amount);
    for (CPolyPolyBezier& glyph : glyphs) bend.Bend(glyph);
}

std::string Svg(std::vector<CPolyPolyBezier>& glyphs, const DRECT& page, const TextOptions& options) {
    CView3D view;
    view.Translate(page.left, page.top, 0);
    std::vector<SvgShape> shapes;
    for (CPolyPolyBezier& glyph : glyphs) {
        glyph.ApplyTransformation(view);
        SvgShape shape;
        shape.rule = FillRule::NonZero;
        shape.colour = options.colour;
        for (int i = 0; i < glyph.GetSize(); ++i)
            shape.contours.emplace_back(glyph[i].begin(), glyph[i].end());
        shapes.push_back(std::move(shape));
    }
    SvgOptions svg;
    svg.width = page.right - page.left;
    svg.height = page.bottom - page.top;
    svg.precision = options.precision.value_or(PrecisionFor(options.style.size));
    return WriteSvg(svg, shapes);
}

bool IsGenericFamily(const std::string& name) {
    for (const char* const generic : {"", "sans", "sans-serif", "serif", "monospace", "mono", "cursive",
                                      "fantasy", "system-ui", "ui-sans-serif", "ui-serif", "ui-monospace"}) {
        if (name == generic) return true;
    }
    return false;
}

bool IsSameName(const std::string& a, const std::string& b) {
    const auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : int{c}; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [lower](char c, char d) {
        return lower(static_cast<unsigned char>(c)) == lower(static_cast<unsigned char>(d));
    });
}

}  // namespace

int RunText(const TextOptions& options) {
    CheckOutput(options.output);
    SetText text = TextSetter(options.style).Set(LinesOf(options));
    const DRECT linesFrame = LinesFrame(text);
    const std::string family = text.family;
    std::vector<CPolyPolyBezier> glyphs =
        options.ellipse ? PlaceOnEllipse(std::move(text), options.align, *options.ellipse)
                        : PlaceOnLines(std::move(text), options.align);
    auto frame = FrameOfAll(glyphs);
    if (!frame) throw ProgramError(ExitStatus::NoResult, "the text", "there is nothing in it to draw");
    if (options.warp) {
        Warp(glyphs, *options.warp, *frame);
        frame = FrameOfAll(glyphs);
    }
    if (!options.ellipse && !options.warp) Unite(frame, linesFrame);
    WriteOutput(options.output, Svg(glyphs, *frame, options));
    if (!IsGenericFamily(options.style.family) && !IsSameName(options.style.family, family))
        Tell("there is no font " + options.style.family + "; " + family + " stands in for it");
    return 0;
}

}  // namespace tarvex::app
