// Filling a 4-connected region from a seed: the one seed fill, for every kind of raster.
//
// It is the span-stack fill published by Heckbert ("A seed fill algorithm", Graphics Gems, 1990). A
// record on the stack is a filled span of a row and the direction of a neighbouring row that has yet to be
// looked at below the span. Filling a pixel must make it fail the inside test, so that each is
// filled once; the rows beyond the raster are cut off where records are pushed.
#pragma once

#include <cstdint>
#include <vector>

#include "tarvex/shapetrace.h"

namespace tarvex {

using FillStack = std::vector<FILLRECORD>;

/// Pushes a record unless the row it leads to lies outside a raster of `height` rows.
inline void PushSpan(FillStack& stack, int height, FILLRECORD record) {
    const std::int64_t row = std::int64_t{record.y} + record.dy;
    if (row >= 0 && row < height) stack.push_back(record);
}

/// Takes the last record, its y advanced to the row it leads to. The stack must not be empty.
inline FILLRECORD PopSpan(FillStack& stack) {
    FILLRECORD record = stack.back();
    stack.pop_back();
    record.y += record.dy;
    return record;
}

/// Fills the region around (x, y), a pixel of the region in a raster of `height` rows. The stack is emptied
/// first and empty afterwards. `spans` does the work on rows:
///   int FillLeft(x, y)         fills from x leftwards as long as pixels are inside, and returns the
///                              first column that is not (x itself when that is not; -1 at the end);
///   int FillRight(x, y)        the same rightwards, returning the width at the end;
///   int SkipRight(x, last, y)  the first inside column of x .. last, or last + 1 (x when x > last).
/// PixelSpans makes these from operations on single pixels.
template <class Spans>
void FillFromSeed(Spans&& spans, FillStack& stack, int height, int x, int y) {
    stack.clear();
    PushSpan(stack, height, {y, x, x, 1});
    PushSpan(stack, height, {y + 1, x, x, -1});
    while (!stack.empty()) {
        const FILLRECORD span = PopSpan(stack);
        const auto push = [&](int from, int to, int dy) { PushSpan(stack, height, {span.y, from, to, dy}); };
        int left = spans.FillLeft(span.xl, span.y) + 1;
        int next = span.xl;
        if (left <= span.xl) {
            if (left < span.xl) push(left, span.xl - 1, -span.dy);  // leaked beyond the span's left end
            next = span.xl + 1;
        } else {
            next = left = spans.SkipRight(span.xl + 1, span.xr, span.y);
            if (left > span.xr) continue;
        }
        do {
            const int end = spans.FillRight(next, span.y);
            push(left, end - 1, span.dy);
            if (end > span.xr + 1) push(span.xr + 1, end - 1, -span.dy);  // leaked beyond its right end
            next = left = spans.SkipRight(end + 1, span.xr, span.y);
        } while (left <= span.xr);
    }
}

/// The spans' operations made from single pixels: `inside(x, y)` and `fill(x, y)`, called within a raster of
/// `width` columns only.
template <class Inside, class Fill>
class PixelSpans {
  public:
    PixelSpans(int width, Inside inside, Fill fill) : m_width(width), m_inside(inside), m_fill(fill) {}

    int FillLeft(int x, int y) {
        for (; x >= 0 && m_inside(x, y); --x) m_fill(x, y);
        return x;
    }
    int FillRight(int x, int y) {
        for (; x < m_width && m_inside(x, y); ++x) m_fill(x, y);
        return x;
    }
    int SkipRight(int x, int last, int y) {
        while (x <= last && !m_inside(x, y)) ++x;
        return x;
    }

  private:
    int m_width;
    Inside m_inside;
    Fill m_fill;
};

}  // namespace tarvex
