// What can be said about the shipped rule documents by reading them.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/ascii.h"
#include "base/replace.h"
#include "fs/path_rules.h"
#include "junk/rule_document.h"
#include "junk/rule_paths.h"
#include "rules/shipped_document.h"
#include "rules/well_known_places.h"
#include "simulated_windows/simulated_windows.h"
#include "support/text.h"

namespace quastel::rules_tests {
namespace {

using junk::RuleNode;
using support::Utf8;
using support::Wide;
using Complaints = std::vector<std::string>;

// The attributes that a rule must have and those that it may have.
struct Vocabulary {
  std::set<std::string> required;
  std::set<std::string> optional;
};

// Stricter than the library: what a shipped rule shows to a person always has a
// name.
const std::map<std::string, Vocabulary>& Rules() {
  static const std::map<std::string, Vocabulary> rules = {
      {"Folder", {{"Path", "DisplayName"}, {"Pattern"}}},
      {"FolderList", {{"StartPath", "EndPath", "DisplayName"}, {"ContainsPath"}}},
      {"ChildrenList", {{"StartPath"}, {}}},
  };
  return rules;
}

struct Layout {
  TextView user_home;
  TextView system_root;
};

// The second one shows a path that is right only because both lie on one drive.
constexpr Layout kLayouts[] = {{kUserHome, kSystemRoot}, {u"D:\\Profiles\\demo", u"E:\\"}};

bool IsPlainPath(TextView path) {
  if (path.empty() || path.find_first_of(u"{}*?\"<>|/") != TextView::npos ||
      path.back() == Char{'\\'} || path.find(u"\\\\") != TextView::npos) {
    return false;
  }
  const Text framed = Char{'\\'} + Text(path) + Char{'\\'};
  return framed.find(u"\\.\\") == Text::npos && framed.find(u"\\..\\") == Text::npos;
}

bool IsBelowProfileOrSystemDrive(const Text& rule_path) {
  return std::all_of(std::begin(kLayouts), std::end(kLayouts), [&](const Layout& layout) {
    const Text path = junk::ExpandJunkPath(rule_path, layout.user_home, layout.system_root);
    const Text home = Text(layout.user_home) + Char{'\\'};
    const bool below_home = path.starts_with(home) && path.size() > home.size();
    const bool below_root = rule_path.starts_with(u"{Root}") &&
                            path.starts_with(layout.system_root) &&
                            path.size() > layout.system_root.size();
    return IsPlainPath(path) && (below_home || below_root);
  });
}

// Joined with a subfolder, it stays below it.
bool IsBelowItsSubfolder(const Text& end_path) {
  return IsPlainPath(end_path) && end_path.front() != Char{'\\'} &&
         end_path.find(Char{':'}) == Text::npos;
}

class DocumentReader {
 public:
  Complaints Read(const RuleNode& root) {
    Expect(root.name == u"Root", "the root element is not Root");
    Expect(!root.children.empty(), "there is no category");
    for (const RuleNode& category : root.children) {
      ReadCategory(category);
    }
    return complaints_;
  }

 private:
  void Expect(bool holds, const std::string& otherwise) {
    if (!holds) {
      complaints_.push_back(otherwise);
    }
  }

  void ReadCategory(const RuleNode& category) {
    Expect(category.name == u"Category", Utf8(category.name) + " is no category");
    const Text* const name = category.Find(u"DisplayName");
    const std::string key = name == nullptr ? "" : Utf8(*name);
    const std::string word =
        key.starts_with(kCategoryKey) ? key.substr(sizeof kCategoryKey - 1) : "";
    Expect(
        !word.empty() && word.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                "abcdefghijklmnopqrstuvwxyz") == std::string::npos,
        "the category's name is no key: " + key);
    Expect(names_.insert(key).second, "a name twice: " + key);
    Expect(category.attributes.size() == 1, "a category with more than a name: " + key);
    Expect(!category.children.empty(), "an empty category: " + key);
    for (const RuleNode& rule : category.children) {
      ReadRule(rule);
    }
  }

  void ReadRule(const RuleNode& rule) {
    const std::string element = Utf8(rule.name);
    const auto vocabulary = Rules().find(element);
    if (vocabulary == Rules().end()) {
      complaints_.push_back("an element without meaning: " + element);
      return;
    }
    Expect(rule.children.empty(), "a rule with children: " + element);
    std::set<std::string> missing = vocabulary->second.required;
    for (const junk::RuleAttribute& attribute : rule.attributes) {
      const std::string name = Utf8(attribute.name);
      Expect(missing.erase(name) == 1 || vocabulary->second.optional.count(name) == 1,
             "an attribute without meaning: " + element + " " + name);
      Expect(!attribute.value.empty(), "an empty value: " + element + " " + name);
      ReadAttribute(name, attribute.value);
    }
    for (const std::string& name : missing) {
      complaints_.push_back("an attribute is missing: " + element + " " + name);
    }
  }

  void ReadAttribute(const std::string& name, const Text& value) {
    const std::string shown = Utf8(value);
    if (name == "Path" || name == "StartPath") {
      Expect(IsBelowProfileOrSystemDrive(value), "not below the profile or the drive: " + shown);
    } else if (name == "EndPath") {
      Expect(IsBelowItsSubfolder(value), "not below each subfolder: " + shown);
    } else if (name == "DisplayName") {
      Expect(names_.insert(shown).second, "a name twice: " + shown);
    }
  }

  Complaints complaints_;
  std::set<std::string> names_;
};

// Loads it the way a scan does.
Complaints ComplaintsAbout(const std::string& document) {
  simulated::SimulatedWindows machine;
  machine.AddFile(u"C:\\rules.xml", document);
  RuleNode root;
  const qs_status status = junk::LoadRuleDocument(u"C:\\rules.xml", root);
  if (status != QS_OK) {
    return {"cannot be read: status " + std::to_string(status)};
  }
  return DocumentReader().Read(root);
}

// The names of the rules that have no comment right before them with that word
// in it.
Complaints Unexplained(std::string_view document, std::string_view word) {
  Complaints rules;
  for (const RuleText& rule : RulesIn(document)) {
    const std::string_view before = document.substr(0, rule.begin);
    const std::size_t end = before.find_last_not_of(" \r\n") + 1;
    const std::size_t begin = before.rfind("<!--");
    if (begin == std::string_view::npos || !before.substr(0, end).ends_with("-->") ||
        before.find("-->", begin) + 3 != end ||
        before.substr(begin).find(word) == std::string_view::npos) {
      rules.emplace_back(document.substr(rule.begin, rule.size));
    }
  }
  return rules;
}

TEST(RuleDocuments, Hold_well_formed_rules_below_the_profile_or_the_system_drive) {
  for (const char* const name : {kStandard, kExtended}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ComplaintsAbout(ReadDocument(name)), Complaints());
  }
}

TEST(RuleDocuments, Hold_as_many_rules_as_are_kept_by_the_reader) {
  for (const char* const name : {kStandard, kExtended}) {
    SCOPED_TRACE(name);
    const std::string document = ReadDocument(name);
    RuleNode root;
    ASSERT_TRUE(junk::ParseRuleDocument(Wide(document), root));
    std::size_t kept = 0;
    for (const RuleNode& category : root.children) {
      kept += category.children.size();
    }
    EXPECT_EQ(kept, RulesIn(document).size());
    EXPECT_GT(kept, 10u);
  }
}

TEST(RuleDocuments, Say_at_each_rule_why_it_is_safe_or_what_is_lost) {
  const std::string standard = ReadDocument(kStandard);
  // The downloads are the one place of the standard document that is not safe
  // to lose.
  const Complaints unsafe = Unexplained(standard, "Safe");
  ASSERT_EQ(unsafe.size(), 1u);
  EXPECT_EQ(unsafe[0], "<ChildrenList StartPath=\"{UserHome}\\Downloads\"/>");
  EXPECT_EQ(Unexplained(standard, ""), Complaints());
  EXPECT_EQ(Unexplained(ReadDocument(kExtended), "Lost:"), Complaints());
}

TEST(RuleDocuments, Are_text_that_every_editor_shows_alike) {
  for (const char* const name : {kStandard, kExtended}) {
    SCOPED_TRACE(name);
    const std::string document = ReadDocument(name);
    EXPECT_TRUE(std::all_of(document.begin(), document.end(),
                            [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }));
    EXPECT_TRUE(document.ends_with("</Root>\n"));
  }
}

TEST(RuleDocuments, Would_not_pass_with_a_rule_that_is_wrong_in_itself) {
  const std::string document = ReadDocument(kStandard);
  const auto wrong = [&document](const std::string& rule) {
    return !ComplaintsAbout(Replaced(document, "  </Category>", rule + "  </Category>")).empty();
  };
  ASSERT_FALSE(wrong(R"(<Folder DisplayName="Name" Path="{UserHome}\a"/>)"));
  ASSERT_FALSE(wrong(R"(<FolderList DisplayName="Name" StartPath="{Root}a" EndPath="b\c"/>)"));
  for (const char* const rule : {
           R"(<Folder DisplayName="N" Path="{UserHome}"/>)",
           R"(<Folder DisplayName="N" Path="{UserHome}\"/>)",
           R"(<Folder DisplayName="N" Path="{UserHome}AppData"/>)",
           R"(<Folder DisplayName="N" Path="{userhome}\a"/>)",
           R"(<Folder DisplayName="N" Path="{UserHome}\..\other"/>)",
           R"(<Folder DisplayName="N" Path="{UserHome}\.\a"/>)",
           R"(<Folder DisplayName="N" Path="{UserHome}\AppData\*\Temp"/>)",
           R"(<Folder DisplayName="N" Path="{UserHome}/a"/>)",
           R"(<Folder DisplayName="N" Path="{Root}"/>)",
           R"(<Folder DisplayName="N" Path="{Root}\Windows"/>)",
           R"(<Folder DisplayName="N" Path="{Root"/>)",
           R"(<Folder DisplayName="N" Path="C:\Windows\Temp"/>)",
           R"(<Folder DisplayName="N" Path=""/>)",
           R"(<Folder DisplayName="N" path="{UserHome}\a"/>)",
           R"(<Folder DisplayName="N"/>)",
           R"(<Folder Path="{UserHome}\a"/>)",
           R"(<Folder DisplayName="Thumbnails" Path="{UserHome}\a"/>)",
           R"(<Folder DisplayName="N" Path="{UserHome}\a" OlderThan="7"/>)",
           R"(<Folder DisplayName="N" Path="{UserHome}\a"><Folder/></Folder>)",
           R"(<folder DisplayName="N" Path="{UserHome}\a"/>)",
           R"(<FolderList DisplayName="N" StartPath="{UserHome}\a"/>)",
           R"(<FolderList DisplayName="N" StartPath="{UserHome}\a" EndPath=""/>)",
           R"(<FolderList DisplayName="N" StartPath="{UserHome}\a" EndPath="\b"/>)",
           R"(<FolderList DisplayName="N" StartPath="{UserHome}\a" EndPath="C:\b"/>)",
           R"(<FolderList DisplayName="N" StartPath="{UserHome}\a" EndPath=".."/>)",
           R"(<FolderList DisplayName="N" StartPath="{UserHome}\a" EndPath="{UserHome}"/>)",
           R"(<FolderList DisplayName="N" StartPath="{UserHome}\a" EndPath="b\..\..\c"/>)",
           R"(<ChildrenList StartPath="{UserHome}"/>)",
           R"(<ChildrenList/>)",
           "<Folder",
       }) {
    EXPECT_TRUE(wrong(rule)) << rule;
  }
  EXPECT_FALSE(ComplaintsAbout("<Root/>").empty());
  EXPECT_FALSE(ComplaintsAbout(Replaced(document, "_TemporaryFiles", "_Temporary Files")).empty());
  EXPECT_FALSE(ComplaintsAbout(Replaced(document, "_TemporaryFiles", "_Logs")).empty());
}

TEST(RuleDocuments, Would_not_pass_with_a_rule_that_is_not_explained) {
  const std::string standard = ReadDocument(kStandard);
  const std::string rule = R"(<Folder DisplayName="N" Path="{UserHome}\a"/>)";
  for (const std::string& slip :
       {rule, "<!-- Safe: yes. --><Category/>" + rule, "<!-- Why not? -->" + rule,
        "<!-- Safe: yes. -->" + rule + rule}) {
    const std::string changed = Replaced(standard, "  </Category>", slip + "  </Category>");
    EXPECT_EQ(Unexplained(changed, "Safe").size(), 2u) << slip;
  }
}

}  // namespace
}  // namespace quastel::rules_tests
