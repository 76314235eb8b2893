// The library's XXH32 over memory against the reference, in turn, by processor time: one line of
// JSON for blocks of 4 KiB and one for blocks of 1 MiB, with both rates in MB/s.

#include <dlfcn.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <vector>

#include "quastel_core.h"

namespace {

using Reference = unsigned (*)(const void* data, std::size_t size, unsigned seed);

// MB/s of hashing 200 MB in blocks of this size.
template <typename Hash>
double Rate(std::vector<unsigned char>& block, Hash hash) {
  const std::size_t repeats = 200'000'000 / block.size();
  const std::clock_t begin = std::clock();
  for (std::size_t i = 0; i < repeats; ++i) {
    block[0] = static_cast<unsigned char>(i);
    hash(block);
  }
  const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
  return static_cast<double>(block.size() * repeats) / seconds / 1e6;
}

}  // namespace

int main() {
  void* const library = dlopen("libxxhash.so.0", RTLD_NOW);
  const auto reference =
      library == nullptr ? nullptr : reinterpret_cast<Reference>(dlsym(library, "XXH32"));
  if (reference == nullptr) {
    std::fprintf(stderr, "the reference is not installed: libxxhash.so.0\n");
    return 1;
  }
  for (const std::size_t size : {std::size_t{4'096}, std::size_t{1'048'576}}) {
    std::vector<unsigned char> block(size, 1);
    double ours = 0;
    double theirs = 0;
    volatile unsigned kept = 0;
    for (int round = 0; round < 5; ++round) {  // the best of each: nothing makes a hash faster
      ours = std::max(ours, Rate(block, [](const std::vector<unsigned char>& bytes) {
                        char text[9];
                        (void)qs_xxhash32_hex(bytes.data(), bytes.size(), text, sizeof(text));
                      }));
      theirs = std::max(theirs, Rate(block, [&](const std::vector<unsigned char>& bytes) {
                          kept = kept + reference(bytes.data(), bytes.size(), 0);
                        }));
    }
    std::printf("{\"size\": %zu, \"ours\": %.0f, \"reference\": %.0f}\n", size, ours, theirs);
  }
  return 0;
}
