#include <cstddef>
#include <cstdint>

#include "fuzz/hash_cache_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quastel::fuzz::CheckHashCache({reinterpret_cast<const char*>(data), size});
  return 0;
}
