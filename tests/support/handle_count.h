// How many handles this process holds: of drawing objects, and on Windows of the system's objects too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#include <winternl.h>
#else
#include "platform/registry.h"
#endif

namespace tarvex::test {

struct HandleCount {
    std::size_t drawing = 0;
    std::size_t system = 0;
    friend bool operator==(const HandleCount&, const HandleCount&) = default;
};

#ifdef _WIN32

// Wine answers 0 to both of Windows' own questions. There the entries that are in use are counted in GDI's
// table, whose address the process' environment block has, and in the system's list of all handles.

inline std::size_t CountInTable() {
    constexpr std::size_t entries = 0x4000;
    constexpr std::size_t entryBytes = 24;
    constexpr std::size_t typeAt = 14;
    constexpr std::size_t tableAt = sizeof(void*) == 8 ? 0xF8 : 0x94;
    const auto* const block = reinterpret_cast<const std::byte*>(NtCurrentTeb()->ProcessEnvironmentBlock);
    const std::byte* table = nullptr;
    std::memcpy(&table, block + tableAt, sizeof table);
    std::size_t count = 0;
    for (std::size_t i = 0; i < entries; ++i) count += table[i * entryBytes + typeAt] != std::byte{0} ? 1 : 0;
    return count;
}

inline std::size_t CountInList() {
    constexpr auto systemHandles = static_cast<SYSTEM_INFORMATION_CLASS>(16);
    constexpr std::size_t entryBytes = sizeof(void*) == 8 ? 24 : 16;
    std::vector<std::byte> list(std::size_t{1} << 20);
    if (NtQuerySystemInformation(systemHandles, list.data(), static_cast<ULONG>(list.size()), nullptr) < 0)
        return 0;
    std::uint32_t entries = 0;
    std::memcpy(&entries, list.data(), sizeof entries);
    std::size_t count = 0;
    for (std::size_t i = 0; i < entries; ++i) {
        std::uint32_t owner = 0;
        std::memcpy(&owner, list.data() + sizeof(void*) + i * entryBytes, sizeof owner);
        count += owner == GetCurrentProcessId() ? 1 : 0;
    }
    return count;
}

inline HandleCount HandlesInUse() {
    GdiFlush();
    HandleCount count{GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS), 0};
    if (count.drawing == 0) count.drawing = CountInTable();
    DWORD handles = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &handles)) count.system = handles;
    if (count.system == 0) count.system = CountInList();
    return count;
}

#else

inline HandleCount HandlesInUse() { return {platform::Registry::Instance().LiveObjects(), 0}; }

#endif

}  // namespace tarvex::test
