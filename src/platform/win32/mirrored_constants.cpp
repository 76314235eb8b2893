// Proof that the constants and types of the seam's headers are the system's own.

#include <type_traits>

#include "platform/attributes.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/search.h"
#include "platform/shell.h"
#include "platform/thread.h"
#include "platform/volume.h"
#include "platform/win32/windows_api.h"

namespace quastel::platform {

namespace {

constexpr bool Is(Error error, DWORD number) {
  return static_cast<DWORD>(error) == number;
}

}  // namespace

static_assert(Is(Error::kNone, ERROR_SUCCESS));
static_assert(Is(Error::kInvalidFunction, ERROR_INVALID_FUNCTION));
static_assert(Is(Error::kFileNotFound, ERROR_FILE_NOT_FOUND));
static_assert(Is(Error::kPathNotFound, ERROR_PATH_NOT_FOUND));
static_assert(Is(Error::kAccessDenied, ERROR_ACCESS_DENIED));
static_assert(Is(Error::kInvalidHandle, ERROR_INVALID_HANDLE));
static_assert(Is(Error::kNotEnoughMemory, ERROR_NOT_ENOUGH_MEMORY));
static_assert(Is(Error::kWriteProtect, ERROR_WRITE_PROTECT));
static_assert(Is(Error::kNoMoreFiles, ERROR_NO_MORE_FILES));
static_assert(Is(Error::kNotReady, ERROR_NOT_READY));
static_assert(Is(Error::kCrc, ERROR_CRC));
static_assert(Is(Error::kSharingViolation, ERROR_SHARING_VIOLATION));
static_assert(Is(Error::kHandleEof, ERROR_HANDLE_EOF));
static_assert(Is(Error::kNotSupported, ERROR_NOT_SUPPORTED));
static_assert(Is(Error::kBadNetworkPath, ERROR_BAD_NETPATH));
static_assert(Is(Error::kFileExists, ERROR_FILE_EXISTS));
static_assert(Is(Error::kInvalidParameter, ERROR_INVALID_PARAMETER));
static_assert(Is(Error::kDiskFull, ERROR_DISK_FULL));
static_assert(Is(Error::kInsufficientBuffer, ERROR_INSUFFICIENT_BUFFER));
static_assert(Is(Error::kInvalidName, ERROR_INVALID_NAME));
static_assert(Is(Error::kDirectoryNotEmpty, ERROR_DIR_NOT_EMPTY));
static_assert(Is(Error::kAlreadyExists, ERROR_ALREADY_EXISTS));
static_assert(Is(Error::kEnvironmentVariableNotFound, ERROR_ENVVAR_NOT_FOUND));
static_assert(Is(Error::kFilenameTooLong, ERROR_FILENAME_EXCED_RANGE));
static_assert(Is(Error::kDirectory, ERROR_DIRECTORY));
static_assert(Is(Error::kNoUnicodeTranslation, ERROR_NO_UNICODE_TRANSLATION));

static_assert(kAttributeReadOnly == FILE_ATTRIBUTE_READONLY);
static_assert(kAttributeHidden == FILE_ATTRIBUTE_HIDDEN);
static_assert(kAttributeSystem == FILE_ATTRIBUTE_SYSTEM);
static_assert(kAttributeDirectory == FILE_ATTRIBUTE_DIRECTORY);
static_assert(kAttributeArchive == FILE_ATTRIBUTE_ARCHIVE);
static_assert(kAttributeNormal == FILE_ATTRIBUTE_NORMAL);
static_assert(kAttributeReparsePoint == FILE_ATTRIBUTE_REPARSE_POINT);
static_assert(kAttributeOffline == FILE_ATTRIBUTE_OFFLINE);
static_assert(kAttributesInvalid == INVALID_FILE_ATTRIBUTES);

static_assert(kAccessRead == GENERIC_READ);
static_assert(kAccessWrite == GENERIC_WRITE);
static_assert(kShareRead == FILE_SHARE_READ);
static_assert(kShareWrite == FILE_SHARE_WRITE);
static_assert(kShareDelete == FILE_SHARE_DELETE);
static_assert(static_cast<DWORD>(Disposition::kCreateNew) == CREATE_NEW);
static_assert(static_cast<DWORD>(Disposition::kCreateAlways) == CREATE_ALWAYS);
static_assert(static_cast<DWORD>(Disposition::kOpenExisting) == OPEN_EXISTING);
static_assert(kFlagSequentialScan == FILE_FLAG_SEQUENTIAL_SCAN);
static_assert(kMoveReplaceExisting == MOVEFILE_REPLACE_EXISTING);
static_assert(kMoveWriteThrough == MOVEFILE_WRITE_THROUGH);

static_assert(static_cast<int>(SearchOperation::kNameMatch) == FindExSearchNameMatch);
static_assert(static_cast<int>(SearchOperation::kLimitToDirectories) ==
              FindExSearchLimitToDirectories);

static_assert(kDriveUnknown == DRIVE_UNKNOWN);
static_assert(kDriveNoRoot == DRIVE_NO_ROOT_DIR);
static_assert(kDriveRemovable == DRIVE_REMOVABLE);
static_assert(kDriveFixed == DRIVE_FIXED);
static_assert(kDriveRemote == DRIVE_REMOTE);

static_assert(kComOk == static_cast<ComResult>(S_OK));
static_assert(kComAlreadyInitialized == static_cast<ComResult>(S_FALSE));
static_assert(kComChangedMode == static_cast<ComResult>(RPC_E_CHANGED_MODE));
static_assert(ComSucceeded(static_cast<ComResult>(S_FALSE)) && SUCCEEDED(S_FALSE));
static_assert(!ComSucceeded(static_cast<ComResult>(E_FAIL)) && FAILED(E_FAIL));

static_assert(kPriorityNormal == THREAD_PRIORITY_NORMAL);
static_assert(kPriorityError == THREAD_PRIORITY_ERROR_RETURN);
static_assert(kNoFiberSlot == FLS_OUT_OF_INDEXES);

static_assert(std::is_same_v<Char, WCHAR>);
static_assert(sizeof(RawHandle) == sizeof(HANDLE));

}  // namespace quastel::platform
