// The rules of line tracing, with every search from the top: what the library's tracer is compared with.
#pragma once

#include <array>
#include <functional>
#include <utility>
#include <vector>

#include "support/ascii_raster.h"

namespace tarvex::test {

class PlainLineTracer {
  public:
    using Line = std::vector<std::pair<int, int>>;

    explicit PlainLineTracer(const BitPicture& picture)
        : m_width(picture.Width()),
          m_height(picture.Height()),
          m_cells(static_cast<std::size_t>(m_width), std::vector<int>(static_cast<std::size_t>(m_height))) {
        for (int x = 0; x < m_width; ++x) {
            for (int y = 0; y < m_height; ++y) Set(x, y, picture.Get(x, y) ? 1 : 0);
        }
    }

    int Get(int x, int y) const {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height) return 0;
        return m_cells[static_cast<std::size_t>(x)][static_cast<std::size_t>(y)];
    }
    void Set(int x, int y, int value) {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height) return;
        m_cells[static_cast<std::size_t>(x)][static_cast<std::size_t>(y)] = value;
    }

    using Is = std::function<bool(int)>;
    static Is NotEmpty() {
        return [](int v) { return v != 0; };
    }
    static Is Equal(int value) {
        return [value](int v) { return v == value; };
    }

    int Count(int x, int y, const Is& is) const {
        if (Get(x, y) == 0) return 0;
        int count = 0;
        for (const auto& [dx, dy] : kAround) count += is(Get(x + dx, y + dy)) ? 1 : 0;
        return count;
    }

    int Count2(int x, int y, const Is& is) const {
        using Cells = std::vector<std::pair<int, int>>;
        static const std::array<Cells, 8> behind = {{
            {{-2, 0}, {-2, -1}, {-2, -2}, {-1, -2}, {0, -2}},
            {{-2, -1}, {-2, 0}, {-2, 1}},
            {{-2, 0}, {-2, 1}, {-2, 2}, {-1, 2}, {0, 2}},
            {{-1, -2}, {0, -2}, {1, -2}},
            {{-1, 2}, {0, 2}, {1, 2}},
            {{2, 0}, {2, -1}, {2, -2}, {1, -2}, {0, -2}},
            {{2, -1}, {2, 0}, {2, 1}},
            {{2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}},
        }};
        if (Get(x, y) == 0) return 0;
        int count = 0;
        for (std::size_t k = 0; k < 8; ++k) {
            if (!is(Get(x + kAround[k].first, y + kAround[k].second))) continue;
            bool any = false;
            for (const auto& [dx, dy] : behind[k]) any = any || is(Get(x + dx, y + dy));
            count += any ? 1 : 0;
        }
        return count;
    }

    int Count3(int x, int y) const {
        const int count = Count(x, y, NotEmpty());
        return count > 2 ? Count2(x, y, NotEmpty()) : count;
    }
    int Count3(int x, int y, int value) const {
        const int count = Count(x, y, Equal(value));
        return count >= 2 ? Count2(x, y, Equal(value)) : count;
    }

    bool FindLinePoint(int& x, int& y, int n) const {
        return Find(x, y, [this, n](int cx, int cy) { return Get(cx, cy) == 1 && Count3(cx, cy, 1) == n; });
    }

    bool Step(int& x, int& y) {
        if (Get(x, y) == 1) Set(x, y, 3);
        for (const auto& [dx, dy] : kAround) {
            if (Get(x + dx, y + dy) != 1) continue;
            x += dx;
            y += dy;
            const int n = Count3(x, y);
            const int open = Count3(x, y, 1) + Count3(x, y, 2);
            if (n <= 2 && n != 1 && (open == 1 || open == 2)) return true;
            Set(x, y, 2);
            return false;
        }
        return false;
    }

    void Walk(const int x, const int y) {
        for (int way = 0; way < 2; ++way) {
            int atX = x, atY = y;
            while (Step(atX, atY)) {
            }
        }
    }

    std::vector<Line> Trace(int maxLines) {
        int x = 0, y = 0;
        if (FindLinePoint(x, y, 2)) {
            do Walk(x, y);
            while (FindLinePoint(x, y, 2));
        } else if (FindLinePoint(x, y, 1) || FindLinePoint(x, y, 0)) {
            Walk(x, y);
        }
        for (auto& column : m_cells) std::replace(column.begin(), column.end(), 3, 1);
        std::vector<Line> lines;
        while (
            Find(x, y, [this](int cx, int cy) { return Get(cx, cy) == 2 && Count(cx, cy, Equal(1)) > 0; })) {
            const Line line = FromAnchor(x, y);
            if (line.size() < 3) continue;
            lines.push_back(line);
            if (maxLines != 0 && static_cast<int>(lines.size()) >= maxLines) break;
        }
        return lines;
    }

    Line FromAnchor(int x, int y) {
        Line line;
        if (Get(x, y) != 2) return line;
        for (bool more = true; more;) {
            line.emplace_back(x, y);
            more = false;
            std::vector<std::pair<int, int>> anchors;
            for (const auto& [dx, dy] : kAround) {
                if (Get(x + dx, y + dy) == 2) anchors.emplace_back(x + dx, y + dy);
                if (Get(x + dx, y + dy) != 1) continue;
                x += dx;
                y += dy;
                Set(x, y, 3);
                more = true;
                break;
            }
            if (!more && !anchors.empty()) line.push_back(anchors[0]);
        }
        return line;
    }

  private:
    static constexpr std::array<std::pair<int, int>, 8> kAround = {
        {{-1, -1}, {-1, 0}, {-1, 1}, {0, -1}, {0, 1}, {1, -1}, {1, 0}, {1, 1}}};

    bool Find(int& x, int& y, const std::function<bool(int, int)>& is) const {
        for (int cy = 0; cy < m_height; ++cy) {
            for (int cx = 0; cx < m_width; ++cx) {
                if (!is(cx, cy)) continue;
                x = cx;
                y = cy;
                return true;
            }
        }
        return false;
    }

    int m_width;
    int m_height;
    std::vector<std::vector<int>> m_cells;  // by column
};

}  // namespace tarvex::test
