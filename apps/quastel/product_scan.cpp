#include "product_scan.h"

#include <utility>

#include "library_call.h"

namespace quastel::client {
namespace {

constexpr std::size_t kFirstPathCapacity = 512;
constexpr std::size_t kFirstNameCapacity = 128;

void Grow(std::vector<qs_char>& buffer, std::uint64_t needed) {
  if (buffer.size() < needed) {
    buffer.resize(static_cast<std::size_t>(needed));
  }
}

}  // namespace

ProductScan::ProductScan() {
  RequireOk(qs_product_scan_create(&handle_), "qs_product_scan_create");
}

ProductScan::~ProductScan() {
  while (work_.IsStarted() && !work_.WaitFor(std::chrono::milliseconds(10))) {
    Cancel();
  }
  work_.Finish();
  qs_product_scan_destroy(handle_);
}

void ProductScan::Start(ScanRequest request) {
  request_ = std::move(request);
  work_.Start([this] {
    std::vector<const qs_char*> roots;
    roots.reserve(request_.roots.size());
    for (const std::wstring& root : request_.roots) {
      roots.push_back(root.c_str());
    }
    // The library copies all of this before it begins.
    qs_product_scan_request native = {};
    native.size = static_cast<std::uint32_t>(sizeof native);
    native.kind = request_.kind;
    native.roots = roots.data();
    native.root_count = roots.size();
    native.user_home = request_.UserHome();
    if (request_.protection) {
      native.protect_system = request_.kind != QS_SCAN_KIND_JUNK_RULES ? 1 : 0;
      native.system_root = request_.protection->system_root.c_str();
    }
    if (!request_.rules_path.empty()) {
      native.rules_path = request_.rules_path.c_str();
    }
    return qs_product_scan_start(handle_, &native);
  });
}

void ProductScan::Cancel() {
  qs_product_scan_cancel(handle_);
}

qs_product_scan_status ProductScan::Poll() const {
  qs_product_scan_status status = {};
  RequireOk(qs_product_scan_poll(handle_, &status), "qs_product_scan_poll");
  return status;
}

qs_product_scan_performance ProductScan::Performance() const {
  qs_product_scan_performance performance = {};
  performance.size = static_cast<std::uint32_t>(sizeof performance);
  RequireOk(qs_product_scan_get_performance(handle_, &performance),
            "qs_product_scan_get_performance");
  return performance;
}

void ProductScan::ReadCurrentPath(std::wstring& text) const {
  text.resize(std::max(text.capacity(), kFirstPathCapacity));
  for (;;) {
    std::uint64_t needed = 0;
    // A string has room for the terminator behind its last character.
    const qs_status status =
        qs_product_scan_current_path(handle_, text.data(), text.size() + 1, &needed);
    if (status == QS_OK) {
      text.resize(static_cast<std::size_t>(needed - 1));
      return;
    }
    if (status != QS_BUFFER_TOO_SMALL) {
      RequireOk(status, "qs_product_scan_current_path");
    }
    // The path changes while the scan runs, so a longer one may have come by the next call.
    text.resize(static_cast<std::size_t>(needed));
  }
}

std::uint64_t ProductScan::RowCount() const {
  std::uint64_t count = 0;
  RequireOk(qs_product_scan_report_count(handle_, &count), "qs_product_scan_report_count");
  return count;
}

std::uint64_t ProductScan::ParentGroupId(std::uint64_t index) const {
  std::uint64_t id = 0;
  RequireOk(qs_product_scan_report_row_parent_group_id(handle_, index, &id),
            "qs_product_scan_report_row_parent_group_id");
  return id;
}

RowReader::RowReader(const ProductScan& scan)
    : scan_(scan),
      path_(kFirstPathCapacity),
      name_(kFirstNameCapacity),
      title_(kFirstNameCapacity),
      location_(kFirstPathCapacity) {}

void RowReader::Read(std::uint64_t index, ScanRow& row) {
  std::uint64_t path_needed = 0;
  std::uint64_t name_needed = 0;
  std::uint64_t title_needed = 0;
  std::uint64_t location_needed = 0;
  const auto read = [&] {
    return qs_product_scan_report_row(scan_.handle_, index, path_.data(), path_.size(),
                                      &path_needed, name_.data(), name_.size(), &name_needed,
                                      title_.data(), title_.size(), &title_needed, location_.data(),
                                      location_.size(), &location_needed, &row.numbers);
  };
  qs_status status = read();
  if (status == QS_BUFFER_TOO_SMALL) {
    // A row never changes its texts, so that the sizes just learned are right for the second call.
    Grow(path_, path_needed);
    Grow(name_, name_needed);
    Grow(title_, title_needed);
    Grow(location_, location_needed);
    status = read();
  }
  RequireOk(status, "qs_product_scan_report_row");
  row.path.assign(path_.data(), static_cast<std::size_t>(path_needed - 1));
  row.name.assign(name_.data(), static_cast<std::size_t>(name_needed - 1));
  row.title.assign(title_.data(), static_cast<std::size_t>(title_needed - 1));
  row.location.assign(location_.data(), static_cast<std::size_t>(location_needed - 1));
}

}  // namespace quastel::client
