#include "changing_tree.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "demand.h"

namespace quastel::stress {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFilesPerFolder = 100;
constexpr std::uint32_t kSeeds = 16;

std::string Shown(const std::wstring& path) {
  return fs::path(path).string();
}

std::string ContentOf(const ChangingTree::File& file) {
  std::string content(static_cast<std::size_t>(file.size), '\0');
  std::uint32_t state = file.seed * 2'654'435'761u + 1;
  for (char& byte : content) {
    state = state * 1'664'525u + 1'013'904'223u;
    byte = static_cast<char>(state >> 24);
  }
  return content;
}

FILETIME ToFileTime(std::uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::uint64_t Joined(DWORD high, DWORD low) {
  return (std::uint64_t{high} << 32) | low;
}

// A file time of its own: two changes within one tick of the system's clock would look the same.
void SetTime(const std::wstring& path, std::uint64_t ticks) {
  const HANDLE file =
      ::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  QS_DEMAND_SEEN(file != INVALID_HANDLE_VALUE, Shown(path));
  const FILETIME time = ToFileTime(ticks);
  QS_DEMAND_SEEN(::SetFileTime(file, nullptr, nullptr, &time) != FALSE, Shown(path));
  ::CloseHandle(file);
}

std::string ReadAll(const std::wstring& path) {
  std::ifstream in(fs::path(path), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

ChangingTree::ChangingTree(std::wstring root, std::size_t count, std::vector<std::uint64_t> sizes,
                           Random& random)
    : root_(std::move(root)), count_(count), sizes_(std::move(sizes)) {
  fs::create_directories(root_);
  Refill(random);
}

std::wstring ChangingTree::NextPath(Random& random) {
  if (!gone_.empty()) {
    std::swap(gone_[random() % gone_.size()], gone_.back());
    std::wstring path = std::move(gone_.back());
    gone_.pop_back();
    // A clean of junk removes folders that it has emptied.
    fs::create_directories(fs::path(path).parent_path());
    return path;
  }
  const std::size_t number = next_name_++;
  const std::wstring folder = root_ + L"\\d" + std::to_wstring(number / kFilesPerFolder % 100);
  fs::create_directories(folder);
  return folder + L"\\f" + std::to_wstring(number) + L".tmp";
}

void ChangingTree::Write(const std::wstring& path, Random& random) {
  File& file = files_[path];
  file.size = sizes_[random() % sizes_.size()];
  file.time = next_time_ += 10'000'000;
  const bool alike = file.size == 0 || file.size > kLargestWritten;
  file.seed = alike ? 0 : static_cast<std::uint32_t>(1 + random() % kSeeds);
  {
    std::ofstream out(fs::path(path), std::ios::binary | std::ios::trunc);
    if (file.size <= kLargestWritten) {
      const std::string content = ContentOf(file);
      out.write(content.data(), static_cast<std::streamsize>(content.size()));
    }
    out.close();
    QS_DEMAND_SEEN(!out.fail(), Shown(path));
  }
  if (file.size > kLargestWritten) {
    fs::resize_file(path, file.size);
  }
  SetTime(path, file.time);
}

void ChangingTree::Change(std::size_t times, Random& random) {
  for (std::size_t i = 0; i < times; ++i) {
    if (files_.empty() || random() % 4 == 0) {
      Write(NextPath(random), random);
      continue;
    }
    const auto file =
        std::next(files_.begin(), static_cast<std::ptrdiff_t>(random() % files_.size()));
    if (random() % 3 != 0) {
      Write(file->first, random);
    } else {
      QS_DEMAND_SEEN(::DeleteFileW(file->first.c_str()) != FALSE, Shown(file->first));
      gone_.push_back(file->first);
      files_.erase(file);
    }
  }
}

void ChangingTree::Refill(Random& random) {
  while (files_.size() < count_) {
    Write(NextPath(random), random);
  }
}

void ChangingTree::NoteDeleted(const std::wstring& path) {
  QS_DEMAND_SEEN(files_.erase(path) == 1, Shown(path));
  gone_.push_back(path);
}

void ChangingTree::DemandUnharmed(bool contents) const {
  std::size_t found = 0;
  std::vector<std::wstring> folders = {root_};
  while (!folders.empty()) {
    const std::wstring folder = std::move(folders.back());
    folders.pop_back();
    WIN32_FIND_DATAW entry;
    const HANDLE search = ::FindFirstFileW((folder + L"\\*").c_str(), &entry);
    QS_DEMAND_SEEN(search != INVALID_HANDLE_VALUE, Shown(folder));
    do {
      const std::wstring name = entry.cFileName;
      const std::wstring path = folder + L"\\" + name;
      if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        if (name != L"." && name != L"..") {
          folders.push_back(path);
        }
        continue;
      }
      ++found;
      const auto known = files_.find(path);
      QS_DEMAND_SEEN(known != files_.end(), Shown(path));
      const File& file = known->second;
      QS_DEMAND_SEEN(Joined(entry.nFileSizeHigh, entry.nFileSizeLow) == file.size, Shown(path));
      QS_DEMAND_SEEN(Joined(entry.ftLastWriteTime.dwHighDateTime,
                            entry.ftLastWriteTime.dwLowDateTime) == file.time,
                     Shown(path));
      if (contents && file.size <= kLargestWritten) {
        QS_DEMAND_SEEN(ReadAll(path) == ContentOf(file), Shown(path));
      }
    } while (::FindNextFileW(search, &entry) != FALSE);
    ::FindClose(search);
  }
  QS_DEMAND(found == files_.size());
}

std::set<ChangingTree::Paths> ChangingTree::EqualSets() const {
  std::map<std::pair<std::uint64_t, std::uint32_t>, Paths> by_content;
  for (const auto& [path, file] : files_) {
    by_content[{file.size, file.seed}].insert(path);
  }
  std::set<Paths> sets;
  for (auto& [content, paths] : by_content) {
    if (paths.size() > 1) {
      sets.insert(std::move(paths));
    }
  }
  return sets;
}

}  // namespace quastel::stress
