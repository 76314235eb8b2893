// The shipped rule documents at work on a machine that holds all that they
// clean, and all that no document may reach.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/ascii.h"
#include "fs/path_rules.h"
#include "quastel_core.h"
#include "rules/shipped_document.h"
#include "rules/well_known_places.h"
#include "scan/scan_fixture.h"
#include "simulated_windows/simulated_windows.h"
#include "support/text.h"

namespace quastel::rules_tests {
namespace {

using scan_tests::ReadReport;
using scan_tests::Request;
using scan_tests::Row;
using scan_tests::ScanHandle;
using simulated::SimulatedWindows;
using support::Utf8;
using support::Wide;
using Paths = std::vector<std::string>;

constexpr TextView kDocumentPath = u"D:\\rules\\document.xml";
constexpr char kDownloads[] = "Downloads";

struct Finding {
  std::string path;
  std::string category;  // as the top-level header names it
  std::string group;     // what the nearest header names it
  std::string folder;    // of the nearest header; empty for a category
  bool preselected = false;
};

// Follows the parents from a row's group up to the category.
class Headers {
 public:
  void Add(const Row& row) { rows_[row.numbers.group_id] = row; }

  Finding Describe(const Row& row) const {
    const Row& nearest = rows_.at(row.numbers.group_id);
    const Row* top = &nearest;
    while (top->parent_group_id != 0) {
      top = &rows_.at(top->parent_group_id);
    }
    return {Utf8(row.path), Utf8(top->title), Utf8(nearest.title), Utf8(nearest.location),
            row.numbers.preselect == 1};
  }

 private:
  std::map<std::uint64_t, Row> rows_;
};

std::vector<Finding> Scan(SimulatedWindows& machine, const std::string& document) {
  machine.AddFile(kDocumentPath, document);
  Request request;
  request.kind = QS_SCAN_KIND_JUNK_RULES;
  request.user_home = Text(kUserHome);
  request.system_root = Text(kSystemRoot);
  request.rules_path = Text(kDocumentPath);
  const ScanHandle scan;
  EXPECT_EQ(scan.Start(request), QS_OK);
  Headers headers;
  std::vector<Finding> findings;
  for (const Row& row : ReadReport(scan)) {
    if (row.numbers.kind == QS_ROW_GROUP) {
      headers.Add(row);
    } else {
      findings.push_back(headers.Describe(row));
    }
  }
  return findings;
}

std::string Line(const std::string& category, bool preselected, const std::string& path) {
  return category + (preselected ? " + " : " - ") + path;
}

// What the report has that the document should not find (">"), and lacks that
// it should ("<").
Paths Differences(const std::string& document, const std::vector<Finding>& findings) {
  Paths expected;
  for (const CleanedFile& file : CleanedFiles()) {
    if (file.document == document) {
      expected.push_back(
          Line(kCategoryKey + file.category, file.category != kDownloads, file.path));
    }
  }
  Paths found;
  for (const Finding& finding : findings) {
    found.push_back(Line(finding.category, finding.preselected, finding.path));
  }
  std::sort(expected.begin(), expected.end());
  std::sort(found.begin(), found.end());
  Paths lacking;
  Paths extra;
  std::set_difference(expected.begin(), expected.end(), found.begin(), found.end(),
                      std::back_inserter(lacking));
  std::set_difference(found.begin(), found.end(), expected.begin(), expected.end(),
                      std::back_inserter(extra));
  Paths differences;
  for (const std::string& line : lacking) {
    differences.push_back("< " + line);
  }
  for (const std::string& line : extra) {
    differences.push_back("> " + line);
  }
  return differences;
}

// A file has many spellings: other letter cases, doubled separators, relative ones.
Text OneSpelling(TextView path) {
  Text spelling = ToComparablePath(Text(path));
  std::transform(spelling.begin(), spelling.end(), spelling.begin(), FoldAscii);
  return spelling;
}

std::set<std::string> ForbiddenAmong(const std::vector<Finding>& findings) {
  std::set<Text> found;
  for (const Finding& finding : findings) {
    found.insert(OneSpelling(Wide(finding.path)));
  }
  std::set<std::string> forbidden;
  for (const std::string& path : ForbiddenFiles()) {
    if (found.count(OneSpelling(Wide(path))) == 1) {
      forbidden.insert(path);
    }
  }
  return forbidden;
}

class FullMachine : public ::testing::TestWithParam<const char*> {
 protected:
  FullMachine() { FillMachine(machine_); }

  std::string Document() const { return ReadDocument(GetParam()); }

  SimulatedWindows machine_;
};

TEST_P(FullMachine, Each_place_of_the_document_is_reported_once_in_its_category_and_nothing_else) {
  const std::string document = Document();
  machine_.AddFile(kDocumentPath, document);
  const std::string before = machine_.Describe();
  EXPECT_EQ(Differences(GetParam(), Scan(machine_, document)), Paths());
  EXPECT_EQ(machine_.Describe(), before);
}

TEST_P(FullMachine, No_forbidden_place_is_reported) {
  for (const std::string& path : ForbiddenFiles()) {
    EXPECT_TRUE(machine_.Exists(Wide(path))) << path;
  }
  EXPECT_EQ(ForbiddenAmong(Scan(machine_, Document())), std::set<std::string>());
}

TEST_P(FullMachine, A_rule_for_any_of_the_forbidden_places_is_noticed) {
  std::string rules;
  for (const std::string& path : ForbiddenFiles()) {
    const std::size_t name = path.rfind('\\') + 1;
    rules +=
        "<Folder Path=\"" + path.substr(0, name) + "\" Pattern=\"" + path.substr(name) + "\"/>";
  }
  const auto noticed = ForbiddenAmong(Scan(machine_, WithRules(Document(), rules)));
  for (const std::string& path : ForbiddenFiles()) {
    EXPECT_EQ(noticed.count(path), 1u) << path;
  }
}

TEST_P(FullMachine, A_rule_that_goes_missing_is_noticed) {
  const std::string document = Document();
  const std::vector<RuleText> rules = RulesIn(document);
  ASSERT_FALSE(rules.empty());
  for (const RuleText& rule : rules) {
    std::string changed = document;
    changed.erase(rule.begin, rule.size);
    EXPECT_NE(Differences(GetParam(), Scan(machine_, changed)), Paths())
        << document.substr(rule.begin, rule.size);
  }
}

TEST_P(FullMachine, Each_group_has_a_name_and_holds_what_lies_in_its_folder) {
  for (const Finding& finding : Scan(machine_, Document())) {
    SCOPED_TRACE(finding.path);
    EXPECT_NE(finding.group, "");
    if (finding.folder.empty()) {
      EXPECT_EQ(finding.group, finding.category);
      EXPECT_EQ(finding.path, R"(C:\Users\demo\Downloads\setup.exe)");
    } else {
      EXPECT_TRUE(finding.path.starts_with(finding.folder + "\\")) << finding.folder;
      EXPECT_TRUE(machine_.Exists(Wide(finding.folder))) << finding.folder;
    }
  }
}

TEST_P(FullMachine, Nothing_is_found_on_a_machine_without_any_of_the_places) {
  for (const char* const folder : {"Users", "Windows", "Windows.old", "ProgramData"}) {
    machine_.Remove(Wide(std::string("C:\\") + folder));
  }
  EXPECT_EQ(Scan(machine_, Document()).size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Documents, FullMachine, ::testing::Values(kStandard, kExtended),
                         [](const auto& document) {
                           const std::string name = document.param;
                           return name.substr(0, name.find('.'));
                         });

TEST(FullMachineReport, Only_downloads_are_left_unselected) {
  SimulatedWindows machine;
  FillMachine(machine);
  std::size_t unselected = 0;
  for (const Finding& finding : Scan(machine, ReadDocument(kStandard))) {
    const bool download = finding.category == std::string(kCategoryKey) + kDownloads;
    EXPECT_EQ(finding.preselected, !download) << finding.path;
    unselected += download ? 1 : 0;
  }
  EXPECT_EQ(unselected, 3u);
}

TEST(FullMachineReport, Downloads_are_grouped_by_the_folders_directly_below) {
  SimulatedWindows machine;
  FillMachine(machine);
  std::map<std::string, std::string> groups;
  for (const Finding& finding : Scan(machine, ReadDocument(kStandard))) {
    if (!finding.preselected) {
      groups[finding.path] = finding.group;
    }
  }
  const std::string downloads = R"(C:\Users\demo\Downloads\)";
  EXPECT_EQ(groups, (std::map<std::string, std::string>{
                        {downloads + "setup.exe", std::string(kCategoryKey) + kDownloads},
                        {downloads + R"(photos\2.jpg)", "photos"},
                        {downloads + R"(photos\summer\1.jpg)", "photos"},
                    }));
}

struct Slip {
  const char* document;
  std::string_view from;
  std::string_view to;
};

TEST(FullMachineReport, A_slip_that_reaches_a_forbidden_place_is_noticed) {
  constexpr Slip kSlips[] = {
      {kStandard, R"(EndPath="TempState")", R"(EndPath="LocalState")"},
      {kStandard, R"(EndPath="TempState")", R"(EndPath="LocalCache")"},
      {kStandard, R"(EndPath="AC\INetCache")", R"(EndPath="AC")"},
      {kStandard, R"(EndPath="Cache")", R"(EndPath="Service Worker")"},
      {kStandard, R"(EndPath="Cache")", R"(EndPath="IndexedDB")"},
      {kStandard, R"(EndPath="Cache")", R"(EndPath="Local Storage")"},
      {kStandard, R"(EndPath="Cache")", R"(EndPath="Sessions")"},
      {kStandard, R"(EndPath="Cache")", R"(EndPath="Network")"},
      {kStandard, R"(EndPath="Cache")", R"(EndPath="C:\Windows\Installer")"},
      {kStandard, R"(EndPath="Cache")", R"(EndPath="\Temp")"},
      {kStandard, R"(Chrome\User Data\ShaderCache")", R"(Chrome\User Data")"},
      {kStandard, R"(Vivaldi\User Data\GrShaderCache")", R"(Vivaldi")"},
      {kStandard, R"(EndPath="cache2")", R"(EndPath="C:\Users\demo\AppData\Roaming\Mozilla")"},
      {kStandard, R"(INetCache\IE")", R"(INetCache")"},
      {kStandard, R"(Microsoft\Office\OTele")", R"(Microsoft\Office")"},
      {kStandard, R"({Root}Windows\Temp)", R"({Root}Temp)"},
      {kStandard, R"({Root}Windows\Temp)", R"({Root}Windows)"},
      {kStandard, R"({Root}Windows\Temp)", R"({Root}\WINDOWS\Installer)"},
      {kStandard, R"({UserHome}\AppData\Local\Temp)", R"({UserHome}\AppData\Local)"},
      {kStandard, R"({Root}ProgramData\Microsoft\Windows\WER\Temp)", R"({Root}ProgramData)"},
      {kStandard, R"(Roaming\discord\Cache)", R"(Roaming\discord)"},
      {kStandard, R"(Roaming\Code\logs)", R"(Roaming\Code)"},
      {kStandard, R"({UserHome}\Downloads)", R"({UserHome})"},
      {kExtended, R"(SoftwareDistribution\Download)", R"(SoftwareDistribution)"},
      {kExtended, R"({Root}Windows\Logs)", R"({Root}Windows\System32\winevt\Logs)"},
      {kExtended, R"({Root}Windows.old)", R"({Root}Windows)"},
      {kExtended, R"(.gradle\caches)", R"(.gradle)"},
      {kExtended, R"(.cargo\registry\cache)", R"(.cargo)"},
  };
  SimulatedWindows machine;
  FillMachine(machine);
  for (const Slip& slip : kSlips) {
    const std::string changed = Replaced(ReadDocument(slip.document), slip.from, slip.to);
    EXPECT_FALSE(ForbiddenAmong(Scan(machine, changed)).empty()) << slip.to;
  }
}

TEST(FullMachineReport, A_slip_that_finds_too_much_too_little_or_in_the_wrong_place_is_noticed) {
  constexpr Slip kSlips[] = {
      {kStandard, R"(Pattern="thumbcache_*.db")", ""},
      {kStandard, R"(Pattern="thumbcache_*.db")", R"(Pattern="*.db")"},
      {kStandard, R"(Pattern="thumbcache_*.db")", R"(Pattern="thumbcache_*")"},
      {kStandard, R"(Pattern="*.cab")", ""},
      {kStandard, "Category_Downloads", "Category_PersonalDownloads"},
      {kStandard, "Category_TemporaryFiles", "Category_Temporary"},
      {kStandard, R"({Root}Windows\Temp)", R"({Root}\Windows\Temp)"},
      {kStandard, R"({UserHome}\Downloads)", R"({UserHome}\Downloads\photos)"},
      {kExtended, R"(Pattern="*.pf")", ""},
      {kExtended, R"(npm-cache\_cacache)", R"(npm-cache)"},
  };
  SimulatedWindows machine;
  FillMachine(machine);
  for (const Slip& slip : kSlips) {
    const std::string changed = Replaced(ReadDocument(slip.document), slip.from, slip.to);
    EXPECT_NE(Differences(slip.document, Scan(machine, changed)), Paths())
        << slip.from << " " << slip.to;
  }
}

}  // namespace
}  // namespace quastel::rules_tests
