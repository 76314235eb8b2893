// The large-file scan.

#ifndef QUASTEL_SCAN_LARGE_FILE_SCAN_H_
#define QUASTEL_SCAN_LARGE_FILE_SCAN_H_

#include <cstdint>

#include "base/text.h"
#include "fs/protection.h"
#include "scan/owned_request.h"

namespace quastel {

class ProductScan;

// Whether the report takes the file: large, no paging file, in no protected folder (null: none is).
bool BelongsInLargeFileReport(const Text& path, std::int64_t size,
                              const ProtectedFolders* protection);

// Appends a row for every large file below the request's roots.
qs_status RunLargeFileScan(ProductScan& scan, const OwnedRequest& request);

}  // namespace quastel

#endif  // QUASTEL_SCAN_LARGE_FILE_SCAN_H_
