#pragma once

#include <OrvoAPI/HTTP/URLInterceptor.h>
#include <OrvoAPI/Testing/detail/Locked.h>

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvo {

/// What a canned answer says besides its body.
struct StubAnswerOptions {
  int statusCode = 200;
  /// A status of 301, 302, 303, 307 or 308 with a "Location" makes a redirect.
  HTTPHeaders headers = {};
};

/// Answers a URL session's requests in place of the network, by path, and records all that it is
/// asked for; what it has no answer for goes on to the network. Thread-safe.
///
///     const auto stub = std::make_shared<StubInterceptor>();
///     stub->answer("/v3/session", R"({"token": "t"})");
///     stub->answerFromFile("/v3/configuration/ios/v1", "fixtures/configuration.json");
///     stub->answer("/v3/products/1", "", {.statusCode = 401});  // the first time
///     stub->answer("/v3/products/1", R"({…})");                 // from then on
///
/// A path may be given with a query ("/v3/search?q=x"); an answer to that takes precedence over one
/// to the path alone. Several answers to one path are given in turn, the last of them forever.
class StubInterceptor final : public URLInterceptor {
 public:
  void answer(std::string path, std::string_view body, StubAnswerOptions options = {});
  /// Reads the file now; throws `std::runtime_error` when it cannot be read.
  void answerFromFile(std::string path, const std::string& file, StubAnswerOptions options = {});
  /// Answers GET requests as an HTTP Archive says, a file that browsers' developer tools save and
  /// `orvo --record` writes: by path and query, whatever the host. Reads the file now; throws
  /// `std::runtime_error` when it is none.
  void answerFromArchive(const std::string& file);
  void fail(std::string path, URLError error);
  /// Answers what has no answer of its own, so that nothing reaches the network.
  void answerOthers(std::string_view body, StubAnswerOptions options = {.statusCode = 404});

  /// All requests so far, those without an answer included.
  [[nodiscard]] std::vector<URLRequest> requests() const;

  bool intercept(const URLRequest& request,
                 const std::shared_ptr<InterceptedRequest>& intercepted) override;

 private:
  struct Canned {
    StubAnswerOptions options;
    Data body;
  };
  using Answer = std::variant<Canned, URLError>;

  struct State {
    std::vector<URLRequest> requests;
    std::map<std::string, std::deque<Answer>> answers;
    std::optional<Answer> others;

    [[nodiscard]] std::optional<Answer> take(const URL& url);
  };

  void add(std::string path, Answer answer);

  detail::Locked<State> state_;
};

}  // namespace orvo
