// Tracing any small bitmap, compared with the rules followed pixel by pixel, call after call.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "checks.h"
#include "input.h"
#include "raster/plain_shape_trace.h"
#include "tarvex/shapetrace.h"

namespace tarvex::fuzz {
namespace {

using test::BitPicture;
using test::PlainShapeTrace;

/// The bytes' bits again and again, over all of the picture.
BitPicture TakePicture(Input& input) {
    BitPicture picture(input.TakeBetween(1, 96), input.TakeBetween(1, 48));
    const auto bytes = input.Rest();
    std::size_t next = 0;
    for (int y = 0; y < picture.Height() && !bytes.empty(); ++y) {
        for (int x = 0; x < picture.Width(); ++x, ++next)
            picture.Set(x, y, (bytes[next / 8 % bytes.size()] >> (next % 8) & 1) != 0);
    }
    return picture;
}

void RequireSame(const CPolyPolyBezier& traced, const std::vector<PlainShapeTrace::Contour>& plain) {
    Require(static_cast<std::size_t>(traced.GetSize()) == plain.size(), "the plain rules' contours");
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const auto& nodes = traced[static_cast<int>(i)];
        Require(static_cast<std::size_t>(nodes.GetSize()) == plain[i].size(), "the plain rules' nodes");
        for (std::size_t k = 0; k < plain[i].size(); ++k) {
            const BPOINT& a = nodes[static_cast<int>(k)];
            const BPOINT& b = plain[i][k];
            Require(Same(a.cp1, b.cp1) && Same(a.pt, b.pt) && Same(a.cp2, b.cp2),
                    "the plain rules' coordinates");
        }
    }
}

void CompareOutlines(CShapeTrace& tracer, const PlainShapeTrace& plain, const BitPicture& picture, int x,
                     int y, int minPoints) {
    if (!picture.Inside(x, y)) return;
    const auto [taken, expected] = plain.GetOutline(x, y, minPoints);
    CArray<DPOINT, DPOINT> points;
    Require((tracer.GetOutline(x, y, points, minPoints) != 0) == taken, "outlines are taken alike");
    Require(static_cast<std::size_t>(points.GetSize()) == expected.size(), "outlines are as long");
    for (std::size_t i = 0; i < expected.size(); ++i)
        Require(Same(points[static_cast<int>(i)], expected[i]), "outlines run alike");
}

/// Four-connected, one pixel after the other.
void PlainFill(BitPicture& picture, int x, int y) {
    std::vector<POINT> waiting{{x, y}};
    while (!waiting.empty()) {
        const POINT p = waiting.back();
        waiting.pop_back();
        if (!picture.Get(p.x, p.y)) continue;
        picture.Set(p.x, p.y, false);
        for (const POINT& next : {POINT{p.x - 1, p.y}, {p.x + 1, p.y}, {p.x, p.y - 1}, {p.x, p.y + 1}})
            waiting.push_back(next);
    }
}

}  // namespace

void TryInput(Input input) {
    const int minPoints = input.Take<std::int8_t>();
    const int secondMinPoints = input.Take<std::int8_t>();
    const int x = input.TakeBetween(0, 99);
    const int y = input.TakeBetween(0, 49);
    BitPicture picture = TakePicture(input);
    const UniqueBitmap bitmap = test::Bitmap1(picture);
    Require(static_cast<bool>(bitmap), "a small bitmap can be had");
    CShapeTrace tracer(bitmap.Get());
    PlainShapeTrace plain(picture);

    CompareOutlines(tracer, plain, picture, x, y, minPoints);
    CPolyPolyBezier out;
    Require(tracer.DoTrace(out, minPoints), "there are rasters");
    RequireSame(out, plain.DoTrace(minPoints));
    CompareOutlines(tracer, plain, picture, x, y, minPoints);
    Require(tracer.DoTrace(out, secondMinPoints), "there are rasters");
    RequireSame(out, plain.DoTrace(secondMinPoints));

    tracer.SeedFill(x, y);
    PlainFill(picture, x, y);
    for (int row = 0; row < picture.Height(); ++row) {
        for (int column = 0; column < picture.Width(); ++column) {
            Require(tracer.GetTracePixel(column, row) == plain.Trace().Get(column, row), "marks agree");
            Require(tracer.GetPixel(column, row) == picture.Get(column, row), "fills agree");
        }
    }
}

}  // namespace tarvex::fuzz
