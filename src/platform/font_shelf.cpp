// A handful of places, filled in turn. Nothing here allocates, so that deleting a font cannot fail.
#include "platform/font_shelf.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tarvex::platform {
namespace {

bool AreSame(const LOGFONTW& a, const LOGFONTW& b) {
    const auto* const end = std::find(std::begin(a.lfFaceName), std::end(a.lfFaceName), WCHAR{0});
    const auto length = static_cast<std::size_t>(end - std::begin(a.lfFaceName));
    const std::size_t compared =
        std::min(length + 1, std::size(a.lfFaceName));  // with the final 0, if there is one
    return a.lfHeight == b.lfHeight && a.lfWidth == b.lfWidth && a.lfWeight == b.lfWeight &&
           a.lfItalic == b.lfItalic && a.lfPitchAndFamily == b.lfPitchAndFamily &&
           std::equal(a.lfFaceName, a.lfFaceName + compared, b.lfFaceName);
}

}  // namespace

const std::shared_ptr<FontShelf>& FontShelf::Instance() {
    static const auto shelf = std::make_shared<FontShelf>();
    return shelf;
}

std::unique_ptr<FontSource> FontShelf::Take(const LOGFONTW& words) {
    const std::lock_guard lock(m_mutex);
    for (Place& place : m_places) {
        if (place.font != nullptr && AreSame(place.words, words)) return std::move(place.font);
    }
    return nullptr;
}

void FontShelf::Put(const LOGFONTW& words, std::unique_ptr<FontSource> font) {
    std::unique_ptr<FontSource> old;  // closed without the lock
    const std::lock_guard lock(m_mutex);
    Place* place =
        std::find_if(m_places.begin(), m_places.end(), [](const Place& p) { return p.font == nullptr; });
    if (place == m_places.end()) {
        place = &m_places[m_oldest];
        m_oldest = (m_oldest + 1) % kPlaces;
    }
    old = std::exchange(place->font, std::move(font));
    place->words = words;
}

}  // namespace tarvex::platform
