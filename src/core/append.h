// Appending many elements to a growable array at once, so that it grows once.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <type_traits>

#include "tarvex/framework.h"

namespace tarvex {

/// Appends all of `src`, which must not lie in `array`. Raises CMemoryException when they do not fit.
template <class T, class ARG>
void AppendAll(CArray<T, ARG>& array, std::span<const std::type_identity_t<T>> src) {
    const int old = array.GetSize();
    if (src.size() > static_cast<std::size_t>(INT32_MAX - old)) AfxThrowMemoryException();
    if (src.empty()) return;
    array.SetSize(old + static_cast<int>(src.size()));
    std::copy(src.begin(), src.end(), array.GetData() + old);
}

}  // namespace tarvex
