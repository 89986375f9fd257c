# How our own targets are compiled. Everything is PRIVATE: nothing of it reaches a consumer.
function(orvo_options target)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF
    POSITION_INDEPENDENT_CODE ON)
  # Who builds the library as part of another project is not the one to mend it.
  if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow -Wpedantic)
  endif()
  # Where the C library would count time and file sizes in 32 bits, unless it is asked otherwise.
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_definitions(${target} PRIVATE _TIME_BITS=64 _FILE_OFFSET_BITS=64)
  endif()
  if(ORVO_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# For code that reads untrusted bytes: what the compiler and the linker can do so that a memory
# fault ends the program instead of serving an attacker. In every configuration, so that the tests
# see what is delivered; only the checks of _FORTIFY_SOURCE need an optimised build.
include(CheckCXXCompilerFlag)
set(orvo_hardening -fstack-protector-strong)
# Not on every processor: probes of a growing stack, and landing pads for indirect jumps. clang
# only warns of one that it does not know there.
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag IN ITEMS -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "ORVO_HAS${flag}" has_flag)
  check_cxx_compiler_flag(${flag} ${has_flag})
  if(${has_flag})
    list(APPEND orvo_hardening ${flag})
  endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)

function(orvo_harden target)
  # Some distributions' compilers define _FORTIFY_SOURCE by themselves.
  target_compile_options(${target} PRIVATE ${orvo_hardening}
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  get_target_property(type ${target} TYPE)
  if(NOT type STREQUAL STATIC_LIBRARY)
    target_link_options(${target} PRIVATE $<$<STREQUAL:${type},EXECUTABLE>:-pie>
      -Wl,-z,relro,-z,now,-z,noexecstack)
  endif()
endfunction()

# The thread sanitizer is slow and finds nothing in what runs on one thread: such tests are left to
# the other presets.
set(orvo_seeks_races OFF)
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=thread")
  set(orvo_seeks_races ON)
endif()
