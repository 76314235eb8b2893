// The full path of a path, as the system gives it.

#ifndef QUASTEL_TESTS_CONTRACT_FULL_PATH_H_
#define QUASTEL_TESTS_CONTRACT_FULL_PATH_H_

#include <cstdint>
#include <vector>

#include "base/text.h"
#include "platform/file_system.h"

namespace quastel::contract {

inline Text FullPath(const Text& path) {
  std::vector<Char> buffer(32768);
  const std::uint32_t length = platform::FullPathName(
      path.c_str(), static_cast<std::uint32_t>(buffer.size()), buffer.data());
  return Text(buffer.data(), length);
}

}  // namespace quastel::contract

#endif  // QUASTEL_TESTS_CONTRACT_FULL_PATH_H_
