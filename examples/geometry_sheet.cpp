// Draws what the plane-geometry headers do on one sheet: the ten envelopes, offsets of a star, ellipses
// fitted to noisy points, and convex hulls. Writes SVG to the file named, or to standard output.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "tarvex/bezier.h"
#include "tarvex/geometry.h"
#include "tarvex/transform.h"

namespace {

using namespace tarvex;

using PointArray = CArray<DPOINT, DPOINT>;
using NodeArray = CArray<BPOINT, BPOINT>;

const char* const kInk = "#22313f";
const char* const kFaint = "#b8c4cc";
const char* const kWarm = "#c8553d";
const char* const kCool = "#2f6f8f";

/// An SVG drawing under way.
class Sheet {
  public:
    Sheet(int width, int height) {
        Write("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %d %d\" width=\"%d\" height=\"%d\">\n",
              width, height, width, height);
        Write("<rect width=\"%d\" height=\"%d\" fill=\"#fbfaf7\"/>\n", width, height);
    }

    void Text(double x, double y, int size, const char* text, const char* anchor = "start") {
        Write(
            "<text x=\"%.1f\" y=\"%.1f\" font-family=\"DejaVu Sans, sans-serif\" font-size=\"%d\" "
            "fill=\"%s\" ",
            x, y, size, kInk);
        Write("text-anchor=\"%s\">%s</text>\n", anchor, text);
    }

    void Polyline(const PointArray& points, const char* colour, double width, const char* fill = "none") {
        m_svg += "<path d=\"";
        const char* command = "M";
        for (const DPOINT& p : points) {
            Write("%s%.2f %.2f", command, p.x, p.y);
            command = "L";
        }
        Finish(colour, width, fill);
    }

    void Curve(const NodeArray& nodes, const char* colour, double width, const char* fill = "none") {
        if (nodes.IsEmpty()) return;
        Write("<path d=\"M%.2f %.2f", nodes[0].pt.x, nodes[0].pt.y);
        for (int i = 1; i < nodes.GetSize(); ++i) {
            const BPOINT& from = nodes[i - 1];
            const BPOINT& to = nodes[i];
            Write("C%.2f %.2f %.2f %.2f %.2f %.2f", from.cp2.x, from.cp2.y, to.cp1.x, to.cp1.y, to.pt.x,
                  to.pt.y);
        }
        Finish(colour, width, fill);
    }

    void Dot(double x, double y, double radius, const char* colour) {
        Write("<circle cx=\"%.2f\" cy=\"%.2f\" r=\"%.2f\" fill=\"%s\"/>\n", x, y, radius, colour);
    }

    bool Save(const char* file) {
        m_svg += "</svg>\n";
        std::FILE* out = file != nullptr ? std::fopen(file, "wb") : stdout;
        if (out == nullptr) return false;
        const bool isWritten = std::fwrite(m_svg.data(), 1, m_svg.size(), out) == m_svg.size();
        return (out == stdout ? std::fflush(out) : std::fclose(out)) == 0 && isWritten;
    }

  private:
    template <class... Values>
    void Write(const char* format, Values... values) {
        char line[512];
        const int length = std::snprintf(line, sizeof line, format, values...);
        if (length > 0) m_svg.append(line, static_cast<std::size_t>(length));
    }

    void Finish(const char* colour, double width, const char* fill) {
        Write(
            "\" fill=\"%s\" fill-rule=\"evenodd\" stroke=\"%s\" stroke-width=\"%.2f\" "
            "stroke-linejoin=\"round\"/>\n",
            fill, colour, width);
    }

    std::string m_svg;
};

/// A grid and the letter-like sign in it, bent by each preset.
void DrawEnvelopes(Sheet& sheet, double left, double top) {
    const char* const names[] = {"1 top",    "2 bottom", "3 waist", "4 top out",  "5 bottom out",
                                 "6 barrel", "7 sag",    "8 arch",  "9 fan left", "10 fan right"};
    constexpr double width = 132, height = 72, stepX = 172, stepY = 158;
    for (int type = 1; type <= 10; ++type) {
        const double x = left + (type - 1) % 5 * stepX;
        const double y = top + (type - 1) / 5 * stepY;
        CEnvelop envelope;
        envelope.env() = {x, y, x + width, y + height};
        envelope.SetType(type, 16);
        const auto drawLine = [&](DPOINT from, DPOINT to, const char* colour, double thickness) {
            PointArray line;
            constexpr int steps = 48;
            for (int i = 0; i <= steps; ++i) {
                const double px = from.x + (to.x - from.x) * i / steps;
                const double py = from.y + (to.y - from.y) * i / steps;
                line.Add({px, envelope.envelop(px, py)});
            }
            sheet.Polyline(line, colour, thickness);
        };
        for (int i = 0; i <= 8; ++i) {
            const double px = x + width * i / 8;
            drawLine({px, y}, {px, y + height}, i % 8 == 0 ? kInk : kFaint, i % 8 == 0 ? 1.4 : 0.8);
        }
        for (int i = 0; i <= 4; ++i) {
            const double py = y + height * i / 4;
            drawLine({x, py}, {x + width, py}, i % 4 == 0 ? kInk : kFaint, i % 4 == 0 ? 1.4 : 0.8);
        }
        NodeArray disc;
        CEllipse({x + width / 2, y + height / 2}, 40, 26).GetBeziers(disc, 0, CEllipse::FULL_TURN, 0.01);
        PointArray outline;
        GetPolyline(disc, outline, 1.0);
        for (DPOINT& p : outline) p.y = envelope.envelop(p.x, p.y);
        sheet.Polyline(outline, kWarm, 1.6);
        sheet.Text(x + width / 2, y + height + 38, 12, names[type - 1], "middle");
    }
}

PointArray Star(DPOINT centre, double outer, double inner, int tips) {
    PointArray star;
    for (int i = 0; i <= 2 * tips; ++i) {
        const double radius = i % 2 == 0 ? outer : inner;
        const double angle = std::numbers::pi * (i % (2 * tips)) / tips - std::numbers::pi / 2;
        star.Add({centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)});
    }
    return star;
}

void DrawOffsets(Sheet& sheet, const PointArray& star, const OffsetOptions& options) {
    for (const double distance : {-24.0, -16.0, -8.0, 5.0, 10.0, 15.0, 20.0, 25.0}) {
        const CPolyPolyDPoint parts = ShrinkPolyline(star, distance, options);
        for (int i = 0; i < parts.GetSize(); ++i) sheet.Polyline(parts[i], distance < 0 ? kCool : kWarm, 1.2);
    }
    sheet.Polyline(star, kInk, 2.4);
}

/// A Bezier dumbbell, and its offsets: curves, straight where it is straight, two parts when its bar is gone.
void DrawBezierOffsets(Sheet& sheet, double x, double y) {
    const auto node = [&](double ix, double iy, double px, double py, double ox, double oy) {
        return BPOINT{{x + ix, y + iy}, {x + px, y + py}, {x + ox, y + oy}};
    };
    NodeArray bell;
    for (const BPOINT& n :
         {node(-40, -14, -40, -14, -40, -14), node(40, -14, 40, -14, 50, -62),
          node(140, -70, 140, 0, 140, 70), node(50, 62, 40, 14, 40, 14), node(-40, 14, -40, 14, -50, 62),
          node(-140, 70, -140, 0, -140, -70), node(-50, -62, -40, -14, -40, -14)})
        bell.Add(n);
    const OffsetOptions round{.mitreLimit = 1.2, .corner = OffsetCorner::round, .tolerance = 0.02};
    for (const double distance : {-30.0, -20.0, -10.0, 7.0, 13.0, 17.0, 23.0, 31.0}) {
        const CPolyPolyBezier parts = ShrinkBezier(bell, distance, round);
        for (int i = 0; i < parts.GetSize(); ++i) {
            sheet.Curve(parts[i], distance < 0 ? kCool : kWarm, 1.2);
            for (const BPOINT& n : parts[i]) sheet.Dot(n.pt.x, n.pt.y, 1.6, kInk);
        }
    }
    sheet.Curve(bell, kInk, 2.4);
}

void DrawEllipseFit(Sheet& sheet, const CEllipse& truth, double noise, double sweep, int count,
                    unsigned seed) {
    std::mt19937 random(seed);
    // Sums of uniform numbers: the same on every system, unlike the standard distributions.
    const auto wobble = [&] {
        double sum = 0;
        for (int i = 0; i < 4; ++i) sum += static_cast<double>(random()) / 4294967296.0 - 0.5;
        return noise * sum;
    };
    std::vector<DPOINT> points;
    for (int i = 0; i < count; ++i) {
        DPOINT p = truth.GetPoint(sweep * i / count);
        p = {p.x + wobble(), p.y + wobble()};
        points.push_back(p);
        sheet.Dot(p.x, p.y, 2, kCool);
    }
    CEllipse fitted;
    if (!fitted.FitPoints(points)) return;
    NodeArray nodes;
    fitted.GetBeziers(nodes);
    sheet.Curve(nodes, kWarm, 2);
    sheet.Dot(fitted.Centre().x, fitted.Centre().y, 3, kWarm);
}

void DrawHull(Sheet& sheet, double x, double y, double width, double height, bool isRound, unsigned seed) {
    std::mt19937 random(seed);
    const auto part = [&] { return static_cast<double>(random()) / 4294967296.0; };
    CArray<tagPOINT, tagPOINT> points;
    for (int i = 0; i < 120; ++i) {
        const double angle = 2 * std::numbers::pi * part();
        const double radius = std::sqrt(part()) / 2;
        const double u = isRound ? 0.5 + radius * std::cos(angle) : part();
        const double v =
            isRound ? 0.5 + radius * std::sin(angle) : (1 - std::fabs(2 * u - 1)) * part() + 0.1 * part();
        points.Add({static_cast<LONG>(x + width * u), static_cast<LONG>(y + height * v)});
    }
    for (const tagPOINT& p : points) sheet.Dot(p.x, p.y, 2, kCool);
    GetConvexHull(points);
    PointArray hull;
    for (const tagPOINT& p : points) hull.Add({static_cast<double>(p.x), static_cast<double>(p.y)});
    sheet.Polyline(hull, kWarm, 2);
    // A margin around the hull, as an offset.
    const CPolyPolyDPoint around =
        ShrinkPolyline(hull, IsClockwise(hull) ? -12 : 12, {.mitreLimit = 1, .corner = OffsetCorner::round});
    for (int i = 0; i < around.GetSize(); ++i) sheet.Polyline(around[i], kFaint, 1.2);
}

}  // namespace

int main(int argc, char** argv) {
    Sheet sheet(900, 1340);
    sheet.Text(30, 44, 20, "Envelopes");
    DrawEnvelopes(sheet, 40, 88);

    sheet.Text(30, 404, 20, "Offsets");
    DrawOffsets(sheet, Star({165, 580}, 84, 37, 5), {.mitreLimit = 4});
    sheet.Text(165, 735, 12, "mitred", "middle");
    DrawOffsets(sheet, Star({450, 580}, 84, 37, 5), {.mitreLimit = 1, .corner = OffsetCorner::round});
    sheet.Text(450, 735, 12, "rounded", "middle");
    DrawOffsets(sheet, Star({730, 580}, 84, 37, 5), {.mitreLimit = 1, .corner = OffsetCorner::bevel});
    sheet.Text(730, 735, 12, "bevelled", "middle");
    DrawBezierOffsets(sheet, 450, 855);
    sheet.Text(450, 985, 12, "a Bezier contour, with the nodes of its offsets", "middle");

    sheet.Text(30, 1030, 20, "Ellipses through noisy points");
    DrawEllipseFit(sheet, CEllipse({140, 1160}, 95, 55, 0.4), 10, CEllipse::FULL_TURN, 60, 1);
    DrawEllipseFit(sheet, CEllipse({345, 1160}, 90, 40, -0.6), 4, 3.6, 40, 2);

    sheet.Text(490, 1030, 20, "Convex hulls");
    DrawHull(sheet, 500, 1070, 170, 170, true, 3);
    DrawHull(sheet, 715, 1080, 150, 160, false, 4);
    sheet.Text(140, 1290, 12, "all round", "middle");
    sheet.Text(345, 1290, 12, "little more than a half", "middle");
    sheet.Text(585, 1290, 12, "hull and a margin", "middle");
    sheet.Text(790, 1290, 12, "hull and a margin", "middle");
    if (sheet.Save(argc > 1 ? argv[1] : nullptr)) return 0;
    std::fputs("cannot write the drawing\n", stderr);
    return 1;
}
