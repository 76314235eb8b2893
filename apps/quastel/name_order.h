#ifndef QUASTEL_APPS_QUASTEL_NAME_ORDER_H_
#define QUASTEL_APPS_QUASTEL_NAME_ORDER_H_

#include <string_view>

namespace quastel::client {

// Without regard to case, as the file system compares names; negative, zero or positive.
int CompareNames(std::wstring_view a, std::wstring_view b);

// The order of paths in reports, as people see them: the prefix of a long path does not count. Two
// names may differ in case alone: they have an order too, so that a report does not depend on the
// walk.
bool IsPathBefore(std::wstring_view a, std::wstring_view b);

// Negative when the larger one, `a`, comes first.
template <typename Number>
int Descending(Number a, Number b) {
  return a == b ? 0 : (a > b ? -1 : 1);
}

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_NAME_ORDER_H_
