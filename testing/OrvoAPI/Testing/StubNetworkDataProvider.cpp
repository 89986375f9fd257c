#include <OrvoAPI/Testing/StubNetworkDataProvider.h>

namespace orvo {

Future<HTTPResult> StubNetworkDataProvider::fetch(const URLRequest& request) {
  return requests_.with([&](auto& requests) {
    requests.push_back(request);
    return fetches.add();  // under the lock, so that a request has its call's number
  });
}

URLRequest StubNetworkDataProvider::request(std::size_t call) const {
  return requests_.with([&](const auto& requests) { return requests.at(call); });
}

void StubNetworkDataProvider::answer(std::size_t call, int statusCode, std::string_view body,
                                     HTTPHeaders headers) {
  fetches.succeed(call, {.response = {.url = request(call).url,
                                      .statusCode = statusCode,
                                      .headers = std::move(headers)},
                         .body = Data(body)});
}

}  // namespace orvo
