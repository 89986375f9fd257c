#pragma once

/// Marks which lock guards what, for clang's thread-safety analysis; nothing under other compilers.
#if defined(__clang__)
#define ORVO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ORVO_THREAD_ANNOTATION(x)
#endif

#define ORVO_CAPABILITY(name) ORVO_THREAD_ANNOTATION(capability(name))
#define ORVO_SCOPED_CAPABILITY ORVO_THREAD_ANNOTATION(scoped_lockable)
#define ORVO_GUARDED_BY(lock) ORVO_THREAD_ANNOTATION(guarded_by(lock))
#define ORVO_REQUIRES(...) ORVO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ORVO_ACQUIRE(...) ORVO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ORVO_RELEASE(...) ORVO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ORVO_EXCLUDES(...) ORVO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// For a function that the analysis cannot follow; its callers are checked all the same.
#define ORVO_UNCHECKED ORVO_THREAD_ANNOTATION(no_thread_safety_analysis)
