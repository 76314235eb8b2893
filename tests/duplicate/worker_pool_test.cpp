#include "duplicate/worker_pool.h"

#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <set>
#include <stdexcept>
#include <thread>

#include "duplicate/duplicate_fixture.h"
#include "platform/clock.h"
#include "platform/thread.h"
#include "support/named_case.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::DigestText;
using duplicate::ParallelStage;
using duplicate::RunParallel;
using duplicate::StageEnd;
using duplicate::WorkItem;

// A stage of `count` items that counts what is done to each.
class CountingStage {
 public:
  explicit CountingStage(std::size_t count) : worked(count), shown(count), done(count) {}

  ParallelStage Get() {
    return ParallelStage{
        .count = done.size(),
        .should_stop = [this] { return stop_asked(); },
        .is_done = [this](std::size_t i) { return done[i] != 0; },
        .work =
            [this](std::size_t i) {
              ++worked[i];
              if (during_work) {
                during_work(i);
              }
            },
        .progress =
            [this](std::size_t i) {
              ++shown[i];
              if (during_progress) {
                during_progress();
              }
            },
    };
  }
  StageEnd Run(std::size_t threads) { return RunParallel(Get(), threads); }

  std::vector<std::size_t> shown_items() const {
    std::vector<std::size_t> items;
    for (std::size_t i = 0; i < shown.size(); ++i) {
      items.insert(items.end(), static_cast<std::size_t>(shown[i].load()), i);
    }
    return items;
  }
  int total_worked() const {
    int total = 0;
    for (const std::atomic<int>& times : worked) {
      total += times;
    }
    return total;
  }

  std::vector<std::atomic<int>> worked;
  std::vector<std::atomic<int>> shown;
  std::vector<int> done;
  std::function<bool()> stop_asked = [] { return false; };
  std::function<void(std::size_t)> during_work;
  std::function<void()> during_progress;
};

void ExpectAllJoined(const SimulatedWindows& machine, std::uint64_t started) {
  EXPECT_EQ(machine.CallCount(Call::kJoinThread), started);
  EXPECT_EQ(machine.open_handles(), 0u);
}

struct ThreadsCase {
  std::size_t items;
  std::size_t threads;
  std::uint64_t started;
};
void PrintTo(const ThreadsCase& c, std::ostream* out) {
  *out << c.items << " items, " << c.threads << " threads";
}

class StartedThreads : public ::testing::TestWithParam<ThreadsCase> {};

TEST_P(StartedThreads, Are_as_many_as_asked_for_but_no_more_than_items_and_one_at_least) {
  SimulatedWindows machine;
  CountingStage stage(GetParam().items);
  EXPECT_EQ(stage.Run(GetParam().threads), StageEnd::kFinished);
  EXPECT_EQ(machine.CallCount(Call::kStartThread), GetParam().started);
  ExpectAllJoined(machine, GetParam().started);
  EXPECT_EQ(stage.total_worked(), static_cast<int>(GetParam().items));
}

INSTANTIATE_TEST_SUITE_P(All, StartedThreads,
                         ::testing::Values(ThreadsCase{0, 0, 0}, ThreadsCase{0, 16, 0},
                                           ThreadsCase{1, 0, 1}, ThreadsCase{1, 1, 1},
                                           ThreadsCase{1, 16, 1}, ThreadsCase{5, 0, 1},
                                           ThreadsCase{5, 2, 2}, ThreadsCase{5, 5, 5},
                                           ThreadsCase{5, 6, 5}, ThreadsCase{40, 16, 16}));

TEST(WorkerPool, Works_each_item_once_and_never_on_the_calling_thread) {
  SimulatedWindows machine;
  for (const std::size_t threads : std::initializer_list<std::size_t>{1, 2, 16}) {
    CountingStage stage(1000);
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<bool> on_caller{false};
    stage.during_work = [&](std::size_t) {
      on_caller = on_caller || std::this_thread::get_id() == caller;
    };
    EXPECT_EQ(stage.Run(threads), StageEnd::kFinished);
    EXPECT_TRUE(std::all_of(stage.worked.begin(), stage.worked.end(),
                            [](const std::atomic<int>& times) { return times == 1; }));
    EXPECT_FALSE(on_caller);
  }
}

TEST(WorkerPool, Really_runs_as_many_workers_at_a_time) {
  SimulatedWindows machine;
  CountingStage stage(16);
  std::atomic<int> inside{0};
  stage.during_work = [&](std::size_t) {
    ++inside;
    while (inside < 16) {
      std::this_thread::yield();
    }
  };
  EXPECT_EQ(stage.Run(16), StageEnd::kFinished);
  EXPECT_EQ(inside, 16);
}

TEST(WorkerPool, Takes_the_items_in_their_order) {
  SimulatedWindows machine;
  CountingStage stage(50);
  std::vector<std::size_t> order;
  stage.during_work = [&](std::size_t i) { order.push_back(i); };
  EXPECT_EQ(stage.Run(1), StageEnd::kFinished);
  ASSERT_EQ(order.size(), 50u);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(WorkerPool, Passes_over_items_that_are_done_and_does_not_show_them) {
  SimulatedWindows machine;
  CountingStage stage(6);
  stage.done = {1, 0, 1, 1, 0, 1};
  stage.during_work = [&](std::size_t) { machine.AdvanceClock(1000); };
  EXPECT_EQ(stage.Run(1), StageEnd::kFinished);
  EXPECT_EQ(stage.shown_items(), (std::vector<std::size_t>{1, 4}));
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(stage.worked[i], stage.done[i] ? 0 : 1) << i;
  }
}

TEST(WorkerPool, Starts_no_thread_when_every_item_is_done) {
  SimulatedWindows machine;
  CountingStage stage(1000);
  stage.done.assign(1000, 1);
  EXPECT_EQ(stage.Run(2), StageEnd::kFinished);
  EXPECT_EQ(machine.CallCount(Call::kStartThread), 0u);
  EXPECT_EQ(stage.total_worked(), 0);
  EXPECT_EQ(stage.shown_items().size(), 0u);
}

TEST(WorkerPool, Is_stopped_among_items_that_are_done_as_well) {
  SimulatedWindows machine;
  for (const int looks : {1, 2, 5}) {
    CountingStage stage(1000);
    stage.done.assign(1000, 1);
    int left = looks;
    stage.stop_asked = [&left] { return --left == 0; };
    EXPECT_EQ(stage.Run(2), StageEnd::kStopped) << looks;
  }
  EXPECT_EQ(machine.CallCount(Call::kStartThread), 0u);
}

TEST(WorkerPool, Works_what_lies_behind_items_that_are_done) {
  SimulatedWindows machine;
  for (const std::size_t due : std::initializer_list<std::size_t>{0, 1, 255, 256, 257, 999}) {
    CountingStage stage(1000);
    stage.done.assign(1000, 1);
    stage.done[due] = 0;
    EXPECT_EQ(stage.Run(2), StageEnd::kFinished);
    EXPECT_EQ(stage.total_worked(), 1) << due;
    EXPECT_EQ(stage.worked[due], 1) << due;
  }
  EXPECT_EQ(machine.CallCount(Call::kStartThread), 12u);
}

struct MissingCase : support::NamedCase {
  void (*remove)(ParallelStage& stage);
};

class MissingFunction : public ::testing::TestWithParam<MissingCase> {};

TEST_P(MissingFunction, Stops_the_stage_before_it_starts) {
  SimulatedWindows machine;
  CountingStage counting(3);
  ParallelStage stage = counting.Get();
  GetParam().remove(stage);
  EXPECT_EQ(RunParallel(stage, 2), StageEnd::kStopped);
  EXPECT_EQ(machine.CallCount(Call::kStartThread), 0u);
  EXPECT_EQ(counting.total_worked(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    All, MissingFunction,
    ::testing::Values(
        MissingCase{{"should_stop"}, [](ParallelStage& stage) { stage.should_stop = nullptr; }},
        MissingCase{{"work"}, [](ParallelStage& stage) { stage.work = nullptr; }},
        MissingCase{{"progress"}, [](ParallelStage& stage) { stage.progress = nullptr; }}),
    support::CaseName());

TEST(WorkerPool, Without_items_is_finished_even_without_functions) {
  SimulatedWindows machine;
  EXPECT_EQ(RunParallel(ParallelStage{}, 2), StageEnd::kFinished);
  EXPECT_EQ(machine.CallCount(Call::kStartThread), 0u);
}

TEST(WorkerPool, Does_not_ask_to_stop_when_there_is_nothing_to_do) {
  SimulatedWindows machine;
  CountingStage stage(0);
  stage.stop_asked = [] { return true; };
  EXPECT_EQ(stage.Run(4), StageEnd::kFinished);
}

// ---- Results

TEST(WorkItems, Get_the_result_of_their_work_and_stay_empty_when_it_failed) {
  SimulatedWindows machine;
  std::vector<WorkItem> items(5);
  items[1].result = DigestText::Of("known");
  std::atomic<int> calls{0};
  const StageEnd end = RunParallel(
      std::span(items), 2, [] { return false; },
      [&](const WorkItem& item) {
        ++calls;
        return &item == &items[3] ? DigestText() : DigestText::Of("new");
      },
      [](const WorkItem&) {});
  EXPECT_EQ(end, StageEnd::kFinished);
  EXPECT_EQ(calls, 4);
  EXPECT_EQ(items[0].result.Get(), "new");
  EXPECT_EQ(items[1].result.Get(), "known");
  EXPECT_EQ(items[2].result.Get(), "new");
  EXPECT_EQ(items[3].result.Get(), "");
  EXPECT_EQ(items[4].result.Get(), "new");
}

// ---- Stopping

TEST(WorkerPool, Asked_to_stop_at_first_does_nothing_and_says_so) {
  SimulatedWindows machine;
  CountingStage stage(10);
  stage.stop_asked = [] { return true; };
  EXPECT_EQ(stage.Run(4), StageEnd::kStopped);
  EXPECT_EQ(stage.total_worked(), 0);
  EXPECT_TRUE(stage.shown_items().empty());
  ExpectAllJoined(machine, 4);
}

TEST(WorkerPool, Asks_to_stop_before_each_item) {
  SimulatedWindows machine;
  for (std::size_t last = 0; last < 10; ++last) {
    CountingStage stage(10);
    bool stop = false;
    stage.stop_asked = [&] { return stop; };
    stage.during_work = [&](std::size_t i) { stop = i == last; };
    EXPECT_EQ(stage.Run(1), StageEnd::kStopped) << "also behind the last item";
    EXPECT_EQ(stage.total_worked(), static_cast<int>(last) + 1);
  }
}

TEST(WorkerPool, Stops_every_worker_with_the_first) {
  SimulatedWindows machine;
  CountingStage stage(100'000);
  // Asked once more, it would deny it: the first yes is remembered.
  std::atomic<int> asked{0};
  stage.stop_asked = [&] { return ++asked == 50; };
  EXPECT_EQ(stage.Run(8), StageEnd::kStopped);
  EXPECT_LT(stage.total_worked(), 100'000);
  ExpectAllJoined(machine, 8);
}

// ---- Progress

struct ItemThrottleCase : support::NamedCase {
  std::uint64_t milliseconds_per_item;
  std::size_t every;  // such an item is shown
};

class Throttle : public ::testing::TestWithParam<ItemThrottleCase> {};

TEST_P(Throttle, Shows_an_item_at_most_every_20_milliseconds_and_the_first_always) {
  SimulatedWindows machine;
  CountingStage stage(100);
  stage.during_work = [&](std::size_t) { machine.AdvanceClock(GetParam().milliseconds_per_item); };
  EXPECT_EQ(stage.Run(1), StageEnd::kFinished);
  std::vector<std::size_t> expected;
  for (std::size_t i = 0; i < 100; i += GetParam().every) {
    expected.push_back(i);
  }
  EXPECT_EQ(stage.shown_items(), expected);
}

INSTANTIATE_TEST_SUITE_P(All, Throttle,
                         ::testing::Values(ItemThrottleCase{{"a_clock_that_stands_still"}, 0, 1000},
                                           ItemThrottleCase{{"1_ms_per_item"}, 1, 20},
                                           ItemThrottleCase{{"5_ms_per_item"}, 5, 4},
                                           ItemThrottleCase{{"19_ms_per_item"}, 19, 2},
                                           ItemThrottleCase{{"20_ms_per_item"}, 20, 1},
                                           ItemThrottleCase{{"21_ms_per_item"}, 21, 1}),
                         support::CaseName());

TEST(WorkerPool, Shares_the_throttle_among_its_workers) {
  SimulatedWindows machine;
  CountingStage stage(1000);
  EXPECT_EQ(stage.Run(16), StageEnd::kFinished);
  EXPECT_EQ(stage.shown_items().size(), 1u) << "the clock stands still";
}

TEST(WorkerPool, Begins_to_throttle_anew_with_every_run) {
  SimulatedWindows machine;
  CountingStage stage(3);
  EXPECT_EQ(stage.Run(1), StageEnd::kFinished);
  EXPECT_EQ(stage.Run(1), StageEnd::kFinished);
  EXPECT_EQ(stage.shown_items(), (std::vector<std::size_t>{0, 0}));
}

TEST(WorkerPool, Shows_an_item_before_it_works_on_it) {
  SimulatedWindows machine;
  CountingStage stage(3);
  stage.during_work = [&](std::size_t i) {
    EXPECT_EQ(stage.shown[i], 1);
    machine.AdvanceClock(20);
  };
  EXPECT_EQ(stage.Run(1), StageEnd::kFinished);
  EXPECT_EQ(stage.total_worked(), 3);
}

// ---- Failures

class FailingStart : public ::testing::TestWithParam<std::uint64_t> {};

TEST_P(FailingStart, Throws_after_what_was_started_has_been_joined) {
  SimulatedWindows machine;
  CountingStage stage(1000);
  machine.FailCall(Call::kStartThread, GetParam());
  EXPECT_ANY_THROW(stage.Run(8));
  EXPECT_EQ(machine.faults_injected(), 1u);
  ExpectAllJoined(machine, GetParam() - 1);
  // Nobody works on after the end.
  const int worked = stage.total_worked();
  std::this_thread::yield();
  EXPECT_EQ(stage.total_worked(), worked);
}

INSTANTIATE_TEST_SUITE_P(All, FailingStart, ::testing::Range<std::uint64_t>(1, 9));

TEST(WorkerPool, Is_usable_after_a_thread_could_not_be_started) {
  SimulatedWindows machine;
  CountingStage stage(10);
  machine.FailCall(Call::kStartThread, 2);
  EXPECT_ANY_THROW(stage.Run(4));
  machine.ClearFaults();
  CountingStage next(10);
  EXPECT_EQ(next.Run(4), StageEnd::kFinished);
  EXPECT_EQ(next.total_worked(), 10);
}

// The function of a stage that throws at its nth call.
struct ThrowCase : support::NamedCase {
  void (*arm)(CountingStage& stage, std::function<void()> call);
};

class ThrowingFunction : public ::testing::TestWithParam<ThrowCase> {};

TEST_P(ThrowingFunction, Ends_the_stage_with_a_throw_after_every_worker_was_joined) {
  SimulatedWindows machine;
  for (const std::size_t threads : std::initializer_list<std::size_t>{1, 2, 16}) {
    const std::uint64_t joined_before = machine.CallCount(Call::kJoinThread);
    CountingStage stage(100'000);
    std::atomic<int> calls{0};
    GetParam().arm(stage, [&] {
      machine.AdvanceClock(20);
      if (++calls == 5) {
        throw std::runtime_error("out of something");
      }
    });
    EXPECT_ANY_THROW(stage.Run(threads));
    EXPECT_LT(stage.total_worked(), 100'000) << "the others were stopped";
    ExpectAllJoined(machine, joined_before + threads);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, ThrowingFunction,
    ::testing::Values(ThrowCase{{"work"},
                                [](CountingStage& stage, std::function<void()> call) {
                                  stage.during_work = [call](std::size_t) { call(); };
                                }},
                      ThrowCase{{"progress"},
                                [](CountingStage& stage, std::function<void()> call) {
                                  stage.during_progress = call;
                                  // Time for the throttle to let the next one through.
                                  stage.during_work = [](std::size_t) {
                                    platform::SleepMilliseconds(20);
                                  };
                                }},
                      ThrowCase{{"should_stop"},
                                [](CountingStage& stage, std::function<void()> call) {
                                  stage.stop_asked = [call] {
                                    call();
                                    return false;
                                  };
                                }}),
    support::CaseName());

// ---- Priority

constexpr std::int32_t kBelowNormal = -1;

// What each worker thread did about its priority, without whatever it did besides.
std::vector<std::vector<std::string>> PriorityCallsOf(const SimulatedWindows& machine) {
  std::map<std::uint64_t, std::vector<std::string>> by_thread;
  for (const CallRecord& call : machine.record()) {
    if (call.call == Call::kCurrentThreadPriority) {
      by_thread[call.thread].push_back("get");
    } else if (call.call == Call::kSetCurrentThreadPriority) {
      by_thread[call.thread].push_back("set " + std::to_string(static_cast<std::int32_t>(
                                                    static_cast<std::int64_t>(call.number))));
    }
  }
  std::vector<std::vector<std::string>> calls;
  for (auto& [thread, of_thread] : by_thread) {
    calls.push_back(std::move(of_thread));
  }
  return calls;
}

// Every thread is below normal when it is first asked.
void StartBelowNormal(SimulatedWindows& machine) {
  machine.SetHook([](const CallRecord& call) {
    if (call.call == Call::kCurrentThreadPriority) {
      platform::SetCurrentThreadPriority(kBelowNormal);
    }
  });
}

const std::vector<std::string> kRemembersAndRestores = {"get", "set 0", "set -1"};

TEST(WorkerPriority, Is_normal_while_a_worker_works_and_restored_behind) {
  SimulatedWindows machine;
  // Lowers a thread once only: the work asks for the priority as well.
  std::atomic<int> lowered{0};
  machine.SetHook([&](const CallRecord& call) {
    thread_local bool known = false;
    if (call.call == Call::kCurrentThreadPriority && !known) {
      known = true;
      ++lowered;
      platform::SetCurrentThreadPriority(kBelowNormal);
    }
  });
  machine.SetRecording(true);
  CountingStage stage(40);
  std::atomic<int> abnormal{0};
  stage.during_work = [&](std::size_t) {
    abnormal += platform::CurrentThreadPriority() != platform::kPriorityNormal;
  };
  EXPECT_EQ(stage.Run(4), StageEnd::kFinished);
  EXPECT_EQ(lowered, 4);
  EXPECT_EQ(abnormal, 0);
  const auto calls = PriorityCallsOf(machine);
  ASSERT_EQ(calls.size(), 4u);
  for (const std::vector<std::string>& of_thread : calls) {
    ASSERT_GE(of_thread.size(), 3u);
    EXPECT_EQ(of_thread[0], "get");
    EXPECT_EQ(of_thread[1], "set 0");
    EXPECT_EQ(of_thread.back(), "set -1");
  }
}

TEST(WorkerPriority, That_cannot_be_asked_for_counts_as_normal) {
  SimulatedWindows machine;
  machine.FailCall(Call::kCurrentThreadPriority, 1, simulated::Repeat::kFromThenOn);
  machine.SetRecording(true);
  CountingStage stage(3);
  EXPECT_EQ(stage.Run(1), StageEnd::kFinished);
  EXPECT_EQ(PriorityCallsOf(machine),
            (std::vector<std::vector<std::string>>{{"get", "set 0", "set 0"}}));
}

TEST(WorkerPriority, Is_restored_when_the_stage_is_stopped) {
  SimulatedWindows machine;
  StartBelowNormal(machine);
  machine.SetRecording(true);
  CountingStage stage(30);
  stage.stop_asked = [] { return true; };
  EXPECT_EQ(stage.Run(3), StageEnd::kStopped);
  EXPECT_EQ(PriorityCallsOf(machine),
            std::vector<std::vector<std::string>>(3, kRemembersAndRestores));
}

TEST(WorkerPriority, Is_restored_when_the_work_throws) {
  SimulatedWindows machine;
  StartBelowNormal(machine);
  machine.SetRecording(true);
  CountingStage stage(30);
  stage.during_work = [](std::size_t) { throw std::runtime_error("out of something"); };
  EXPECT_ANY_THROW(stage.Run(1));
  EXPECT_EQ(PriorityCallsOf(machine),
            std::vector<std::vector<std::string>>(1, kRemembersAndRestores));
}

}  // namespace
}  // namespace quastel::duplicate_tests
