#include <benchmarks/support/Allocations.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<std::size_t> count = 0;
std::atomic<std::size_t> bytes = 0;
}  // namespace

namespace orvo::benchmarks {
std::size_t allocations() { return count.load(std::memory_order_relaxed); }
std::size_t bytesInUse() { return bytes.load(std::memory_order_relaxed); }
}  // namespace orvo::benchmarks

void* operator new(std::size_t size) {
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  count.fetch_add(1, std::memory_order_relaxed);
  bytes.fetch_add(malloc_usable_size(memory), std::memory_order_relaxed);
  return memory;
}
void operator delete(void* memory) noexcept {
  bytes.fetch_sub(malloc_usable_size(memory), std::memory_order_relaxed);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { ::operator delete(memory); }
