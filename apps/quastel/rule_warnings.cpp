#include "rule_warnings.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "name_order.h"
#include "path_text.h"
#include "rule_review.h"
#include "rule_vocabulary.h"
#include "text.h"

namespace quastel::client {
namespace {

constexpr std::array<std::wstring_view, 2> kPlaceholders = {L"{UserHome}", L"{Root}"};

constexpr bool IsLetter(wchar_t unit) {
  return (unit >= L'a' && unit <= L'z') || (unit >= L'A' && unit <= L'Z');
}

bool BeginsWithDrive(std::wstring_view path) {
  return path.size() >= 2 && path[1] == L':';
}

bool HasParentComponent(std::wstring path) {
  std::replace(path.begin(), path.end(), L'/', L'\\');
  return (L'\\' + path + L'\\').find(L"\\..\\") != std::wstring::npos;
}

class Warnings {
 public:
  void CheckChildren(const RuleElement& parent) {
    for (const RuleElement& child : parent.children) {
      const bool in_root = parent.name == kRootElement;
      const bool known = FindRuleWord(child.name) != nullptr;
      if (parent.name != kCategoryElement && !in_root) {
        Add(child.offset, Tag(child) + " stands in a rule and is ignored", "rules have no content");
      } else if (!known) {
        Add(child.offset, Tag(child) + " is ignored, with all in it" + Nearest(child, in_root), "");
      } else if (in_root && child.name != kCategoryElement) {
        Add(child.offset, Tag(child) + " stands outside of a category and is ignored",
            "put it into a <Category>");
      } else {
        CheckAttributes(child);
        CheckChildren(child);
      }
    }
  }

  std::vector<RuleMistake> Take() { return std::move(list_); }

 private:
  static std::string Tag(const RuleElement& element) { return "<" + ToUtf8(element.name) + ">"; }

  static std::string Nearest(const RuleElement& element, bool in_root) {
    return in_root ? NearestRuleWord(element.name, {kCategoryElement})
                   : NearestRuleWord(element.name, RuleElements());
  }

  void Add(std::size_t offset, std::string message, std::string hint) {
    list_.push_back({offset, std::move(message), std::move(hint)});
  }

  void CheckAttributes(const RuleElement& element) {
    const RuleWord& word = *FindRuleWord(element.name);
    std::vector<std::wstring_view> known = word.required;
    known.insert(known.end(), word.optional.begin(), word.optional.end());
    for (const RuleAttribute& attribute : element.attributes) {
      const std::string name = ToUtf8(attribute.name);
      if (std::find(known.begin(), known.end(), attribute.name) == known.end()) {
        Add(attribute.offset,
            name + " is no attribute of " + Tag(element) + " and is ignored" +
                NearestRuleWord(attribute.name, known),
            "");
      } else if (element.Find(attribute.name) != &attribute) {
        Add(attribute.offset, name + " is given twice, and only the first one counts", "");
      } else if (attribute.name == L"Path" || attribute.name == L"StartPath") {
        CheckPath(attribute);
      } else if (attribute.name != L"DisplayName") {
        CheckPlainText(attribute);
      }
    }
  }

  // For the attributes in which placeholders are replaced.
  void CheckPath(const RuleAttribute& attribute) {
    const std::wstring path = PlainValue(&attribute);
    const std::string name = ToUtf8(attribute.name);
    CheckSpellings(attribute, path);
    const std::wstring_view home = kPlaceholders[0];
    if (path.starts_with(home) && path.size() > home.size() && !IsSeparator(path[home.size()])) {
      Add(attribute.offset,
          "in " + name + " no \\ follows {UserHome}: the name of the profile's folder runs on",
          "write {UserHome}\\...");
    }
    const bool from_placeholder = std::any_of(
        kPlaceholders.begin(), kPlaceholders.end(),
        [&path](std::wstring_view placeholder) { return path.starts_with(placeholder); });
    const bool absolute = (BeginsWithDrive(path) && path.size() > 2 && IsSeparator(path[2])) ||
                          path.starts_with(L"\\\\");
    if (!from_placeholder && !absolute) {
      Add(attribute.offset,
          name + " is relative: it counts from whatever folder the program runs in",
          "begin it with {UserHome}, {Root} or a drive");
    }
  }

  // {Userhome} and {Profile} are taken for names of folders. {0CB1-...} may well be one.
  void CheckSpellings(const RuleAttribute& attribute, const std::wstring& path) {
    for (std::size_t open = path.find(L'{'); open != std::wstring::npos;
         open = path.find(L'{', open + 1)) {
      const std::size_t close = path.find(L'}', open);
      if (close == std::wstring::npos) {
        return;
      }
      const std::wstring braced = path.substr(open, close + 1 - open);
      const bool is_word =
          braced.size() > 2 && std::all_of(braced.begin() + 1, braced.end() - 1, IsLetter);
      if (is_word &&
          std::find(kPlaceholders.begin(), kPlaceholders.end(), braced) == kPlaceholders.end()) {
        Add(attribute.offset,
            ToUtf8(braced) + " is no placeholder and stays as it is" +
                NearestRuleWord(braced, {kPlaceholders.begin(), kPlaceholders.end()}),
            "");
      }
    }
  }

  // For the attributes that are used as they are written.
  void CheckPlainText(const RuleAttribute& attribute) {
    const std::wstring value = PlainValue(&attribute);
    const std::string name = ToUtf8(attribute.name);
    for (const std::wstring_view placeholder : kPlaceholders) {
      if (value.find(placeholder) != std::wstring::npos) {
        Add(attribute.offset, ToUtf8(placeholder) + " is not replaced in " + name, "");
      }
    }
    if (attribute.name != L"EndPath") {
      return;
    }
    if (value.empty()) {
      Add(attribute.offset, "EndPath is empty: the rule finds each folder of StartPath whole", "");
    } else if (IsSeparator(value.front()) || BeginsWithDrive(value)) {
      Add(attribute.offset,
          "EndPath is no relative path: it stands for itself, once for each folder of StartPath",
          "write it without a drive and without a leading \\");
    } else if (HasParentComponent(value)) {
      Add(attribute.offset, "EndPath leads out of the folder by ..", "");
    }
  }

  std::vector<RuleMistake> list_;
};

}  // namespace

std::vector<RuleMistake> RuleWarnings(const RuleElement& root) {
  Warnings warnings;
  warnings.CheckChildren(root);
  return warnings.Take();
}

}  // namespace quastel::client
