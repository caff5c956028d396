// Which colour of a palette stands for a pixel.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "raster/color/distance.h"

namespace tarvex::color {

/// Searches a palette from its start to its end, and remembers the answers for colours seen lately.
class PaletteIndex {
  public:
    explicit PaletteIndex(std::span<const RGBQUAD> palette)
        : m_palette(palette), m_own(slots), m_nearest(slots) {}

    /// The first entry nearer than 1200, or null.
    const RGBQUAD* Own(const RGBQUAD& c) {
        return Remembered(m_own, c, [this](const RGBQUAD& color) { return FindOwn(color); });
    }
    /// The nearest entry, the first of equally near ones. The palette is not empty.
    const RGBQUAD* Nearest(const RGBQUAD& c) {
        return Remembered(m_nearest, c, [this](const RGBQUAD& color) { return FindNearest(color); });
    }

  private:
    static constexpr std::size_t slots = 1U << 12;

    struct Answer {
        std::uint32_t key = ~0U;  // no colour's
        const RGBQUAD* entry = nullptr;
    };

    template <class Find>
    static const RGBQUAD* Remembered(std::vector<Answer>& answers, const RGBQUAD& c, Find find) {
        const std::uint32_t key = KeyOf(c);
        Answer& answer = answers[(key * 0x9E3779B1U) >> 20];
        if (answer.key != key) answer = {key, find(c)};
        return answer.entry;
    }

    const RGBQUAD* FindOwn(const RGBQUAD& c) const {
        for (const RGBQUAD& entry : m_palette) {
            if (Distance(entry, c) < sameCluster) return &entry;
        }
        return nullptr;
    }
    const RGBQUAD* FindNearest(const RGBQUAD& c) const {
        const RGBQUAD* nearest = nullptr;
        int least = largestDistance + 1;
        for (const RGBQUAD& entry : m_palette) {
            const int distance = Distance(entry, c);
            if (distance >= least) continue;
            least = distance;
            nearest = &entry;
        }
        return nearest;
    }

    std::span<const RGBQUAD> m_palette;
    std::vector<Answer> m_own;
    std::vector<Answer> m_nearest;
};

}  // namespace tarvex::color
