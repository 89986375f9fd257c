#include <OrvoAPI/Testing/StubNetworkDataProvider.h>

namespace orvo {

Future<HTTPResult> StubNetworkDataProvider::fetch(const URLRequest& request) {
  // One lock over both, so that a request has its call's number.
  const std::lock_guard guard(lock_);
  requests_.push_back(request);
  return fetches.add();
}

URLRequest StubNetworkDataProvider::request(std::size_t call) const {
  const std::lock_guard guard(lock_);
  return requests_.at(call);
}

void StubNetworkDataProvider::answer(std::size_t call, int statusCode, std::string_view body,
                                     HTTPHeaders headers) {
  fetches.succeed(call, {.response = {.url = request(call).url,
                                      .statusCode = statusCode,
                                      .headers = std::move(headers)},
                         .body = Data(body)});
}

}  // namespace orvo
