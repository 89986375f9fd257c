#pragma once

#include <OrvoAPI/Context/URLService.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/HTTP/URLRequest.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Network/SessionError.h>
#include <OrvoAPI/Network/SessionProvider.h>
#include <OrvoAPI/Parsing/JSONParseError.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <utility>
#include <vector>

/// The service that the simulation's clients talk to: its documents, what can go wrong with them,
/// and the operations that are under way.
namespace orvo::soak {

struct Kind {
  const char* name;
  /// What the server would answer; "%" stands for the identifier.
  const char* document;
  /// Valid JSON that is not such a document.
  const char* otherDocument;
  bool authed = true;
};
enum KindIndex {
  page,
  video,
  item,
  view,
  collection,
  playlist,
  including,
  search,
  searchKind,
  suggestions,
  guide,
  lineup,
  ads
};
inline constexpr const char* kVideo =
    R"({"type": "video", "id": "%", "title": "T", "short_description": "S", "status": {"ttl": 60000}})";
inline constexpr const char* kPage = R"({"type": "page", "id": "%", "title": "T"})";
inline constexpr const char* kList =
    R"({"id": "%", "label": "T", "short_label": "S", "type": "generic", "contains": "mixed",
        "items": [], "meta": {"total": 1, "limit": 1, "offset": 0}})";
inline constexpr Kind kKinds[] = {
    {"page", kPage, "[]"},
    {"video", kVideo, R"({"id": "%"})"},
    {"content item", kVideo, R"({"type": "video"})"},
    {"system view", kPage, R"({"title": "T"})"},
    {"collection", kList, R"({"items": []})"},
    {"playlist", kList, "7"},
    {"playlist including a video", kList, "{}"},
    {"search", R"({"collections": []})", R"({"collections": 7})"},
    {"search of a kind", R"({"collections": []})", "{}"},
    {"suggestions", R"(["%"])", "[7]"},
    {"guide", R"({"items": [], "meta": {"total": 1, "limit": 1, "offset": 0}})", "{}"},
    {"lineup", "[{}]", "{}", false},
    {"ad metadata", "{}", "[]"}};

enum class Fault {
  none,
  truncated,
  garbage,
  otherDocument,
  empty,
  connectionLost,
  timedOut,
  badStatus,
  unauthorized
};
inline constexpr const char* kFaultNames[] = {"none",           "truncated",  "garbage",
                                              "other document", "empty",      "connection lost",
                                              "timed out",      "bad status", "unauthorized"};

/// How the outcome is told: "ok", or what kind of failure.
inline std::string outcomeOf(const AnyError* error) {
  if (error == nullptr) return "ok";
  if (const auto* general = error->as<GeneralError>()) {
    const auto* inner = general->as<GeneralError::underlying>();
    if (inner == nullptr) return "general";
    if (inner->error.is<JSONReaderError>()) return "unreadable";
    return inner->error.is<JSONParseError>() ? "unparsable" : "underlying";
  }
  if (const auto* transport = error->as<URLError>())
    return "transport " + std::to_string(transport->code);
  if (const auto* session = error->as<SessionError>()) {
    const auto* status = session->as<SessionError::unexpectedStatus>();
    return status != nullptr ? "status " + std::to_string(status->status) : "no new session";
  }
  return error->is<URLService::Error>() ? "invalid input" : "other";
}

/// One call of the library, what is known about it, and what must become of it.
struct Operation {
  int number = 0;
  KindIndex kind = page;
  std::string id;
  std::mt19937_64 random;

  // What the wire saw.
  std::atomic<int> requests{0};
  std::atomic<int> sessionFetches{0};
  std::string url = {};

  // What must become of it.
  std::string expected = {};
  bool ended = false;      ///< nothing of it is under way
  bool lost = false;       ///< it never completes: its context went while its session was renewed
  bool cancelled = false;  ///< before it ended

  // What became of it.
  std::atomic<int> callbacks{0};
  std::string outcome = {};  ///< written by the one callback
  std::function<bool()> didComplete = {};
  std::function<void()> cancel = {};
};

/// What the service answers. Requests come on any thread; everything else happens on the thread of
/// the simulation.
class Wire final : public NetworkDataProvider {
 public:
  struct Call {
    Operation* operation;
    URLRequest request;
    Promise<HTTPResult> promise;
  };

  Future<HTTPResult> fetch(const URLRequest& request) override {
    const std::lock_guard guard(lock_);
    calls_.push_back({current_, request, {}});
    auto future = calls_.back().promise.future();
    ++current_->requests;
    return future;
  }
  Future<Session> fetchSession() {
    const std::lock_guard guard(lock_);
    sessions_.push_back({current_, {}});
    auto future = sessions_.back().second.future();
    ++current_->sessionFetches;
    return future;
  }

  void move(Operation& operation) {
    const std::lock_guard guard(lock_);
    current_ = &operation;
  }
  [[nodiscard]] std::vector<Call> takeCalls() {
    const std::lock_guard guard(lock_);
    return std::exchange(calls_, {});
  }
  [[nodiscard]] std::vector<std::pair<Operation*, Promise<Session>>> takeSessions() {
    const std::lock_guard guard(lock_);
    return std::exchange(sessions_, {});
  }

 private:
  std::mutex lock_;
  Operation* current_ = nullptr;                                   // guarded by lock_
  std::vector<Call> calls_;                                        // guarded by lock_
  std::vector<std::pair<Operation*, Promise<Session>>> sessions_;  // guarded by lock_
};

/// How renewals of the session end in a round.
enum class Renewal { succeeds, fails, isRefused };

/// The library's session provider, except that the server may refuse.
class Sessions final : public SessionProvider {
 public:
  Sessions(std::shared_ptr<SessionProvider> kept, Renewal renewal)
      : kept_(std::move(kept)), renewal_(renewal) {}
  std::string currentToken() const override { return kept_->currentToken(); }
  Future<std::string> retrieveSessionToken() override { return kept_->retrieveSessionToken(); }
  Future<bool> updateSession() override {
    ++updates;
    return renewal_ == Renewal::isRefused ? Future<bool>::succeeded(false) : kept_->updateSession();
  }

  std::atomic<int> updates{0};

 private:
  const std::shared_ptr<SessionProvider> kept_;
  const Renewal renewal_;
};

}  // namespace orvo::soak
