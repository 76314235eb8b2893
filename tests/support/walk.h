// Runs the enumeration exports and collects what they report.

#ifndef QUASTEL_TESTS_SUPPORT_WALK_H_
#define QUASTEL_TESTS_SUPPORT_WALK_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/text.h"
#include "quastel_core.h"
#include "support/text.h"

namespace quastel::support {

using Lines = std::vector<std::string>;

struct FoundFile {
  std::string path;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;
  std::string name;

  friend bool operator==(const FoundFile&, const FoundFile&) = default;
};

inline void PrintTo(const FoundFile& file, std::ostream* out) {
  *out << file.path << " (" << file.name << "), " << file.size << " bytes, " << file.last_write;
}

// The arguments of a file walk; what is not given is null.
struct FileWalk {
  std::optional<Text> root = std::nullopt;
  std::optional<Text> pattern = std::nullopt;
  std::uint32_t recursive = 1;
  std::uint32_t protect_system = 0;
  std::optional<Text> system_root = std::nullopt;
  std::optional<Text> user_home = std::nullopt;
  std::uint32_t* cancel = nullptr;
  // Called after the file was collected, with the number of files so far.
  std::function<void(std::size_t)> after_file = nullptr;
};

struct WalkResult {
  qs_status status = QS_OK;
  std::vector<FoundFile> files = {};

  Lines paths() const {
    Lines out;
    for (const FoundFile& file : files) {
      out.push_back(file.path);
    }
    return out;
  }
  friend bool operator==(const WalkResult&, const WalkResult&) = default;
};

inline void PrintTo(const WalkResult& result, std::ostream* out) {
  *out << "status " << result.status;
  for (const FoundFile& file : result.files) {
    *out << "\n  ";
    PrintTo(file, out);
  }
}

inline const qs_char* PointerTo(const std::optional<Text>& text) {
  return text ? text->c_str() : nullptr;
}

namespace internal {

struct FileSink {
  const FileWalk* walk;
  WalkResult* result;
};

inline void CollectFile(void* user, const qs_char* path, std::uint64_t size,
                        std::uint64_t last_write, const qs_char* name) {
  const FileSink& sink = *static_cast<FileSink*>(user);
  sink.result->files.push_back({Utf8(path), size, last_write, Utf8(name)});
  if (sink.walk->after_file) {
    sink.walk->after_file(sink.result->files.size());
  }
}

}  // namespace internal

inline WalkResult RunWalk(const FileWalk& walk) {
  WalkResult result;
  internal::FileSink sink{&walk, &result};
  result.status =
      qs_enumerate_files_ex(PointerTo(walk.root), PointerTo(walk.pattern), walk.recursive,
                            walk.protect_system, PointerTo(walk.system_root),
                            PointerTo(walk.user_home), internal::CollectFile, &sink, walk.cancel);
  return result;
}

// The arguments and the findings of a listing of subfolders.
struct FolderWalk {
  std::optional<Text> root = std::nullopt;
  std::uint32_t* cancel = nullptr;
  std::function<void(std::size_t)> after_folder = nullptr;
};

struct FolderResult {
  qs_status status = QS_OK;
  Lines paths = {};

  friend bool operator==(const FolderResult&, const FolderResult&) = default;
};

inline void PrintTo(const FolderResult& result, std::ostream* out) {
  *out << "status " << result.status;
  for (const std::string& path : result.paths) {
    *out << "\n  " << path;
  }
}

namespace internal {

struct FolderSink {
  const FolderWalk* walk;
  FolderResult* result;
};

inline void CollectFolder(void* user, const qs_char* path) {
  const FolderSink& sink = *static_cast<FolderSink*>(user);
  sink.result->paths.push_back(Utf8(path));
  if (sink.walk->after_folder) {
    sink.walk->after_folder(sink.result->paths.size());
  }
}

}  // namespace internal

inline FolderResult RunWalk(const FolderWalk& walk) {
  FolderResult result;
  internal::FolderSink sink{&walk, &result};
  result.status =
      qs_enumerate_directories(PointerTo(walk.root), internal::CollectFolder, &sink, walk.cancel);
  return result;
}

}  // namespace quastel::support

#endif  // QUASTEL_TESTS_SUPPORT_WALK_H_
