// The rules of colour-region tracing, pixel by pixel: what the library's tracer is compared with.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

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

    explicit PlainAutoTrace(const ColourPicture& picture)
        : m_picture(picture), m_fill(m_picture.pixels.size()), m_trace(m_fill) {}

    std::vector<Outline> DoTrace(int x, int y, int tolerance, bool smooth, const std::vector<bool>& cut) {
        std::fill(m_fill.begin(), m_fill.end(), false);
        std::fill(m_trace.begin(), m_trace.end(), false);
        int left = x, right = x, top = y, bottom = y;
        for (const POINT& p : Fill(x, y, tolerance, cut)) {
            left = std::min(left, static_cast<int>(p.x)), right = std::max(right, static_cast<int>(p.x));
            top = std::min(top, static_cast<int>(p.y)), bottom = std::max(bottom, static_cast<int>(p.y));
        }
        left = std::max(left - 5, 0), top = std::max(top - 5, 0);
        right = std::min(right + 5, m_picture.width), bottom = std::min(bottom + 5, m_picture.height);
        if (smooth) Smooth(left, top, right, bottom);
        return Trace(left, top, right, bottom);
    }

  private:
    bool Filled(int x, int y) const {
        return x >= 0 && y >= 0 && x < m_picture.width && y < m_picture.height && m_fill[Index(x, y)];
    }
    std::size_t Index(int x, int y) const { return static_cast<std::size_t>(y * m_picture.width + x); }

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

    std::vector<POINT> Fill(int x, int y, int tolerance, const std::vector<bool>& cut) {
        std::vector<POINT> filled;
        if (x < 0 || y < 0 || x >= m_picture.width || y >= m_picture.height) return filled;
        const RGBQUAD seed = Colour(x, y, tolerance);
        std::vector<POINT> waiting{{x, y}};
        while (!waiting.empty()) {
            const POINT p = waiting.back();
            waiting.pop_back();
            if (p.x < 0 || p.y < 0 || p.x >= m_picture.width || p.y >= m_picture.height) continue;
            if (m_fill[Index(p.x, p.y)] || cut[Index(p.x, p.y)]) continue;
            const RGBQUAD c = Colour(p.x, p.y, tolerance);
            const int r = c.rgbRed - seed.rgbRed, g = c.rgbGreen - seed.rgbGreen,
                      b = c.rgbBlue - seed.rgbBlue;
            if (r * r + g * g + b * b > tolerance) continue;
            m_fill[Index(p.x, p.y)] = true;
            filled.push_back(p);
            for (const POINT& n : {POINT{p.x - 1, p.y}, {p.x + 1, p.y}, {p.x, p.y - 1}, {p.x, p.y + 1}})
                waiting.push_back(n);
        }
        return filled;
    }

    void Smooth(int left, int top, int right, int bottom) {
        for (const int radius : {1, 2}) {
            const std::vector<bool> before = m_fill;
            for (int y = top; y < bottom; ++y) {
                for (int x = left; x < right; ++x) {
                    int count = 0;
                    for (int dy = -radius; dy <= radius; ++dy) {
                        for (int dx = -radius; dx <= radius; ++dx)
                            count += before[Index(std::clamp(x + dx, 0, m_picture.width - 1),
                                                  std::clamp(y + dy, 0, m_picture.height - 1))];
                    }
                    if (count >= (radius == 1 ? 1 : 13)) m_fill[Index(x, y)] = true;
                }
            }
        }
    }

    std::vector<Outline> Trace(int left, int top, int right, int bottom) {
        std::vector<Outline> outlines;
        for (int y = top; y < bottom; y += 10) {
            for (int x = left; x < right; x += 10) {
                if (!Filled(x, y) || m_trace[Index(x, y)]) continue;
                Outline outline = Follow(x, y);
                if (outline.empty()) continue;
                outline.push_back(DPOINT(outline[0]));
                for (const DPOINT& p : outline)
                    m_trace[Index(static_cast<int>(p.x), static_cast<int>(p.y))] = true;
                if (outline.size() > 5) outlines.push_back(outline);
            }
        }
        return outlines;
    }

    Outline Follow(int x, int y) const {
        static constexpr int dx[] = {1, 1, 0, -1, -1, -1, 0, 1};
        static constexpr int dy[] = {0, 1, 1, 1, 0, -1, -1, -1};
        while (Filled(x - 1, y)) --x;
        bool alone = true;
        for (int d = 0; d < 8; ++d) alone = alone && !Filled(x + dx[d], y + dy[d]);
        if (alone) return {};
        Outline points;
        int atX = x, atY = y, last = 1;
        do {
            if (points.size() < 10 && m_trace[Index(atX, atY)]) return {};
            points.push_back({static_cast<double>(atX), static_cast<double>(atY)});
            int d = (last + (last % 2 == 1 ? 2 : 1)) % 8;
            while (!Filled(atX + dx[d], atY + dy[d])) d = (d + 7) % 8;
            atX += dx[d], atY += dy[d], last = d;
        } while (atX != x || atY != y);
        return points;
    }

    ColourPicture m_picture;
    std::vector<bool> m_fill;
    std::vector<bool> m_trace;
};

}  // namespace tarvex::test
