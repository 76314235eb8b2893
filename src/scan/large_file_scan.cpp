#include "scan/large_file_scan.h"

#include <optional>
#include <vector>

#include "base/ascii.h"
#include "fs/enumeration.h"
#include "fs/protection.h"
#include "scan/large_file_class.h"
#include "scan/product_scan.h"
#include "scan/root_filter.h"

namespace quastel {
namespace {

struct LargeFileContext {
  ProductScan& scan;
  const ProtectedFolders* protection = nullptr;
  ReportRow row;  // kept, with the room of its texts
};

TextView FolderTextOf(TextView path) {
  const std::size_t last = LastSeparator(path);
  return last == TextView::npos ? TextView() : path.substr(0, last);
}

// The rest of a row whose path is there.
void FillRow(ReportRow& row, std::int64_t size, std::uint64_t modified, const Char* name) {
  const LargeFileCategory category = ClassifyLargeFile(row.path);
  row.name = name;
  row.title = GroupWordOf(category);
  row.location = FolderTextOf(row.path);
  row.group_id = static_cast<std::uint64_t>(category) + 1;
  row.kind = RowKind::kLargeFile;
  row.size = size;
  row.modified = modified;
  row.deletable = true;
  row.large_class = category;
}

void OnLargeFileFound(void* user, const Char* path, std::uint64_t size, std::uint64_t last_write,
                      const Char* name) {
  auto& context = *static_cast<LargeFileContext*>(user);
  const auto signed_size = static_cast<std::int64_t>(size);
  context.scan.ReportProgress(path, signed_size);
  // Most files end here, before their path is copied.
  if (!IsLargeFile(signed_size)) {
    return;
  }
  // The walk keeps out of protected folders, so that the name says whether the file is one. A long
  // path may end in another name than the one that was listed, and it is the path that is reported.
  if (IsIgnoredFile(path) ||
      (context.protection != nullptr && context.protection->ContainsFile(path, name))) {
    return;
  }
  context.row.path = path;
  FillRow(context.row, signed_size, last_write, name);
  context.scan.AppendRow(context.row);
}

}  // namespace

qs_status RunLargeFileScan(ProductScan& scan, const OwnedRequest& request) {
  std::vector<Text> roots;
  {
    const PerfTimer timer(scan, &qs_product_scan_performance::filter_roots_us);
    roots = FilterScanRoots(request.roots);
  }

  const PerfTimer timer(scan, &qs_product_scan_performance::walk_us);
  std::optional<ProtectedFolders> protection;
  if (request.protect_system) {
    protection.emplace(request.system_root, request.user_home);
  }
  LargeFileContext context = {scan, protection ? &*protection : nullptr, {}};
  const FileWalkOptions options = {.pattern = {},
                                   .recursive = true,
                                   .protection = context.protection,
                                   .cancel = scan.cancel_flag()};
  for (const Text& root : roots) {
    const qs_status status = EnumerateFiles(root, options, OnLargeFileFound, &context);
    if (status != QS_OK) {
      return status;
    }
  }
  return QS_OK;
}

}  // namespace quastel
