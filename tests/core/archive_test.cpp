// Archives: what is stored comes back, in the stated bytes, and a damaged archive is refused before
// anything is allocated on its word.
#include "support/precompiled.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "support/property.h"
#include "tarvex/containers.h"
#include "tarvex/records.h"

namespace tarvex {
namespace {

using Bytes = std::vector<std::byte>;

/// A file name of this process's own, whose file disappears with it.
class TemporaryFile {
  public:
    TemporaryFile() {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string("tarvex-") + test->test_suite_name() + "-" + test->name() + "-π-" +
                           std::to_string(reinterpret_cast<std::uintptr_t>(this));
        std::ranges::replace(name, '/', '-');
        path = std::filesystem::temp_directory_path() /
               std::filesystem::path(std::u8string(name.begin(), name.end()));
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::filesystem::path path;
};

template <class Array>
Bytes Stored(Array& array) {
    Bytes bytes;
    CArchive ar(bytes);
    array.Serialize(ar);
    return bytes;
}

Bytes BytesOf(std::initializer_list<int> values) {
    Bytes bytes;
    for (int v : values) bytes.push_back(static_cast<std::byte>(v));
    return bytes;
}

// --- Round trips -------------------------------------------------------------------------------

/// Fills every byte of a record that has a meaning.
template <class T>
void Scramble(T& record, std::mt19937& random) {
    std::array<unsigned char, sizeof(T)> bytes;
    for (auto& b : bytes) b = static_cast<unsigned char>(random());
    std::memcpy(static_cast<void*>(&record), bytes.data(), sizeof(T));
    if constexpr (requires { ClearUnarchived(record); }) ClearUnarchived(record);
}

template <class T>
class ArchivedRecord : public testing::Test {};
using Records =
    testing::Types<DPOINT, FPOINT, BPOINT, DLINE, FLINE, DRECT, TRIG, BEZIER, double, DWORD, tagPOINT>;
TYPED_TEST_SUITE(ArchivedRecord, Records);

TYPED_TEST(ArchivedRecord, ComesBackBitForBitFromMemoryAndFromAFile) {
    const TemporaryFile file;
    test::ExpectLaw(
        [&](std::uint32_t seed) {
            std::mt19937 random(seed);
            CArray<TypeParam, TypeParam> array;
            array.SetSize(static_cast<int>(random() % 2000));  // some are read in several steps
            for (TypeParam& record : array) Scramble(record, random);
            CDWordArray words;  // another array in the same stream
            words.Add(seed);
            const auto expectSame = [&](CArchive& ar) {
                CArray<TypeParam, TypeParam> read;
                read.SetSize(3);
                read.Serialize(ar);
                RC_ASSERT(read.GetSize() == array.GetSize());
                RC_ASSERT(array.IsEmpty() ||
                          std::memcmp(read.GetData(), array.GetData(),
                                      sizeof(TypeParam) * static_cast<std::size_t>(array.GetSize())) == 0);
                CDWordArray wordsRead;
                wordsRead.Serialize(ar);
                RC_ASSERT(wordsRead.GetSize() == 1 && wordsRead[0] == seed);
                RC_ASSERT(ar.Remaining() == 0u);
            };

            Bytes bytes;
            CArchive stored(bytes), out(file.path, CArchive::store);
            for (CArchive* ar : {&stored, &out}) {
                array.Serialize(*ar);
                words.Serialize(*ar);
            }
            CArchive memory{std::span<const std::byte>(bytes)};
            expectSame(memory);
            out.Close();
            CArchive in(file.path, CArchive::load);
            RC_ASSERT(in.Remaining() == bytes.size());
            expectSame(in);
        },
        30);
}

// --- The stored form ---------------------------------------------------------------------------

TEST(Archive, CountTakesAWordBelow65535AndSixBytesFromThere) {
    struct Case {
        std::uint32_t count;
        Bytes stored;
    };
    for (const auto& [count, stored] : {Case{0, BytesOf({0, 0})},
                                        {1, BytesOf({1, 0})},
                                        {0x1234, BytesOf({0x34, 0x12})},
                                        {65534, BytesOf({0xFE, 0xFF})},
                                        {65535, BytesOf({0xFF, 0xFF, 0xFF, 0xFF, 0, 0})},
                                        {65536, BytesOf({0xFF, 0xFF, 0, 0, 1, 0})},
                                        {0xFFFFFFFF, BytesOf({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF})}}) {
        Bytes bytes;
        CArchive(bytes).WriteCount(count);
        EXPECT_EQ(bytes, stored) << count;
        CArchive in{std::span<const std::byte>(bytes)};
        EXPECT_EQ(in.ReadCount(), count);
        EXPECT_EQ(in.Remaining(), 0u);
        if (count > 65536) continue;
        CArray<tagPOINT, tagPOINT> array, read;
        array.SetSize(static_cast<int>(count));
        if (count > 0) array[array.GetUpperBound()] = {7, -9};
        const Bytes whole = Stored(array);
        EXPECT_EQ(whole.size(), stored.size() + std::size_t{count} * 8);
        EXPECT_TRUE(std::equal(stored.begin(), stored.end(), whole.begin())) << count;
        CArchive again{std::span<const std::byte>(whole)};
        read.Serialize(again);
        EXPECT_TRUE(Stored(read) == whole) << count;
    }
}

TEST(Archive, NodeIs56BytesWithZeroPaddingWhateverTheCallerLeftThere) {
    CArray<BPOINT, BPOINT> nodes;
    nodes.SetSize(100);
    for (BPOINT& node : nodes) {
        std::memset(static_cast<void*>(&node), 0xAA, sizeof node);
        node.cp1.x = 1;
        node.flags = 0xBEEF;
    }
    const Bytes bytes = Stored(nodes);
    ASSERT_EQ(bytes.size(), 2u + 100 * 56);
    for (std::size_t at = 2; at < bytes.size(); at += 56) {
        double x;
        std::memcpy(&x, &bytes[at], 8);
        ASSERT_EQ(x, 1);
        ASSERT_EQ(Bytes(&bytes[at + 48], &bytes[at + 48] + 8), BytesOf({0xEF, 0xBE, 0, 0, 0, 0, 0, 0})) << at;
    }
    EXPECT_EQ(nodes[5].padding[0], 0xAAAA) << "storing does not touch the array";

    Bytes foreign = bytes;
    foreign[2 + 50] = std::byte{0x55};
    CArchive in{std::span<const std::byte>(foreign)};
    nodes.Serialize(in);
    EXPECT_EQ(nodes[0].padding[0], 0);
}

TEST(Archive, SegmentsForgetTheirTarget) {
    CArray<DPOINT, DPOINT> target;
    CArray<BEZIER, BEZIER> segments;
    BEZIER segment;
    std::memset(static_cast<void*>(&segment), 0xAA, sizeof segment);
    segment.p0 = {1, 2};
    segment.flatness = 3;
    segment.target = &target;
    segment.startCount = 4;
    segments.Add(segment);
    segments.Add(BEZIER{{1, 2}, segment.p1, segment.p2, segment.p3, 3, nullptr, 4});
    const Bytes bytes = Stored(segments);
    const auto second = bytes.begin() + 2 + sizeof(BEZIER);
    EXPECT_TRUE(std::equal(bytes.begin() + 2, second, second)) << "no address, no stray bytes";
}

TEST(Archive, ListsAndPointersAreNotArchivedNorThePointsOfTriples) {
    CPolyPolyDPoint list;
    list.Add(new CArray<DPOINT, DPOINT>);
    EXPECT_TRUE(Stored(list).empty());

    CTrigArray triples;
    CArray<TRIG, TRIG>& base = triples;
    base.Add({1, 2, 3});
    triples.Points().Add({4, 5});
    EXPECT_EQ(Stored(triples).size(), 2u + 12);
}

// --- Damage ------------------------------------------------------------------------------------

TEST(Archive, DamagedArchivesRaiseAndLeaveTheArrayAsItWas) {
    struct Case {
        const char* what;
        Bytes bytes;
    };
    const Case cases[] = {
        {"nothing", {}},
        {"half a count", BytesOf({5})},
        {"no wide count", BytesOf({0xFF, 0xFF})},
        {"half a wide count", BytesOf({0xFF, 0xFF, 1, 0, 0})},
        {"no elements", BytesOf({1, 0})},
        {"one byte short of an element", BytesOf({1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})},
        {"one element of two", BytesOf({2, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})},
        {"largest signed count", BytesOf({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3, 4})},
        {"negative count", BytesOf({0xFF, 0xFF, 0, 0, 0, 0x80, 1, 2, 3, 4})},
        {"largest count", BytesOf({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4})},
        {"count whose bytes overflow 32 bits", BytesOf({0xFF, 0xFF, 0x56, 0x55, 0x55, 0x15, 1, 2, 3, 4})},
    };
    const TemporaryFile file;
    for (const Case& c : cases) {
        std::ofstream(file.path, std::ios::binary)
            .write(reinterpret_cast<const char*>(c.bytes.data()),
                   static_cast<std::streamsize>(c.bytes.size()));
        CArray<TRIG, TRIG> array;
        array.Add({1, 2, 3});
        const TRIG* storage = array.GetData();
        CArchive memory{std::span<const std::byte>(c.bytes)};
        EXPECT_THROW(array.Serialize(memory), CArchiveException) << c.what;
        CArchive in(file.path, CArchive::load);
        EXPECT_THROW(array.Serialize(in), CArchiveException) << c.what << " in a file";
        EXPECT_EQ(array.GetSize(), 1) << c.what;
        EXPECT_EQ(array.GetData(), storage) << c.what;
    }
}

TEST(Archive, AFileThatShrinksWhileItIsReadRaises) {
    const TemporaryFile file;
    CArray<double, double> array;
    array.SetSize(100000);
    CArchive out(file.path, CArchive::store);
    array.Serialize(out);
    out.Close();
    CArchive in(file.path, CArchive::load);
    std::filesystem::resize_file(file.path, 1000);
    EXPECT_THROW(array.Serialize(in), CArchiveException);
}

TEST(Archive, WrongDirectionRaises) {
    Bytes bytes = BytesOf({1, 2, 3});
    std::byte byte{};
    CArchive out(bytes);
    EXPECT_TRUE(out.IsStoring());
    EXPECT_THROW(out.Read(&byte, 1), CArchiveException);
    EXPECT_EQ(out.Remaining(), 0u);
    CArchive in{std::span<const std::byte>(bytes)};
    EXPECT_TRUE(in.IsLoading());
    EXPECT_THROW(in.Write(&byte, 1), CArchiveException);
    EXPECT_EQ(bytes.size(), 3u);
}

TEST(Archive, FilesThatCannotBeOpenedRaiseWithTheirName) {
    const TemporaryFile missing;
    const auto inside = missing.path / "file";
    const auto directory = std::filesystem::temp_directory_path();
    for (const auto& [path, mode] : {std::pair{missing.path, CArchive::load},
                                     {inside, CArchive::store},
                                     {directory, CArchive::load},
                                     {directory, CArchive::store}}) {
        try {
            CArchive archive(path, mode);
            ADD_FAILURE() << path << " opened";
        } catch (const CArchiveException& e) {
            EXPECT_THAT(e.what(), testing::HasSubstr(directory.filename().string()));
        }
    }
}

TEST(Archive, ClosedFilesTakeAndGiveNothingMore) {
    const TemporaryFile file;
    std::byte byte{};
    CArchive out(file.path, CArchive::store);
    out.Write("ab", 2);
    out.Close();
    out.Close();
    EXPECT_THROW(out.Write("c", 1), CArchiveException);
    CArchive in(file.path, CArchive::load);
    EXPECT_EQ(in.Remaining(), 2u);
    in.Close();
    EXPECT_EQ(in.Remaining(), 0u);
    EXPECT_THROW(in.Read(&byte, 1), CArchiveException);
}

#if defined(__linux__)
TEST(Archive, AFullDeviceIsReportedAtTheLatestByClose) {
    CArray<double, double> array;
    array.SetSize(10);
    CArchive out("/dev/full", CArchive::store);
    EXPECT_THROW(
        {
            array.Serialize(out);
            out.Close();
        },
        CArchiveException);
}
#endif

}  // namespace
}  // namespace tarvex
