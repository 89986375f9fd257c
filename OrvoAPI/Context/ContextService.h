#pragma once

#include <OrvoAPI/Base/CompilerCheck.h>

#include <OrvoAPI/Context/Client.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/HTTP/URLSessionConfiguration.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>

#include <functional>
#include <memory>

namespace orvo {

struct BootstrapOptions {
  /// How every URL session of the library is made; its `protocolClasses` see the requests of the
  /// bootstrap and every later one.
  URLSessionConfiguration session = {};
  /// What the context is made with.
  ContextOptions context = {};
  /// What the configuration names as its origin when the base URLs are given by hand.
  Environment environment = Environment::production;
  /// Stands before the network: is given each way to it and returns the one to be used, for
  /// instance a provider that passes its requests on and sees what becomes of them. Called twice:
  /// within `ContextService::context` for what opens sessions and loads the configuration, and, on
  /// any thread, for the context when both are there. The first call's exceptions leave
  /// `ContextService::context`, the second's fail the future within `GeneralError::underlying`.
  /// Null leaves the network as it is.
  std::function<std::shared_ptr<NetworkDataProvider>(std::shared_ptr<NetworkDataProvider>)>
      wrapNetwork = nullptr;
};

/// Creates the library's root object. May be called from any thread.
struct ContextService {
  ContextService() = delete;

  /// Opens a session and downloads the configuration, at once and without authorisation, and makes
  /// the context from both. There is no retry and no fallback: any failure fails the future, one of
  /// the session before one of the configuration. Transport errors come unchanged; a status of 400
  /// or above, and a document that cannot be read, within `GeneralError::underlying`. Cancelling
  /// the future cancels the session's request.
  [[nodiscard]] static Future<std::shared_ptr<Context>> context(
      Environment environment, Client client, const BootstrapOptions& options = {});

  /// The same for a deployment with base URLs of its own, which may be http. A "/" that is missing
  /// at the end of their paths is added. A relative API base fails with
  /// `URLService::Error::invalidInput`, and nothing is sent.
  [[nodiscard]] static Future<std::shared_ptr<Context>> context(
      const URL& baseURL, const URL& resourceURL, Client client,
      const BootstrapOptions& options = {});
};

}  // namespace orvo
