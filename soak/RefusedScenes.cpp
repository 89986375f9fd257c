#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/ListWalk.h>
#include <OrvoAPI/Context/RequestReport.h>
#include <OrvoAPI/Futures/Coroutine.h>
#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>
#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Storage/AppStore.h>
#include <soak/RefusedScenes.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

namespace orvo::soak {
namespace {

using namespace std::chrono_literals;

/// Beyond every limit of the library's that a scene may run into.
constexpr auto kPatience = 12s;

/// What came of a future. Waiting is the app's part, and may throw as well.
template <class T>
Ending endingOf(const Future<T>& future) {
  const auto result = future.wait(kPatience);
  if (!result.failed()) return {};
  return {.error = *result.error(), .isLost = !future.didComplete() && !future.isCancelled()};
}

/// Takes what the library says, without memory of its own.
class CountingLogger final : public Logger {
 public:
  void log(std::string_view, LogLevel, std::string_view, std::string_view) override { ++lines; }
  std::atomic<int> lines{0};
};

using SharedContext = std::shared_ptr<Context>;

Future<SharedContext> open(const Service::Deployment& deployment,
                           const std::shared_ptr<Logger>& logger = nullptr) {
  return ContextService::context(deployment.api, deployment.resources, Client::appleTV,
                                 {.context = {.logger = logger}});
}

/// A scene with a context that was there before.
class WithContext : public Player {
 public:
  explicit WithContext(const Service& service)
      : context_(open(service.lasting, logger_).wait(kPatience).force()) {}

 protected:
  const std::shared_ptr<CountingLogger> logger_ = std::make_shared<CountingLogger>();
  const SharedContext context_;
};

class Session final : public Player {
 public:
  explicit Session(const Service&) {}
  Ending act(const Service& service) override { return endingOf(open(service.lasting)); }
};

class PageFetch final : public WithContext {
 public:
  using WithContext::WithContext;
  Ending act(const Service&) override {
    return endingOf(context_->fetchPage("view-discover", {.noCache = true}));
  }
};

class ReportedFetch final : public Player {
 public:
  explicit ReportedFetch(const Service& service)
      : context_(ContextService::context(
                     service.lasting.api, service.lasting.resources, Client::appleTV,
                     {.context = {.logger = std::make_shared<CountingLogger>(),
                                  .onReport = [](const RequestReport&) { throw std::bad_alloc(); },
                                  .logsRequests = true}})
                     .wait(kPatience)
                     .force()) {}
  Ending act(const Service&) override {
    return endingOf(context_->fetchPage("view-discover", {.noCache = true}));
  }

 private:
  const SharedContext context_;
};

class Collection final : public WithContext {
 public:
  using WithContext::WithContext;
  Ending act(const Service&) override {
    const ListWalk walk(context_, [context = context_] {
      return context->fetchItemCollection("everything", {.page = ListPartRequest{0, 10}});
    });
    return endingOf(
        walk.forEach([parts = 0](const Shared<ItemCollection>&) mutable { return ++parts < 3; }));
  }
};

class Guide final : public WithContext {
 public:
  using WithContext::WithContext;
  Ending act(const Service&) override {
    context_->store().removeAll();
    const auto now = Clock::system()->now();
    return endingOf(context_->fetchLinearProgramGuide(
        context_->constants().linearStreamID, now, Date(now.millisecondsSince1970() + 86'400'000)));
  }
};

class CacheHit final : public WithContext {
 public:
  explicit CacheHit(const Service& service) : WithContext(service) {
    (void)context_->fetchVideo("welcome").wait(kPatience);
  }
  Ending act(const Service&) override {
    return endingOf(context_->fetchVideo("welcome", {.playlistID = "another"}));
  }
};

class Cancel final : public WithContext {
 public:
  using WithContext::WithContext;
  Ending act(const Service& service) override {
    const auto page = context_->fetchPage("view-discover", {.noCache = true});
    const auto answer = session_.fetch({.url = service.lasting.api});
    const auto derived =
        answer.map([](const HTTPResult& result) { return result.response.statusCode; });
    page.cancel();
    derived.cancel();
    (void)answer.wait(kPatience);
    return {};
  }

 private:
  URLSession session_;
};

class Monitor final : public WithContext {
 public:
  using WithContext::WithContext;
  Ending act(const Service&) override {
    context_->store().removeAll();
    const auto monitor = LinearProgramGuideMonitor::make(context_);
    const auto said = std::make_shared<std::atomic<int>>(0);
    monitor->onUpdate([said](const GuideUpdate&) { ++*said; });
    const int logged = logger_->lines;
    auto ending = endingOf(monitor->load(Clock::system()->now(), 2));
    // One that finds no video says so.
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!ending.error && *said == 0 && logger_->lines == logged) {
      if (std::chrono::steady_clock::now() > end)
        ending = {.error = URLError{-1, "no update"}, .isLost = true};
    }
    return ending;
  }
};

/// Fetches with a token that has expired.
class Renewal final : public Player {
 public:
  explicit Renewal(const Service& service)
      : context_(open(service.forgetful).wait(kPatience).force()) {
    for (int i = 0; i < 2; ++i) {
      (void)context_->fetchVideo("welcome", {.noCache = true}).wait(kPatience);
    }
  }
  Ending act(const Service&) override {
    return endingOf(context_->fetchVideo("welcome", {.noCache = true}));
  }

 private:
  const SharedContext context_;
};

/// Sends one address elsewhere, and lets the others go by.
class Redirector final : public URLInterceptor {
 public:
  explicit Redirector(URL to) : to_(std::move(to)) {}
  bool intercept(const URLRequest& request,
                 const std::shared_ptr<InterceptedRequest>& intercepted) override {
    if (request.url.path().find("moved") == std::string_view::npos) return false;
    HTTPURLResponse response{request.url, 302, {}};
    response.headers.add("Location", to_.text());
    intercepted->respond(std::move(response));
    return true;
  }

 private:
  const URL to_;
};

/// Follows, and gives its word on another thread.
class Follower final : public URLSessionDelegate {
 public:
  void willPerformHTTPRedirection(const HTTPURLResponse&, const URLRequest& newRequest,
                                  const URLRequest&, RedirectCompletion complete) override {
    DispatchQueue::global()->post(
        [next = URLRequest(newRequest), complete = std::move(complete)]() mutable {
          complete(std::move(next));
        });
  }
};

class Redirect final : public Player {
 public:
  explicit Redirect(const Service& service)
      : session_({.protocolClasses = {std::make_shared<Redirector>(
                      *URL::parse("configuration/ios/v1", service.lasting.api))}},
                 std::make_shared<Follower>()) {}
  Ending act(const Service& service) override {
    return endingOf(session_.fetch({.url = *URL::parse("moved", service.lasting.api)}));
  }

 private:
  URLSession session_;
};

/// A first fetch over TLS and HTTP/2, with a session of its own.
class Secure final : public Player {
 public:
  explicit Secure(const Service&) {}
  Ending act(const Service& service) override {
    URLSession session({.certificateAuthorityFile = service.authorityFile});
    return endingOf(session.fetch({.url = service.secure}));
  }
};

class Coroutine final : public WithContext {
 public:
  using WithContext::WithContext;
  Ending act(const Service&) override { return endingOf(title(context_)); }

 private:
  static Future<std::string> title(SharedContext context) {
    const auto page = co_await context->fetchPage("view-discover", {.noCache = true});
    if (page.failed()) co_return Failure{*page.error()};
    const auto cancelled = context->fetchVideo("welcome", {.noCache = true});
    DispatchQueue::global()->post([cancelled] { cancelled.cancel(); });
    (void)co_await cancelled;
    const auto video = co_await context->fetchVideo("welcome", {.noCache = true});
    if (video.failed()) co_return Failure{*video.error()};
    co_return (*video.value())->title;
  }
};

/// What futures and queues do by themselves, with values whose copies need memory.
class Futures final : public Player {
 public:
  explicit Futures(const Service&) {}
  Ending act(const Service&) override {
    using Text = std::string;
    const auto text = [](char c) { return Text(100, c); };
    const Promise<Text> late, other;
    const Promise<Text> taken;
    taken.complete(other.future());
    const auto joined =
        Future<Text>::concat({late.future(), taken.future(), Future<Text>::succeeded(text('c'))});
    const auto result = joined.zip(late.future().validate([](const Text&) { return true; }))
                            .flatMap([](const auto& both) {
                              return Future<Text>::succeeded(both.first[0] + both.second);
                            })
                            .successResult();
    const auto queue = SerialQueue::make("memory");
    queue->postAfter(1ms, [late, text] {
      late.success(Text());
      (void)text;
    });
    try {
      other.success(text('o'));
    } catch (const std::bad_alloc&) {
      other.success(Text());
    }
    Text copy;
    queue->sync([&] { copy = text('s'); });
    return endingOf(result);
  }
};

/// Ends the process with requests under way.
class ProcessEnd final : public WithContext {
 public:
  using WithContext::WithContext;
  Ending act(const Service&) override {
    for (int i = 0; i < 5; ++i) (void)context_->fetchPage("view-discover", {.noCache = true});
    std::exit(0);
  }
};

template <class T>
std::unique_ptr<Player> makePlayer(const Service& service) {
  return std::make_unique<T>(service);
}

}  // namespace

Service Service::fromText(std::string_view text) {
  const auto line = [&text] {
    const auto first = text.substr(0, text.find('\n'));
    text.remove_prefix(first.size() + 1);
    return first;
  };
  const auto next = [&line] { return *URL::parse(line()); };
  auto lasting = Deployment{next(), next()};
  auto forgetful = Deployment{next(), next()};
  auto secure = next();
  return {std::move(lasting), std::move(forgetful), std::move(secure), std::string(line())};
}

const std::vector<Scene>& scenes() {
  static const std::vector<Scene> scenes{
      {"session", makePlayer<Session>},      {"page", makePlayer<PageFetch>},
      {"report", makePlayer<ReportedFetch>}, {"collection", makePlayer<Collection>},
      {"guide", makePlayer<Guide>},          {"cache hit", makePlayer<CacheHit>},
      {"cancel", makePlayer<Cancel>},        {"monitor", makePlayer<Monitor>},
      {"renewal", makePlayer<Renewal>},      {"redirect", makePlayer<Redirect>},
      {"TLS", makePlayer<Secure>, true},     {"coroutine", makePlayer<Coroutine>},
      {"futures", makePlayer<Futures>},      {"end", makePlayer<ProcessEnd>}};
  return scenes;
}

}  // namespace orvo::soak
