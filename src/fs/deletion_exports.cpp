// The exported deletion.

#include "frame/boundary.h"
#include "fs/deletion.h"
#include "fs/recycle_bin.h"

using quastel::PredicateBoundary;

int32_t qs_delete_permanently(const qs_char* path) {
  return PredicateBoundary([&] { return quastel::DeletePermanently(path); });
}

int32_t qs_move_to_recycle_bin(const qs_char* path) {
  return PredicateBoundary([&] { return quastel::MoveToRecycleBin(path); });
}

int32_t qs_file_matches_snapshot(const qs_char* path, int64_t size, int64_t last_write) {
  return PredicateBoundary([&] { return quastel::MatchesSnapshot(path, {size, last_write}); });
}

int32_t qs_delete_snapshot_permanently(const qs_char* path, int64_t size, int64_t last_write) {
  return PredicateBoundary([&] {
    return quastel::DeleteSnapshotPermanently(path, {size, last_write});
  });
}

int32_t qs_move_snapshot_to_recycle_bin(const qs_char* path, int64_t size, int64_t last_write) {
  return PredicateBoundary([&] {
    return quastel::MoveSnapshotToRecycleBin(path, {size, last_write});
  });
}
