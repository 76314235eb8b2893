# The two halves of the room: hashes, samples, keys and the cache file; and the scan that uses them.
foreach(half unit_tests scan_tests)
  if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/${half}.cmake)
    include(${CMAKE_CURRENT_LIST_DIR}/${half}.cmake)
  endif()
endforeach()
