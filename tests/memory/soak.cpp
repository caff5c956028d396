// Ten thousand of everything in one process: what is taken is given back, so that a program may run for
// months.
#include "support/precompiled.h"

#include "memory/allocations.h"
#include "memory/drawings.h"
#include "tarvex/tarvex.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARVEX_IS_SLOW
#endif
#endif
#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace tarvex::test {
namespace {

#ifdef TARVEX_IS_SLOW
constexpr int ROUNDS = 300;
#else
constexpr int ROUNDS = 10000;
#endif

/// Bytes that the process has from the system's allocator; 0 where that cannot be told. Exact only without
/// glibc's caches of threads, which CTest turns off for these tests.
std::size_t BytesInUse() {
#if defined(__GLIBC__) && !defined(TARVEX_IS_SLOW)
    return mallinfo2().uordblks;
#else
    return 0;
#endif
}

/// Pages that are there, in bytes.
long ResidentBytes() {
    long pages = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%*d %ld", &pages) != 1) pages = 0;
        std::fclose(file);
    }
    return pages * 4096;
}

/// Runs `work` often and expects no more memory in use at the end than after the first tenth.
template <class Work>
void ExpectMemoryStaysFlat(Work work) {
    const GreyPicture picture = RingAndBar(20, 16);
    const UniqueBitmap bitmap = MonoBitmap(picture);
    long blocks = 0;
    [[maybe_unused]] long resident = 0;
    std::size_t bytes = 0;
    for (int i = 0; i < ROUNDS; ++i) {
        if (i == ROUNDS / 10) {
            blocks = LiveBlocks();
            bytes = BytesInUse();
            resident = ResidentBytes();
        }
        work(picture, bitmap);
    }
    EXPECT_EQ(LiveBlocks(), blocks);
    EXPECT_LE(BytesInUse(), bytes + 4096) << "what malloc gave, calloc's blocks included";
#ifndef TARVEX_IS_SLOW  // a sanitizer keeps what is freed for a while
    EXPECT_LE(ResidentBytes(), resident + (1 << 20));
#endif
}

TEST(Soak, TracingKeepsMemoryFlat) {
    ExpectMemoryStaysFlat([](const GreyPicture& picture, const UniqueBitmap& bitmap) {
        CPolyPolyBezier out;
        ASSERT_TRUE(TraceOutlines(picture.View(), {}, out));
        ASSERT_TRUE(CShapeTrace(bitmap.Get()).DoTrace(out, 4));
    });
}

TEST(Soak, ShapingKeepsMemoryFlat) {
    ExpectMemoryStaysFlat([](const GreyPicture&, const UniqueBitmap&) {
        CPolyPolyBezier a = Disc(), b = Frame();
        ASSERT_TRUE(PolyPolyBezierShaping(SHAPING_DIFFERENCE, a, b));
    });
}

TEST(Soak, ShapingByRasterKeepsMemoryFlat) {
    ExpectMemoryStaysFlat([](const GreyPicture&, const UniqueBitmap&) {
        CPolyPolyBezier a = testing_support::Shape({testing_support::Circle(40, 40, 30)});
        CPolyPolyBezier b = testing_support::Shape({testing_support::Rect(35, 30, 90, 80)});
        ASSERT_TRUE(PolyPolyBezierBmpShaping(SHAPING_UNION, a, b, ALTERNATE, ALTERNATE));
    });
}

TEST(Soak, BreakingUpKeepsMemoryFlat) {
    ExpectMemoryStaysFlat([](const GreyPicture&, const UniqueBitmap&) {
        const CPolyPolyBezier bar = testing_support::Shape({testing_support::Rect(0, 0, 40, 8)});
        ShapeBreakUpOptions options;
        options.pixelsPerUnit = 1;
        const auto islands = BreakUpShape(bar, options);
        ASSERT_EQ(islands.size(), 1u);
        ASSERT_EQ(islands[0].end, BreakUpEnd::Done);
    });
}

}  // namespace
}  // namespace tarvex::test
