// Random numbers that are the same on every system.
#pragma once

#include <array>
#include <cstdint>

#include "tarvex/export.h"

namespace tarvex {

/// A small, fast generator of uniformly distributed numbers, not for secrets.
///
///     CRandomGenerator random(42);
///     random.SetInterval(1, 6);
///     int thrown = random.iRandom();
///
/// Equal seeds give equal sequences, on every machine; a copy continues the sequence of what it was copied
/// from. Different generators may be used from different threads.
///
/// Method: a lagged Fibonacci generator with rotation (RANROT, type A; A. Fog, "Chaotic Random Number
/// Generators with Random Cycle Lengths", 2001) on eleven words with a lag of seven, seeded by the 32-bit
/// xorshift (G. Marsaglia, "Xorshift RNGs", 2003).
class TARVEX_API CRandomGenerator {
  public:
    /// Seed 0xFFFFFFFF.
    CRandomGenerator();
    /// Only the low 32 bits of the seed count, and 0 counts as 0xFFFFFFFF. The interval of iRandom is
    /// 1000000 to 100000000.
    explicit CRandomGenerator(unsigned long seed);

    /// Starts the seed's sequence; the interval stays.
    void RandomInit(unsigned long seed);

    /// Sets the interval of iRandom, both ends included. `high` below `low` is not refused: what iRandom
    /// gives then is some integer, the same for equal seeds.
    void SetInterval(int low, int high);

    /// The next number of [0, 1), a multiple of 1 / 2^32.
    double Random();

    /// The next integer of the interval: low + Random() * (number of integers in it), truncated. Intervals of
    /// more than 2^31 - 1 integers count as inside out, and sums beyond the range of int wrap around.
    int iRandom();

  private:
    std::int32_t m_p1 = 0;    ///< the word replaced next
    std::int32_t m_p2 = 0;    ///< the word added to it
    std::int32_t m_low = 0;   ///< of the interval
    std::int32_t m_span = 0;  ///< integers in the interval
    std::array<std::uint32_t, 11> m_buffer{};
};

}  // namespace tarvex
