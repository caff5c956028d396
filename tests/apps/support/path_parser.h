// Reads path data back, by the grammar of SVG 1.1, section 8.3.9, as far as the writer uses it.
// Knows nothing of how the writer abbreviates.
#pragma once

#include <stdexcept>
#include <string_view>
#include <vector>

#include "tarvex/records.h"

namespace tarvex::app::test {

struct ParsedSegment {
    bool isLine = false;
    DPOINT start;
    DPOINT c1;
    DPOINT c2;
    DPOINT end;
};

struct ParsedContour {
    DPOINT start;
    bool isClosed = false;
    std::vector<ParsedSegment> segments;  ///< with the line that closing draws, unless it has no length
};

/// Raises std::invalid_argument where the text is no path data.
std::vector<ParsedContour> ParsePath(std::string_view text);

}  // namespace tarvex::app::test
