// Names of table rows for parameterised tests.

#ifndef QUASTEL_TESTS_SUPPORT_NAMED_CASE_H_
#define QUASTEL_TESTS_SUPPORT_NAMED_CASE_H_

#include <gtest/gtest.h>

#include <concepts>
#include <ostream>
#include <string>

namespace quastel::support {

// For INSTANTIATE_TEST_SUITE_P over rows that begin with `const char* name`.
struct CaseName {
  template <typename Case>
  std::string operator()(const ::testing::TestParamInfo<Case>& info) const {
    return info.param.name;
  }
};

// Base of such rows: prints its name instead of its bytes.
struct NamedCase {
  const char* name;
};

template <std::derived_from<NamedCase> Case>
void PrintTo(const Case& row, std::ostream* out) {
  *out << row.name;
}

}  // namespace quastel::support

#endif  // QUASTEL_TESTS_SUPPORT_NAMED_CASE_H_
