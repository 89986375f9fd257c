#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

/// For one source of a program, which says when memory is refused: all of `operator new` and
/// `operator delete` asks it.

namespace orvo::test {

/// Defined by that source: whether the system has no memory this time.
[[nodiscard]] bool refusesMemory() noexcept;

inline void* allocate(std::size_t size) noexcept {
  return refusesMemory() ? nullptr : std::malloc(size > 0 ? size : 1);
}
inline void* allocateOrThrow(std::size_t size) {
  if (void* const memory = allocate(size)) return memory;
  throw std::bad_alloc();
}
/// Not inlined: the compiler would take it for the wrong partner of operator new.
[[gnu::noinline]] inline void release(void* memory) noexcept { std::free(memory); }

}  // namespace orvo::test

void* operator new(std::size_t size) { return orvo::test::allocateOrThrow(size); }
void* operator new[](std::size_t size) { return orvo::test::allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return orvo::test::allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return orvo::test::allocate(size);
}
void operator delete(void* memory) noexcept { orvo::test::release(memory); }
void operator delete[](void* memory) noexcept { orvo::test::release(memory); }
void operator delete(void* memory, std::size_t) noexcept { orvo::test::release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { orvo::test::release(memory); }
