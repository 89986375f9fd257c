#pragma once

#include <cstddef>

/// Programs that link this count what `operator new` hands out, by all threads. Under callgrind
/// the counting costs a few instructions an allocation, on both sides alike.
namespace orvo::benchmarks {

/// Allocations so far.
std::size_t allocations();
/// Bytes in use, as the allocator rounds them.
std::size_t bytesInUse();

}  // namespace orvo::benchmarks
