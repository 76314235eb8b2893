#include "path_complaint.h"

#include <quastel_core.h>
#include <windows.h>

#include <cstdint>

#include "path_text.h"

namespace quastel::client {

std::wstring SystemForm(const std::wstring& path) {
  std::uint64_t needed = 0;
  qs_normalize_path(path.c_str(), nullptr, 0, &needed);
  std::wstring form(static_cast<std::size_t>(needed), L'\0');
  if (needed == 0 || qs_normalize_path(path.c_str(), form.data(), needed, &needed) != QS_OK) {
    return path;
  }
  form.resize(static_cast<std::size_t>(needed - 1));
  return form;
}

PathComplaint WhyNotFound(const std::wstring& given, const std::wstring& path, unsigned long error,
                          const std::string& thing) {
  const std::string shown = Quoted(path) + " ";
  if (given.find(L'"') != std::wstring::npos) {
    return {shown + "holds a quotation mark",
            "a \\ just before a closing quotation mark hides it: write \"C:\\My Folder\", without "
            "the last \\"};
  }
  if (given.find_first_of(L"*?") != std::wstring::npos) {
    return {shown + "does not exist", "wildcards are not expanded: name " + thing};
  }
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
      return {shown + "does not exist", "check the spelling, and that the drive is there"};
    case ERROR_ACCESS_DENIED:
      return {shown + "cannot be read (Windows error 5)", "this account may not open it"};
    case ERROR_SHARING_VIOLATION:
      return {shown + "cannot be read (Windows error 32)", "another program keeps it to itself"};
    default:
      return {shown + "cannot be read (Windows error " + std::to_string(error) + ")", ""};
  }
}

}  // namespace quastel::client
