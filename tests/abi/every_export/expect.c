#include "expect.h"

#include <stdio.h>
#include <string.h>

static int failures;
static int expectations;

void expect_number(int64_t expected, int64_t found, const char* what, const char* file, int line) {
  ++expectations;
  if (expected != found) {
    ++failures;
    printf("%s:%d: %s is %lld, expected %lld\n", file, line, what, (long long)found,
           (long long)expected);
  }
}

void expect_text(const char* expected, const char* found, const char* what, const char* file,
                 int line) {
  ++expectations;
  if (found == NULL || strcmp(expected, found) != 0) {
    ++failures;
    printf("%s:%d: %s is \"%s\", expected \"%s\"\n", file, line, what,
           found == NULL ? "(null)" : found, expected);
  }
}

int failure_count(void) {
  return failures;
}

int expectation_count(void) {
  return expectations;
}
