// Real files that change from round to round, and what they have to be.

#ifndef QUASTEL_TESTS_STRESS_CHANGING_TREE_H_
#define QUASTEL_TESTS_STRESS_CHANGING_TREE_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace quastel::stress {

class ChangingTree {
 public:
  using Random = std::mt19937;
  using Paths = std::set<std::wstring>;

  // What is larger than a duplicate scan would hash in an instant is all zeros and takes no room.
  static constexpr std::uint64_t kLargestWritten = 1 << 20;

  struct File {
    std::uint64_t size = 0;
    std::uint32_t seed = 0;  // equal sizes with equal seeds are equal contents
    std::uint64_t time = 0;  // FILETIME
  };

  // Makes `count` files in folders of a hundred below `root`, with sizes picked from `sizes`.
  ChangingTree(std::wstring root, std::size_t count, std::vector<std::uint64_t> sizes,
               Random& random);

  const std::wstring& root() const { return root_; }
  const std::map<std::wstring, File>& files() const { return files_; }

  // Changes, removes or adds that many files.
  void Change(std::size_t times, Random& random);
  // Adds files until there are as many as in the beginning.
  void Refill(Random& random);
  // Somebody else has deleted it, and was meant to.
  void NoteDeleted(const std::wstring& path);

  // Are the files of the folder exactly these, with their sizes and times, and their contents?
  void DemandUnharmed(bool contents) const;

  // The sets of equal files, as a duplicate scan of the root has to find them.
  std::set<Paths> EqualSets() const;

 private:
  // The path of a file that is gone, as long as there is one: whoever remembers paths has only so
  // many to remember.
  std::wstring NextPath(Random& random);
  void Write(const std::wstring& path, Random& random);

  const std::wstring root_;
  const std::size_t count_;
  const std::vector<std::uint64_t> sizes_;
  std::map<std::wstring, File> files_;
  std::vector<std::wstring> gone_;
  std::size_t next_name_ = 0;
  std::uint64_t next_time_ = 133'000'000'000'000'000;
};

}  // namespace quastel::stress

#endif  // QUASTEL_TESTS_STRESS_CHANGING_TREE_H_
