#include "html_page.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
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
Json ReportOf(const std::vector<PageRow>& rows) {
  const TemporaryFolder folder;
  const std::wstring path = folder.Path(L"page");
  HtmlPage page(path, "large");
  page.Member("totals", {{"bytes", 7}});
  page.Rows({"size"}, rows.size(), [&](std::size_t i) { return rows[i]; });
  page.End();
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  EXPECT_TRUE(text.starts_with("before:"));
  EXPECT_TRUE(text.ends_with(":after"));
  return Json::parse(text.substr(7, text.size() - 13));
}

TEST(HtmlPage, Rows_name_their_folder_by_its_place) {
  const Json report = ReportOf({{L"Q:\\a\\1.iso", Json::array({1})},
                                {L"Q:\\2.iso", Json::array({2})},
                                {L"Q:\\a\\3.iso", Json::array({3})}});
  EXPECT_EQ(report["command"], "large");
  EXPECT_EQ(report["totals"]["bytes"], 7);
  EXPECT_EQ(report["columns"], Json::array({"folder", "name", "size"}));
  EXPECT_EQ(report["folders"], Json::array({"Q:\\a", "Q:"}));
  EXPECT_EQ(report["rows"], Json::parse(R"([[0,"1.iso",1],[1,"2.iso",2],[0,"3.iso",3]])"));
  EXPECT_EQ(report["exact"], Json::array());
}

TEST(HtmlPage, A_long_path_is_shown_without_its_prefix) {
  const Json report = ReportOf({{L"\\\\?\\Q:\\a\\b", Json::array({1})},
                                {L"\\\\?\\UNC\\server\\share\\c", Json::array({2})}});
  EXPECT_EQ(report["folders"], Json::array({"Q:\\a", "\\\\server\\share"}));
  EXPECT_EQ(report["rows"][1][1], "c");
}

TEST(HtmlPage, A_name_that_is_no_text_has_its_code_units_besides) {
  const Json report =
      ReportOf({{L"Q:\\fine", Json::array({1})}, {L"Q:\\x\xD800y", Json::array({2})}});
  EXPECT_EQ(report["rows"][1][1], "x\uFFFDy");
  EXPECT_EQ(report["exact"], Json::parse(R"([[1,"0051003a005c0078d8000079"]])"));
}

TEST(HtmlPage, No_rows_are_an_empty_list) {
  const Json report = ReportOf({});
  EXPECT_EQ(report["rows"], Json::array());
  EXPECT_EQ(report["folders"], Json::array());
}

}  // namespace
}  // namespace quastel::client
