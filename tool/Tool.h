#pragma once

#include <OrvoAPI/Context/Client.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Futures/Promise.h>
#include <demo/DemoService.h>
#include <tool/LossReport.h>
#include <tool/ModelJson.h>
#include <tool/NetworkWatch.h>
#include <tool/Output.h>
#include <tool/Progress.h>
#include <tool/RequestObserver.h>
#include <tool/Screen.h>
#include <tool/ServiceChoice.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace orvo::tool {

/// What is said about every command.
struct GlobalOptions : ServiceChoice {
  bool json = false;
  /// Whether to say which service is talked to.
  bool verbose = false;
  /// Where what documents lose is told, if it is.
  std::shared_ptr<LossReport> losses{};
  /// What the context is made with, and what stands before the network.
  BootstrapOptions bootstrap{};
  /// Is told the service once it runs.
  std::function<void(const ServiceChoice&)> onService{};
};

/// One run of the tool: the service that it talks to, and the way in which it answers. It owns the
/// demo service, if there is one, and the context. Used by the main thread.
class Tool {
 public:
  explicit Tool(GlobalOptions options);
  ~Tool();
  Tool(const Tool&) = delete;
  Tool& operator=(const Tool&) = delete;

  [[nodiscard]] const GlobalOptions& options() const { return options_; }
  /// As if `--json` had been given.
  void answerInJson();
  /// How long programmes of the demo service are; to be set before it is started.
  void setDemoProgramLength(std::chrono::seconds length) { demoProgramLength_ = length; }

  /// From now on the observer is told of every request; to be set before the service is asked.
  void observe(std::shared_ptr<RequestObserver> observer);
  [[nodiscard]] const std::shared_ptr<RequestObserver>& observer() const { return observer_; }

  /// What the context is made with; to be changed before the service is asked.
  [[nodiscard]] BootstrapOptions& bootstrap() { return options_.bootstrap; }

  /// No wait goes on after that.
  void endWaitsAt(std::chrono::steady_clock::time_point end) { end_ = end; }

  /// Opens a session and loads the configuration at the first call.
  [[nodiscard]] Result<std::shared_ptr<Context>> context();
  /// The same if that has been done, else null.
  [[nodiscard]] const Context* openedContext() const { return context_.get(); }
  /// A way to the network for what is fetched without the context: without a token, and without the
  /// cookies that the service has set. What stands before the context's network stands before it.
  [[nodiscard]] std::shared_ptr<NetworkDataProvider> network(
      std::size_t maximumBodySize = URLSessionConfiguration::kDefaultMaximumBodySize) const;
  /// The base URL of the API; asks the service nothing.
  [[nodiscard]] Result<URL> apiBase();
  /// What builders of image URLs need; asks the service nothing.
  [[nodiscard]] Result<ResourceHost> resourceHost();

  /// Waits for the result; a line says so when it takes long.
  template <class T>
  [[nodiscard]] Result<T> wait(const Future<T>& future, const std::string& label) {
    Progress progress(label);
    return wait(future, progress);
  }
  template <class T>
  [[nodiscard]] Result<T> wait(const Future<T>& future, Progress& progress) {
    // Requests have time-outs of their own; this one is for a server that trickles for ever.
    const auto end = std::min(std::chrono::steady_clock::now() + std::chrono::minutes(10), end_);
    while (true) {
      Result<T> result = future.wait(std::chrono::milliseconds(120));
      const bool isDone = future.didComplete();
      if (isDone && observer_) awaitReports(future);
      if (isDone) return result;
      if (std::chrono::steady_clock::now() >= end) return tooLate();
      progress.tick();
    }
  }

  /// Prints the one document or the text that is the command's answer. Returns the exit status.
  template <class Draw>
  int answer(const Json& json, Draw draw) const {
    if (options_.json) return answer(json);
    Screen screen(standardOutput());
    draw(screen);
    print(screen.text());
    return 0;
  }
  int answer(const Json& json) const;
  /// Says why there is no answer. Returns the exit status.
  int fail(const AnyError& error) const;

 private:
  /// Why a wait is given up.
  [[nodiscard]] static Failure tooLate();
  /// Returns when the observer has been told of what led to the future, which is complete: of what
  /// is registered with it, its report comes first.
  template <class T>
  void awaitReports(const Future<T>& future) const {
    const Promise<bool> told;
    future.onComplete(observer_->queue(), [told](const Result<T>&) { told.success(true); });
    (void)told.future().wait(std::chrono::seconds(1));
  }
  /// Sees to it that there is a service; false when the demo service does not start.
  [[nodiscard]] bool startService();
  void reportService() const;
  /// Which host no session could be had with, and what was asked for.
  [[nodiscard]] std::string place(const AnyError& error) const;
  /// Why there is no answer.
  [[nodiscard]] std::string reason(const AnyError& error) const;
  /// What to do next: lines, or nothing.
  [[nodiscard]] std::string wayOut(const AnyError& error) const;

  GlobalOptions options_;
  std::chrono::seconds demoProgramLength_{0};  // as on television
  std::unique_ptr<demo::DemoService> demo_;
  std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::time_point::max();
  bool isServiceKnown_ = false;
  const std::shared_ptr<NetworkWatch> watch_;
  std::shared_ptr<RequestObserver> observer_;
  std::optional<BeforeEarlyEnd> closing_;
  std::shared_ptr<Context> context_;
  /// Or has tried to, in vain.
  bool isOpening_ = false;
};

/// Fetches what `fetch(const Context&)` returns a future of, and prints it as JSON or draws it with
/// `draw(Screen&, const Model&)`. Returns the exit status.
template <class Fetch, class Draw>
int fetchAndAnswer(Tool& tool, const std::string& label, Fetch fetch, Draw draw) {
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const auto result = tool.wait(fetch(**context.value()), label);
  if (const AnyError* error = result.error()) return tool.fail(*error);
  const auto& model = **result.value();
  return tool.answer(toJson(model), [&](Screen& screen) { draw(screen, model); });
}

}  // namespace orvo::tool
