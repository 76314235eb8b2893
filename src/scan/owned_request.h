// A scan's own copy of what the caller asked for.

#ifndef QUASTEL_SCAN_OWNED_REQUEST_H_
#define QUASTEL_SCAN_OWNED_REQUEST_H_

#include <cstdint>
#include <vector>

#include "base/text.h"

namespace quastel {

enum class ScanKind : std::uint32_t { kJunkRules = 0, kLargeFiles = 1, kDuplicates = 2 };

struct OwnedRequest {
  ScanKind kind = ScanKind::kJunkRules;
  std::vector<Text> roots;
  Text user_home;
  Text system_root;
  bool protect_system = false;
  Text rules_path;
};

// QS_INVALID_ARGUMENT for a request that no scan could start from. What only one kind needs (the
// profile, root and document of a junk scan) is that kind's to check.
qs_status CopyRequest(const qs_product_scan_request* request, OwnedRequest& copy);

}  // namespace quastel

#endif  // QUASTEL_SCAN_OWNED_REQUEST_H_
