// One session and what it must be like after each call.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_SESSION_PLAYER_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_SESSION_PLAYER_H_

#include <cstdint>
#include <utility>
#include <vector>

#include "fuzz/call_sequences_check.h"
#include "fuzz/input.h"
#include "fuzz/sequence/flight.h"
#include "fuzz/sequence/walk_model.h"
#include "fuzz/sequence/watch.h"
#include "fuzz/sequence/world.h"
#include "quastel_core.h"

namespace quastel::fuzz::sequence {

class SessionPlayer {
 public:
  SessionPlayer(World& world, Watch& watch, CallSequenceSeen& seen);
  ~SessionPlayer();
  SessionPlayer(const SessionPlayer&) = delete;
  SessionPlayer& operator=(const SessionPlayer&) = delete;

  // One call or a few.
  void Play(Input& input);

 private:
  struct SessionRow {
    Text path;
    Text name;
    std::uint64_t size = 0;
    std::uint64_t modified = 0;
    bool deleted = false;

    friend bool operator==(const SessionRow&, const SessionRow&) = default;
  };

  void Recreate();
  void Scan(Input& input);
  void Clean(Input& input);
  void ReadRows(Input& input);
  void RefuseScan(Input& input);
  void Meet(Input& input, bool racing, bool cleaning, bool& cancelled);
  void MeetOnce(Input& input, bool racing, bool cleaning, bool& cancelled);

  SessionRow ReadRow(std::uint64_t index);
  std::vector<SessionRow> ReadReport();
  qs_status RefusalOf(const std::vector<std::uint64_t>& indexes) const;
  void DemandClean(Disk disk, const std::vector<std::uint64_t>& indexes, std::size_t processed,
                   qs_status status);
  void TakeMarks();
  void DemandSteady();

  World& world_;
  Watch& watch_;
  CallSequenceSeen& seen_;
  qs_session* session_ = nullptr;
  std::uint32_t mode_ = 0;
  std::vector<SessionRow> rows_;
  Text current_path_;
  qs_session_scan_status status_ = {};
  qs_session_clean_status clean_ = {};
};

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_SESSION_PLAYER_H_
