#include "html_page.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "html_pieces.h"
#include "temporary_folder.h"

namespace quastel::client {

// In the place of the page that the build puts together.
std::string_view PageBeforeReport() {
  return "before:";
}
std::string_view PageAfterReport() {
  return ":after";
}

namespace {

// The report in a page of these rows.
nlohmann::json ReportOf(const std::vector<PageRow>& rows) {
  const TemporaryFolder folder;
  const std::wstring path = folder.Path(L"page");
  HtmlPage page(path, "large");
  Json totals;
  totals.Set("bytes", 7);
  page.Member("totals", totals);
  page.Rows({"size"}, rows.size(), [&](std::size_t i) { return rows[i]; });
  page.End();
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  EXPECT_TRUE(text.starts_with("before:"));
  EXPECT_TRUE(text.ends_with(":after"));
  return nlohmann::json::parse(text.substr(7, text.size() - 13));
}

TEST(HtmlPage, Rows_name_their_folder_by_its_place) {
  const nlohmann::json report = ReportOf({{L"Q:\\a\\1.iso", Json::List(1)},
                                          {L"Q:\\2.iso", Json::List(2)},
                                          {L"Q:\\a\\3.iso", Json::List(3)}});
  EXPECT_EQ(report["command"], "large");
  EXPECT_EQ(report["totals"]["bytes"], 7);
  EXPECT_EQ(report["columns"], nlohmann::json::array({"folder", "name", "size"}));
  EXPECT_EQ(report["folders"], nlohmann::json::array({"Q:\\a", "Q:"}));
  EXPECT_EQ(report["rows"],
            nlohmann::json::parse(R"([[0,"1.iso",1],[1,"2.iso",2],[0,"3.iso",3]])"));
  EXPECT_EQ(report["exact"], nlohmann::json::array());
}

TEST(HtmlPage, A_long_path_is_shown_without_its_prefix) {
  const nlohmann::json report = ReportOf(
      {{L"\\\\?\\Q:\\a\\b", Json::List(1)}, {L"\\\\?\\UNC\\server\\share\\c", Json::List(2)}});
  EXPECT_EQ(report["folders"], nlohmann::json::array({"Q:\\a", "\\\\server\\share"}));
  EXPECT_EQ(report["rows"][1][1], "c");
}

TEST(HtmlPage, A_name_that_is_no_text_has_its_code_units_besides) {
  const nlohmann::json report =
      ReportOf({{L"Q:\\fine", Json::List(1)}, {L"Q:\\x\xD800y", Json::List(2)}});
  EXPECT_EQ(report["rows"][1][1], "x\uFFFDy");
  EXPECT_EQ(report["exact"], nlohmann::json::parse(R"([[1,"0051003a005c0078d8000079"]])"));
}

TEST(HtmlPage, No_rows_are_an_empty_list) {
  const nlohmann::json report = ReportOf({});
  EXPECT_EQ(report["rows"], nlohmann::json::array());
  EXPECT_EQ(report["folders"], nlohmann::json::array());
}

}  // namespace
}  // namespace quastel::client
