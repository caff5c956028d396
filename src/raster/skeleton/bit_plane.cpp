// The table of all neighbourhoods, and the size of planes.
#include "raster/skeleton/bit_plane.h"

#include "tarvex/framework.h"

namespace tarvex::skeleton {
namespace {

/// The neighbours around the centre, in a circle from the left upper one.
constexpr unsigned kCircle[8] = {0, 1, 2, 5, 8, 7, 6, 3};

/// Rutovitz' crossing number in the form for 8-connected shapes (Hilditch): the ground's pieces beside the
/// centre that another piece of the shape follows. The pixel is simple when there is exactly one.
constexpr bool ComputeSimple(Window window) {
    const auto isSet = [window](int k) { return (window >> kCircle[k & 7] & 1) != 0; };
    int pieces = 0;
    for (int side = 1; side < 8; side += 2) {
        if (!isSet(side) && (isSet(side + 1) || isSet(side + 2))) ++pieces;
    }
    return pieces == 1;
}

constexpr std::array<WindowFacts, 512> ComputeFacts() {
    std::array<WindowFacts, 512> facts{};
    for (Window window = 0; window < facts.size(); ++window) {
        const int neighbours = std::popcount(window & ~kCentre);
        facts[window] = {ComputeSimple(window), static_cast<std::uint8_t>(neighbours)};
    }
    return facts;
}

}  // namespace

constexpr std::array<WindowFacts, 512> kWindowFacts = ComputeFacts();

std::size_t BitPlane::Checked(std::size_t words, std::size_t height) {
    constexpr std::size_t most = (std::uint64_t{1} << 32) / 64 - 2;
    if (words > most / (height + 2)) AfxThrowMemoryException();
    return words * (height + 2);
}

}  // namespace tarvex::skeleton
