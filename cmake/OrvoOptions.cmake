# How our own targets are compiled. Everything is PRIVATE: nothing of it reaches a consumer.
function(orvo_options target)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow -Wpedantic)
  if(ORVO_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# For programs that people run: what the compiler and the linker can do so that a fault in memory
# ends the program instead of being of use to somebody.
function(orvo_harden target)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-fstack-protector-strong>
    $<$<CONFIG:Release>:-fstack-clash-protection>)
  target_compile_definitions(${target} PRIVATE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>
    $<$<CONFIG:Release>:_GLIBCXX_ASSERTIONS>)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    target_link_options(${target} PRIVATE -pie -Wl,-z,relro,-z,now)
  endif()
endfunction()
