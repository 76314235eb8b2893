// Inside the subset that both know, the reader's tree is that of a whole XML
// parser.

#include <expat.h>

#include <algorithm>
#include <random>

#include "junk/junk_fixture.h"
#include "support/instrumented.h"

namespace quastel::junk_tests {
namespace {

// The tree of the other parser in the form of Print, or "refused".
class OtherParser {
 public:
  static std::string Parsed(const std::string& bytes) {
    OtherParser self;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &self);
    XML_SetElementHandler(parser, Begin, End);
    const XML_Status status =
        XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
    XML_ParserFree(parser);
    return status == XML_STATUS_OK ? self.text_ : "refused";
  }

 private:
  static void XMLCALL Begin(void* user, const XML_Char* name, const XML_Char** attributes) {
    OtherParser& self = *static_cast<OtherParser*>(user);
    if (!self.open_.empty()) {
      self.text_ += self.open_.back() ? " " : "(";
      self.open_.back() = true;
    }
    self.text_ += name;
    for (int i = 0; attributes[i] != nullptr; i += 2) {
      self.text_ += std::string(i == 0 ? "{" : "|") + attributes[i] + "=" + attributes[i + 1];
    }
    self.text_ += attributes[0] != nullptr ? "}" : "";
    self.open_.push_back(false);
  }

  static void XMLCALL End(void* user, const XML_Char*) {
    OtherParser& self = *static_cast<OtherParser*>(user);
    self.text_ += self.open_.back() ? ")" : "";
    self.open_.pop_back();
  }

  std::string text_;
  std::vector<bool> open_;  // whether the open element has had a child
};

// Documents that both must read, and read alike.
class Documents {
 public:
  explicit Documents(std::uint32_t seed) : random_(seed) {}

  std::uint32_t Below(std::uint32_t end) {
    return std::uniform_int_distribution<std::uint32_t>(0, end - 1)(random_);
  }

  Text Document() {
    Text out = Below(2) == 0 ? u"<?xml version=\"1.0\"?>" : u"";
    Surroundings(out);
    Element(out, 1);
    Surroundings(out);
    return out;
  }

  // The same with one unit changed, left out or doubled.
  Text Damaged(Text document) {
    const std::size_t at = Below(static_cast<std::uint32_t>(document.size()));
    const TextView units = u"<>&\"'/=!? -a;:.]";
    switch (Below(3)) {
      case 0:
        document[at] = units[Below(static_cast<std::uint32_t>(units.size()))];
        break;
      case 1:
        document.erase(at, 1);
        break;
      default:
        document.insert(at, 1, units[Below(static_cast<std::uint32_t>(units.size()))]);
        break;
    }
    return document;
  }

 private:
  template <std::size_t kSize>
  TextView OneOf(const TextView (&choices)[kSize]) {
    return choices[Below(kSize)];
  }

  void Blanks(Text& out, std::uint32_t least = 0) {
    for (std::uint32_t n = least + Below(3); n > 0; --n) {
      out += OneOf({u" ", u"\t", u"\n", u"\r\n"});
    }
  }

  Text Name() {
    Text name(OneOf({u"a", u"b", u"Root", u"Category", u"_", u"Z"}));
    for (std::uint32_t n = Below(3); n > 0; --n) {
      name += OneOf({u"-", u".", u"_", u"9", u"x", u"Q"});
    }
    return name;
  }

  // No reference comes behind an ampersand, and two damages would be needed to
  // bring one there: the reader decodes twice where others do not.
  void Attribute(Text& out, const Text& name) {
    const TextView quote = OneOf({u"\"", u"'"});
    Blanks(out, 1);
    out += name;
    Blanks(out);
    out += u"=";
    Blanks(out);
    out += quote;
    for (std::uint32_t n = Below(6); n > 0; --n) {
      out += OneOf({u"&amp; .", u"&lt;", u"&gt;", u"&quot;", u"&apos;", u">", u" ", u"C:\\x",
                    u"{Root}", u"\u00E9", u"\u4E2D", u"\U0001F600", u"/", u"=", u"-->", u"?>",
                    quote == u"'" ? u"\"" : u"'"});
    }
    out += quote;
  }

  void Comment(Text& out) {
    out += u"<!--";
    out += OneOf({u"", u" x ", u"<a b='1'>", u" - ", u"</a>", u"&", u"?>", u"\u00E9"});
    out += u"-->";
  }

  void Surroundings(Text& out) {
    for (std::uint32_t n = Below(3); n > 0; --n) {
      Blanks(out);
      if (Below(2) == 0) {
        Comment(out);
      } else {
        out += OneOf({u"<?x?>", u"<?x <a> -- ?>", u"<?y & '?>"});
      }
    }
    Blanks(out);
  }

  void Element(Text& out, int depth) {
    const Text name = Name();
    out += u"<" + name;
    std::vector<Text> used;
    for (std::uint32_t n = Below(4); n > 0; --n) {
      const Text attribute = Name();
      if (std::find(used.begin(), used.end(), attribute) == used.end()) {
        Attribute(out, attribute);
        used.push_back(attribute);
      }
    }
    Blanks(out);
    if (Below(4) == 0) {
      out += u"/>";
      return;
    }
    out += u">";
    for (std::uint32_t n = Below(5); n > 0; --n) {
      switch (depth < 6 ? Below(4) : Below(2)) {
        case 0:
          out += OneOf({u"text", u" ", u"&amp;", u"1 > 0", u"'\"", u"\u4E2D\U0001F600", u"a='1'",
                        u"/>", u"&lt;b/&gt;"});
          break;
        case 1:
          Comment(out);
          break;
        default:
          Element(out, depth + 1);
          break;
      }
    }
    out += u"</" + name;
    Blanks(out);
    out += u">";
  }

  std::mt19937 random_;
};

// Of the file's bytes, as the reader gets them.
std::string LoadedTree(const std::string& bytes) {
  SimulatedWindows machine;
  machine.AddFile(kRulesPath, bytes);
  junk::RuleNode root;
  return junk::LoadRuleDocument(Text(kRulesPath), root) == QS_OK ? Print(root) : "refused";
}

TEST(RuleDocumentExpat, Random_documents_have_the_same_tree_in_every_encoding) {
  Documents documents(20'240'601);
  std::size_t elements = 0;
  constexpr std::size_t kRounds = support::Rounds(4'000, 1'200);
  for (std::size_t round = 0; round < kRounds; ++round) {
    const Text document = documents.Document();
    const std::string bytes = Utf8(document);
    const std::string expected = OtherParser::Parsed(bytes);
    ASSERT_NE(expected, "refused") << "a bad document was made: " << bytes;
    ASSERT_EQ(LoadedTree(bytes), expected) << bytes;
    for (const std::string& encoded :
         {std::string(kUtf8Mark) + bytes, std::string(kUtf16Mark) + LittleEndian(document)}) {
      ASSERT_EQ(OtherParser::Parsed(encoded), expected) << bytes;
      ASSERT_EQ(LoadedTree(encoded), expected) << bytes;
    }
    elements += static_cast<std::size_t>(std::count(expected.begin(), expected.end(), '('));
  }
  EXPECT_GT(elements, kRounds) << "the documents must have something in them";
}

TEST(RuleDocumentExpat, Damaged_documents_that_both_read_have_the_same_tree) {
  Documents documents(7);
  std::size_t both = 0;
  std::size_t neither = 0;
  constexpr std::size_t kRounds = support::Rounds(20'000, 6'000);
  for (std::size_t round = 0; round < kRounds; ++round) {
    const Text document = documents.Damaged(documents.Document());
    const std::string bytes = Utf8(document);
    const std::string expected = OtherParser::Parsed(bytes);
    const std::string tree = LoadedTree(bytes);
    // A damage may bring other blanks than spaces into a value, which others
    // turn into spaces.
    if (expected != "refused" && tree != "refused" &&
        tree.find_first_of("\t\r\n") == std::string::npos) {
      ++both;
      ASSERT_EQ(tree, expected) << bytes;
    }
    neither += expected == "refused" && tree == "refused";
  }
  EXPECT_GT(both, kRounds / 10);
  EXPECT_GT(neither, kRounds / 10);
}

}  // namespace
}  // namespace quastel::junk_tests
