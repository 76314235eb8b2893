#include "duplicate/digest_text.h"

#include <bit>
#include <optional>

#include "duplicate/hash_text.h"

namespace quastel::duplicate {
namespace {

constexpr std::size_t kHashesLength = 2 * kHashTextLength + 1;

// The number of eight lower-case hexadecimal digits, the most significant first.
std::optional<std::uint32_t> NumberOf(std::string_view digits) {
  std::uint32_t number = 0;
  for (const char c : digits) {
    if (c >= '0' && c <= '9') {
      number = number << 4 | static_cast<std::uint32_t>(c - '0');
    } else if (c >= 'a' && c <= 'f') {
      number = number << 4 | static_cast<std::uint32_t>(c - 'a' + 10);
    } else {
      return std::nullopt;
    }
  }
  return number;
}

void AppendDigits(std::uint32_t number, std::string& text) {
  for (int shift = 28; shift >= 0; shift -= 4) {
    text += "0123456789abcdef"[number >> shift & 15];
  }
}

}  // namespace

DigestText DigestText::OfNumbers(std::uint64_t head, std::uint64_t tail, Form form) noexcept {
  DigestText packed;
  packed.value_ = head << 32 | tail;
  packed.form_ = form;
  return packed;
}

DigestText DigestText::Of(std::string_view text) noexcept {
  const bool may_be_two = text.size() == kHashesLength && text[kHashTextLength] == kTailMark;
  if (may_be_two || text.size() == kHashTextLength) {
    const auto first = NumberOf(text.substr(0, kHashTextLength));
    const auto second = may_be_two ? NumberOf(text.substr(kHashTextLength + 1)) : 0;
    if (first && second) {
      return OfNumbers(*first, *second, may_be_two ? Form::kHashes : Form::kHash);
    }
  }
  DigestText packed;
  packed.value_ = std::bit_cast<std::uint64_t>(text.data());
  packed.length_ = static_cast<std::uint16_t>(text.size());
  return packed;
}

DigestText DigestText::OfHashes(const DigestText& head, const DigestText& tail) noexcept {
  if (head.form_ == Form::kHash && tail.form_ == Form::kHash) {
    return OfNumbers(head.head_number(), tail.head_number(), Form::kHashes);
  }
  return {};
}

std::size_t DigestText::size() const {
  return form_ == Form::kText ? length_ : form_ == Form::kHash ? kHashTextLength : kHashesLength;
}

bool DigestText::has_tail() const {
  return form_ == Form::kHashes || (refers() && text().find(kTailMark) != std::string_view::npos);
}

DigestText DigestText::head() const noexcept {
  if (refers()) {
    return Of(text().substr(0, text().find(kTailMark)));
  }
  return form_ == Form::kHashes ? OfNumbers(head_number(), 0, Form::kHash) : *this;
}

void DigestText::AppendTo(std::string& out) const {
  if (form_ == Form::kText) {
    out.append(text());
    return;
  }
  AppendDigits(head_number(), out);
  if (form_ == Form::kHashes) {
    out += kTailMark;
    AppendDigits(tail_number(), out);
  }
}

std::string DigestText::Get() const {
  std::string out;
  AppendTo(out);
  return out;
}

int DigestText::Compare(const DigestText& a, const DigestText& b) {
  if (a.form_ != b.form_) {
    return a.Get().compare(b.Get());
  }
  if (a.form_ == Form::kText) {
    return a.text().compare(b.text());
  }
  return a.value_ < b.value_ ? -1 : b.value_ < a.value_ ? 1 : 0;
}

}  // namespace quastel::duplicate
