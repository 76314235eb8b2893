// The grammar of the rule document.
//
//   document  = misc element misc            misc = { white space | comment | "<?" ... "?>" }
//   element   = "<" name { attribute } "/>"
//             | "<" name { attribute } ">" { comment | element | text } "</" name ">"
//   attribute = name "=" ( '"' ... '"' | "'" ... "'" )

#include <algorithm>
#include <utility>

#include "base/ascii.h"
#include "base/replace.h"
#include "junk/rule_document.h"

namespace quastel::junk {
namespace {

constexpr TextView kCommentStart = QS_TEXT("<!--");
constexpr TextView kCommentEnd = QS_TEXT("-->");
constexpr TextView kDeclarationStart = QS_TEXT("<?");
constexpr TextView kDeclarationEnd = QS_TEXT("?>");

constexpr bool IsBlank(Char c) {
  return c == Char{' '} || c == Char{'\t'} || c == Char{'\r'} || c == Char{'\n'};
}

constexpr bool IsNameCharacter(Char c) {
  return IsAsciiLetter(c) || (c >= Char{'0'} && c <= Char{'9'}) || c == Char{'-'} ||
         c == Char{'.'} || c == Char{':'} || c == Char{'_'};
}

// "&amp;" goes first, so "&amp;lt;" becomes "<": documents in use rely on the double decoding.
Text DecodeEntities(TextView raw) {
  Text text = ReplaceAll(raw, QS_TEXT("&amp;"), QS_TEXT("&"));
  text = ReplaceAll(text, QS_TEXT("&lt;"), QS_TEXT("<"));
  text = ReplaceAll(text, QS_TEXT("&gt;"), QS_TEXT(">"));
  text = ReplaceAll(text, QS_TEXT("&quot;"), QS_TEXT("\""));
  return ReplaceAll(text, QS_TEXT("&apos;"), QS_TEXT("'"));
}

// The document and a position in it that only moves forward.
class RuleCursor {
 public:
  explicit RuleCursor(TextView text) : text_(text) {}

  bool AtEnd() const { return position_ == text_.size(); }
  bool IsNext(TextView expected) const { return text_.substr(position_).starts_with(expected); }
  bool IsNext(Char expected) const { return !AtEnd() && text_[position_] == expected; }

  bool Take(TextView expected) {
    const bool found = IsNext(expected);
    position_ += found ? expected.size() : 0;
    return found;
  }

  bool Take(Char expected) { return Take(TextView(&expected, 1)); }

  void SkipBlanks() {
    while (!AtEnd() && IsBlank(text_[position_])) {
      ++position_;
    }
  }

  // Moves past the next `end`; what was taken before cannot be part of it.
  bool SkipPast(TextView end) {
    const std::size_t found = text_.find(end, position_);
    if (found == TextView::npos) {
      return false;
    }
    position_ = found + end.size();
    return true;
  }

  // Moves to the next `c`.
  bool SkipTo(Char c) {
    const std::size_t found = text_.find(c, position_);
    if (found == TextView::npos) {
      return false;
    }
    position_ = found;
    return true;
  }

  // May be empty.
  TextView TakeName() {
    const std::size_t begin = position_;
    while (!AtEnd() && IsNameCharacter(text_[position_])) {
      ++position_;
    }
    return text_.substr(begin, position_ - begin);
  }

  // The text up to the next `quote`, which is stepped over; false when there is none.
  bool TakeQuoted(Char quote, TextView& raw) {
    const std::size_t begin = position_;
    if (!SkipTo(quote)) {
      return false;
    }
    raw = text_.substr(begin, position_ - begin);
    ++position_;
    return true;
  }

 private:
  const TextView text_;
  std::size_t position_ = 0;
};

// Comments and declarations around the root.
bool SkipMisc(RuleCursor& cursor) {
  for (;;) {
    cursor.SkipBlanks();
    if (cursor.Take(kCommentStart)) {
      if (!cursor.SkipPast(kCommentEnd)) {
        return false;
      }
    } else if (cursor.Take(kDeclarationStart)) {
      if (!cursor.SkipPast(kDeclarationEnd)) {
        return false;
      }
    } else {
      return true;
    }
  }
}

bool ParseAttribute(RuleCursor& cursor, RuleAttribute& attribute) {
  attribute.name = cursor.TakeName();
  if (attribute.name.empty()) {
    return false;
  }
  cursor.SkipBlanks();
  if (!cursor.Take(Char{'='})) {
    return false;
  }
  cursor.SkipBlanks();
  const Char quote = cursor.IsNext(Char{'"'}) ? Char{'"'} : Char{'\''};
  TextView raw;
  if (!cursor.Take(quote) || !cursor.TakeQuoted(quote, raw)) {
    return false;
  }
  attribute.value = DecodeEntities(raw);
  return true;
}

bool ParseElement(RuleCursor& cursor, RuleNode& node, std::size_t depth);

// What stands between the tags, up to the closing one.
bool ParseContent(RuleCursor& cursor, RuleNode& node, std::size_t depth) {
  while (!cursor.IsNext(QS_TEXT("</"))) {
    if (cursor.Take(kCommentStart)) {
      if (!cursor.SkipPast(kCommentEnd)) {
        return false;
      }
    } else if (cursor.IsNext(Char{'<'})) {
      if (!ParseElement(cursor, node.children.emplace_back(), depth + 1)) {
        return false;
      }
    } else if (!cursor.SkipTo(Char{'<'})) {
      return false;
    }
  }
  return true;
}

bool ParseElement(RuleCursor& cursor, RuleNode& node, std::size_t depth) {
  if (depth > kDeepestElement || !cursor.Take(Char{'<'})) {
    return false;
  }
  node.name = cursor.TakeName();
  if (node.name.empty()) {
    return false;
  }
  for (cursor.SkipBlanks(); !cursor.Take(Char{'>'}); cursor.SkipBlanks()) {
    if (cursor.Take(QS_TEXT("/>"))) {
      return true;
    }
    if (!ParseAttribute(cursor, node.attributes.emplace_back())) {
      return false;
    }
  }
  if (!ParseContent(cursor, node, depth)) {
    return false;
  }
  cursor.Take(QS_TEXT("</"));
  if (cursor.TakeName() != node.name) {
    return false;
  }
  cursor.SkipBlanks();
  return cursor.Take(Char{'>'});
}

}  // namespace

const Text* RuleNode::Find(TextView attribute_name) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [attribute_name](const RuleAttribute& attribute) {
                                    return attribute.name == attribute_name;
                                  });
  return found == attributes.end() ? nullptr : &found->value;
}

bool ParseRuleDocument(TextView document, RuleNode& root) {
  RuleCursor cursor(document);
  RuleNode parsed;
  if (!SkipMisc(cursor) || !ParseElement(cursor, parsed, 1) || !SkipMisc(cursor) ||
      !cursor.AtEnd()) {
    return false;
  }
  root = std::move(parsed);
  return true;
}

}  // namespace quastel::junk
