// The machine of the contract tests on Windows itself, or on Wine.

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <winioctl.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

#include "contract/machine.h"

namespace quastel::contract {
namespace {

[[noreturn]] void Die(const char* what) {
  std::fprintf(stderr, "contract tests: cannot %s (%lu)\n", what, ::GetLastError());
  std::fflush(stderr);
  std::abort();
}

void Require(bool done, const char* what) {
  if (!done) {
    Die(what);
  }
}

// Long enough names are for the tests to make: this machine takes every path in the long form.
Text LongForm(TextView path) {
  return path.substr(0, 4) == QS_TEXT("\\\\?\\") ? Text(path) : QS_TEXT("\\\\?\\") + Text(path);
}

HANDLE Open(const Text& path, DWORD access, DWORD share, DWORD disposition, DWORD flags) {
  return ::CreateFileW(LongForm(path).c_str(), access, share, nullptr, disposition, flags, nullptr);
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// A mount point as the file systems of Windows store it.
bool MakeJunction(const Text& link, const Text& target) {
  struct ReparseHeader {
    DWORD tag;
    WORD data_length;
    WORD reserved;
    WORD substitute_offset;
    WORD substitute_length;
    WORD print_offset;
    WORD print_length;
  };
  const Text substitute = QS_TEXT("\\??\\") + target;
  const auto bytes = [](const Text& text) { return static_cast<WORD>(text.size() * sizeof(Char)); };
  const auto terminated = [&](const Text& text) { return static_cast<WORD>(bytes(text) + 2); };
  ReparseHeader header{};
  header.tag = IO_REPARSE_TAG_MOUNT_POINT;
  header.substitute_length = bytes(substitute);
  header.print_offset = terminated(substitute);
  header.print_length = bytes(target);
  header.data_length = static_cast<WORD>(8 + terminated(substitute) + terminated(target));
  std::vector<unsigned char> data;
  const auto append = [&](const void* from, std::size_t count) {
    const auto* first = static_cast<const unsigned char*>(from);
    data.insert(data.end(), first, first + count);
  };
  append(&header, sizeof header);
  append(substitute.c_str(), terminated(substitute));
  append(target.c_str(), terminated(target));

  if (!::CreateDirectoryW(LongForm(link).c_str(), nullptr)) {
    return false;
  }
  const HANDLE folder = Open(link, GENERIC_WRITE, kShareAll, OPEN_EXISTING,
                             FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
  DWORD returned = 0;
  const bool made =
      folder != INVALID_HANDLE_VALUE &&
      ::DeviceIoControl(folder, FSCTL_SET_REPARSE_POINT, data.data(),
                        static_cast<DWORD>(data.size()), nullptr, 0, &returned, nullptr) != FALSE;
  if (folder != INVALID_HANDLE_VALUE) {
    ::CloseHandle(folder);
  }
  if (!made) {
    ::RemoveDirectoryW(LongForm(link).c_str());
  }
  return made;
}

// A path in the words of Wine's host, in quotes; nothing on Windows.
Text HostPath(const Text& path) {
  using HostName = char*(CDECL*)(const wchar_t*);
  const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
  const auto host_name = reinterpret_cast<HostName>(
      reinterpret_cast<void*>(::GetProcAddress(kernel, "wine_get_unix_file_name")));
  char* const name = host_name == nullptr ? nullptr : host_name(path.c_str());
  if (name == nullptr) {
    return {};
  }
  Text text = QS_TEXT("\"");
  for (const char* c = name; *c != 0; ++c) {
    text += static_cast<Char>(*c);
  }
  ::HeapFree(::GetProcessHeap(), 0, name);
  return text + QS_TEXT("\"");
}

bool IsThere(const Text& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Starts a program of Wine's host and waits until `path` is there, or until it is gone: the
// handles of such a program do not tell when it ends.
bool RunOnHost(const Text& program, const Text& arguments, const Text& path, bool there) {
  const Text image = QS_TEXT("Z:\\bin\\") + program;
  Text command = image + QS_TEXT(" ") + arguments;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!::CreateProcessW(image.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process)) {
    return false;
  }
  for (int i = 0; i < 1000 && IsThere(path) != there; ++i) {
    ::Sleep(5);
  }
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  return IsThere(path) == there;
}

// Wine 8 can neither make a link nor remove one, but it starts programs of its host and shows the
// host's symbolic links to folders as reparse points.
bool MakeHostLink(const Text& link, const Text& target) {
  const std::size_t split = link.rfind(Char{'\\'});
  const Text parent = HostPath(link.substr(0, split));
  const Text host_target = HostPath(target);
  if (parent.empty() || host_target.empty()) {
    return false;
  }
  const Text host_link =
      parent.substr(0, parent.size() - 1) + QS_TEXT("/") + link.substr(split + 1) + QS_TEXT("\"");
  return RunOnHost(QS_TEXT("ln"), QS_TEXT("-s ") + host_target + QS_TEXT(" ") + host_link, link,
                   true);
}

void RemoveLink(const Text& link) {
  const Text host_link = HostPath(link);
  if (host_link.empty()) {
    ::RemoveDirectoryW(LongForm(link).c_str());
  } else {
    RunOnHost(QS_TEXT("rm"), QS_TEXT("-f ") + host_link, link, false);
  }
}

struct Entry {
  Text path;
  DWORD attributes;
};

std::vector<Entry> EntriesOf(const Text& folder) {
  std::vector<Entry> entries;
  WIN32_FIND_DATAW data{};
  const HANDLE search = ::FindFirstFileW((LongForm(folder) + QS_TEXT("\\*")).c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) {
    return entries;
  }
  do {
    const Text name = data.cFileName;
    if (name != QS_TEXT(".") && name != QS_TEXT("..")) {
      entries.push_back({folder + QS_TEXT("\\") + name, data.dwFileAttributes});
    }
  } while (::FindNextFileW(search, &data));
  ::FindClose(search);
  return entries;
}

void RemoveTree(const Text& folder) {
  const std::vector<Entry> entries = EntriesOf(folder);
  // Links first: one whose target has gone is not seen any more.
  for (const Entry& entry : entries) {
    if ((entry.attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
      RemoveLink(entry.path);
    }
  }
  for (const Entry& entry : entries) {
    if ((entry.attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
      continue;
    }
    if ((entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      RemoveTree(entry.path);
      continue;
    }
    ::SetFileAttributesW(LongForm(entry.path).c_str(), FILE_ATTRIBUTE_NORMAL);
    ::DeleteFileW(LongForm(entry.path).c_str());
  }
  ::RemoveDirectoryW(LongForm(folder).c_str());
}

Text CurrentFolder() {
  Char buffer[MAX_PATH] = {};
  Require(::GetCurrentDirectoryW(MAX_PATH, buffer) != 0, "read the current folder");
  return buffer;
}

}  // namespace

struct Machine::State {
  Text folder;
  Text current_folder_before = CurrentFolder();
  std::map<Text, HANDLE> locks;
  std::vector<Text> variables;
};

Machine::Machine() : state_(std::make_unique<State>()) {
  Char temp[MAX_PATH + 1] = {};
  Require(::GetTempPathW(MAX_PATH, temp) != 0, "find the temporary folder");
  Char long_temp[MAX_PATH + 1] = {};
  const DWORD length = ::GetLongPathNameW(temp, long_temp, MAX_PATH);
  Require(length != 0 && length < MAX_PATH, "spell the temporary folder out");
  static int number = 0;
  bool made = false;
  // A folder that a run before has left behind must not end this one.
  for (int attempt = 0; attempt < 100 && !made; ++attempt) {
    state_->folder = Text(long_temp) + QS_TEXT("quastel_contract_") +
                     std::to_wstring(::GetCurrentProcessId()) + QS_TEXT("_") +
                     std::to_wstring(++number);
    made = ::CreateDirectoryW(state_->folder.c_str(), nullptr) != FALSE;
  }
  Require(made, "make a folder");
}

Machine::~Machine() {
  for (const auto& [path, handle] : state_->locks) {
    ::CloseHandle(handle);
  }
  for (const Text& name : state_->variables) {
    ::SetEnvironmentVariableW(name.c_str(), nullptr);
  }
  ::SetCurrentDirectoryW(state_->current_folder_before.c_str());
  RemoveTree(state_->folder);
}

const Text& Machine::folder() const {
  return state_->folder;
}

Text Machine::MakeFolder(TextView relative) {
  const Text path = Path(relative);
  Require(::CreateDirectoryW(LongForm(path).c_str(), nullptr) != FALSE, "make a folder");
  return path;
}

Text Machine::MakeFile(TextView relative, std::string_view content) {
  const Text path = Path(relative);
  const HANDLE file = Open(path, GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
  Require(file != INVALID_HANDLE_VALUE, "make a file");
  DWORD written = 0;
  Require(::WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written,
                      nullptr) != FALSE &&
              written == content.size(),
          "write a file");
  ::CloseHandle(file);
  return path;
}

Text Machine::MakeSparseFile(TextView relative, std::uint64_t size) {
  const Text path = Path(relative);
  const HANDLE file = Open(path, GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
  Require(file != INVALID_HANDLE_VALUE, "make a file");
  DWORD returned = 0;
  // Where a file system has no such flag, a file without written data is sparse anyway.
  ::DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<LONGLONG>(size);
  Require(
      ::SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != FALSE && ::SetEndOfFile(file) != FALSE,
      "size a file");
  ::CloseHandle(file);
  return path;
}

Text Machine::MakeFolderLink(TextView relative, const Text& target) {
  const Text path = Path(relative);
  Require(MakeJunction(path, target) || MakeHostLink(path, target), "make a link");
  return path;
}

void Machine::SetAttributes(const Text& path, platform::Attributes attributes) {
  Require(::SetFileAttributesW(LongForm(path).c_str(), attributes) != FALSE, "set attributes");
}

void Machine::SetLastWrite(const Text& path, std::uint64_t file_time) {
  const HANDLE file =
      Open(path, FILE_WRITE_ATTRIBUTES, kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  Require(file != INVALID_HANDLE_VALUE, "open a file");
  const FILETIME time{static_cast<DWORD>(file_time), static_cast<DWORD>(file_time >> 32)};
  Require(::SetFileTime(file, nullptr, nullptr, &time) != FALSE, "set a time");
  ::CloseHandle(file);
}

bool Machine::Exists(const Text& path) const {
  return ::GetFileAttributesW(LongForm(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string Machine::ContentOf(const Text& path) const {
  const HANDLE file = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING, 0);
  if (file == INVALID_HANDLE_VALUE) {
    return "(missing)";
  }
  std::string content(1 << 16, '\0');
  DWORD read = 0;
  Require(
      ::ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr) != FALSE,
      "read a file");
  ::CloseHandle(file);
  content.resize(read);
  return content;
}

void Machine::Lock(const Text& path, std::uint32_t share) {
  const HANDLE file = Open(path, GENERIC_READ, share, OPEN_EXISTING, 0);
  Require(file != INVALID_HANDLE_VALUE, "lock a file");
  state_->locks.emplace(path, file);
}

void Machine::Unlock(const Text& path) {
  const auto found = state_->locks.find(path);
  Require(found != state_->locks.end() && ::CloseHandle(found->second) != FALSE, "unlock a file");
  state_->locks.erase(found);
}

void Machine::SetCurrentFolder(const Text& path) {
  Require(::SetCurrentDirectoryW(path.c_str()) != FALSE, "set the current folder");
}

void Machine::SetEnvironment(const Text& name, const std::optional<Text>& value) {
  Require(::SetEnvironmentVariableW(name.c_str(), value ? value->c_str() : nullptr) != FALSE,
          "set a variable");
  state_->variables.push_back(name);
}

}  // namespace quastel::contract
