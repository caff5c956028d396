// Which of many boxes meet a box: the question behind the marking of contours.
#pragma once

#include <cstddef>
#include <vector>

namespace tarvex::clip {

struct Box {
    double left = 0;
    double right = 0;
    double bottom = 0;
    double top = 0;

    bool Meets(const Box& other) const {
        return left <= other.right && other.left <= right && bottom <= other.top && other.bottom <= top;
    }
    void Include(const Box& other);
};

/// A tree of boxes, packed once: neighbours in x, then in y, share nodes.
class BoxIndex {
  public:
    explicit BoxIndex(std::vector<Box> boxes);
    /// Whether any of the boxes meets this one; boxes that touch meet.
    bool AnyMeets(const Box& box) const;

  private:
    static constexpr std::size_t fanOut = 8;
    std::vector<std::vector<Box>> m_levels;  ///< the boxes first, then what each eight of them cover
};

}  // namespace tarvex::clip
