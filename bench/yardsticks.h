// What a job needs of Windows and nothing else, written down as plainly as it goes: the floor that
// the library is compared with.

#ifndef QUASTEL_BENCH_YARDSTICKS_H_
#define QUASTEL_BENCH_YARDSTICKS_H_

#include <cstdint>
#include <string>

namespace quastel::bench {

struct Counts {
  std::uint64_t files = 0;
  std::uint64_t opens = 0;
  std::uint64_t bytes = 0;
};

// A recursive listing: one search for each folder.
Counts BareLoop(const std::wstring& root);

// The listing, and one open and read for each stage that a file enters: the head of each that
// shares its size, the tail of each that shares its head too, the whole of each that shares both.
// The whole is read in blocks of 1 MiB until a read finds the end.
Counts ThreeStages(const std::wstring& root);

// All bytes of all files, in blocks of 1 MiB.
Counts ReadBytes(const std::wstring& root);

// Deletes every file below the root, with the queries that a deletion of a snapshot has to make:
// the attributes of each folder above it down to the root of the drive, and twice, since the
// deletion itself looks again; the facts of the file, and its attributes.
Counts DeleteFiles(const std::wstring& root);

}  // namespace quastel::bench

#endif  // QUASTEL_BENCH_YARDSTICKS_H_
