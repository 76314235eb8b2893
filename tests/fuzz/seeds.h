// The seeds of a fuzz target, for the tests that replay them.

#ifndef QUASTEL_TESTS_FUZZ_SEEDS_H_
#define QUASTEL_TESTS_FUZZ_SEEDS_H_

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace quastel::fuzz {

struct Seed {
  std::string name;
  std::string bytes;
};

// In the order of their names.
inline std::vector<Seed> SeedsOf(const std::string& target) {
  std::vector<Seed> seeds;
  for (const auto& entry : std::filesystem::directory_iterator(QUASTEL_FUZZ_CORPUS "/" + target)) {
    std::ifstream in(entry.path(), std::ios::binary);
    seeds.push_back(
        {entry.path().filename().string(), std::string(std::istreambuf_iterator<char>(in), {})});
  }
  std::sort(seeds.begin(), seeds.end(),
            [](const Seed& a, const Seed& b) { return a.name < b.name; });
  return seeds;
}

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_SEEDS_H_
