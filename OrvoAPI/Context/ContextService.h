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

/// What `ContextService::context` may be given. A value.
struct BootstrapOptions {
  /// The configuration of all URL sessions of the library; its `protocolClasses` see the requests
  /// of the bootstrap and all later ones.
  URLSessionConfiguration session = {};
  /// The options of the context.
  ContextOptions context = {};
  /// The environment that the configuration names when the base URLs are given explicitly.
  Environment environment = Environment::production;
  /// Wraps the network: called with each network provider and returns the one to use instead, for
  /// instance one that passes requests on and observes their outcome. Called twice: within
  /// `ContextService::context` for what opens sessions and loads the configuration, and, on any
  /// thread, for the context when both are there. An exception of the first call propagates from
  /// `ContextService::context`; one of the second fails the future, within
  /// `GeneralError::underlying`. When null, nothing is wrapped.
  std::function<std::shared_ptr<NetworkDataProvider>(std::shared_ptr<NetworkDataProvider>)>
      wrapNetwork = nullptr;
};

/// Creates the library's root object. May be called from any thread.
struct ContextService {
  ContextService() = delete;

  /// Opens a session and downloads the configuration, concurrently and without authorisation, and
  /// makes the context from both. There is no retry and no fallback: any failure fails the future,
  /// one of the session before one of the configuration. Transport errors come unchanged; a status
  /// of 400 or above, and a document that cannot be read, within `GeneralError::underlying`.
  /// Cancelling the future cancels the session's request.
  [[nodiscard]] static Future<std::shared_ptr<Context>> context(
      Environment environment, Client client, const BootstrapOptions& options = {});

  /// The same for a deployment with base URLs of its own, which may be http. A missing trailing "/"
  /// is added to their paths. A relative API base fails with `URLService::Error::invalidInput`, and
  /// nothing is sent.
  [[nodiscard]] static Future<std::shared_ptr<Context>> context(
      const URL& baseURL, const URL& resourceURL, Client client,
      const BootstrapOptions& options = {});
};

}  // namespace orvo
