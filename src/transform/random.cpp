// The generator of random.h: a ring of words that two indices walk downwards.
#include "tarvex/random.h"

#include <bit>

#include "core/rounding.h"

namespace tarvex {

namespace {

constexpr std::uint32_t kDefaultSeed = 0xFFFFFFFF;
constexpr int kLag = 7;
constexpr int kDiscarded = 9;
constexpr int kRotation = 13;

/// a + b, wrapping.
std::int32_t WrappingSum(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

}  // namespace

CRandomGenerator::CRandomGenerator() : CRandomGenerator(kDefaultSeed) {}

CRandomGenerator::CRandomGenerator(unsigned long seed) {
    RandomInit(seed);
    SetInterval(1000000, 100000000);
}

void CRandomGenerator::RandomInit(unsigned long seed) {
    auto s = static_cast<std::uint32_t>(seed & 0xFFFFFFFF);
    if (s == 0) s = kDefaultSeed;
    for (std::uint32_t& word : m_buffer) {
        s ^= s << 13;
        s ^= s >> 17;
        s ^= s << 5;
        word = s;
    }
    m_p1 = 0;
    m_p2 = kLag;
    for (int i = 0; i < kDiscarded; ++i) Random();
}

void CRandomGenerator::SetInterval(int low, int high) {
    m_low = low;
    m_span =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(high) - static_cast<std::uint32_t>(low) + 1);
}

double CRandomGenerator::Random() {
    const auto last = static_cast<std::int32_t>(m_buffer.size()) - 1;
    std::uint32_t& word = m_buffer[static_cast<std::size_t>(m_p1)];
    word = std::rotl(word + m_buffer[static_cast<std::size_t>(m_p2)], kRotation);
    m_p1 = m_p1 == 0 ? last : m_p1 - 1;
    m_p2 = m_p2 == 0 ? last : m_p2 - 1;
    return word * 0x1p-32;
}

int CRandomGenerator::iRandom() {
    const int i = SaturatingInt(Random() * m_span);
    // Only an interval inside out reaches past its end. Programs rely on the sequence as it is.
    return WrappingSum(m_low, i < m_span ? i : m_span);
}

}  // namespace tarvex
