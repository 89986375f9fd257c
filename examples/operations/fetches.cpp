// One fetch of each kind. Values are immutable and shared with the cache.
#include "Example.h"

namespace {

/// Shows Context::fetchPage(id, options).
Outcome fetchPage(const App& app) {
  return app.context->fetchPage("view-discover")
      .onSuccess(mainQueue(), [](const orvo::Shared<orvo::Page>& page) { show(page->title); })
      .map([](const auto& page) { return !page->collections.empty(); });
}

/// Shows Context::fetchVideo(id, options).
Outcome fetchVideo(const App& app) {
  // Past the cache, for instance when somebody pulls to refresh.
  return app.context->fetchVideo("film-long-thaw", {.playlistID = "films", .noCache = true})
      .onSuccess(mainQueue(), [](const orvo::Shared<orvo::Video>& video) { show(video->title); })
      .map([](const auto& video) { return video->playlistID == "films"; });
}

/// Shows Context::fetchContentItem(id).
Outcome fetchItem(const App& app) {
  return app.context->fetchContentItem("show-night-trains")
      .map([](const orvo::Shared<orvo::ContentItem>& item) {
        show(item->title());
        return item->page() != nullptr;  // a show is a page; else `video()` has it
      });
}

/// Shows Context::fetchSystemView(id, label).
Outcome fetchSystemView(const App& app) {
  const auto views = app.context->systemViews();
  return app.context->fetchSystemView(views.front().id, views.front().label)
      .map([label = views.front().label](const auto& page) { return page->title == label; });
}

/// Shows Context::fetchItemCollection(id, options).
Outcome fetchCollection(const App& app) {
  return app.context->fetchItemCollection("everything", {.page = {{.offset = 0, .limit = 5}}})
      .map([](const orvo::Shared<orvo::ItemCollection>& part) {
        for (const auto& item : part->items) show(item.title());
        return part->items.size() == 5 && part->meta.total > 5;
      });
}

/// Shows Context::fetchPlaylist(id, options).
Outcome fetchPlaylist(const App& app) {
  return app.context->fetchPlaylist("films").map(
      [](const orvo::Shared<orvo::Playlist>& playlist) { return !playlist->items.empty(); });
}

/// Shows Context::fetchPlaylist(id, including).
Outcome fetchPlaylistWithVideo(const App& app) {
  return app.context->fetchVideo("welcome")
      .flatMap([context = app.context](const auto& video) {
        return context->fetchPlaylist("films", *video);  // first, as the list lacks it
      })
      .map([](const auto& playlist) { return playlist->items.front().id == "welcome"; });
}

/// Shows Context::fetchSearchResults(query).
Outcome search(const App& app) {
  return app.context->fetchSearchResults("thaw").map(
      [](const orvo::Shared<std::vector<orvo::SearchCollection>>& collections) {
        for (const auto& found : *collections) show(found.label);
        return !collections->empty();
      });
}

/// Shows Context::fetchSearchCollection(query, kind, options).
Outcome searchFilms(const App& app) {
  return app.context->fetchSearchCollection("thaw", orvo::SearchCollection::ResultsKind::films)
      .map([](const orvo::Shared<orvo::SearchCollection>& films) {
        return !films->items.empty() && films->items.front().title() == "The Long Thaw";
      });
}

/// Shows Context::fetchSearchSuggestions(query).
Outcome suggest(const App& app) {
  return app.context->fetchSearchSuggestions("long th").map([](const auto& suggestions) {
    for (const std::string& suggestion : *suggestions) show(suggestion);
    return !suggestions->empty();
  });
}

/// Shows Context::fetchLinearProgramGuide(id, start, end, options).
Outcome fetchGuide(const App& app) {
  const orvo::Date now = app.context->clock()->now();
  return app.context
      ->fetchLinearProgramGuide(app.context->constants().linearStreamID, now,
                                now + std::chrono::hours(6))
      .map([](const orvo::Shared<orvo::LinearProgramGuide>& guide) {
        return !guide->items.empty();
      });
}

/// Shows Context::fetchLineup(url).
Outcome fetchLineup(const App& app) {
  return app.context->fetchPage("view-channels")
      .flatMap([context = app.context](const auto& page) {
        return context->fetchLineup(page->lineupMeta.value().url);
      })
      .map([](const orvo::Shared<orvo::Lineup>& lineup) { return !lineup->days.empty(); });
}

/// Shows Context::fetchVideoAdMetadata(id).
Outcome fetchAds(const App& app) {
  return app.context->fetchVideoAdMetadata("film-long-thaw")
      .map([](const orvo::Shared<orvo::VideoAdMetadata>& ads) { return !ads->segments.empty(); });
}

}  // namespace

std::vector<Example> fetchExamples() {
  return {{"fetchPage", fetchPage},
          {"fetchVideo", fetchVideo},
          {"fetchItem", fetchItem},
          {"fetchSystemView", fetchSystemView},
          {"fetchCollection", fetchCollection},
          {"fetchPlaylist", fetchPlaylist},
          {"fetchPlaylistWithVideo", fetchPlaylistWithVideo},
          {"search", search},
          {"searchFilms", searchFilms},
          {"suggest", suggest},
          {"fetchGuide", fetchGuide},
          {"fetchLineup", fetchLineup},
          {"fetchAds", fetchAds}};
}
