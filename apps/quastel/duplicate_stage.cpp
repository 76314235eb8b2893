#include "duplicate_stage.h"

namespace quastel::client {

// From the last stage to the first. A stage may end in less than a microsecond and leave its timer
// at 0, so that later signs are asked for as well.
const char* DuplicateStage(const qs_product_scan_status& status,
                           const qs_product_scan_performance& performance) {
  if (performance.hash_us != 0 || performance.hashed_items != 0 ||
      performance.group_by_hash_us != 0) {
    return "Finishing";
  }
  if (performance.sample_us != 0 || performance.sample_keys_us != 0 ||
      performance.plan_hashes_us != 0) {
    return "Hashing";
  }
  if (status.path_published != 0 || performance.walk_us != 0) {
    return "Sampling";
  }
  return "Walking";
}

}  // namespace quastel::client
