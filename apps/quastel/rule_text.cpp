#include "rule_text.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdio>

namespace quastel::client {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

constexpr unsigned Byte(std::string_view bytes, std::size_t i) {
  return static_cast<unsigned char>(bytes[i]);
}

std::wstring FromUtf16(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    text.push_back(static_cast<wchar_t>(Byte(bytes, i) | (Byte(bytes, i + 1) << 8)));
  }
  return text;
}

// The length of the character that begins at `i`; 0 when its bytes are no UTF-8.
std::size_t CharacterLength(std::string_view bytes, std::size_t i) {
  const unsigned lead = Byte(bytes, i);
  if (lead < 0x80) {
    return 1;
  }
  const std::size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                             : lead >= 0xE0 && lead <= 0xEF ? 3
                             : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                            : 0;
  if (length == 0 || bytes.size() - i < length) {
    return 0;
  }
  for (std::size_t k = 1; k < length; ++k) {
    if ((Byte(bytes, i + k) & 0xC0U) != 0x80) {
      return 0;
    }
  }
  const unsigned second = Byte(bytes, i + 1);
  const bool too_long = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool no_character = (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F);
  return too_long || no_character ? 0 : length;
}

std::size_t ValidLength(std::string_view bytes) {
  std::size_t i = 0;
  while (i < bytes.size()) {
    const std::size_t length = CharacterLength(bytes, i);
    if (length == 0) {
      break;
    }
    i += length;
  }
  return i;
}

// Only for bytes that are valid. The file has less than 2 GiB, so that its length is an int.
std::wstring FromValidUtf8(std::string_view bytes) {
  std::wstring text(bytes.size(), L'\0');
  const int length =
      bytes.empty() ? 0
                    : MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()),
                                          text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

}  // namespace

std::optional<RuleMistake> DecodeRules(std::string_view bytes, std::wstring& text) {
  if (bytes.starts_with(kUtf16Mark)) {
    text = FromUtf16(bytes.substr(kUtf16Mark.size()));
    return std::nullopt;
  }
  const bool big_endian = bytes.starts_with(kBigEndianMark);
  if (bytes.starts_with(kUtf8Mark)) {
    bytes.remove_prefix(kUtf8Mark.size());
  }
  const std::size_t valid = ValidLength(bytes);
  text = FromValidUtf8(bytes.substr(0, valid));
  if (valid == bytes.size()) {
    return std::nullopt;
  }
  std::array<char, 48> message = {};
  std::snprintf(message.data(), message.size(), "the byte %02X is not UTF-8", Byte(bytes, valid));
  return RuleMistake{text.size(), message.data(),
                     big_endian ? "the document looks like UTF-16 big-endian; save it as UTF-8"
                                : "save the document as UTF-8"};
}

}  // namespace quastel::client
