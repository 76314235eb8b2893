// The exported parts of the junk rules.

#include "base/text.h"
#include "frame/boundary.h"
#include "frame/text_output.h"
#include "junk/empty_directory.h"
#include "junk/rule_paths.h"

qs_status qs_expand_junk_path(const qs_char* rule_path, const qs_char* user_home,
                              const qs_char* system_root, qs_char* out, uint64_t capacity,
                              uint64_t* needed) {
  if (rule_path == nullptr || user_home == nullptr || system_root == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return quastel::StatusBoundary([&] {
    return quastel::DeliverText(quastel::junk::ExpandJunkPath(rule_path, user_home, system_root),
                                out, capacity, needed);
  });
}

int32_t qs_empty_directory_eligible(const qs_char* path) {
  if (path == nullptr) {
    return 0;
  }
  return quastel::PredicateBoundary([&] { return quastel::IsEligibleEmptyDirectory(path); });
}
