// Regions of colour: tiles that fit to the last bit, layers without a gap, and thin features that stay.
#include "support/precompiled.h"

#include <array>
#include <map>
#include <set>
#include <span>

#include "support/grey_picture.h"
#include "support/property.h"
#include "tarvex/colortrace.h"
#include "tarvex/nodes.h"

namespace tarvex {
namespace {

constexpr std::uint16_t kNone = NO_LABEL;

struct Labels {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> labels;

    Labels(int w, int h, std::uint16_t label = 0)
        : width(w), height(h), labels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), label) {}
    /// Rows of digits; '.' has no label.
    explicit Labels(const std::vector<std::string>& rows)
        : Labels(static_cast<int>(rows[0].size()), static_cast<int>(rows.size())) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const char c = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
                At(x, y) = c == '.' ? kNone : static_cast<std::uint16_t>(c - '0');
            }
    }
    std::uint16_t& At(int x, int y) {
        return labels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    std::uint16_t At(int x, int y) const { return const_cast<Labels*>(this)->At(x, y); }
    LabelView View() const { return {labels.data(), width, height, width}; }
};

/// Discs and bars over each other, some without a label, or any labels at all.
Labels AnyLabels() {
    Labels picture(*rc::gen::inRange(1, 40), *rc::gen::inRange(1, 40));
    const int colors = *rc::gen::inRange(1, 6);
    const auto paint = [&] {
        const int label = *rc::gen::inRange(-1, colors);
        return label < 0 ? kNone : static_cast<std::uint16_t>(label);
    };
    if (*rc::gen::inRange(0, 4) == 0) {
        for (std::uint16_t& label : picture.labels) label = paint();
        return picture;
    }
    for (int shape = *rc::gen::inRange(0, 9); shape > 0; --shape) {
        const int cx = *rc::gen::inRange(0, 40);
        const int cy = *rc::gen::inRange(0, 40);
        const int r = *rc::gen::inRange(1, 16);
        const int thin = *rc::gen::element(1, 1, 4);
        const std::uint16_t label = paint();
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) {
                const int dx = x - cx;
                const int dy = (y - cy) * thin;
                if (dx * dx + dy * dy <= r * r) picture.At(x, y) = label;
            }
    }
    return picture;
}

std::vector<PaintedRegions> Trace(const Labels& labels, RegionStyle style, int minPoints = 0) {
    RegionOptions options;
    options.style = style;
    options.minPoints = minPoints;
    return TraceRegions(labels.View(), options);
}

using CubicBits = std::array<double, 8>;

template <class Visit>
void ForEachCubic(const CPolyPolyBezier& outlines, Visit visit) {
    for (int i = 0; i < outlines.GetSize(); ++i) {
        const auto& nodes = outlines[i];
        for (int k = 0; k + 1 < nodes.GetSize(); ++k)
            visit(CubicBits{nodes[k].pt.x, nodes[k].pt.y, nodes[k].cp2.x, nodes[k].cp2.y, nodes[k + 1].cp1.x,
                            nodes[k + 1].cp1.y, nodes[k + 1].pt.x, nodes[k + 1].pt.y});
    }
}

CubicBits Reversed(const CubicBits& c) { return {c[6], c[7], c[4], c[5], c[2], c[3], c[0], c[1]}; }

DPOINT PointAt(const CubicBits& c, double t) {
    const double s = 1 - t;
    const double w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
    return {w[0] * c[0] + w[1] * c[2] + w[2] * c[4] + w[3] * c[6],
            w[0] * c[1] + w[1] * c[3] + w[2] * c[5] + w[3] * c[7]};
}

/// How often the contours go round a point, by polygons of 12 points a cubic.
int Winding(const CPolyPolyBezier& outlines, DPOINT p) {
    int winding = 0;
    ForEachCubic(outlines, [&](const CubicBits& c) {
        constexpr int steps = 12;
        DPOINT a = PointAt(c, 0);
        for (int k = 1; k <= steps; ++k) {
            const DPOINT b = PointAt(c, static_cast<double>(k) / steps);
            if ((a.y <= p.y) != (b.y <= p.y)) {
                const double x = a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x);
                if (x > p.x) winding += b.y > a.y ? 1 : -1;
            }
            a = b;
        }
    });
    return winding;
}

/// The label painted last at a point.
std::uint16_t ShownAt(const std::vector<PaintedRegions>& painted, DPOINT p) {
    for (std::size_t i = painted.size(); i-- > 0;)
        if (Winding(painted[i].outlines, p) != 0) return painted[i].label;
    return kNone;
}

/// Whether the pixel and those around it are as asked.
template <class Ask>
bool AllAround(const Labels& labels, int x, int y, Ask ask) {
    for (int v = std::max(0, y - 1); v <= std::min(labels.height - 1, y + 1); ++v)
        for (int u = std::max(0, x - 1); u <= std::min(labels.width - 1, x + 1); ++u)
            if (!ask(labels.At(u, v))) return false;
    return true;
}

bool IsInterior(const Labels& labels, int x, int y) {
    return AllAround(labels, x, y, [&](std::uint16_t label) { return label == labels.At(x, y); });
}

TEST(TraceRegions, CutOutsShareEveryBorderToTheLastBit) {
    test::ExpectLaw(
        [] {
            const Labels labels = AnyLabels();
            const auto painted = Trace(labels, RegionStyle::cutout);
            std::map<CubicBits, int> balance;  // of a cubic against its reverse
            for (const PaintedRegions& regions : painted)
                ForEachCubic(regions.outlines, [&](const CubicBits& c) { ++balance[c]; });
            const bool hasNone = std::count(labels.labels.begin(), labels.labels.end(), kNone) > 0;
            for (const auto& [cubic, count] : balance) {
                const bool onFrame = (cubic[0] == cubic[6] && (cubic[0] == 0 || cubic[0] == labels.width)) ||
                                     (cubic[1] == cubic[7] && (cubic[1] == 0 || cubic[1] == labels.height));
                if (onFrame) continue;
                const auto reverse = balance.find(Reversed(cubic));
                if (reverse == balance.end()) {
                    RC_ASSERT(hasNone);
                } else {
                    RC_ASSERT(reverse->second == count);
                }
            }
            // Each label has one entry, and what is well inside a region has its label.
            std::set<std::uint16_t> seen;
            for (const PaintedRegions& regions : painted) RC_ASSERT(seen.insert(regions.label).second);
            for (int y = 0; y < labels.height; ++y)
                for (int x = 0; x < labels.width; ++x)
                    if (IsInterior(labels, x, y))
                        RC_ASSERT(ShownAt(painted, {x + 0.5, y + 0.5}) == labels.At(x, y));
        },
        150);
}

/// Whether one layer by itself covers all of the pixel, so that no way of smoothing edges lets through what
/// is beneath.
bool IsCoveredWhole(const std::vector<PaintedRegions>& painted, int x, int y) {
    constexpr double within[] = {0.001, 0.33, 0.67, 0.999};
    return std::any_of(painted.begin(), painted.end(), [&](const PaintedRegions& layer) {
        for (int k = 0; k < 16; ++k)
            if (Winding(layer.outlines, {x + within[k % 4], y + within[k / 4]}) == 0) return false;
        return true;
    });
}

TEST(TraceRegions, LayersShowEveryRegionAndNoBackground) {
    test::ExpectLaw(
        [] {
            const Labels labels = AnyLabels();
            const auto painted = Trace(labels, RegionStyle::stacked);
            for (int y = 0; y < labels.height; ++y)
                for (int x = 0; x < labels.width; ++x) {
                    if (IsInterior(labels, x, y))
                        RC_ASSERT(ShownAt(painted, {x + 0.5, y + 0.5}) == labels.At(x, y));
                    const bool hasRegionsAround =
                        AllAround(labels, x, y, [](std::uint16_t l) { return l != kNone; });
                    RC_ASSERT(!hasRegionsAround || IsCoveredWhole(painted, x, y));
                }
        },
        100);
}

TEST(TraceRegions, EveryOutlineEnclosesAnAreaHoweverGenerousTheTolerance) {
    test::ExpectLaw(
        [] {
            const Labels labels = AnyLabels();
            RegionOptions options;
            options.style = *rc::gen::element(RegionStyle::cutout, RegionStyle::stacked);
            options.minPoints = 0;
            options.tolerance = *rc::gen::element(0.0, 1.0, 4.0, 50.0);
            for (const PaintedRegions& regions : TraceRegions(labels.View(), options)) {
                for (int i = 0; i < regions.outlines.GetSize(); ++i) {
                    const auto& nodes = regions.outlines[i];
                    const std::span contour(nodes.GetData(), static_cast<std::size_t>(nodes.GetSize()));
                    RC_ASSERT(std::fabs(GetBezierArea(contour)) > 0.01);
                }
            }
        },
        150);
}

TEST(TraceRegions, BordersRunWhereSmoothedEdgesSay) {
    constexpr double radius = 17.3;
    constexpr double centre = 25.2;
    const test::GreyPicture disc =
        test::Render(50, 50, [](double x, double y) { return std::hypot(x - centre, y - centre) < radius; });
    const RGBQUAD colors[] = {{200, 40, 10, 0}, {30, 190, 250, 0}};
    Labels labels(50, 50);
    Labels onGround(50, 50, kNone);
    std::vector<RGBQUAD> source;
    std::vector<std::uint8_t> opacity;
    for (std::size_t i = 0; i < disc.levels.size(); ++i) {
        const int inside = 255 - disc.levels[i];
        const auto mix = [&](int a, int b) {
            return static_cast<BYTE>((a * (255 - inside) + b * inside) / 255);
        };
        source.push_back({mix(200, 30), mix(40, 190), mix(10, 250), 0});
        opacity.push_back(mix(0, 255));
        if (inside >= 128) labels.labels[i] = onGround.labels[i] = 1;
    }
    RegionOptions hard;
    RegionOptions soft;
    soft.source = source;
    soft.colors = colors;
    RegionOptions transparent;
    transparent.opacity = opacity;
    const std::tuple<const Labels&, RegionOptions, double> cases[] = {
        {labels, hard, 0.75}, {labels, soft, 0.3}, {onGround, hard, 0.75}, {onGround, transparent, 0.3}};
    for (const auto& [picture, options, bound] : cases) {
        const auto painted = TraceRegions(picture.View(), options);
        ASSERT_EQ(painted.size(), &picture == &labels ? 2U : 1U);
        // The larger comes first, and is not cut out.
        EXPECT_EQ(painted[0].label, painted.size() == 2 ? 0 : 1);
        EXPECT_EQ(painted[0].outlines.GetSize(), 1);
        double worst = 0;
        ForEachCubic(painted.back().outlines, [&](const CubicBits& c) {
            for (double t = 0; t < 1; t += 0.05) {
                const DPOINT p = PointAt(c, t);
                worst = std::max(worst, std::fabs(std::hypot(p.x - centre, p.y - centre) - radius));
            }
        });
        EXPECT_LT(worst, bound);
    }
}

struct SpeckCase {
    std::vector<std::string> rows;
    int minPoints;
    std::vector<std::uint16_t> painted;  // labels in the order of painting
};

TEST(TraceRegions, GivesSpecksToTheirNeighboursAndPaintsLargeRegionsFirst) {
    const SpeckCase cases[] = {
        {{"0000", "0010", "0000"}, 6, {0}},
        {{"0000", "0010", "0000"}, 3, {0, 1}},
        {{"00000", "01100", "00000"}, 6, {0}},
        {{"00000", "01110", "00000"}, 6, {0, 1}},
        {{"1", "0", "2"}, 8, {}},           // all of it is too small
        {{"....", ".1..", "...."}, 6, {}},  // nobody to give it to
        {{"....", ".1..", "...."}, 0, {1}},
        {{"22222", "20002", "20102", "20002", "22222"}, 0, {2, 0, 1}},
        {{"0000000", "0111110", "0122210", "0121210", "0122210", "0111110", "0000000"}, 0, {0, 1, 2, 1}},
        {{"10000", "01000", "00100", "00010", "00001"}, 6, {0, 1}},  // a thin diagonal hangs together
        {{"1"}, 0, {1}},
        {{"..", ".."}, 0, {}},
    };
    for (const SpeckCase& c : cases) {
        std::vector<std::uint16_t> painted;
        for (const PaintedRegions& regions : Trace(Labels(c.rows), RegionStyle::stacked, c.minPoints))
            painted.push_back(regions.label);
        EXPECT_EQ(painted, c.painted) << testing::PrintToString(c.rows);
    }
}

TEST(TraceRegions, HolesThatShowTheGroundStayOpen) {
    const Labels labels({"0000000", "0000000", "00...00", "001.100", "00...00", "0000000", "0000000"});
    const auto painted = Trace(labels, RegionStyle::stacked);
    EXPECT_EQ(ShownAt(painted, {3.5, 2.5}), kNone);
    EXPECT_EQ(ShownAt(painted, {3.5, 3.5}), kNone);
    EXPECT_EQ(ShownAt(painted, {2.5, 3.4}), 1);
    EXPECT_EQ(ShownAt(painted, {0.5, 0.5}), 0);
}

TEST(TraceRegions, RefusesWhatDoesNotFit) {
    const Labels labels({"01", "10"});
    const std::vector<RGBQUAD> quads(4);
    const std::vector<std::uint8_t> opacities(5);
    struct Case {
        const char* what;
        LabelView view;
        std::size_t source, colors, opacity;  // how many of each there are
        std::size_t painted;
    };
    const Case cases[] = {
        {"labels alone are enough", labels.View(), 0, 0, 0, 2},
        {"no picture", {}, 0, 0, 0, 0},
        {"too large a picture", {labels.labels.data(), INT32_MAX, INT32_MAX, 0}, 0, 0, 0, 0},
        {"a source without colours", labels.View(), 4, 0, 0, 0},
        {"label 1 has no colour", labels.View(), 4, 1, 0, 0},
        {"a source with its colours", labels.View(), 4, 4, 0, 2},
        {"a source of other size", labels.View(), 3, 4, 0, 0},
        {"an opacity of other size", labels.View(), 0, 0, 5, 0},
    };
    for (const Case& c : cases) {
        RegionOptions options;
        options.minPoints = 0;
        options.source = std::span(quads).first(c.source);
        options.colors = std::span(quads).first(c.colors);
        options.opacity = std::span(opacities).first(c.opacity);
        EXPECT_EQ(TraceRegions(c.view, options).size(), c.painted) << c.what;
    }
}

TEST(TraceRegions, StopsWhenProgressSaysSo) {
    Labels noise(600, 600);
    std::mt19937 random(3);
    for (std::uint16_t& label : noise.labels) label = static_cast<std::uint16_t>(random() % 7);
    RegionOptions stopped;
    stopped.minPoints = 0;
    stopped.progress = [](double) { return false; };
    EXPECT_EQ(TraceRegions(noise.View(), stopped).size(), 0U);
}

constexpr RGBQUAD kWhite{255, 255, 255, 0};
constexpr RGBQUAD kBlack{0, 0, 0, 0};

/// The labels of a row of pixels, repeated seven times downwards, all of which were reduced to label 0.
std::string Restored(const std::string& row, std::vector<RGBQUAD>& colors, std::size_t most) {
    static const std::map<char, RGBQUAD> pixels = {
        {'W', kWhite}, {'l', {200, 200, 200, 0}}, {'g', {128, 128, 128, 0}}, {'d', {60, 60, 60, 0}},
        {'B', kBlack}, {'R', {0, 0, 220, 0}}};
    std::vector<RGBQUAD> source;
    for (int y = 0; y < 7; ++y)
        for (const char c : row) source.push_back(pixels.at(c));
    const std::vector<std::uint16_t> reduced(source.size(), 0);
    const auto labels = RestoreThinFeatures(static_cast<int>(row.size()), source, reduced, colors, most);
    std::string text;
    for (std::size_t x = 0; x < row.size(); ++x) text += static_cast<char>('0' + labels[3 * row.size() + x]);
    return text;
}

TEST(RestoreThinFeatures, BringsLinesBackAndNotBlends) {
    std::vector<RGBQUAD> colors{kWhite, kBlack, {128, 128, 128, 0}};
    EXPECT_EQ(Restored("WWBWW", colors, 3), "00100");
    EXPECT_EQ(Restored("WWgWW", colors, 3), "00200");
    EXPECT_NE(Restored("WWgBBB", colors, 3)[2], '2') << "a blend of white and black is no grey line";
    EXPECT_EQ(Restored("WldBdlW", colors, 3), "0011100");
    EXPECT_EQ(colors.size(), 3U);
    // A colour that no entry is near to is added if there is room.
    EXPECT_EQ(Restored("WWRWW", colors, 4), "00300");
    ASSERT_EQ(colors.size(), 4U);
    EXPECT_EQ(colors[3].rgbRed, 220);
}

TEST(RestoreThinFeatures, LeavesWhatDoesNotFitAndWhatHasNoLabel) {
    std::vector<RGBQUAD> colors{kWhite, kBlack};
    const std::vector<RGBQUAD> source{kBlack, kBlack, kBlack, kWhite};
    const std::vector<std::uint16_t> reduced{0, kNone, 1, 0};
    const auto restored = [&](int width, std::span<const std::uint16_t> labels) {
        return RestoreThinFeatures(width, source, labels, colors, 2);
    };
    EXPECT_EQ(restored(2, reduced), (std::vector<std::uint16_t>{1, kNone, 1, 0}));
    EXPECT_EQ(restored(3, reduced), reduced);
    EXPECT_EQ(restored(0, reduced), reduced);
    EXPECT_EQ(restored(-1, reduced), reduced);
    const std::vector<std::uint16_t> beyond{0, 2, 1, 0};
    EXPECT_EQ(restored(2, beyond), beyond);
    colors.clear();
    EXPECT_EQ(restored(2, reduced), reduced);
}

}  // namespace
}  // namespace tarvex
