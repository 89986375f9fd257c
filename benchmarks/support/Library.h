#pragma once

#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <benchmarks/support/FileServer.h>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace orvo::benchmarks {

/// The library: the provider that a context has, and three maps after each fetch.
class Library {
 public:
  explicit Library(Work work) : work_(std::move(work)), url_(*URL::parse(work_.url)) {
    URLSessionConfiguration configuration;
    if (!work_.authority.empty()) configuration.certificateAuthorityFile = work_.authority;
    provider_->setURLSession(
        std::make_shared<URLSession>(configuration, provider_->sessionDelegate()));
  }

  /// Asks for all of them at once and waits for the last.
  void fetch(std::size_t count) {
    std::atomic<std::size_t> left = count;
    for (; count > 0; --count) {
      provider_->fetch({.url = url_, .headers = {{kFieldName, kFieldValue}}})
          .map([](const HTTPResult& result) { return result.body; })
          .map([](const Data& body) { return body.size(); })
          .map([this](std::size_t size) {
            expectSize(size, work_);
            return true;
          })
          .onComplete([&left](const Result<bool>& result) {
            if (result.failed()) expectFailure(*result.error());
            if (left.fetch_sub(1) == 1) left.notify_one();
          });
    }
    for (auto now = left.load(); now > 0; now = left.load()) left.wait(now);
  }

 private:
  /// Is never asked: nothing redirects.
  class NoSession : public SessionProvider {
   public:
    [[nodiscard]] std::string currentToken() const override { return {}; }
    Future<std::string> retrieveSessionToken() override { return Promise<std::string>().future(); }
    Future<bool> updateSession() override { return Promise<bool>().future(); }
  };
  [[noreturn]] static void expectFailure(const AnyError& error) {
    std::fprintf(stderr, "%s\n", error.description().c_str());
    std::exit(2);
  }

  const Work work_;
  const URL url_;
  const std::shared_ptr<DefaultNetworkProvider> provider_ =
      std::make_shared<DefaultNetworkProvider>(std::make_shared<NoSession>());
};

}  // namespace orvo::benchmarks
