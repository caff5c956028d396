// Any two polygon sets with any operation, and any text as a set: the areas keep the laws of sets, what
// comes out stays as it is when clipped again, and the text form survives being written and read.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "input.h"
#include "tarvex/clipper.h"

namespace tarvex::fuzz {
namespace {

struct Set {
    ClipPolygon polygon;

    Set() = default;
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;
    ~Set() { FreeClipPolygon(polygon); }
};

/// Small whole numbers, their neighbours among the doubles, or any double at all.
double TakeCoordinate(Input& input, int kind) {
    if (kind == 3) return input.Take<double>();
    double value = input.TakeBetween(0, 15);
    if (kind >= 1) value *= 0.1;
    if (kind == 2) value = std::nextafter(value, input.TakeBetween(0, 2) - 1.0);
    return value;
}

void TakeSet(Input& input, int kind, Set& set) {
    for (int contours = input.TakeBetween(0, 4); contours > 0; --contours) {
        std::vector<DPOINT> vertices(static_cast<std::size_t>(input.TakeBetween(0, 12)));
        for (DPOINT& p : vertices) p = {TakeCoordinate(input, kind), TakeCoordinate(input, kind)};
        AddClipContour(set.polygon, {static_cast<std::int32_t>(vertices.size()), vertices.data()}, 0);
    }
}

double Area(const ClipPolygon& polygon) {
    double twice = 0;
    for (int c = 0; c < polygon.contourCount; ++c) {
        const ClipContour& contour = polygon.contours[c];
        for (int i = 0; i < contour.vertexCount; ++i) {
            const DPOINT& p = contour.vertices[i];
            const DPOINT& q = contour.vertices[(i + 1) % contour.vertexCount];
            twice += p.x * q.y - q.x * p.y;
        }
    }
    return twice / 2;
}

void RequireSame(const ClipPolygon& a, const ClipPolygon& b) {
    Require(a.contourCount == b.contourCount, "a result clipped again has its contours");
    for (int c = 0; c < a.contourCount; ++c) {
        Require(a.holes[c] == b.holes[c] && a.contours[c].vertexCount == b.contours[c].vertexCount,
                "flags and counts too");
        for (int i = 0; i < a.contours[c].vertexCount; ++i) {
            const DPOINT& p = a.contours[c].vertices[i];
            const DPOINT& q = b.contours[c].vertices[i];
            Require(p.x == q.x && p.y == q.y, "and its vertices");
        }
    }
}

void TryOperations(Input& input) {
    const int kind = input.TakeBetween(0, 3);
    Set subject;
    Set clip;
    TakeSet(input, kind, subject);
    TakeSet(input, kind, clip);
    Set none;
    const auto ownArea = [&none](Set& set) {
        Set own;
        ClipPolygons(3, set.polygon, none.polygon, own.polygon);
        return Area(own.polygon);
    };
    const double both = ownArea(subject) + ownArea(clip);
    double area[4] = {};
    for (const int op :
         {3, 2, 1, 0}) {  // those that mark come last, and what they mark takes part in neither
        Set result;
        ClipPolygons(op, subject.polygon, clip.polygon, result.polygon);
        area[op] = Area(result.polygon);
        for (int c = 0; c < result.polygon.contourCount; ++c)
            Require(result.polygon.contours[c].vertexCount >= 3, "contours have three vertices");
        Set again;
        ClipPolygons(3, result.polygon, none.polygon, again.polygon);
        RequireSame(result.polygon, again.polygon);
    }
    if (kind == 3) return;  // areas may be beyond any number
    Require(std::fabs(area[2] - (area[3] - area[1])) < 1e-9, "exclusive or is union without intersection");
    Require(std::fabs(area[3] + area[1] - both) < 1e-9, "union and intersection have both areas");
}

void TryText(std::string_view text) {
    for (const ClipHoleFlags flags : {ClipHoleFlags::omitted, ClipHoleFlags::written}) {
        Set set;
        if (!ReadClipPolygon(text, flags, set.polygon)) continue;
        Set again;
        const std::string written = WriteClipPolygon(set.polygon, flags);
        Require(ReadClipPolygon(written, flags, again.polygon), "what is written can be read");
        Require(WriteClipPolygon(again.polygon, flags) == written, "and is the same");
    }
}

}  // namespace

void TryInput(Input input) {
    if (input.TakeBetween(0, 3) == 0) {
        const auto rest = input.Rest();
        TryText({reinterpret_cast<const char*>(rest.data()), rest.size()});
    } else {
        TryOperations(input);
    }
}

}  // namespace tarvex::fuzz
