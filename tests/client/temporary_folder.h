// A folder of real files for tests of the client, gone at the end of the test.

#ifndef QUASTEL_TESTS_CLIENT_TEMPORARY_FOLDER_H_
#define QUASTEL_TESTS_CLIENT_TEMPORARY_FOLDER_H_

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quastel::client {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    static int count = 0;
    const auto base = std::filesystem::temp_directory_path();
    do {
      path_ = base / ("quastel-client-" + std::to_string(count++));
    } while (!std::filesystem::create_directory(path_));
    path_.make_preferred();
  }
  ~TemporaryFolder() { Remove(L"\\\\?\\" + path_.wstring()); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::wstring Path(std::wstring_view relative = L"") const {
    return relative.empty() ? path_.wstring() : path_.wstring() + L"\\" + std::wstring(relative);
  }

  void AddFolder(std::wstring_view relative) const {
    std::filesystem::create_directories(Path(relative));
  }

  void AddFile(std::wstring_view relative, std::string_view content) const {
    const std::filesystem::path path = Path(relative);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) {
      throw std::runtime_error("cannot write " + path.string());
    }
  }

 private:
  // Paths may be longer than the standard library can remove. Links are removed, not entered.
  static void Remove(const std::wstring& folder) {
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
      do {
        const std::wstring name = entry.cFileName;
        const std::wstring path = folder + L"\\" + name;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
          DeleteFileW(path.c_str());
        } else if ((entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
          RemoveDirectoryW(path.c_str());
        } else if (name != L"." && name != L"..") {
          Remove(path);
        }
      } while (FindNextFileW(search, &entry) != 0);
      FindClose(search);
    }
    RemoveDirectoryW(folder.c_str());
  }

  std::filesystem::path path_;
};

}  // namespace quastel::client

#endif  // QUASTEL_TESTS_CLIENT_TEMPORARY_FOLDER_H_
