// An app that opens a session and does nothing else.
//
// usage: bare_app ORIGIN

#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <string>

int main(int, char** argv) {
  using namespace orvo;
  const std::string origin = argv[1];
  return ContextService::context(*URL::parse(origin + "/v3/"), *URL::parse(origin + "/"),
                                 Client::appleTV)
      .wait(std::chrono::seconds(30))
      .failed();
}
