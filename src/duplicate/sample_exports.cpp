// The exported samples, keys and inclusion test of the duplicate finder.

#include <string>

#include "base/text.h"
#include "duplicate/sample.h"
#include "frame/boundary.h"
#include "frame/text_output.h"
#include "fs/protection.h"

using quastel::StatusBoundary;

qs_status qs_duplicate_sample_hex(const qs_char* path, int64_t size, char* out, uint64_t capacity) {
  if (path == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  if (out == nullptr || capacity < quastel::duplicate::kSampleTextLength + 1) {
    return QS_BUFFER_TOO_SMALL;
  }
  if (size < 0) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    std::string text;
    const qs_status status = quastel::duplicate::SampleFile(path, size, text);
    return status == QS_OK ? quastel::DeliverCharacters<char>(text, out, capacity, nullptr)
                           : status;
  });
}

qs_status qs_duplicate_sample_group_key(int64_t size, const char* sample, char* out,
                                        uint64_t capacity, uint64_t* needed) {
  if (sample == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    return quastel::DeliverCharacters<char>(quastel::duplicate::SampleGroupKey(size, sample), out,
                                            capacity, needed);
  });
}

qs_status qs_duplicate_hash_group_key(const char* sample_group_key, const char* full_hash,
                                      char* out, uint64_t capacity, uint64_t* needed) {
  if (sample_group_key == nullptr || full_hash == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    return quastel::DeliverCharacters<char>(
        quastel::duplicate::HashGroupKey(sample_group_key, full_hash), out, capacity, needed);
  });
}

int32_t qs_duplicate_scan_include(const qs_char* path, uint32_t protect_system,
                                  const qs_char* system_root, const qs_char* user_home) {
  if (path == nullptr) {
    return 0;
  }
  return quastel::PredicateBoundary([&] {
    if (quastel::IsIgnoredFile(path)) {
      return false;
    }
    const bool has_folders = system_root != nullptr && user_home != nullptr;
    return protect_system == 0 || !has_folders ||
           !quastel::ProtectedFolders(system_root, user_home).Contains(path);
  });
}
