// A fuzz input as a source of numbers: its bytes from the front, zeros when they are used up.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>

namespace tarvex::fuzz {

/// Ends the run, so that the input is kept, unless the promise holds.
inline void Require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : m_bytes(data, size) {}

    /// The next number, in memory's order of bytes.
    template <class T>
    T Take() {
        T value{};
        const std::size_t count = std::min(sizeof value, m_bytes.size());
        if (count > 0) std::memcpy(&value, m_bytes.data(), count);
        m_bytes = m_bytes.subspan(count);
        return value;
    }

    /// A number from `least` to `most`, from one byte.
    int TakeBetween(int least, int most) { return least + Take<std::uint8_t>() % (most - least + 1); }

    std::span<const std::uint8_t> Rest() const { return m_bytes; }

  private:
    std::span<const std::uint8_t> m_bytes;
};

/// Tries the program's subject on an input; each program has its own.
void TryInput(Input input);

}  // namespace tarvex::fuzz
