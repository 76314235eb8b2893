#include "rule_warnings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quastel::client {
namespace {

std::vector<std::string> WarningsOf(const std::wstring& text) {
  RuleElement root;
  EXPECT_FALSE(ReadRules(text, root).has_value());
  std::vector<std::string> messages;
  for (const RuleMistake& warning : RuleWarnings(root)) {
    messages.push_back(std::to_string(warning.offset) + ": " + warning.message);
  }
  return messages;
}

// What one rule in a category is warned about, without the place.
std::vector<std::string> WarningsOfRule(const std::wstring& rule) {
  std::vector<std::string> messages =
      WarningsOf(L"<Root><Category DisplayName='a'>" + rule + L"</Category></Root>");
  for (std::string& message : messages) {
    message.erase(0, message.find(": ") + 2);
  }
  return messages;
}

using List = std::vector<std::string>;

TEST(RuleWarnings, Are_silent_about_a_document_that_means_what_it_says) {
  EXPECT_EQ(WarningsOf(L"<Root version='1'><!-- x --><Category DisplayName='a'>text"
                       L"<Folder Path='{UserHome}\\x' Pattern='*.log' DisplayName='b'/>"
                       L"<Folder Path='{Root}x'/><Folder Path='D:\\{0CB1-22}'/>"
                       L"<Folder Path='\\\\server\\share\\x'/><Folder Path='{UserHome}'/>"
                       L"<FolderList StartPath='{UserHome}/x' EndPath='a..b' ContainsPath='P'/>"
                       L"<Category DisplayName='c'><ChildrenList StartPath='{Root}'/></Category>"
                       L"</Category></Root>"),
            List{});
}

TEST(RuleWarnings, Stand_where_the_word_is) {
  EXPECT_EQ(WarningsOf(L"<Root><Folder Path='C:\\x'/></Root>"),
            List{"6: <Folder> stands outside of a category and is ignored"});
  EXPECT_EQ(WarningsOf(L"<Root><category/></Root>"),
            List{"6: <category> is ignored, with all in it; did you mean Category? letter case "
                 "counts"});
  EXPECT_EQ(WarningsOf(L"<Root><Category DisplayName='a' displayName='b'/></Root>"),
            List{"32: displayName is no attribute of <Category> and is ignored; did you mean "
                 "DisplayName? letter case counts"});
}

TEST(RuleWarnings, Name_elements_that_a_scan_ignores) {
  EXPECT_EQ(WarningsOfRule(L"<Foldr Path='C:\\x'/>"),
            List{"<Foldr> is ignored, with all in it; did you mean Folder?"});
  EXPECT_EQ(WarningsOfRule(L"<Note><Folder/></Note>"), List{"<Note> is ignored, with all in it"});
  EXPECT_EQ(WarningsOfRule(L"<Folder Path='C:\\x'><Folder Path='y'/></Folder>"),
            List{"<Folder> stands in a rule and is ignored"});
}

TEST(RuleWarnings, Name_attributes_that_do_not_count) {
  EXPECT_EQ(WarningsOfRule(L"<Folder Path='C:\\x' pattern='*.log'/>"),
            List{"pattern is no attribute of <Folder> and is ignored; did you mean Pattern? letter "
                 "case counts"});
  EXPECT_EQ(WarningsOfRule(L"<Folder Path='C:\\x' Path='y'/>"),
            List{"Path is given twice, and only the first one counts"});
  EXPECT_EQ(WarningsOfRule(L"<ChildrenList StartPath='C:\\x' DisplayName='y'/>"),
            List{"DisplayName is no attribute of <ChildrenList> and is ignored"});
}

TEST(RuleWarnings, Name_paths_that_lead_elsewhere) {
  EXPECT_EQ(WarningsOfRule(L"<Folder Path='Downloads'/>"),
            List{"Path is relative: it counts from whatever folder the program runs in"});
  EXPECT_EQ(WarningsOfRule(L"<ChildrenList StartPath='C:x'/>"),
            List{"StartPath is relative: it counts from whatever folder the program runs in"});
  EXPECT_EQ(WarningsOfRule(L"<Folder Path='{UserHome}Downloads'/>"),
            List{"in Path no \\ follows {UserHome}: the name of the profile's folder runs on"});
  EXPECT_EQ(WarningsOfRule(L"<Folder Path='C:\\{Profile}\\x'/>"),
            List{"{Profile} is no placeholder and stays as it is"});
  EXPECT_EQ(WarningsOfRule(L"<Folder Path='{userhome}\\x'/>"),
            (List{"{userhome} is no placeholder and stays as it is; did you mean {UserHome}? "
                  "letter case counts",
                  "Path is relative: it counts from whatever folder the program runs in"}));
}

TEST(RuleWarnings, Name_texts_that_are_used_as_they_are) {
  const std::wstring list = L"<FolderList StartPath='C:\\x' EndPath=";
  EXPECT_EQ(WarningsOfRule(list + L"'{Root}x'/>"), List{"{Root} is not replaced in EndPath"});
  EXPECT_EQ(WarningsOfRule(list + L"'a' ContainsPath='{UserHome}'/>"),
            List{"{UserHome} is not replaced in ContainsPath"});
  EXPECT_EQ(WarningsOfRule(list + L"''/>"),
            List{"EndPath is empty: the rule finds each folder of StartPath whole"});
  const List absolute = {
      "EndPath is no relative path: it stands for itself, once for each folder of StartPath"};
  EXPECT_EQ(WarningsOfRule(list + L"'\\x'/>"), absolute);
  EXPECT_EQ(WarningsOfRule(list + L"'D:\\x'/>"), absolute);
  EXPECT_EQ(WarningsOfRule(list + L"'x/../y'/>"), List{"EndPath leads out of the folder by .."});
}

}  // namespace
}  // namespace quastel::client
