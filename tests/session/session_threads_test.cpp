#include <atomic>
#include <chrono>
#include <future>
#include <string>
#include <thread>

#include "session/session_fixture.h"

namespace quastel::session_tests {
namespace {

constexpr unsigned kFolders = 20;
constexpr unsigned kFilesPerFolder = 50;
constexpr unsigned kFiles = kFolders * kFilesPerFolder;
constexpr unsigned kReaders = 2;

void AddTree(SimulatedWindows& machine, const Text& root) {
  for (unsigned folder = 0; folder < kFolders; ++folder) {
    for (unsigned file = 0; file < kFilesPerFolder; ++file) {
      machine.AddSizedFile(root + u"\\d" + Wide(std::to_string(10 + folder)) + u"\\f" +
                               Wide(std::to_string(100 + file)),
                           file + 1);
    }
  }
}

struct Reader {
  std::vector<Row> rows;  // as they were read first, all unmarked
  ScanBlock last_scan;
  CleanBlock last_clean;
  std::uint64_t last_marks = 0;
  std::uint64_t running_scans = 0;  // rounds that saw one
  std::uint64_t running_cleans = 0;
  std::atomic<std::uint64_t> rounds{0};
};

// One round over every query of a session that is scanned once and then cleaned once, all rows in
// their order.
void ReadEverything(qs_session* session, Reader& reader) {
  const ScanBlock scan = ScanOf(session);
  EXPECT_GE(scan.files_visited, reader.last_scan.files_visited);
  EXPECT_GE(scan.bytes_visited, reader.last_scan.bytes_visited);
  EXPECT_GE(scan.row_count, reader.last_scan.row_count);
  reader.last_scan = scan;
  reader.running_scans += scan.state == QS_STATE_RUNNING;

  const std::uint64_t count = RowCountOf(session);
  EXPECT_GE(count, scan.row_count);
  for (std::uint64_t i = reader.rows.size(); i < count; ++i) {
    reader.rows.push_back(ReadRow(session, i));
    reader.rows.back().deleted = 0;
    EXPECT_EQ(reader.rows.back().path.substr(0, 5), u"C:\\t\\");
  }

  const CleanBlock clean = CleanOf(session);
  EXPECT_GE(clean.processed, reader.last_clean.processed);
  reader.last_clean = clean;
  reader.running_cleans += clean.state == QS_STATE_RUNNING;
  // What counts as deleted is marked, in the order of the clean. The scan may have ended and the
  // clean begun since the rows were counted.
  if (clean.processed > 0 && clean.processed <= reader.rows.size()) {
    Row row = ReadRow(session, clean.processed - 1);
    EXPECT_EQ(row.deleted, 1u);
    row.deleted = 0;
    EXPECT_EQ(row, reader.rows[clean.processed - 1]) << "nothing of a row changes but its mark";
  }
  CurrentPathOf(session);
  ++reader.rounds;
}

// Readers that go on until they are stopped. Whoever works waits now and then until each of them
// has finished another round, so that they are certain to see it at work.
class Readers {
 public:
  Readers(SimulatedWindows& machine, qs_session* session) : machine_(machine) {
    for (Reader& reader : readers_) {
      threads_.emplace_back([this, session, &reader] {
        while (!stop_) {
          ReadEverything(session, reader);
        }
        ReadEverything(session, reader);
      });
    }
    machine_.SetHook([this](const CallRecord& record) {
      if (record.call == Call::kFindFirstBasic ||
          (record.call == Call::kRemoveFile && ++removals_ % kFilesPerFolder == 0)) {
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

  const Reader& at(unsigned i) const { return readers_[i]; }

 private:
  SimulatedWindows& machine_;
  Reader readers_[kReaders];
  std::vector<std::thread> threads_;
  std::atomic<bool> stop_{false};
  std::atomic<std::uint64_t> removals_{0};
};

TEST(SessionThreads, Every_query_may_come_from_other_threads_during_a_scan_and_a_clean) {
  SimulatedWindows machine;
  AddTree(machine, u"C:\\t");
  SessionHandle session;
  Readers readers(machine, session);
  EXPECT_EQ(session.Scan(u"C:\\t"), QS_OK);
  EXPECT_EQ(RowCountOf(session), kFiles);
  EXPECT_EQ(session.Clean(UpTo(kFiles)), QS_OK);
  readers.WaitForARound();
  readers.Stop();

  std::vector<Row> rows = ReadReport(session);
  for (Row& row : rows) {
    EXPECT_EQ(row.deleted, 1u);
    row.deleted = 0;
  }
  for (unsigned i = 0; i < kReaders; ++i) {
    EXPECT_EQ(readers.at(i).rows, rows);
    EXPECT_EQ(readers.at(i).last_scan.state, QS_STATE_DONE);
    EXPECT_EQ(readers.at(i).last_scan.row_count, kFiles);
    EXPECT_EQ(readers.at(i).last_clean, Ended(QS_OK, kFiles, kFiles));
    EXPECT_GE(readers.at(i).running_scans, kFolders);
    EXPECT_GE(readers.at(i).running_cleans, kFolders);
  }
}

TEST(SessionThreads, A_cancel_from_another_thread_ends_a_scan_and_keeps_its_rows) {
  SimulatedWindows machine;
  AddTree(machine, u"C:\\t");
  SessionHandle session;
  Readers readers(machine, session);
  std::thread canceller([&] {
    while (ScanOf(session).files_visited < 100) {
      std::this_thread::yield();
    }
    EXPECT_EQ(qs_session_cancel_scan(session), QS_OK);
  });
  EXPECT_EQ(session.Scan(u"C:\\t"), QS_CANCELLED);
  canceller.join();
  readers.Stop();
  const ScanBlock scan = ScanOf(session);
  EXPECT_EQ(scan.state, QS_STATE_CANCELLED);
  EXPECT_GE(scan.files_visited, 100u);
  EXPECT_LT(scan.files_visited, kFiles);
  // A file that is under way when the cancel comes is counted and not kept.
  EXPECT_LE(scan.files_visited - scan.row_count, 1u);
  EXPECT_EQ(machine.open_handles(), 0u);
}

TEST(SessionThreads, A_cancel_from_another_thread_ends_a_clean_between_two_files) {
  SimulatedWindows machine;
  AddTree(machine, u"C:\\t");
  SessionHandle session;
  ASSERT_EQ(session.Scan(u"C:\\t"), QS_OK);
  const std::size_t nodes = machine.node_count();
  Readers readers(machine, session);
  std::thread canceller([&] {
    while (CleanOf(session).processed < 100) {
      std::this_thread::yield();
    }
    EXPECT_EQ(qs_session_cancel_clean(session), QS_OK);
  });
  EXPECT_EQ(session.Clean(UpTo(kFiles)), QS_CANCELLED);
  canceller.join();
  readers.Stop();
  const CleanBlock clean = CleanOf(session);
  EXPECT_EQ(clean, Ended(QS_CANCELLED, kFiles, clean.processed));
  EXPECT_GE(clean.processed, 100u);
  EXPECT_LT(clean.processed, kFiles);
  EXPECT_EQ(MarksOf(session), UpTo(clean.processed));
  EXPECT_EQ(machine.node_count(), nodes - clean.processed);
}

TEST(SessionThreads, Rivals_are_refused_from_every_thread_during_a_scan_and_a_clean) {
  SimulatedWindows machine;
  AddTree(machine, u"C:\\t");
  SessionHandle session;
  std::atomic<unsigned> refused{0};
  const auto refuse_rivals = [&] {
    std::vector<std::thread> rivals;
    for (int i = 0; i < 2; ++i) {
      rivals.emplace_back([&] {
        for (int n = 0; n < 50; ++n) {
          EXPECT_EQ(session.Scan(u"C:\\"), QS_BUSY);
          EXPECT_EQ(session.Clean({0}), QS_BUSY);
          EXPECT_EQ(qs_session_destroy(session), QS_BUSY);
          ++refused;
        }
      });
    }
    for (std::thread& rival : rivals) {
      rival.join();
    }
  };
  InsideCall(machine, Call::kFindFirstBasic, 1, refuse_rivals);
  EXPECT_EQ(session.Scan(u"C:\\t"), QS_OK);
  InsideCall(machine, Call::kRemoveFile, 1, refuse_rivals);
  EXPECT_EQ(session.Clean(UpTo(kFiles)), QS_OK);
  machine.SetHook(nullptr);
  EXPECT_EQ(refused, 200u);
  EXPECT_EQ(ScanOf(session).files_visited, kFiles);
  EXPECT_EQ(CleanOf(session), Ended(QS_OK, kFiles, kFiles));
}

// Whoever comes first excludes the others; each that was let in has done its whole work.
TEST(SessionThreads, Scans_and_cleans_that_race_exclude_each_other) {
  SimulatedWindows machine;
  for (int i = 10; i < 30; ++i) {
    machine.AddSizedFile(u"C:\\t\\f" + Wide(std::to_string(i)), 1);
  }
  SessionHandle session;
  ASSERT_EQ(session.Scan(u"C:\\t"), QS_OK);
  std::atomic<std::uint64_t> scanned{0};
  std::atomic<int> inside{0};
  machine.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kFindFirstBasic) {
      EXPECT_EQ(++inside, 1);
      std::this_thread::yield();
      --inside;
    }
  });
  std::vector<std::thread> rivals;
  for (int i = 0; i < 3; ++i) {
    rivals.emplace_back([&] {
      for (int n = 0; n < 200; ++n) {
        const qs_status scan = session.Scan(u"C:\\t");
        EXPECT_TRUE(scan == QS_OK || scan == QS_BUSY) << scan;
        scanned += scan == QS_OK;
        const qs_status clean = session.Clean({});
        EXPECT_TRUE(clean == QS_OK || clean == QS_BUSY) << clean;
      }
    });
  }
  for (std::thread& rival : rivals) {
    rival.join();
  }
  machine.SetHook(nullptr);
  EXPECT_GT(scanned, 0u);
  EXPECT_EQ(ScanOf(session), (ScanBlock{QS_STATE_DONE, 20, 20, 20, QS_OK}));
  EXPECT_EQ(session.Clean(UpTo(20)), QS_OK);
}

TEST(SessionThreads, Two_sessions_scan_and_clean_at_the_same_time) {
  SimulatedWindows machine;
  AddTree(machine, u"C:\\t");
  AddTree(machine, u"C:\\u");
  SessionHandle one;
  SessionHandle two;
  const auto work = [](const SessionHandle& session, const Text& root) {
    EXPECT_EQ(session.Scan(root), QS_OK);
    EXPECT_EQ(session.Clean(UpTo(kFiles)), QS_OK);
  };
  std::thread other([&] { work(two, u"C:\\u"); });
  work(one, u"C:\\t");
  other.join();
  EXPECT_EQ(MarksOf(one).size(), kFiles);
  EXPECT_EQ(MarksOf(two).size(), kFiles);
}

// Asks everything from another thread and does not wait forever for the answers. A query that hangs
// is let go when the system call has returned.
class OtherThread {
 public:
  explicit OtherThread(qs_session* session) : session_(session) {}

  void AskEverything(qs_status (*cancel)(qs_session*)) {
    ++rounds_;
    std::future<void> done = std::async(std::launch::async, [this, cancel] {
      ScanOf(session_);
      CleanOf(session_);
      CurrentPathOf(session_);
      if (RowCountOf(session_) > 0) {
        ReadRow(session_, 0);
      }
      EXPECT_EQ(cancel(session_), QS_OK);
    });
    EXPECT_EQ(done.wait_for(std::chrono::seconds(20)), std::future_status::ready)
        << "a lock is held during a system call";
    rounds_under_way_.push_back(std::move(done));
  }

  std::uint64_t rounds() const { return rounds_; }

 private:
  qs_session* const session_;
  std::uint64_t rounds_ = 0;
  std::vector<std::future<void>> rounds_under_way_;
};

TEST(SessionThreads, No_lock_is_held_during_a_system_call) {
  SimulatedWindows machine;
  for (int i = 0; i < 5; ++i) {
    machine.AddSizedFile(u"C:\\t\\d\\f" + Wide(std::to_string(i)), 1);
  }
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"30");
  SessionHandle session;
  OtherThread other(session);
  // Runs something while the other thread asks in each of its calls; the number of calls.
  const auto rounds_in = [&](qs_status (*cancel)(qs_session*), const auto& work) {
    const std::uint64_t before = other.rounds();
    machine.SetHook([&](const CallRecord& record) {
      SCOPED_TRACE(NameOf(record.call));
      other.AskEverything(cancel);
    });
    work();
    machine.SetHook(nullptr);
    return other.rounds() - before;
  };
  EXPECT_GE(
      rounds_in(qs_session_cancel_scan, [&] { EXPECT_EQ(session.Scan(u"C:\\t"), QS_CANCELLED); }),
      1u);
  EXPECT_GT(rounds_in(qs_session_cancel_clean, [&] { EXPECT_EQ(session.Scan(u"C:\\t"), QS_OK); }),
            15u);
  EXPECT_EQ(rounds_in(qs_session_cancel_scan,
                      [&] {
                        EXPECT_EQ(session.Clean({0, 1, 2}), QS_OK);
                      }),
            3u * 12);
  EXPECT_EQ(rounds_in(qs_session_cancel_clean,
                      [&] {
                        EXPECT_EQ(session.Clean({3, 4}), QS_CANCELLED);
                      }),
            12u);
}

}  // namespace
}  // namespace quastel::session_tests
