#include <gtest/gtest.h>

#include <functional>

#include "platform/file_system.h"
#include "platform/shell.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

using platform::ComResult;
using platform::ComSucceeded;
using platform::kComOk;

constexpr std::uint32_t kFlags = 0x3654;  // with undo
const Text kFile = QS_TEXT("C:\\d\\File.txt");

// The whole sequence; answers the first failure, or what the operation says at the end.
struct Outcome {
  ComResult result = kComOk;
  bool aborted = false;
};

Outcome RunSequence(const Text& path, std::uint32_t flags) {
  Outcome outcome;
  outcome.result = platform::InitializeCom();
  if (!ComSucceeded(outcome.result) && outcome.result != platform::kComChangedMode) {
    return outcome;
  }
  const bool initialised = ComSucceeded(outcome.result);
  {
    platform::FileOperation operation;
    platform::ShellItem item;
    const std::function<ComResult()> steps[] = {
        [&] { return platform::CreateFileOperation(operation); },
        [&] { return platform::SetOperationFlags(operation, flags); },
        [&] { return platform::CreateShellItem(path.c_str(), item); },
        [&] { return platform::MarkForDeletion(operation, item); },
        [&] { return platform::PerformOperations(operation); },
        [&] { return platform::QueryOperationsAborted(operation, outcome.aborted); },
    };
    for (const auto& step : steps) {
      outcome.result = step();
      if (!ComSucceeded(outcome.result)) {
        break;
      }
    }
  }
  if (initialised) {
    platform::UninitializeCom();
  }
  return outcome;
}

class RecycleBin : public testing::Test {
 protected:
  RecycleBin() { windows_.AddFile(kFile, "x"); }
  SimulatedWindows windows_;
};

TEST_F(RecycleBin, A_file_goes_into_the_bin_with_its_own_spelling) {
  const Outcome outcome = RunSequence(QS_TEXT("c:\\D\\FILE.TXT"), kFlags);
  EXPECT_EQ(outcome.result, kComOk);
  EXPECT_FALSE(outcome.aborted);
  EXPECT_FALSE(windows_.Exists(kFile));
  EXPECT_EQ(windows_.recycled(), std::vector<Text>{kFile});
}

TEST_F(RecycleBin, Without_undo_the_file_goes_for_good) {
  EXPECT_EQ(RunSequence(kFile, 0).result, kComOk);
  EXPECT_FALSE(windows_.Exists(kFile));
  EXPECT_TRUE(windows_.recycled().empty());
}

TEST_F(RecycleBin, Every_step_can_fail_and_then_nothing_is_removed) {
  const std::string before = windows_.Describe();
  for (const Call step :
       {Call::kInitializeCom, Call::kCreateFileOperation, Call::kSetOperationFlags,
        Call::kCreateShellItem, Call::kMarkForDeletion, Call::kPerformOperations}) {
    windows_.ClearFaults();
    windows_.FailCall(step, 1);
    EXPECT_EQ(RunSequence(kFile, kFlags).result, 0x80004005u) << NameOf(step);
    EXPECT_EQ(windows_.Describe(), before) << NameOf(step);
    EXPECT_EQ(windows_.open_handles(), 0u) << NameOf(step);
  }
  windows_.ClearFaults();
  windows_.FailCall(Call::kQueryOperationsAborted, 1);
  EXPECT_EQ(RunSequence(kFile, kFlags).result, 0x80004005u);
  EXPECT_FALSE(windows_.Exists(kFile));
}

TEST_F(RecycleBin, An_operation_may_report_success_and_do_nothing) {
  windows_.SetRecyclingIneffective(true);
  const Outcome outcome = RunSequence(kFile, kFlags);
  EXPECT_EQ(outcome.result, kComOk);
  EXPECT_FALSE(outcome.aborted);
  EXPECT_TRUE(windows_.Exists(kFile));
  EXPECT_TRUE(windows_.recycled().empty());
}

TEST_F(RecycleBin, An_operation_may_be_aborted) {
  windows_.SetOperationsAborted(true);
  EXPECT_TRUE(RunSequence(kFile, kFlags).aborted);
  EXPECT_TRUE(windows_.Exists(kFile));
}

TEST_F(RecycleBin, A_file_in_use_counts_as_aborted) {
  windows_.Lock(kFile, 0);
  EXPECT_TRUE(RunSequence(kFile, kFlags).aborted);
  EXPECT_TRUE(windows_.Exists(kFile));
}

TEST_F(RecycleBin, The_other_apartment_serves_as_well) {
  windows_.SetComMultithreaded(true);
  EXPECT_EQ(platform::InitializeCom(), platform::kComChangedMode);
  EXPECT_EQ(RunSequence(kFile, kFlags).result, kComOk);
  EXPECT_FALSE(windows_.Exists(kFile));
}

TEST_F(RecycleBin, The_shell_parses_neither_the_long_prefix_nor_slashes_nor_relative_paths) {
  EXPECT_EQ(RunSequence(QS_TEXT("\\\\?\\") + kFile, kFlags).result, 0x80070057u);
  EXPECT_EQ(RunSequence(QS_TEXT("C:/d/File.txt"), kFlags).result, 0x80070057u);
  EXPECT_EQ(RunSequence(QS_TEXT("File.txt"), kFlags).result, 0x80070057u);
  EXPECT_EQ(RunSequence(QS_TEXT("C:\\d\\missing"), kFlags).result, 0x80070002u);
  EXPECT_TRUE(windows_.Exists(kFile));
}

TEST_F(RecycleBin, The_operation_takes_paths_beyond_260_code_units) {
  Text path = QS_TEXT("C:");
  while (path.size() < 300) {
    path += QS_TEXT("\\") + Text(40, Char{'n'});
  }
  windows_.AddFile(path, "x");
  EXPECT_EQ(RunSequence(path, kFlags).result, kComOk);
  EXPECT_EQ(windows_.recycled(), std::vector<Text>{path});
}

Text TwiceTerminated(const Text& path) {
  return path + Text(1, Char{0});
}

TEST_F(RecycleBin, The_older_call_recycles_with_undo_also_what_is_read_only) {
  windows_.SetAttributes(kFile, platform::kAttributeReadOnly);
  const auto result = platform::ShellDelete(TwiceTerminated(kFile).c_str(), 0x3454);
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(windows_.recycled(), std::vector<Text>{kFile});
}

TEST_F(RecycleBin, The_older_call_refuses_the_long_form_and_long_paths) {
  EXPECT_EQ(platform::ShellDelete(TwiceTerminated(QS_TEXT("\\\\?\\") + kFile).c_str(), 0).code,
            0x7C);
  const Text long_path = QS_TEXT("C:\\") + Text(260, Char{'n'});
  EXPECT_EQ(platform::ShellDelete(TwiceTerminated(long_path).c_str(), 0).code, 0x79);
  EXPECT_TRUE(windows_.Exists(kFile));
}

TEST_F(RecycleBin, The_older_call_answers_what_a_test_tells_it_to) {
  windows_.SetShellDeleteResult(0x75, false, true);
  EXPECT_EQ(platform::ShellDelete(TwiceTerminated(kFile).c_str(), 0).code, 0x75);
  EXPECT_TRUE(windows_.Exists(kFile));
  windows_.SetShellDeleteResult(0, true, true);
  EXPECT_TRUE(platform::ShellDelete(TwiceTerminated(kFile).c_str(), 0).aborted);
  EXPECT_TRUE(windows_.Exists(kFile));
  windows_.SetShellDeleteResult(0, false, false);
  EXPECT_EQ(platform::ShellDelete(TwiceTerminated(kFile).c_str(), 0).code, 0);
  EXPECT_TRUE(windows_.Exists(kFile));
  windows_.FailCall(Call::kShellDelete, 4, Repeat::kOnce, platform::Error::kSharingViolation);
  EXPECT_EQ(platform::ShellDelete(TwiceTerminated(kFile).c_str(), 0).code, 32);
}

}  // namespace
}  // namespace quastel::simulated
