#include "report_json.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <nlohmann/json.hpp>
#include <string>

namespace quastel::client {
namespace {

// Standard output goes into a temporary file for the life of the object.
class CapturedOutput {
 public:
  CapturedOutput() : original_(GetStdHandle(STD_OUTPUT_HANDLE)) {
    wchar_t folder[MAX_PATH + 1] = {};
    wchar_t path[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"qsj", 0, path);
    file_ = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                        FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    SetStdHandle(STD_OUTPUT_HANDLE, file_);
  }
  ~CapturedOutput() {
    SetStdHandle(STD_OUTPUT_HANDLE, original_);
    CloseHandle(file_);
  }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  std::string Text() const {
    std::string text(1 << 20, '\0');
    DWORD length = 0;
    SetFilePointer(file_, 0, nullptr, FILE_BEGIN);
    EXPECT_NE(ReadFile(file_, text.data(), static_cast<DWORD>(text.size()), &length, nullptr), 0);
    text.resize(length);
    return text;
  }

 private:
  HANDLE original_;
  HANDLE file_;
};

std::string Written(const Report& report) {
  const CapturedOutput captured;
  OutputStream out(OutputStream::Which::kOutput);
  WriteJson(report, out);
  out.Flush();
  return captured.Text();
}

Report OneRow(const std::wstring& path) {
  Report report;
  report.command = "large";
  report.rows.resize(1);
  report.rows[0].path = path;
  report.listed = 1;
  return report;
}

TEST(ReportJson, A_name_that_is_not_unicode_carries_its_code_units) {
  constexpr wchar_t kUnpaired = 0xD800;
  const std::string text = Written(OneRow(std::wstring(L"Q:\\") + kUnpaired + L"x"));
  const nlohmann::json row = nlohmann::json::parse(text)["rows"][0];
  EXPECT_EQ(row["path"], "Q:\\\xEF\xBF\xBDx");
  EXPECT_EQ(row["path_utf16"], "0051003a005cd8000078");
}

TEST(ReportJson, Every_other_name_is_a_string_and_nothing_else) {
  const std::string text = Written(OneRow(L"Q:\\\"quoted\" \n\t\x6587"));
  const nlohmann::json row = nlohmann::json::parse(text)["rows"][0];
  EXPECT_EQ(row["path"], "Q:\\\"quoted\" \n\t\xE6\x96\x87");
  EXPECT_FALSE(row.contains("path_utf16"));
}

TEST(ReportJson, Numbers_of_64_bits_stay_exact) {
  Report report = OneRow(L"Q:\\x");
  report.rows[0].numbers.item_id = QS_NO_ITEM_ID;
  report.rows[0].numbers.size = INT64_MAX;
  report.rows[0].numbers.modified = 638448230490000001ULL;
  const nlohmann::json row = nlohmann::json::parse(Written(report))["rows"][0];
  EXPECT_EQ(row["item_id"].get<std::uint64_t>(), QS_NO_ITEM_ID);
  EXPECT_EQ(row["size"].get<std::int64_t>(), INT64_MAX);
  EXPECT_EQ(row["modified_ticks"].get<std::uint64_t>(), 638448230490000001ULL);
}

TEST(ReportJson, A_date_that_cannot_be_told_is_null) {
  const nlohmann::json row = nlohmann::json::parse(Written(OneRow(L"Q:\\x")))["rows"][0];
  EXPECT_TRUE(row["modified"].is_null());
}

TEST(ReportJson, Is_indented_by_two_spaces_with_plain_line_ends) {
  const std::string text = Written(OneRow(L"Q:\\x"));
  EXPECT_EQ(text.substr(0, 24), "{\n  \"schema_version\": 1,");
  EXPECT_NE(text.find("\n  \"rows\": [\n    {\n      \"item_id\": 0,\n"), std::string::npos);
  EXPECT_NE(text.find("\n  \"groups\": [],\n"), std::string::npos);
  EXPECT_EQ(text.find('\r'), std::string::npos);
  EXPECT_EQ(text.back(), '\n');
}

TEST(ReportJson, A_scan_that_ended_early_says_why) {
  Report report = OneRow(L"Q:\\x");
  report.status = QS_FAILED;
  nlohmann::json json = nlohmann::json::parse(Written(report));
  EXPECT_EQ(json["status"], "failed");
  EXPECT_EQ(json["cancelled"], false);
  report.status = QS_CANCELLED;
  json = nlohmann::json::parse(Written(report));
  EXPECT_EQ(json["status"], "cancelled");
  EXPECT_EQ(json["cancelled"], true);
}

TEST(ReportJson, Duplicates_have_keys_instead_of_categories) {
  Report report = OneRow(L"Q:\\x");
  report.request.kind = QS_SCAN_KIND_DUPLICATES;
  report.rows[0].group_key = L"1 00";
  ReportGroup group;
  group.count = 3;
  group.bytes = 30;
  group.file_size = 10;
  report.groups = {group, group};
  report.listed_groups = 1;
  const nlohmann::json json = nlohmann::json::parse(Written(report));
  EXPECT_EQ(json["rows"][0]["group_key"], "1 00");
  EXPECT_FALSE(json["rows"][0].contains("category"));
  EXPECT_FALSE(json["rows"][0].contains("large_class"));
  ASSERT_EQ(json["groups"].size(), 1U);
  EXPECT_EQ(json["groups"][0]["size"], 10);
  EXPECT_EQ(json["groups"][0]["reclaimable"], 20);
  EXPECT_EQ(json["totals"]["group_count"], 2);
  EXPECT_EQ(json["totals"]["reclaimable"], 40);
  EXPECT_TRUE(json["options"]["user_home"].is_null());
}

TEST(ReportJson, The_profile_of_an_unprotected_duplicate_scan_is_told) {
  Report report = OneRow(L"Q:\\x");
  report.request.cache_profile = L"C:\\Users\\ann";
  const nlohmann::json options = nlohmann::json::parse(Written(report))["options"];
  EXPECT_EQ(options["user_home"], "C:\\Users\\ann");
  EXPECT_TRUE(options["system_root"].is_null());
  EXPECT_EQ(options["protect"], false);
}

}  // namespace
}  // namespace quastel::client
