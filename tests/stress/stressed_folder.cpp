#include "stress/stressed_folder.h"

#include <optional>
#include <string>
#include <utility>

#include "stress/demand.h"
#include "support/text.h"

namespace quastel::stress {
namespace {

constexpr unsigned kFolders = 5;
constexpr unsigned kFilesPerFolder = 9;
// So few contents that files of one size are equal more often than not.
constexpr std::uint32_t kSeeds = 4;

Text NumberText(std::uint64_t number) {
  return support::Wide(std::to_string(number));
}

}  // namespace

StressedFolder::StressedFolder(simulated::SimulatedWindows& machine, Text root,
                               const std::vector<std::uint64_t>& sizes)
    : machine_(machine), root_(std::move(root)) {
  std::size_t next = 0;
  for (unsigned folder = 0; folder < kFolders; ++folder) {
    for (unsigned file = 0; file < kFilesPerFolder; ++file) {
      const std::uint64_t size = sizes[next++ % sizes.size()];
      const Text path = root_ + u"\\d" + NumberText(folder) + u"\\f" + NumberText(file) + u"_" +
                        NumberText(size) + u".tmp";
      files_[path].size = size;
    }
  }
}

void StressedFolder::Put(const Text& path, StressedFile& file, Random& random) {
  file.seed = 1 + static_cast<std::uint32_t>(random() % kSeeds);
  file.last_write = next_time_ += 10'000'000;
  file.present = true;
  simulated::FileOptions options;
  options.last_write = file.last_write;
  machine_.AddSizedFile(path, file.size, file.seed, options);
}

void StressedFolder::Refresh(Random& random) {
  for (auto& [path, file] : files_) {
    if (!file.present || random() % 16 == 0) {
      Put(path, file, random);
    }
  }
}

void StressedFolder::Change(const Text& path, Random& random) {
  Put(path, files_.at(path), random);
}

void StressedFolder::NoteDeleted(const Text& path) {
  files_.at(path).present = false;
}

void StressedFolder::DemandUnharmed() const {
  for (const auto& [path, file] : files_) {
    const std::optional<simulated::NodeFacts> facts = machine_.Find(path);
    QS_DEMAND_SEEN(facts.has_value() == file.present, support::Utf8(path));
    if (facts) {
      QS_DEMAND_SEEN(facts->size == file.size && facts->last_write == file.last_write,
                     support::Utf8(path));
    }
  }
}

std::uint64_t StressedFolder::SizeInName(TextView name) {
  const std::size_t begin = name.rfind(u'_') + 1;
  std::uint64_t size = 0;
  for (std::size_t i = begin; i < name.size() && name[i] != u'.'; ++i) {
    size = size * 10 + (name[i] - std::uint64_t{u'0'});
  }
  return size;
}

void StressedFolder::DemandRowOfOurs(TextView path, TextView name, std::uint64_t size) const {
  QS_DEMAND_SEEN(path.substr(0, root_.size()) == root_ && path.size() > root_.size(),
                 support::Utf8(path));
  QS_DEMAND_SEEN(path.substr(path.rfind(u'\\') + 1) == name, support::Utf8(path));
  QS_DEMAND_SEEN(SizeInName(name) == size, support::Utf8(path));
  // The names never change, so that this is no race with whoever changes the files.
  QS_DEMAND_SEEN(files_.contains(Text(path)), support::Utf8(path));
}

}  // namespace quastel::stress
