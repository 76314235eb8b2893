// The texts that files are told apart by, packed and not.

#include "duplicate/digest_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quastel::duplicate_tests {
namespace {

using duplicate::DigestText;

// Texts that can be packed, texts that nearly can, and what else a cache file may hold.
const std::vector<std::string>& Texts() {
  static const std::vector<std::string>* const texts =
      new std::vector<std::string>{"",
                                   "0",
                                   "00000000",
                                   "00000001",
                                   "0000000a",
                                   "9fffffff",
                                   "a0000000",
                                   "ffffffff",
                                   "0000000",
                                   "000000000",
                                   "FFFFFFFF",
                                   "0000000g",
                                   "0000000/",
                                   "0000000:",
                                   "0000000`",
                                   "00000000|",
                                   "00000000|00000000",
                                   "00000000|0000000a",
                                   "00000000|ffffffff",
                                   "0000000a|00000000",
                                   "ffffffff|ffffffff",
                                   "00000000|0000000",
                                   "00000000|000000000",
                                   "00000000|0000000G",
                                   "g0000000|00000000",
                                   "00000000:00000000",
                                   "|",
                                   "||",
                                   "abc|abc",
                                   "abc",
                                   std::string(300, '0'),
                                   std::string(300, 'f'),
                                   std::string(601, '|'),
                                   std::string("a\0b", 3),
                                   "\xff\x80"};
  return *texts;
}

TEST(DigestText, Gives_back_every_text_as_it_was) {
  for (const std::string& text : Texts()) {
    const DigestText digest = DigestText::Of(text);
    EXPECT_EQ(digest.Get(), text);
    EXPECT_EQ(digest.size(), text.size());
    EXPECT_EQ(digest.empty(), text.empty());
    std::string appended = "in front ";
    digest.AppendTo(appended);
    EXPECT_EQ(appended, "in front " + text);
  }
  EXPECT_TRUE(DigestText().empty());
  EXPECT_EQ(DigestText().Get(), "");
}

TEST(DigestText, Orders_as_the_texts_do) {
  for (const std::string& a : Texts()) {
    for (const std::string& b : Texts()) {
      EXPECT_EQ(DigestText::Of(a) < DigestText::Of(b), a < b) << a << " and " << b;
      EXPECT_EQ(DigestText::Of(a) == DigestText::Of(b), a == b) << a << " and " << b;
    }
  }
}

TEST(DigestText, Has_a_tail_behind_the_first_mark_and_a_head_in_front_of_it) {
  for (const std::string& text : Texts()) {
    const DigestText digest = DigestText::Of(text);
    EXPECT_EQ(digest.has_tail(), text.find('|') != std::string::npos) << text;
    EXPECT_EQ(digest.head().Get(), text.substr(0, text.find('|'))) << text;
  }
}

TEST(DigestText, Refers_to_a_text_only_where_it_could_not_be_packed) {
  for (const char* const packed : {"", "00000000", "12ab89ef", "00000000|ffffffff"}) {
    EXPECT_FALSE(DigestText::Of(packed).refers()) << packed;
  }
  for (const char* const kept : {"0", "FFFFFFFF", "abc|abc", "00000000|0000000G"}) {
    EXPECT_TRUE(DigestText::Of(kept).refers()) << kept;
  }
}

TEST(DigestText, Of_two_hashes_has_the_mark_between_them) {
  const DigestText head = DigestText::Of("055dcc02");
  const DigestText tail = DigestText::Of("78563412");
  EXPECT_EQ(DigestText::OfHashes(head, tail).Get(), "055dcc02|78563412");
  EXPECT_EQ(DigestText::OfHashes(head, tail), DigestText::Of("055dcc02|78563412"));
  for (const char* const other : {"", "abc", "055dcc02|78563412"}) {
    EXPECT_TRUE(DigestText::OfHashes(DigestText::Of(other), tail).empty()) << other;
    EXPECT_TRUE(DigestText::OfHashes(head, DigestText::Of(other)).empty()) << other;
  }
}

}  // namespace
}  // namespace quastel::duplicate_tests
