#include "scan_roots.h"

#include <quastel_core.h>
#include <windows.h>

#include "full_path.h"
#include "path_complaint.h"
#include "path_text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

// A drive's root keeps its separator: "Q:" would be the drive's current folder.
void DropTrailingSeparators(std::wstring& path) {
  while (path.size() > 1 && IsSeparator(path.back()) && path[path.size() - 2] != L':') {
    path.pop_back();
  }
}

std::wstring AbsoluteRoot(const std::wstring& given) {
  std::wstring root = FullPath(given);
  // Without the extended-length prefix the library may join its separators freely, and it puts the
  // prefix back where a path is long. It stays where it changes the meaning, as for "name.".
  const std::wstring plain = WithoutExtendedPrefix(root);
  if (plain != root && FullPath(plain) == plain) {
    root = plain;
  }
  DropTrailingSeparators(root);
  return root;
}

PathComplaint WhyNotAFolder(const std::wstring& given, const std::wstring& root) {
  const DWORD attributes = GetFileAttributesW(SystemForm(root).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return WhyNotFound(given, root, GetLastError(), "folders, all below them is scanned");
  }
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
    return {Quoted(root) + " is a file, not a folder", "name the folder that holds it"};
  }
  return {Quoted(root) + " is a junction or a link, and these are never entered",
          "name the folder that it leads to"};
}

}  // namespace

std::vector<std::wstring> ResolveRoots(const std::vector<std::wstring>& given) {
  std::vector<std::wstring> roots;
  PathComplaint all;
  for (const std::wstring& text : given) {
    if (text.empty()) {
      throw UserError(ExitCode::kUsage, "a folder's name is empty", "write . for this folder");
    }
    std::wstring root = AbsoluteRoot(text);
    if (qs_directory_exists(root.c_str()) == 0) {
      const PathComplaint complaint = WhyNotAFolder(text, root);
      all.message += complaint.message + "\n";
      if (all.hint.find(complaint.hint) == std::string::npos) {
        all.hint += complaint.hint + "\n";
      }
    }
    roots.push_back(std::move(root));
  }
  if (!all.message.empty()) {
    throw UserError(ExitCode::kError, all.message, all.hint);
  }
  return roots;
}

}  // namespace quastel::client
