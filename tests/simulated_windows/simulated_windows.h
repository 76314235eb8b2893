// A Windows in memory behind the seam.
//
// One SimulatedWindows is the machine of the whole test process for as long as it lives: the seam
// functions of src/platform act on it. Paths are given in the library's own character type. Every
// member may be called from any thread, also while the code under test runs on others.

#ifndef QUASTEL_TESTS_SIMULATED_WINDOWS_SIMULATED_WINDOWS_H_
#define QUASTEL_TESTS_SIMULATED_WINDOWS_SIMULATED_WINDOWS_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "platform/attributes.h"
#include "platform/error.h"

namespace quastel::simulated {

// The seam calls, one enumerator for each function that the fault plan and the record know.
enum class Call {
  kFullPathName,
  kQueryAttributes,
  kQueryFileFacts,
  kRemoveFile,
  kRemoveFolder,
  kRenameFile,
  kFindFirstBasic,
  kFindFirst,
  kFindNext,
  kFindClose,
  kOpenFile,
  kReadFrom,
  kWriteTo,
  kSeekTo,
  kQuerySize,
  kFlushFile,
  kCloseFile,
  kToLocalFileTime,
  kToCalendarTime,
  kToFileTime,
  kSystemFileTime,
  kTickMilliseconds,
  kMonotonicNanoseconds,
  kEnvironmentVariable,
  kProcessorCount,
  kDecodeUtf8,
  kDisableThreadNotifications,
  kStartThread,
  kJoinThread,
  kCurrentThreadPriority,
  kSetCurrentThreadPriority,
  kSleepMilliseconds,
  kAllocateFiberSlot,
  kFreeFiberSlot,
  kSetFiberValue,
  kVolumePathName,
  kQueryDriveType,
  kQuerySeekPenalty,
  kCreateFolderTree,
  kShellDelete,
  kInitializeCom,
  kUninitializeCom,
  kCreateFileOperation,
  kCreateShellItem,
  kSetOperationFlags,
  kMarkForDeletion,
  kPerformOperations,
  kQueryOperationsAborted,
  kCount,
};

const char* NameOf(Call call);

// The errors that are worth trying for a call, its usual one first; one alone for a call that
// answers by value.
std::vector<platform::Error> ErrorsOf(Call call);

// One call that the code under test made.
struct CallRecord {
  Call call;
  Text path;               // the path argument, as given; empty for calls without one
  std::uint64_t number;    // arguments worth asserting: bytes, offset, flags, milliseconds
  std::uint64_t thread;    // a small number for each thread that called, 0 for the first seen
  platform::Error result;  // what the call answered
};

enum class Repeat { kOnce, kFromThenOn };

enum class LinkKind {
  kJunction,    // a directory reparse point
  kFolderLink,  // a directory symbolic link
  kFileLink,    // a file symbolic link
};

// The seed of a file that is all zeros.
inline constexpr std::uint32_t kZeroSeed = 0xFFFFFFFF;

enum class SeekPenaltyAnswer { kFails, kShort, kPenalty, kNoPenalty };

struct DriveOptions {
  std::uint32_t type = 3;  // fixed
  SeekPenaltyAnswer seek_penalty = SeekPenaltyAnswer::kNoPenalty;
};

struct FileOptions {
  platform::Attributes attributes = platform::kAttributeArchive;
  std::uint64_t last_write = 133'000'000'000'000'000;  // FILETIME, UTC
};

// What may be denied at one path; each denies with Error::kAccessDenied.
struct Denial {
  bool listing = false;
  bool opening = false;
  bool deleting = false;
  bool querying = false;  // attributes and facts
};

// What a file or folder is, for assertions.
struct NodeFacts {
  bool is_folder = false;
  platform::Attributes attributes = 0;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;
  Text name;  // with the spelling that was given when it was made
};

class SimulatedWindows {
 public:
  // Comes with an empty fixed drive C: and the current folder C:\.
  SimulatedWindows();
  // Aborts the process with a message when handles, searches, COM objects or COM initialisations
  // of the code under test are still open.
  ~SimulatedWindows();
  SimulatedWindows(const SimulatedWindows&) = delete;
  SimulatedWindows& operator=(const SimulatedWindows&) = delete;

  // ---- The tree. Missing parent folders are made. Paths: drive-absolute or UNC, with or without
  // the \\?\ prefix; "/" counts as a separator, everything else is taken by the letter (no "." and
  // "..", no limit of 260, dots and spaces at the end of a name stay). A path that cannot be made
  // aborts the test. Adding a file that exists replaces it. The times of folders never change by
  // themselves.
  void AddDrive(char letter, DriveOptions options = {});
  void AddShare(TextView server_and_share);  // \\server\share, a remote drive
  void AddFolder(TextView path,
                 FileOptions options = {platform::kAttributeDirectory, 133'000'000'000'000'000});
  void AddFile(TextView path, std::string_view content, FileOptions options = {});
  // A file of any size that costs no memory: byte i of its content is PatternByte(seed, i).
  void AddSizedFile(TextView path, std::uint64_t size, std::uint32_t seed = 0,
                    FileOptions options = {});
  // A reparse point; `target` is what opening or walking through it would reach.
  void AddLink(LinkKind kind, TextView path, TextView target);
  // A file with the reparse bit whose content is elsewhere (cloud storage).
  void AddPlaceholder(TextView path, std::uint64_t size);

  void Remove(TextView path);  // a file, a link, or a folder with everything in it; tests only
  void SetContent(TextView path, std::string_view content);  // the last-write time stays
  void SetLastWrite(TextView path, std::uint64_t file_time);
  void SetAttributes(TextView path, platform::Attributes attributes);
  void Deny(TextView path, Denial denial);
  // Another process has the file open for reading with this sharing (kShare... bits) until Unlock.
  void Lock(TextView path, std::uint32_t share = 0);
  void Unlock(TextView path);

  bool Exists(TextView path) const;
  std::optional<NodeFacts> Find(TextView path) const;
  std::optional<std::string> ContentOf(TextView path) const;
  std::vector<Text> NamesIn(TextView folder) const;  // in listing order
  // Every path of the machine with kind, size, time, attributes and a content digest, one line
  // each: two equal texts mean two equal disks.
  std::string Describe() const;
  std::size_t node_count() const;

  static unsigned char PatternByte(std::uint32_t seed, std::uint64_t offset);

  // ---- Surroundings
  void SetEnvironment(TextView name, std::optional<Text> value);
  void SetCurrentFolder(TextView path);
  void SetProcessorCount(std::uint32_t count);
  void SetTimeZoneOffset(std::int64_t minutes_east_of_utc);
  void AdvanceClock(std::uint64_t milliseconds);  // all three clocks
  void SetSystemFileTime(std::uint64_t utc);
  // Sleep advances the manual clock by default; on, it also really sleeps (for thread tests).
  void SetRealSleep(bool real);
  // FindFirstBasic with kLimitToDirectories returns files as well when off (the default: on).
  void SetDirectoryLimitHonoured(bool honoured);
  std::vector<std::uint32_t> sleeps() const;  // milliseconds of every sleep, in order

  // ---- Recycle Bin
  std::vector<Text> recycled() const;  // the paths that went into the bin, in order
  // The operation object reports success and leaves the files in place.
  void SetRecyclingIneffective(bool ineffective);
  void SetOperationsAborted(bool aborted);  // of the operation object
  // A code other than 0 or an abort leaves the files in place whatever `removes` says.
  void SetShellDeleteResult(std::int32_t code, bool aborted, bool removes);
  // Whoever calls the library has initialised COM on every thread, for the other apartment:
  // InitializeCom answers kComChangedMode, and COM works nevertheless.
  void SetComMultithreaded(bool multithreaded);

  // ---- Faults. Calls are counted from the last ClearFaults, and only those that can fail: clocks,
  // sleeps, joins, the closing of a search and the silent closing of a file cannot. Each kind has a
  // fitting default error. A call that answers by value fails with its own failure value (0 from
  // FullPathName, false from SetFiberValue, ...). An error with the top bit set is a COM result as
  // it stands; COM calls turn any other error into one.
  void FailCall(Call call, std::uint64_t nth, Repeat repeat = Repeat::kOnce,
                std::optional<platform::Error> error = std::nullopt);
  // The nth call of any kind that can fail; without an error each call fails with its usual one.
  void FailAnyCall(std::uint64_t nth, Repeat repeat,
                   std::optional<platform::Error> error = std::nullopt);
  // From the nth call that can fail on, of any kind, nothing reaches the disk any more and
  // everything fails: what the disk holds at that moment is what a crash would leave.
  void CrashAtCall(std::uint64_t nth);
  void ClearFaults();  // also sets the counts back
  std::uint64_t faults_injected() const;
  std::optional<Call> first_fault() const;  // the call that it was injected into
  std::uint64_t fallible_calls() const;     // those counted so far

  // Called before each seam call, without any lock held: a test may change the machine in it.
  // Not called for what the hook itself does.
  void SetHook(std::function<void(const CallRecord&)> hook);

  // ---- The record of calls
  void SetRecording(bool on);  // off at first: a million files need no diary
  void ClearRecord();
  std::vector<CallRecord> record() const;
  std::uint64_t CallCount(Call call) const;  // counted whether recording or not; all calls
  std::uint64_t CallCountFor(Call call, TextView path) const;  // recording only

  // ---- The ledger
  std::size_t open_handles() const;        // files, searches, threads, COM objects
  std::size_t most_open_searches() const;  // the highest number at one time

  struct State;

 private:
  std::unique_ptr<State> state_;
};

// Is the calling thread inside a seam function or inside the simulation behind it? A test that
// makes allocations fail leaves those alone that stand for what Windows does on its own.
bool InsideSimulation() noexcept;

}  // namespace quastel::simulated

#endif  // QUASTEL_TESTS_SIMULATED_WINDOWS_SIMULATED_WINDOWS_H_
