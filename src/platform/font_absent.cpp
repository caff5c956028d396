// What a build without FreeType or Fontconfig has of fonts: none.
#include "platform/font.h"

namespace tarvex::platform {

std::unique_ptr<FontSource> FindFont(const LOGFONTW&) { return nullptr; }
std::unique_ptr<FontSource> OpenFont(std::span<const std::byte>, const LOGFONTW&) { return nullptr; }

}  // namespace tarvex::platform
