#pragma once

#include <cstddef>

namespace orvo::benchmarks {

/// Bytes that `operator new` has handed out and not got back, by all threads, as the allocator
/// rounds them. For programs that link the target OrvoHeapBytes, which replaces `operator new`.
std::size_t heapBytes();

}  // namespace orvo::benchmarks
