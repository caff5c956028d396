// The program's allocations, counted, and made to fail on demand: operator new in all its forms, and the
// library's calls of calloc. One thread at a time.
#pragma once

namespace tarvex::test {

/// Which allocations fail after `FailFrom`.
enum class Shortage {
    once,    ///< one alone
    lasting  ///< it and all that follow
};

/// Makes the n-th allocation from now on fail, the first being 1.
void FailFrom(long n, Shortage shortage);

/// Ends the shortage; returns how many allocations were asked for since it was set.
long EndShortage();

/// Whether an allocation failed since `FailFrom`.
bool HasFailed();

/// How many blocks of operator new are not given back.
long LiveBlocks();

}  // namespace tarvex::test
