// A picture enlarged by a whole factor, smoothly.
#pragma once

#include <cstdint>
#include <vector>

#include "tarvex/contours.h"

namespace tarvex::contours {

/// Interpolates with the cubic that passes through the picture's own samples (R. Keys, "Cubic
/// convolution interpolation for digital image processing", IEEE Trans. ASSP 29, 1981; a = -1/2), rows
/// and columns one after the other, the picture's edge pixels repeated outwards. Overshoot is cut at
/// black and white.
class EnlargedPicture {
  public:
    EnlargedPicture(const GreyView& picture, int factor);
    GreyView View() const;

  private:
    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_levels;
};

}  // namespace tarvex::contours
