#include <OrvoAPI/Context/FetchScopeStateInternal.h>
#include <OrvoAPI/Context/RequestPipelineInternal.h>
#include <OrvoAPI/Futures/detail/OrFail.h>
#include <OrvoAPI/HTTP/LargeBodiesInternal.h>
#include <OrvoAPI/Network/SessionError.h>

#include <string>
#include <utility>

namespace orvo::detail {
namespace {

/// Where nobody wants a report.
struct NoRecord {
  constexpr const NoRecord* operator->() const { return this; }
  constexpr void knows(const std::string&) const {}
  constexpr void willSend() const {}
  constexpr void didAnswer(const Result<HTTPResult>&) const {}
  constexpr void willRenew() const {}
  constexpr void didHandOver() const {}
  constexpr void abandon() const {}
};

/// Completes the promise with the body; what is derived from it runs in the body's turn.
template <class Record>
void deliver(const HTTPResult& result, const Promise<Data>& promise, const Record& record) {
  if (result.body.size() < LargeBodies::kSmallest) return promise.success(result.body);
  LargeBodies::shared().read(result.response.url, result.body, [promise, record](Data body) {
    record->didHandOver();
    promise.success(std::move(body));
  });
}

}  // namespace

RequestPipeline::RequestPipeline(std::shared_ptr<SessionProvider> sessionProvider,
                                 std::shared_ptr<NetworkDataProvider> networkDataProvider,
                                 std::shared_ptr<FetchScopeState> scope)
    : sessionProvider_(std::move(sessionProvider)),
      networkDataProvider_(std::move(networkDataProvider)),
      scope_(std::move(scope)) {}

Future<Data> RequestPipeline::fetch(const URLRequest& request, const RecordRef& record,
                                    RequestPolicy policy) {
  const Promise<Data> promise;
  if (record) {
    record->asks(request);
    send(request, policy, promise, record);
  } else {
    send(request, policy, promise, NoRecord());
  }
  if (scope_ == nullptr) return promise.future();
  return scope_->watch(promise.future(), FetchScopeState::cancelledError);
}

template <class Record>
void RequestPipeline::send(const URLRequest& request, RequestPolicy policy,
                           const Promise<Data>& promise, const Record& record) {
  sessionProvider_->retrieveSessionToken()
      .map([sent = URLRequest(request), authed = policy.authed,
            record](const std::string& token) mutable {
        record->knows(token);
        if (authed) sent.headers.add("Authorization", token);
        return std::move(sent);
      })
      .flatMap([network = networkDataProvider_, record](const URLRequest& authorised) {
        record->willSend();
        return network->fetch(authorised);
      })
      .onComplete([request, retry = policy.retry, promise, weak = weak_from_this(),
                   session = sessionProvider_, record](const Result<HTTPResult>& result) {
        record->didAnswer(result);
        if (result.failed()) return promise.failure(*result.error());
        const int status = result.value()->response.statusCode;
        if (status <= 399) {
          return orFail(promise, [&] { deliver(*result.value(), promise, record); });
        }
        if (status != 401 || !retry) {
          return promise.failure(SessionError::unexpectedStatus{status});
        }
        orFail(promise, [&] { renewThenSendAgain(request, promise, weak, *session, record); });
      });
}

template <class Record>
void RequestPipeline::renewThenSendAgain(const URLRequest& request, const Promise<Data>& promise,
                                         const std::weak_ptr<RequestPipeline>& weak,
                                         SessionProvider& session, const Record& record) {
  record->willRenew();
  session.updateSession().onComplete([request, promise, weak, record](const Result<bool>& renewed) {
    if (renewed.failed()) return promise.failure(*renewed.error());
    if (!*renewed.value()) return promise.failure(SessionError::couldNotUpdateSession{});
    const auto self = weak.lock();
    if (self == nullptr) return record->abandon();
    orFail(promise, [&] { self->send(request, {.retry = false}, promise, record); });
  });
}

}  // namespace orvo::detail
