// How far two texts are the same, four units at a time.
//
// Paths that are compared are mostly equal or differ at their end, and the standard library looks
// at them unit by unit.

#ifndef QUASTEL_BASE_COMMON_PREFIX_H_
#define QUASTEL_BASE_COMMON_PREFIX_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/text.h"

namespace quastel {

inline std::size_t CommonPrefixLength(TextView a, TextView b) {
  constexpr std::size_t kStep = sizeof(std::uint64_t) / sizeof(Char);
  const std::size_t shorter = std::min(a.size(), b.size());
  std::size_t i = 0;
  for (; shorter - i >= kStep; i += kStep) {
    std::uint64_t of_a = 0;
    std::uint64_t of_b = 0;
    std::memcpy(&of_a, a.data() + i, sizeof(of_a));
    std::memcpy(&of_b, b.data() + i, sizeof(of_b));
    if (of_a != of_b) {
      break;
    }
  }
  while (i < shorter && a[i] == b[i]) {
    ++i;
  }
  return i;
}

inline bool IsSameText(TextView a, TextView b) {
  return a.size() == b.size() && CommonPrefixLength(a, b) == a.size();
}

inline bool EndsInText(TextView text, TextView ending) {
  return text.size() >= ending.size() &&
         IsSameText(text.substr(text.size() - ending.size()), ending);
}

// In plain order of the units, the shorter text first.
inline bool ComesBefore(TextView a, TextView b) {
  const std::size_t same = CommonPrefixLength(a, b);
  return same < b.size() && (same == a.size() || a[same] < b[same]);
}

}  // namespace quastel

#endif  // QUASTEL_BASE_COMMON_PREFIX_H_
