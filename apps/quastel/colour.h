#ifndef QUASTEL_APPS_QUASTEL_COLOUR_H_
#define QUASTEL_APPS_QUASTEL_COLOUR_H_

#include <string_view>

#include "console.h"

namespace quastel::client {

enum class Tone { kError, kRemark, kHeading };

// Writes the text, which at a terminal stands out: an error in red, a remark in cyan, a heading in
// bright. NO_COLOR with any value and TERM=dumb turn that off. Files and pipes get the text alone.
void WriteToned(OutputStream& stream, std::string_view text, Tone tone);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_COLOUR_H_
