// Requests of product scans, and what a scan by each of them must find.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_PRODUCT_REQUEST_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_PRODUCT_REQUEST_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "base/text.h"
#include "fuzz/input.h"
#include "fuzz/sequence/disk.h"
#include "fuzz/sequence/report.h"
#include "fuzz/sequence/walk_model.h"
#include "fuzz/sequence/world.h"
#include "junk/rule_document.h"
#include "quastel_core.h"

namespace quastel::fuzz::sequence {

struct ScanOutcome {
  qs_status status = QS_OK;
  std::vector<Row> rows;
  std::vector<FoundFile> visited;
  std::uint64_t candidates = 0;
  Text current_group;
  // False when the cache may know files that cannot be read, or a root was reached in two ways.
  bool is_certain = true;
};

class ProductRequest {
 public:
  // Writes the rule document that it needs.
  ProductRequest(World& world, Input& input);

  const qs_product_scan_request* record() { return &record_; }
  std::uint32_t kind() const { return record_.kind; }
  bool WritesCache() const;

  ScanOutcome Outcome(World& world, const Disk& disk) const;

 private:
  ScanOutcome JunkOutcomeOf(const Disk& disk) const;
  ScanOutcome WalkOutcomeOf(World& world, const Disk& disk) const;

  std::vector<Text> roots_;
  std::vector<const Char*> root_pointers_;
  junk::RuleNode document_;
  bool is_readable_ = true;  // the rule document
  Text rules_path_;
  std::optional<Text> user_home_;
  std::optional<Text> system_root_;
  qs_product_scan_request record_ = {};
};

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_PRODUCT_REQUEST_H_
