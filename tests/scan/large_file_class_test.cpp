#include <cctype>
#include <string>
#include <vector>

#include "scan/scan_fixture.h"
#include "support/named_case.h"

namespace quastel::scan_tests {
namespace {

Text Widen(const std::string& ascii) {
  return Text(ascii.begin(), ascii.end());
}

struct ExtensionList {
  const char* name;
  std::uint32_t category;
  std::size_t count;
  std::vector<std::string> extensions;
};
void PrintTo(const ExtensionList& list, std::ostream* out) {
  *out << list.name;
}

class Extensions : public ::testing::TestWithParam<ExtensionList> {};

TEST_P(Extensions, Decide_the_class_in_every_spelling) {
  EXPECT_EQ(GetParam().extensions.size(), GetParam().count);
  for (const std::string& extension : GetParam().extensions) {
    SCOPED_TRACE(extension);
    const auto classify = [](const std::string& path) {
      return qs_large_file_classify(Widen(path).c_str());
    };
    std::string upper = extension;
    std::string mixed = extension;
    for (std::size_t i = 0; i < extension.size(); ++i) {
      const auto letter = static_cast<unsigned char>(extension[i]);
      upper[i] = static_cast<char>(std::toupper(letter));
      mixed[i] = i % 2 == 0 ? extension[i] : upper[i];
    }
    EXPECT_EQ(classify("name" + extension), GetParam().category);
    EXPECT_EQ(classify("C:\\some folder\\name" + extension), GetParam().category);
    EXPECT_EQ(classify("C:/some folder/name" + extension), GetParam().category);
    EXPECT_EQ(classify(extension), GetParam().category);
    EXPECT_EQ(classify("NAME" + upper), GetParam().category);
    EXPECT_EQ(classify("Name" + mixed), GetParam().category);
    EXPECT_EQ(classify("name.txt.zip.mp4.png" + extension), GetParam().category);
    EXPECT_EQ(classify("name" + extension + ".part"), QS_LARGE_OTHER);
    EXPECT_EQ(classify("name" + extension + "."), QS_LARGE_OTHER);
    EXPECT_EQ(classify("name" + extension + " "), QS_LARGE_OTHER);
    EXPECT_EQ(classify("name" + extension.substr(1)), QS_LARGE_OTHER);
    EXPECT_EQ(classify("C:\\folder" + extension + "\\name"), QS_LARGE_OTHER);
    EXPECT_EQ(classify("C:\\folder" + extension + "\\"), QS_LARGE_OTHER);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, Extensions,
    ::testing::Values(
        ExtensionList{
            "Archives", 0, 27, {".zip", ".z",    ".7z",  ".gz",    ".gzip", ".rar", ".arj",
                                ".lzh", ".jar",  ".iso", ".cab",   ".xz",   ".txz", ".lzma",
                                ".tar", ".cpio", ".bz2", ".bzip2", ".tbz2", ".tbz", ".tgz",
                                ".tpz", ".taz",  ".cab", ".lzh",   ".ace",  ".uue"}},
        ExtensionList{
            "Documents", 1, 25, {".doc",  ".dot",  ".docx", ".wps", ".wpt",  ".xls",  ".xlt",
                                 ".xlsx", ".xlsm", ".et",   ".ett", ".ppt",  ".pot",  ".pps",
                                 ".pptx", ".dps",  ".dpt",  ".pdf", ".epub", ".mobi", ".ofd",
                                 ".opg",  ".txt",  ".xml",  ".csv"}},
        ExtensionList{"Images",
                      2,
                      11,
                      {".jpg", ".jpeg", ".png", ".gif", ".bmp", ".tiff", ".psd", ".raw", ".eps",
                       ".svg", ".bmp"}},
        ExtensionList{
            "MediaFiles", 3, 35, {".mp4",  ".m4v",  ".avi",  ".mov", ".qt",   ".ts",  ".mkv",
                                  ".asf",  ".wnv",  ".wmv",  ".rm",  ".rmvb", ".qsv", ".kux",
                                  ".flv",  ".navi", ".mpeg", ".swf", ".mpg",  ".mpe", ".vob",
                                  ".3gp",  ".amr",  ".mp3",  ".mp2", ".mp1",  ".wav", ".aif",
                                  ".aiff", ".au",   ".ra",   ".rm",  ".ram",  ".mid", ".rmi"}}),
    support::CaseName());

struct ClassCase {
  const char* name;
  const Char* path;
  std::uint32_t category;
};
void PrintTo(const ClassCase& c, std::ostream* out) {
  *out << c.name << " " << ::testing::PrintToString(Text(ViewOf(c.path)));
}

class LargeFileClass : public ::testing::TestWithParam<ClassCase> {};

TEST_P(LargeFileClass, Follows_the_last_dot_of_the_last_component) {
  EXPECT_EQ(qs_large_file_classify(GetParam().path), GetParam().category);
}

INSTANTIATE_TEST_SUITE_P(
    All, LargeFileClass,
    ::testing::Values(
        ClassCase{"null", nullptr, QS_LARGE_OTHER}, ClassCase{"empty", u"", QS_LARGE_OTHER},
        ClassCase{"upper_case", u"REPORT.PDF", QS_LARGE_DOCUMENTS},
        ClassCase{"mixed_case", u"photo.JPEG", QS_LARGE_IMAGES},
        ClassCase{"part", u"movie.mkv.part", QS_LARGE_OTHER},
        ClassCase{"no_dot", u"C:\\data\\README", QS_LARGE_OTHER},
        ClassCase{"no_dot_at_all", u"zip", QS_LARGE_OTHER},
        ClassCase{"two_extensions", u"a.tar.gz", QS_LARGE_ARCHIVES},
        ClassCase{"last_one_decides", u"archive.zip.pdf", QS_LARGE_DOCUMENTS},
        ClassCase{"only_an_extension", u".zip", QS_LARGE_ARCHIVES},
        ClassCase{"only_an_extension_in_a_folder", u"C:\\.zip", QS_LARGE_ARCHIVES},
        ClassCase{"trailing_dot", u"a.zip.", QS_LARGE_OTHER},
        ClassCase{"only_a_dot", u".", QS_LARGE_OTHER}, ClassCase{"two_dots", u"..", QS_LARGE_OTHER},
        ClassCase{"double_dot", u"a..zip", QS_LARGE_ARCHIVES},
        ClassCase{"dot_in_the_folder_only", u"C:\\pictures.jpg\\file", QS_LARGE_OTHER},
        ClassCase{"dot_in_the_folder_only_with_slash", u"C:/pictures.jpg/file", QS_LARGE_OTHER},
        ClassCase{"trailing_separator", u"C:\\a.zip\\", QS_LARGE_OTHER},
        ClassCase{"mixed_separators", u"C:\\a.txt/b.mp3", QS_LARGE_MEDIA},
        ClassCase{"colon_is_no_separator", u"a.zip:b.mp3", QS_LARGE_MEDIA},
        ClassCase{"trailing_blank", u"a.zip ", QS_LARGE_OTHER},
        ClassCase{"longer_than_an_entry", u"a.zipx", QS_LARGE_OTHER},
        ClassCase{"shorter_than_an_entry", u"a.zi", QS_LARGE_OTHER},
        ClassCase{"tif_is_not_listed", u"a.tif", QS_LARGE_OTHER},
        ClassCase{"wnv_is_listed", u"a.wnv", QS_LARGE_MEDIA},
        ClassCase{"kelvin_sign_for_k", u"a.m\u212Av", QS_LARGE_OTHER},
        ClassCase{"dotted_capital_i_for_i", u"a.Z\u0130P", QS_LARGE_OTHER},
        ClassCase{"dotless_i_for_i", u"a.z\u0131p", QS_LARGE_OTHER},
        ClassCase{"long_s_for_s", u"a.p\u017Fd", QS_LARGE_OTHER},
        ClassCase{"full_width_letters", u"a.\uFF3A\uFF29\uFF30", QS_LARGE_OTHER},
        ClassCase{"other_scripts_in_the_name", u"C:\\\u6587\u4EF6\\\u00C4.ZIP", QS_LARGE_ARCHIVES}),
    support::CaseName());

TEST(LargeFileIncluded, Means_strictly_more_than_10_mebibytes) {
  const std::pair<std::int64_t, std::int32_t> cases[] = {
      {INT64_MIN, 0},  {-1, 0},         {0, 0},
      {1, 0},          {10'485'759, 0}, {10'485'760, 0},
      {10'485'761, 1}, {INT64_MAX, 1},  {std::int64_t{1} << 32, 1},
  };
  for (const auto& [size, included] : cases) {
    EXPECT_EQ(qs_large_file_included(size), included) << size;
  }
}

TEST(SummaryBucket, Leaves_the_two_boundary_sizes_in_no_bucket) {
  const std::pair<std::int64_t, const char*> cases[] = {
      {INT64_MIN, "Small"},
      {-1, "Small"},
      {0, "Small"},
      {524'287'999, "Small"},
      {524'288'000, "None"},
      {524'288'001, "Medium"},
      {536'870'912, "Medium"},
      {1'073'741'823, "Medium"},
      {1'073'741'824, "None"},
      {1'073'741'825, "Huge"},
      {INT64_MAX, "Huge"},
  };
  for (const auto& [size, word] : cases) {
    EXPECT_STREQ(qs_summary_bucket(size), word) << size;
  }
}

TEST(SummaryBucket, Is_the_same_static_text_every_time) {
  const std::pair<std::int64_t, std::int64_t> same[] = {{0, 524'287'999},
                                                        {524'288'001, 1'073'741'823},
                                                        {1'073'741'825, INT64_MAX},
                                                        {524'288'000, 1'073'741'824}};
  for (const auto& [a, b] : same) {
    EXPECT_EQ(qs_summary_bucket(a), qs_summary_bucket(b)) << a;
    EXPECT_EQ(qs_summary_bucket(a), qs_summary_bucket(a)) << a;
  }
}

TEST(GroupWords, Name_the_five_classes) {
  EXPECT_EQ(GroupWordOf(LargeFileCategory::kArchives), u"Archives");
  EXPECT_EQ(GroupWordOf(LargeFileCategory::kDocuments), u"Documents");
  EXPECT_EQ(GroupWordOf(LargeFileCategory::kImages), u"Images");
  EXPECT_EQ(GroupWordOf(LargeFileCategory::kMedia), u"Media files");
  EXPECT_EQ(GroupWordOf(LargeFileCategory::kOther), u"Other");
}

}  // namespace
}  // namespace quastel::scan_tests
