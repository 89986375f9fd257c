#include <tool/Identifiers.h>
#include <tool/Text.h>

#include <set>

namespace orvo::tool {

namespace {

/// Collects each identifier once, of those that are wanted.
class Walk {
 public:
  Walk(Tool& tool, Listed listed) : tool_(tool), listed_(listed) {}

  [[nodiscard]] const std::vector<Note>& found() const { return found_; }

  void through(const Context& context) {
    for (const SystemView& view : context.systemViews()) {
      add(Listed::pages, view.id, view.label);
      if (const auto page = next(view.fetch())) lookAt(*page);
    }
    if (listed_ == Listed::collections) return;
    for (const std::string& id : std::set<std::string>(collections_)) {
      const auto options = ListFetchOptions{.page = ListPartRequest{.offset = 0, .limit = 100}};
      if (const auto collection = next(context.fetchItemCollection(id, options))) {
        for (const ContentItem& item : collection->items) lookAt(item);
      }
    }
  }

 private:
  template <class T>
  Shared<T> next(const Future<Shared<T>>& future) {
    const auto result = tool_.wait(future, "");
    return result.failed() ? nullptr : *result.value();
  }
  void lookAt(const Page& page) {
    for (const CollectionReference& collection : page.collections) {
      add(Listed::collections, collection.id, collection.label);
      collections_.insert(collection.id);
    }
    for (const AppAction& action : page.appActions) {
      if (action.kind == AppAction::Kind::play) add(Listed::videos, action.id, action.label);
    }
    for (const Page::Sibling& sibling : page.siblings) {
      add(Listed::pages, sibling.id, sibling.label);
    }
  }
  void lookAt(const ContentItem& item) {
    if (const Video* video = item.video()) add(Listed::videos, video->id, video->title);
    if (const Page* page = item.page()) add(Listed::pages, page->id, page->title);
  }
  void add(Listed kind, const std::string& id, const std::string& title) {
    const bool isItem = kind == Listed::videos || kind == Listed::pages;
    if (kind != listed_ && !(listed_ == Listed::items && isItem)) return;
    // One that a shell's line cannot show as it is helps nobody.
    if (id != printable(id) || !known_.insert(id).second) return;
    found_.push_back({id, printable(title)});
  }

  Tool& tool_;
  const Listed listed_;
  std::vector<Note> found_;
  std::set<std::string> known_;
  std::set<std::string> collections_;
};

}  // namespace

std::vector<Note> knownIdentifiers(Tool& tool, Listed listed) {
  tool.endWaitsAt(std::chrono::steady_clock::now() + std::chrono::seconds(5));
  Walk walk(tool, listed);
  const auto context = tool.context();
  if (!context.failed()) walk.through(**context.value());
  return walk.found();
}

}  // namespace orvo::tool
