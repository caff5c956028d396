// The rules of colour-region tracing, pixel by pixel: what the library's tracer is compared with.
#pragma once

#include <algorithm>
#include <vector>

#include "raster/plain_shape_trace.h"
#include "tarvex/autotrace.h"

namespace tarvex::test {

/// A picture of 32-bit pixels in rows from the top.
struct ColourPicture {
    int width;
    int height;
    std::vector<RGBQUAD> pixels;

    ColourPicture(int w, int h) : width(w), height(h), pixels(static_cast<std::size_t>(w * h)) {}
    RGBQUAD& At(int x, int y) { return pixels[static_cast<std::size_t>(y * width + x)]; }
    RGBQUAD& Clamped(int x, int y) { return At(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1)); }
};

class PlainAutoTrace {
  public:
    using Outline = std::vector<DPOINT>;

    explicit PlainAutoTrace(const ColourPicture& picture) : m_picture(picture) {}

    std::vector<Outline> DoTrace(int x, int y, int tolerance, bool smooth) {
        BitPicture fill = Fill(x, y, tolerance);
        int left = fill.Width(), right = 0, top = fill.Height(), bottom = 0;
        for (int py = 0; py < fill.Height(); ++py) {
            for (int px = 0; px < fill.Width(); ++px) {
                if (!fill.Get(px, py)) continue;
                left = std::min(left, px), right = std::max(right, px);
                top = std::min(top, py), bottom = std::max(bottom, py);
            }
        }
        const RECT frame = {std::max(left - 5, 0), std::max(top - 5, 0), std::min(right + 5, fill.Width()),
                            std::min(bottom + 5, fill.Height())};
        if (smooth) fill = Smoothed(Smoothed(fill, frame, 1, 1), frame, 2, 13);
        return Trace(fill, frame);
    }

  private:
    RGBQUAD Colour(int x, int y, int tolerance) {
        if (tolerance == 0) return m_picture.At(x, y);
        int sum[3] = {};
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                const RGBQUAD& p = m_picture.Clamped(x + dx, y + dy);
                sum[0] += p.rgbBlue, sum[1] += p.rgbGreen, sum[2] += p.rgbRed;
            }
        }
        return {static_cast<BYTE>(sum[0] / 9), static_cast<BYTE>(sum[1] / 9), static_cast<BYTE>(sum[2] / 9),
                0};
    }

    BitPicture Fill(int x, int y, int tolerance) {
        return Region(m_picture.width, m_picture.height, x, y, [&](int px, int py) {
            const RGBQUAD seed = Colour(x, y, tolerance), c = Colour(px, py, tolerance);
            const int r = c.rgbRed - seed.rgbRed, g = c.rgbGreen - seed.rgbGreen,
                      b = c.rgbBlue - seed.rgbBlue;
            return r * r + g * g + b * b <= tolerance;
        });
    }

    /// With what at least so many of the pixels around it are filled.
    static BitPicture Smoothed(const BitPicture& fill, const RECT& frame, int radius, int least) {
        BitPicture smoothed = fill;
        for (int y = frame.top; y < frame.bottom; ++y) {
            for (int x = frame.left; x < frame.right; ++x) {
                int count = 0;
                for (int dy = -radius; dy <= radius; ++dy) {
                    for (int dx = -radius; dx <= radius; ++dx)
                        count += fill.Get(std::clamp(x + dx, 0, fill.Width() - 1),
                                          std::clamp(y + dy, 0, fill.Height() - 1));
                }
                if (count >= least) smoothed.Set(x, y);
            }
        }
        return smoothed;
    }

    static std::vector<Outline> Trace(const BitPicture& fill, const RECT& frame) {
        BitPicture traced(fill.Width(), fill.Height());
        std::vector<Outline> outlines;
        for (int y = frame.top; y < frame.bottom; y += 10) {
            for (int x = frame.left; x < frame.right; x += 10) {
                if (traced.Get(x, y)) continue;
                const auto [taken, outline] = PlainOutline(fill, traced, x, y, 0);
                if (!taken) continue;
                for (const DPOINT& p : outline) traced.Set(static_cast<int>(p.x), static_cast<int>(p.y));
                if (outline.size() > 5) outlines.push_back(outline);
            }
        }
        return outlines;
    }

    ColourPicture m_picture;
};

}  // namespace tarvex::test
