// A whole collection, part by part, with a callback for each part.
// Usage: callbacks API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdio>

namespace {

void show(const orvo::ItemCollection& part) {
  std::printf("%lld to %lld of %lld\n", static_cast<long long>(part.meta.offset + 1),
              static_cast<long long>(part.meta.offset) + static_cast<long long>(part.items.size()),
              static_cast<long long>(part.meta.total));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const auto all =
      orvo::ContextService::context(*orvo::URL::parse(arguments[1]),
                                    *orvo::URL::parse(arguments[2]), orvo::Client::appleTV)
          .flatMap([](const auto& context) {
            const orvo::ListWalk walk(context, context->collectionCapability("everything"));
            return walk.forEach(orvo::MainQueue::shared(), [](const auto& part) { show(*part); });
          })
          .wait(std::chrono::minutes(1));
  if (all.failed()) std::fprintf(stderr, "%s\n", all.error()->description().c_str());
  return all.failed() ? 1 : 0;
}
