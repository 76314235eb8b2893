#include "text.h"

#include <cstddef>
#include <cstdint>

namespace quastel::client {
namespace {

static_assert(sizeof(wchar_t) == 2, "the client's wide text is UTF-16");

constexpr std::uint32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(std::uint32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(std::uint32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

// One code point, or one unpaired surrogate, from the front of `text`.
std::uint32_t TakeCodePoint(std::wstring_view text, std::size_t& position) {
  const auto first = static_cast<std::uint32_t>(text[position++]);
  if (IsHighSurrogate(first) && position < text.size()) {
    const auto second = static_cast<std::uint32_t>(text[position]);
    if (IsLowSurrogate(second)) {
      ++position;
      return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
    }
  }
  return first;
}

constexpr bool IsSurrogate(std::uint32_t code_point) {
  return code_point >= 0xD800 && code_point <= 0xDFFF;
}

void AppendUtf8(std::string& out, std::uint32_t code_point) {
  const auto put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (code_point < 0x80) {
    put(code_point);
  } else if (code_point < 0x800) {
    put(0xC0 | (code_point >> 6));
    put(0x80 | (code_point & 0x3F));
  } else if (code_point < 0x10000) {
    put(0xE0 | (code_point >> 12));
    put(0x80 | ((code_point >> 6) & 0x3F));
    put(0x80 | (code_point & 0x3F));
  } else {
    put(0xF0 | (code_point >> 18));
    put(0x80 | ((code_point >> 12) & 0x3F));
    put(0x80 | ((code_point >> 6) & 0x3F));
    put(0x80 | (code_point & 0x3F));
  }
}

std::string Encode(std::wstring_view text, bool keep_unpaired) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::uint32_t code_point = TakeCodePoint(text, i);
    AppendUtf8(out, IsSurrogate(code_point) && !keep_unpaired ? kReplacement : code_point);
  }
  return out;
}

void AppendUtf16(std::wstring& out, std::uint32_t code_point) {
  if (code_point >= 0x10000) {
    out.push_back(static_cast<wchar_t>(0xD800 + ((code_point - 0x10000) >> 10)));
    out.push_back(static_cast<wchar_t>(0xDC00 + ((code_point - 0x10000) & 0x3FF)));
  } else {
    out.push_back(static_cast<wchar_t>(code_point));
  }
}

}  // namespace

bool IsWellFormed(std::wstring_view text) {
  for (std::size_t i = 0; i < text.size();) {
    if (IsSurrogate(TakeCodePoint(text, i))) {
      return false;
    }
  }
  return true;
}

std::string ToUtf8(std::wstring_view text) {
  return Encode(text, false);
}

std::string ToReversibleUtf8(std::wstring_view text) {
  return Encode(text, true);
}

std::wstring FromUtf8(std::string_view bytes) {
  std::wstring out;
  out.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    std::size_t length = 1;
    std::uint32_t code_point = lead;
    std::uint32_t smallest = 0;
    if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      code_point = lead & 0x07U;
      smallest = 0x10000;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      code_point = lead & 0x0FU;
      smallest = 0x800;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
      code_point = lead & 0x1FU;
      smallest = 0x80;
    }
    bool valid = (length > 1 || lead < 0x80) && bytes.size() - i >= length;
    for (std::size_t k = 1; valid && k < length; ++k) {
      const auto byte = static_cast<unsigned char>(bytes[i + k]);
      valid = (byte & 0xC0U) == 0x80U;
      code_point = (code_point << 6) | (byte & 0x3FU);
    }
    valid = valid && code_point >= smallest && code_point <= 0x10FFFF;
    AppendUtf16(out, valid ? code_point : kReplacement);
    i += valid ? length : 1;
  }
  return out;
}

}  // namespace quastel::client
