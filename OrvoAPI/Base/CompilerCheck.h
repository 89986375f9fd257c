#pragma once

// Says in one sentence what the compiler is to be told, and then stops it: what would follow is
// some hundred errors that say nothing.

#if !defined(__cplusplus) || __cplusplus < 202002L
#error "OrvoAPI needs C++20: compile with -std=c++20 or later"
#define ORVO_STOP <OrvoAPI/needs-std=c++20>
#elif !defined(__cpp_exceptions)
#error "OrvoAPI needs exceptions: compile without -fno-exceptions"
#define ORVO_STOP <OrvoAPI/needs-exceptions>
#elif !defined(__GXX_RTTI)
#error "OrvoAPI needs run-time type information: compile without -fno-rtti"
#define ORVO_STOP <OrvoAPI/needs-rtti>
#endif
#ifdef ORVO_STOP
#include ORVO_STOP  // there is no such file, which ends the compilation
#endif
