// A stack in place, for loops too hot to fill memory that they may not use.
#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>

namespace tarvex {

/// Up to `capacity` values of a plain type, which the caller does not exceed. Making one costs nothing: its
/// places are left as they are until something is put there.
template <class T, std::size_t capacity>
class FixedStack {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

  public:
    FixedStack() {}  // NOLINT(modernize-use-equals-default): that would fill the places where T can be 0
    FixedStack(const FixedStack&) = delete;
    FixedStack& operator=(const FixedStack&) = delete;
    ~FixedStack() = default;

    bool IsEmpty() const { return m_size == 0; }
    bool HasRoomFor(std::size_t count) const { return m_size + count <= capacity; }
    void Push(const T& value) { std::construct_at(Place(m_size++), value); }
    T Pop() { return *Place(--m_size); }
    void Clear() { m_size = 0; }

    const T* begin() const { return reinterpret_cast<const T*>(m_bytes); }
    const T* end() const { return begin() + m_size; }

  private:
    T* Place(std::size_t i) { return reinterpret_cast<T*>(m_bytes) + i; }

    alignas(T) std::byte m_bytes[capacity * sizeof(T)];
    std::size_t m_size = 0;
};

}  // namespace tarvex
