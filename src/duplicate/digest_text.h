// The texts that the duplicate finder tells files apart by, in 16 bytes each.
//
// Nearly all of them are one hash, or a head hash, "|" and a tail hash: those are kept as numbers.
// Whatever else a cache file holds, and the digits of a small file's content, stays a text
// somewhere else that this points to.

#ifndef QUASTEL_DUPLICATE_DIGEST_TEXT_H_
#define QUASTEL_DUPLICATE_DIGEST_TEXT_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quastel::duplicate {

class DigestText {
 public:
  // The empty text.
  DigestText() noexcept = default;

  // The text, packed if it can be. Otherwise this points to it, and it has to outlive this.
  static DigestText Of(std::string_view text) noexcept;

  // `head` and `tail` with a "|" between them, if both are hashes; empty otherwise.
  static DigestText OfHashes(const DigestText& head, const DigestText& tail) noexcept;

  bool empty() const { return form_ == Form::kText && length_ == 0; }
  std::size_t size() const;

  // Whether it is one hash, and a number that orders as the hashes do.
  bool is_hash() const { return form_ == Form::kHash; }
  std::uint32_t hash_number() const { return head_number(); }

  // Whether there is a "|" in the text, and what stands before the first.
  bool has_tail() const;
  DigestText head() const noexcept;

  // Whether this points to a text somewhere else.
  bool refers() const { return form_ == Form::kText && length_ > 0; }

  // Writes the text, `size()` characters without an end.
  void CopyTo(char* out) const;
  void AppendTo(std::string& out) const;
  std::string Get() const;

  // As the texts compare, byte by byte.
  friend bool operator==(const DigestText& a, const DigestText& b) {
    return AreAlike(a, b) ? a.value_ == b.value_ : Compare(a, b) == 0;
  }
  friend bool operator<(const DigestText& a, const DigestText& b) {
    return AreAlike(a, b) ? a.value_ < b.value_ : Compare(a, b) < 0;
  }

 private:
  enum class Form : std::uint8_t { kText, kHash, kHashes };

  static DigestText OfNumbers(std::uint64_t head, std::uint64_t tail, Form form) noexcept;
  // Of two that are not both numbers of one form.
  static int Compare(const DigestText& a, const DigestText& b);
  // Nearly always: then the numbers say it.
  static bool AreAlike(const DigestText& a, const DigestText& b) {
    return a.form_ == b.form_ && a.form_ != Form::kText;
  }

  std::uint32_t head_number() const { return static_cast<std::uint32_t>(value_ >> 32); }
  std::uint32_t tail_number() const { return static_cast<std::uint32_t>(value_); }
  std::string_view text() const { return {std::bit_cast<const char*>(value_), length_}; }

  // The numbers of the hashes, whose order is the order of their digits, the head in the upper
  // half; or where the text is.
  std::uint64_t value_ = 0;
  std::uint16_t length_ = 0;  // of the text
  Form form_ = Form::kText;
};
static_assert(sizeof(DigestText) == 16);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_DIGEST_TEXT_H_
