// The grammar, as tables of documents and of what is read from them.

#include "junk/junk_fixture.h"
#include "support/named_case.h"

namespace quastel::junk_tests {
namespace {

constexpr const char* kRefused = "refused";

struct Document : support::NamedCase {
  const char* text;
  const char* tree;
};

class RuleDocumentGrammar : public ::testing::TestWithParam<Document> {};

TEST_P(RuleDocumentGrammar, Reads_or_refuses) {
  EXPECT_EQ(Parsed(support::Wide(GetParam().text)), GetParam().tree) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Elements, RuleDocumentGrammar,
                         ::testing::ValuesIn(std::vector<Document>{
                             {{"EmptyElement"}, "<Root/>", "Root"},
                             {{"EmptyElementWithBlanks"}, "<Root \t\r\n/>", "Root"},
                             {{"OpenedAndClosed"}, "<Root></Root>", "Root"},
                             {{"BlanksInTheOpeningTag"}, "<Root \t\r\n></Root>", "Root"},
                             {{"BlanksInTheClosingTag"}, "<Root></Root \t\r\n>", "Root"},
                             {{"Child"}, "<Root><Category/></Root>", "Root(Category)"},
                             {{"ChildrenInOrder"}, "<r><b/><a></a><b/></r>", "r(b a b)"},
                             {{"Nesting"}, "<a><b><c/></b><b/></a>", "a(b(c) b)"},
                             {{"ChildOfTheSameName"}, "<a><a></a></a>", "a(a)"},
                             {{"EveryKindOfNameCharacter"}, "<azAZ09-.:_/>", "azAZ09-.:_"},
                             {{"NameOfADigit"}, "<1></1>", "1"},
                             {{"NameOfAHyphen"}, "<-/>", "-"},
                             {{"NameOfAFullStop"}, "<./>", "."},
                             {{"NameOfAColon"}, "<:/>", ":"},
                             {{"NameOfAnUnderscore"}, "<_/>", "_"},
                             {{"BlankBeforeTheName"}, "< Root/>", kRefused},
                             {{"BlankBetweenSlashAndBracket"}, "<Root/ >", kRefused},
                             {{"SlashTwice"}, "<Root//>", kRefused},
                             {{"SlashFirst"}, "</Root>", kRefused},
                             {{"NoName"}, "<>", kRefused},
                             {{"NoNameButClosed"}, "</>", kRefused},
                             {{"NoNameAtAll"}, "<></>", kRefused},
                             {{"BracketAlone"}, "<", kRefused},
                             {{"NameAlone"}, "Root", kRefused},
                             {{"UnendedTag"}, "<Root", kRefused},
                             {{"UnendedTagWithBlank"}, "<Root ", kRefused},
                             {{"TagEndedBySlash"}, "<Root/", kRefused},
                             {{"NotClosed"}, "<Root>", kRefused},
                             {{"NotClosedAfterText"}, "<Root>text", kRefused},
                             {{"NotClosedAfterAChild"}, "<Root><a/>", kRefused},
                             {{"EndsInABracket"}, "<Root><", kRefused},
                             {{"EndsInTheClosingMark"}, "<Root></", kRefused},
                             {{"EndsInTheClosingName"}, "<Root></Root", kRefused},
                             {{"EndsInTheClosingBlank"}, "<Root></Root ", kRefused},
                             {{"ClosedInAnotherCase"}, "<Root></root>", kRefused},
                             {{"ClosedByAShorterName"}, "<Root></Roo>", kRefused},
                             {{"ClosedByALongerName"}, "<Root></Roots>", kRefused},
                             {{"ClosedByNoName"}, "<Root></>", kRefused},
                             {{"BlankBeforeTheClosingName"}, "<Root></ Root>", kRefused},
                             {{"AttributeInTheClosingTag"}, "<Root></Root a=\"1\">", kRefused},
                             {{"SlashInTheClosingTag"}, "<Root></Root/>", kRefused},
                             {{"ClosedCrosswise"}, "<a><b></a></b>", kRefused},
                             {{"ChildClosedByItsParent"}, "<a><b></a>", kRefused},
                             {{"OtherCharacterInAName"}, "<Ro$t/>", kRefused},
                             {{"OtherCharacterInTheClosingName"}, "<Root></Root$>", kRefused},
                             {{"BadChild"}, "<Root><1 2></Root>", kRefused},
                         }),
                         support::CaseName());

INSTANTIATE_TEST_SUITE_P(
    Attributes, RuleDocumentGrammar,
    ::testing::ValuesIn(std::vector<Document>{
        {{"InDoubleQuotes"}, "<a b=\"1\"/>", "a{b=1}"},
        {{"InApostrophes"}, "<a b='1'/>", "a{b=1}"},
        {{"Empty"}, "<a b=\"\" c=''/>", "a{b=|c=}"},
        {{"BeforeTheBracket"}, "<a b='1'></a>", "a{b=1}"},
        {{"TwiceKeptInOrder"}, "<a b='1' c='2' b='3'/>", "a{b=1|c=2|b=3}"},
        {{"RightAfterEachOther"}, "<a b='1'c=\"2\"d='3'/>", "a{b=1|c=2|d=3}"},
        {{"BlanksAroundTheEqualSign"}, "<a b \t\r\n= \t\r\n'1' />", "a{b=1}"},
        {{"BlanksBetweenAttributes"}, "<a\tb='1'\r\nc='2'\n/>", "a{b=1|c=2}"},
        {{"BracketsInAValue"}, "<a b='<c/>' d='</a>' e='>'/>", "a{b=<c/>|d=</a>|e=>}"},
        {{"CommentInAValue"}, "<a b='<!--' c='-->'/>", "a{b=<!--|c=-->}"},
        {{"SlashAndBracketInAValue"}, "<a b='/>'/>", "a{b=/>}"},
        {{"OtherQuoteInAValue"}, "<a b='\"' c=\"'\"/>", "a{b=\"|c='}"},
        {{"BlanksInAValueStay"}, "<a b=' \t\r\n x '/>", "a{b= \t\r\n x }"},
        {{"EqualSignInAValue"}, "<a b='c=d'/>", "a{b=c=d}"},
        {{"EveryKindOfNameCharacter"}, "<a azAZ09-.:_='1'/>", "a{azAZ09-.:_=1}"},
        {{"NameOfADigit"}, "<a 1='1'/>", "a{1=1}"},
        {{"OnAChild"}, "<a><b c='1'/></a>", "a(b{c=1})"},
        {{"EntityInAName"}, "<a b&amp;='1'/>", kRefused},
        {{"WithoutQuotes"}, "<a b=1/>", kRefused},
        {{"WithoutQuotesBeforeABracket"}, "<a b=1></a>", kRefused},
        {{"WithoutValue"}, "<a b/>", kRefused},
        {{"WithoutValueBeforeAnother"}, "<a b c='1'/>", kRefused},
        {{"WithoutEqualSign"}, "<a b '1'/>", kRefused},
        {{"WithoutName"}, "<a ='1'/>", kRefused},
        {{"NameOfTheElementAsItsName"}, "<a='1'/>", kRefused},
        {{"ValueAlone"}, "<a '1'/>", kRefused},
        {{"EqualSignTwice"}, "<a b=='1'/>", kRefused},
        {{"NothingAfterTheEqualSign"}, "<a b=/>", kRefused},
        {{"UnendedAfterTheEqualSign"}, "<a b=", kRefused},
        {{"UnendedAfterTheName"}, "<a b", kRefused},
        {{"UnendedInTheValue"}, "<a b='1/></a>", kRefused},
        {{"EndedByTheOtherQuote"}, "<a b='1\"/>", kRefused},
        {{"UnendedAfterTheQuote"}, "<a b='", kRefused},
        {{"UnendedValueThatHidesTheEnd"}, "<a b='></a>", kRefused},
        {{"UnendedValueThatHidesASlash"}, "<a b='/>", kRefused},
        {{"UnendedAfterTheValue"}, "<a b='1'", kRefused},
        {{"CommentBetweenAttributes"}, "<a <!-- --> b='1'/>", kRefused},
        {{"BadBehindAGoodOne"}, "<a b='1' c/>", kRefused},
        {{"OnABadChild"}, "<a><b c=1/></a>", kRefused},
    }),
    support::CaseName());

// Each entity is decoded in a pass of its own, the ampersand first.
INSTANTIATE_TEST_SUITE_P(
    Entities, RuleDocumentGrammar,
    ::testing::ValuesIn(std::vector<Document>{
        {{"AllFive"}, "<a b='&amp;&lt;&gt;&quot;&apos;'/>", "a{b=&<>\"'}"},
        {{"InText"}, "<a b='x&lt;y&lt;z'/>", "a{b=x<y<z}"},
        {{"AmpersandBeforeLt"}, "<a b='&amp;lt;'/>", "a{b=<}"},
        {{"AmpersandBeforeGt"}, "<a b='&amp;gt;'/>", "a{b=>}"},
        {{"AmpersandBeforeQuot"}, "<a b='&amp;quot;'/>", "a{b=\"}"},
        {{"AmpersandBeforeApos"}, "<a b='&amp;apos;'/>", "a{b='}"},
        {{"AmpersandBeforeAmp"}, "<a b='&amp;amp;'/>", "a{b=&amp;}"},
        {{"ThreeLevelsOfLt"}, "<a b='&amp;amp;lt;'/>", "a{b=&amp;lt;}"},
        {{"AmpersandBeforeAnAmpersand"}, "<a b='&&amp;lt;'/>", "a{b=&<}"},
        {{"InsertedTextIsNotReadAgain"}, "<a b='&am&amp;p;'/>", "a{b=&am&p;}"},
        {{"LtBeforeGt"}, "<a b='&lt;gt;&lt;amp;'/>", "a{b=<gt;<amp;}"},
        {{"QuoteDoesNotEndTheValue"}, "<a b=\"&quot;/>\" c='&apos;'/>", "a{b=\"/>|c='}"},
        {{"NumberStays"}, "<a b='&#60;&#x3C;&#38;lt;'/>", "a{b=&#60;&#x3C;&#38;lt;}"},
        {{"OtherNameStays"}, "<a b='&nbsp;&copy;'/>", "a{b=&nbsp;&copy;}"},
        {{"OtherCaseStays"}, "<a b='&AMP;&Lt;&QUOT;'/>", "a{b=&AMP;&Lt;&QUOT;}"},
        {{"WithoutSemicolonStays"}, "<a b='&amp &lt &'/>", "a{b=&amp &lt &}"},
        {{"InsideAnEntity"}, "<a b='&l&amp;t;'/>", "a{b=&l&t;}"},
        {{"OfOneEndingInTheNext"}, "<a b='&amp;l' c='t;'/>", "a{b=&l|c=t;}"},
    }),
    support::CaseName());

INSTANTIATE_TEST_SUITE_P(
    Content, RuleDocumentGrammar,
    ::testing::ValuesIn(std::vector<Document>{
        {{"TextIsDropped"}, "<a>text</a>", "a"},
        {{"TextAroundChildren"}, "<a>x<b/>y<c/>z</a>", "a(b c)"},
        {{"BlanksAroundChildren"}, "<a>\r\n\t<b/> </a>", "a(b)"},
        {{"BracketInText"}, "<a>1 > 0 /> --> ]]> ?></a>", "a"},
        {{"EntitiesInText"}, "<a>&amp; & &nope; &lt;b/&gt;</a>", "a"},
        {{"QuotesInText"}, "<a>'\"</a>", "a"},
        {{"AttributeInText"}, "<a>b='1'</a>", "a"},
        {{"Comment"}, "<a><!-- x --></a>", "a"},
        {{"CommentWithoutText"}, "<a><!----></a>", "a"},
        {{"CommentWithMarkup"}, "<a><!-- <b> </a> & ' --><c/></a>", "a(c)"},
        {{"CommentWithHyphens"}, "<a><!-- -- --- --></a>", "a"},
        {{"CommentEndingInHyphens"}, "<a><!-----></a>", "a"},
        {{"CommentEndsAtTheFirstEnd"}, "<a><!-- --><b/><!-- --></a>", "a(b)"},
        {{"EndOfACommentInText"}, "<a><!-- -->--></a>", "a"},
        {{"CommentsBetweenChildren"}, "<a><!--1--><b/>t<!--2-->t<c/><!--3--></a>", "a(b c)"},
        {{"OpeningOfACommentIsNotItsEnd"}, "<a><!--></a>", kRefused},
        {{"OpeningOfACommentIsNotItsEndEither"}, "<a><!---></a>", kRefused},
        {{"CommentThatSwallowsTheEnd"}, "<a><!--></a>-->", kRefused},
        {{"CommentFromTheOpeningOn"}, "<a><!--><b/>--></a>", "a"},
        {{"UnterminatedComment"}, "<a><!-- </a>", kRefused},
        {{"UnterminatedCommentThatHidesTheEnd"}, "<a><!--</a>", kRefused},
        {{"CommentOfOneHyphen"}, "<a><!- x --></a>", kRefused},
        {{"CommentWithBlank"}, "<a>< !-- x --></a>", kRefused},
        {{"Cdata"}, "<a><![CDATA[x]]></a>", kRefused},
        {{"Declaration"}, "<a><?xml version='1.0'?></a>", kRefused},
        {{"ProcessingInstruction"}, "<a><?b c?></a>", kRefused},
        {{"ProcessingInstructionBehindAChild"}, "<a><b/>text<?b?></a>", kRefused},
        {{"DocumentType"}, "<a><!DOCTYPE a></a>", kRefused},
        {{"BracketAsText"}, "<a>1 < 2</a>", kRefused},
        {{"BracketBeforeTheEnd"}, "<a><</a>", kRefused},
        {{"EndsInAComment"}, "<a><!-- -->", kRefused},
    }),
    support::CaseName());

INSTANTIATE_TEST_SUITE_P(
    Surroundings, RuleDocumentGrammar,
    ::testing::ValuesIn(std::vector<Document>{
        {{"BlanksAround"}, " \t\r\n<a/> \t\r\n", "a"},
        {{"DeclarationBefore"}, "<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>", "a"},
        {{"DeclarationAfter"}, "<a/><?x?>", "a"},
        {{"DeclarationWithoutText"}, "<\?\?><a/>", "a"},
        {{"DeclarationWithMarkup"}, "<?<b> --> '?><a/>", "a"},
        {{"DeclarationEndsInAValueToo"}, "<?x '?>'?><a/>", kRefused},
        {{"CommentBefore"}, "<!-- x --><a/>", "a"},
        {{"CommentAfter"}, "<a/><!-- x -->", "a"},
        {{"CommentWithoutText"}, "<!----><a/>", "a"},
        {{"CommentWithADeclaration"}, "<!-- <?x --><a/>", "a"},
        {{"DeclarationWithAComment"}, "<?x <!-- ?><a/>", "a"},
        {{"ManyAround"}, "<!--1--> <?x?>\n<!--2--><a/><?y?> <!--3-->\n<?z?>", "a"},
        {{"OpeningOfACommentIsNotItsEnd"}, "<!--><a/>", kRefused},
        {{"OpeningOfACommentIsNotItsEndEither"}, "<!---><a/>", kRefused},
        {{"OpeningOfADeclarationIsNotItsEnd"}, "<?><a/>", kRefused},
        {{"CommentFromTheOpeningOn"}, "<!--><b/>--><a/>", "a"},
        {{"DeclarationFromTheOpeningOn"}, "<?><b/>?><a/>", "a"},
        {{"UnterminatedComment"}, "<!-- <a/>", kRefused},
        {{"UnterminatedCommentThatHidesTheRoot"}, "<!--<a/>", kRefused},
        {{"UnterminatedDeclarationThatHidesTheRoot"}, "<?<a/>", kRefused},
        {{"UnterminatedDeclaration"}, "<?xml <a/>", kRefused},
        {{"UnterminatedCommentAfter"}, "<a/><!-- x --", kRefused},
        {{"UnterminatedDeclarationAfter"}, "<a/><?x ?", kRefused},
        {{"OpeningOfACommentAfter"}, "<a/><!--", kRefused},
        {{"HalfAnOpeningOfACommentAfter"}, "<a/><!-", kRefused},
        {{"OpeningOfADeclarationAfter"}, "<a/><?", kRefused},
        {{"BracketAfter"}, "<a/><", kRefused},
        {{"Nothing"}, "", kRefused},
        {{"BlanksAlone"}, " \t\r\n", kRefused},
        {{"CommentAlone"}, "<!-- x -->", kRefused},
        {{"DeclarationAlone"}, "<?xml?>", kRefused},
        {{"TextBefore"}, "x<a/>", kRefused},
        {{"TextAfter"}, "<a/>x", kRefused},
        {{"TextBetweenComments"}, "<!--1-->x<!--2--><a/>", kRefused},
        {{"SecondRoot"}, "<a/><b/>", kRefused},
        {{"SecondRootBehindAComment"}, "<a/><!-- --><b></b>", kRefused},
        {{"ClosingTagAfter"}, "<a/></a>", kRefused},
        {{"DocumentType"}, "<!DOCTYPE a><a/>", kRefused},
        {{"DocumentTypeBehindADeclaration"}, "<?xml?><!DOCTYPE a []><a/>", kRefused},
        {{"DocumentTypeAfter"}, "<a/><!DOCTYPE a>", kRefused},
        {{"CdataBefore"}, "<![CDATA[]]><a/>", kRefused},
        {{"VerticalTabIsNoBlank"}, "\v<a/>", kRefused},
        {{"FormFeedIsNoBlank"}, "<a/>\f", kRefused},
        {{"FormFeedIsNoBlankInATag"}, "<a\f/>", kRefused},
        {{"VerticalTabIsNoBlankInAClosingTag"}, "<a></a\v>", kRefused},
        {{"FormFeedIsNoBlankBeforeAnEqualSign"}, "<a b\f='1'/>", kRefused},
        {{"VerticalTabIsNoBlankAfterAnEqualSign"}, "<a b=\v'1'/>", kRefused},
        {{"VerticalTabIsText"}, "<a>\v</a>", "a"},
    }),
    support::CaseName());

TEST(RuleDocument, Takes_only_the_four_blanks_of_ascii_for_blanks) {
  for (const Char c : {Char{0}, Char{0x0B}, Char{0x0C}, Char{0x1F}, Char{0x85}, Char{0xA0},
                       Char{0x2003}, Char{0x2028}, Char{0x3000}, Char{0xFEFF}}) {
    SCOPED_TRACE(static_cast<unsigned>(c));
    EXPECT_EQ(Parsed(Text(1, c) + u"<a/>"), kRefused);
    EXPECT_EQ(Parsed(u"<a/>" + Text(1, c)), kRefused);
    EXPECT_EQ(Parsed(u"<a" + Text(1, c) + u"/>"), kRefused);
    EXPECT_EQ(Parsed(u"<a>" + Text(1, c) + u"</a>"), "a") << "it is text";
  }
}

TEST(RuleDocument, Takes_only_ascii_letters_digits_and_four_signs_for_a_name) {
  for (std::uint32_t code = 0; code < 0x500; ++code) {
    const Char c = static_cast<Char>(code);
    const bool is_name = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '-' || c == '.' || c == ':' || c == '_';
    const Text name(1, c);
    ASSERT_EQ(Parsed(u"<" + name + u"></" + name + u">"), is_name ? Utf8(name) : kRefused) << code;
    ASSERT_EQ(Parsed(u"<a " + name + u"='1'/>"), is_name ? "a{" + Utf8(name) + "=1}" : kRefused)
        << code;
  }
  // A letter in its wide form.
  EXPECT_EQ(Parsed(u"<\uFF41/>"), kRefused);
}

TEST(RuleDocument, Keeps_every_unit_of_a_value) {
  Text value = u"\u00E9\u4E2D\U0001F600";
  value += Char{0xD800};  // unpaired
  value += Char{0};
  value += Char{0xFFFF};
  junk::RuleNode root;
  ASSERT_TRUE(junk::ParseRuleDocument(u"<a b='" + value + u"'/>", root));
  ASSERT_EQ(root.attributes.size(), 1u);
  EXPECT_EQ(root.attributes[0].value, value);
}

TEST(RuleDocument, Cut_off_anywhere_is_refused) {
  const Text whole =
      u"\uFEFF<?xml version='1.0'?><!-- c --> <Root a=\"1\" b = "
      u"'&amp;lt;'><Category\tn='x'>text"
      u"<!-- d --><Folder p=''q=\">\"/></Category >\r\n<e></e></Root >";
  const TextView document = TextView(whole).substr(1);
  ASSERT_EQ(Parsed(document), "Root{a=1|b=<}(Category{n=x}(Folder{p=|q=>}) e)");
  for (std::size_t length = 0; length < document.size(); ++length) {
    ASSERT_EQ(Parsed(document.substr(0, length)), kRefused) << Utf8(document.substr(0, length));
  }
}

TEST(RuleDocument, Finds_the_first_attribute_of_exactly_a_name) {
  junk::RuleNode root;
  ASSERT_TRUE(junk::ParseRuleDocument(u"<a Path='1' path='2' Path='3' Paths='4' empty=''/>", root));
  ASSERT_NE(root.Find(u"Path"), nullptr);
  EXPECT_EQ(*root.Find(u"Path"), u"1");
  ASSERT_NE(root.Find(u"path"), nullptr);
  EXPECT_EQ(*root.Find(u"path"), u"2");
  ASSERT_NE(root.Find(u"empty"), nullptr);
  EXPECT_EQ(*root.Find(u"empty"), u"");
  for (const TextView name : {u"PATH", u"Pat", u"Pathss", u"", u"a"}) {
    EXPECT_EQ(root.Find(name), nullptr) << Utf8(name);
  }
}

TEST(RuleDocument, Of_a_large_size_is_read) {
  Text document = u"<Root v='";
  for (int i = 0; i < 100'000; ++i) {
    document += u"&amp;lt;";
  }
  document += u"'><!--" + Text(500'000, Char{'-'}) + u"-->" + Text(500'000, Char{'x'});
  for (int i = 0; i < 50'000; ++i) {
    document += u"<Folder a='1' b='2'/>";
  }
  document += u"</Root>";
  junk::RuleNode root;
  ASSERT_TRUE(junk::ParseRuleDocument(document, root));
  ASSERT_EQ(root.attributes.size(), 1u);
  EXPECT_EQ(root.attributes[0].value, Text(100'000, Char{'<'}));
  EXPECT_EQ(root.children.size(), 50'000u);
}

}  // namespace
}  // namespace quastel::junk_tests
