// A picture's greys, as outlines are traced from them.
#pragma once

#include <cstdint>
#include <vector>

#include "tarvex/contours.h"
#include "tarvex/picture.h"

namespace tarvex::app {

/// What shows through where a picture is transparent.
enum class Ground { white, black };

/// The ground on which the picture's opaque parts can be seen: white, unless they are white themselves
/// (less than a fiftieth of them has a luma below 240). White for pictures that are opaque all over.
Ground FindGround(const Picture& picture);

/// The luma (Rec. 601: 0.299 red + 0.587 green + 0.114 blue) of every pixel, laid over the ground by
/// its alpha. Grey pictures give up their own pixels instead of being copied.
class GreyPicture {
  public:
    GreyPicture(Picture&& picture, Ground ground);

    GreyView View() const { return {m_levels.data(), m_width, m_height, m_stride}; }

  private:
    int m_width;
    int m_height;
    std::ptrdiff_t m_stride;
    std::vector<std::uint8_t> m_levels;
};

}  // namespace tarvex::app
