// The rows that a junk scan must make of a rule document.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_RULE_MODEL_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_RULE_MODEL_H_

#include <vector>

#include "base/text.h"
#include "fuzz/sequence/disk.h"
#include "fuzz/sequence/report.h"
#include "fuzz/sequence/walk_model.h"
#include "junk/rule_document.h"

namespace quastel::fuzz::sequence {

// What a junk scan does.
struct JunkOutcome {
  qs_status status = QS_OK;
  std::vector<Row> rows;
  std::vector<FoundFile> visited;  // in order, as often as they are reached
  Text current_group;
};

JunkOutcome ScanByRules(const Disk& disk, const junk::RuleNode& root);

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_RULE_MODEL_H_
