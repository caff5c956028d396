// Columns in the order of the needle, with as many rungs as their turning needs.
//
// Everything is decided on coordinates as they are written, rounded to a thousandth of a millimetre, so that
// what was found to cross once crosses once in the file. Rails lose the points that lie on their straight
// stretches; rungs are chosen from the inclinations, a few millimetres apart and closer where they turn.
#include "tarvex/satin_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <optional>

#include "tarvex/decimal.h"

namespace tarvex::app {

namespace {

using Line = std::vector<DPOINT>;

constexpr int PRECISION = 3;
constexpr double STRAIGHTNESS = 0.02;  ///< millimetres
constexpr double MOST_APART = 5;       ///< millimetres between rungs,
constexpr double LEAST_APART = 0.25;   ///< and where they turn
constexpr double MOST_TURN = 12;       ///< degrees between rungs that are farther apart than that
constexpr double END_MARGIN = 0.04;    ///< of a rail's length, without rungs
constexpr double OVERSHOOTS[] = {0.1, 0.05, 0.02};
constexpr double WIDE_PART = 0.9;  ///< of the inclinations, by which a region's width is told

struct Rung {
    DPOINT from;
    DPOINT to;
};

struct Column {
    Line first;
    Line second;
    std::vector<Rung> inclinations;
    bool isRing = false;
};

struct Written {
    std::string style;
    std::string attributes;
    std::string data;
};

double Distance(const DPOINT& a, const DPOINT& b) { return std::hypot(a.x - b.x, a.y - b.y); }
double Cross(const DPOINT& o, const DPOINT& a, const DPOINT& b) {
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

double LengthOf(const Line& line) {
    double length = 0;
    for (std::size_t i = 1; i < line.size(); ++i) length += Distance(line[i - 1], line[i]);
    return length;
}

DPOINT Rounded(const DPOINT& p) {
    const double unit = std::pow(10.0, PRECISION);
    return {std::round(p.x * unit) / unit, std::round(p.y * unit) / unit};
}

/// Douglas and Peucker's selection of points, between two that stay.
void Select(const Line& line, std::size_t from, std::size_t to, std::vector<bool>& keep) {
    std::vector<std::pair<std::size_t, std::size_t>> waiting{{from, to}};
    while (!waiting.empty()) {
        const auto [a, b] = waiting.back();
        waiting.pop_back();
        double most = STRAIGHTNESS;
        std::size_t farthest = a;
        const double length = Distance(line[a], line[b]);
        for (std::size_t i = a + 1; i < b; ++i) {
            const double away = length > 0 ? std::fabs(Cross(line[a], line[b], line[i])) / length
                                           : Distance(line[a], line[i]);
            if (away <= most) continue;
            most = away;
            farthest = i;
        }
        if (farthest == a) continue;
        keep[farthest] = true;
        waiting.emplace_back(a, farthest);
        waiting.emplace_back(farthest, b);
    }
}

Line Simplified(const Line& line) {
    if (line.size() < 3) return line;
    std::vector<bool> keep(line.size());
    keep.front() = keep.back() = true;
    Select(line, 0, line.size() - 1, keep);
    Line kept;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const DPOINT p = Rounded(line[i]);
        if (keep[i] && (kept.empty() || !(kept.back() == p))) kept.push_back(p);
    }
    return kept;
}

/// How often a segment meets a line; touching counts, and a meeting at a vertex once.
int Crossings(const Rung& rung, const Line& line) {
    int count = 0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        const double a = Cross(rung.from, rung.to, line[i - 1]), b = Cross(rung.from, rung.to, line[i]);
        if (!((a < 0 && b >= 0) || (a >= 0 && b < 0))) continue;
        const double c = Cross(line[i - 1], line[i], rung.from), d = Cross(line[i - 1], line[i], rung.to);
        count += (c <= 0 && d >= 0) || (c >= 0 && d <= 0) ? 1 : 0;
    }
    return count;
}

bool Cross(const Rung& r, const Rung& s) {
    return Cross(r.from, r.to, s.from) * Cross(r.from, r.to, s.to) <= 0 &&
           Cross(s.from, s.to, r.from) * Cross(s.from, s.to, r.to) <= 0;
}

Rung Extended(const Rung& rung, double part) {
    const DPOINT d{(rung.to.x - rung.from.x) * part, (rung.to.y - rung.from.y) * part};
    return {Rounded({rung.from.x - d.x, rung.from.y - d.y}), Rounded({rung.to.x + d.x, rung.to.y + d.y})};
}

/// The inclination as a rung that crosses each rail once, if it can be one.
std::optional<Rung> AsRung(const Rung& inclination, const Column& column) {
    for (const double part : OVERSHOOTS) {
        const Rung rung = Extended(inclination, part);
        if (Crossings(rung, column.first) == 1 && Crossings(rung, column.second) == 1) return rung;
    }
    return std::nullopt;
}

double Turn(const Rung& a, const Rung& b) {
    const DPOINT u{a.to.x - a.from.x, a.to.y - a.from.y}, v{b.to.x - b.from.x, b.to.y - b.from.y};
    return std::fabs(std::atan2(u.x * v.y - u.y * v.x, u.x * v.x + u.y * v.y)) * 180 / std::numbers::pi;
}

double Apart(const Rung& a, const Rung& b) {
    return std::max(Distance(a.from, b.from), Distance(a.to, b.to));
}

/// Rungs in order, one or at least three, or none when no inclination can be one.
std::vector<Rung> ChooseRungs(const Column& column) {
    const double firstMargin = END_MARGIN * LengthOf(column.first);
    const double secondMargin = END_MARGIN * LengthOf(column.second);
    std::vector<Rung> usable, chosen;
    for (const Rung& inclination : column.inclinations) {
        const bool atEnd = std::min(Distance(inclination.from, column.first.front()),
                                    Distance(inclination.from, column.first.back())) < firstMargin ||
                           std::min(Distance(inclination.to, column.second.front()),
                                    Distance(inclination.to, column.second.back())) < secondMargin;
        if (atEnd) continue;
        if (const auto rung = AsRung(inclination, column)) usable.push_back(*rung);
    }
    for (std::size_t i = 0; i < usable.size(); ++i) {
        const Rung& rung = usable[i];
        if (!chosen.empty()) {
            const double apart = Apart(chosen.back(), rung);
            const bool isLast = i + 1 == usable.size();
            const bool isDue = apart >= MOST_APART || Turn(chosen.back(), rung) >= MOST_TURN || isLast;
            if (apart < LEAST_APART || !isDue || Cross(chosen.back(), rung)) continue;
        }
        chosen.push_back(rung);
    }
    if (chosen.size() == 2) {
        const auto middle = std::find_if(usable.begin(), usable.end(), [&](const Rung& rung) {
            return !Cross(chosen[0], rung) && !Cross(chosen[1], rung) &&
                   Apart(chosen[0], rung) >= LEAST_APART && Apart(chosen[1], rung) >= LEAST_APART &&
                   Apart(chosen[0], rung) + 1e-9 >= Apart(chosen[0], chosen[1]) / 3;
        });
        if (middle != usable.end() && Apart(chosen[0], *middle) < Apart(chosen[0], chosen[1])) {
            chosen.insert(chosen.begin() + 1, *middle);
        } else {
            chosen = {usable[usable.size() / 2]};
        }
    }
    return chosen;
}

std::string Number(double value) {
    return std::string(DecimalText(ToUnits(value, PRECISION), PRECISION, LeadingZero::Kept).View());
}

void AppendLine(std::string& data, const Line& line) {
    if (!data.empty()) data += ' ';
    for (std::size_t i = 0; i < line.size(); ++i) {
        data += i == 0 ? "M " : i == 1 ? " L " : " ";
        data += Number(line[i].x) + ',' + Number(line[i].y);
    }
}

/// The width that most of a column does not exceed.
double WidthOf(const Column& column) {
    std::vector<double> widths;
    for (const Rung& rung : column.inclinations) widths.push_back(Distance(rung.from, rung.to));
    if (widths.empty()) return 0;
    std::sort(widths.begin(), widths.end());
    return widths[static_cast<std::size_t>(WIDE_PART * static_cast<double>(widths.size() - 1))];
}

/// Degrees counter-clockwise from horizontal, 0 to 180.
double MeanAngle(const Column& column) {
    double x = 0, y = 0;
    for (const Rung& rung : column.inclinations) {
        const double angle = std::atan2(rung.from.y - rung.to.y, rung.to.x - rung.from.x);
        x += std::cos(2 * angle);
        y += std::sin(2 * angle);
    }
    const double degrees = std::atan2(y, x) * 90 / std::numbers::pi;
    return degrees < 0 ? degrees + 180 : degrees;
}

Written Filled(const std::vector<Line>& contours, const std::string& colour, double angle) {
    Written fill;
    fill.style = "fill:" + colour + ";fill-rule:evenodd;stroke:none";
    fill.attributes = "inkstitch:fill_method=\"auto_fill\" inkstitch:angle=\"" +
                      std::string(DecimalText(ToUnits(angle, 1), 1, LeadingZero::Kept).View()) + '"';
    for (const Line& contour : contours) {
        AppendLine(fill.data, contour);
        fill.data += " Z";
    }
    return fill;
}

Written AsFill(const Column& column, const std::string& colour) {
    if (column.isRing) return Filled({column.first, column.second}, colour, MeanAngle(column));
    Line around = column.first;
    around.insert(around.end(), column.second.rbegin(), column.second.rend());
    return Filled({around}, colour, MeanAngle(column));
}

Written AsSatin(const Column& column, const std::vector<Rung>& rungs, const std::string& colour) {
    Written satin;
    satin.style = "fill:none;stroke:" + colour + ";stroke-width:0.2";
    satin.attributes = "inkstitch:satin_column=\"true\"";
    AppendLine(satin.data, column.first);
    AppendLine(satin.data, column.second);
    for (const Rung& rung : rungs) AppendLine(satin.data, {rung.from, rung.to});
    return satin;
}

Column Turned(Column column) {
    std::reverse(column.first.begin(), column.first.end());
    std::reverse(column.second.begin(), column.second.end());
    std::reverse(column.inclinations.begin(), column.inclinations.end());
    return column;
}

DPOINT StartOf(const Column& column) { return column.first.front(); }
DPOINT EndOf(const Column& column) { return column.first.back(); }

/// Always the column nearest to the needle next, from its nearer end.
std::vector<Column> Ordered(std::vector<Column> columns, DPOINT& needle) {
    std::vector<Column> ordered;
    while (!columns.empty()) {
        std::size_t nearest = 0;
        bool turned = false;
        double least = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            for (const bool backwards : {false, true}) {
                const double away = Distance(needle, backwards ? EndOf(columns[i]) : StartOf(columns[i]));
                if (away >= least) continue;
                least = away;
                nearest = i;
                turned = backwards;
            }
        }
        Column next = std::move(columns[nearest]);
        columns.erase(columns.begin() + static_cast<std::ptrdiff_t>(nearest));
        if (turned) next = Turned(std::move(next));
        needle = EndOf(next);
        ordered.push_back(std::move(next));
    }
    return ordered;
}

class Placement {
  public:
    explicit Placement(const StitchDesign& design) : m_design(design) {}
    DPOINT operator()(const DPOINT& p) const {
        return {(p.x - m_design.corner.x) * m_design.millimetresPerUnit,
                (p.y - m_design.corner.y) * m_design.millimetresPerUnit};
    }
    Line operator()(const Line& line) const {
        Line placed;
        for (const DPOINT& p : line) placed.push_back((*this)(p));
        return placed;
    }

  private:
    const StitchDesign& m_design;
};

/// The region in millimetres; none when it vanishes by rounding.
std::optional<Column> ColumnOf(const StitchRegion& region, const Placement& place) {
    Column column{Simplified(place(region.first)), Simplified(place(region.second)), {}, region.isRing};
    if (column.first.size() < 2 || column.second.size() < 2) return std::nullopt;
    for (const auto& [a, b] : region.inclinations)
        column.inclinations.push_back({place(region.first[static_cast<std::size_t>(a)]),
                                       place(region.second[static_cast<std::size_t>(b)])});
    return column;
}

}  // namespace

std::string WriteSatin(const StitchDesign& design, const SatinOptions& options) {
    const Placement place(design);
    const std::string width = Number(design.width * design.millimetresPerUnit);
    const std::string height = Number(design.height * design.millimetresPerUnit);
    std::string out =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:inkstitch=\"http://inkstitch.org/namespace\""
        " width=\"" +
        width + "mm\" height=\"" + height + "mm\" viewBox=\"0 0 " + width + ' ' + height +
        "\">\n<metadata><inkstitch:inkstitch_svg_version>3"
        "</inkstitch:inkstitch_svg_version></metadata>\n";
    int count = 0;
    const auto append = [&](const Written& written) {
        out += "<path id=\"region" + std::to_string(++count) + "\" style=\"" + written.style + "\" " +
               written.attributes + " d=\"" + written.data + "\"/>\n";
    };
    DPOINT needle;
    for (const StitchShape& shape : design.shapes) {
        std::vector<Column> columns;
        for (const IslandBreakUp& island : shape.islands) {
            if (island.end != BreakUpEnd::Done) {
                std::vector<Line> contours;
                for (const Line& contour : island.contours) contours.push_back(Simplified(place(contour)));
                append(Filled(contours, shape.colour, 0));
                continue;
            }
            for (const StitchRegion& region : island.regions) {
                if (auto column = ColumnOf(region, place)) columns.push_back(std::move(*column));
            }
        }
        for (const Column& column : Ordered(std::move(columns), needle)) {
            const auto rungs = ChooseRungs(column);
            const bool isFill = rungs.empty() || WidthOf(column) > options.mostSatin;
            append(isFill ? AsFill(column, shape.colour) : AsSatin(column, rungs, shape.colour));
        }
    }
    return out + "</svg>\n";
}

}  // namespace tarvex::app
