#include <benchmarks/support/HeapBytes.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<std::size_t> bytes = 0;
}  // namespace

std::size_t orvo::benchmarks::heapBytes() { return bytes.load(std::memory_order_relaxed); }

void* operator new(std::size_t size) {
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  bytes.fetch_add(malloc_usable_size(memory), std::memory_order_relaxed);
  return memory;
}
void operator delete(void* memory) noexcept {
  bytes.fetch_sub(malloc_usable_size(memory), std::memory_order_relaxed);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { ::operator delete(memory); }
