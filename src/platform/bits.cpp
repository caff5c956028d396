#include "platform/bits.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tarvex::platform {
namespace {

std::uint64_t BigEndian(std::uint64_t v) {
    v = (v & 0x00FF00FF00FF00FF) << 8 | (v >> 8 & 0x00FF00FF00FF00FF);
    v = (v & 0x0000FFFF0000FFFF) << 16 | (v >> 16 & 0x0000FFFF0000FFFF);
    return v << 32 | v >> 32;
}

/// Up to 8 bits starting anywhere, in the highest bits of the result.
unsigned LoadUpTo8(const std::byte* from, std::int64_t bit, int count) {
    const std::byte* at = from + (bit >> 3);
    const int skip = static_cast<int>(bit & 7);
    unsigned v = static_cast<unsigned>(at[0]) << skip;
    if (skip + count > 8) v |= static_cast<unsigned>(at[1]) >> (8 - skip);
    return v & 0xFF;
}

/// Writes the highest `count` of 8 bits so that they stay within one byte of the destination.
void StoreUpTo8(std::byte* to, std::int64_t bit, int count, unsigned bits) {
    const int skip = static_cast<int>(bit & 7);
    const unsigned mask = (0xFF00u >> count & 0xFF) >> skip;
    std::byte& at = to[bit >> 3];
    at = static_cast<std::byte>((static_cast<unsigned>(at) & ~mask) | (bits >> skip & mask));
}

/// 64 bits starting anywhere; the byte after the eighth is read only when the run reaches into it.
std::uint64_t Load64(const std::byte* from, std::int64_t bit) {
    const std::byte* at = from + (bit >> 3);
    const int skip = static_cast<int>(bit & 7);
    std::uint64_t v;
    std::memcpy(&v, at, 8);
    v = BigEndian(v);
    if (skip != 0) v = v << skip | static_cast<std::uint64_t>(at[8]) >> (8 - skip);
    return v;
}

}  // namespace

void CopyBits(std::byte* to, std::int64_t toBit, const std::byte* from, std::int64_t fromBit,
              std::int64_t count, std::uint8_t flip) {
    if (const int head = static_cast<int>(std::min<std::int64_t>(-toBit & 7, count)); head > 0) {
        StoreUpTo8(to, toBit, head, LoadUpTo8(from, fromBit, head) ^ flip);
        toBit += head;
        fromBit += head;
        count -= head;
    }
    if ((fromBit & 7) == 0 && flip == 0) {
        const std::int64_t bytes = count >> 3;
        std::memcpy(to + (toBit >> 3), from + (fromBit >> 3), static_cast<std::size_t>(bytes));
        toBit += bytes * 8;
        fromBit += bytes * 8;
        count -= bytes * 8;
    }
    const std::uint64_t flip64 = flip == 0 ? 0 : ~std::uint64_t{0};
    for (; count >= 64; count -= 64, toBit += 64, fromBit += 64) {
        const std::uint64_t v = BigEndian(Load64(from, fromBit) ^ flip64);
        std::memcpy(to + (toBit >> 3), &v, 8);
    }
    while (count > 0) {
        const int piece = static_cast<int>(std::min<std::int64_t>(8, count));
        StoreUpTo8(to, toBit, piece, LoadUpTo8(from, fromBit, piece) ^ flip);
        toBit += piece;
        fromBit += piece;
        count -= piece;
    }
}

void FillBits(std::byte* to, std::int64_t toBit, std::int64_t count, bool on) {
    const unsigned bits = on ? 0xFF : 0;
    if (const int head = static_cast<int>(std::min<std::int64_t>(-toBit & 7, count)); head > 0) {
        StoreUpTo8(to, toBit, head, bits);
        toBit += head;
        count -= head;
    }
    if (const std::int64_t bytes = count >> 3; bytes > 0) {
        std::memset(to + (toBit >> 3), static_cast<int>(bits), static_cast<std::size_t>(bytes));
        toBit += bytes * 8;
        count -= bytes * 8;
    }
    if (count > 0) StoreUpTo8(to, toBit, static_cast<int>(count), bits);
}

}  // namespace tarvex::platform
