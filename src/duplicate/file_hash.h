// Hashing files: whole, or one block at either end.

#ifndef QUASTEL_DUPLICATE_FILE_HASH_H_
#define QUASTEL_DUPLICATE_FILE_HASH_H_

#include <cstdint>
#include <optional>
#include <string>

#include "base/text.h"

namespace quastel::duplicate {

// The hash text of whatever reads deliver until the end of the file. QS_FAILED when the file cannot
// be opened or read or there is no read buffer; QS_CANCELLED when `cancel` was seen set, which is
// looked at before and after every read of 1 MiB. `text` is written for QS_OK only.
qs_status HashFile(const Char* path, std::uint32_t* cancel, std::string& text);

inline constexpr std::int64_t kBlockSize = 4096;

enum class BlockPlace { kStart, kEnd };

// The hash text of the first or last min(size, 4096) bytes. Nothing when the file cannot be read or
// is shorter than `size` says: half a block must not stand for a file.
std::optional<std::string> HashFileBlock(const Char* path, std::int64_t size, BlockPlace place);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_FILE_HASH_H_
