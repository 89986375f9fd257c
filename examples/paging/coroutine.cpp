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
    const auto& page = *result.value();
    if (page == nullptr) co_return count;  // that was the last one
    std::printf(
        "%lld to %lld of %lld\n", static_cast<long long>(page->meta.offset + 1),
        static_cast<long long>(page->meta.offset) + static_cast<long long>(page->items.size()),
        static_cast<long long>(page->meta.total));
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const auto pages = showAll(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]))
                         .wait(std::chrono::minutes(1));
  if (pages.failed()) std::fprintf(stderr, "%s\n", pages.error()->description().c_str());
  return pages.failed() ? 1 : 0;
}
