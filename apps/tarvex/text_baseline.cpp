// Straight and elliptic baselines.
//
// Length along an ellipse has no closed form. It is summed up once by Simpson's rule over PIECES even pieces
// of the angle, and looked up, in both directions, between those by straight interpolation: the speed hardly
// changes within a piece, so this is off by less than 1e-6 of the circumference.
#include "tarvex/text_baseline.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tarvex/program_error.h"
#include "tarvex/view.h"

namespace tarvex::app {

namespace {

constexpr int PIECES = 4096;
constexpr double PIECE = CEllipse::FULL_TURN / PIECES;

double Start(double width, double whole, TextAlign align) {
    switch (align) {
        case TextAlign::Left:
            return 0;
        case TextAlign::Centre:
            return (whole - width) / 2;
        default:
            return whole - width;
    }
}

/// Turns about the origin, then moves.
void Move(CPolyPolyBezier& shape, double angle, const DPOINT& to) {
    CView3D view;  // the newest call acts first
    view.Translate(-to.x, -to.y, 0);
    view.Rotate(angle);
    shape.ApplyTransformation(view);
}

std::string Pixels(double length) { return std::to_string(std::lround(length)) + " px"; }

}  // namespace

EllipseLength::EllipseLength(const CEllipse& ellipse) {
    const auto speed = [&ellipse](double angle) {
        const DPOINT tangent = ellipse.GetTangent(angle);
        return std::hypot(tangent.x, tangent.y);
    };
    m_lengths.reserve(PIECES + 1);
    m_lengths.push_back(0);
    for (int i = 0; i < PIECES; ++i) {
        const double middle = speed((i + 0.5) * PIECE);
        m_lengths.push_back(m_lengths.back() +
                            (speed(i * PIECE) + 4 * middle + speed((i + 1) * PIECE)) / 6 * PIECE);
    }
}

double EllipseLength::At(double angle) const {
    const double turns = std::floor(angle / CEllipse::FULL_TURN);
    const double place = std::clamp((angle - turns * CEllipse::FULL_TURN) / PIECE, 0.0, double{PIECES});
    const auto piece = std::min(static_cast<std::size_t>(place), std::size_t{PIECES - 1});
    const double part = place - static_cast<double>(piece);
    return m_lengths[piece] + (m_lengths[piece + 1] - m_lengths[piece]) * part;
}

double EllipseLength::AngleAt(double length) const {
    const double turns = std::floor(length / Whole());
    length -= turns * Whole();
    const auto after = std::upper_bound(m_lengths.begin() + 1, m_lengths.end() - 1, length);
    const auto before = after - 1;
    const double part = *after > *before ? (length - *before) / (*after - *before) : 0;
    return (static_cast<double>(before - m_lengths.begin()) + part) * PIECE;
}

std::vector<CPolyPolyBezier> PlaceOnLines(SetText text, TextAlign align) {
    double whole = 0;
    for (const SetLine& line : text.lines) whole = std::max(whole, line.width);
    std::vector<CPolyPolyBezier> placed;
    double baseline = text.ascent;
    for (SetLine& line : text.lines) {
        const double start = Start(line.width, whole, align);
        for (SetGlyph& glyph : line.glyphs) {
            Move(glyph.outline, 0, {start + glyph.pen, baseline});
            placed.push_back(std::move(glyph.outline));
        }
        baseline += text.lineAdvance;
    }
    return placed;
}

std::vector<CPolyPolyBezier> PlaceOnEllipse(SetText text, TextAlign align, const EllipseBaseline& baseline) {
    const bool isOutside = baseline.side == TextSide::Outside;
    const double sense = isOutside ? 1 : -1;
    std::vector<CPolyPolyBezier> placed;
    for (std::size_t i = 0; i < text.lines.size(); ++i) {
        SetLine& line = text.lines[i];
        // The lines after the first lie below it: nearer to the centre outside, farther from it inside.
        const std::size_t steps = isOutside ? text.lines.size() - 1 - i : i;
        const double more = text.lineAdvance * static_cast<double>(steps);
        const CEllipse ellipse({0, 0}, baseline.radiusX + more, baseline.radiusY + more);
        const EllipseLength length(ellipse);
        if (line.width > length.Whole()) {
            throw ProgramError(ExitStatus::NoResult, "--ellipse",
                               "the text is " + Pixels(line.width) + " long, the ellipse around only " +
                                   Pixels(length.Whole()));
        }
        const double x = std::sin(baseline.angle) / ellipse.RadiusX();
        const double y = -std::cos(baseline.angle) / ellipse.RadiusY();
        const double anchor = length.At(
            std::atan2(y * ellipse.RadiusY() * ellipse.RadiusY(), x * ellipse.RadiusX() * ellipse.RadiusX()));
        const double start = anchor + sense * Start(line.width, 0, align);
        for (SetGlyph& glyph : line.glyphs) {
            const double angle = length.AngleAt(start + sense * (glyph.pen + glyph.advance / 2));
            const DPOINT tangent = ellipse.GetTangent(angle);
            Move(glyph.outline, 0, {-glyph.advance / 2, 0});
            Move(glyph.outline, std::atan2(sense * tangent.y, sense * tangent.x), ellipse.GetPoint(angle));
            placed.push_back(std::move(glyph.outline));
        }
    }
    return placed;
}

}  // namespace tarvex::app
