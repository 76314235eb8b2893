// What a clean must do, from the rules alone: it looks at the disk and never calls the library.

#ifndef QUASTEL_TESTS_CLEAN_CLEAN_PREDICTION_H_
#define QUASTEL_TESTS_CLEAN_CLEAN_PREDICTION_H_

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "clean/clean_fixture.h"
#include "clean/random_world.h"

namespace quastel::clean_tests {

// Something that happens while the clean runs, just after so many files were processed.
struct Event {
  std::uint64_t after = 0;
  enum { kVanishes, kIsTouched, kAppears } what = kVanishes;
  Text path;
};

struct Prediction {
  qs_status status = QS_OK;
  CleanBlock block;
  std::set<std::string> removed;  // paths
  std::set<std::uint64_t> marks;  // new ones
  std::uint64_t folders = 0;
};

class Model {
 public:
  Model(const World& world, const std::vector<Row>& rows, std::uint32_t kind);

  // Nothing: the request is refused.
  std::optional<Prediction> Predict(const Ids& ids, const std::vector<Event>& events);

 private:
  const Row* RowOf(std::uint64_t id) const;

  bool TakesWholeSet(const std::set<std::uint64_t>& taken) const;

  void Happen(const std::vector<Event>& events, std::uint64_t processed);

  void Remove(const Text& path, Prediction& result);

  // The entry as it stands at that point of the clean, links in the way followed.
  std::optional<simulated::NodeFacts> Facts(const Text& path) const;
  bool IsThere(const Text& path) const;

  Denial DenialOf(const Text& path) const;
  bool IsLookable(const Text& path) const;

  // A real folder, and so is each one above it.
  bool IsRealFolder(const Text& path) const;
  bool IsReachable(const Text& path) const;

  bool IsUnchanged(const Row& row) const;

  bool MayGo(const Text& path) const;

  Paths EntriesOf(const Text& folder) const;

  bool HasFiles(const Text& folder) const;

  void RemoveFolderOf(const Text& path, Prediction& result);

  const World& world_;
  const std::vector<Row>& rows_;
  const std::uint32_t kind_;
  std::set<Text> gone_;
  std::set<Text> touched_;
  std::set<Text> appeared_;
};

}  // namespace quastel::clean_tests

#endif  // QUASTEL_TESTS_CLEAN_CLEAN_PREDICTION_H_
