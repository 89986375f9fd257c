#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONParseError.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <tool/ErrorReport.h>
#include <tool/OwnRequest.h>
#include <tool/Present.h>
#include <tool/Secrets.h>
#include <tool/SentLists.h>
#include <tool/drift/Probe.h>
#include <tool/drift/Walk.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace orvo::tool {

namespace {

using namespace std::chrono_literals;

/// Documents by what is known as what: in a shape, to `parseDocument`, and in a `DocumentLoss`.
struct DocumentKind {
  std::string_view name;
  std::string_view parseKind;
  std::string_view lossName;
};
constexpr DocumentKind kDocumentKinds[] = {
    {"configuration", "configuration", "Configuration"},
    {"page", "page", "Page"},
    {"page", "page", "SystemView"},
    {"video", "video", "Video"},
    {"collection", "item-collection", "ItemCollection"},
    {"playlist", "playlist", "Playlist"},
    {"search", "search-results", "SearchResults"},
    {"suggestions", "string-array", "SearchSuggestions"},
    {"guide", "linear-program-guide", "LinearProgramGuide"},
    {"lineup", "lineup", "Lineup"},
};

/// What the network has brought. Safe to use from any thread.
struct Catch {
  struct Document {
    URL url;
    Data body;
  };

  const std::shared_ptr<SerialQueue> queue = SerialQueue::make("orvo.drift");
  std::vector<Document> documents{};  // touched on the queue only
  std::mutex lock;
  std::int64_t requests = 0;
  std::vector<DocumentLoss> losses;
};

class CatchingNetwork final : public NetworkDataProvider {
 public:
  CatchingNetwork(std::shared_ptr<NetworkDataProvider> network, std::shared_ptr<Catch> into)
      : network_(std::move(network)), into_(std::move(into)) {}

  Future<HTTPResult> fetch(const URLRequest& request) override {
    {
      const std::lock_guard guard(into_->lock);
      ++into_->requests;
    }
    return network_->fetch(request).onSuccess(
        into_->queue, [into = into_, url = request.url](const auto& answer) {
          if (answer.response.statusCode < 400) into->documents.push_back({url, answer.body});
        });
  }

 private:
  const std::shared_ptr<NetworkDataProvider> network_;
  const std::shared_ptr<Catch> into_;
};

class ServiceWalk {
 public:
  ServiceWalk(Tool& tool, const WalkLimits& limits, const Shapes* then)
      : tool_(tool), limits_(limits), then_(then) {}

  Result<WalkResult> make();

 private:
  /// Begins a fetch; what that returns waits for it and looks around.
  using Task = std::function<std::function<void()>()>;
  struct Tasks {
    std::deque<Task> waiting{};
    /// Those of documents that no earlier walk has met.
    std::deque<Task> strange{};
    std::int64_t begun = 0;
  };

  /// A path below the base, and what else tells the document from others.
  struct Address {
    std::string path;
    std::string rest{};
  };

  struct Known {
    std::string kind;
    /// The whole of it.
    std::string address;
  };

  void listen(BootstrapOptions& options) const;
  void begin(const std::shared_ptr<Context>& context);
  template <class Fetch, class Visit>
  void add(const Address& address, std::string_view kind, Fetch fetch, Visit visit);
  void addPage(const std::string& id);
  void addVideo(const std::string& id);
  void addCollection(const std::string& id);
  void addPlaylist(const std::optional<std::string>& id);
  void addSearch(const std::string& title);
  void visit(const Page& page);
  void visit(const std::vector<ContentItem>& items);
  void fail(const AnyError& error, const std::string& address);
  [[nodiscard]] bool isStrange(const Known& known) const;
  void digest();
  /// One of the kind of which there were the fewest; null when there is none.
  [[nodiscard]] Task takeTask();
  [[nodiscard]] Task takeTask(std::deque<Task> Tasks::*list);
  /// What is known of the document's address; null when it is nothing.
  [[nodiscard]] const Known* find(const URL& url) const;

  Tool& tool_;
  const WalkLimits limits_;
  const Shapes* const then_;
  const std::shared_ptr<Catch> catch_ = std::make_shared<Catch>();
  std::shared_ptr<Context> context_;
  /// By the kind of document, so that a short walk, too, meets all kinds.
  std::map<std::string, Tasks, std::less<>> tasks_;
  /// What is fetched from which path, below the base.
  std::map<std::string, Known> known_;
  std::map<std::string, Probe> probes_;
  bool hasSearched_ = false;
  /// Requests that were not answered in time.
  int late_ = 0;
  WalkResult result_;
};

void ServiceWalk::listen(BootstrapOptions& options) const {
  options.wrapNetwork = [into = catch_,
                         wrap = options.wrapNetwork](std::shared_ptr<NetworkDataProvider> network) {
    if (wrap) network = wrap(std::move(network));
    return std::make_shared<CatchingNetwork>(std::move(network), into);
  };
  options.context.onLoss = [into = catch_](const DocumentLoss& loss) {
    const std::lock_guard guard(into->lock);
    into->losses.push_back(loss);
  };
}

template <class Fetch, class Visit>
void ServiceWalk::add(const Address& address, std::string_view kind, Fetch fetch, Visit visit) {
  const Known known{std::string(kind), address.path + address.rest};
  if (!known_.emplace(address.path, known).second) return;
  auto& tasks = tasks_[known.kind];
  (isStrange(known) ? tasks.strange : tasks.waiting)
      .push_back(
          [this, fetch = std::move(fetch), visit = std::move(visit), address = known.address] {
            const auto future = fetch();
            return [this, future, visit, address] {
              const auto result = tool_.wait(future, "walking through the service");
              result.failed() ? fail(*result.error(), address) : visit(**result.value());
            };
          });
}

/// How many items of a list are looked at more closely.
constexpr std::size_t kCloser = 3;

void ServiceWalk::begin(const std::shared_ptr<Context>& context) {
  context_ = context;
  for (const auto& view : context->systemViews()) {
    add({"products/" + view.id}, "page", view.fetch, [this](const Page& page) { visit(page); });
  }
  const Date now = present();
  add({"epg"}, "guide", context->linearProgramGuideCapability(now, now + 24h), [](const auto&) {});
  addPlaylist(context->configuration().upcomingEvents.id);
}

void ServiceWalk::addPage(const std::string& id) {
  add(
      {"products/" + id}, "page", [this, id] { return context_->fetchPage(id); },
      [this](const Page& page) { visit(page); });
}

void ServiceWalk::addVideo(const std::string& id) {
  add(
      {"products/" + id}, "video", [this, id] { return context_->fetchVideo(id); },
      [this](const Video& video) {
        for (const auto& reference : video.collections) addCollection(reference.id);
        addPlaylist(video.nextPlaylistID);
        addPlaylist(video.deepLinkPlaylistID);
      });
}

void ServiceWalk::addCollection(const std::string& id) {
  add(
      {"collections/" + id}, "collection", [this, id] { return context_->fetchItemCollection(id); },
      [this](const ItemCollection& collection) { visit(collection.items); });
}

void ServiceWalk::addPlaylist(const std::optional<std::string>& id) {
  if (!id || id->empty()) return;
  add(
      {"playlists/" + *id}, "playlist", [this, id] { return context_->fetchPlaylist(*id); },
      [](const auto&) {});
}

void ServiceWalk::addSearch(const std::string& title) {
  const auto word = title.substr(0, title.find(' '));
  if (word.empty() || std::exchange(hasSearched_, true)) return;
  add(
      {"search", "?" + word}, "search", [this, word] { return context_->fetchSearchResults(word); },
      [this](const std::vector<SearchCollection>& collections) {
        for (const auto& collection : collections) visit(collection.items);
      });
  add(
      {"search/suggest", "?" + word}, "suggestions",
      [this, word] { return context_->fetchSearchSuggestions(word); }, [](const auto&) {});
}

void ServiceWalk::visit(const Page& page) {
  for (const auto& reference : page.collections) addCollection(reference.id);
  if (const auto& lineup = page.lineupMeta) {
    add(
        {lineup->url.text()}, "lineup",
        [this, url = lineup->url] { return context_->fetchLineup(url); }, [](const auto&) {});
  }
  for (std::size_t i = 0; i < std::min(page.siblings.size(), kCloser); ++i) {
    addPage(page.siblings[i].id);
  }
}

void ServiceWalk::visit(const std::vector<ContentItem>& items) {
  std::size_t videos = 0, pages = 0;
  for (const ContentItem& item : items) {
    if (const Video* video = item.video()) {
      addSearch(video->title);
      if (++videos <= kCloser) addVideo(video->id);
    } else if (const Page* page = item.page()) {
      if (++pages <= kCloser) addPage(page->id);
    }
  }
}

void ServiceWalk::fail(const AnyError& error, const std::string& address) {
  const auto* general = error.as<GeneralError>();
  const auto* wrapped = general != nullptr ? general->as<GeneralError::underlying>() : nullptr;
  const AnyError& inner = wrapped != nullptr ? wrapped->error : error;
  const auto* transport = inner.as<URLError>();
  if (transport != nullptr && transport->code == URLError::timedOut) ++late_;
  const bool isUnreadable = inner.is<JSONParseError>() || inner.is<JSONReaderError>();
  const auto asked = subject(error);
  result_.faults.push_back(
      {(asked.empty() ? address : asked) + ": " + explanation(error), isUnreadable});
}

bool ServiceWalk::isStrange(const Known& known) const {
  if (then_ == nullptr) return false;
  const auto shape = then_->find(known.kind);
  return shape == then_->end() || !shape->second.hasMet(known.address);
}

const ServiceWalk::Known* ServiceWalk::find(const URL& url) const {
  static const Known kConfiguration{"configuration", "configuration"};
  const auto found = known_.find(url.text());
  if (found != known_.end()) return &found->second;
  const std::string_view path = url.path();
  if (path.find("/configuration/") != std::string_view::npos) return &kConfiguration;
  const Known* longest = nullptr;
  std::size_t size = 0;
  for (const auto& [end, known] : known_) {
    if (end.size() > size && path.ends_with("/" + end)) {
      longest = &known;
      size = end.size();
    }
  }
  return longest;
}

void ServiceWalk::digest() {
  // What the fetches have brought, and what was told of it, is on its way.
  const auto& observer = tool_.observer();
  const auto queue =
      observer != nullptr ? observer->queue() : tool_.bootstrap().context.reportQueue;
  const Promise<bool> told;
  queue->post([told] { told.success(true); });
  (void)told.future().wait(1s);
  // The token may be a key.
  KnownSecrets token;
  token.add(context_->sessionProvider()->currentToken(), std::string(kHiddenText));
  std::vector<Catch::Document> documents;
  catch_->queue->sync([&] { documents.swap(catch_->documents); });
  const std::lock_guard guard(catch_->lock);
  result_.requests = catch_->requests;
  for (const auto& [url, body] : documents) {
    const Known* const known = find(url);
    const auto document = JSONDataParser::value(Data(token.hiddenIn(body.view())));
    if (known == nullptr || document.failed()) continue;
    const std::string& name = known->kind;
    auto& shape = result_.shapes[name];
    shape.learn(*document.value());
    shape.learn(shortLists(*document.value()));
    shape.learnMeeting(known->address);
    if (then_ != nullptr) continue;
    const auto* const kind = std::ranges::find(kDocumentKinds, name, &DocumentKind::name);
    probes_.try_emplace(name, std::string(kind->parseKind))
        .first->second.examine(*document.value(), shape);
  }
  for (auto& loss : std::exchange(catch_->losses, {})) {
    loss.path = token.hiddenIn(loss.path);
    const auto* const kind =
        std::ranges::find(kDocumentKinds, loss.document, &DocumentKind::lossName);
    if (kind != std::end(kDocumentKinds)) result_.shapes[std::string(kind->name)].learn({loss});
  }
}

ServiceWalk::Task ServiceWalk::takeTask(std::deque<Task> Tasks::*list) {
  Tasks* fewest = nullptr;
  for (auto& [kind, tasks] : tasks_) {
    const bool isFewer = fewest == nullptr || tasks.begun < fewest->begun;
    if (!(tasks.*list).empty() && isFewer) fewest = &tasks;
  }
  if (fewest == nullptr) return nullptr;
  ++fewest->begun;
  auto task = std::move((fewest->*list).front());
  (fewest->*list).pop_front();
  return task;
}

ServiceWalk::Task ServiceWalk::takeTask() {
  auto task = takeTask(&Tasks::waiting);
  return task == nullptr && result_.faults.empty() ? takeTask(&Tasks::strange) : task;
}

Result<WalkResult> ServiceWalk::make() {
  auto& options = tool_.bootstrap();
  if (options.context.reportQueue == nullptr) {
    options.context.reportQueue = SerialQueue::make("orvo.losses");
  }
  listen(options);
  // An unresponsive service is not waited for again and again.
  constexpr int kMostLate = 4;
  const auto beginWaiting = [this] {
    tool_.endWaitsAt(std::chrono::steady_clock::now() + limits_.patience);
  };
  beginWaiting();
  const auto context = tool_.context();
  if (const AnyError* error = context.error()) return Failure{*error};
  begin(*context.value());
  digest();
  while (result_.requests < limits_.requests) {
    result_.isGivenUp = late_ >= kMostLate;
    if (result_.isGivenUp) break;
    std::vector<std::function<void()>> ends;
    const auto budget = std::min<std::int64_t>(2, limits_.requests - result_.requests);
    while (std::ssize(ends) < budget) {
      const auto task = takeTask();
      if (task == nullptr) break;
      ends.push_back(task());
    }
    if (ends.empty()) break;
    beginWaiting();
    for (const auto& end : ends) end();
    digest();
  }
  return std::move(result_);
}

}  // namespace

Result<WalkResult> walkService(Tool& tool, const WalkLimits& limits, const Shapes* then) {
  // What is lost is reported, and examined documents are not the service's.
  silenceConsole();
  return ServiceWalk(tool, limits, then).make();
}

}  // namespace orvo::tool
