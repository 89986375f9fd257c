// Clients' operations over a network that exists only here, in virtual time: every fetch of the
// library, with whatever can happen to its requests, its session, its context and its caller. One
// seed decides everything, so that a round that fails can be run again alone:
//
//     sim OPERATIONS [SEED]
//
// Only one operation is moved at a time, so it is known whose request arrives and how it must end.

#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Network/DefaultSessionProvider.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Storage/AppStore.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <soak/SimulatedReports.h>
#include <soak/SimulatedService.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <tests/Context/StubbedContext.h>

namespace orvo::soak {
namespace {

using namespace std::chrono_literals;

constexpr int kOperationsOfARound = 200;
/// How long something that must happen may take in real time; it is there so that a fault ends a
/// run.
constexpr auto kPatience = 60s;

struct Tally {
  std::uint64_t operations = 0, requests = 0, hits = 0, cancelled = 0, lost = 0, renewals = 0,
                dropped = 0;
  std::map<std::string, std::uint64_t> faults, outcomes;
};

/// One context's life.
class Round {
 public:
  Round(std::uint64_t seed, Tally& tally) : seed_(seed), random_(seed), tally_(tally) {}

  void run();

 private:
  void require(bool holds, const std::string& what, const Operation* operation = nullptr);
  int pick(int bound) { return std::uniform_int_distribution(0, bound - 1)(random_); }
  void later(std::chrono::milliseconds delay, std::function<void()> event) {
    time_.postAfter(delay, std::move(event));
  }
  /// Lets the library work until the condition holds.
  template <class Condition>
  void settle(const char* what, const Operation* operation, Condition condition);

  void start();
  void call(Operation& operation);
  template <class T, class IsRight>
  void watch(Operation& operation, const Future<T>& future, IsRight isRight);
  /// Moves the operation by `step` and sees where it gets: to a request, to the session, to its
  /// end.
  void advance(Operation& operation, const std::function<void()>& step);
  void arrive(const Wire::Call& call);
  void arriveAtSession(Operation& operation, const Promise<Session>& promise);
  void answer(const Wire::Call& call, Fault fault);
  void end(Operation& operation);
  void verify();
  void verifyReports();

  const std::uint64_t seed_;
  std::mt19937_64 random_;
  Tally& tally_;
  const Renewal renewal_ = std::array{Renewal::succeeds, Renewal::succeeds, Renewal::fails,
                                      Renewal::isRefused}[seed_ % 4];
  std::shared_ptr<ManualClock> clock_ = std::make_shared<ManualClock>();
  ManualQueue time_{"time", clock_};
  std::shared_ptr<ManualQueue> slow_ = std::make_shared<ManualQueue>();
  std::shared_ptr<Wire> wire_ = std::make_shared<Wire>();
  std::shared_ptr<Reports> reports_ = std::make_shared<Reports>();
  std::shared_ptr<Sessions> sessions_;
  std::shared_ptr<Context> context_;
  std::string token_ = kToken;
  int expectedUpdates_ = 0;
  std::uint64_t hits_ = 0;
  std::vector<std::unique_ptr<Operation>> operations_;
};

MainQueue::Claim* mainQueue = nullptr;

void Round::require(bool holds, const std::string& what, const Operation* operation) {
  if (holds) return;
  std::fprintf(stderr, "seed %llu: %s", static_cast<unsigned long long>(seed_), what.c_str());
  if (operation != nullptr) {
    std::fprintf(stderr, " (operation %d, %s %s: expected %s, got %s, %d callbacks)",
                 operation->number, kKinds[operation->kind].name, operation->id.c_str(),
                 operation->expected.c_str(), operation->outcome.c_str(),
                 operation->callbacks.load());
  }
  std::fputs("\n", stderr);
  std::exit(1);
}

template <class Condition>
void Round::settle(const char* what, const Operation* operation, Condition condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (mainQueue->drain() == 0) std::this_thread::yield();
    require(std::chrono::steady_clock::now() < end, what, operation);
  }
}

template <class T, class IsRight>
void Round::watch(Operation& operation, const Future<T>& future, IsRight isRight) {
  const std::shared_ptr<DispatchQueue> queues[] = {DispatchQueue::global(), MainQueue::shared(),
                                                   slow_};
  future.onComplete(queues[pick(3)], [&operation, isRight](const Result<T>& result) {
    operation.outcome = outcomeOf(result.error());
    if (result.failed() && result.error()->description().find(kToken) != std::string::npos)
      operation.outcome = "an error that tells the token";
    if (!result.failed() && !isRight(**result.value())) operation.outcome = "another's value";
    ++operation.callbacks;
  });
  operation.didComplete = [future] { return future.didComplete(); };
  operation.cancel = [future] { future.cancel(); };
}

void Round::call(Operation& operation) {
  const auto& id = operation.id;
  const auto hasID = [id](const auto& value) { return value.id == id; };
  const auto isAny = [](const auto&) { return true; };
  const ListFetchOptions part{.page = ListPartRequest{.offset = pick(3), .limit = 10}};
  switch (operation.kind) {
    case page:
      return watch(operation, context_->fetchPage(id, {.noCache = pick(4) == 0}), hasID);
    case video:
      return watch(operation, context_->fetchVideo(id, {.playlistID = id, .noCache = pick(4) == 0}),
                   [id](const Video& value) { return value.id == id && value.playlistID == id; });
    case item:
      return watch(operation, context_->fetchContentItem(id), isAny);
    case view:
      return watch(operation, context_->fetchSystemView(id, "L"),
                   [id](const Page& value) { return value.id == id && value.title == "L"; });
    case collection:
      return watch(operation, context_->fetchItemCollection(id, part), hasID);
    case playlist:
      return watch(operation, context_->fetchPlaylist(id, part), hasID);
    case including:
      return watch(
          operation,
          context_->fetchPlaylist(id, Video{.id = "v", .title = "T", .shortDescription = "S"}),
          [id](const Playlist& value) { return value.id == id && value.items.size() == 1; });
    case search:
      return watch(operation, context_->fetchSearchResults(id), isAny);
    case searchKind:
      return watch(operation,
                   context_->fetchSearchCollection(id, SearchCollection::ResultsKind::top, part),
                   [id](const SearchCollection& value) { return value.query == id; });
    case suggestions:
      return watch(operation, context_->fetchSearchSuggestions(id),
                   [id](const auto& texts) { return texts == std::vector<std::string>{id}; });
    case guide:
      return watch(
          operation,
          context_->fetchLinearProgramGuide("", Date(operation.number * 1000), Date(0), part),
          isAny);
    case lineup:
      return watch(operation, context_->fetchLineup(url("http://other.example/" + id)), isAny);
    case ads:
      return watch(operation, context_->fetchVideoAdMetadata(id), isAny);
  }
}

void Round::start() {
  if (context_ == nullptr) return;
  operations_.push_back(std::make_unique<Operation>());
  auto& operation = *operations_.back();
  operation.number = static_cast<int>(operations_.size());
  operation.kind = static_cast<KindIndex>(pick(std::size(kKinds)));
  // Some ask for the same thing, some for what cannot be asked for.
  operation.id =
      pick(3) == 0 ? "shared-" + std::to_string(pick(8)) : "id-" + std::to_string(operation.number);
  operation.random.seed(seed_ * 1000 + static_cast<unsigned>(operation.number));
  const bool isPath = operation.kind <= including;
  if (isPath && pick(40) == 0) {
    operation.id += " #";
    operation.expected = "invalid input";
  }
  advance(operation, [&] { call(operation); });
  if (pick(8) == 0) {
    later(std::chrono::milliseconds(pick(2000)), [&operation] {
      operation.cancelled = operation.cancelled || !operation.ended;
      operation.cancel();
    });
  }
}

void Round::advance(Operation& operation, const std::function<void()>& step) {
  const int requests = operation.requests, fetches = operation.sessionFetches;
  wire_->move(operation);
  step();
  if (operation.lost || (operation.cancelled && operation.ended)) return;
  settle("an operation neither asks for anything nor completes", &operation, [&] {
    return operation.requests > requests || operation.sessionFetches > fetches ||
           (!operation.cancelled && operation.didComplete()) ||
           (operation.cancelled && !operation.expected.empty());
  });
  for (const auto& call : wire_->takeCalls()) arrive(call);
  for (const auto& [of, promise] : wire_->takeSessions()) arriveAtSession(*of, promise);
  if (operation.requests == requests && operation.sessionFetches == fetches) end(operation);
}

void Round::end(Operation& operation) {
  operation.ended = true;
  if (operation.expected.empty()) {
    // It asked for nothing: another operation got the same before.
    require(operation.id.starts_with("shared"), "nobody fetched that before", &operation);
    operation.expected = "ok";
    ++tally_.hits;
    ++hits_;
  }
  if (operation.expected == "ok" || operation.url.empty() || operation.id.starts_with("shared"))
    return;
  auto* const store = context_ != nullptr ? &context_->store() : nullptr;
  if (store == nullptr) return;
  require(!store->pages.element(operation.url) && !store->videos.element(operation.url) &&
              !store->items.element(operation.url) && !store->systemViews.element(operation.url) &&
              !store->collections.element(operation.url) &&
              !store->playlists.element(operation.url) && !store->guide.element(operation.url) &&
              !store->lineups.element(operation.url),
          "a failed fetch left something in a cache", &operation);
}

void Round::arrive(const Wire::Call& call) {
  auto& operation = *call.operation;
  ++tally_.requests;
  require(operation.requests <= 2, "a request is sent at most twice", &operation);
  operation.url = call.request.url.text();
  const auto tokens = call.request.headers.values("Authorization");
  require(kKinds[operation.kind].authed ? tokens.size() == 1 && tokens.front() == token_
                                        : tokens.empty(),
          "the token stands where it belongs", &operation);
  auto fault = Fault::none;
  if (operation.random() % 2 == 0)
    fault = static_cast<Fault>(operation.random() % std::size(kFaultNames));
  ++tally_.faults[kFaultNames[static_cast<int>(fault)]];
  later(std::chrono::milliseconds(operation.random() % 3000),
        [this, call, fault] { answer(call, fault); });
}

void Round::answer(const Wire::Call& call, Fault fault) {
  auto& operation = *call.operation;
  const auto& kind = kKinds[operation.kind];
  std::string body = fault == Fault::otherDocument ? kind.otherDocument : kind.document;
  for (auto at = body.find('%'); at != std::string::npos; at = body.find('%'))
    body.replace(at, 1, operation.id);
  int status = std::array{200, 203, 302, 304}[operation.random() % 4];
  std::optional<int> failure;
  switch (fault) {
    case Fault::none:
      operation.expected = "ok";
      break;
    case Fault::truncated:
      body.pop_back();
      operation.expected = "unreadable";
      break;
    case Fault::garbage:
      body = "<html>\xFF";
      operation.expected = "unreadable";
      break;
    case Fault::empty:
      body.clear();
      operation.expected = "unreadable";
      break;
    case Fault::otherDocument:
      operation.expected = "unparsable";
      break;
    case Fault::connectionLost:
    case Fault::timedOut:
      failure = fault == Fault::timedOut ? URLError::timedOut : URLError::networkConnectionLost;
      operation.expected = "transport " + std::to_string(*failure);
      break;
    case Fault::badStatus:
      status = std::array{400, 403, 404, 429, 500, 503}[operation.random() % 6];
      operation.expected = "status " + std::to_string(status);
      break;
    case Fault::unauthorized:
      status = 401;
      operation.expected = "status 401";
      if (kind.authed && operation.requests == 1) {
        ++expectedUpdates_;
        operation.expected = renewal_ == Renewal::isRefused ? "no new session" : "";
      }
  }
  operation.ended = !operation.expected.empty();
  advance(operation, [&] {
    if (failure) return call.promise.failure(URLError{*failure, "simulated"});
    call.promise.success({{.url = call.request.url, .statusCode = status}, Data(body)});
  });
}

void Round::arriveAtSession(Operation& operation, const Promise<Session>& promise) {
  ++tally_.renewals;
  later(std::chrono::milliseconds(operation.random() % 3000), [this, &operation, promise] {
    if (renewal_ == Renewal::fails) {
      operation.expected = "transport -1004";
      operation.ended = true;
      return advance(operation, [&] {
        promise.failure(URLError{URLError::cannotConnectToHost, "simulated"});
      });
    }
    token_ = kToken + std::to_string(tally_.renewals);
    // A renewal is for the second request, and nothing is left to send that.
    operation.lost = context_ == nullptr && operation.requests == 1;
    advance(operation, [&] { promise.success(Session{token_}); });
    if (operation.lost) {
      settle("a new token is kept", &operation,
             [&] { return sessions_->currentToken() == token_; });
    }
  });
}

void Round::run() {
  const auto wire = std::weak_ptr(wire_);
  sessions_ = std::make_shared<Sessions>(
      DefaultSessionProvider::make(
          43200, {token_, 0ms}, [wire] { return wire.lock()->fetchSession(); },
          DefaultSessionProvider::makeAccessQueue(), clock_),
      renewal_);
  context_ = Context::make(
      ConfigurationParser::parse(object(configurationBody()), Environment::qa).force(),
      url("https://api.example/v3/"), url("https://img.example/"), sessions_, wire_,
      {.logger = std::make_shared<PrintingLogger>(),
       .clock = clock_,
       .onReport = [reports = reports_](const RequestReport& report) { reports->add(report); }});
  for (int number = 0; number < kOperationsOfARound; ++number)
    later(std::chrono::milliseconds(pick(10'000)), [this] { start(); });
  // In some rounds the device sleeps for half a day, or the app loses interest.
  if (seed_ % 3 == 0)
    later(std::chrono::milliseconds(pick(10'000)), [this] { clock_->advance(12h); });
  if (seed_ % 5 == 0) {
    later(std::chrono::milliseconds(pick(10'000)), [this] {
      ++tally_.dropped;
      context_.reset();
    });
  }
  while (time_.delayed() > 0 || time_.waiting() > 0) {
    time_.advance(100ms);
    if (pick(20) == 0) slow_->run();
  }
  verify();
}

/// One report of each operation, of the outcome that its caller has seen.
void Round::verifyReports() {
  std::map<std::string, std::uint64_t> outcomes;
  for (const auto& operation : operations_) {
    ++outcomes[operation->lost || operation->cancelled ? "transport -999" : operation->outcome];
  }
  settle("each operation is reported", nullptr,
         [&] { return reports_->tally().all >= operations_.size(); });
  const auto tally = reports_->tally();
  require(tally.fault.empty(), tally.fault);
  require(tally.outcomes == outcomes, "each is reported once, with its outcome");
  require(tally.hits == hits_, "what came from a cache is reported so");
}

void Round::verify() {
  for (const auto& operation : operations_) {
    ++tally_.operations;
    tally_.cancelled += operation->cancelled;
    tally_.lost += operation->lost;
    require(operation->ended || operation->lost, "every operation comes to an end",
            operation.get());
    if (operation->lost || operation->cancelled) continue;
    // Over and over: a future is complete before its callbacks are posted.
    settle("a callback runs", operation.get(), [&] {
      slow_->run();
      return operation->callbacks > 0;
    });
    require(operation->outcome == operation->expected,
            "the outcome is the one that its fault demands", operation.get());
    ++tally_.outcomes[operation->outcome];
  }
  verifyReports();
  settle("a session is renewed once for each first 401", nullptr,
         [&] { return sessions_->updates == expectedUpdates_; });
  const std::weak_ptr<Context> context = context_;
  const std::weak_ptr<Wire> wire = wire_;
  const std::weak_ptr<Sessions> sessions = sessions_;
  context_.reset();
  wire_.reset();
  sessions_.reset();
  for (const auto& operation : operations_)
    operation->didComplete = nullptr, operation->cancel = nullptr;
  settle("nothing is left alive", nullptr,
         [&] { return context.expired() && wire.expired() && sessions.expired(); });
  slow_->run();
  for (const auto& operation : operations_) {
    const int most = operation->lost || operation->cancelled ? 0 : 1;
    require(operation->callbacks == most, "a callback runs once, and not after a cancel",
            operation.get());
  }
}

int simulate(std::uint64_t operations, std::optional<std::uint64_t> seed) {
  auto claim = MainQueue::shared()->claim();
  mainQueue = &*claim;
  setConsoleSink([](std::string_view line) {
    if (line.find(kToken) == std::string_view::npos) return;
    std::fputs("the console shows a token\n", stderr);
    std::exit(1);
  });
  Tally tally;
  if (seed) {
    Round(*seed, tally).run();
  } else {
    for (std::uint64_t next = 0; tally.operations < operations; ++next) Round(next, tally).run();
  }
  const auto print = [](const char* what, std::uint64_t count) {
    std::printf("%-28s %10llu\n", what, static_cast<unsigned long long>(count));
  };
  print("operations", tally.operations);
  print("requests", tally.requests);
  print("answered from a cache", tally.hits);
  print("cancelled", tally.cancelled);
  print("session fetches", tally.renewals);
  print("contexts dropped early", tally.dropped);
  print("lost with their context", tally.lost);
  for (const auto& [name, count] : tally.faults) print(("fault: " + name).c_str(), count);
  for (const auto& [name, count] : tally.outcomes) print(("outcome: " + name).c_str(), count);
  return tally.requests > 0 ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  const auto number = [&](int index) { return std::strtoull(argv[index], nullptr, 10); };
  return orvo::soak::simulate(argc > 1 ? number(1) : 20'000,
                              argc > 2 ? std::optional(number(2)) : std::nullopt);
}
