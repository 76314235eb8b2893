// The exported path rules.

#include "base/text.h"
#include "frame/boundary.h"
#include "frame/text_output.h"
#include "fs/path_rules.h"

using quastel::PredicateBoundary;
using quastel::StatusBoundary;
using quastel::TextView;

qs_status qs_normalize_path(const qs_char* path, qs_char* out, uint64_t capacity,
                            uint64_t* needed) {
  if (path == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary(
      [&] { return quastel::DeliverText(quastel::ToLongPath(path), out, capacity, needed); });
}

qs_status qs_path_combine(const qs_char* base, const qs_char* relative, qs_char* out,
                          uint64_t capacity, uint64_t* needed) {
  if (base == nullptr || relative == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    return quastel::DeliverText(quastel::CombinePaths(base, relative), out, capacity, needed);
  });
}

// A plain search for text, case included: the rules of a junk document rely on it.
int32_t qs_path_contains(const qs_char* haystack, const qs_char* needle) {
  if (haystack == nullptr) {
    return 0;
  }
  return TextView(haystack).find(quastel::ViewOf(needle)) != TextView::npos ? 1 : 0;
}

int32_t qs_is_in_same_directory(const qs_char* a, const qs_char* b) {
  if (a == nullptr || b == nullptr) {
    return 0;
  }
  return PredicateBoundary([&] { return quastel::AreInSameDirectory(a, b); });
}

int32_t qs_directory_exists(const qs_char* path) {
  if (path == nullptr) {
    return 0;
  }
  return PredicateBoundary([&] { return quastel::IsRealDirectory(path); });
}
