// Fonts that were let go of, kept open for the next request in the same words.
//
// Drawing a text makes and deletes the same font for each of its characters, and finding and opening a font
// takes some hundred times as long as a glyph. A font on the shelf belongs to nobody; who takes it has it
// alone, so threads share nothing but the shelf's lock.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>

#include "platform/font.h"

namespace tarvex::platform {

class FontShelf {
  public:
    /// The process's shelf. Fonts hold on to it, so that it is there for the last of them.
    static const std::shared_ptr<FontShelf>& Instance();

    /// The font shelved under these words; null when there is none.
    std::unique_ptr<FontSource> Take(const LOGFONTW& words);
    /// Keeps the font, in the place of the one that has waited longest. It must answer as a new one would.
    void Put(const LOGFONTW& words, std::unique_ptr<FontSource> font);

  private:
    struct Place {
        LOGFONTW words{};
        std::unique_ptr<FontSource> font;
    };

    static constexpr std::size_t kPlaces = 4;

    std::mutex m_mutex;
    std::array<Place, kPlaces> m_places;
    std::size_t m_oldest = 0;
};

}  // namespace tarvex::platform
