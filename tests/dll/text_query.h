// Reads text from an export in two calls, as every caller does.

#ifndef QUASTEL_TESTS_DLL_TEXT_QUERY_H_
#define QUASTEL_TESTS_DLL_TEXT_QUERY_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "quastel_core.h"

namespace quastel::dll_test {

// `call` takes a buffer, its capacity and the pointer for the capacity needed.
template <typename Call>
std::wstring QueryText(Call&& call) {
  std::uint64_t needed = 0;
  EXPECT_EQ(QS_BUFFER_TOO_SMALL, call(nullptr, std::uint64_t{0}, &needed));
  EXPECT_GE(needed, 1u);
  std::wstring text(needed, L'?');
  EXPECT_EQ(QS_OK, call(text.data(), needed, &needed));
  EXPECT_EQ(text.size(), needed);
  EXPECT_EQ(L'\0', text.back());
  text.pop_back();
  return text;
}

}  // namespace quastel::dll_test

#endif  // QUASTEL_TESTS_DLL_TEXT_QUERY_H_
