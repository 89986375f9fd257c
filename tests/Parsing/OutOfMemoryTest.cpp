#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <tests/support/Test.h>

#include <new>

namespace {

/// Allocations of this thread until they are refused; none are while it is negative.
thread_local long allocationsLeft = -1;
thread_local bool refusesForEver = false;
thread_local bool refusedAny = false;

void* allocate(std::size_t size) noexcept {
  if (allocationsLeft > 0) {
    --allocationsLeft;
  } else if (allocationsLeft == 0) {
    refusedAny = true;
    if (!refusesForEver) allocationsLeft = -1;
    return nullptr;
  }
  return std::malloc(size > 0 ? size : 1);
}

void* allocateOrThrow(std::size_t size) {
  if (void* memory = allocate(size)) return memory;
  throw std::bad_alloc();
}

/// Not inlined: the compiler would take it for a mismatch with operator new.
[[gnu::noinline]] void release(void* memory) noexcept { std::free(memory); }

}  // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

namespace orvo {
namespace {

/// What comes of reading the body while the allocation of that number is refused, and all later
/// ones if `forEver`.
std::string readRefusing(long allocation, const Data& body, bool forEver) {
  refusedAny = false;
  refusesForEver = forEver;
  allocationsLeft = allocation;
  try {
    const auto result = JSONDataParser::array(body);
    allocationsLeft = -1;
    const auto* error = result.failed() ? result.error()->as<JSONReaderError>() : nullptr;
    return error && error->code == JSONReaderError::Code::outOfMemory ? "outOfMemory" : "read";
  } catch (const std::bad_alloc&) {
    allocationsLeft = -1;
    return "bad_alloc";
  }
}

/// A body that needs new memory of each kind: larger than what is kept, and with an integer that
/// has to be rewritten.
Data demandingBody(std::size_t size) {
  return Data("[{\"wide\":18446744073709551616,\"text\":\"" + std::string(size, 'x') + "\"}]");
}

TEST(JSONReaderOutOfMemory, IsATypedErrorOrAnExceptionWhenThatCannotBeMadeEither) {
  long refusals = 0;
  for (const bool forEver : {false, true}) {
    for (const std::size_t size : {10U, 1000U, 300'000U}) {
      const Data body = demandingBody(size);
      for (long allocation = 0;; ++allocation, ++refusals) {
        const auto outcome = readRefusing(allocation, body, forEver);
        if (!refusedAny) break;
        EXPECT_EQ(outcome, forEver ? "bad_alloc" : "outOfMemory") << allocation;
        EXPECT_FALSE(JSONDataParser::array(body).failed()) << "and the next reading works again";
      }
    }
  }
  EXPECT_GT(refusals, 18);
}

}  // namespace
}  // namespace orvo
