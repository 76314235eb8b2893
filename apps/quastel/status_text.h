#ifndef QUASTEL_APPS_QUASTEL_STATUS_TEXT_H_
#define QUASTEL_APPS_QUASTEL_STATUS_TEXT_H_

#include <quastel_core.h>

namespace quastel::client {

// A fixed word for scripts, the `status` of a JSON report.
const char* StatusWord(qs_status status);

// The same for people: reads on after "the scan ended early: ".
const char* StatusSentence(qs_status status);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_STATUS_TEXT_H_
