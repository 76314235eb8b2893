// The text of the rule documents in the source tree, whole and with deliberate
// mistakes.

#ifndef QUASTEL_TESTS_RULES_SHIPPED_DOCUMENT_H_
#define QUASTEL_TESTS_RULES_SHIPPED_DOCUMENT_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quastel::rules_tests {

inline std::string ReadDocument(std::string_view name) {
  std::ifstream file(std::filesystem::path(QUASTEL_RULES_FOLDER) / name, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << name;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The document with the first `from` replaced; it must be there.
inline std::string Replaced(std::string document, std::string_view from, std::string_view to) {
  const std::size_t at = document.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? document : document.replace(at, from.size(), to);
}

// The document with `rules` as one more category.
inline std::string WithRules(std::string document, const std::string& rules) {
  return Replaced(std::move(document), "</Root>",
                  "<Category DisplayName=\"Slip\">" + rules + "</Category></Root>");
}

struct RuleText {
  std::size_t begin;
  std::size_t size;
};

// Where the elements that name folders stand in the text.
inline std::vector<RuleText> RulesIn(std::string_view document) {
  std::vector<RuleText> rules;
  for (std::size_t at = document.find('<'); at != std::string_view::npos;
       at = document.find('<', at + 1)) {
    const std::string_view rest = document.substr(at);
    if (rest.starts_with("<Folder") || rest.starts_with("<ChildrenList")) {
      rules.push_back({at, rest.find("/>") + 2});
    }
  }
  return rules;
}

}  // namespace quastel::rules_tests

#endif  // QUASTEL_TESTS_RULES_SHIPPED_DOCUMENT_H_
