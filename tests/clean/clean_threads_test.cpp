// Other threads at work on the handle while a clean runs on one, and the lock between them.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

// A thread that asks everything that may be asked during a clean, whenever it is told to.
class Asker {
 public:
  explicit Asker(qs_product_scan* scan) : scan_(scan), thread_([this] { Run(); }) {}
  ~Asker() {
    {
      std::lock_guard lock(mutex_);
      stop_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }
  Asker(const Asker&) = delete;
  Asker& operator=(const Asker&) = delete;

  // Whether every answer has come within the time, which is ample.
  bool AskInTime() {
    std::unique_lock lock(mutex_);
    if (late_) {
      return false;  // once is enough: the thread is still waiting for its answer
    }
    ++asked_;
    changed_.notify_all();
    late_ = !changed_.wait_for(lock, std::chrono::seconds(20), [&] { return answered_ == asked_; });
    return !late_;
  }

 private:
  void Run() {
    std::unique_lock lock(mutex_);
    for (;;) {
      changed_.wait(lock, [&] { return stop_ || answered_ != asked_; });
      if (stop_) {
        return;
      }
      lock.unlock();
      EXPECT_EQ(BlockOf(scan_).state, QS_STATE_RUNNING);
      const std::uint64_t rows = scan_tests::RowCountOf(scan_);
      scan_tests::ReadRow(scan_, rows - 1);
      scan_tests::Poll(scan_);
      scan_tests::PerformanceOf(scan_);
      scan_tests::CurrentPathOf(scan_);
      scan_tests::CurrentGroupOf(scan_);
      EXPECT_EQ(qs_product_scan_cancel(scan_), QS_OK);
      lock.lock();
      ++answered_;
      changed_.notify_all();
    }
  }

  qs_product_scan* const scan_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t asked_ = 0;
  std::uint64_t answered_ = 0;
  bool stop_ = false;
  bool late_ = false;
  std::thread thread_;
};

class CleanLock : public CleanOfEachKindTest {};

TEST_P(CleanLock, Is_not_held_during_any_system_call) {
  Paths paths = AddFindings(3);
  for (const TextView name :
       {u"sub\\gone", u"sub\\locked", u"sub\\changed", u"sub\\deeper\\f", u"sub\\last"}) {
    paths.push_back(AddFinding(name));
  }
  ScanTree();
  const Ids ids = IdsOf(paths);
  machine_.Remove(paths[3]);
  machine_.Lock(paths[4]);
  machine_.SetLastWrite(paths[5], 1);
  std::vector<int> kinds(static_cast<std::size_t>(Call::kCount));
  {
    Asker asker(scan_);
    machine_.SetHook([&](const CallRecord& call) {
      EXPECT_TRUE(asker.AskInTime()) << NameOf(call.call);
      ++kinds[static_cast<std::size_t>(call.call)];
    });
    EXPECT_EQ(CleanIds(ids), QS_OK);
    machine_.SetHook(nullptr);
  }
  const auto calls = [&](Call call) { return kinds[static_cast<std::size_t>(call)]; };
  EXPECT_GE(calls(Call::kFullPathName), 13);
  EXPECT_GE(calls(Call::kQueryAttributes), 40);
  EXPECT_EQ(calls(Call::kQueryFileFacts), 8);
  EXPECT_EQ(calls(Call::kToLocalFileTime), 7);
  EXPECT_EQ(calls(Call::kRemoveFile), 6);
  if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
    // For each of the five that went; the last one's listing goes on in a subfolder.
    EXPECT_EQ(calls(Call::kFindFirstBasic), 6);
    EXPECT_EQ(calls(Call::kRemoveFolder), 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, CleanLock, ::testing::ValuesIn(kKinds), support::CaseName());

class CleanThreads : public CleanOfEachKindTest {
 protected:
  static constexpr std::uint64_t kFiles = 600;

  // Every 50th file fails.
  Ids ScanMany() {
    const Paths paths = AddFindings(kFiles);
    ScanTree();
    machine_.SetRecording(false);
    for (std::size_t i = 0; i < kFiles; i += 50) {
      machine_.SetAttributes(paths[i], platform::kAttributeReadOnly);
    }
    return IdsOfAll();
  }
};

// What a reader sees of one clean after another: never anything impossible, never a step back.
class Reader {
 public:
  Reader(qs_product_scan* scan, std::uint64_t size) : scan_(scan), size_(size) {}

  void Round() {
    const CleanBlock block = DetailOf(scan_);
    EXPECT_EQ(block.processed, block.deleted + block.failed);
    EXPECT_EQ(block.bytes_freed, block.deleted * size_);
    EXPECT_LE(block.processed, block.requested);
    EXPECT_GE(block.processed, last_.processed);
    EXPECT_GE(block.state, last_.state);
    last_ = block;
    qs_product_clean_status status = {};
    EXPECT_EQ(qs_product_scan_poll_clean(scan_, &status), QS_OK);
    EXPECT_GE(status.processed, block.processed);

    // One row of all at a time: what is counted is marked, and what is marked is counted.
    const std::uint64_t rows = scan_tests::RowCountOf(scan_);
    const Row row = scan_tests::ReadRow(scan_, rounds % rows);
    if (row.numbers.deleted != 0) {
      EXPECT_GE(DetailOf(scan_).deleted, 1u);
      ++marks_seen;
    }
    running_seen += block.state == QS_STATE_RUNNING;
    ++rounds;
  }

  std::atomic<std::uint64_t> rounds{0};
  std::uint64_t marks_seen = 0;
  std::uint64_t running_seen = 0;

 private:
  qs_product_scan* const scan_;
  const std::uint64_t size_;
  CleanBlock last_;
};

TEST_P(CleanThreads, Every_query_may_come_from_other_threads) {
  const Ids ids = ScanMany();
  std::atomic<bool> stop{false};
  Reader readers[2] = {{scan_, finding_size()}, {scan_, finding_size()}};
  std::vector<std::thread> threads;
  for (Reader& reader : readers) {
    threads.emplace_back([&stop, &reader] {
      while (!stop) {
        reader.Round();
      }
      reader.Round();
    });
  }
  // Now and then the clean waits for the readers, so that they are certain to see it at work.
  scan_tests::InsideEveryCall(machine_, Call::kRemoveFile, [&](std::uint64_t n) {
    for (Reader& reader : readers) {
      const std::uint64_t before = reader.rounds;
      while (n % 20 == 0 && reader.rounds < before + 2) {
        std::this_thread::yield();
      }
    }
  });
  EXPECT_EQ(CleanIds(ids), QS_OK);
  machine_.SetHook(nullptr);
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(Block(), Ended(QS_OK, kFiles, kFiles - 12, 12, (kFiles - 12) * finding_size()));
  for (const Reader& reader : readers) {
    EXPECT_GE(reader.running_seen, 20u);
    EXPECT_GE(reader.marks_seen, 5u);
  }
}

TEST_P(CleanThreads, A_mark_that_was_read_belongs_to_a_file_that_is_gone) {
  const Ids ids = ScanMany();
  std::atomic<std::uint64_t> seen{0};
  std::atomic<bool> stop{false};
  std::thread reader([&] {
    const std::uint64_t rows = scan_tests::RowCountOf(scan_);
    for (std::uint64_t i = 0; !stop; i = (i + 1) % rows) {
      const Row row = scan_tests::ReadRow(scan_, i);
      if (row.numbers.deleted != 0) {
        EXPECT_FALSE(machine_.Exists(row.path)) << Utf8(row.path);
        ++seen;
      }
    }
  });
  scan_tests::InsideEveryCall(machine_, Call::kRemoveFile, [&](std::uint64_t n) {
    const std::uint64_t before = seen;
    while (n > 2 && n % 50 == 0 && seen < before + 2) {
      std::this_thread::yield();
    }
  });
  EXPECT_EQ(CleanIds(ids), QS_OK);
  machine_.SetHook(nullptr);
  stop = true;
  reader.join();
  EXPECT_GE(seen, 20u);
}

TEST_P(CleanThreads, A_cancel_from_another_thread_ends_the_clean) {
  const Ids ids = ScanMany();
  std::thread canceller([&] {
    while (DetailOf(scan_).processed < 100) {
      std::this_thread::yield();
    }
    EXPECT_EQ(qs_product_scan_cancel_clean(scan_), QS_OK);
  });
  // The clean does not run away from the one who wants to stop it.
  std::atomic<bool> cancelled{false};
  scan_tests::InsideEveryCall(machine_, Call::kRemoveFile, [&](std::uint64_t n) {
    if (n == 300) {
      canceller.join();
      cancelled = true;
    }
  });
  EXPECT_EQ(CleanIds(ids), QS_CANCELLED);
  machine_.SetHook(nullptr);
  if (!cancelled) {
    canceller.join();
  }
  const CleanBlock block = Block();
  EXPECT_EQ(block.state, QS_STATE_CANCELLED);
  EXPECT_GE(block.processed, 100u);
  EXPECT_LE(block.processed, 300u);
  EXPECT_EQ(MarksOf(scan_).size(), block.deleted);
}

TEST_P(CleanThreads, Rivals_are_refused_from_every_thread_as_long_as_it_runs) {
  const Ids ids = ScanMany();
  std::atomic<unsigned> refused{0};
  std::atomic<bool> stop{false};
  std::vector<std::thread> rivals;
  scan_tests::InsideCall(machine_, Call::kRemoveFile, 10, [&] {
    for (int i = 0; i < 2; ++i) {
      rivals.emplace_back([&] {
        while (!stop) {
          EXPECT_EQ(qs_product_scan_start(scan_, nullptr), QS_BUSY);
          EXPECT_EQ(qs_product_scan_start_clean(scan_, ids.data(), 1), QS_BUSY);
          EXPECT_EQ(qs_product_scan_destroy(scan_), QS_BUSY);
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
  EXPECT_EQ(CleanIds(ids), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_GE(refused, 100u);
  EXPECT_EQ(Block().processed, kFiles);
}

TEST_P(CleanThreads, Of_two_that_want_to_clean_the_same_one_does) {
  // Whoever comes second finds the handle busy or the files deleted; no file is tried twice.
  const Paths paths = AddFindings(200);
  ScanTree();
  machine_.SetRecording(false);
  const Ids ids = IdsOf(paths);
  std::atomic<int> done{0};
  for (std::size_t i = 0; i < ids.size(); i += 10) {
    const Ids part(ids.begin() + static_cast<std::ptrdiff_t>(i),
                   ids.begin() + static_cast<std::ptrdiff_t>(i) + 10);
    std::atomic<int> ready{0};
    const auto race = [&] {
      ++ready;
      while (ready < 2) {
        std::this_thread::yield();
      }
      const qs_status status = Clean(scan_, part);
      EXPECT_TRUE(status == QS_OK || status == QS_BUSY || status == QS_INVALID_ARGUMENT) << status;
      done += status == QS_OK;
    };
    std::thread rival(race);
    race();
    rival.join();
  }
  EXPECT_EQ(done, 20);
  EXPECT_EQ(LeftOf(paths), Lines{});
  EXPECT_EQ(machine_.CallCount(Call::kRemoveFile), 200u);
}

TEST_P(CleanThreads, Two_handles_clean_at_the_same_time) {
  const Ids ids = ScanMany();
  ScanHandle other;
  ASSERT_EQ(other.Start(TreeRequest()), QS_OK);
  const Ids odd = [&] {
    Ids some;
    for (std::size_t i = 1; i < ids.size(); i += 2) {
      some.push_back(ids[i]);
    }
    return some;
  }();
  const Ids even = [&] {
    Ids some;
    for (std::size_t i = 0; i < ids.size(); i += 2) {
      some.push_back(ids[i]);
    }
    return some;
  }();
  std::atomic<int> at_work{0};
  machine_.SetHook([&](const CallRecord& call) {
    // Neither goes on before both are at work.
    if (call.call == Call::kQueryFileFacts && at_work < 2) {
      ++at_work;
      while (at_work < 2) {
        std::this_thread::yield();
      }
    }
  });
  std::thread second([&] { EXPECT_EQ(Clean(other, odd), QS_OK); });
  EXPECT_EQ(CleanIds(even), QS_OK);
  second.join();
  machine_.SetHook(nullptr);
  EXPECT_EQ(Block(), Ended(QS_OK, 300, 288, 12, 288 * finding_size()));
  EXPECT_EQ(BlockOf(other), Ended(QS_OK, 300, 300, 0, 300 * finding_size()));
}

INSTANTIATE_TEST_SUITE_P(Of, CleanThreads, ::testing::ValuesIn(kKinds), support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
