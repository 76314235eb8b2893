// How a junk scan ends when something is wrong with the request, the document
// or a rule.

#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

class JunkScanFailures : public JunkScanTest {
 protected:
  JunkScanFailures() { machine_.AddFile(u"C:\\t\\a", "x"); }

  // The report after a scan that ended with `expected`.
  Lines After(std::string_view document, qs_status expected) {
    Lines lines = Scanned(document, expected);
    const qs_product_scan_status status = scan_tests::Poll(scan_);
    EXPECT_EQ(status.status, expected);
    EXPECT_EQ(status.state, expected == QS_OK ? QS_STATE_DONE : QS_STATE_FAILED);
    EXPECT_EQ(scan_tests::PerformanceOf(scan_).status, expected);
    EXPECT_EQ(scan_tests::PerformanceOf(scan_).row_count, lines.size());
    return lines;
  }

  // A good rule with its rows as the first in a category, before something bad.
  static constexpr const char* kGood = "<Folder Path='C:\\t'/>";
  const Lines kGoodRows = {"[1<0] c", "[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a"};
};

TEST_F(JunkScanFailures, A_request_without_profile_root_or_document_is_refused_unread) {
  const std::string document = InCategory(kGood);
  for (const bool empty : {false, true}) {
    for (const auto member : {&Request::user_home, &Request::system_root, &Request::rules_path}) {
      ASSERT_EQ(Scan(document), QS_OK);
      const std::uint64_t opened = machine_.CallCount(Call::kOpenFile);
      Request request = JunkRequest();
      if (empty) {
        request.*member = Text();
      } else {
        request.*member = std::nullopt;
      }
      EXPECT_EQ(Scan(document, request), QS_INVALID_ARGUMENT);
      EXPECT_EQ(scan_tests::Poll(scan_).state, QS_STATE_FAILED);
      EXPECT_EQ(scan_tests::Poll(scan_).status, QS_INVALID_ARGUMENT);
      EXPECT_EQ(scan_tests::RowCountOf(scan_), 0u) << "the scan had begun";
      EXPECT_EQ(machine_.CallCount(Call::kOpenFile), opened);
    }
  }
}

TEST_F(JunkScanFailures, A_lack_in_the_request_comes_before_a_missing_document) {
  Request request = JunkRequest();
  request.rules_path = u"C:\\missing.xml";
  request.system_root = Text();
  EXPECT_EQ(scan_.Start(request), QS_INVALID_ARGUMENT);
}

TEST_F(JunkScanFailures, A_missing_document_is_not_found) {
  Request request = JunkRequest();
  request.rules_path = u"C:\\missing.xml";
  EXPECT_EQ(scan_.Start(request), QS_NOT_FOUND);
  EXPECT_EQ(scan_tests::Poll(scan_).state, QS_STATE_FAILED);
  EXPECT_EQ(scan_tests::Poll(scan_).status, QS_NOT_FOUND);
  EXPECT_EQ(scan_tests::RowCountOf(scan_), 0u);
  request.rules_path = u"C:\\missing\\rules.xml";
  EXPECT_EQ(scan_.Start(request), QS_FAILED);
  request.rules_path = u"C:\\t";
  EXPECT_EQ(scan_.Start(request), QS_FAILED);
}

TEST_F(JunkScanFailures, A_document_that_cannot_be_parsed_fails) {
  EXPECT_EQ(After(InCategory(kGood) + "<", QS_FAILED), Lines{});
  EXPECT_EQ(After("", QS_FAILED), Lines{});
  EXPECT_EQ(After(InCategory(kGood) + "\xFF", QS_FAILED), Lines{});
}

TEST_F(JunkScanFailures, A_root_of_another_name_fails) {
  for (const std::string name : {"root", "ROOT", "Roots", "Roo", "Category", "x:Root"}) {
    EXPECT_EQ(After("<" + name + ">" + Category("c", kGood) + "</" + name + ">", QS_FAILED),
              Lines{})
        << name;
  }
}

TEST_F(JunkScanFailures, A_category_without_a_name_fails_behind_the_earlier_rows) {
  for (const std::string tag :
       {"<Category/>", "<Category DisplayName=''/>", "<Category displayname='x'/>",
        "<Category displayName='x'/>", "<Category Name='x'/>",
        "<Category DisplayName='' DisplayName='x'/>"}) {
    EXPECT_EQ(After(InRoot(Category("c", kGood) + tag + Category("d", kGood)), QS_FAILED),
              kGoodRows)
        << tag;
    EXPECT_EQ(Utf8(scan_tests::CurrentGroupOf(scan_)), "c");
    EXPECT_EQ(After(InCategory(kGood + tag + kGood), QS_FAILED), kGoodRows) << "nested " << tag;
  }
}

TEST_F(JunkScanFailures, Stop_the_scan_at_any_depth) {
  EXPECT_EQ(After(InRoot(Category("a", Category("b", Category("c", "<Folder/>") + kGood) + kGood) +
                         Category("d", kGood)),
                  QS_INVALID_ARGUMENT),
            (Lines{"[1<0] a", "[g0<1] b", "[g1<g0] c"}));
  EXPECT_EQ(After(InRoot(Category("a", Category("b", "<Category/>") + kGood)), QS_FAILED),
            (Lines{"[1<0] a", "[g0<1] b"}));
}

TEST_F(JunkScanFailures, A_rule_without_its_paths_is_an_invalid_argument) {
  machine_.AddFile(u"C:\\d\\1\\c\\a", "x");
  for (const std::string rule :
       {"<Folder/>", "<Folder path='C:\\t'/>", "<Folder StartPath='C:\\t'/>",
        "<Folder DisplayName='n' Pattern='*'/>", "<FolderList/>", "<FolderList StartPath='C:\\d'/>",
        "<FolderList EndPath='c'/>", "<FolderList StartPath='C:\\d' endpath='c'/>",
        "<FolderList startpath='C:\\d' EndPath='c'/>", "<FolderList Path='C:\\d' EndPath='c'/>",
        "<ChildrenList/>", "<ChildrenList Path='C:\\d'/>", "<ChildrenList startPath='C:\\d'/>"}) {
    EXPECT_EQ(After(InCategory(kGood + rule + kGood), QS_INVALID_ARGUMENT), kGoodRows) << rule;
  }
}

TEST_F(JunkScanFailures, A_path_that_expands_to_nothing_is_an_invalid_argument) {
  machine_.AddFile(u"C:\\d\\1\\c\\a", "x");
  std::string nul = "<Folder Path='?C:\\t'/>";
  nul[nul.find('?')] = '\0';
  for (const std::string& rule :
       {std::string("<Folder Path=''/>"), std::string("<FolderList StartPath='' EndPath='c'/>"),
        std::string("<ChildrenList StartPath=''/>"), nul}) {
    EXPECT_EQ(After(InCategory(kGood + rule + kGood), QS_INVALID_ARGUMENT), kGoodRows) << rule;
  }
}

TEST_F(JunkScanFailures, What_is_wrong_in_an_element_that_means_nothing_is_not_noticed) {
  EXPECT_EQ(After(InRoot("<Other><Category/></Other><Folder/>" +
                         Category("c", "<Other><Category/><Folder/></Other>" + std::string(kGood))),
                  QS_OK),
            kGoodRows);
}

TEST_F(JunkScanFailures, Leave_the_rows_readable_and_the_handle_usable) {
  const std::vector<Row> rows =
      Report(InCategory(std::string(kGood) + "<Folder/>"), QS_INVALID_ARGUMENT);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[2], FileRow(0, kFirstGroup, 1, u"t", u"C:\\t\\a", 1));
  EXPECT_EQ(scan_tests::Poll(scan_).item_count, 1u);
  EXPECT_EQ(After(InCategory(kGood), QS_OK), kGoodRows);
}

TEST_F(JunkScanFailures, A_failing_call_of_a_walk_is_passed_over) {
  machine_.AddFile(u"C:\\d\\1\\c\\a", "x");
  const std::string document = InCategory(
      "<Folder Path='C:\\t'/><FolderList StartPath='C:\\d' EndPath='c'/>"
      "<ChildrenList StartPath='C:\\d'/>");
  for (const Call call : {Call::kQueryAttributes, Call::kFindFirst, Call::kFindFirstBasic}) {
    SCOPED_TRACE(simulated::NameOf(call));
    machine_.ClearFaults();
    machine_.FailCall(call, 1, simulated::Repeat::kFromThenOn);
    Scanned(document, QS_OK);
    EXPECT_GT(machine_.faults_injected(), 0u);
  }
  machine_.ClearFaults();
  EXPECT_EQ(Scanned(document, QS_OK).size(), 7u);
}

}  // namespace
}  // namespace quastel::junk_tests
