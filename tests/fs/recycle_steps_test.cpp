// The steps of the operation object that qs_move_to_recycle_bin takes: each one failing, and COM
// in balance whatever happens.

#include <string>
#include <thread>
#include <vector>

#include "fs/deletion_fixture.h"
#include "platform/shell.h"

namespace quastel::deletion_tests {
namespace {

using platform::Error;

const Text kStepsPath = u"C:\\d\\f";
const Text kExtended = u"\\\\?\\C:\\d\\f";

struct Step : support::NamedCase {
  Call call;
  std::size_t calls_before;  // of the sequence below
  bool performed;            // the file has gone when the step fails
};

// One plain path has all of these in this order.
const Lines kSequence = {"InitializeCom",
                         "CreateFileOperation",
                         "SetOperationFlags 0x3654",
                         "CreateShellItem C:\\d\\f",
                         "MarkForDeletion",
                         "PerformOperations",
                         "QueryOperationsAborted"};

const Step kSteps[] = {
    {{"InitializeCom"}, Call::kInitializeCom, 0, false},
    {{"CreateFileOperation"}, Call::kCreateFileOperation, 1, false},
    {{"SetOperationFlags"}, Call::kSetOperationFlags, 2, false},
    {{"CreateShellItem"}, Call::kCreateShellItem, 3, false},
    {{"MarkForDeletion"}, Call::kMarkForDeletion, 4, false},
    {{"PerformOperations"}, Call::kPerformOperations, 5, false},
    {{"QueryOperationsAborted"}, Call::kQueryOperationsAborted, 6, true},
};

// E_FAIL, E_OUTOFMEMORY, E_ACCESSDENIED, REGDB_E_CLASSNOTREG, ERROR_CANCELLED, E_UNEXPECTED.
constexpr std::uint32_t kFailures[] = {0x80004005, 0x8007000E, 0x80070005,
                                       0x80040154, 0x800704C7, 0x8000FFFF};

class RecycleSteps : public DeletionTest, public ::testing::WithParamInterface<Step> {
 protected:
  RecycleSteps() {
    AddFile(kStepsPath);
    // Whatever is closed has to be closed before COM goes.
    windows_.SetHook([this](const simulated::CallRecord& record) {
      if (record.call == Call::kUninitializeCom) {
        EXPECT_EQ(windows_.open_handles(), 0u);
      }
    });
  }

  // What follows the questions about the folders and the file.
  Lines ShellCalls(const Text& path) {
    Lines calls = CallsOf(kMoveToRecycleBin, path);
    const auto first = std::find(calls.begin(), calls.end(), "InitializeCom");
    EXPECT_NE(first, calls.end());
    calls.erase(calls.begin(), first);
    return calls;
  }
};

INSTANTIATE_TEST_SUITE_P(All, RecycleSteps, ::testing::ValuesIn(kSteps), support::CaseName());

TEST_P(RecycleSteps, A_step_that_fails_is_the_last_one_and_the_second_way_follows) {
  for (const std::uint32_t failure : kFailures) {
    SCOPED_TRACE(failure);
    AddFile(kStepsPath);
    windows_.ClearFaults();
    windows_.FailCall(GetParam().call, 1, Repeat::kOnce, Error{failure});
    Lines expected(kSequence.begin(),
                   kSequence.begin() + static_cast<std::ptrdiff_t>(GetParam().calls_before) + 1);
    if (GetParam().call != Call::kInitializeCom) {
      expected.push_back("UninitializeCom");
    }
    expected.push_back("FullPathName C:\\d\\f");
    expected.push_back("ShellDelete C:\\d\\f 0x3454");
    EXPECT_EQ(ShellCalls(kStepsPath), expected);
    EXPECT_FALSE(windows_.Exists(kStepsPath));
    EXPECT_EQ(windows_.open_handles(), 0u);
  }
}

TEST_P(RecycleSteps, A_step_that_fails_is_the_end_of_an_extended_path) {
  windows_.FailCall(GetParam().call, 1, Repeat::kFromThenOn);
  const Lines calls = ShellCalls(kExtended);
  EXPECT_EQ(calls.back(),
            GetParam().call == Call::kInitializeCom ? "InitializeCom" : "UninitializeCom");
  EXPECT_EQ(windows_.CallCount(Call::kShellDelete), 0u);
  EXPECT_EQ(windows_.Exists(kStepsPath), !GetParam().performed);
}

TEST_P(RecycleSteps, The_answer_after_a_failed_step_is_that_of_the_second_way) {
  windows_.FailCall(GetParam().call, 1);
  // A file that has gone already is missing for the second way.
  EXPECT_EQ(Run(kMoveToRecycleBin, kStepsPath), GetParam().performed ? 0 : 1);
  EXPECT_EQ(windows_.recycled(), std::vector<Text>{kStepsPath});
  AddFile(kStepsPath);
  windows_.SetShellDeleteResult(5, false, true);
  windows_.ClearFaults();
  windows_.FailCall(GetParam().call, 1);
  EXPECT_EQ(Run(kMoveToRecycleBin, kStepsPath), 0);
  EXPECT_EQ(windows_.Exists(kStepsPath), !GetParam().performed);
}

TEST_P(RecycleSteps, COM_stays_as_the_caller_has_left_it) {
  ASSERT_EQ(platform::InitializeCom(), platform::kComOk);
  windows_.ClearRecord();
  windows_.ClearFaults();
  windows_.FailCall(GetParam().call, 1);
  Run(kMoveToRecycleBin, kStepsPath);
  EXPECT_EQ(windows_.CallCount(Call::kInitializeCom), 1u);
  EXPECT_EQ(windows_.CallCount(Call::kUninitializeCom),
            GetParam().call == Call::kInitializeCom ? 0u : 1u);
  // Still initialised, exactly once.
  platform::FileOperation operation;
  EXPECT_EQ(platform::CreateFileOperation(operation), platform::kComOk);
  operation.Reset();
  platform::UninitializeCom();
  EXPECT_NE(platform::CreateFileOperation(operation), platform::kComOk);
}

TEST_P(RecycleSteps, In_the_other_apartment_COM_is_not_uninitialised_after_a_failure) {
  windows_.SetComMultithreaded(true);
  if (GetParam().call != Call::kInitializeCom) {
    windows_.FailCall(GetParam().call, 1);
  }
  Run(kMoveToRecycleBin, kStepsPath);
  EXPECT_EQ(windows_.CallCount(Call::kUninitializeCom), 0u);
  EXPECT_EQ(windows_.open_handles(), 0u);
  EXPECT_FALSE(windows_.Exists(kStepsPath));
}

class RecycleCom : public DeletionTest {
 protected:
  RecycleCom() { AddFile(kStepsPath); }
};

TEST_F(RecycleCom, A_fresh_initialisation_is_undone) {
  EXPECT_EQ(Run(kMoveToRecycleBin, kStepsPath), 1);
  EXPECT_EQ(windows_.CallCount(Call::kInitializeCom), 1u);
  EXPECT_EQ(windows_.CallCount(Call::kUninitializeCom), 1u);
}

TEST_F(RecycleCom, A_second_initialisation_is_undone_as_well) {
  ASSERT_EQ(platform::InitializeCom(), platform::kComOk);
  EXPECT_EQ(Run(kMoveToRecycleBin, kStepsPath), 1);
  EXPECT_EQ(windows_.CallCount(Call::kUninitializeCom), 1u);
  EXPECT_EQ(windows_.CallCount(Call::kShellDelete), 0u);
  platform::UninitializeCom();  // would end the test if the library had undone too much
}

TEST_F(RecycleCom, A_thread_in_the_other_apartment_is_used_as_it_is) {
  windows_.SetComMultithreaded(true);
  EXPECT_EQ(CallsOf(kMoveToRecycleBin, kStepsPath),
            (Lines{"FullPathName C:\\d\\f", "QueryAttributes C:\\d", "QueryAttributes C:\\",
                   "QueryAttributes C:\\d\\f", "InitializeCom", "CreateFileOperation",
                   "SetOperationFlags 0x3654", "CreateShellItem C:\\d\\f", "MarkForDeletion",
                   "PerformOperations", "QueryOperationsAborted", "QueryAttributes C:\\d\\f"}));
  EXPECT_EQ(windows_.recycled(), std::vector<Text>{kStepsPath});
}

// Only the exact code of the other apartment is good enough to go on.
TEST_F(RecycleCom, A_failure_next_to_the_changed_mode_is_a_failure) {
  for (const std::uint32_t failure : {0x80010105u, 0x80010107u, 0x80070106u, 0x80000106u}) {
    windows_.ClearFaults();
    windows_.ClearRecord();
    windows_.FailCall(Call::kInitializeCom, 1, Repeat::kOnce, Error{failure});
    ExpectRefused(kMoveToRecycleBin, kExtended);
    EXPECT_EQ(windows_.CallCount(Call::kCreateFileOperation), 0u);
    EXPECT_EQ(windows_.CallCount(Call::kUninitializeCom), 0u);
  }
}

// A question that fails counts as gone: that is all the question can say.
TEST_F(RecycleCom, The_last_question_decides_after_a_success) {
  windows_.SetRecyclingIneffective(true);
  // The folder, the root, the file itself; then the file again.
  windows_.FailCall(Call::kQueryAttributes, 4);
  EXPECT_EQ(Run(kMoveToRecycleBin, kStepsPath), 1);
  EXPECT_TRUE(windows_.Exists(kStepsPath));
  EXPECT_EQ(windows_.CallCount(Call::kShellDelete), 0u);
}

TEST_F(RecycleCom, Something_new_at_the_place_counts_as_still_there) {
  windows_.SetHook([this](const simulated::CallRecord& record) {
    if (record.call == Call::kUninitializeCom) {
      windows_.AddFile(kStepsPath, "another");
      windows_.SetShellDeleteResult(5, false, true);
    }
  });
  EXPECT_EQ(Run(kMoveToRecycleBin, kStepsPath), 0);
  EXPECT_EQ(windows_.CallCount(Call::kShellDelete), 1u);
  EXPECT_EQ(windows_.ContentOf(kStepsPath), "another");
}

TEST_F(RecycleCom, Each_thread_has_its_own_balance) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    AddFile(u"C:\\t\\" + support::Wide(std::to_string(t)));
  }
  std::atomic<int> done{0};
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      const Text path = u"C:\\t\\" + support::Wide(std::to_string(t));
      const bool initialised = t == 1 && platform::InitializeCom() == platform::kComOk;
      done += qs_move_to_recycle_bin(path.c_str());
      if (initialised) {
        platform::UninitializeCom();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(done.load(), 3);
  EXPECT_EQ(windows_.CallCount(Call::kInitializeCom), 4u);
  EXPECT_EQ(windows_.CallCount(Call::kUninitializeCom), 4u);
}

}  // namespace
}  // namespace quastel::deletion_tests
