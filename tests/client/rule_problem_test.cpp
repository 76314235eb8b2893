// The first mistake of a rule document, and where it is. That all of these are mistakes for the
// library too, rule_agreement_test.cpp shows.

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "rule_reader.h"
#include "rule_review.h"
#include "rule_text.h"
#include "text_positions.h"

namespace quastel::client {
namespace {

struct Problem {
  const char* name;
  std::string bytes;
  TextPosition position;
  const char* message;  // how it begins
};

void PrintTo(const Problem& problem, std::ostream* out) {
  *out << problem.name;
}

std::optional<RuleMistake> MistakeOf(const std::string& bytes, std::wstring& text) {
  RuleElement root;
  std::optional<RuleMistake> mistake = DecodeRules(bytes, text);
  if (!mistake) {
    mistake = ReadRules(text, root);
  }
  return mistake ? mistake : FirstMistake(root);
}

class RuleProblems : public ::testing::TestWithParam<Problem> {};

TEST_P(RuleProblems, Are_found_where_they_are) {
  std::wstring text;
  const std::optional<RuleMistake> mistake = MistakeOf(GetParam().bytes, text);
  ASSERT_TRUE(mistake.has_value());
  const TextPosition position = TextPositions(text).At(mistake->offset);
  EXPECT_EQ(PositionText(position), PositionText(GetParam().position));
  EXPECT_TRUE(mistake->message.starts_with(GetParam().message)) << mistake->message;
}

const auto kName = [](const ::testing::TestParamInfo<Problem>& info) { return info.param.name; };

std::string Nested(std::size_t depth) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) {
    text += "<a>\n";
  }
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    Encoding, RuleProblems,
    ::testing::ValuesIn(std::vector<Problem>{
        {"LatinOne", "<Root>\n<!-- f\xFCr -->\n</Root>", {2, 7}, "the byte FC is not UTF-8"},
        {"CutOff", "<Root/>\xE2\x82", {1, 8}, "the byte E2"},
        {"TooLong", "<Root/>\xC0\x80", {1, 8}, "the byte C0"},
        {"TooLongOfThree", "<Root/>\xE0\x9F\xBF", {1, 8}, "the byte E0"},
        {"TooLongOfFour", "<Root/>\xF0\x8F\xBF\xBF", {1, 8}, "the byte F0"},
        {"Surrogate", "<Root/>\xED\xA0\x80", {1, 8}, "the byte ED"},
        {"BeyondUnicode", "<Root/>\xF4\x90\x80\x80", {1, 8}, "the byte F4"},
        {"AfterTheMark", "\xEF\xBB\xBF<\xFF", {1, 2}, "the byte FF"},
        {"AfterWideCharacters", "<!--\xC3\xBC\xF0\x9F\x8E\xB5\xFF-->", {1, 7}, "the byte FF"},
        {"BigEndian", std::string("\xFE\xFF\0<", 4), {1, 1}, "the byte FE"},
        {"MarkAlone", "\xEF\xBB\xBF", {1, 1}, "the document has no element"},
        {"Utf16MarkAlone", "\xFF\xFE", {1, 1}, "the document has no element"},
        {"Utf16", std::string("\xFF\xFE<\0R\0>\0\n\0x\0", 12), {1, 1}, "the element <R> is not"},
    }),
    kName);

INSTANTIATE_TEST_SUITE_P(
    Around, RuleProblems,
    ::testing::ValuesIn(std::vector<Problem>{
        {"Empty", "", {1, 1}, "the document has no element"},
        {"Blanks", " \r\n ", {2, 2}, "the document has no element"},
        {"TextBefore", "\n rules <Root/>", {2, 2}, "\"r\" stands before the outer element"},
        {"NonAsciiBefore", "\xC3\xBC<Root/>", {1, 1}, "\"\xC3\xBC\" stands before"},
        {"NulBefore", std::string("\0<Root/>", 8), {1, 1}, "the character U+0000 stands before"},
        {"OpenComment", "<!-- a\n<Root/>", {1, 1}, "this comment has no end"},
        {"OpenDeclaration", "\n<?xml\n<Root/>", {2, 1}, "what <? begins has no end"},
        {"DocumentType", "<!DOCTYPE x>\n<Root/>", {1, 1}, "rule documents have no declarations"},
        {"TextAfter", "<Root/>\n\n  x", {3, 3}, "\"x\" stands after the end"},
        {"SecondElement", "<Root/>\n<Root/>", {2, 1}, "\"<\" stands after the end"},
        {"OpenCommentAfter", "<Root/>\n<!--", {2, 1}, "this comment has no end"},
        {"ClosingFirst", " </Root>", {1, 2}, "a closing tag stands where"},
    }),
    kName);

INSTANTIATE_TEST_SUITE_P(
    Elements, RuleProblems,
    ::testing::ValuesIn(std::vector<Problem>{
        {"BlankBeforeTheName", "<Root>\n < a/></Root>", {2, 2}, "white space follows the <"},
        {"BracketInText", "<Root>1 < 2</Root>", {1, 9}, "white space follows the <"},
        {"Cdata", "<Root>\n<![CDATA[x]]></Root>", {2, 1}, "rule documents have no CDATA"},
        {"DeclarationInside", "<Root><?x?></Root>", {1, 7}, "<? ... ?> stands inside"},
        {"NoName", "<Root><></Root>", {1, 7}, "\">\" follows the <"},
        {"EndsInBracket", "<Root><", {1, 7}, "the end of the document follows the <"},
        {"UnendedTag", "<Root\n a='1'", {1, 1}, "the tag <Root> has no end"},
        {"SlashAlone", "<Root>\n<a / ></Root>", {2, 4}, "\"/\" stands in the tag <a>"},
        {"NotClosed", "<Root>\n <a>\n text", {2, 2}, "the element <a> is not closed"},
        {"RootNotClosed", "<Root>\n <a/>\n", {1, 1}, "the element <Root> is not closed"},
        {"Crosswise",
         "<Root>\n <a>\n</Root>",
         {3, 1},
         "</Root> closes nothing: the element that is open is <a> of line 2, column 2"},
        {"OtherCase", "<Root>\n</root>", {2, 1}, "</root> closes nothing"},
        {"ClosingCutOff", "<Root>\n</Ro", {2, 1}, "the document ends in the middle"},
        {"ClosingUnended", "<Root>\n</Root x>", {2, 1}, "the closing tag </Root> has no >"},
        {"OpenCommentInside", "<Root>\n <!-- ", {2, 2}, "this comment has no end"},
        {"TooDeep", Nested(300), {257, 1}, "elements are nested more than 256 deep"},
    }),
    kName);

INSTANTIATE_TEST_SUITE_P(
    Attributes, RuleProblems,
    ::testing::ValuesIn(std::vector<Problem>{
        {"NoValue", "<Root a/>", {1, 8}, "\"/\" follows the attribute a, and not ="},
        {"NoQuotes", "<Root\n a=1/>", {2, 4}, "the value of a does not begin with a quotation"},
        {"NoClosingQuote", "<Root a='1/>\n</Root>", {1, 9}, "the value of a has no closing"},
        {"CommentInTheTag", "<Root <!-- --> />", {1, 7}, "\"<\" stands in the tag <Root>"},
        {"QuoteForgotten",
         "<Root>\n<a b='1>\n<c d='2'/>\n</Root>",
         {3, 8},
         "an apostrophe follows the attribute 2, and not ="},
    }),
    kName);

INSTANTIATE_TEST_SUITE_P(
    Meaning, RuleProblems,
    ::testing::ValuesIn(std::vector<Problem>{
        {"OtherRoot", "<!-- x -->\n <root/>", {2, 2}, "the outer element is <root>, not <Root>"},
        {"CategoryWithoutName",
         "<Root>\n <Category/></Root>",
         {2, 2},
         "<Category> has no DisplayName"},
        {"CategoryWithEmptyName",
         "<Root><Category DisplayName=''/></Root>",
         {1, 7},
         "<Category> has an empty DisplayName"},
        {"NestedCategoryWithoutName",
         "<Root><Category DisplayName='a'>\n<Category displayname='b'/></Category></Root>",
         {2, 1},
         "<Category> has no DisplayName"},
        {"FolderWithoutPath",
         "<Root><Category DisplayName='a'>\n\t<Folder path='x'/>"
         "</Category></Root>",
         {2, 2},
         "<Folder> has no Path"},
        {"FolderWithEmptyPath",
         "<Root><Category DisplayName='a'><Folder Path=''/>"
         "</Category></Root>",
         {1, 33},
         "<Folder> has an empty Path"},
        {"PathThatBeginsWithNul",
         std::string("<Root><Category DisplayName='a'><Folder Path='\0x'/></Category></Root>", 69),
         {1, 33},
         "<Folder> has an empty Path"},
        {"ListWithoutStart",
         "<Root><Category DisplayName='a'><FolderList EndPath='x'/>"
         "</Category></Root>",
         {1, 33},
         "<FolderList> has no StartPath"},
        {"ListWithoutEnd",
         "<Root><Category DisplayName='a'><FolderList StartPath='C:\\x'/>"
         "</Category></Root>",
         {1, 33},
         "<FolderList> has no EndPath"},
        {"ChildrenWithoutStart",
         "<Root><Category DisplayName='a'><ChildrenList/>"
         "</Category></Root>",
         {1, 33},
         "<ChildrenList> has no StartPath"},
        {"TheFirstOfSeveral",
         "<Root><Category DisplayName='a'>\n<Folder Path='x'/>\n<Folder/>\n"
         "</Category>\n<Category/></Root>",
         {3, 1},
         "<Folder> has no Path"},
        {"GrammarComesFirst",
         "<Root>\n<Category/>\n<a b/></Root>",
         {3, 5},
         "\"/\" follows the attribute b"},
    }),
    kName);

std::string HintFor(const std::string& bytes) {
  std::wstring text;
  const std::optional<RuleMistake> mistake = MistakeOf(bytes, text);
  return mistake ? mistake->hint : "no mistake";
}

TEST(RuleHints, Name_the_attribute_that_was_meant) {
  EXPECT_EQ(HintFor("<Root><Category displayname='a'/></Root>"),
            "it has displayname; did you mean DisplayName? letter case counts");
  EXPECT_EQ(HintFor("<Root><Category DisplayName='a'><Folder Pth='x'/></Category></Root>"),
            "it has Pth; did you mean Path?");
  EXPECT_EQ(HintFor("<Root><Category DisplayName='a'><Folder/></Category></Root>"),
            "add Path=\"...\"");
}

TEST(RuleHints, Point_at_the_value_that_swallowed_what_follows_it) {
  EXPECT_EQ(HintFor("<Root>\n<a b='1>\n<c d='2'/>\n</Root>"),
            "the value that begins at line 2, column 6 may lack its closing quotation mark");
  EXPECT_EQ(HintFor("<Root a='1\n' \"/>"),
            "the value that begins at line 1, column 9 may lack its closing quotation mark");
  EXPECT_EQ(HintFor("<Root a='1' \"/>"),
            "attributes are written Name=\"value\", and a tag ends in > or />");
}

TEST(RuleHints, Recognise_the_other_byte_order) {
  EXPECT_EQ(HintFor(std::string("\xFE\xFF\0<", 4)),
            "the document looks like UTF-16 big-endian; save it as UTF-8");
}

}  // namespace
}  // namespace quastel::client
