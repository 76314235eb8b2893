#include "standard_rules.h"

#include <windows.h>

#include "full_path.h"
#include "path_complaint.h"
#include "path_text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

std::wstring ProgramFolder() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return FolderOf(path);
    }
    path.resize(2 * path.size());
  }
}

bool IsFile(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(SystemForm(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

}  // namespace

std::wstring StandardRules() {
  const std::wstring folder = ProgramFolder();
  const std::wstring beside = FullPath(folder + L"\\rules\\standard.xml");
  const std::wstring installed = FullPath(folder + L"\\..\\share\\quastel\\rules\\standard.xml");
  for (const std::wstring& path : {beside, installed}) {
    if (IsFile(path)) {
      return path;
    }
  }
  throw UserError(ExitCode::kError,
                  "there is no standard rule document: neither " + Quoted(beside) + " nor " +
                      Quoted(installed) + " exists",
                  "name a rule document with --rules FILE");
}

}  // namespace quastel::client
