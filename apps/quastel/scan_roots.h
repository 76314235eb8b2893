#ifndef QUASTEL_APPS_QUASTEL_SCAN_ROOTS_H_
#define QUASTEL_APPS_QUASTEL_SCAN_ROOTS_H_

#include <string>
#include <vector>

namespace quastel::client {

// The roots as absolute paths. Throws UserError that names each one that cannot be scanned: to the
// library a missing folder is an empty one, so it is the client who must tell a typing mistake.
std::vector<std::wstring> ResolveRoots(const std::vector<std::wstring>& given);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_ROOTS_H_
