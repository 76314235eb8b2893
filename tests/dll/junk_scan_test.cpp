#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "quastel_core.h"
#include "real_tree.h"
#include "scan_handle.h"
#include "text_query.h"

namespace quastel::dll_test {
namespace {

constexpr std::uint64_t kNested = std::uint64_t{1} << 60;

// A profile and a system drive in a folder of their own, with a rule document beside them.
class JunkScan : public ::testing::Test {
 protected:
  void WriteRules(const std::string& document) const { tree_.AddFile(L"rules.xml", document); }

  qs_status Run(qs_product_scan* scan) const {
    const std::wstring home = tree_.Path(L"home");
    const std::wstring drive = tree_.Path(L"drive\\");
    const std::wstring rules = tree_.Path(L"rules.xml");
    qs_product_scan_request request{};
    request.size = sizeof(request);
    request.kind = QS_SCAN_KIND_JUNK_RULES;
    request.user_home = home.c_str();
    request.system_root = drive.c_str();
    request.rules_path = rules.c_str();
    return qs_product_scan_start(scan, &request);
  }

  const RealTree tree_;
};

TEST_F(JunkScan, Its_rows_are_the_groups_and_the_files_of_the_rules) {
  tree_.AddFile(L"home\\AppData\\Local\\Temp\\a.tmp", "12345");
  tree_.AddFile(L"home\\AppData\\Local\\Temp\\sub\\b.log", "123");
  tree_.AddFile(L"home\\Editor\\one\\Cache\\c", "1");
  tree_.AddFile(L"home\\Editor\\two\\keep", "1");
  tree_.AddFile(L"home\\Downloads\\d.zip", "1234567");
  tree_.AddFile(L"drive\\Windows\\Temp\\e.log", "12");
  tree_.AddFile(L"drive\\Windows\\Temp\\e.txt", "12");
  WriteRules(
      "\xEF\xBB\xBF<?xml version='1.0'?><Root><Category DisplayName='First'>"
      "<Folder Path='{UserHome}\\AppData\\Local\\Temp'/>"
      "<Folder DisplayName='Logs' Path='{Root}Windows\\Temp' Pattern='*.log'/>"
      "<Folder Path='{UserHome}\\None'/>"
      "<FolderList StartPath='{UserHome}\\Editor' EndPath='Cache' DisplayName='Caches'/>"
      "</Category>"
      "<Category DisplayName='Page_JunkFiles_Report_Category_Downloads'>"
      "<ChildrenList StartPath='{UserHome}\\Downloads'/></Category></Root>");
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, Run(scan.get()));

  struct Expected {
    std::wstring path;
    std::wstring title;
    std::uint64_t group_id;
    std::uint64_t parent_group_id;
    std::uint64_t item_id;
    std::int64_t size;
    bool preselect;
  };
  const std::wstring temp = tree_.Path(L"home\\AppData\\Local\\Temp");
  const std::wstring cache = tree_.Path(L"home\\Editor\\one\\Cache");
  const std::wstring logs = tree_.Path(L"drive\\Windows\\Temp");
  const std::wstring downloads = L"Page_JunkFiles_Report_Category_Downloads";
  // The folder that is not there has used the number after that of the logs.
  const std::vector<Expected> expected = {
      {L"", L"First", 1, 0, QS_NO_ITEM_ID, 0, false},
      {temp, L"Temp", kNested, 1, QS_NO_ITEM_ID, 0, false},
      {temp + L"\\a.tmp", L"Temp", kNested, 1, 0, 5, true},
      {temp + L"\\sub\\b.log", L"Temp", kNested, 1, 1, 3, true},
      {logs, L"Logs", kNested + 1, 1, QS_NO_ITEM_ID, 0, false},
      {logs + L"\\e.log", L"Logs", kNested + 1, 1, 2, 2, true},
      {cache, L"Caches", kNested + 3, 1, QS_NO_ITEM_ID, 0, false},
      {cache + L"\\c", L"Caches", kNested + 3, 1, 3, 1, true},
      {L"", downloads, 2, 0, QS_NO_ITEM_ID, 0, false},
      {tree_.Path(L"home\\Downloads\\d.zip"), downloads, 2, 0, 4, 7, false},
  };
  const std::vector<ReportedRow> rows = ReadRows(scan.get());
  ASSERT_EQ(expected.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE(i);
    const bool header = expected[i].item_id == QS_NO_ITEM_ID;
    EXPECT_EQ(expected[i].path, rows[i].path);
    EXPECT_EQ(expected[i].title, rows[i].title);
    EXPECT_EQ(header ? expected[i].path : expected[i].title, rows[i].location);
    EXPECT_EQ(expected[i].parent_group_id, rows[i].parent_group_id);
    const qs_product_scan_row& row = rows[i].numbers;
    EXPECT_EQ(expected[i].group_id, row.group_id);
    EXPECT_EQ(expected[i].item_id, row.item_id);
    EXPECT_EQ(expected[i].size, row.size);
    EXPECT_EQ(header ? QS_ROW_GROUP : QS_ROW_JUNK, row.kind);
    EXPECT_EQ(header ? 0u : 1u, row.deletable);
    EXPECT_EQ(expected[i].preselect ? 1u : 0u, row.preselect);
    EXPECT_EQ(header, row.modified == 0);
    EXPECT_EQ(QS_LARGE_OTHER, row.large_class);
  }
  const qs_product_scan_status status = Poll(scan.get());
  EXPECT_EQ(QS_STATE_DONE, status.state);
  EXPECT_EQ(5u, status.files_visited);
  EXPECT_EQ(18u, status.total_bytes);
  EXPECT_EQ(downloads, QueryText([&](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
              return qs_product_scan_current_group(scan.get(), out, capacity, needed);
            }));
}

TEST_F(JunkScan, A_link_is_neither_followed_nor_reported) {
  const RealTree scratch;
  const std::wstring linked = LinkedTree(scratch);
  std::string narrow;
  for (const wchar_t unit : linked) {
    narrow.push_back(static_cast<char>(unit));
  }
  WriteRules("<Root><Category DisplayName='a'><Folder Path='" + narrow + "'/><Folder Path='" +
             narrow + "\\link'/><FolderList StartPath='" + narrow +
             "\\..' EndPath='link'/></Category></Root>");
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, Run(scan.get()));
  EXPECT_EQ(1u, Poll(scan.get()).item_count);
  EXPECT_EQ(L"inside.txt", ReadRows(scan.get()).back().name);
}

TEST_F(JunkScan, A_document_that_is_wrong_ends_it_and_keeps_what_was_found) {
  tree_.AddFile(L"home\\x", "1");
  const ScanHandle scan;
  EXPECT_EQ(QS_NOT_FOUND, Run(scan.get()));
  EXPECT_EQ(QS_STATE_FAILED, Poll(scan.get()).state);
  for (const char* broken : {"", "\xFF\xFE", "<root/>", "<Root>", "<Root a=1/>", "<Root/><Root/>",
                             "<!DOCTYPE x><Root/>", "<Root>\xFF</Root>"}) {
    SCOPED_TRACE(broken);
    WriteRules(broken);
    EXPECT_EQ(QS_FAILED, Run(scan.get()));
    EXPECT_TRUE(ReadRows(scan.get()).empty());
  }
  WriteRules(
      "<Root><Category DisplayName='a'><Folder Path='{UserHome}'/></Category><Category/></Root>");
  EXPECT_EQ(QS_FAILED, Run(scan.get()));
  EXPECT_EQ(3u, ReadRows(scan.get()).size());
  WriteRules("<Root><Category DisplayName='a'><Folder Pattern='*'/></Category></Root>");
  EXPECT_EQ(QS_INVALID_ARGUMENT, Run(scan.get()));
  EXPECT_EQ(1u, ReadRows(scan.get()).size());
  WriteRules("<Root/>");
  EXPECT_EQ(QS_OK, Run(scan.get()));
  EXPECT_TRUE(ReadRows(scan.get()).empty());
}

TEST_F(JunkScan, A_request_without_its_three_texts_is_refused_by_the_scan) {
  WriteRules("<Root/>");
  const std::wstring rules = tree_.Path(L"rules.xml");
  const ScanHandle scan;
  for (int missing = 0; missing < 3; ++missing) {
    qs_product_scan_request request{};
    request.size = sizeof(request);
    request.kind = QS_SCAN_KIND_JUNK_RULES;
    request.user_home = missing == 0 ? nullptr : tree_.root().c_str();
    request.system_root = missing == 1 ? L"" : tree_.root().c_str();
    request.rules_path = missing == 2 ? nullptr : rules.c_str();
    EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_start(scan.get(), &request)) << missing;
    EXPECT_EQ(QS_STATE_FAILED, Poll(scan.get()).state) << missing;
  }
}

TEST_F(JunkScan, A_cancel_from_another_thread_keeps_the_rows) {
  for (int i = 0; i < 200; ++i) {
    tree_.AddFile(L"home\\" + std::to_wstring(i), "1");
  }
  std::string rules = "<Root><Category DisplayName='a'>";
  for (int i = 0; i < 2000; ++i) {
    rules += "<Folder Path='{UserHome}'/>";
  }
  WriteRules(rules + "</Category></Root>");
  const ScanHandle scan;
  qs_status status = QS_OK;
  std::thread worker([&] { status = Run(scan.get()); });
  qs_product_scan_status begun = Poll(scan.get());
  while (begun.item_count == 0 && begun.state <= QS_STATE_RUNNING) {
    std::this_thread::yield();
    begun = Poll(scan.get());
  }
  EXPECT_EQ(QS_OK, qs_product_scan_cancel(scan.get()));
  worker.join();
  EXPECT_EQ(QS_CANCELLED, status);
  const qs_product_scan_status end = Poll(scan.get());
  EXPECT_EQ(QS_STATE_CANCELLED, end.state);
  EXPECT_GE(end.item_count, 1u);
  EXPECT_LT(end.item_count, 400'000u);
}

TEST(EmptyDirectory, Counts_files_at_any_depth_and_no_folders) {
  const RealTree tree;
  tree.AddFolder(L"empty\\a\\b");
  tree.AddFolder(L"empty\\c");
  tree.AddFile(L"full\\a\\b\\c\\file", "");
  tree.AddFolder(L"downloads");
  const auto eligible = [&tree](const wchar_t* relative) {
    return qs_empty_directory_eligible(tree.Path(relative).c_str());
  };
  EXPECT_EQ(1, eligible(L"empty"));
  EXPECT_EQ(1, eligible(L"empty\\\\"));
  EXPECT_EQ(1, eligible(L"empty\\a"));
  EXPECT_EQ(0, eligible(L"full"));
  EXPECT_EQ(0, eligible(L"full\\a\\b\\c\\file"));
  EXPECT_EQ(0, eligible(L"downloads\\"));
  EXPECT_EQ(0, eligible(L"none"));
  EXPECT_EQ(0, qs_empty_directory_eligible(nullptr));
  EXPECT_EQ(0, qs_empty_directory_eligible(L""));
}

TEST(EmptyDirectory, A_link_is_not_eligible) {
  const RealTree scratch;
  EXPECT_EQ(0, qs_empty_directory_eligible((LinkedTree(scratch) + L"\\link").c_str()));
}

TEST(ExpandJunkPath, Replaces_both_placeholders) {
  const auto expanded = [](const wchar_t* rule_path) {
    return QueryText([&](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
      return qs_expand_junk_path(rule_path, L"C:\\Users\\{Root}", L"D:\\", out, capacity, needed);
    });
  };
  EXPECT_EQ(L"C:\\Users\\D:\\\\AppData", expanded(L"{UserHome}\\AppData"));
  EXPECT_EQ(L"D:\\Windows{root}", expanded(L"{Root}Windows{root}"));
  EXPECT_EQ(L"", expanded(L""));
}

}  // namespace
}  // namespace quastel::dll_test
