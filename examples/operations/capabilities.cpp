// Fetches for later: a capability is made where the identifier is known, and called where the
// content is wanted, for instance by a shelf that comes into view.
#include "Example.h"

namespace {

/// Shows Context::pageFetchCapability(pageID, options);
/// Context::videoFetchCapability(videoID, options); Context::contentItemCapability(productID).
Outcome contentForLater(const App& app) {
  const orvo::Capability<orvo::Shared<orvo::Page>> page =
      app.context->pageFetchCapability("view-discover");
  const auto video = app.context->videoFetchCapability("film-long-thaw");
  const auto item = app.context->contentItemCapability("film-salt-road");
  return page().zip(video()).zip(item()).map([](const auto& all) {
    return !all.first.first->title.empty() && !all.second->title().empty();
  });
}

/// Shows Context::systemViewCapability(systemViewID, label); SystemView::fetch;
/// Context::systemViews().
Outcome systemViews(const App& app) {
  const std::vector<orvo::SystemView> views = app.context->systemViews();  // a menu's entries
  const auto same = app.context->systemViewCapability(views[0].id, views[0].label);
  return views[0].fetch().zip(same()).map(
      [](const auto& pages) { return pages.first->title == pages.second->title; });
}

/// Shows Context::collectionCapability(collectionID);
/// Context::collectionFetchCapabilities(collectionIDs).
Outcome shelves(const App& app) {
  std::vector<orvo::Future<orvo::Shared<orvo::ItemCollection>>> fetched;
  for (const auto& shelf : app.context->collectionFetchCapabilities({"featured", "films"})) {
    fetched.push_back(shelf());
  }
  fetched.push_back(app.context->collectionCapability("shows")());
  return orvo::Future<orvo::Shared<orvo::ItemCollection>>::concat(fetched).map(
      [](const auto& collections) { return collections.size() == 3; });
}

/// Shows Context::playlistCapability(playlistID);
/// Context::playlistCapability(videoID, playlistID).
Outcome playlists(const App& app) {
  const auto films = app.context->playlistCapability("films");
  const auto withVideo = app.context->playlistCapability("welcome", std::string("films"));
  return films().zip(withVideo()).map([](const auto& both) {
    return !both.first->items.empty() && both.second->items.front().id == "welcome";
  });
}

/// Shows Context::playlistCapability(video); Context::nextPlaylistCapability(video).
Outcome playlistOfVideo(const App& app) {
  return app.context->fetchVideo("film-long-thaw")
      .flatMap([context = app.context](const orvo::Shared<orvo::Video>& video) {
        const auto after = context->nextPlaylistCapability(*video);
        if (after) show("another playlist comes after it");
        return context->playlistCapability(*video)();
      })
      .map([](const auto& playlist) { return playlist->id == "films"; });
}

/// Shows Context::searchCapability(query); Context::searchCapability(query, kind);
/// Context::searchSuggestionsCapability(query).
Outcome searches(const App& app) {
  const auto all = app.context->searchCapability("thaw");
  const auto films =
      app.context->searchCapability("thaw", orvo::SearchCollection::ResultsKind::films);
  const auto suggestions = app.context->searchSuggestionsCapability("long th");
  return all().zip(films()).zip(suggestions()).map([](const auto& found) {
    return !found.first.first->empty() && !found.first.second->items.empty() &&
           !found.second->empty();
  });
}

/// Shows Context::lineupCapability(meta).
Outcome lineupForLater(const App& app) {
  return app.context->fetchPage("view-channels")
      .flatMap([context = app.context](const auto& page) {
        return context->lineupCapability(page->lineupMeta.value())();
      })
      .map([](const auto& lineup) { return !lineup->days.empty(); });
}

/// Shows Context::linearProgramGuideCapability(start, end, options).
Outcome guideForLater(const App& app) {
  const orvo::Date now = app.context->clock()->now();
  const auto guide = app.context->linearProgramGuideCapability(now, now + std::chrono::hours(6));
  return guide().map([](const auto& part) { return !part->items.empty(); });
}

/// Shows Context::upcomingEventsCapability(); UpcomingEvents::fetch.
Outcome upcomingEvents(const App& app) {
  const orvo::UpcomingEvents events = app.context->upcomingEventsCapability();
  show(events.label);
  return events.fetch().map([](const auto& playlist) { return !playlist->items.empty(); });
}

/// Shows Context::videoAdMetadataCapability(videoID).
Outcome adsForLater(const App& app) {
  return app.context->videoAdMetadataCapability("film-long-thaw")().map(
      [](const auto& ads) { return !ads->segments.empty(); });
}

/// Shows URLService::videoURL(id); URLService::videoAdMetadataURL(id).
Outcome addressesOfAStream(const App& app) {
  const auto& service = app.context->urlService();
  const orvo::URLService::URLFromToken stream = service.videoURL("film-long-thaw");
  const auto ads = service.videoAdMetadataURL("film-long-thaw");
  // Whole addresses come from `Context::videoURL`; these are relative, for any token.
  return Outcome::succeeded(!stream("TOKEN").text().empty() && !ads("TOKEN").isAbsolute());
}

}  // namespace

std::vector<Example> capabilityExamples() {
  return {{"contentForLater", contentForLater},
          {"systemViews", systemViews},
          {"shelves", shelves},
          {"playlists", playlists},
          {"playlistOfVideo", playlistOfVideo},
          {"searches", searches},
          {"lineupForLater", lineupForLater},
          {"guideForLater", guideForLater},
          {"upcomingEvents", upcomingEvents},
          {"adsForLater", adsForLater},
          {"addressesOfAStream", addressesOfAStream}};
}
