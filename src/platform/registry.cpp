// One table for the process, from the library's loading to its unloading. The library's start takes handles,
// so the table is there before any static object of a program that links the library, and outlives them all.
#include "platform/registry.h"

#include <utility>

namespace tarvex::platform {
namespace {

// Indices must fit below the generations, in the 32 bits that the smallest pointers have.
constexpr int kIndexBits = sizeof(void*) >= 8 ? 24 : 16;
constexpr std::size_t kMaxSlots = std::size_t{1} << kIndexBits;
constexpr std::uint32_t kLastGeneration = sizeof(void*) >= 8 ? 0xFFFFFFFF : 0xFFFF;

/// Slots that must be waiting before the first of them serves again.
constexpr std::size_t kRestingSlots = 1024;

void* MakeHandle(std::size_t index, std::uint32_t generation) {
    return reinterpret_cast<void*>(std::uintptr_t{generation} << kIndexBits | index);
}

std::size_t IndexOf(const void* handle) { return reinterpret_cast<std::uintptr_t>(handle) & (kMaxSlots - 1); }

std::uintptr_t GenerationOf(const void* handle) {
    return reinterpret_cast<std::uintptr_t>(handle) >> kIndexBits;
}

}  // namespace

Registry& Registry::Instance() {
    static Registry registry;
    return registry;
}

void* Registry::Insert(std::shared_ptr<Object> object) {
    const auto lock = Lock();
    const bool full = m_slots.size() == kMaxSlots;
    std::size_t index = m_slots.size();
    if (m_freeCount > kRestingSlots || (full && m_freeCount > 0)) {
        index = m_firstFree;
        m_firstFree = m_slots[index].nextFree;
        --m_freeCount;
    } else if (full) {
        return nullptr;
    } else {
        m_slots.emplace_back();
    }
    Slot& slot = m_slots[index];
    if (!object->stock) ++m_live;
    slot.object = std::move(object);
    return MakeHandle(index, slot.generation);
}

std::shared_ptr<Object> Registry::FindAnyLocked(const void* handle) const {
    const std::size_t index = IndexOf(handle);
    if (index >= m_slots.size() || m_slots[index].generation != GenerationOf(handle)) return nullptr;
    return m_slots[index].object;
}

std::shared_ptr<Object> Registry::EraseLocked(const void* handle) {
    const std::size_t index = IndexOf(handle);
    Slot& slot = m_slots[index];
    if (slot.generation != kLastGeneration) {
        ++slot.generation;
        const auto self = static_cast<std::uint32_t>(index);
        (m_freeCount == 0 ? m_firstFree : m_slots[m_lastFree].nextFree) = self;
        m_lastFree = self;
        ++m_freeCount;
    }  // else the slot stays empty for good
    std::shared_ptr<Object> object = std::exchange(slot.object, nullptr);
    if (!object->stock) --m_live;
    return object;
}

std::size_t Registry::LiveObjects() {
    const auto lock = Lock();
    return m_live;
}

}  // namespace tarvex::platform
