#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Context/FetchScopeStateInternal.h>

#include <memory>
#include <utility>

namespace orvo {
namespace {

/// Where the list continues, or nothing when this was its last part.
std::optional<ListPartRequest> nextPart(const PagingMeta& meta) {
  std::int64_t next = 0;
  if (__builtin_add_overflow(meta.offset, meta.limit, &next)) {
    detail::fatal("the offset of the next part is beyond 64 bits");
  }
  if (meta.total <= next) return std::nullopt;
  return ListPartRequest{.offset = next, .limit = meta.limit};
}

Playlist playlistOf(const Video& video) {
  return {.id = "",
          .label = video.title,
          .shortLabel = video.title,
          .meta = {.total = 1, .limit = 1, .offset = 0},
          .items = {video}};
}

}  // namespace

Capability<Shared<Page>> Context::pageFetchCapability(std::string pageID,
                                                      PageFetchOptions options) const {
  return [self = shared_from_this(), id = std::move(pageID), options] {
    return self->fetchPage(id, options);
  };
}

Capability<Shared<Video>> Context::videoFetchCapability(std::string videoID,
                                                        VideoFetchOptions options) const {
  return [self = shared_from_this(), id = std::move(videoID), options = std::move(options)] {
    return self->fetchVideo(id, options);
  };
}

Capability<Shared<ContentItem>> Context::contentItemCapability(std::string productID) const {
  return
      [self = shared_from_this(), id = std::move(productID)] { return self->fetchContentItem(id); };
}

Capability<Shared<Page>> Context::systemViewCapability(std::string systemViewID,
                                                       std::string label) const {
  return [self = shared_from_this(), id = std::move(systemViewID), label = std::move(label)] {
    return self->fetchSystemView(id, label);
  };
}

Capability<Shared<ItemCollection>> Context::collectionCapability(std::string collectionID) const {
  return [self = shared_from_this(), id = std::move(collectionID)] {
    return self->fetchItemCollection(id);
  };
}

std::vector<Capability<Shared<ItemCollection>>> Context::collectionFetchCapabilities(
    const std::vector<std::string>& collectionIDs) const {
  std::vector<Capability<Shared<ItemCollection>>> capabilities;
  capabilities.reserve(collectionIDs.size());
  for (const auto& id : collectionIDs) capabilities.push_back(collectionCapability(id));
  return capabilities;
}

Capability<Shared<Playlist>> Context::playlistCapability(std::string playlistID) const {
  return
      [self = shared_from_this(), id = std::move(playlistID)] { return self->fetchPlaylist(id); };
}

Capability<Shared<Playlist>> Context::playlistCapability(Video video) const {
  return [self = shared_from_this(), video = std::move(video)] {
    const auto& id = video.playlistID ? video.playlistID : video.deepLinkPlaylistID;
    if (id) return self->fetchPlaylist(*id, video);
    auto single =
        Future<Shared<Playlist>>::succeeded(std::make_shared<const Playlist>(playlistOf(video)));
    if (self->scope() == nullptr) return single;
    return self->scope()->watch(single, detail::FetchScopeState::cancelledError);
  };
}

Capability<Shared<Playlist>> Context::playlistCapability(
    std::string videoID, std::optional<std::string> playlistID) const {
  return [self = shared_from_this(), id = std::move(videoID), playlistID = std::move(playlistID)] {
    return self->fetchVideo(id, {.playlistID = playlistID})
        .flatMap([self](const Shared<Video>& video) { return self->playlistCapability(*video)(); });
  };
}

std::optional<Capability<Shared<Playlist>>> Context::nextPlaylistCapability(
    const Video& video) const {
  if (!video.nextPlaylistID) return std::nullopt;
  return playlistCapability(*video.nextPlaylistID);
}

Capability<Shared<std::vector<SearchCollection>>> Context::searchCapability(
    std::string query) const {
  return [self = shared_from_this(), query = std::move(query)] {
    return self->fetchSearchResults(query);
  };
}

Capability<Shared<SearchCollection>> Context::searchCapability(
    std::string query, SearchCollection::ResultsKind kind) const {
  return [self = shared_from_this(), query = std::move(query), kind] {
    return self->fetchSearchCollection(query, kind);
  };
}

Capability<Shared<std::vector<std::string>>> Context::searchSuggestionsCapability(
    std::string query) const {
  return [self = shared_from_this(), query = std::move(query)] {
    return self->fetchSearchSuggestions(query);
  };
}

Capability<Shared<Lineup>> Context::lineupCapability(LineupReference meta) const {
  return
      [self = shared_from_this(), meta = std::move(meta)] { return self->fetchLineup(meta.url); };
}

Capability<Shared<LinearProgramGuide>> Context::linearProgramGuideCapability(
    Date start, Date end, ListFetchOptions options) const {
  return [self = shared_from_this(), start, end, options] {
    return self->fetchLinearProgramGuide(self->constants().linearStreamID, start, end, options);
  };
}

UpcomingEvents Context::upcomingEventsCapability() const {
  const auto& events = configuration_->upcomingEvents;
  return {.label = events.label, .fetch = playlistCapability(events.id)};
}

Capability<Shared<VideoAdMetadata>> Context::videoAdMetadataCapability(std::string videoID) const {
  return [self = shared_from_this(), id = std::move(videoID)] {
    return self->fetchVideoAdMetadata(id);
  };
}

std::optional<Capability<Shared<ItemCollection>>> Context::nextFetchCapability(
    const ItemCollection& collection) const {
  const auto part = nextPart(collection.meta);
  if (!part) return std::nullopt;
  return [self = shared_from_this(), id = collection.id, part] {
    return self->fetchItemCollection(id, {.page = part});
  };
}

std::optional<Capability<Shared<Playlist>>> Context::nextFetchCapability(
    const Playlist& playlist) const {
  const auto part = nextPart(playlist.meta);
  if (!part) return std::nullopt;
  return [self = shared_from_this(), id = playlist.id, part] {
    return self->fetchPlaylist(id, {.page = part});
  };
}

std::optional<Capability<Shared<SearchCollection>>> Context::nextFetchCapability(
    const SearchCollection& collection) const {
  const auto part = nextPart(collection.meta);
  if (!part) return std::nullopt;
  return [self = shared_from_this(), query = collection.query, kind = collection.resultsKind,
          part] { return self->fetchSearchCollection(query, kind, {.page = part}); };
}

std::optional<Capability<Shared<LinearProgramGuide>>> Context::nextCapability(
    const LinearProgramGuide& guide) const {
  const auto part = nextPart(guide.meta);
  if (!part) return std::nullopt;
  return linearProgramGuideCapability(guide.startDate, guide.endDate, {.page = part});
}

std::optional<Capability<Shared<LinearProgramGuide>>> Context::nextFetchCapability(
    const LinearProgramGuide& guide) const {
  return nextCapability(guide);
}

}  // namespace orvo
