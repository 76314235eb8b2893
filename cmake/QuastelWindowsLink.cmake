# How everything for Windows is linked: on its own (no runtime DLL beside it) and hardened.

function(quastel_windows_link_options target)
  if(MSVC)
    # Not exercised by the project's own checks, which build with MinGW-w64.
    set_target_properties(${target} PROPERTIES
      MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
    target_compile_options(${target} PRIVATE /guard:cf)
    target_link_options(${target} PRIVATE
      /guard:cf /CETCOMPAT /DYNAMICBASE /HIGHENTROPYVA /NXCOMPAT)
  else()
    # The time stamp is left out so that equal sources give equal files.
    target_link_options(${target} PRIVATE
      -static -static-libgcc -static-libstdc++
      -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat -Wl,--no-insert-timestamp
      $<$<CONFIG:Release>:-s>)
  endif()
endfunction()
