#include "duplicate/digest_text.h"

#include <array>
#include <bit>
#include <optional>

#include "duplicate/hash_text.h"

namespace quastel::duplicate {
namespace {

constexpr std::size_t kHashesLength = 2 * kHashTextLength + 1;

constexpr std::string_view kDigits = "0123456789abcdef";

// What each character counts as a digit; 255 for those that are none.
constexpr std::array<std::uint8_t, 256> kDigitValues = []() {
  std::array<std::uint8_t, 256> values = {};
  values.fill(255);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}();

// The number of eight lower-case hexadecimal digits, the most significant first.
std::optional<std::uint32_t> NumberOf(std::string_view digits) {
  std::uint32_t number = 0;
  std::uint32_t all_bits = 0;
  for (const char c : digits) {
    const std::uint32_t digit = kDigitValues[static_cast<unsigned char>(c)];
    number = number << 4 | (digit & 15);
    all_bits |= digit;
  }
  return all_bits < 16 ? std::optional<std::uint32_t>(number) : std::nullopt;
}

char* PutDigits(std::uint32_t number, char* out) {
  for (int shift = 28; shift >= 0; shift -= 4) {
    *out++ = kDigits[number >> shift & 15];
  }
  return out;
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

void DigestText::CopyTo(char* out) const {
  if (form_ == Form::kText) {
    text().copy(out, length_);
    return;
  }
  out = PutDigits(head_number(), out);
  if (form_ == Form::kHashes) {
    *out = kTailMark;
    PutDigits(tail_number(), out + 1);
  }
}

void DigestText::AppendTo(std::string& out) const {
  const std::size_t before = out.size();
  out.resize(before + size());
  CopyTo(out.data() + before);
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
  return a.text().compare(b.text());
}

}  // namespace quastel::duplicate
