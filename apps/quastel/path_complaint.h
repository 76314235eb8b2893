#ifndef QUASTEL_APPS_QUASTEL_PATH_COMPLAINT_H_
#define QUASTEL_APPS_QUASTEL_PATH_COMPLAINT_H_

#include <string>

namespace quastel::client {

// Why a path that was typed is of no use, and what may help; the hint may be empty.
struct PathComplaint {
  std::string message;
  std::string hint;
};

// The form in which the library gives the path to the system: a long one gets its prefix.
std::wstring SystemForm(const std::wstring& path);

// For a path that the system refuses with `error`. `given` is what was typed and `path` what is
// shown of it; `thing` is the plural of what was wanted, for the hint.
PathComplaint WhyNotFound(const std::wstring& given, const std::wstring& path, unsigned long error,
                          const std::string& thing);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_PATH_COMPLAINT_H_
