#include "fuzz/call_sequences_check.h"

#include "fuzz/demand.h"
#include "fuzz/input.h"
#include "fuzz/sequence/direct_calls.h"
#include "fuzz/sequence/null_arguments.h"
#include "fuzz/sequence/product_player.h"
#include "fuzz/sequence/session_player.h"
#include "fuzz/sequence/watch.h"
#include "fuzz/sequence/world.h"

namespace quastel::fuzz {

CallSequenceSeen CheckCallSequence(std::string_view bytes) {
  constexpr int kMostSteps = 60;
  Input input(bytes);
  CallSequenceSeen seen;
  sequence::World world;
  {
    sequence::Watch watch(world);
    sequence::ProductPlayer products[] = {{world, watch, seen}, {world, watch, seen}};
    sequence::SessionPlayer sessions[] = {{world, watch, seen}, {world, watch, seen}};
    for (int step = 0; step < kMostSteps && !input.empty(); ++step) {
      // Two writes of the hash cache never have the same time.
      world.machine().AdvanceClock(1);
      switch (input.Below(10)) {
        case 0:
        case 1:
        case 2:
        case 3:
          products[input.Below(2)].Play(input);
          break;
        case 4:
        case 5:
          sessions[input.Below(2)].Play(input);
          break;
        case 6:
        case 7:
          world.Change(input);
          break;
        case 8:
          sequence::CallDirectly(world, watch, input, seen);
          break;
        default:
          sequence::CallWithNulls(input);
          break;
      }
    }
  }
  Demand(world.machine().open_handles() == 0, "nothing is left open at the end");
  return seen;
}

}  // namespace quastel::fuzz
