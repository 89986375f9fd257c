#pragma once

#include <demo/Catalogue.h>
#include <demo/Documents.h>
#include <demo/Guide.h>
#include <demo/Sessions.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::demo {

struct Request {
  std::string method;
  /// Without percent-encoding.
  std::string path;
  std::map<std::string, std::string, std::less<>> query;
  std::string authorization;
};

struct Answer {
  int status = 200;
  std::string contentType = "application/json";
  std::string body{};
  /// For the request log: why the answer is what it is, or nothing.
  std::string note{};
};

/// Decides what the service answers. Safe to use from any thread.
class Router {
 public:
  Router(Addresses addresses, int tokenLifetime, std::chrono::seconds programLength);

  [[nodiscard]] Answer answer(const Request& request);

  /// The request's path for the log: the session's token in a stream's path is masked.
  [[nodiscard]] static std::string loggablePath(std::string_view path);

 private:
  using Segments = std::vector<std::string_view>;

  [[nodiscard]] Answer api(const Request& request, const Segments& path);
  [[nodiscard]] Answer content(const Request& request, const Segments& path) const;
  [[nodiscard]] Answer product(std::string_view id) const;
  [[nodiscard]] Answer guide(const Request& request, const Paging& paging) const;
  [[nodiscard]] Answer stream(const Request& request, const Segments& path);
  [[nodiscard]] Answer resource(const Segments& path) const;
  [[nodiscard]] std::optional<Answer> refusal(const Request& request);
  [[nodiscard]] std::optional<Product> video(std::string_view id) const;

  Catalogue catalogue_;
  Addresses addresses_;
  Documents documents_;
  Guide guide_;
  Sessions sessions_;
};

}  // namespace orvo::demo
