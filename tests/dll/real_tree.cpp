#include "real_tree.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace quastel::dll_test {

namespace {

std::filesystem::path UniqueFolder() {
  static std::atomic<unsigned> count{0};
  const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
  return std::filesystem::temp_directory_path() /
         ("quastel-test-" + std::to_string(stamp) + "-" + std::to_string(count++));
}

}  // namespace

RealTree::RealTree() {
  std::filesystem::path folder = UniqueFolder();
  std::filesystem::create_directories(folder);
  root_ = folder.make_preferred().wstring();
}

RealTree::~RealTree() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

std::wstring RealTree::Path(std::wstring_view relative) const {
  return root_ + L'\\' + std::wstring(relative);
}

void RealTree::AddFile(std::wstring_view relative, std::string_view content) const {
  const std::filesystem::path path = Path(relative);
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + path.string());
  }
}

void RealTree::AddSparseFile(std::wstring_view relative, std::uint64_t size) const {
  AddFile(relative, "");
  std::filesystem::resize_file(Path(relative), size);
}

void RealTree::AddFolder(std::wstring_view relative) const {
  std::filesystem::create_directories(Path(relative));
}

std::wstring LinkedTree(const RealTree& scratch) {
  if (const wchar_t* made = _wgetenv(L"QUASTEL_TEST_LINKED_TREE"); made != nullptr) {
    return made;
  }
  scratch.AddFile(L"outside\\outside.txt", "outside");
  scratch.AddFile(L"tree\\real\\inside.txt", "inside");
  const std::wstring command = L"cmd /c mklink /J \"" + scratch.Path(L"tree\\link") + L"\" \"" +
                               scratch.Path(L"outside") + L"\"";
  if (_wsystem(command.c_str()) != 0) {
    throw std::runtime_error("cannot make a junction");
  }
  return scratch.Path(L"tree");
}

}  // namespace quastel::dll_test
