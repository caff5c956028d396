// The raw sets around the clipper: ownership, the trivial results and the marking of contours that
// cannot contribute.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include "shaping/clip/box_index.h"
#include "shaping/clip/clip.h"
#include "shaping/polygon_guard.h"
#include "tarvex/clipper.h"
#include "tarvex/framework.h"

namespace tarvex {
namespace {

bool IsEmpty(const ClipPolygon& polygon) { return polygon.contourCount <= 0 || polygon.contours == nullptr; }

std::span<ClipContour> ContoursOf(const ClipPolygon& polygon) {
    if (IsEmpty(polygon)) return {};
    return {polygon.contours, static_cast<std::size_t>(polygon.contourCount)};
}

/// The vertices of a contour that is to be looked at; none for a marked one.
std::span<const DPOINT> VerticesOf(const ClipContour& contour) {
    if (contour.vertexCount <= 0 || contour.vertices == nullptr) return {};
    return {contour.vertices, static_cast<std::size_t>(contour.vertexCount)};
}

std::vector<std::span<const DPOINT>> Views(const ClipPolygon& polygon) {
    std::vector<std::span<const DPOINT>> views;
    for (const ClipContour& contour : ContoursOf(polygon)) views.push_back(VerticesOf(contour));
    return views;
}

struct BoxedContour {
    ClipContour* contour;
    clip::Box box;
};

/// The contours that are neither marked nor ignored, with their bounding boxes.
std::vector<BoxedContour> BoxedContours(const ClipPolygon& polygon) {
    std::vector<BoxedContour> boxed;
    for (ClipContour& contour : ContoursOf(polygon)) {
        const std::span<const DPOINT> vertices = VerticesOf(contour);
        if (vertices.empty()) continue;
        const DPOINT& first = vertices.front();
        clip::Box box{first.x, first.x, first.y, first.y};
        bool finite = true;
        for (const DPOINT& p : vertices) {
            finite = finite && std::isfinite(p.x) && std::isfinite(p.y);
            box.Include({p.x, p.x, p.y, p.y});
        }
        if (finite) boxed.push_back({&contour, box});
    }
    return boxed;
}

/// Negates the counts of the contours whose boxes meet none of the others.
void MarkApart(const std::vector<BoxedContour>& contours, const std::vector<BoxedContour>& others) {
    std::vector<clip::Box> boxes;
    boxes.reserve(others.size());
    for (const BoxedContour& other : others) boxes.push_back(other.box);
    const clip::BoxIndex index(boxes);
    for (const BoxedContour& c : contours) {
        const bool met = index.Search([&c](const clip::Box& box) { return box.Meets(c.box); },
                                      [](std::uint32_t) { return true; });
        if (!met) c.contour->vertexCount = -c.contour->vertexCount;
    }
}

void Compute(clip::Operation operation, ClipPolygon& subject, ClipPolygon& clip, ClipPolygon& result) {
    const bool cuts = operation == clip::Operation::difference || operation == clip::Operation::intersection;
    if (cuts && IsEmpty(subject)) return;
    if (operation == clip::Operation::intersection && IsEmpty(clip)) return;
    if (cuts && !IsEmpty(clip)) {
        const std::vector<BoxedContour> subjects = BoxedContours(subject);
        const std::vector<BoxedContour> clips = BoxedContours(clip);
        MarkApart(clips, subjects);
        if (operation == clip::Operation::intersection) MarkApart(subjects, clips);
    }
    const std::vector<clip::Contour> contours = clip::Clip(operation, Views(subject), Views(clip));
    if (contours.size() > std::size_t{std::numeric_limits<std::int32_t>::max()}) AfxThrowMemoryException();
    result = MakePolygon(contours);
}

}  // namespace

ClipPolygon MakePolygon(std::span<const clip::Contour> contours) {
    PolygonGuard guard;
    if (contours.empty()) return {};
    ClipPolygon& polygon = guard.polygon;
    polygon.holes = new std::int32_t[contours.size()];
    polygon.contours = new ClipContour[contours.size()];
    for (const clip::Contour& contour : contours) {
        auto& made = polygon.contours[polygon.contourCount];
        made.vertices = new DPOINT[contour.vertices.size()];
        made.vertexCount = static_cast<std::int32_t>(contour.vertices.size());
        std::copy(contour.vertices.begin(), contour.vertices.end(), made.vertices);
        polygon.holes[polygon.contourCount++] = contour.hole ? 1 : 0;
    }
    return guard.Release();
}

void AddClipContour(ClipPolygon& polygon, const ClipContour& contour, std::int32_t hole) try {
    const std::span<const ClipContour> old = ContoursOf(polygon);
    const std::span<const DPOINT> vertices = VerticesOf(contour);
    if (old.size() >= std::size_t{std::numeric_limits<std::int32_t>::max()}) AfxThrowMemoryException();
    auto holes = std::make_unique<std::int32_t[]>(old.size() + 1);
    auto contours = std::make_unique<ClipContour[]>(old.size() + 1);
    std::unique_ptr<DPOINT[]> copy;
    if (!vertices.empty()) copy = std::make_unique<DPOINT[]>(vertices.size());

    std::copy(vertices.begin(), vertices.end(), copy.get());
    std::copy(old.begin(), old.end(), contours.get());
    if (polygon.holes != nullptr) std::copy_n(polygon.holes, old.size(), holes.get());
    contours[old.size()] = {contour.vertexCount, copy.release()};
    holes[old.size()] = hole;
    delete[] polygon.contours;
    delete[] polygon.holes;
    polygon.contourCount = static_cast<std::int32_t>(old.size()) + 1;
    polygon.contours = contours.release();
    polygon.holes = holes.release();
} catch (const std::bad_alloc&) {
    AfxThrowMemoryException();
}

void ClipPolygons(int op, ClipPolygon& subject, ClipPolygon& clip, ClipPolygon& result) {
    PolygonGuard computed;
    try {
        if (op >= 0 && op <= 3) Compute(static_cast<clip::Operation>(op), subject, clip, computed.polygon);
    } catch (const std::bad_alloc&) {
        FreeClipPolygon(result);
        AfxThrowMemoryException();
    }
    FreeClipPolygon(result);
    result = computed.Release();
}

void FreeClipPolygon(ClipPolygon& polygon) {
    for (const ClipContour& contour : ContoursOf(polygon)) delete[] contour.vertices;
    delete[] polygon.contours;
    delete[] polygon.holes;
    polygon = {};
}

}  // namespace tarvex
