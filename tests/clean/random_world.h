// Random trees with everything that a disk may hold, and the ways in which they change between a
// scan and a clean.

#ifndef QUASTEL_TESTS_CLEAN_RANDOM_WORLD_H_
#define QUASTEL_TESTS_CLEAN_RANDOM_WORLD_H_

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t Below(std::uint32_t end) {
    return std::uniform_int_distribution<std::uint32_t>(0, end - 1)(engine_);
  }
  bool OneIn(std::uint32_t n) { return Below(n) == 0; }
  template <typename Item>
  const Item& OneOf(const std::vector<Item>& items) {
    return items[Below(static_cast<std::uint32_t>(items.size()))];
  }
  template <typename Item>
  void Shuffle(std::vector<Item>& items) {
    std::shuffle(items.begin(), items.end(), engine_);
  }

 private:
  std::mt19937 engine_;
};

// A machine and everything about it that the machine does not tell by itself.
struct World {
  SimulatedWindows machine;
  std::map<Text, Denial> denied;
  std::set<Text> locked;
};

Text FolderOf(const Text& path);

// Makes and changes one world, for scans of one kind.
class Maker {
 public:
  Maker(World& world, Random& random, std::uint32_t kind);

  void Furnish();

  Request ScanRequest() const;

  // One of the ways in which a disk changes between a scan and a clean.
  void Change();

  // Takes back what can be taken back.
  void Calm();

  // Once things have gone on their own.
  void ForgetWhatIsGone();

  // Real files or folders below a real folder, not through links.
  Paths Below(TextView folder, bool folders) const;

 private:
  LinkKind SomeFolderLink();

  void AddFile(const Text& path, bool plain);

  void Fill(const Text& folder, int depth);

  void Deny(const Text& path);

  void Remove(const Text& path);

  // Denials and locks go with what they were put on.
  void Forget(const Text& path);

  World& world_;
  Random& random_;
  const std::uint32_t kind_;
  int new_files_ = 0;
};

}  // namespace quastel::clean_tests

#endif  // QUASTEL_TESTS_CLEAN_RANDOM_WORLD_H_
