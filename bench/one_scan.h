// One scan through the public header, as a caller would make it.

#ifndef QUASTEL_BENCH_ONE_SCAN_H_
#define QUASTEL_BENCH_ONE_SCAN_H_

#include <cstdio>
#include <cstdlib>

#include "quastel_core.h"

namespace quastel::bench {

struct ScanOptions {
  std::uint32_t kind = QS_SCAN_KIND_LARGE_FILES;
  const qs_char* root = nullptr;
  const qs_char* user_home = nullptr;    // also where a duplicate scan keeps its cache
  const qs_char* system_root = nullptr;  // with it and the profile, protection is on
  const qs_char* rules_path = nullptr;
};

// Starts a scan on a handle that is kept; a scan that fails ends the program.
class OneScan {
 public:
  OneScan() {
    if (qs_product_scan_create(&scan_) != QS_OK) {
      std::exit(1);
    }
  }
  ~OneScan() { (void)qs_product_scan_destroy(scan_); }
  OneScan(const OneScan&) = delete;
  OneScan& operator=(const OneScan&) = delete;

  qs_status Start(const ScanOptions& options) {
    const qs_char* roots[] = {options.root};
    qs_product_scan_request request = {};
    request.size = sizeof(request);
    request.kind = options.kind;
    request.roots = roots;
    request.root_count = options.root == nullptr ? 0 : 1;
    request.user_home = options.user_home;
    request.system_root = options.system_root;
    request.protect_system =
        options.user_home != nullptr && options.system_root != nullptr ? 1u : 0u;
    request.rules_path = options.rules_path;
    return qs_product_scan_start(scan_, &request);
  }

  void Run(const ScanOptions& options) {
    if (const qs_status status = Start(options); status != QS_OK) {
      std::fprintf(stderr, "a scan of kind %u ended with status %d\n", options.kind,
                   static_cast<int>(status));
      std::exit(1);
    }
  }

  qs_product_scan_performance Figures() {
    qs_product_scan_performance figures = {};
    figures.size = sizeof(figures);
    (void)qs_product_scan_get_performance(scan_, &figures);
    return figures;
  }

  qs_product_scan* get() { return scan_; }

 private:
  qs_product_scan* scan_ = nullptr;
};

}  // namespace quastel::bench

#endif  // QUASTEL_BENCH_ONE_SCAN_H_
