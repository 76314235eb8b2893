// The exported walks.

#include <optional>

#include "base/text.h"
#include "frame/boundary.h"
#include "fs/enumeration.h"
#include "fs/protection.h"

namespace {

bool IsMissing(const qs_char* text) {
  return text == nullptr || *text == qs_char{};
}

}  // namespace

qs_status qs_enumerate_files(const qs_char* root, const qs_char* pattern, uint32_t recursive,
                             qs_file_callback callback, void* user, uint32_t* cancel) {
  return qs_enumerate_files_ex(root, pattern, recursive, 0, nullptr, nullptr, callback, user,
                               cancel);
}

qs_status qs_enumerate_files_ex(const qs_char* root, const qs_char* pattern, uint32_t recursive,
                                uint32_t protect_system, const qs_char* system_root,
                                const qs_char* user_home, qs_file_callback callback, void* user,
                                uint32_t* cancel) {
  if (IsMissing(root) || callback == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return quastel::StatusBoundary([&] {
    std::optional<quastel::ProtectedFolders> protection;
    if (protect_system != 0 && system_root != nullptr && user_home != nullptr) {
      protection.emplace(system_root, user_home);
    }
    const quastel::FileWalkOptions options = {
        .pattern = quastel::Text(quastel::ViewOf(pattern)),
        .recursive = recursive != 0,
        .protection = protection ? &*protection : nullptr,
        .cancel = cancel,
    };
    return quastel::EnumerateFiles(root, options, callback, user);
  });
}

qs_status qs_enumerate_directories(const qs_char* root, qs_directory_callback callback, void* user,
                                   uint32_t* cancel) {
  if (IsMissing(root) || callback == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return quastel::StatusBoundary(
      [&] { return quastel::EnumerateDirectories(root, callback, user, cancel); });
}
