// What a duplicate scan opens, against what the tree says that it has to: count_opens [FILES].
//
// On the simulated Windows, with FILES small files (20,000 when not said) and a few for each way
// out of a stage. What has to be opened is read off the tree, by sizes and by the bytes themselves.
// Prints one line of JSON: what was opened, and how much more or less than due that was, added up
// over all files, so that one too many does not make up for one too few.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "one_scan.h"
#include "simulated_corpus.h"

namespace {

using quastel::Char;
using quastel::Text;
using quastel::TextView;
using quastel::simulated::Call;
using quastel::simulated::CallRecord;
using quastel::simulated::SimulatedWindows;

constexpr std::uint64_t kWholeInSample = 150;
constexpr std::uint64_t kBlock = 4'096;

struct File {
  Text path;
  std::uint64_t size = 0;
  std::uint64_t due = 0;  // how often it has to be opened
};

struct Tree {
  std::vector<File> files;
  std::set<Text> folders;
};

void Collect(const SimulatedWindows& windows, const Text& folder, Tree& tree) {
  tree.folders.insert(folder);
  for (const Text& name : windows.NamesIn(folder)) {
    const Text path = folder + QS_TEXT("\\") + name;
    const auto facts = windows.Find(path);
    if (facts->is_folder) {
      Collect(windows, path, tree);
    } else {
      tree.files.push_back({path, facts->size});
    }
  }
}

// Sets of files that agree in what a stage looks at, without those that are alone.
template <typename KeyOf>
std::vector<File*> KeepEqual(const std::vector<File*>& files, KeyOf key_of) {
  std::map<decltype(key_of(*files[0])), std::vector<File*>> by_key;
  for (File* const file : files) {
    by_key[key_of(*file)].push_back(file);
  }
  std::vector<File*> kept;
  for (const auto& [key, equal] : by_key) {
    if (equal.size() > 1) {
      kept.insert(kept.end(), equal.begin(), equal.end());
    }
  }
  return kept;
}

// One open for each stage that a file enters. A file of 150 bytes or less is read whole by the
// first, and one of no more than a block has no tail that the head did not hold.
void SetDue(const SimulatedWindows& windows, std::vector<File>& files) {
  const auto head_of = [&windows](const File& file) {
    return windows.ContentOf(file.path)->substr(0, kBlock);
  };
  const auto size_head_and_tail_of = [&windows](const File& file) {
    const std::string content = *windows.ContentOf(file.path);
    const std::size_t tail = content.size() - std::min<std::size_t>(content.size(), kBlock);
    return std::tuple(file.size, content.substr(0, kBlock), content.substr(tail));
  };
  std::vector<File*> left;
  for (File& file : files) {
    left.push_back(&file);
  }
  left = KeepEqual(left, [](const File& file) { return file.size; });
  for (File* const file : left) {
    ++file->due;
  }
  std::erase_if(left, [](const File* file) { return file->size <= kWholeInSample; });
  left = KeepEqual(left, head_of);  // of whatever size
  for (File* const file : left) {
    file->due += file->size > kBlock ? 1u : 0u;
  }
  left = KeepEqual(left, size_head_and_tail_of);
  for (File* const file : left) {
    ++file->due;
  }
}

std::string Bytes(std::size_t size, std::size_t changed_at = SIZE_MAX) {
  std::string bytes(size, 'a');
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>('a' + i % 23);
  }
  if (changed_at < size) {
    bytes[changed_at] = '#';
  }
  return bytes;
}

// Files for each way through the stages and out of them, at the sizes where the ways part.
void AddEveryWay(SimulatedWindows& windows) {
  const Text folder = Text(quastel::bench::kCorpusRoot) + QS_TEXT("\\every-way\\");
  int files = 0;
  const auto add = [&](const std::string& content) {
    const std::string name = "file-" + std::to_string(++files);
    windows.AddFile(folder + Text(name.begin(), name.end()), content);
  };
  add("");
  add("");
  for (const std::size_t size : {1u, 149u, 150u, 151u, 2'000u, 4'095u, 4'096u, 4'097u, 9'000u}) {
    add(Bytes(size));
    add(Bytes(size));
    add(Bytes(size, 0));         // another head
    add(Bytes(size, size - 1));  // another tail
    add(Bytes(size, size / 2));  // another middle
  }
  add(Bytes(70'000));  // another size than all others
  windows.AddFolder(folder + QS_TEXT("empty"));
}

Text Plain(const Text& path) {
  constexpr TextView kLong = QS_TEXT("\\\\?\\");
  return path.compare(0, kLong.size(), kLong) == 0 ? path.substr(kLong.size()) : path;
}

struct Opened {
  std::map<Text, std::uint64_t> folders;
  std::map<Text, std::uint64_t> files;  // and devices
  std::uint64_t rows = 0;               // of the report
};

// One scan, with every open and every search that it makes.
Opened Watch(SimulatedWindows& windows, const qs_char* profile) {
  Opened opened;
  std::mutex mutex;
  windows.SetHook([&](const CallRecord& call) {
    const bool is_search = call.call == Call::kFindFirst || call.call == Call::kFindFirstBasic;
    if (is_search || call.call == Call::kOpenFile) {
      const std::lock_guard lock(mutex);
      const Text path = Plain(call.path);
      ++(is_search ? opened.folders[path.substr(0, path.rfind(Char{'\\'}))] : opened.files[path]);
    }
  });
  quastel::bench::OneScan scan;
  scan.Run({.kind = QS_SCAN_KIND_DUPLICATES,
            .root = quastel::bench::kCorpusRoot.data(),
            .user_home = profile});
  windows.SetHook(nullptr);
  opened.rows = scan.Figures().row_count;
  return opened;
}

std::uint64_t Take(std::map<Text, std::uint64_t>& counts, const Text& path) {
  const auto found = counts.find(path);
  const std::uint64_t count = found == counts.end() ? 0 : found->second;
  counts.erase(path);
  return count;
}

std::uint64_t SumOf(const std::map<Text, std::uint64_t>& counts) {
  std::uint64_t sum = 0;
  for (const auto& [path, count] : counts) {
    sum += count;
  }
  return sum;
}

struct Comparison {
  std::uint64_t counted = 0;
  std::uint64_t due = 0;
  std::uint64_t wrong = 0;
  std::uint64_t alone = 0;  // opens of files that no other has the size of
};

Comparison Compare(const Tree& tree, Opened opened) {
  Comparison result;
  result.counted = SumOf(opened.folders) + SumOf(opened.files);
  const auto compare = [&result](std::uint64_t counted, std::uint64_t due) {
    result.due += due;
    result.wrong += counted > due ? counted - due : due - counted;
  };
  for (const Text& folder : tree.folders) {
    compare(Take(opened.folders, folder), 1);
  }
  for (const File& file : tree.files) {
    const std::uint64_t opens = Take(opened.files, file.path);
    compare(opens, file.due);
    result.alone += file.due == 0 ? opens : 0;
  }
  compare(Take(opened.files, QS_TEXT("\\\\.\\C:")), 1);     // what kind of disk the drive is
  compare(SumOf(opened.folders) + SumOf(opened.files), 0);  // what is left of them
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint32_t files = argc > 1 ? static_cast<std::uint32_t>(std::atoi(argv[1])) : 20'000;
  SimulatedWindows windows;
  AddCorpus(windows, quastel::bench::Corpus::kSmallFiles, files);
  AddEveryWay(windows);
  Tree tree;
  Collect(windows, Text(quastel::bench::kCorpusRoot), tree);
  SetDue(windows, tree.files);
  const Comparison first = Compare(tree, Watch(windows, nullptr));

  const qs_char* const profile = QS_TEXT("C:\\Users\\someone");  // the place of a cache
  const std::uint64_t rows = Watch(windows, profile).rows;
  Opened second = Watch(windows, profile);
  if (rows == 0 || second.rows != rows) {
    std::fprintf(stderr, "the second scan found something else\n");
    return 1;
  }
  std::uint64_t again = 0;
  for (const File& file : tree.files) {
    again += Take(second.files, file.path);
  }
  std::printf(
      "{\"files\": %zu, \"counted\": %llu, \"due\": %llu, \"wrong\": %llu, \"alone\": %llu, "
      "\"again\": %llu}\n",
      tree.files.size(), static_cast<unsigned long long>(first.counted),
      static_cast<unsigned long long>(first.due), static_cast<unsigned long long>(first.wrong),
      static_cast<unsigned long long>(first.alone), static_cast<unsigned long long>(again));
  return 0;
}
