#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "quastel_core.h"

namespace {

TEST(Filters, The_paging_files_are_ignored_wherever_they_lie) {
  EXPECT_EQ(1, qs_is_ignored(L"D:\\backup\\PAGEFILE.SYS"));
  EXPECT_EQ(0, qs_is_ignored(L"pagefile.sys.bak"));
  EXPECT_EQ(0, qs_is_ignored(nullptr));
}

TEST(Filters, The_system_folders_are_protected_and_their_siblings_are_not) {
  const auto is_protected = [](const wchar_t* path) {
    return qs_is_in_whitelist(path, L"C:\\", L"C:\\Users\\u");
  };
  EXPECT_EQ(1, is_protected(L"c:\\windows\\system32\\x.dll"));
  EXPECT_EQ(0, is_protected(L"C:\\WindowsApps"));
  EXPECT_EQ(0, is_protected(L"D:\\Windows"));
  EXPECT_EQ(1, is_protected(L"C:\\Users\\u\\AppData\\Local\\Temp"));
  EXPECT_EQ(0, is_protected(L"C:\\Users\\u\\Documents"));
}

TEST(Filters, Folders_inside_others_are_dropped) {
  const wchar_t* const paths[] = {L"C:\\a\\b", L"C:\\a", L"c:\\A\\", L"C:\\ab"};
  std::uint64_t kept = 99;
  std::uint64_t needed = 99;
  EXPECT_EQ(QS_BUFFER_TOO_SMALL, qs_filter_dir(paths, 4, nullptr, 0, &kept, &needed));
  EXPECT_EQ(2u, kept);
  const std::wstring wanted(L"C:\\a\0C:\\ab\0\0", 12);
  ASSERT_EQ(wanted.size(), needed);
  std::wstring out(needed, L'?');
  EXPECT_EQ(QS_OK, qs_filter_dir(paths, 4, out.data(), needed, &kept, nullptr));
  EXPECT_EQ(wanted, out);
}

TEST(Filters, Sizes_match_their_class) {
  EXPECT_EQ(1, qs_matches_size(1073741825, 1));
  EXPECT_EQ(0, qs_matches_size(1073741824, 1));
  EXPECT_EQ(0, qs_matches_size(1073741824, 2));
  EXPECT_EQ(1, qs_matches_size(-1, 3));
}

TEST(Filters, A_month_before_the_end_of_March_is_the_end_of_February) {
  constexpr std::int64_t kDay = 864'000'000'000;
  // 2023-03-31 and 2023-02-28, counted in days since the year 1.
  const std::int64_t now = 738'609 * kDay;
  const std::int64_t threshold = 738'578 * kDay;
  EXPECT_EQ(0, qs_matches_date(threshold, now, 2));
  EXPECT_EQ(1, qs_matches_date(threshold - 1, now, 2));
  EXPECT_EQ(1, qs_matches_date(threshold, now, 3));
}

TEST(Filters, Large_files_are_classed_by_their_extension) {
  EXPECT_EQ(QS_LARGE_ARCHIVES, qs_large_file_classify(L"C:\\a.tar.gz"));
  EXPECT_EQ(QS_LARGE_DOCUMENTS, qs_large_file_classify(L"REPORT.PDF"));
  EXPECT_EQ(QS_LARGE_OTHER, qs_large_file_classify(L"movie.mkv.part"));
  EXPECT_EQ(0, qs_large_file_included(10'485'760));
  EXPECT_EQ(1, qs_large_file_included(10'485'761));
  EXPECT_EQ(0, qs_large_scan_include(L"C:\\Windows\\x", 10'485'761, 1, L"C:\\", L"C:\\Users\\u"));
  EXPECT_EQ(1, qs_large_scan_include(L"C:\\Windows\\x", 10'485'761, 0, L"C:\\", L"C:\\Users\\u"));
}

TEST(Filters, Sizes_fall_into_summary_buckets) {
  EXPECT_STREQ("Huge", qs_summary_bucket(1'073'741'825));
  EXPECT_STREQ("Medium", qs_summary_bucket(1'073'741'823));
  EXPECT_STREQ("None", qs_summary_bucket(1'073'741'824));
  EXPECT_STREQ("Small", qs_summary_bucket(-1));
}

}  // namespace
