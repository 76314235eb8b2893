#include "byte_size.h"

#include <charconv>
#include <cstddef>

namespace quastel::client {
namespace {

// Each unit is 1024 of the one before.
constexpr std::string_view kUnits = "KMGT";

constexpr char Upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

std::optional<std::uint64_t> ParseByteSize(std::string_view text) {
  std::size_t shift = 0;
  if (!text.empty()) {
    const std::size_t unit = kUnits.find(Upper(text.back()));
    if (unit != std::string_view::npos) {
      shift = 10 * (unit + 1);
      text.remove_suffix(1);
    }
  }
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number > (UINT64_MAX >> 1 >> shift)) {
    return std::nullopt;
  }
  return number << shift;
}

}  // namespace quastel::client
