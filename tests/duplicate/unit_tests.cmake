quastel_host_test(duplicate_unit_tests
  duplicate/allocation_meter.cpp
  duplicate/cache_bytes.cpp
  duplicate/candidate_list_test.cpp
  duplicate/digest_text_test.cpp
  duplicate/file_block_test.cpp
  duplicate/file_hash_faults_test.cpp
  duplicate/file_hash_test.cpp
  duplicate/group_key_test.cpp
  duplicate/hash_cache_damage_test.cpp
  duplicate/hash_cache_faults_test.cpp
  duplicate/hash_cache_key_test.cpp
  duplicate/hash_cache_large_test.cpp
  duplicate/hash_cache_location_test.cpp
  duplicate/hash_cache_reader_test.cpp
  duplicate/hash_cache_test.cpp
  duplicate/hash_cache_writer_test.cpp
  duplicate/hash_exports_test.cpp
  duplicate/hash_text_test.cpp
  duplicate/number_sort_test.cpp
  duplicate/open_record.cpp
  duplicate/sample_order_test.cpp
  duplicate/shared_heads_test.cpp
  duplicate/sample_test.cpp
  duplicate/scan_include_test.cpp
  duplicate/short_transfers.cpp
  duplicate/short_transfers_test.cpp
  duplicate/thread_buffer_test.cpp
  duplicate/xxhash32_test.cpp
  faults/allocation_faults.cpp
  support/cache_entries.cpp
)

# What the machine neither records nor does is had by stepping in front of the call: the sharing and
# the flags of an open, reads and writes that fall short, and how much memory was asked for. The long
# names are the mangled OpenFile, ReadFrom and WriteTo of quastel::platform.
target_link_options(duplicate_unit_tests PRIVATE
  LINKER:--wrap=_ZN7quastel8platform8OpenFileEPKDsjjNS0_11DispositionEj
  LINKER:--wrap=_ZN7quastel8platform8ReadFromERKNS0_12UniqueHandleINS0_10FilePolicyEEEPvj
  LINKER:--wrap=_ZN7quastel8platform7WriteToERKNS0_12UniqueHandleINS0_10FilePolicyEEEPKvj
  LINKER:--wrap=malloc
  LINKER:--wrap=aligned_alloc
  LINKER:--wrap=free
)

# The C++ half of the thread sanitizer's runtime insists on its own operator new. Linked as a C
# program there is only the other half, which sees the allocations of these tests through malloc.
if(QUASTEL_SANITIZE STREQUAL "thread" AND CMAKE_C_COMPILER_ID STREQUAL "Clang")
  set_target_properties(duplicate_unit_tests PROPERTIES LINKER_LANGUAGE C)
  target_link_libraries(duplicate_unit_tests PRIVATE stdc++ m)
endif()
