#include "rule_reader.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "text.h"
#include "text_positions.h"

namespace quastel::client {
namespace {

// The library's limit, which keeps a hostile document from exhausting the stack.
constexpr std::size_t kDeepestElement = 256;

constexpr std::wstring_view kCommentStart = L"<!--";
constexpr std::wstring_view kCommentEnd = L"-->";
constexpr std::wstring_view kDeclarationStart = L"<?";
constexpr std::wstring_view kDeclarationEnd = L"?>";
constexpr std::wstring_view kClosingStart = L"</";

constexpr bool IsBlank(wchar_t c) {
  return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n';
}

constexpr bool IsNameCharacter(wchar_t c) {
  return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') ||
         c == L'-' || c == L'.' || c == L':' || c == L'_';
}

// Left to right, going on after what was inserted.
std::wstring Replaced(const std::wstring& text, std::wstring_view entity, wchar_t character) {
  std::wstring out;
  std::size_t from = 0;
  for (std::size_t at = 0; (at = text.find(entity, from)) != std::wstring::npos;
       from = at + entity.size()) {
    out.append(text, from, at - from).push_back(character);
  }
  return out.append(text, from);
}

// One entity after the other, "&amp;" first: what it leaves behind is decoded once more.
std::wstring WithoutEntities(std::wstring_view raw) {
  std::wstring text = Replaced(std::wstring(raw), L"&amp;", L'&');
  text = Replaced(text, L"&lt;", L'<');
  text = Replaced(text, L"&gt;", L'>');
  text = Replaced(text, L"&quot;", L'"');
  return Replaced(text, L"&apos;", L'\'');
}

std::string Tag(std::wstring_view name) {
  return "<" + ToUtf8(name) + ">";
}

class Reader {
 public:
  explicit Reader(std::wstring_view text) : text_(text) {}

  RuleElement ReadDocument() {
    SkipMisc();
    if (AtEnd()) {
      Fail(position_, "the document has no element",
           "it needs one outer element: <Root> ... </Root>");
    }
    if (!IsNext(L"<")) {
      Fail(position_, Character() + " stands before the outer element",
           "only white space, comments and <? ... ?> may stand there");
    }
    RuleElement root = ReadElement(1);
    SkipMisc();
    if (!AtEnd()) {
      Fail(position_, Character() + " stands after the end of the outer element " + Tag(root.name),
           "a document is one element; only white space, comments and <? ... ?> may follow it");
    }
    return root;
  }

 private:
  [[noreturn]] static void Fail(std::size_t offset, std::string message, std::string hint) {
    throw RuleMistake{offset, std::move(message), std::move(hint)};
  }

  bool AtEnd() const { return position_ == text_.size(); }
  bool IsNext(std::wstring_view expected) const {
    return text_.substr(position_).starts_with(expected);
  }

  bool Take(std::wstring_view expected) {
    const bool found = IsNext(expected);
    position_ += found ? expected.size() : 0;
    return found;
  }

  void SkipBlanks() {
    while (!AtEnd() && IsBlank(text_[position_])) {
      ++position_;
    }
  }

  // Past the next `end`, for what began at `start`.
  void SkipPast(std::wstring_view end, std::size_t start, const char* what) {
    const std::size_t found = text_.find(end, position_);
    if (found == std::wstring_view::npos) {
      Fail(start, std::string(what) + " has no end", "end it with " + ToUtf8(end));
    }
    position_ = found + end.size();
  }

  std::wstring_view TakeName() {
    const std::size_t begin = position_;
    while (!AtEnd() && IsNameCharacter(text_[position_])) {
      ++position_;
    }
    return text_.substr(begin, position_ - begin);
  }

  // What stands at the position, for a message.
  std::string Character() const {
    if (AtEnd()) {
      return "the end of the document";
    }
    const wchar_t unit = text_[position_];
    if (IsBlank(unit)) {
      return "white space";
    }
    if (unit == L'"' || unit == L'\'') {
      return unit == L'"' ? "a quotation mark" : "an apostrophe";
    }
    if (unit > L' ' && unit < 0x7F) {
      return std::string("\"").append(1, static_cast<char>(unit)).append("\"");
    }
    const bool pair = unit >= 0xD800 && unit <= 0xDBFF;
    const std::wstring_view whole = text_.substr(position_, pair ? 2 : 1);
    if (unit > 0xA0 && IsWellFormed(whole)) {
      return "\"" + ToUtf8(whole) + "\"";
    }
    std::array<char, 32> code = {};
    std::snprintf(code.data(), code.size(), "the character U+%04X", static_cast<unsigned>(unit));
    return code.data();
  }

  std::string Place(std::size_t offset) const {
    return PositionText(TextPositions(text_).At(offset));
  }

  bool TakeComment() {
    const std::size_t start = position_;
    if (!Take(kCommentStart)) {
      return false;
    }
    SkipPast(kCommentEnd, start, "this comment");
    return true;
  }

  // White space, comments and declarations around the outer element.
  void SkipMisc() {
    for (;;) {
      SkipBlanks();
      const std::size_t start = position_;
      if (TakeComment()) {
        continue;
      }
      if (!Take(kDeclarationStart)) {
        return;
      }
      SkipPast(kDeclarationEnd, start, "what <? begins");
    }
  }

  // For a "<" at `start` behind which no name stands.
  [[noreturn]] void FailWithoutName(std::size_t start) {
    position_ = start;
    if (IsNext(L"<![CDATA[")) {
      Fail(start, "rule documents have no CDATA sections",
           "remove it: text between elements is not used");
    }
    if (IsNext(L"<!")) {
      Fail(start, "rule documents have no declarations such as <!DOCTYPE>",
           "remove it; a comment begins with <!--");
    }
    if (IsNext(kDeclarationStart)) {
      Fail(start, "<? ... ?> stands inside the outer element",
           "it may stand only before and after the outer element");
    }
    if (IsNext(kClosingStart)) {
      Fail(start, "a closing tag stands where an element should begin",
           "the document begins with its opening tag, <Root>");
    }
    ++position_;
    Fail(start, Character() + " follows the <, and not the name of an element",
         "a name has the characters a-z A-Z 0-9 - . : _ and follows without white space; a < in "
         "text cannot be written");
  }

  RuleElement ReadElement(std::size_t depth) {
    RuleElement element;
    element.offset = position_;
    if (depth > kDeepestElement) {
      Fail(position_, "elements are nested more than 256 deep", "");
    }
    Take(L"<");
    element.name = TakeName();
    if (element.name.empty()) {
      FailWithoutName(element.offset);
    }
    if (ReadAttributes(element)) {
      ReadContent(element, depth);
      ReadClosingTag(element);
    }
    return element;
  }

  // Up to the end of the tag; false when the element ends with it.
  bool ReadAttributes(RuleElement& element) {
    for (SkipBlanks(); !Take(L">"); SkipBlanks()) {
      if (Take(L"/>")) {
        return false;
      }
      element.attributes.push_back(ReadAttribute(element));
    }
    return true;
  }

  RuleAttribute ReadAttribute(const RuleElement& element) {
    RuleAttribute attribute;
    attribute.offset = position_;
    attribute.name = TakeName();
    if (attribute.name.empty()) {
      FailWithoutAttribute(element);
    }
    const std::string name = ToUtf8(attribute.name);
    SkipBlanks();
    if (!Take(L"=")) {
      Fail(position_, Character() + " follows the attribute " + name + ", and not =",
           AttributeHint(element, "write " + name + "=\"...\""));
    }
    SkipBlanks();
    const std::size_t opening = position_;
    if (!IsNext(L"\"") && !IsNext(L"'")) {
      Fail(opening, "the value of " + name + " does not begin with a quotation mark",
           AttributeHint(element, "write " + name + "=\"...\""));
    }
    const std::size_t closing = text_.find(text_[opening], opening + 1);
    if (closing == std::wstring_view::npos) {
      Fail(opening, "the value of " + name + " has no closing quotation mark", "");
    }
    const std::wstring_view raw = text_.substr(opening + 1, closing - opening - 1);
    attribute.value = WithoutEntities(raw);
    // The first of several: the others are likely its consequences.
    if (suspect_ == kNone && raw.find_first_of(L"\r\n<>") != std::wstring_view::npos) {
      suspect_ = opening;
    }
    position_ = closing + 1;
    return attribute;
  }

  // A value that lacks its closing mark runs on to the next one, and the mistake shows behind it.
  std::string AttributeHint(const RuleElement& element, std::string otherwise) const {
    return suspect_ == kNone || suspect_ < element.offset
               ? std::move(otherwise)
               : "the value that begins at " + Place(suspect_) +
                     " may lack its closing quotation mark";
  }

  [[noreturn]] void FailWithoutAttribute(const RuleElement& element) const {
    const std::string hint =
        AttributeHint(element, "attributes are written Name=\"value\", and a tag ends in > or />");
    if (AtEnd()) {
      Fail(element.offset, "the tag " + Tag(element.name) + " has no end", hint);
    }
    Fail(position_,
         Character() + " stands in the tag " + Tag(element.name) +
             " where an attribute or the end of the tag should be",
         hint);
  }

  void ReadContent(RuleElement& element, std::size_t depth) {
    while (!IsNext(kClosingStart)) {
      if (TakeComment()) {
        continue;
      }
      if (IsNext(L"<")) {
        element.children.push_back(ReadElement(depth + 1));
        continue;
      }
      position_ = text_.find(L'<', position_);
      if (position_ == std::wstring_view::npos) {
        Fail(element.offset, "the element " + Tag(element.name) + " is not closed",
             "close it with </" + ToUtf8(element.name) + ">, or end its tag in />");
      }
    }
  }

  void ReadClosingTag(const RuleElement& element) {
    const std::size_t start = position_;
    Take(kClosingStart);
    const std::wstring_view name = TakeName();
    if (AtEnd()) {
      Fail(start, "the document ends in the middle of a closing tag",
           "end it with </" + ToUtf8(element.name) + ">");
    }
    if (name != element.name) {
      Fail(start,
           "</" + ToUtf8(name) + "> closes nothing: the element that is open is " +
               Tag(element.name) + " of " + Place(element.offset),
           "names in closing tags equal those in opening ones, letter case included; an element "
           "without content may end in />");
    }
    SkipBlanks();
    if (!Take(L">")) {
      Fail(start, "the closing tag </" + ToUtf8(name) + "> has no >",
           "nothing but white space may stand before it");
    }
  }

  static constexpr std::size_t kNone = std::wstring_view::npos;

  const std::wstring_view text_;
  std::size_t position_ = 0;
  std::size_t suspect_ = kNone;
};

}  // namespace

const RuleAttribute* RuleElement::Find(std::wstring_view attribute_name) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [attribute_name](const RuleAttribute& attribute) {
                                    return attribute.name == attribute_name;
                                  });
  return found == attributes.end() ? nullptr : &*found;
}

std::optional<RuleMistake> ReadRules(std::wstring_view text, RuleElement& root) {
  try {
    root = Reader(text).ReadDocument();
    return std::nullopt;
  } catch (const RuleMistake& mistake) {
    return mistake;
  }
}

}  // namespace quastel::client
