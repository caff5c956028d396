// The lengths of the steps of a polyline whose coordinates stand in arrays of their own.
#pragma once

#include "core/lanes.h"

namespace tarvex {

/// Stores at `lengths[i]` the distance from point i - 1 to point i; nothing at 0.
template <class Two = TwoLanes>
void StepLengths(const double* x, const double* y, double* lengths, std::size_t count) {
    InLanes<Two>(1, count, [=]<class V>(V, std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; i += V::kCount) {
            const V dx = V::Load(x + i) - V::Load(x + i - 1);
            const V dy = V::Load(y + i) - V::Load(y + i - 1);
            SquareRoot(dx * dx + dy * dy).Store(lengths + i);
        }
    });
}

}  // namespace tarvex
