// Following borders along the sides of pixels.
//
// Between two neighbouring pixels of different regions is a side, from one corner of pixels to the next. At
// a corner meet two sides, three or four. Where two meet, the border goes on; so it does where four
// meet but the pixels of one diagonal hang together: there two borders touch and pass, each around one of
// the other two pixels. All other corners are junctions, and so are the picture's own corners and where a
// border comes to its edge, so that the edge is straight. Borders are followed from every
// junction first; the sides that are left then form loops.
//
// Around a region, its borders follow each other: at a junction, a border that has the region on its
// right goes on in the one that turns right the most.
#include "raster/contours/borders.h"

#include <algorithm>
#include <iterator>

namespace tarvex::contours {

namespace {

class Finder {
  public:
    explicit Finder(const RegionMap& map)
        : m_map(map),
          m_width(map.Width()),
          m_height(map.Height()),
          m_seen((static_cast<std::size_t>(m_width) + 1) * (static_cast<std::size_t>(m_height) + 1)),
          m_firstPlace(static_cast<std::size_t>(map.Count()) + 1) {
        m_found.beforeFirst.assign(static_cast<std::size_t>(map.Count()) + 1, noSide);
    }

    Borders Find() {
        for (int y = 0; y <= m_height; ++y) {
            for (int x = 0; x <= m_width; ++x) {
                if (!IsJunction(x, y)) continue;
                for (const Heading heading : {east, south, west, north}) {
                    if (HasSide(x, y, heading) && !IsSeen(x, y, heading)) Follow(x, y, heading, false);
                }
            }
        }
        // A loop has a side that goes down, and is found at its topmost one.
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x <= m_width; ++x) {
                if (HasSide(x, y, south) && !IsSeen(x, y, south)) Follow(x, y, south, true);
            }
        }
        return std::move(m_found);
    }

    /// Whether a side leaves the corner in this direction.
    bool HasSide(int x, int y, int heading) const { return Left(x, y, heading) != Right(x, y, heading); }

  private:
    RegionId Left(int x, int y, int heading) const {
        switch (heading) {
            case east:
                return m_map.At(x, y - 1);
            case south:
                return m_map.At(x, y);
            case west:
                return m_map.At(x - 1, y);
            default:
                return m_map.At(x - 1, y - 1);
        }
    }
    RegionId Right(int x, int y, int heading) const {
        switch (heading) {
            case east:
                return m_map.At(x, y);
            case south:
                return m_map.At(x - 1, y);
            case west:
                return m_map.At(x - 1, y - 1);
            default:
                return m_map.At(x, y - 1);
        }
    }

    bool IsOnFrame(int x, int y) const { return x == 0 || y == 0 || x == m_width || y == m_height; }

    bool IsJunction(int x, int y) const {
        int sides = 0;
        for (const Heading heading : {east, south, west, north}) sides += HasSide(x, y, heading) ? 1 : 0;
        if (sides == 0) return false;
        if (sides == 3) return true;
        if (sides == 4) return m_map.DiagonalAt(x, y) == Diagonal::none;
        if ((x == 0 || x == m_width) && (y == 0 || y == m_height)) return true;
        if (x == 0 || x == m_width) return HasSide(x, y, x == 0 ? east : west);
        if (y == 0 || y == m_height) return HasSide(x, y, y == 0 ? south : north);
        return false;
    }

    std::size_t Corner(int x, int y) const {
        return static_cast<std::size_t>(y) * (static_cast<std::size_t>(m_width) + 1) +
               static_cast<std::size_t>(x);
    }

    /// The mark of a side, in the corner at its top or left end.
    bool IsSeen(int x, int y, int heading) const {
        return (m_seen[Place(x, y, heading)] & Bit(heading)) != 0;
    }
    void MarkSeen(int x, int y, int heading) {
        std::uint8_t& marks = m_seen[Place(x, y, heading)];
        marks = static_cast<std::uint8_t>(marks | Bit(heading));
    }
    std::size_t Place(int x, int y, int heading) const {
        return Corner(heading == west ? x - 1 : x, heading == north ? y - 1 : y);
    }
    static unsigned Bit(int heading) { return heading == east || heading == west ? 1U : 2U; }

    /// The side by which a border goes on that has come to a corner that is no junction.
    int Onward(int x, int y, int heading) const {
        const Diagonal diagonal = m_map.DiagonalAt(x, y);
        if (diagonal != Diagonal::none && HasSide(x, y, (heading + 1) & 3) && HasSide(x, y, heading) &&
            HasSide(x, y, (heading + 3) & 3)) {
            // Arriving eastwards or westwards, the pixel on the left hangs together with the one ahead on
            // the right along the falling diagonal; the border turns round the pixel behind on the right.
            const bool turnsRight = (diagonal == Diagonal::falling) == (heading == east || heading == west);
            return (heading + (turnsRight ? 1 : 3)) & 3;
        }
        for (const int turn : {1, 0, 3}) {
            if (HasSide(x, y, (heading + turn) & 3)) return (heading + turn) & 3;
        }
        return heading;
    }

    void Follow(int startX, int startY, int heading, bool isLoop) {
        Border border{Left(startX, startY, heading),
                      Right(startX, startY, heading),
                      startX,
                      startY,
                      startX,
                      startY,
                      m_found.steps.size(),
                      0,
                      isLoop,
                      true,
                      0};
        const auto index = static_cast<Side>(m_found.all.size() * 2);
        const int firstHeading = heading;
        int x = startX;
        int y = startY;
        do {
            MarkSeen(x, y, heading);
            m_found.steps.push_back(static_cast<std::uint8_t>(heading));
            NoteFirstPixel(x, y, heading, index);
            const int nextX = x + StepX(heading);
            const int nextY = y + StepY(heading);
            border.isFrame = border.isFrame && ((x == nextX && (x == 0 || x == m_width)) ||
                                                (y == nextY && (y == 0 || y == m_height)));
            border.area += std::int64_t{x} * nextY - std::int64_t{nextX} * y;
            x = nextX;
            y = nextY;
            if (!isLoop && IsJunction(x, y)) break;
            heading = Onward(x, y, heading);
        } while (!isLoop || x != startX || y != startY || heading != firstHeading);
        border.endX = x;
        border.endY = y;
        border.stepCount = m_found.steps.size() - border.firstStep;
        if (!isLoop) {
            Leaves(startX, startY, firstHeading, index);
            Leaves(x, y, (heading + 2) & 3, index + 1);
        }
        m_found.all.push_back(border);
    }

    void Leaves(int x, int y, int heading, Side side) {
        m_found.leaving[static_cast<std::int64_t>(Corner(x, y)) * 4 + heading] = side;
    }

    /// Whether the side is the left one of a region's first pixel; remembers the border then.
    void NoteFirstPixel(int x, int y, int heading, Side side) {
        if (heading != south && heading != north) return;
        const int pixelY = heading == south ? y : y - 1;
        const RegionId region = m_map.At(x, pixelY);
        if (region == ground) return;
        Side& before = m_found.beforeFirst[static_cast<std::size_t>(region)];
        const std::size_t place = Corner(x, pixelY);
        std::size_t& first = m_firstPlace[static_cast<std::size_t>(region)];
        if (before != noSide && first <= place) return;
        first = place;
        before = heading == south ? side : side + 1;
    }

    const RegionMap& m_map;
    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_seen;
    std::vector<std::size_t> m_firstPlace;
    Borders m_found;
};

}  // namespace

void Borders::AppendCubics(Side side, std::vector<Cubic>& out) const {
    const std::span own = CubicsOf(BorderOf(side));
    if (!IsBackwards(side)) {
        out.insert(out.end(), own.begin(), own.end());
        return;
    }
    std::transform(own.rbegin(), own.rend(), std::back_inserter(out), [](const Cubic& c) {
        return Cubic{c.p3, c.p2, c.p1, c.p0};
    });
}

Borders FindBorders(const RegionMap& map) { return Finder(map).Find(); }

Side NextSide(const RegionMap& map, const Borders& borders, Side side) {
    const Border& border = borders.all[BorderOf(side)];
    if (border.isLoop) return side;
    const auto steps = borders.StepsOf(BorderOf(side));
    const bool backwards = IsBackwards(side);
    const int heading = backwards ? (steps.front() + 2) & 3 : steps.back();
    const std::int64_t x = backwards ? border.startX : border.endX;
    const std::int64_t y = backwards ? border.startY : border.endY;
    for (const int turn : {1, 0, 3}) {
        const auto next =
            borders.leaving.find((y * (std::int64_t{map.Width()} + 1) + x) * 4 + ((heading + turn) & 3));
        if (next != borders.leaving.end()) return next->second;
    }
    return side ^ 1;  // no border ends without another beginning there
}

}  // namespace tarvex::contours
