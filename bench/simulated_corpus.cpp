#include "simulated_corpus.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace quastel::bench {
namespace {

constexpr std::uint32_t kFilesInFolder = 100;
constexpr std::uint32_t kFoldersInFolder = 100;
constexpr std::uint32_t kOneSizeOfAll = 5'000;

// The same numbers for the same number, spread as if they were drawn.
std::uint32_t Scatter(std::uint32_t number) {
  std::uint64_t mixed = (number + 1) * 0x9E3779B97F4A7C15u;
  mixed ^= mixed >> 29;
  mixed *= 0xBF58476D1CE4E5B9u;
  return static_cast<std::uint32_t>(mixed >> 32);
}

Text PathOf(Corpus corpus, std::uint32_t file) {
  const std::uint32_t folder = corpus == Corpus::kOneFolder ? 0 : file / kFilesInFolder;
  char path[128];
  std::snprintf(path, sizeof(path), "\\section-%03u\\collection-%05u\\photograph-%07u-edited.jpeg",
                folder / kFoldersInFolder, folder, file);
  const std::string text = path;
  return Text(kCorpusRoot).append(text.begin(), text.end());
}

// Every tenth file is a copy of the one before, so that a fifth of all has an equal. Two in ten are
// alone with their size; the others have a fourth as many sizes as there are files. So the same share
// of a tree has to be compared, however many files it has.
void AddSmallFile(simulated::SimulatedWindows& windows, Corpus corpus, std::uint32_t file,
                  std::uint32_t files) {
  constexpr std::uint32_t kLargest = 65'536;
  const std::uint32_t digit = file % 10;
  const std::uint32_t content = digit == 9 ? file - 1 : file;
  const bool is_near_copy = digit == 7;  // of its size, but nothing else
  const bool is_alone = digit == 3 || digit == 5;
  const std::uint32_t sizes = std::clamp(files / 4, 1u, kLargest);
  const std::uint64_t shared_size =
      Scatter(is_near_copy ? file - 1 : content) % sizes * (kLargest / sizes);
  const std::uint64_t size = is_alone ? std::uint64_t{kLargest} + file : shared_size;
  windows.AddSizedFile(PathOf(corpus, file), size, Scatter(content));
}

}  // namespace

void AddCorpus(simulated::SimulatedWindows& windows, Corpus corpus, std::uint32_t files) {
  for (std::uint32_t file = 0; file < files; ++file) {
    switch (corpus) {
      case Corpus::kSmallFiles:
      case Corpus::kOneFolder:
        AddSmallFile(windows, corpus, file, files);
        break;
      case Corpus::kLargeFiles:
        windows.AddSizedFile(PathOf(corpus, file), 10'485'761 + file, file);
        break;
      case Corpus::kOneSize:
        windows.AddSizedFile(PathOf(corpus, file), kOneSizeOfAll, Scatter(file));
        break;
      case Corpus::kEqualFiles:
        windows.AddSizedFile(PathOf(corpus, file), kOneSizeOfAll, 1);
        break;
    }
  }
}

}  // namespace quastel::bench
