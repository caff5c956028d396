// The allocation functions of the program, in the place of the standard library's.
#include "memory/allocations.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace tarvex::test {
namespace {

constexpr long NEVER = std::numeric_limits<long>::max();

long failing = NEVER;
bool isLasting = false;
bool hasFailed = false;
long asked = 0;
long live = 0;

bool MayAllocate() {
    ++asked;
    const bool fails = isLasting ? asked >= failing : asked == failing;
    hasFailed = hasFailed || fails;
    return !fails;
}

void* Allocate(std::size_t size, std::size_t alignment) {
    if (!MayAllocate()) return nullptr;
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    void* const block = alignment > alignof(std::max_align_t) ? std::aligned_alloc(alignment, rounded)
                                                              : std::malloc(size == 0 ? 1 : size);
    if (block != nullptr) ++live;
    return block;
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    void* const block = Allocate(size, alignment);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void Free(void* block) {
    if (block == nullptr) return;
    --live;
    std::free(block);
}

constexpr std::size_t USUAL = alignof(std::max_align_t);

}  // namespace

void FailFrom(long n, Shortage shortage) {
    failing = n;
    isLasting = shortage == Shortage::lasting;
    hasFailed = false;
    asked = 0;
}

long EndShortage() {
    failing = NEVER;
    isLasting = false;
    return asked;
}

bool HasFailed() { return hasFailed; }

long LiveBlocks() { return live; }

}  // namespace tarvex::test

extern "C" {
// NOLINTNEXTLINE(bugprone-reserved-identifier): the linker's name
void* __real_calloc(std::size_t count, std::size_t size);
// NOLINTNEXTLINE(bugprone-reserved-identifier): the linker's name
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return tarvex::test::MayAllocate() ? __real_calloc(count, size) : nullptr;
}
}

using tarvex::test::Allocate;
using tarvex::test::AllocateOrThrow;
using tarvex::test::Free;
using tarvex::test::USUAL;

void* operator new(std::size_t size) { return AllocateOrThrow(size, USUAL); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size, USUAL); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size, USUAL); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size, USUAL); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }
void operator delete[](void* block, std::size_t) noexcept { Free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Free(block); }
void operator delete(void* block, std::align_val_t) noexcept { Free(block); }
void operator delete[](void* block, std::align_val_t) noexcept { Free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { Free(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { Free(block); }
