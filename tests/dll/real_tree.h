// A folder of real files, gone at the end of the test.

#ifndef QUASTEL_TESTS_DLL_REAL_TREE_H_
#define QUASTEL_TESTS_DLL_REAL_TREE_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace quastel::dll_test {

// The least size of a large file.
inline constexpr std::uint64_t kLarge = 10'485'761;

class RealTree {
 public:
  RealTree();
  ~RealTree();
  RealTree(const RealTree&) = delete;
  RealTree& operator=(const RealTree&) = delete;

  const std::wstring& root() const { return root_; }

  // The full path of something below the root, as the library reports it.
  std::wstring Path(std::wstring_view relative) const;

  // Make missing parent folders as well.
  void AddFile(std::wstring_view relative, std::string_view content) const;
  void AddSparseFile(std::wstring_view relative, std::uint64_t size) const;
  void AddFolder(std::wstring_view relative) const;

 private:
  std::wstring root_;
};

// A tree that holds "real\inside.txt" and "link", a link to a folder outside of the tree with the
// file "outside.txt". Wine cannot make links itself: there the script that starts the tests has
// made the tree and names it in QUASTEL_TEST_LINKED_TREE.
std::wstring LinkedTree(const RealTree& scratch);

}  // namespace quastel::dll_test

#endif  // QUASTEL_TESTS_DLL_REAL_TREE_H_
