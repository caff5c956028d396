// Archives from anywhere: any bytes give an array or an exception, and what can be loaded comes back
// from what is stored of it.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "input.h"
#include "tarvex/containers.h"
#include "tarvex/framework.h"
#include "tarvex/records.h"

namespace tarvex::fuzz {
namespace {

using Bytes = std::vector<std::byte>;

template <class Array>
Bytes Stored(Array& array) {
    Bytes bytes;
    CArchive sink(bytes);
    array.Serialize(sink);
    return bytes;
}

/// The form of a count that storing chooses: the short one wherever it is long enough.
std::size_t CountBytes(int count) { return count < 0xFFFF ? 2 : 6; }

template <class Array>
void LoadAndStore(std::span<const std::uint8_t> data) {
    using Record = typename Array::value_type;
    Array array;
    array.SetSize(3);
    const Bytes untouched = Stored(array);
    CArchive source(std::as_bytes(data));
    try {
        array.Serialize(source);
    } catch (const CArchiveException&) {
        Require(Stored(array) == untouched, "a refused archive leaves the array as it was");
        return;
    }
    const std::size_t read = data.size() - static_cast<std::size_t>(source.Remaining());
    const std::size_t body = static_cast<std::size_t>(array.GetSize()) * sizeof(Record);
    const Bytes stored = Stored(array);
    Require(stored.size() == CountBytes(array.GetSize()) + body, "a count and the records are stored");
    Require(read >= stored.size(), "no record comes from beyond the archive");
    if constexpr (!requires(Record & record) { ClearUnarchived(record); }) {
        Require(body == 0 || std::memcmp(stored.data() + CountBytes(array.GetSize()),
                                         data.data() + read - body, body) == 0,
                "records are stored as they were loaded");
    }

    Array again;
    CArchive storedSource(std::span<const std::byte>{stored});
    again.Serialize(storedSource);
    Require(storedSource.Remaining() == 0, "what is stored is loaded whole");
    Require(Stored(again) == stored, "storing, loading and storing gives the same bytes");
}

}  // namespace

void TryInput(Input input) {
    using Load = void (*)(std::span<const std::uint8_t>);
    static constexpr Load kinds[] = {
        LoadAndStore<CArray<double, double>>,
        LoadAndStore<CArray<DPOINT, DPOINT>>,
        LoadAndStore<CArray<FPOINT, FPOINT>>,
        LoadAndStore<CArray<BPOINT, BPOINT>>,
        LoadAndStore<CArray<DLINE, DLINE>>,
        LoadAndStore<CArray<FLINE, FLINE>>,
        LoadAndStore<CArray<DRECT, DRECT>>,
        LoadAndStore<CArray<TRIG, TRIG>>,
        LoadAndStore<CArray<BEZIER, BEZIER>>,
        LoadAndStore<CArray<tagPOINT, tagPOINT>>,
        LoadAndStore<CDWordArray>,
        LoadAndStore<CTrigArray>,
    };
    const auto kind = static_cast<std::size_t>(input.TakeBetween(0, static_cast<int>(std::size(kinds)) - 1));
    kinds[kind](input.Rest());
}

}  // namespace tarvex::fuzz
