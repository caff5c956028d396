// Runs of bits in 1-bit rows: the most significant bit of a byte comes first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvex::platform {

/// Copies `count` bits and inverts those set in `flip` (all or none: 0 or 0xFF). The two runs must not
/// overlap. Bits beside the destination's run keep their values, and no byte is read that holds none
/// of the source's bits.
void CopyBits(std::byte* to, std::int64_t toBit, const std::byte* from, std::int64_t fromBit,
              std::int64_t count, std::uint8_t flip);

/// Sets or clears `count` bits.
void FillBits(std::byte* to, std::int64_t toBit, std::int64_t count, bool on);

}  // namespace tarvex::platform
