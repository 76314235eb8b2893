// window_worker FOLDER SECONDS [--recycle] [NAME...]
// How a program with a window uses the library, without the window: a worker thread scans and
// cleans, while the thread that would own the window polls, shows rows and cancels. Lists the large
// files below FOLDER; after SECONDS somebody presses Cancel. Each NAME is a row that somebody has
// ticked: the files of that name are deleted for good, or go to the Recycle Bin with --recycle.
// docs/getting-started.md explains the pieces between the marks in square brackets.
#include <quastel_core.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;

// [errors]
// What to tell a person. Of the other statuses each means a mistake in the program.
const char* Sentence(qs_status status) {
  switch (status) {
    case QS_OK:
      return "done";
    case QS_CANCELLED:
      return "cancelled";
    case QS_FAILED:
      return "it failed; what was found or deleted until then stays";
    default:
      return "the program asked for something that makes no sense";
  }
}
// [errors]

// [rows]
struct Row {
  std::wstring path;
  std::wstring category;
  qs_product_scan_row numbers{};
};

// Up to `count` rows from row `first` on. Good for a list that shows a part at a time, also while
// the scan runs.
std::vector<Row> ReadRows(qs_product_scan* scan, std::uint64_t first, std::size_t count) {
  std::vector<Row> rows;
  std::wstring path(260, L'\0');
  std::wstring category(32, L'\0');
  while (rows.size() < count) {
    std::uint64_t path_needed = 0;
    std::uint64_t category_needed = 0;
    qs_product_scan_row numbers{};
    const qs_status status = qs_product_scan_report_row(
        scan, first + rows.size(), path.data(), path.size(), &path_needed, nullptr, 0, nullptr,
        category.data(), category.size(), &category_needed, nullptr, 0, nullptr, &numbers);
    if (status == QS_NOT_FOUND)
      break;  // there are no more rows
    // Two texts are left out by null buffers, so the answer is "too small" even when all is well.
    if (status != QS_BUFFER_TOO_SMALL)
      throw std::runtime_error(Sentence(status));
    if (path_needed > path.size() || category_needed > category.size()) {
      path.resize(std::max<std::size_t>(path.size(), path_needed));
      category.resize(std::max<std::size_t>(category.size(), category_needed));
      continue;  // the same row again, now with room for it
    }
    // What is needed counts the NUL at the end.
    rows.push_back(
        {path.substr(0, path_needed - 1), category.substr(0, category_needed - 1), numbers});
  }
  return rows;
}
// [rows]

// [worker]
// What stands behind a window. Every member is called on the window's thread, and none but the
// destructor waits; only the task that Start gets runs on the worker. It brings copies of what it
// uses.
class Worker {
 public:
  Worker() {
    if (const qs_status status = qs_product_scan_create(&scan_); status != QS_OK)
      throw std::runtime_error(Sentence(status));
  }
  // The handle has to outlive every call on it, so the worker ends first. A cancel that comes
  // before the work has begun does nothing: it is repeated.
  ~Worker() {
    while (IsWorking()) {
      Cancel();
      std::this_thread::sleep_for(10ms);
    }
    qs_product_scan_destroy(scan_);
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  void Start(std::function<qs_status()> task) {
    cancel_ = false;
    work_ = std::async(std::launch::async, std::move(task));
  }
  bool IsWorking() const {
    return work_.valid() && work_.wait_for(0s) != std::future_status::ready;
  }
  qs_status Finish() { return work_.get(); }  // once it is not working any more

  void Cancel() {
    cancel_ = true;  // for tasks of our own
    qs_product_scan_cancel(scan_);
    qs_product_scan_cancel_clean(scan_);
  }
  bool IsCancelled() const { return cancel_; }  // the one member that a task may call
  qs_product_scan* scan() const { return scan_; }

 private:
  qs_product_scan* scan_ = nullptr;
  std::atomic<bool> cancel_ = false;
  std::future<qs_status> work_;
};
// [worker]

std::wstring Variable(const wchar_t* name) {
  const wchar_t* value = _wgetenv(name);
  if (value == nullptr || *value == L'\0')
    throw std::runtime_error("a variable of the environment is not set");
  return value;
}

// [scan]
// Runs on the worker and blocks until the scan has ended.
qs_status ScanLargeFiles(qs_product_scan* scan, const std::wstring& folder,
                         const std::wstring& system_root, const std::wstring& user_home) {
  const qs_char* const roots[] = {folder.c_str()};
  qs_product_scan_request request{};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = roots;
  request.root_count = 1;
  request.protect_system = 1;
  request.system_root = system_root.c_str();
  request.user_home = user_home.c_str();
  return qs_product_scan_start(scan, &request);
}
// [scan]

// [progress]
// What a timer of the window does, some ten times a second.
void ShowScan(qs_product_scan* scan) {
  qs_product_scan_status seen{};
  if (qs_product_scan_poll(scan, &seen) == QS_OK)
    std::printf("%llu files, %llu of them large\n",
                static_cast<unsigned long long>(seen.files_visited),
                static_cast<unsigned long long>(seen.item_count));
}

void ShowClean(qs_product_scan* scan) {
  qs_product_clean_detail seen{};
  seen.size = sizeof(seen);  // a record that begins with its size is told it before every call
  if (qs_product_scan_poll_clean_detailed(scan, &seen) == QS_OK)
    std::printf("%llu of %llu: %llu deleted, %llu left alone, %llu bytes freed\n",
                static_cast<unsigned long long>(seen.processed),
                static_cast<unsigned long long>(seen.requested),
                static_cast<unsigned long long>(seen.deleted),
                static_cast<unsigned long long>(seen.failed),
                static_cast<unsigned long long>(seen.bytes_freed));
}
// [progress]

// [recycle]
// Runs on the worker. The cleans of the library delete for good; for the Recycle Bin the rows go
// one by one, each only while it is what the scan saw.
qs_status Recycle(const Worker& worker, const std::vector<Row>& rows) {
  std::size_t moved = 0;
  for (const Row& row : rows) {
    if (worker.IsCancelled())
      return QS_CANCELLED;
    moved += qs_move_snapshot_to_recycle_bin(row.path.c_str(), row.numbers.size,
                                             static_cast<std::int64_t>(row.numbers.modified)) != 0;
  }
  return moved == rows.size() ? QS_OK : QS_FAILED;
}
// [recycle]

// The loop of events: a timer until the work has ended, and a button that is pressed at a time.
qs_status Wait(Worker& worker, std::chrono::steady_clock::time_point cancel_at,
               void (*show)(qs_product_scan*)) {
  while (worker.IsWorking()) {
    show(worker.scan());
    if (std::chrono::steady_clock::now() >= cancel_at)
      worker.Cancel();
    std::this_thread::sleep_for(50ms);
  }
  show(worker.scan());
  return worker.Finish();
}

std::wstring NameOf(const std::wstring& path) {
  return path.substr(path.find_last_of(L'\\') + 1);
}

void Run(const std::wstring& folder, std::chrono::seconds limit, bool recycle,
         const std::vector<std::wstring>& ticked) {
  const std::wstring system_root = Variable(L"SystemDrive") + L"\\";
  const std::wstring user_home = Variable(L"USERPROFILE");
  Worker worker;
  worker.Start([scan = worker.scan(), folder, system_root, user_home] {
    return ScanLargeFiles(scan, folder, system_root, user_home);
  });
  const qs_status scanned = Wait(worker, std::chrono::steady_clock::now() + limit, ShowScan);
  std::printf("scan: %s\n", Sentence(scanned));

  // [pages]
  constexpr std::size_t kPage = 100;
  std::vector<Row> chosen;
  std::vector<Row> page;
  for (std::uint64_t first = 0; !(page = ReadRows(worker.scan(), first, kPage)).empty();
       first += page.size()) {
    for (const Row& row : page) {
      std::printf("%14lld  %-11ls  %ls\n", static_cast<long long>(row.numbers.size),
                  row.category.c_str(), row.path.c_str());
      if (row.numbers.deletable != 0 &&
          std::find(ticked.begin(), ticked.end(), NameOf(row.path)) != ticked.end())
        chosen.push_back(row);
    }
  }
  // [pages]
  if (chosen.empty())
    return;

  if (recycle) {
    worker.Start([&worker, chosen] { return Recycle(worker, chosen); });
    std::printf("recycle: %s\n", Sentence(Wait(worker, std::chrono::steady_clock::time_point::max(),
                                               [](qs_product_scan*) {})));
    return;
  }
  // [clean]
  std::vector<std::uint64_t> ids;
  for (const Row& row : chosen)
    ids.push_back(row.numbers.item_id);
  worker.Start([scan = worker.scan(), ids] {
    return qs_product_scan_start_clean(scan, ids.data(), ids.size());
  });
  // [clean]
  std::printf("clean: %s\n",
              Sentence(Wait(worker, std::chrono::steady_clock::time_point::max(), ShowClean)));
}

}  // namespace

int wmain(int argc, wchar_t** argv) try {
  if (argc < 3)
    throw std::runtime_error("usage: window_worker FOLDER SECONDS [--recycle] [NAME...]");
  std::vector<std::wstring> ticked(argv + 3, argv + argc);
  const bool recycle = !ticked.empty() && ticked.front() == L"--recycle";
  Run(argv[1], std::chrono::seconds(std::stoul(argv[2])), recycle, ticked);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 2;
}
