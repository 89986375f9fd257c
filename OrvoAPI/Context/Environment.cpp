#include <OrvoAPI/Context/Environment.h>

#include <OrvoAPI/Base/FatalInternal.h>

#include <cstddef>
#include <utility>

namespace orvo {
namespace {

struct Deployment {
  std::string_view name;
  URL url;
};

// The build has checked the texts; one that is not a URL would be a fault of the build itself.
URL compiledIn(std::string_view text) {
  auto url = URL::parse(text);
  if (!url) detail::fatal("A compiled-in base URL is not valid");
  return *std::move(url);
}

const Deployment& deployment(Environment environment) {
  // Never destroyed: requests may still be made while the process exits.
  static const auto& deployments = *new std::array<Deployment, allEnvironments.size()>{
      Deployment{"Production", compiledIn(ORVO_PRODUCTION_URL)},
      Deployment{"QA", compiledIn(ORVO_QA_URL)},
      Deployment{"Staging", compiledIn(ORVO_STAGING_URL)}};
  return deployments.at(static_cast<std::size_t>(environment));
}

}  // namespace

std::string_view name(Environment environment) { return deployment(environment).name; }

const URL& url(Environment environment) { return deployment(environment).url; }

const URL& resourceURL(Environment) {
  static const auto& url = *new URL(compiledIn(ORVO_RESOURCE_URL));
  return url;
}

}  // namespace orvo
