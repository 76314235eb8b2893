#include "duplicate/digest_text.h"

#include <optional>
#include <tuple>

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

DigestText DigestText::Of(std::string_view text) noexcept {
  DigestText packed;
  const bool may_be_two = text.size() == kHashesLength && text[kHashTextLength] == kTailMark;
  if (may_be_two || text.size() == kHashTextLength) {
    const auto head = NumberOf(text.substr(0, kHashTextLength));
    const auto tail = may_be_two ? NumberOf(text.substr(kHashTextLength + 1)) : 0;
    if (head && tail) {
      packed.hashes_ = {*head, *tail};
      packed.form_ = may_be_two ? Form::kHashes : Form::kHash;
      return packed;
    }
  }
  packed.text_ = text.data();
  packed.length_ = static_cast<std::uint16_t>(text.size());
  return packed;
}

DigestText DigestText::OfHashes(const DigestText& head, const DigestText& tail) noexcept {
  DigestText packed;
  if (head.form_ == Form::kHash && tail.form_ == Form::kHash) {
    packed.hashes_ = {head.hashes_.head, tail.hashes_.head};
    packed.form_ = Form::kHashes;
  }
  return packed;
}

std::size_t DigestText::size() const {
  return form_ == Form::kText ? length_ : form_ == Form::kHash ? kHashTextLength : kHashesLength;
}

bool DigestText::has_tail() const {
  return form_ == Form::kHashes ||
         (refers() && std::string_view(text_, length_).find(kTailMark) != std::string_view::npos);
}

DigestText DigestText::head() const noexcept {
  DigestText head = *this;
  if (refers()) {
    const std::string_view text(text_, length_);
    return Of(text.substr(0, text.find(kTailMark)));
  }
  if (form_ == Form::kHashes) {
    head.hashes_.tail = 0;
    head.form_ = Form::kHash;
  }
  return head;
}

void DigestText::AppendTo(std::string& text) const {
  if (form_ == Form::kText) {
    text.append(std::string_view(text_, length_));
    return;
  }
  AppendDigits(hashes_.head, text);
  if (form_ == Form::kHashes) {
    text += kTailMark;
    AppendDigits(hashes_.tail, text);
  }
}

std::string DigestText::Get() const {
  std::string text;
  AppendTo(text);
  return text;
}

int DigestText::Compare(const DigestText& a, const DigestText& b) {
  if (a.form_ != b.form_) {
    return a.Get().compare(b.Get());
  }
  if (a.form_ == Form::kText) {
    return std::string_view(a.text_, a.length_).compare({b.text_, b.length_});
  }
  const auto numbers = [](const DigestText& digest) {
    return std::tuple(digest.hashes_.head, digest.hashes_.tail);
  };
  return numbers(a) < numbers(b) ? -1 : numbers(b) < numbers(a) ? 1 : 0;
}

}  // namespace quastel::duplicate
