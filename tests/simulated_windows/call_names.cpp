#include <array>

#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

constexpr std::array<const char*, static_cast<std::size_t>(Call::kCount)> kNames = {
    "FullPathName",
    "QueryAttributes",
    "QueryFileFacts",
    "RemoveFile",
    "RemoveFolder",
    "RenameFile",
    "FindFirstBasic",
    "FindFirst",
    "FindNext",
    "FindClose",
    "OpenFile",
    "ReadFrom",
    "WriteTo",
    "SeekTo",
    "QuerySize",
    "FlushFile",
    "CloseFile",
    "ToLocalFileTime",
    "ToCalendarTime",
    "ToFileTime",
    "SystemFileTime",
    "TickMilliseconds",
    "MonotonicNanoseconds",
    "EnvironmentVariable",
    "ProcessorCount",
    "DecodeUtf8",
    "DisableThreadNotifications",
    "StartThread",
    "JoinThread",
    "CurrentThreadPriority",
    "SetCurrentThreadPriority",
    "SleepMilliseconds",
    "AllocateFiberSlot",
    "FreeFiberSlot",
    "SetFiberValue",
    "VolumePathName",
    "QueryDriveType",
    "QuerySeekPenalty",
    "CreateFolderTree",
    "ShellDelete",
    "InitializeCom",
    "UninitializeCom",
    "CreateFileOperation",
    "CreateShellItem",
    "SetOperationFlags",
    "MarkForDeletion",
    "PerformOperations",
    "QueryOperationsAborted",
};

}  // namespace

const char* NameOf(Call call) {
  return call < Call::kCount ? kNames[static_cast<std::size_t>(call)] : "unknown call";
}

}  // namespace quastel::simulated
