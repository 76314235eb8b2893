// The exports that no fault can reach: they make no call that can fail and need no memory. A handle
// has its locks, whose failures the tests of the rooms look at.

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>

#include "faults/allocation_faults.h"
#include "quastel_core.h"
#include "scan/scan_fixture.h"
#include "support/named_case.h"
#include "support/sweep_record.h"

namespace quastel::faults {
namespace {

using simulated::SimulatedWindows;

// What the queries ask: a product scan and a session, each after a scan and a clean.
struct Handles {
  scan_tests::ScanHandle scan;
  qs_session* session = nullptr;
};

constexpr std::uint64_t kRoom = 300;

struct Query : support::NamedCase {
  // Answers whether the export did what it is there for.
  bool (*ask)(Handles& handles);
};

bool AskScan(qs_status (*poll)(qs_product_scan*, Char*, std::uint64_t, std::uint64_t*),
             Handles& handles, std::uint64_t fewest) {
  Char text[kRoom] = {};
  std::uint64_t needed = 0;
  return poll(handles.scan, text, kRoom, &needed) == QS_OK && needed >= fewest;
}

template <typename Record, typename Poll>
bool AskSized(Poll poll, Handles& handles) {
  Record record = {};
  record.size = sizeof(record);
  return poll(handles.scan, &record) == QS_OK && record.status == QS_OK;
}

bool ReadProductRow(Handles& handles) {
  Char texts[4][kRoom] = {};
  qs_product_scan_row row = {};
  return qs_product_scan_report_row(handles.scan, 0, texts[0], kRoom, nullptr, texts[1], kRoom,
                                    nullptr, texts[2], kRoom, nullptr, texts[3], kRoom, nullptr,
                                    &row) == QS_OK &&
         row.deleted == 1 && texts[3][0] != 0;
}

bool ReadSessionRow(Handles& handles) {
  Char path[kRoom] = {};
  Char name[kRoom] = {};
  qs_session_row row = {};
  return qs_session_report_row(handles.session, 0, path, kRoom, nullptr, name, kRoom, nullptr,
                               &row) == QS_OK &&
         row.size > 0 && name[0] != 0;
}

const Query kQueries[] = {
    {{"qs_version"}, [](Handles&) { return std::string_view(qs_version()).size() >= 5; }},
    {{"qs_path_contains"},
     [](Handles&) { return qs_path_contains(u"C:\\some\\path", u"me\\pa") == 1; }},
    {{"qs_is_ignored"}, [](Handles&) { return qs_is_ignored(u"C:\\PageFile.sys") == 1; }},
    {{"qs_matches_size"}, [](Handles&) { return qs_matches_size(5, 3) == 1; }},
    {{"qs_large_file_classify"},
     [](Handles&) { return qs_large_file_classify(u"C:\\a.zip") == QS_LARGE_ARCHIVES; }},
    {{"qs_large_file_included"}, [](Handles&) { return qs_large_file_included(10'485'761) == 1; }},
    {{"qs_summary_bucket"},
     [](Handles&) { return std::string_view(qs_summary_bucket(1)) == "Small"; }},
    {{"qs_xxhash32_hex"},
     [](Handles&) {
       char text[9] = {};
       return qs_xxhash32_hex("abc", 3, text, 9) == QS_OK && std::string_view(text) == "ff53d132";
     }},
    {{"qs_product_scan_cancel"},
     [](Handles& handles) { return qs_product_scan_cancel(handles.scan) == QS_OK; }},
    {{"qs_product_scan_poll"},
     [](Handles& handles) {
       qs_product_scan_status status = {};
       return qs_product_scan_poll(handles.scan, &status) == QS_OK && status.item_count == 1;
     }},
    {{"qs_product_scan_current_group"},
     [](Handles& handles) { return AskScan(qs_product_scan_current_group, handles, 1); }},
    {{"qs_product_scan_current_path"},
     [](Handles& handles) { return AskScan(qs_product_scan_current_path, handles, 9); }},
    {{"qs_product_scan_get_performance"},
     [](Handles& handles) {
       return AskSized<qs_product_scan_performance>(qs_product_scan_get_performance, handles);
     }},
    {{"qs_product_scan_report_count"},
     [](Handles& handles) {
       std::uint64_t count = 0;
       return qs_product_scan_report_count(handles.scan, &count) == QS_OK && count == 1;
     }},
    {{"qs_product_scan_report_row"}, ReadProductRow},
    {{"qs_product_scan_report_row_parent_group_id"},
     [](Handles& handles) {
       std::uint64_t parent = 9;
       return qs_product_scan_report_row_parent_group_id(handles.scan, 0, &parent) == QS_OK &&
              parent == 0;
     }},
    {{"qs_product_scan_poll_clean"},
     [](Handles& handles) {
       qs_product_clean_status status = {};
       return qs_product_scan_poll_clean(handles.scan, &status) == QS_OK && status.processed == 1;
     }},
    {{"qs_product_scan_poll_clean_detailed"},
     [](Handles& handles) {
       return AskSized<qs_product_clean_detail>(qs_product_scan_poll_clean_detailed, handles);
     }},
    {{"qs_product_scan_cancel_clean"},
     [](Handles& handles) { return qs_product_scan_cancel_clean(handles.scan) == QS_OK; }},
    {{"qs_session_poll_scan"},
     [](Handles& handles) {
       qs_session_scan_status status = {};
       return qs_session_poll_scan(handles.session, &status) == QS_OK && status.row_count == 2;
     }},
    {{"qs_session_cancel_scan"},
     [](Handles& handles) { return qs_session_cancel_scan(handles.session) == QS_OK; }},
    {{"qs_session_scan_current_path"},
     [](Handles& handles) {
       Char text[kRoom] = {};
       std::uint64_t needed = 0;
       return qs_session_scan_current_path(handles.session, text, kRoom, &needed) == QS_OK &&
              needed > 1;
     }},
    {{"qs_session_report_count"},
     [](Handles& handles) {
       std::uint64_t count = 0;
       return qs_session_report_count(handles.session, &count) == QS_OK && count == 2;
     }},
    {{"qs_session_report_row"}, ReadSessionRow},
    {{"qs_session_poll_clean"},
     [](Handles& handles) {
       qs_session_clean_status status = {};
       return qs_session_poll_clean(handles.session, &status) == QS_OK && status.processed == 1;
     }},
    {{"qs_session_cancel_clean"},
     [](Handles& handles) { return qs_session_cancel_clean(handles.session) == QS_OK; }},
    {{"qs_product_scan_destroy"},
     [](Handles& handles) {
       qs_product_scan* scan = nullptr;
       {
         AllocationFaultPause pause;
         if (qs_product_scan_create(&scan) != QS_OK) {
           return false;
         }
       }
       static_cast<void>(handles);
       return qs_product_scan_destroy(scan) == QS_OK;
     }},
    {{"qs_session_destroy"},
     [](Handles& handles) {
       qs_session* const session = handles.session;
       handles.session = nullptr;
       return qs_session_destroy(session) == QS_OK;
     }},
};

class NothingToFail : public ::testing::TestWithParam<Query> {};

TEST_P(NothingToFail, Makes_no_call_that_can_fail_and_needs_no_memory) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\t\\a file with a long name.zip", scan_tests::kLarge);
  machine.AddSizedFile(u"C:\\s\\a", 7);
  machine.AddSizedFile(u"C:\\s\\b", 8);
  Handles handles;
  ASSERT_EQ(handles.scan.Start(scan_tests::Request::LargeFiles({u"C:\\t"})), QS_OK);
  const std::uint64_t first = 0;
  ASSERT_EQ(qs_product_scan_start_clean(handles.scan, &first, 1), QS_OK);
  ASSERT_EQ(qs_session_create(&handles.session), QS_OK);
  ASSERT_EQ(qs_session_start_scan(handles.session, u"C:\\s", QS_SESSION_ALL_FILES), QS_OK);
  ASSERT_EQ(qs_session_start_clean(handles.session, &first, 1), QS_OK);

  machine.ClearFaults();
  machine.FailAnyCall(1, Repeat::kFromThenOn);
  bool answer = false;
  std::uint64_t allocations = 99;
  {
    AllocationFaults memory(1, Repeat::kFromThenOn);
    answer = GetParam().ask(handles);
    allocations = memory.allocations();
  }
  EXPECT_TRUE(answer);
  EXPECT_EQ(machine.fallible_calls(), 0u);
  EXPECT_EQ(allocations, 0u);
  EXPECT_EQ(machine.open_handles(), 0u);
  machine.ClearFaults();
  if (handles.session != nullptr) {
    EXPECT_EQ(qs_session_destroy(handles.session), QS_OK);
  }
  support::RecordNoCalls(GetParam().name);
  support::RecordSweep(GetParam().name, support::Swept::kMemoryFailures, 0);
}

INSTANTIATE_TEST_SUITE_P(Of, NothingToFail, ::testing::ValuesIn(kQueries), support::CaseName());

}  // namespace
}  // namespace quastel::faults
