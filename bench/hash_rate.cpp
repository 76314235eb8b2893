// The rate of the library's XXH32 over memory: hash_rate [ROUNDS]. Prints MB/s, one line a round, by
// processor time: what else runs on the machine does not count.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "quastel_core.h"

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
  // The block size of the yardstick, xxhsum -b.
  std::vector<unsigned char> block(100 * 1024, 1);
  constexpr int kRepeats = 40'000;
  for (int round = 0; round < rounds; ++round) {
    char text[9] = {};
    const std::clock_t begin = std::clock();
    for (int i = 0; i < kRepeats; ++i) {
      block[0] = static_cast<unsigned char>(i);
      if (qs_xxhash32_hex(block.data(), block.size(), text, sizeof(text)) != QS_OK) {
        return 1;
      }
    }
    const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    std::printf("%.0f\n", static_cast<double>(block.size()) * kRepeats / seconds / 1e6);
  }
  return 0;
}
