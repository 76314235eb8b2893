#include "category_words.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

TEST(CategoryWords, Are_what_stands_behind_the_last_underscore_split_at_capitals) {
  EXPECT_EQ(CategoryWords(L"Page_JunkFiles_Report_Category_TemporaryFiles"), L"Temporary files");
  EXPECT_EQ(CategoryWords(L"Page_JunkFiles_Report_Category_CrashDumpsAndErrorReports"),
            L"Crash dumps and error reports");
  EXPECT_EQ(CategoryWords(L"Page_JunkFiles_Report_Category_Downloads"), L"Downloads");
  EXPECT_EQ(CategoryWords(L"Page_JunkFiles_Report_Category_Other_OldLogs"), L"Old logs");
  EXPECT_EQ(CategoryWords(L"Page_JunkFiles_Report_Category_logs"), L"logs");
}

TEST(CategoryWords, Leave_every_other_name_as_it_is) {
  EXPECT_EQ(CategoryWords(L"Fabrikam Editor"), L"Fabrikam Editor");
  EXPECT_EQ(CategoryWords(L"Fabrikam_OldLogs"), L"Fabrikam_OldLogs");
  EXPECT_EQ(CategoryWords(L"page_junkfiles_report_category_Logs"),
            L"page_junkfiles_report_category_Logs");
  EXPECT_EQ(CategoryWords(L"Page_JunkFiles_Report_Category_"), L"Page_JunkFiles_Report_Category_");
  EXPECT_EQ(CategoryWords(L""), L"");
}

TEST(NamesCategory, Takes_the_words_and_the_key_in_any_case) {
  constexpr const wchar_t* kKey = L"Page_JunkFiles_Report_Category_TemporaryFiles";
  EXPECT_TRUE(NamesCategory(L"Temporary files", kKey));
  EXPECT_TRUE(NamesCategory(L"TEMPORARY FILES", kKey));
  EXPECT_TRUE(NamesCategory(L"page_junkfiles_report_category_temporaryfiles", kKey));
  EXPECT_TRUE(NamesCategory(L"fabrikam editor", L"Fabrikam Editor"));
  EXPECT_FALSE(NamesCategory(L"TemporaryFiles", kKey));
  EXPECT_FALSE(NamesCategory(L"Temporary", kKey));
  EXPECT_FALSE(NamesCategory(L"", kKey));
}

}  // namespace
}  // namespace quastel::client
