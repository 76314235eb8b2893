#include <atomic>
#include <string>
#include <thread>

#include "scan/scan_fixture.h"

namespace quastel::scan_tests {
namespace {

constexpr unsigned kFolders = 40;
constexpr unsigned kFilesPerFolder = 75;
constexpr unsigned kReaders = 3;

Text NumberText(unsigned number) {
  const std::string digits = std::to_string(10'000 + number).substr(1);
  return Text(digits.begin(), digits.end());
}

// Three thousand files, every third of them large.
std::uint64_t AddTree(SimulatedWindows& machine, const Text& root) {
  std::uint64_t large = 0;
  for (unsigned folder = 0; folder < kFolders; ++folder) {
    for (unsigned file = 0; file < kFilesPerFolder; ++file) {
      const bool is_large = file % 3 == 0;
      machine.AddSizedFile(root + u"\\d" + NumberText(folder) + u"\\f" + NumberText(file) + u".zip",
                           is_large ? kLarge + file : file);
      large += is_large;
    }
  }
  return large;
}

// What one reader saw: the rows as it read them first, and whether counters ever went back.
struct Reader {
  std::vector<Row> rows;
  std::atomic<std::uint64_t> rounds{0};
  std::uint64_t rows_seen_while_running = 0;
};

// One round over every query export.
void ReadEverything(qs_product_scan* scan, Reader& reader, qs_product_scan_status& last) {
  const qs_product_scan_status status = Poll(scan);
  EXPECT_GE(status.files_visited, last.files_visited);
  EXPECT_GE(status.bytes_visited, last.bytes_visited);
  EXPECT_GE(status.total_bytes, last.total_bytes);
  EXPECT_GE(status.item_count, last.item_count);
  last = status;

  const std::uint64_t count = RowCountOf(scan);
  EXPECT_GE(count, status.item_count);
  for (std::uint64_t i = reader.rows.size(); i < count; ++i) {
    reader.rows.push_back(ReadRow(scan, i));
    EXPECT_EQ(reader.rows.back().numbers.item_id, i);
  }
  if (count > 0) {
    EXPECT_EQ(ReadRow(scan, count / 2), reader.rows[count / 2]);
  }
  if (status.state == QS_STATE_RUNNING) {
    reader.rows_seen_while_running = count;
  }
  const qs_product_scan_performance performance = PerformanceOf(scan);
  EXPECT_GE(performance.files_visited, status.files_visited);
  EXPECT_GE(performance.row_count, count);
  CurrentPathOf(scan);
  EXPECT_EQ(CurrentGroupOf(scan), u"");
  ++reader.rounds;
}

// Readers that go on until they are stopped. The scan waits at every folder until each of them has
// finished another round, so that they are certain to see it at work.
class Readers {
 public:
  Readers(SimulatedWindows& machine, qs_product_scan* scan) : machine_(machine) {
    for (Reader& reader : readers_) {
      threads_.emplace_back([this, scan, &reader] {
        qs_product_scan_status last = {};
        while (!stop_) {
          ReadEverything(scan, reader, last);
        }
        ReadEverything(scan, reader, last);
      });
    }
    machine_.SetHook([this](const CallRecord& record) {
      if (record.call == Call::kFindFirstBasic) {
        ++folders_;
        WaitForARound();
      }
    });
  }
  ~Readers() { Stop(); }

  void Stop() {
    stop_ = true;
    for (std::thread& thread : threads_) {
      thread.join();
    }
    threads_.clear();
    machine_.SetHook(nullptr);
  }

  void WaitForARound() {
    for (Reader& reader : readers_) {
      // Two, because the round that is under way may have begun before.
      for (const std::uint64_t before = reader.rounds; reader.rounds < before + 2;) {
        std::this_thread::yield();
      }
    }
  }

  unsigned folders() const { return folders_; }
  const Reader& at(unsigned i) const { return readers_[i]; }

 private:
  SimulatedWindows& machine_;
  Reader readers_[kReaders];
  std::vector<std::thread> threads_;
  std::atomic<bool> stop_{false};
  std::atomic<unsigned> folders_{0};
};

TEST(ScanThreads, Every_query_may_come_from_other_threads_while_the_scan_runs) {
  SimulatedWindows machine;
  const std::uint64_t large = AddTree(machine, u"C:\\data");
  ScanHandle scan;
  Readers readers(machine, scan);
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  readers.WaitForARound();
  readers.Stop();

  const std::vector<Row> final_rows = ReadReport(scan);
  EXPECT_EQ(final_rows.size(), large);
  EXPECT_EQ(readers.folders(), kFolders + 1);
  for (unsigned i = 0; i < kReaders; ++i) {
    EXPECT_EQ(readers.at(i).rows, final_rows) << "rows once appended never change";
    EXPECT_GT(readers.at(i).rows_seen_while_running, 0u);
    EXPECT_GE(readers.at(i).rounds, 2u * kFolders);
  }
}

TEST(ScanThreads, A_cancel_from_another_thread_ends_the_scan_and_keeps_its_rows) {
  SimulatedWindows machine;
  const std::uint64_t large = AddTree(machine, u"C:\\data");
  ScanHandle scan;
  Readers readers(machine, scan);
  std::thread canceller([&] {
    while (Poll(scan).files_visited < 300) {
      std::this_thread::yield();
    }
    EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
  });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_CANCELLED);
  canceller.join();
  readers.Stop();

  EXPECT_EQ(Poll(scan).state, QS_STATE_CANCELLED);
  const std::vector<Row> rows = ReadReport(scan);
  EXPECT_GE(rows.size(), 100u);
  EXPECT_LT(rows.size(), large);
  EXPECT_EQ(readers.at(0).rows, rows);
  EXPECT_EQ(machine.open_handles(), 0u);
}

TEST(ScanThreads, Starts_and_destroys_of_a_running_handle_are_refused_from_every_thread) {
  SimulatedWindows machine;
  AddTree(machine, u"C:\\data");
  ScanHandle scan;
  std::atomic<unsigned> refused{0};
  std::atomic<bool> stop{false};
  std::vector<std::thread> rivals;
  InsideCall(machine, Call::kFindFirstBasic, 1, [&] {
    for (int i = 0; i < 2; ++i) {
      rivals.emplace_back([&] {
        while (!stop) {
          EXPECT_EQ(qs_product_scan_start(scan, nullptr), QS_BUSY);
          EXPECT_EQ(qs_product_scan_destroy(scan), QS_BUSY);
          ++refused;
        }
      });
    }
    while (refused < 100) {
      std::this_thread::yield();
    }
    stop = true;
    for (std::thread& rival : rivals) {
      rival.join();
    }
  });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  EXPECT_GE(refused, 100u);
  EXPECT_EQ(Poll(scan).files_visited, kFolders * kFilesPerFolder);
}

TEST(ScanThreads, Two_handles_scan_at_the_same_time) {
  SimulatedWindows machine;
  const std::uint64_t large_one = AddTree(machine, u"C:\\one");
  machine.AddSizedFile(u"C:\\two\\more.zip", kLarge);
  const std::uint64_t large_two = AddTree(machine, u"C:\\two") + 1;
  ScanHandle one;
  ScanHandle two;
  // Neither goes on before both are at work.
  std::atomic<int> at_work{0};
  machine.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kFindFirstBasic && at_work < 2) {
      ++at_work;
      while (at_work < 2) {
        std::this_thread::yield();
      }
    }
  });
  std::thread other([&] { EXPECT_EQ(two.Start(Request::LargeFiles({u"C:\\two"})), QS_OK); });
  EXPECT_EQ(one.Start(Request::LargeFiles({u"C:\\one"})), QS_OK);
  other.join();
  machine.SetHook(nullptr);
  EXPECT_EQ(RowCountOf(one), large_one);
  EXPECT_EQ(RowCountOf(two), large_two);
  EXPECT_EQ(Poll(one).files_visited, kFolders * kFilesPerFolder);
  EXPECT_EQ(Poll(two).files_visited, kFolders * kFilesPerFolder + 1);
}

TEST(ScanThreads, Progress_and_rows_may_come_from_several_threads_of_a_scan_kind) {
  SimulatedWindows machine;
  OwnKindScan own;
  constexpr std::uint64_t kEach = 1'000;
  EXPECT_EQ(own.Run([](ProductScan& scan, const OwnedRequest&) {
    std::vector<std::thread> workers;
    for (int i = 0; i < 4; ++i) {
      workers.emplace_back([&scan] {
        for (std::uint64_t n = 0; n < kEach; ++n) {
          scan.ReportProgress(u"C:\\file", 2);
          if (n % 10 == 0) {
            scan.AppendRow(RowOf(RowKind::kDuplicate, 1, 2, u"C:\\file"));
            scan.AddPerformanceTime(&qs_product_scan_performance::hash_us, 1'000);
          }
        }
      });
    }
    for (std::thread& worker : workers) {
      worker.join();
    }
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.Poll().files_visited, 4 * kEach);
  EXPECT_EQ(own.Poll().bytes_visited, 8 * kEach);
  EXPECT_EQ(own.Poll().item_count, 4 * kEach / 10);
  EXPECT_EQ(own.Performance().hash_us, 4 * kEach / 10);
  EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>(4 * kEach / 256, 0));
  std::vector<Row> rows = own.Report();
  ASSERT_EQ(rows.size(), 4 * kEach / 10);
  for (std::uint64_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].numbers.item_id, i) << "ids follow the order of the rows";
  }
}

}  // namespace
}  // namespace quastel::scan_tests
