/* A folder of real files in the system's temporary folder. Without a folder of its own the program
   ends: nothing may be deleted elsewhere. */
#ifndef QUASTEL_TESTS_ABI_SCRATCH_H_
#define QUASTEL_TESTS_ABI_SCRATCH_H_

#include <quastel_core.h>
#include <stdbool.h>
#include <stdint.h>

void make_scratch(void);
void remove_scratch(void);

/* The full path of something in the folder; valid until the eighth call after this one. An empty
   name gives the folder itself. */
const qs_char* in_scratch(const qs_char* name);

void put_folder(const qs_char* name);
void put_file(const qs_char* name, const char* content);
/* Zeros without blocks on the disk. */
void put_sized_file(const qs_char* name, int64_t size);
bool is_there(const qs_char* name);

/* Size and last-write time of a file as the library reports them. */
typedef struct snapshot {
  uint64_t size;
  uint64_t last_write;
} snapshot;
snapshot snapshot_of(const qs_char* folder, const qs_char* file_name);

#endif
