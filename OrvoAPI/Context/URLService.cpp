#include <OrvoAPI/Context/URLService.h>

#include <OrvoAPI/Base/FatalInternal.h>

namespace orvo {
namespace {

URLService::URLFromToken streamURL(std::string id, std::string_view suffix) {
  return [id = std::move(id), suffix](std::string_view token) {
    std::string path = id;
    path.append(1, '/').append(token).append(suffix);
    // Identifier and token come from servers: a stray character in them must not stop the app.
    return URL::fromPath(path);
  };
}

}  // namespace

std::string URLService::Error::description() const {
  return "invalidInput: " + as<invalidInput>()->input;
}

URL URLService::session(Client client) const {
  std::string reference = "session?os_family=";
  reference.append(rawValue(osFamily(client)));
  reference.append("&category=").append(rawValue(category(client)));
  auto url = URL::parse(reference, baseURL);
  if (!url) detail::fatal("The session's URL cannot be formed: the base URL is not absolute");
  return *std::move(url);
}

Result<URL> URLService::configuration(Client client) const {
  std::string reference = "configuration/";
  reference.append(rawValue(osFamily(client))).append("/v1");
  auto url = URL::parse(reference, baseURL);
  if (!url) return Failure{Error::invalidInput{std::string(rawValue(client))}};
  return *std::move(url);
}

URLService::URLFromToken URLService::videoURL(std::string id) const {
  return streamURL(std::move(id), "/playlist.m3u8");
}

URLService::URLFromToken URLService::videoAdMetadataURL(std::string id) const {
  return streamURL(std::move(id), "/playlist.json");
}

}  // namespace orvo
