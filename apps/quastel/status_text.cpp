#include "status_text.h"

#include <array>

namespace quastel::client {
namespace {

struct StatusText {
  const char* word;
  const char* sentence;
};

// In the order of the status numbers.
constexpr std::array<StatusText, 8> kTexts = {{
    {"ok", "nothing went wrong"},
    {"invalid_argument", "the library refused the request"},
    {"buffer_too_small", "a text did not fit"},
    {"failed", "the library failed, most likely because memory ran out"},
    {"not_found", "something that was asked for does not exist"},
    {"cancelled", "it was cancelled"},
    {"unsupported", "the library does not support it"},
    {"busy", "the scan object was busy"},
}};
static_assert(QS_BUSY == kTexts.size() - 1);

}  // namespace

const char* StatusWord(qs_status status) {
  return status < kTexts.size() ? kTexts[status].word : "unknown";
}

const char* StatusSentence(qs_status status) {
  return status < kTexts.size() ? kTexts[status].sentence
                                : "the library answered a status that this client does not know";
}

}  // namespace quastel::client
