// The door through which the fuzzer's driver calls any of the programs.
#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tarvex::fuzz::TryInput({data, size});
    return 0;
}
