// `tarvex info`: the measures of a drawing's outlines, or a picture's size and format.
//
// As JSON, a drawing is
//
//     {"file": NAME, "kind": "drawing", "page": [x, y, width, height] or null, <measures>,
//      "elements": [{"element": "path", "id": "..." or null, <measures>}, ...], "remarks": "..." or null}
//
// where <measures> are
//
//     "contours": 3, "closed": 2, "nodes": 40, "frame": [left, top, right, bottom] or null,
//     "length": 123.4, "area": 56.7, "winding": "clockwise"
//
// and a picture is
//
//     {"file": NAME, "kind": "picture", "format": "PNG", "width": 640, "height": 480, "pixels": "RGB"}
//
// `file` is the name that was given. Of several files each is a line by itself.
//
// Lengths are in the root's user space, with the transforms of groups applied, rounded to 6 decimals.
// `page` is what the root shows (null: all). Elements that are not shown (display="none") do not count.
// `nodes` does not count a closed contour's last anchor, which is its first. `area` is that of the
// contours together, those of opposite windings against each other and open ones closed by a line: the
// area painted, where holes run against their surroundings and contours do not overlap. `winding` is
// "clockwise" or "counter-clockwise" as seen on the screen, "mixed", or "none" when nothing has an area.
#pragma once

#include <cstdint>
#include <string>

namespace tarvex::app {

struct InfoOptions {
    std::string input;
    bool asJson = false;
    std::uint64_t maxPixels = 100'000'000;
};

/// What is printed, text or a line of JSON. Raises ProgramError.
std::string InfoText(const InfoOptions& options);

}  // namespace tarvex::app
