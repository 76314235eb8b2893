#ifndef QUASTEL_APPS_QUASTEL_FULL_PATH_H_
#define QUASTEL_APPS_QUASTEL_FULL_PATH_H_

#include <string>

namespace quastel::client {

// The path made absolute by the system's rules, without looking whether it exists; one that the
// system cannot resolve comes back as it is.
std::wstring FullPath(const std::wstring& path);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_FULL_PATH_H_
