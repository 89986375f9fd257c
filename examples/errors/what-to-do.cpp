// What a person can be told to do when a fetch has failed.
// Usage: what-to-do API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace {

constexpr const char* kLater = "The service has a problem. Try again later.";

std::string advice(const orvo::URLError& error) {
  using orvo::URLError;
  switch (error.code) {
    case URLError::cannotFindHost:
    case URLError::cannotConnectToHost:
    case URLError::notConnectedToInternet:
    case URLError::networkConnectionLost:
    case URLError::timedOut:
      return "Check the network connection, then try again.";
    case URLError::serverCertificateHasBadDate:
    case URLError::serverCertificateNotYetValid:
      return "Check the date and the time of this device, then try again.";
    case URLError::cancelled:
      return "";  // the app did that itself
    default:
      return kLater;
  }
}

std::string advice(const orvo::SessionError& error) {
  const auto* const refused = error.as<orvo::SessionError::unexpectedStatus>();
  const bool isGone = refused != nullptr && (refused->status == 404 || refused->status == 410);
  return isGone ? "This is not there any more. Choose something else." : kLater;
}

std::string advice(const orvo::AnyError& error) {
  if (const auto* const general = error.as<orvo::GeneralError>()) {
    const auto* const wrapper = general->as<orvo::GeneralError::underlying>();
    return wrapper != nullptr ? advice(wrapper->error) : "This cannot be done now.";
  }
  if (const auto* const transport = error.as<orvo::URLError>()) return advice(*transport);
  if (const auto* const session = error.as<orvo::SessionError>()) return advice(*session);
  if (error.is<orvo::Response::Error>()) return kLater;  // no session is opened
  if (error.is<orvo::URLService::Error>()) return "This is no identifier. Choose something else.";
  return "The answer cannot be read. Sign in to the network if it asks for that, or look for a "
         "newer version of the app.";
}

/// Prints the title, or what to do; the error itself is for developers.
bool show(const std::string& id, const orvo::Result<orvo::Shared<orvo::Video>>& video) {
  const auto* const error = video.error();
  if (error != nullptr) std::fprintf(stderr, "%s\n", error->description().c_str());
  std::printf("%s: %s\n", id.c_str(),
              error != nullptr ? advice(*error).c_str() : (*video.value())->title.c_str());
  return error == nullptr;
}

}  // namespace

int main(int count, char** arguments) {
  const auto api = orvo::URL::parse(count == 3 ? arguments[1] : "");
  const auto resources = orvo::URL::parse(count == 3 ? arguments[2] : "");
  if (!api || !resources) return std::fputs("usage: what-to-do API_URL RESOURCES_URL\n", stderr), 2;
  const auto opened = orvo::ContextService::context(*api, *resources, orvo::Client::appleTV);
  bool isShown = false;
  for (const std::string id : {"not an identifier", "no-such-film", "film-long-thaw"}) {
    const auto video = opened.flatMap([id](const auto& context) { return context->fetchVideo(id); })
                           .wait(std::chrono::minutes(1));
    isShown = show(id, video);
  }
  return isShown ? 0 : 1;
}
