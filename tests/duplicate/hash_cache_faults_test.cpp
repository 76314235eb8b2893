// Reading and writing the cache when something fails: the scan goes on without it, and the file is
// the old one or the new one, whole.

#include <functional>
#include <new>

#include "duplicate/cache_bytes.h"
#include "faults/allocation_faults.h"
#include "faults/nth_time.h"
#include "platform/file.h"

namespace quastel::duplicate_tests {
namespace {

using faults::AllocationFaults;
using faults::kTooMany;

class CacheFaults : public CacheTest {
 protected:
  CacheFaults() { machine_.AddFile(location_, old_); }

  bool IsOld() { return machine_.ContentOf(location_) == old_; }
  bool IsNew() { return machine_.ContentOf(location_) == new_; }

  // Fails call 1, 2, 3, ... of a save until a save meets no fault; answers how many there were.
  std::uint64_t SweepSave(const std::function<void(std::uint64_t)>& arm,
                          const std::function<void()>& check) {
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE("call " + std::to_string(nth));
      machine_.ClearFaults();
      machine_.AddFile(location_, old_);
      arm(nth);
      Save(cache_);
      if (machine_.faults_injected() == 0) {
        ExpectFile(new_);
        return nth - 1;
      }
      EXPECT_EQ(machine_.open_handles(), 0u);
      check();
      machine_.ClearFaults();
      if (machine_.Exists(temporary_)) {
        machine_.Remove(temporary_);
      }
      if (HasFailure()) {
        return nth;
      }
    }
    ADD_FAILURE() << "the sweep does not end";
    return kTooMany;
  }

  const std::string old_ = FileOf(NumberedEntries(40));
  // Large enough for several writes, with any sensible buffer.
  const CacheMap cache_ = NumberedEntries(4000, 300);
  const std::string new_ = FileOf(cache_);
};

TEST_F(CacheFaults, Every_call_of_the_writer_that_fails_once_leaves_the_old_file_and_no_other) {
  const std::uint64_t calls =
      SweepSave([this](std::uint64_t nth) { machine_.FailAnyCall(nth, Repeat::kOnce); },
                [this] {
                  EXPECT_TRUE(IsOld());
                  EXPECT_FALSE(machine_.Exists(temporary_));
                });
  EXPECT_GE(calls, 6u) << "folder, open, write, flush, close, move";
}

TEST_F(CacheFaults, Every_call_of_the_writer_that_fails_from_then_on_leaves_the_old_file) {
  std::uint64_t removals = 0;
  const std::uint64_t calls = SweepSave(
      [&](std::uint64_t nth) {
        machine_.FailAnyCall(nth, Repeat::kFromThenOn);
        removals = machine_.CallCount(Call::kRemoveFile);
      },
      [&] {
        EXPECT_TRUE(IsOld());
        if (machine_.Exists(temporary_)) {
          EXPECT_GT(machine_.CallCount(Call::kRemoveFile), removals) << "its removal was not tried";
        }
      });
  EXPECT_GE(calls, 6u);
}

TEST_F(CacheFaults, After_a_crash_at_any_call_the_file_is_the_old_one_or_the_new_one_whole) {
  const std::uint64_t calls = SweepSave([this](std::uint64_t nth) { machine_.CrashAtCall(nth); },
                                        [this] { EXPECT_TRUE(IsOld() || IsNew()); });
  EXPECT_GE(calls, 6u);
}

TEST_F(CacheFaults, After_a_crash_without_an_old_file_there_is_none_or_the_new_one_whole) {
  for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
    machine_.ClearFaults();
    machine_.Remove(u"C:\\u");
    machine_.CrashAtCall(nth);
    Save(cache_);
    const bool crashed = machine_.faults_injected() > 0;
    machine_.ClearFaults();
    EXPECT_TRUE(IsNew() || (crashed && !machine_.Exists(location_))) << nth;
    // What a crash left behind is in nobody's way.
    Save(cache_);
    ExpectFile(new_);
    if (!crashed) {
      return;
    }
  }
  FAIL() << "the sweep does not end";
}

TEST_F(CacheFaults, Each_kind_of_the_writer_s_calls_may_be_the_one_that_fails) {
  for (const Call kind : {Call::kCreateFolderTree, Call::kOpenFile, Call::kWriteTo,
                          Call::kFlushFile, Call::kCloseFile, Call::kRenameFile}) {
    for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
      machine_.ClearFaults();
      machine_.FailCall(kind, 1, repeat);
      Save(cache_);
      EXPECT_GE(machine_.faults_injected(), 1u) << simulated::NameOf(kind);
      EXPECT_EQ(machine_.open_handles(), 0u) << simulated::NameOf(kind);
      EXPECT_TRUE(IsOld()) << simulated::NameOf(kind);
      EXPECT_FALSE(machine_.Exists(temporary_)) << simulated::NameOf(kind);
    }
  }
}

TEST_F(CacheFaults, A_temporary_file_that_cannot_be_removed_stays_and_the_next_save_replaces_it) {
  machine_.FailCall(Call::kRenameFile, 1);
  machine_.FailCall(Call::kRemoveFile, 1);
  Save(cache_);
  EXPECT_TRUE(IsOld());
  EXPECT_TRUE(machine_.Exists(temporary_));
  machine_.ClearFaults();
  Save(cache_);
  ExpectFile(new_);
}

TEST_F(CacheFaults, A_folder_that_is_there_already_is_as_good_as_a_new_one) {
  for (const std::uint32_t result : {183u, 80u}) {
    machine_.AddFile(location_, old_);
    machine_.ClearFaults();
    machine_.FailCall(Call::kCreateFolderTree, 1, Repeat::kOnce, Error{result});
    Save(cache_);
    EXPECT_EQ(machine_.faults_injected(), 1u);
    ExpectFile(new_);
  }
}

TEST_F(CacheFaults, Any_other_result_of_making_the_folder_ends_writing) {
  for (const std::uint32_t result : {1u, 2u, 3u, 5u, 79u, 81u, 161u, 182u, 184u, 206u, 1223u}) {
    machine_.ClearFaults();
    machine_.FailCall(Call::kCreateFolderTree, 1, Repeat::kOnce, Error{result});
    const std::uint64_t opens = machine_.CallCount(Call::kOpenFile);
    Save(cache_);
    EXPECT_EQ(machine_.faults_injected(), 1u);
    EXPECT_EQ(machine_.CallCount(Call::kOpenFile), opens) << result;
    ExpectFile(old_);
  }
}

TEST_F(CacheFaults, A_file_in_the_place_of_the_folder_ends_writing) {
  machine_.Remove(u"C:\\u");
  machine_.AddFile(u"C:\\u\\AppData", "in the way");
  const std::string disk = machine_.Describe();
  Save(cache_);
  EXPECT_EQ(machine_.Describe(), disk);
}

TEST_F(CacheFaults, An_old_file_that_cannot_be_replaced_stays) {
  machine_.SetAttributes(location_, platform::kAttributeReadOnly);
  Save(cache_);
  ExpectFile(old_);
  machine_.SetAttributes(location_, platform::kAttributeArchive);
  machine_.Lock(location_, platform::kShareAll);
  Save(cache_);
  ExpectFile(old_);
  machine_.Unlock(location_);
  Save(cache_);
  ExpectFile(new_);
}

TEST_F(CacheFaults, A_temporary_file_that_cannot_be_opened_leaves_the_old_file) {
  machine_.AddFolder(temporary_);
  Save(cache_);
  EXPECT_TRUE(IsOld());
  EXPECT_TRUE(machine_.Exists(temporary_));
  machine_.Remove(temporary_);
  machine_.AddFile(temporary_, "somebody else's");
  machine_.Lock(temporary_);
  Save(cache_);
  EXPECT_TRUE(IsOld());
  EXPECT_EQ(machine_.ContentOf(temporary_), "somebody else's");
  machine_.Unlock(temporary_);
}

TEST_F(CacheFaults, Every_call_of_the_reader_that_fails_gives_an_empty_cache_or_the_whole_one) {
  machine_.AddFile(location_, new_);
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    std::uint64_t nth = 1;
    for (; nth < kTooMany; ++nth) {
      machine_.ClearFaults();
      machine_.FailAnyCall(nth, repeat);
      const CacheMap loaded = Load();
      EXPECT_EQ(machine_.open_handles(), 0u);
      if (machine_.faults_injected() == 0) {
        EXPECT_TRUE(Same(loaded, cache_));
        break;
      }
      EXPECT_TRUE(loaded.empty() || Same(loaded, cache_)) << nth;
      EXPECT_TRUE(IsNew()) << "a reader changes nothing";
    }
    EXPECT_GE(nth, 3u);
    EXPECT_LT(nth, kTooMany);
  }
}

TEST_F(CacheFaults, Every_read_that_fails_before_the_last_entry_gives_an_empty_cache) {
  // Nothing follows the last entry, so that every read but an empty one at the end is needed.
  machine_.AddFile(location_, new_);
  std::uint64_t delivered = 0;
  std::uint64_t needed = 0;
  machine_.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kReadFrom && delivered < new_.size()) {
      delivered += record.number;
      ++needed;
    }
  });
  EXPECT_TRUE(Same(Load(), cache_));
  machine_.SetHook(nullptr);
  ASSERT_GE(needed, 1u);
  for (std::uint64_t nth = 1; nth <= needed; ++nth) {
    machine_.ClearFaults();
    machine_.FailCall(Call::kReadFrom, nth);
    EXPECT_TRUE(Load().empty()) << nth;
    EXPECT_EQ(machine_.faults_injected(), 1u);
    EXPECT_EQ(machine_.open_handles(), 0u);
  }
}

// Allocation 1, 2, 3, ... fails, once and from then on, until none does. `run` is what is tried;
// `check` is told whether memory was short and whether that was thrown.
void SweepAllocations(const std::function<void()>& prepare, const std::function<void()>& run,
                      const std::function<void(bool failed, bool thrown)>& check) {
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    bool ended = false;
    for (std::uint64_t nth = 1; nth < kTooMany && !ended; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      prepare();
      bool thrown = false;
      {
        const AllocationFaults fault(nth, repeat);
        try {
          run();
        } catch (const std::bad_alloc&) {
          thrown = true;
        }
        ended = fault.injected() == 0;
      }
      check(!ended, thrown);
      if (::testing::Test::HasFailure()) {
        return;
      }
    }
    EXPECT_TRUE(ended) << "the sweep does not end";
  }
}

TEST_F(CacheFaults, A_lack_of_memory_while_reading_gives_nothing_in_part_and_leaves_no_handle) {
  const CacheMap old = NumberedEntries(40);
  duplicate::HashCache loaded;
  SweepAllocations([&] { loaded = {}; },
                   [&] { loaded = duplicate::LoadDuplicateCache(location_, nullptr); },
                   [&](bool failed, bool) {
                     EXPECT_TRUE(Same(EntriesOf(loaded), old) || (failed && loaded.empty()));
                     EXPECT_EQ(machine_.open_handles(), 0u);
                   });
}

TEST_F(CacheFaults, A_lack_of_memory_while_reading_is_no_error) {
  SweepAllocations([] {}, [&] { duplicate::LoadDuplicateCache(location_, nullptr); },
                   [](bool, bool thrown) { EXPECT_FALSE(thrown); });
}

TEST_F(CacheFaults, A_lack_of_memory_while_writing_leaves_a_whole_file_and_no_other) {
  const duplicate::HashCache cache = CacheOf(cache_);
  SweepAllocations([&] { machine_.AddFile(location_, old_); },
                   [&] { duplicate::SaveDuplicateCache(location_, cache, nullptr); },
                   [&](bool failed, bool) {
                     EXPECT_TRUE(failed ? IsOld() || IsNew() : IsNew());
                     EXPECT_FALSE(machine_.Exists(temporary_));
                     EXPECT_EQ(machine_.open_handles(), 0u);
                   });
}

TEST_F(CacheFaults, A_lack_of_memory_while_writing_is_no_error) {
  const duplicate::HashCache cache = CacheOf(cache_);
  SweepAllocations([] {}, [&] { duplicate::SaveDuplicateCache(location_, cache, nullptr); },
                   [](bool, bool thrown) { EXPECT_FALSE(thrown); });
}

}  // namespace
}  // namespace quastel::duplicate_tests
