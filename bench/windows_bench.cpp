// Does one piece of work after the other, as its standard input asks: WORK FOLDER [PROFILE]. Each
// is answered by one line of JSON when it is done. Whoever asks measures what it cost; both sides
// of a ratio are asked for in turn, in one process.

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "cancel_moments.h"
#include "one_scan.h"
#include "processors_seen.h"
#include "yardsticks.h"

namespace {

using quastel::bench::Counts;
using quastel::bench::OneScan;
using quastel::bench::ScanOptions;

struct Request {
  std::string work;
  std::wstring folder;
  std::wstring profile;  // empty: no cache
};

struct Answer {
  Counts counts;
  qs_product_scan_performance figures = {};
  std::vector<double> latencies_ms = {};
};

std::wstring Widen(const std::string& text) {
  return std::wstring(text.begin(), text.end());
}

ScanOptions OptionsFor(const Request& request, std::uint32_t kind) {
  ScanOptions options;
  options.kind = kind;
  options.root = request.folder.c_str();
  options.user_home = request.profile.empty() ? nullptr : request.profile.c_str();
  return options;
}

Answer Walk(const Request& request) {
  Answer answer;
  const auto count = [](void* user, const qs_char*, uint64_t, uint64_t, const qs_char*) {
    ++*static_cast<std::uint64_t*>(user);
  };
  (void)qs_enumerate_files(request.folder.c_str(), nullptr, 1, count, &answer.counts.files,
                           nullptr);
  return answer;
}

void ReadRows(qs_product_scan* scan) {
  std::uint64_t rows = 0;
  (void)qs_product_scan_report_count(scan, &rows);
  std::vector<qs_char> texts(4 * 1024);
  for (std::uint64_t i = 0; i < rows; ++i) {
    qs_product_scan_row row = {};
    qs_char* const text = texts.data();
    (void)qs_product_scan_report_row(scan, i, text, 1024, nullptr, text + 1024, 1024, nullptr,
                                     text + 2048, 1024, nullptr, text + 3072, 1024, nullptr, &row);
  }
}

Answer LargeFiles(const Request& request) {
  OneScan scan;
  ScanOptions options = OptionsFor(request, QS_SCAN_KIND_LARGE_FILES);
  options.user_home = L"C:\\Users\\someone";
  options.system_root = L"C:\\";
  scan.Run(options);
  ReadRows(scan.get());
  return {.counts = {}, .figures = scan.Figures()};
}

Answer Duplicates(const Request& request) {
  OneScan scan;
  scan.Run(OptionsFor(request, QS_SCAN_KIND_DUPLICATES));
  return {.counts = {}, .figures = scan.Figures()};
}

// The same with this many workers.
template <DWORD workers>
Answer DuplicatesBy(const Request& request) {
  const quastel::bench::ProcessorsSeen seen(workers);
  return Duplicates(request);
}

// The same with a caller that looks on every 10 ms.
Answer PolledDuplicates(const Request& request) {
  OneScan scan;
  std::atomic<bool> ended{false};
  std::thread caller([&] {
    while (!ended) {
      qs_product_scan_status status = {};
      (void)qs_product_scan_poll(scan.get(), &status);
      qs_char path[1024];
      (void)qs_product_scan_current_path(scan.get(), path, 1024, nullptr);
      Sleep(10);
    }
  });
  scan.Run(OptionsFor(request, QS_SCAN_KIND_DUPLICATES));
  ended = true;
  caller.join();
  return {.counts = {}, .figures = scan.Figures()};
}

// The rules lie beside the folders that they name.
std::wstring RulesIn(const Request& request) {
  return request.folder + L"\\rules.xml";
}

ScanOptions JunkOptions(const Request& request, const std::wstring& rules) {
  ScanOptions options;
  options.kind = QS_SCAN_KIND_JUNK_RULES;
  options.user_home = request.folder.c_str();
  options.system_root = L"C:\\";
  options.rules_path = rules.c_str();
  return options;
}

Answer Junk(const Request& request) {
  OneScan scan;
  const std::wstring rules = RulesIn(request);
  scan.Run(JunkOptions(request, rules));
  return {.counts = {}, .figures = scan.Figures()};
}

Answer CancelScan(const ScanOptions& options, double span = 0) {
  OneScan scan;
  const quastel::bench::CancellableScan cancellable = {
      .run = [&] { (void)scan.Start(options); },
      .cancel = [&] { (void)qs_product_scan_cancel(scan.get()); },
      .is_running =
          [&] {
            qs_product_scan_status status = {};
            (void)qs_product_scan_poll(scan.get(), &status);
            return status.state == QS_STATE_RUNNING;
          },
  };
  return {.counts = {},
          .figures = {},
          .latencies_ms = quastel::bench::CancelLatencies(cancellable, span)};
}

template <std::uint32_t kind>
Answer CancelProduct(const Request& request) {
  return CancelScan(OptionsFor(request, kind));
}

Answer CancelJunk(const Request& request) {
  const std::wstring rules = RulesIn(request);
  return CancelScan(JunkOptions(request, rules));
}

// The whole of it need not be waited for: the moments lie in the first two seconds.
Answer CancelInHugeFile(const Request& request) {
  return CancelScan(OptionsFor(request, QS_SCAN_KIND_DUPLICATES), 2000);
}

Answer CancelSession(const Request& request) {
  qs_session* session = nullptr;
  if (qs_session_create(&session) != QS_OK) {
    std::exit(1);
  }
  const quastel::bench::CancellableScan cancellable = {
      .run =
          [&] {
            (void)qs_session_start_scan(session, request.folder.c_str(), QS_SESSION_ALL_FILES);
          },
      .cancel = [&] { (void)qs_session_cancel_scan(session); },
      .is_running =
          [&] {
            qs_session_scan_status status = {};
            (void)qs_session_poll_scan(session, &status);
            return status.state == QS_STATE_RUNNING;
          },
  };
  Answer answer;
  answer.latencies_ms = quastel::bench::CancelLatencies(cancellable, 0);
  (void)qs_session_destroy(session);
  return answer;
}

// Lists everything as duplicates do not matter: a scan of large files, whose rows all go.
Answer CleanRows(const Request& request) {
  OneScan scan;
  scan.Run(OptionsFor(request, QS_SCAN_KIND_LARGE_FILES));
  Answer answer = {.counts = {}, .figures = scan.Figures()};
  std::vector<std::uint64_t> ids(static_cast<std::size_t>(answer.figures.item_count));
  for (std::size_t i = 0; i < ids.size(); ++i) {
    ids[i] = i;
  }
  (void)qs_product_scan_start_clean(scan.get(), ids.data(), ids.size());
  qs_product_clean_status status = {};
  (void)qs_product_scan_poll_clean(scan.get(), &status);
  answer.counts.files = status.processed;
  return answer;
}

// Wine keeps new threads to the processors that the process began with, so it has to be told.
Answer UseAllProcessors(const Request&) {
  DWORD_PTR of_process = 0;
  DWORD_PTR of_system = 0;
  if (!GetProcessAffinityMask(GetCurrentProcess(), &of_process, &of_system) ||
      !SetProcessAffinityMask(GetCurrentProcess(), of_system)) {
    std::fprintf(stderr, "the process cannot leave its processor\n");
    std::exit(1);
  }
  return {};
}

struct Work {
  const char* name;
  Answer (*perform)(const Request& request);
};

template <quastel::bench::Counts (*yardstick)(const std::wstring& root)>
Answer Yardstick(const Request& request) {
  return {.counts = yardstick(request.folder)};
}

constexpr Work kWorks[] = {
    {"bare", Yardstick<quastel::bench::BareLoop>},
    {"stages", Yardstick<quastel::bench::ThreeStages>},
    {"bytes", Yardstick<quastel::bench::ReadBytes>},
    {"delete", Yardstick<quastel::bench::DeleteFiles>},
    {"walk", Walk},
    {"large", LargeFiles},
    {"duplicates", Duplicates},
    {"duplicates-by-1", DuplicatesBy<1>},
    {"duplicates-by-2", DuplicatesBy<2>},
    {"polled", PolledDuplicates},
    {"junk", Junk},
    {"cancel-large", CancelProduct<QS_SCAN_KIND_LARGE_FILES>},
    {"cancel-duplicates", CancelProduct<QS_SCAN_KIND_DUPLICATES>},
    {"cancel-junk", CancelJunk},
    {"cancel-huge", CancelInHugeFile},
    {"cancel-session", CancelSession},
    {"clean", CleanRows},
    {"all-processors", UseAllProcessors},
};

Answer Perform(const Request& request) {
  for (const Work& work : kWorks) {
    if (request.work == work.name) {
      return work.perform(request);
    }
  }
  std::fprintf(stderr, "no such work: %s\n", request.work.c_str());
  std::exit(2);
}

void Print(const Answer& answer) {
  const qs_product_scan_performance& figures = answer.figures;
  const std::uint64_t in_stages =
      figures.filter_roots_us + figures.walk_us + figures.group_by_size_us + figures.sample_us +
      figures.sample_keys_us + figures.plan_hashes_us + figures.hash_us + figures.group_by_hash_us;
  std::ostringstream line;
  line << "{\"files\": " << answer.counts.files << ", \"opens\": " << answer.counts.opens
       << ", \"bytes\": " << answer.counts.bytes << ", \"visited\": " << figures.files_visited
       << ", \"rows\": " << figures.row_count << ", \"sampled\": " << figures.sampled_items
       << ", \"hashed\": " << figures.hashed_items << ", \"elapsed_us\": " << figures.elapsed_us
       << ", \"walk_us\": " << figures.walk_us << ", \"sample_us\": " << figures.sample_us
       << ", \"hash_us\": " << figures.hash_us << ", \"stages_us\": " << in_stages
       << ", \"latencies_ms\": [";
  for (std::size_t i = 0; i < answer.latencies_ms.size(); ++i) {
    line << (i == 0 ? "" : ", ") << answer.latencies_ms[i];
  }
  std::cout << line.str() << "]}" << std::endl;
}

}  // namespace

int main() {
  std::cout << "{\"process\": " << GetCurrentProcessId() << "}" << std::endl;
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    Request request;
    std::string folder;
    std::string profile;
    words >> request.work >> folder >> profile;
    request.folder = Widen(folder);
    request.profile = Widen(profile);
    Print(Perform(request));
  }
  return 0;
}
