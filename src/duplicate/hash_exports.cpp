// The exported hashing.

#include <algorithm>
#include <string>

#include "base/text.h"
#include "duplicate/file_hash.h"
#include "duplicate/hash_text.h"
#include "duplicate/xxhash32.h"
#include "frame/boundary.h"

namespace {

bool FitsHashText(const char* out, uint64_t capacity) {
  return out != nullptr && capacity >= quastel::duplicate::kHashTextLength + 1;
}

void CopyHashText(const std::string& text, char* out) {
  *std::copy(text.begin(), text.end(), out) = '\0';
}

}  // namespace

qs_status qs_xxhash32_file(const qs_char* path, char* out, uint64_t capacity) {
  return qs_xxhash32_file_cancelable(path, out, capacity, nullptr);
}

qs_status qs_xxhash32_file_cancelable(const qs_char* path, char* out, uint64_t capacity,
                                      uint32_t* cancel) {
  if (path == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  if (!FitsHashText(out, capacity)) {
    return QS_BUFFER_TOO_SMALL;
  }
  return quastel::StatusBoundary([&] {
    std::string text;
    const qs_status status = quastel::duplicate::HashFile(path, cancel, text);
    if (status == QS_OK) {
      CopyHashText(text, out);
    }
    return status;
  });
}

qs_status qs_xxhash32_hex(const void* data, uint64_t byte_count, char* out, uint64_t capacity) {
  if (!FitsHashText(out, capacity)) {
    return QS_BUFFER_TOO_SMALL;
  }
  if (byte_count > 0 && data == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return quastel::StatusBoundary([&] {
    CopyHashText(quastel::duplicate::HashText(quastel::duplicate::HashBytes(data, byte_count)),
                 out);
    return QS_OK;
  });
}
