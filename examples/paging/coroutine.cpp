// A whole collection, part by part, in a loop.
// Usage: coroutine API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/Futures/Coroutine.h>
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdio>

namespace {

orvo::Future<int> showAll(orvo::URL api, orvo::URL resources) {
  const auto opened = co_await orvo::ContextService::context(api, resources, orvo::Client::appleTV);
  if (opened.failed()) co_return orvo::Failure{*opened.error()};
  const auto& context = *opened.value();
  const orvo::ListWalk walk(context, context->collectionCapability("everything"));
  for (int count = 0;; ++count) {
    const auto result = co_await walk.next();
    if (result.failed()) co_return orvo::Failure{*result.error()};
    const auto& part = *result.value();
    if (part == nullptr) co_return count;  // that was the last one
    for (const auto& item : part->items) std::printf("  %s\n", item.title().c_str());
    std::printf(
        "%lld to %lld of %lld\n", static_cast<long long>(part->meta.offset + 1),
        static_cast<long long>(part->meta.offset) + static_cast<long long>(part->items.size()),
        static_cast<long long>(part->meta.total));
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const auto parts = showAll(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]))
                         .wait(std::chrono::minutes(1));
  if (parts.failed()) std::fprintf(stderr, "%s\n", parts.error()->description().c_str());
  return parts.failed() ? 1 : 0;
}
