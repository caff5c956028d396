// General entities that an XML file declares for itself.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tarvex::app {

/// The text of an XML file with its document type declaration taken out and the entities that it
/// declares put in; empty when it declares none (there is nothing to do then, nor for text that is not
/// in an encoding based on ASCII). Only values of plain text count, so that nothing expands twice.
/// Raises SvgError when the result is longer than `maxBytes`.
std::string ExpandEntities(std::span<const std::uint8_t> bytes, std::uint64_t maxBytes);

}  // namespace tarvex::app
