// Whole files, or standard input, as bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace tarvex::app {

struct InputLimits {
    /// A longer input is refused.
    std::uint64_t maxBytes = std::uint64_t{1} << 32;
    /// Once this many bytes are there (or the input has ended), `isWorthReading` sees them; when it
    /// says no, reading stops and the bytes so far are the result. So an endless input of the wrong
    /// kind ends at once, and the caller says what is wrong with it.
    std::size_t sniffedBytes = 0;
    std::function<bool(std::span<const std::uint8_t>)> isWorthReading;
};

/// Reads all of a file, or of standard input for "-". Raises ProgramError with ExitStatus::File.
std::vector<std::uint8_t> ReadInput(const std::string& path, const InputLimits& limits);

/// The name that messages use: the path, or "standard input" for "-".
std::string InputName(const std::string& path);

}  // namespace tarvex::app
