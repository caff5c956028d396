// From a font as it is asked for to the files of installed fonts.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvex/platform.h"

namespace tarvex::platform {

/// A font in a file, and what is to be done to its outlines to make them what was asked for.
struct FontFile {
    std::string path;
    int index = 0;  ///< within the file
    std::wstring family;
    int weight = FW_NORMAL;
    bool isItalic = false;
    bool isToBeWidened = false;
    double slant = 0;  ///< x grows by this part of y
};

/// The answer to one request: the nearest font and, after it, those that can help it out.
class FontChoice {
  public:
    virtual ~FontChoice() = default;
    virtual const FontFile& Nearest() const = 0;
    /// The first font with outlines that has the character, in the order of nearness.
    virtual std::optional<FontFile> NearestWith(char32_t character) = 0;
};

/// Null when there is no font at all.
std::unique_ptr<FontChoice> ChooseFont(const LOGFONTW& font);

}  // namespace tarvex::platform
