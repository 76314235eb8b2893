/* How the program records what it expects. A call whose answer nobody looks at proves nothing, so
   every call of the library stands inside EXPECT or EXPECT_TEXT; check_every_export.py sees to it.
 */
#ifndef QUASTEL_TESTS_ABI_EXPECT_H_
#define QUASTEL_TESTS_ABI_EXPECT_H_

#include <stdint.h>

/* An answer in numbers: a status, a predicate, a class. */
#define EXPECT(expected, call) \
  expect_number((int64_t)(expected), (int64_t)(call), #call, __FILE__, __LINE__)
/* A static text of type char. */
#define EXPECT_TEXT(expected, call) expect_text((expected), (call), #call, __FILE__, __LINE__)
/* What a call left in the caller's memory or on the disk. */
#define CHECK(condition) expect_number(1, (condition) ? 1 : 0, #condition, __FILE__, __LINE__)

void expect_number(int64_t expected, int64_t found, const char* what, const char* file, int line);
void expect_text(const char* expected, const char* found, const char* what, const char* file,
                 int line);
int failure_count(void);
int expectation_count(void);

#endif
