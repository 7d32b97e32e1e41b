// Numbers as the page keeps them: differences, in planes of bytes, deflated, in base64.
//
// Differences (to the value an hour before, or to the neighbour) and planes (all lowest bytes
// first) make the packed text smaller; the page undoes both in one pass (web/src/payload.ts).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace townskin_view {

/// Each number is kept as the difference to the one `delta` before it; 0 keeps it as it is.
[[nodiscard]] std::string pack(std::span<const std::uint8_t> numbers, std::size_t delta);
[[nodiscard]] std::string pack(std::span<const std::uint16_t> numbers, std::size_t delta);
[[nodiscard]] std::string pack(std::span<const std::int32_t> numbers, std::size_t delta);

/// Deflated with its checksum (RFC 1950).
[[nodiscard]] std::string deflated(std::span<const std::uint8_t> bytes);
/// In base64 (RFC 4648).
[[nodiscard]] std::string base64(std::string_view bytes);

}  // namespace townskin_view
