// Whether another run of the sweep would decide as the one at hand does, found
// out while it runs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "shaping/clip/point.h"

namespace tarvex::clip {

/// Keeps with each active piece the vertices that were found beside it, until
/// the piece has come to its end and is known as it has become. The lists share
/// one small pool.
class OrderCheck {
  public:
    static constexpr std::int32_t none = -1;

    enum class Side : std::uint8_t { left, right };

    /// Adds to a piece's list (none at first) a vertex that must lie on that side
    /// of it.
    void Note(std::int32_t& list, Side side, std::int32_t vertex) {
        std::int32_t note = m_free;
        if (note == none) {
            note = static_cast<std::int32_t>(m_notes.size());
            m_notes.emplace_back();
        } else {
            m_free = At(note).next;
        }
        At(note) = {side == Side::left ? vertex : ~vertex, list};
        list = note;
    }

    /// Looks where the vertices lie, and takes the list back.
    void Check(std::int32_t list, const Segment& piece, const std::vector<Point>& vertices);
    /// Takes a list back unseen.
    void Release(std::int32_t list);
    /// Notes that two pieces have the same ends.
    void Fail() { m_holds = false; }

    bool Holds() const { return m_holds; }

  private:
    struct Vertex {
        std::int32_t number = 0;  ///< or its complement, for one on the right
        std::int32_t next = none;
    };
    Vertex& At(std::int32_t note) { return m_notes[static_cast<std::size_t>(note)]; }

    std::vector<Vertex> m_notes;
    std::int32_t m_free = none;
    bool m_holds = true;
};

}  // namespace tarvex::clip
