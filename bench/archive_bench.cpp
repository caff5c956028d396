// Contours written to an archive in memory and read from it, beside the copy of as many bytes.
//
// Both sides of each pair allocate what they fill: a new array or a new buffer.
#include <cstring>
#include <memory>

#include "support.h"
#include "tarvex/framework.h"
#include "tarvex/records.h"

namespace tarvex::bench {
namespace {

using Nodes = CArray<BPOINT, BPOINT>;

void MakeNodes(int count, Nodes& nodes) {
    std::mt19937 random(1);
    nodes.SetSize(count);
    for (BPOINT& node : nodes) {
        for (DPOINT* p : {&node.cp1, &node.pt, &node.cp2}) *p = {Uniform(random), Uniform(random)};
    }
}

void CountBytes(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * static_cast<std::int64_t>(state.iterations()));
}

void Store(benchmark::State& state) {
    Nodes nodes;
    MakeNodes(Size(state), nodes);
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto _ : state) {
        std::vector<std::byte> sink;
        CArchive archive(sink);
        nodes.Serialize(archive);
        bytes = sink.size();
        benchmark::DoNotOptimize(sink.data());
    }
    CountBytes(state, bytes);
}

void Load(benchmark::State& state) {
    Nodes nodes;
    MakeNodes(Size(state), nodes);
    std::vector<std::byte> stored;
    CArchive archive(stored);
    nodes.Serialize(archive);
    for ([[maybe_unused]] auto _ : state) {
        Nodes loaded;
        CArchive source{std::span<const std::byte>(stored)};
        loaded.Serialize(source);
        benchmark::DoNotOptimize(loaded.GetData());
    }
    CountBytes(state, stored.size());
}

void PeerMemcpy(benchmark::State& state) {
    Nodes nodes;
    MakeNodes(Size(state), nodes);
    const std::size_t bytes = static_cast<std::size_t>(nodes.GetSize()) * sizeof(BPOINT);
    for ([[maybe_unused]] auto _ : state) {
        const std::unique_ptr<std::byte[]> copy(new std::byte[bytes]);
        std::memcpy(copy.get(), nodes.GetData(), bytes);
        benchmark::DoNotOptimize(copy.get());
        benchmark::ClobberMemory();
    }
    CountBytes(state, bytes);
}

void Sizes(benchmark::internal::Benchmark* bench) {
    bench->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMicrosecond);
}
BENCHMARK(Store)->Apply(Sizes);
BENCHMARK(Load)->Apply(Sizes);
BENCHMARK(PeerMemcpy)->Apply(Sizes);

}  // namespace
}  // namespace tarvex::bench
