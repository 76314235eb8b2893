// The names are all of the short kind (eight dot three), so that no second, invented name matches.

#include <gtest/gtest.h>

#include "contract/machine.h"
#include "contract/seam_use.h"

namespace quastel::contract {
namespace {

class WildcardContract : public testing::Test {
 protected:
  WildcardContract() {
    for (const auto* name :
         {QS_TEXT("A"), QS_TEXT("AB"), QS_TEXT("ABC"), QS_TEXT("A.TXT"), QS_TEXT("AB.TXT"),
          QS_TEXT("ABC.TXT"), QS_TEXT("A.LOG"), QS_TEXT("B.TX")}) {
      machine_.MakeFile(name, "x");
    }
  }

  // The names in one text, with a space after each.
  Text Matches(const Text& pattern) {
    Text all;
    for (const Text& name : NamesFor(machine_.Path(pattern))) {
      all += name + QS_TEXT(" ");
    }
    return all;
  }

 private:
  Machine machine_;
};

TEST_F(WildcardContract, A_star_matches_everything) {
  const Text all = QS_TEXT("A A.LOG A.TXT AB AB.TXT ABC ABC.TXT B.TX ");
  EXPECT_EQ(Matches(QS_TEXT("*")), all);
  EXPECT_EQ(Matches(QS_TEXT("*.*")), all);
}

TEST_F(WildcardContract, A_star_matches_within_a_name) {
  EXPECT_EQ(Matches(QS_TEXT("*.txt")), QS_TEXT("A.TXT AB.TXT ABC.TXT "));
  EXPECT_EQ(Matches(QS_TEXT("a*.txt")), QS_TEXT("A.TXT AB.TXT ABC.TXT "));
  EXPECT_EQ(Matches(QS_TEXT("*b*.t*")), QS_TEXT("AB.TXT ABC.TXT B.TX "));
  EXPECT_EQ(Matches(QS_TEXT("b*")), QS_TEXT("B.TX "));
  EXPECT_EQ(Matches(QS_TEXT("*c")), QS_TEXT("ABC "));
}

TEST_F(WildcardContract, A_name_and_dot_star_match_with_any_or_no_extension) {
  EXPECT_EQ(Matches(QS_TEXT("a.*")), QS_TEXT("A A.LOG A.TXT "));
  EXPECT_EQ(Matches(QS_TEXT("abc.*")), QS_TEXT("ABC ABC.TXT "));
}

// Where a question mark may match nothing (before a dot and at the end), and for "*.", Wine 8 does
// not know what Windows does; these patterns stay away from there.
TEST_F(WildcardContract, A_question_mark_matches_one_character) {
  EXPECT_EQ(Matches(QS_TEXT("?b")), QS_TEXT("AB "));
  EXPECT_EQ(Matches(QS_TEXT("a?c")), QS_TEXT("ABC "));
  EXPECT_EQ(Matches(QS_TEXT("?.txt")), QS_TEXT("A.TXT "));
  EXPECT_EQ(Matches(QS_TEXT("a?c.txt")), QS_TEXT("ABC.TXT "));
  EXPECT_EQ(Matches(QS_TEXT("?b*")), QS_TEXT("AB AB.TXT ABC ABC.TXT "));
  EXPECT_EQ(Matches(QS_TEXT("b.t?")), QS_TEXT("B.TX "));
}

}  // namespace
}  // namespace quastel::contract
