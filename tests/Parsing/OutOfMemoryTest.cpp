#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <support/OperatorNew.h>
#include <tests/support/Test.h>

namespace {

/// Allocations of this thread until they are refused; none are while it is negative.
thread_local long allocationsLeft = -1;
thread_local bool refusesForEver = false;
thread_local bool refusedAny = false;

}  // namespace

bool orvo::test::refusesMemory() noexcept {
  if (allocationsLeft < 0) return false;
  if (allocationsLeft > 0) {
    --allocationsLeft;
    return false;
  }
  refusedAny = true;
  if (!refusesForEver) allocationsLeft = -1;
  return true;
}

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
