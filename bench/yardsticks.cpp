#include "yardsticks.h"

#include <windows.h>

#include <algorithm>
#include <span>
#include <vector>

#include "quastel_core.h"

namespace quastel::bench {
namespace {

constexpr std::uint64_t kSmall = 150;
constexpr std::uint64_t kBlock = 4096;
constexpr DWORD kReadSize = 1'048'576;

struct File {
  std::wstring path;
  std::uint64_t size = 0;
  std::uint64_t key = 0;  // what the last stage said
};

template <typename Visitor>
void List(const std::wstring& root, Visitor visit) {
  std::vector<std::wstring> pending = {root};
  std::wstring path;
  while (!pending.empty()) {
    const std::wstring folder = std::move(pending.back());
    pending.pop_back();
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &entry,
                                           FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) {
      continue;
    }
    do {
      const bool is_dot =
          entry.cFileName[0] == L'.' &&
          (entry.cFileName[1] == 0 || (entry.cFileName[1] == L'.' && entry.cFileName[2] == 0));
      if (is_dot || (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        continue;
      }
      if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        pending.push_back(folder + L"\\" + entry.cFileName);
      } else {
        visit(folder, entry);
      }
    } while (FindNextFileW(search, &entry));
    FindClose(search);
  }
}

std::vector<File> ListFiles(const std::wstring& root) {
  std::vector<File> files;
  List(root, [&files](const std::wstring& folder, const WIN32_FIND_DATAW& entry) {
    files.push_back({folder + L"\\" + entry.cFileName,
                     std::uint64_t{entry.nFileSizeHigh} << 32 | entry.nFileSizeLow, 0});
  });
  return files;
}

std::uint64_t HashOf(const char* bytes, DWORD size) {
  char text[9] = {};
  (void)qs_xxhash32_hex(bytes, size, text, sizeof(text));
  return std::stoul(text, nullptr, 16);
}

char* Buffer() {
  static std::vector<char> buffer(kReadSize);
  return buffer.data();
}

// One open, one read of a block at either end, one close. With its hash, since a stage needs it.
std::uint64_t ReadBlock(const File& file, std::uint64_t offset, Counts& counts) {
  const HANDLE handle = CreateFileW(file.path.c_str(), GENERIC_READ, 7, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  ++counts.opens;
  if (handle == INVALID_HANDLE_VALUE) {
    return 0;
  }
  if (offset > 0) {
    LARGE_INTEGER position;
    position.QuadPart = static_cast<LONGLONG>(offset);
    SetFilePointerEx(handle, position, nullptr, FILE_BEGIN);
  }
  DWORD read = 0;
  ReadFile(handle, Buffer(), static_cast<DWORD>(std::min(file.size, kBlock)), &read, nullptr);
  counts.bytes += read;
  CloseHandle(handle);
  return HashOf(Buffer(), read);
}

// One open, reads of 1 MiB until one finds the end, one close: what a file holds now is what
// counts, not the size that it was listed with. With hashes where a stage needs them.
std::uint64_t ReadWhole(const File& file, bool hash, Counts& counts) {
  const HANDLE handle = CreateFileW(file.path.c_str(), GENERIC_READ, 7, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  ++counts.opens;
  if (handle == INVALID_HANDLE_VALUE) {
    return 0;
  }
  std::uint64_t key = 0;
  DWORD read = 0;
  while (ReadFile(handle, Buffer(), kReadSize, &read, nullptr) && read > 0) {
    counts.bytes += read;
    if (hash) {
      key = key * 31 + HashOf(Buffer(), read);
    }
  }
  CloseHandle(handle);
  return key;
}

bool Before(const File& a, const File& b) {
  return a.size != b.size ? a.size < b.size : a.key < b.key;
}

// Drops what is alone with its size and key.
void KeepEqual(std::vector<File>& files) {
  std::sort(files.begin(), files.end(), Before);
  std::vector<File> kept;
  for (std::size_t i = 0; i < files.size();) {
    std::size_t end = i + 1;
    while (end < files.size() && !Before(files[i], files[end])) {
      ++end;
    }
    if (end - i > 1) {
      std::move(files.begin() + static_cast<std::ptrdiff_t>(i),
                files.begin() + static_cast<std::ptrdiff_t>(end), std::back_inserter(kept));
    }
    i = end;
  }
  files = std::move(kept);
}

void QueryFoldersAbove(const std::wstring& path) {
  for (std::size_t i = path.rfind(L'\\'); i != std::wstring::npos && i > 2;
       i = path.rfind(L'\\', i - 1)) {
    GetFileAttributesW(path.substr(0, i).c_str());
  }
}

}  // namespace

Counts BareLoop(const std::wstring& root) {
  Counts counts;
  List(root, [&counts](const std::wstring&, const WIN32_FIND_DATAW&) { ++counts.files; });
  return counts;
}

Counts ThreeStages(const std::wstring& root) {
  Counts counts;
  std::vector<File> files = ListFiles(root);
  counts.files = files.size();
  KeepEqual(files);
  for (File& file : files) {
    file.key = ReadBlock(file, 0, counts);
  }
  KeepEqual(files);
  std::erase_if(files, [](const File& file) { return file.size <= kSmall; });
  for (File& file : files) {
    if (file.size > kBlock) {
      file.key = file.key * 31 + ReadBlock(file, file.size - kBlock, counts);
    }
  }
  KeepEqual(files);
  for (File& file : files) {
    file.key = ReadWhole(file, true, counts);
  }
  KeepEqual(files);
  return counts;
}

Counts ReadBytes(const std::wstring& root) {
  Counts counts;
  const std::vector<File> files = ListFiles(root);
  counts.files = files.size();
  for (const File& file : files) {
    (void)ReadWhole(file, false, counts);
  }
  return counts;
}

Counts DeleteFiles(const std::wstring& root) {
  Counts counts;
  for (const File& file : ListFiles(root)) {
    QueryFoldersAbove(file.path);
    WIN32_FILE_ATTRIBUTE_DATA facts;
    GetFileAttributesExW(file.path.c_str(), GetFileExInfoStandard, &facts);
    QueryFoldersAbove(file.path);
    GetFileAttributesW(file.path.c_str());
    counts.files += DeleteFileW(file.path.c_str()) ? 1u : 0u;
  }
  return counts;
}

}  // namespace quastel::bench
