// The functions on nodes of contours and what embroidery asks of them, with any coordinates: all of it ends,
// what is refused is left alone, what is cut hangs together, and measures agree with one another.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "checks.h"
#include "coordinates.h"
#include "input.h"
#include "tarvex/nodes.h"
#include "tarvex/stitch.h"

namespace tarvex::fuzz {
namespace {

using Contour = CArray<BPOINT, BPOINT>;

std::span<const BPOINT> Span(const Contour& contour) {
    return {contour.GetData(), static_cast<std::size_t>(contour.GetSize())};
}

void Insert(Input& input, int kind, const Contour& given) {
    Contour contour;
    contour.Copy(given);
    const DPOINT p = TakePoint(input, kind);
    const bool exactly = input.TakeBetween(0, 1) == 1;
    const int at = AddPointToPolyBezier(&contour, p, exactly);
    if (contour.GetSize() == given.GetSize()) {
        Require(Same(contour, given), "nothing inserted, nothing changed");
        const CBPointArrayMath math(Span(given));
        if (at < 0 || math.GetNearest(p).segment < 0 || kind > 1) return;
        const DPOINT nearest = math.GetPoint(math.GetNearest(p));
        Require(std::hypot(contour[at].pt.x - p.x, contour[at].pt.y - p.y) <=
                    std::hypot(nearest.x - p.x, nearest.y - p.y) + 1e-6,
                "a node found is the contour's nearest point");
        return;
    }
    Require(contour.GetSize() == given.GetSize() + 1 && at > 0 && at < contour.GetUpperBound(),
            "one node is inserted, inside");
    Require(!exactly || Same(contour[at].pt, p), "at the very point when asked");
    Require(contour[at].flags == 0, "without flags");
    for (int i = 0; i < given.GetSize(); ++i)
        Require(Same(contour[i < at ? i : i + 1].pt, given[i].pt), "all other anchors stay");
}

void Finish(const Contour& given) {
    Contour once;
    once.Copy(given);
    FixBezierCP(once);
    Require(once.GetSize() == given.GetSize(), "finishing keeps the nodes");
    if (given.GetSize() >= 2) {
        for (const BPOINT& node : once) {
            for (const DPOINT& p : {node.cp1, node.cp2})
                Require(IsFinite(p) || !IsFinite(node.pt), "handles are finite where anchors are");
        }
    }
    Contour twice;
    twice.Copy(once);
    FixBezierCP(twice);
    Require(Same(once, twice), "finishing again changes nothing");
}

void Cut(Input& input, const Contour& contour) {
    Contour first, second;
    const int segment = input.TakeBetween(-1, 12);
    const double t = TakeCoordinate(input, input.TakeBetween(0, COORDINATE_KINDS - 1));
    const double share = input.TakeBetween(0, 255) / 255.0;
    for (const double parameter : {t, share}) {
        if (!SplitBPointArray(contour, segment, parameter, first, second)) {
            Require(first.IsEmpty() && second.IsEmpty(), "no cut, no parts");
            continue;
        }
        Require(first.GetSize() >= 2 && second.GetSize() >= 2, "both parts have a segment");
        const BPOINT& end = first[first.GetUpperBound()];
        Require(Same(end.pt, second[0].pt), "parts meet in one anchor");
        Require(Same(end.cp2, end.pt) && Same(second[0].cp1, second[0].pt), "no handle beyond the cut");
        Require(Same(first[0].pt, contour[0].pt) &&
                    Same(second[second.GetUpperBound()].pt, contour[contour.GetUpperBound()].pt),
                "parts begin and end where the contour does");
    }
}

void Turn(Input& input, const Contour& given) {
    Contour contour;
    contour.Copy(given);
    const int from = input.TakeBetween(-1, 12);
    const int to = input.TakeBetween(-1, 12);
    const bool can = from >= 0 && from <= to && to < given.GetSize();
    Require(SwapPoints(contour, from, to) == can, "only a range that is there is turned");
    Require(can || Same(contour, given), "otherwise nothing is");
    Require(SwapPoints(contour, from, to) == can && Same(contour, given), "turned twice, as it was");
    for (int i = -1; i <= given.GetSize(); ++i) {
        DPOINT bisector{9, 9};
        const bool has = GetBisector(given, i, bisector);
        Require(has ? std::fabs(std::hypot(bisector.x, bisector.y) - 1) < 1e-9 : Same(bisector, DPOINT{0, 0}),
                "a bisector is a unit vector, or nothing");
        const int smooth = IsSmooth(given, i);
        Require(smooth == 0 || (smooth == 1 && has), "a smooth node has tangents");
    }
}

void Measure(Input& input, int kind, const Contour& contour) {
    const double length = GetBezierLength(Span(contour));
    Require(!(length < 0), "no length is negative");
    DRECT frame{};
    const auto isSome = [&contour](double DPOINT::*coordinate) {
        return std::any_of(contour.begin(), contour.end(),
                           [&](const BPOINT& node) { return !std::isnan(node.pt.*coordinate); });
    };
    const bool hasFrame = contour.GetSize() >= 2 && isSome(&DPOINT::x) && isSome(&DPOINT::y);
    Require(GetBezierFrame(Span(contour), frame) == hasFrame, "two nodes with numbers have a frame");
    Contour turned;
    turned.Copy(contour);
    SwapPoints(turned);
    const CBPointArrayMath math(Span(contour));
    const DPOINT p = TakePoint(input, kind);
    const BPOINTPLACE place = math.GetNearest(p);
    Require(place.segment >= -1 && place.segment < std::max(contour.GetSize() - 1, 0) && place.t >= 0 &&
                place.t <= 1,
            "the nearest place is on the contour");
    (void)math.GetTangent(place);
    (void)math.GetPoint(TakeCoordinate(input, input.TakeBetween(0, COORDINATE_KINDS - 1)));
    Contour part;
    const double from = TakeCoordinate(input, input.TakeBetween(0, COORDINATE_KINDS - 1));
    const double to = TakeCoordinate(input, input.TakeBetween(0, COORDINATE_KINDS - 1));
    Require(math.GetPart(from, to, part) == !part.IsEmpty(), "a part, or nothing");
    if (!part.IsEmpty()) RequireFinite(part);
    CArray<DPOINT, DPOINT> even;
    const int count = input.TakeBetween(-2, 40);
    math.GetEvenPoints(count, even);
    Require(even.GetSize() == std::max(count, 0) || even.IsEmpty(), "as many points as asked for, or none");

    if (kind > 1 || contour.GetSize() < 2) return;  // sums of huge coordinates round to anything
    Require(std::isfinite(length), "small contours have a length");
    Require(std::fabs(GetBezierLength(Span(turned)) - length) <= 1e-9 * (1 + length),
            "the other way is as long");
    Require(std::fabs(GetBezierArea(Span(turned)) + GetBezierArea(Span(contour))) <= 1e-7,
            "and goes around the same area backwards");
    const Box controls = BoxOf(contour);
    Require(controls.Holds({frame.left, frame.right, frame.top, frame.bottom}, 1e-9),
            "a curve lies in its control points' frame");
    const Box anchors = AnchorBoxOf(contour);
    Require((Box{frame.left, frame.right, frame.top, frame.bottom}).Holds(anchors, 1e-9),
            "its frame holds the anchors");
    if (part.GetSize() >= 2)
        Require(GetBezierLength(Span(part)) <= length + 1e-6, "a part is no longer than the whole");
}

void Stitch(Input& input, int kind, const Contour& rail) {
    Contour other;
    TakeContour(input, kind, 10, other);
    const double spacing = TakeCoordinate(input, input.TakeBetween(0, COORDINATE_KINDS - 1));
    CArray<DLINE, DLINE> lines;
    const bool done = GetDefaultSatinInclinations(rail, other, spacing, lines);
    Require(done == !lines.IsEmpty() && lines.GetSize() <= MAX_SATIN_INCLINATIONS, "lines, not too many");
    for (const DLINE& line : lines) Require(IsFinite(line.p1) && IsFinite(line.p2), "lines are finite");

    CPolyPolyBezier shape;
    for (int count = input.TakeBetween(0, 4); count > 0; --count) {
        auto contour = std::make_unique<Contour>();
        TakeContour(input, kind, 6, *contour);
        shape.Add(std::move(contour));
    }
    shape.Add(nullptr);
    CArray<BEZIERHOLEINFO, BEZIERHOLEINFO> info;
    GetBezierHoleInfo(shape, info);
    Require(info.GetSize() == shape.GetSize(), "one entry for each slot");
    for (int i = 0; i < info.GetSize(); ++i) {
        const BEZIERHOLEINFO& at = info[i];
        Require(at.parent >= -1 && at.parent < info.GetSize() && at.depth >= 0, "parents are there");
        Require((at.parent == -1) == (at.depth == 0), "what is in something has a parent");
        Require(at.isHole == (at.depth % 2 == 1), "odd depths are holes");
        int steps = 0;
        for (int up = i; up != -1; up = info[up].parent)
            Require(++steps <= info.GetSize(), "parents form no circle");
    }
}

void Wind(Input& input) {
    const auto number = [&input] {
        return TakeCoordinate(input, input.TakeBetween(0, COORDINATE_KINDS - 1));
    };
    SPIRAL shape;
    shape.centre = {number(), number()};
    shape.startRadius = number();
    shape.endRadius = number();
    shape.turns = std::fmod(number(), 30);
    shape.startAngle = number();
    shape.clockwise = input.TakeBetween(0, 1) == 1;
    Contour spiral, twin;
    const bool done = GetSymmetricalSpiralBPoints(shape, number(), spiral, twin);
    Require(done == !spiral.IsEmpty() && spiral.GetSize() == twin.GetSize() &&
                spiral.GetSize() <= MAX_SPIRAL_NODES,
            "two spirals of as many nodes, or none");
    if (done) Require(Same(spiral[0].pt, twin[0].pt), "they begin in one point");
}

}  // namespace

void TryInput(Input input) {
    const int what = input.TakeBetween(0, 6);
    const int kind = input.TakeBetween(0, COORDINATE_KINDS);
    if (what == 6) {
        Wind(input);
        return;
    }
    CArray<BPOINT, BPOINT> contour;
    TakeContour(input, kind, 10, contour);
    if (what == 0) Insert(input, kind, contour);
    if (what == 1) Finish(contour);
    if (what == 2) Cut(input, contour);
    if (what == 3) Turn(input, contour);
    if (what == 4) Measure(input, kind, contour);
    if (what == 5) Stitch(input, kind, contour);
}

}  // namespace tarvex::fuzz
