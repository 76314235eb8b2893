// The exported rules of the large-file report.

#include "base/text.h"
#include "frame/boundary.h"
#include "fs/protection.h"
#include "scan/large_file_class.h"

int32_t qs_large_scan_include(const qs_char* path, int64_t size, uint32_t protect_system,
                              const qs_char* system_root, const qs_char* user_home) {
  if (path == nullptr) {
    return 0;
  }
  return quastel::PredicateBoundary([&] {
    // The size costs least and the protected folders system calls; the answer is the same in any
    // order.
    if (!quastel::IsLargeFile(size) || quastel::IsIgnoredFile(path)) {
      return false;
    }
    const bool has_folders = system_root != nullptr && user_home != nullptr;
    return protect_system == 0 || !has_folders ||
           !quastel::ProtectedFolders(system_root, user_home).Contains(path);
  });
}

int32_t qs_large_file_included(int64_t size) {
  return quastel::IsLargeFile(size) ? 1 : 0;
}

uint32_t qs_large_file_classify(const qs_char* path) {
  return static_cast<uint32_t>(quastel::ClassifyLargeFile(quastel::ViewOf(path)));
}

const char* qs_summary_bucket(int64_t size) {
  return quastel::SummaryBucketOf(size);
}
