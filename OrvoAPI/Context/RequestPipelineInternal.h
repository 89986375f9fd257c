#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/Context/RequestRecordInternal.h>
#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/HTTP/URLRequest.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <OrvoAPI/Network/SessionProvider.h>

#include <memory>

namespace orvo::detail {

class FetchScopeState;

/// How a request is sent; this is how nearly all are.
struct RequestPolicy {
  bool retry = true;   // a 401 renews the session, and the request is sent once more
  bool authed = true;  // the token is sent; it is waited for in any case
};

/// Sends the content requests of a `Context`, which owns it: gets the token, adds it, checks the
/// status, and after a 401 renews the session once and sends again. Thread-safe.
///
/// Requests in flight hold the providers, not the pipeline. So a call whose context is destroyed
/// while its session is being renewed never completes: nothing is left to send it again.
class RequestPipeline final : public std::enable_shared_from_this<RequestPipeline> {
 public:
  RequestPipeline(std::shared_ptr<SessionProvider> sessionProvider,
                  std::shared_ptr<NetworkDataProvider> networkDataProvider,
                  std::shared_ptr<FetchScopeState> scope = nullptr);

  /// The body of the answer; a large one comes when no other is being read, and is read until its
  /// last copy has gone. Cancelling the future drops the result and reaches nothing upstream. The
  /// steps are noted in the record, if there is one.
  [[nodiscard]] Future<Data> fetch(const URLRequest& request, const RecordRef& record,
                                   RequestPolicy policy = {});

  [[nodiscard]] const std::shared_ptr<SessionProvider>& sessionProvider() const {
    return sessionProvider_;
  }
  [[nodiscard]] const std::shared_ptr<NetworkDataProvider>& networkDataProvider() const {
    return networkDataProvider_;
  }
  /// What ends the calls; null when nothing does.
  [[nodiscard]] const std::shared_ptr<FetchScopeState>& scope() const { return scope_; }

 private:
  /// `Record` is a reference to one, or what stands for none and costs nothing.
  template <class Record>
  void send(const URLRequest& request, RequestPolicy policy, const Promise<Data>& promise,
            const Record& record);
  template <class Record>
  static void renewThenSendAgain(const URLRequest& request, const Promise<Data>& promise,
                                 const std::weak_ptr<RequestPipeline>& weak,
                                 SessionProvider& session, const Record& record);

  const std::shared_ptr<SessionProvider> sessionProvider_;
  const std::shared_ptr<NetworkDataProvider> networkDataProvider_;
  const std::shared_ptr<FetchScopeState> scope_;
};

}  // namespace orvo::detail
