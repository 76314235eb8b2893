#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

using std::string_literals::operator""s;

class RuleDocumentEncoding : public ::testing::Test {
 protected:
  // The tree, or "failed".
  std::string Loaded(std::string_view bytes) {
    machine_.AddFile(kRulesPath, bytes);
    junk::RuleNode root;
    const qs_status status = junk::LoadRuleDocument(Text(kRulesPath), root);
    EXPECT_TRUE(status == QS_OK || status == QS_FAILED) << status;
    EXPECT_EQ(machine_.open_handles(), 0u);
    return status == QS_OK ? Print(root) : "failed";
  }

  SimulatedWindows machine_;
};

TEST_F(RuleDocumentEncoding, Of_the_smallest_root_has_no_attributes_and_no_children) {
  EXPECT_EQ(Loaded("<Root/>"), "Root");
}

TEST_F(RuleDocumentEncoding, May_be_utf8_with_and_without_its_mark) {
  const std::string document = "<a b='\xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80'/>";
  const std::string tree = "a{b=\xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80}";
  EXPECT_EQ(Loaded(document), tree);
  EXPECT_EQ(Loaded(std::string(kUtf8Mark) + document), tree);
}

TEST_F(RuleDocumentEncoding, May_be_little_endian_utf16_with_its_mark) {
  EXPECT_EQ(Loaded(std::string(kUtf16Mark) + LittleEndian(u"<a b='\u00E9 \u4E2D \U0001F600'/>")),
            "a{b=\xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80}");
}

TEST_F(RuleDocumentEncoding, Drops_an_odd_byte_at_the_end_of_utf16) {
  const std::string document = std::string(kUtf16Mark) + LittleEndian(u"<a/>");
  EXPECT_EQ(Loaded(document + '<'), "a");
  EXPECT_EQ(Loaded(document + '\0'), "a");
  EXPECT_EQ(Loaded(document + '\xFF'), "a");
  EXPECT_EQ(Loaded(document + "<\0"s), "failed") << "two bytes are a unit";
  EXPECT_EQ(Loaded(document.substr(0, document.size() - 1)), "failed") << "the last unit is needed";
}

TEST_F(RuleDocumentEncoding, Keeps_utf16_units_that_are_no_text) {
  Text document = u"<a b='";
  document += Char{0xDC00};
  document += Char{0xD800};
  document += Char{0xFFFE};
  EXPECT_EQ(Loaded(std::string(kUtf16Mark) + LittleEndian(document + u"'/>")),
            "a{b=<dc00><d800>\xEF\xBF\xBE}");
}

TEST_F(RuleDocumentEncoding, Of_an_empty_file_or_a_mark_alone_fails) {
  EXPECT_EQ(Loaded(""), "failed");
  EXPECT_EQ(Loaded(kUtf8Mark), "failed");
  EXPECT_EQ(Loaded(kUtf16Mark), "failed");
  EXPECT_EQ(Loaded(std::string(kUtf16Mark) + '<'), "failed") << "half a unit";
  EXPECT_EQ(Loaded("\xEF"), "failed");
  EXPECT_EQ(Loaded("\xEF\xBB"), "failed");
  EXPECT_EQ(Loaded("\xFF"), "failed");
  EXPECT_EQ(Loaded(" "), "failed");
  EXPECT_EQ(Loaded("\0"s), "failed");
}

TEST_F(RuleDocumentEncoding, Takes_one_mark_and_no_more) {
  EXPECT_EQ(Loaded(std::string(kUtf8Mark) + std::string(kUtf8Mark) + "<a/>"), "failed");
  EXPECT_EQ(Loaded(std::string(kUtf16Mark) + LittleEndian(u"\uFEFF<a/>")), "failed");
  EXPECT_EQ(Loaded(std::string(kUtf16Mark) + std::string(kUtf8Mark) + "<a/>"), "failed");
  EXPECT_EQ(Loaded("<a/>" + std::string(kUtf8Mark)), "failed");
  EXPECT_EQ(Loaded(" " + std::string(kUtf8Mark) + "<a/>"), "failed");
}

TEST_F(RuleDocumentEncoding, Refuses_other_encodings) {
  EXPECT_EQ(Loaded("\xFE\xFF\0<\0a\0/\0>"s), "failed") << "big-endian UTF-16";
  EXPECT_EQ(Loaded("\0<\0a\0/\0>"s), "failed") << "the same without a mark";
  EXPECT_EQ(Loaded(LittleEndian(u"<a/>")), "failed") << "little-endian UTF-16 without a mark";
  EXPECT_EQ(Loaded("\xFF\xFE\0\0<\0\0\0a\0\0\0/\0\0\0>\0\0\0"s), "failed") << "UTF-32";
  EXPECT_EQ(Loaded("<a b='\xE9'/>"), "failed") << "Latin-1";
}

TEST_F(RuleDocumentEncoding, Refuses_invalid_utf8_wherever_it_stands) {
  for (const std::string& bad :
       {"\x80"s, "\xBF"s, "\xC3"s, "\xC0\x80"s, "\xC1\xBF"s, "\xE0\x80\x80"s, "\xE0\x9F\xBF"s,
        "\xE4\xB8"s, "\xED\xA0\x80"s, "\xED\xBF\xBF"s, "\xF0\x80\x80\x80"s, "\xF0\x8F\xBF\xBF"s,
        "\xF4\x90\x80\x80"s, "\xF5\x80\x80\x80"s, "\xFE"s, "\xFF"s}) {
    SCOPED_TRACE(::testing::PrintToString(bad));
    EXPECT_EQ(Loaded("<a b='" + bad + "'/>"), "failed");
    EXPECT_EQ(Loaded("<a>" + bad + "</a>"), "failed");
    EXPECT_EQ(Loaded("<!--" + bad + "--><a/>"), "failed");
    EXPECT_EQ(Loaded("<a/>" + bad), "failed");
    EXPECT_EQ(Loaded(bad + "<a/>"), "failed");
    EXPECT_EQ(Loaded(std::string(kUtf8Mark) + "<a><!--" + bad + "--></a>"), "failed");
  }
}

TEST_F(RuleDocumentEncoding, Accepts_the_first_and_last_of_each_length_of_utf8) {
  for (const std::string& good :
       {"\x01"s, "\x7F"s, "\xC2\x80"s, "\xDF\xBF"s, "\xE0\xA0\x80"s, "\xED\x9F\xBF"s,
        "\xEE\x80\x80"s, "\xEF\xBF\xBF"s, "\xF0\x90\x80\x80"s, "\xF4\x8F\xBF\xBF"s}) {
    EXPECT_EQ(Loaded("<a b='" + good + "'/>"), "a{b=" + good + "}");
  }
}

TEST_F(RuleDocumentEncoding, Ignores_what_a_declaration_says_about_it) {
  const TextView declared = u"<?xml version='1.0' encoding='utf-16be'?><a b='\u00E9'/>";
  EXPECT_EQ(Loaded("<?xml version='1.0' encoding='utf-16be'?><a b='\xC3\xA9'/>"), "a{b=\xC3\xA9}");
  EXPECT_EQ(Loaded(std::string(kUtf16Mark) + LittleEndian(declared)), "a{b=\xC3\xA9}");
}

}  // namespace
}  // namespace quastel::junk_tests
