/* The public header before anything else: it brings along what it needs. Compiled as C and C++. */
#include "quastel_core.h"

int quastel_header_alone(void);
int quastel_header_alone(void) {
  return (int)QS_OK;
}
