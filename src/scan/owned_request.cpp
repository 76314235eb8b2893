#include "scan/owned_request.h"

namespace quastel {
namespace {

constexpr std::uint32_t kKnownSize = 56;
static_assert(sizeof(qs_product_scan_request) == kKnownSize);

constexpr std::uint32_t kLastKind = static_cast<std::uint32_t>(ScanKind::kDuplicates);

}  // namespace

qs_status CopyRequest(const qs_product_scan_request* request, OwnedRequest& copy) {
  if (request == nullptr || request->size < kKnownSize || request->kind > kLastKind) {
    return QS_INVALID_ARGUMENT;
  }
  if (request->root_count > 0 && request->roots == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  copy.kind = static_cast<ScanKind>(request->kind);
  copy.roots.clear();
  for (std::uint64_t i = 0; i < request->root_count; ++i) {
    const TextView root = ViewOf(request->roots[i]);
    if (root.empty()) {
      return QS_INVALID_ARGUMENT;
    }
    copy.roots.emplace_back(root);
  }
  if (copy.kind != ScanKind::kJunkRules && copy.roots.empty()) {
    return QS_INVALID_ARGUMENT;
  }
  copy.user_home = ViewOf(request->user_home);
  copy.system_root = ViewOf(request->system_root);
  copy.protect_system = request->protect_system != 0;
  if (copy.protect_system && (copy.user_home.empty() || copy.system_root.empty())) {
    return QS_INVALID_ARGUMENT;
  }
  copy.rules_path = ViewOf(request->rules_path);
  return QS_OK;
}

}  // namespace quastel
