#include "quastel_core.h"

const char* qs_version(void) {
  return "0.4.0";
}
