/* The parts of the program, each for some families of the interface. */
#ifndef QUASTEL_TESTS_ABI_PARTS_H_
#define QUASTEL_TESTS_ABI_PARTS_H_

void call_path_exports(void);
void call_enumeration_exports(void);
void call_filter_exports(void);
void call_deletion_exports(void);
void call_session_exports(void);
void call_product_scan_exports(void);
void call_product_clean_exports(void);
void call_large_file_exports(void);
void call_junk_exports(void);
void call_hash_exports(void);
void call_duplicate_exports(void);

#endif
