#pragma once

#include <OrvoAPI/Base/CompilerCheck.h>

#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Context/Capability.h>
#include <OrvoAPI/Context/ContextOptions.h>
#include <OrvoAPI/Context/FetchOptions.h>
#include <OrvoAPI/Context/URLService.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/ResourceHost.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <OrvoAPI/Network/SessionProvider.h>
#include <OrvoAPI/Storage/KeyedStore.h>

#include <any>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

class AppStore;
class FetchScope;
namespace detail {
class FetchScopeState;
class RequestPipeline;
class RequestReporter;
}  // namespace detail

/// The library's root object: one session with a service, and its configuration. Thread-safe. Held
/// by shared pointers; the app owns it. Destroying it cancels nothing: fetches in flight complete,
/// except one whose session is being renewed.
///
/// A fetch delivers an immutable value that it shares with the cache. It fails with the error of
/// the session or the transport (`URLError`) unchanged, with `SessionError` when the server
/// refuses, with `GeneralError::underlying` around the parser's error when the answer is not such a
/// document, and with `URLService::Error::invalidInput` when the identifier makes no URL; nothing
/// is sent then. Each says what was asked for (`AnyError::context`). Two equal fetches make two
/// requests. Cancelling a fetch discards its result but not the request; to end requests, fetch
/// through a `FetchScope`. Cached values, and tokens that are still fresh, are delivered through
/// the main queue.
class Context final : public std::enable_shared_from_this<Context> {
 public:
  /// The base URLs are the API's and the images'; a missing trailing "/" is added.
  [[nodiscard]] static std::shared_ptr<Context> make(
      Configuration configuration, URL baseURL, URL resourceURL,
      std::shared_ptr<SessionProvider> sessionProvider,
      std::shared_ptr<NetworkDataProvider> networkProvider, ContextOptions options = {});
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  // The configuration and its sections.
  [[nodiscard]] const Configuration& configuration() const { return *configuration_; }
  [[nodiscard]] const Constants& constants() const { return configuration_->constants; }
  [[nodiscard]] const ColorPalette& colorPalette() const { return configuration_->colorPalette; }
  [[nodiscard]] const Links& links() const { return configuration_->links; }
  [[nodiscard]] const Requirements::KillSwitch& killSwitch() const {
    return configuration_->requirements.killSwitch;
  }
  [[nodiscard]] const Requirements::AppVersion& requiredAppVersion() const {
    return configuration_->requirements.appVersion;
  }
  [[nodiscard]] const Requirements::OSVersion& requiredOsVersion() const {
    return configuration_->requirements.osVersion;
  }
  [[nodiscard]] const RatingPromptConfig& ratingPromptConfig() const {
    return configuration_->ratingPromptConfig;
  }
  [[nodiscard]] const std::optional<DisplayAd>& displayAd() const {
    return configuration_->displayAd;
  }
  [[nodiscard]] const LinearStream& linearStream() const { return configuration_->linearStream; }
  [[nodiscard]] const std::string& shareStringTemplate() const {
    return configuration_->constants.shareStringTemplate;
  }
  [[nodiscard]] Environment environment() const { return configuration_->environment; }
  /// In the order discover, calendar, channels, without those that the configuration lacks.
  [[nodiscard]] std::vector<SystemView> systemViews() const;

  // What the context holds.
  [[nodiscard]] const std::shared_ptr<SessionProvider>& sessionProvider() const;
  [[nodiscard]] const std::shared_ptr<NetworkDataProvider>& networkDataProvider() const;
  [[nodiscard]] const URLService& urlService() const { return urlService_; }
  /// What the builders of image URLs take.
  [[nodiscard]] const ResourceHost& resourceHost() const { return resourceHost_; }
  /// The cached answers, declared in <OrvoAPI/Storage/AppStore.h>; empty it when memory is low.
  [[nodiscard]] AppStore& store() const;
  /// The app's own values, of any type.
  [[nodiscard]] KeyedStore<std::any>& appValues() const;
  [[nodiscard]] Logger& logger() const { return *logger_; }
  [[nodiscard]] const std::shared_ptr<const Clock>& clock() const { return clock_; }

  // Fetches. Identifiers go into the path as they are given.
  [[nodiscard]] Future<Shared<Page>> fetchPage(std::string_view id,
                                               const PageFetchOptions& options = {}) const;
  [[nodiscard]] Future<Shared<Video>> fetchVideo(std::string_view id,
                                                 const VideoFetchOptions& options = {}) const;
  [[nodiscard]] Future<Shared<ContentItem>> fetchContentItem(std::string_view id) const;
  /// A page whose title is `label`.
  [[nodiscard]] Future<Shared<Page>> fetchSystemView(std::string_view id,
                                                     std::string_view label) const;
  [[nodiscard]] Future<Shared<ItemCollection>> fetchItemCollection(
      std::string_view id, const ListFetchOptions& options = {}) const;
  [[nodiscard]] Future<Shared<Playlist>> fetchPlaylist(std::string_view id,
                                                       const ListFetchOptions& options = {}) const;
  /// The playlist with this video in it, put first when the server does not list it.
  [[nodiscard]] Future<Shared<Playlist>> fetchPlaylist(std::string_view id,
                                                       const Video& including) const;
  /// Never cached, like all searches.
  [[nodiscard]] Future<Shared<std::vector<SearchCollection>>> fetchSearchResults(
      std::string_view query) const;
  /// The first collection of that kind, or an empty one.
  [[nodiscard]] Future<Shared<SearchCollection>> fetchSearchCollection(
      std::string_view query, SearchCollection::ResultsKind kind,
      const ListFetchOptions& options = {}) const;
  [[nodiscard]] Future<Shared<std::vector<std::string>>> fetchSearchSuggestions(
      std::string_view query) const;
  /// `id`: the linear stream's. The server has only one, so it is not sent.
  [[nodiscard]] Future<Shared<LinearProgramGuide>> fetchLinearProgramGuide(
      std::string_view id, Date start, Date end, const ListFetchOptions& options = {}) const;
  /// `url` must be absolute. The request carries no token, but waits for one like the others.
  [[nodiscard]] Future<Shared<Lineup>> fetchLineup(const URL& url) const;
  [[nodiscard]] Future<Shared<VideoAdMetadata>> fetchVideoAdMetadata(std::string_view id) const;

  /// The address of the video's stream. It contains the current token: keep it out of logs.
  [[nodiscard]] URL videoURL(std::string_view videoID) const;

  // Capabilities: the same fetches for later.
  [[nodiscard]] Capability<Shared<Page>> pageFetchCapability(std::string pageID,
                                                             PageFetchOptions options = {}) const;
  [[nodiscard]] Capability<Shared<Video>> videoFetchCapability(
      std::string videoID, VideoFetchOptions options = {}) const;
  [[nodiscard]] Capability<Shared<ContentItem>> contentItemCapability(std::string productID) const;
  [[nodiscard]] Capability<Shared<Page>> systemViewCapability(std::string systemViewID,
                                                              std::string label) const;
  [[nodiscard]] Capability<Shared<ItemCollection>> collectionCapability(
      std::string collectionID) const;
  /// One for each identifier, in order.
  [[nodiscard]] std::vector<Capability<Shared<ItemCollection>>> collectionFetchCapabilities(
      const std::vector<std::string>& collectionIDs) const;
  [[nodiscard]] Capability<Shared<Playlist>> playlistCapability(std::string playlistID) const;
  /// The playlist that the video came with, else the one for deep links, with the video in it;
  /// without either, a playlist of the video alone, which sends no request.
  [[nodiscard]] Capability<Shared<Playlist>> playlistCapability(Video video) const;
  /// The same for a video that is fetched first, as one of the given playlist.
  [[nodiscard]] Capability<Shared<Playlist>> playlistCapability(
      std::string videoID, std::optional<std::string> playlistID) const;
  /// Nothing when no playlist continues after the video.
  [[nodiscard]] std::optional<Capability<Shared<Playlist>>> nextPlaylistCapability(
      const Video& video) const;
  [[nodiscard]] Capability<Shared<std::vector<SearchCollection>>> searchCapability(
      std::string query) const;
  [[nodiscard]] Capability<Shared<SearchCollection>> searchCapability(
      std::string query, SearchCollection::ResultsKind kind) const;
  [[nodiscard]] Capability<Shared<std::vector<std::string>>> searchSuggestionsCapability(
      std::string query) const;
  /// How the lineup is drawn is up to the caller; `meta` says what the service suggests.
  [[nodiscard]] Capability<Shared<Lineup>> lineupCapability(LineupReference meta) const;
  [[nodiscard]] Capability<Shared<LinearProgramGuide>> linearProgramGuideCapability(
      Date start, Date end, ListFetchOptions options = {}) const;
  [[nodiscard]] UpcomingEvents upcomingEventsCapability() const;
  [[nodiscard]] Capability<Shared<VideoAdMetadata>> videoAdMetadataCapability(
      std::string videoID) const;

  // The next part of a list, or nothing when there is none. A list whose offset and limit add up
  // beyond 64 bits terminates the process.
  [[nodiscard]] std::optional<Capability<Shared<ItemCollection>>> nextFetchCapability(
      const ItemCollection& collection) const;
  [[nodiscard]] std::optional<Capability<Shared<Playlist>>> nextFetchCapability(
      const Playlist& playlist) const;
  [[nodiscard]] std::optional<Capability<Shared<SearchCollection>>> nextFetchCapability(
      const SearchCollection& collection) const;
  [[nodiscard]] std::optional<Capability<Shared<LinearProgramGuide>>> nextCapability(
      const LinearProgramGuide& guide) const;
  /// The same as `nextCapability`, under the name that the other lists have.
  [[nodiscard]] std::optional<Capability<Shared<LinearProgramGuide>>> nextFetchCapability(
      const LinearProgramGuide& guide) const;

 private:
  Context(Configuration configuration, URL baseURL, URL resourceURL,
          std::shared_ptr<SessionProvider> sessionProvider,
          std::shared_ptr<NetworkDataProvider> networkProvider, ContextOptions options);

  friend class FetchScope;
  /// The same context, whose fetches end with the scope.
  Context(const Context& whole, std::shared_ptr<detail::FetchScopeState> scope);
  [[nodiscard]] const std::shared_ptr<detail::FetchScopeState>& scope() const;

  const std::shared_ptr<const Configuration> configuration_;
  const URLService urlService_;
  const ResourceHost resourceHost_;
  const std::shared_ptr<Logger> logger_;
  const std::shared_ptr<const Clock> clock_;
  const std::shared_ptr<const detail::RequestReporter> reporter_;  // null: nobody wants reports
  const std::shared_ptr<detail::RequestPipeline> pipeline_;
  const std::shared_ptr<AppStore> store_;
  const std::shared_ptr<KeyedStore<std::any>> appValues_;
};

}  // namespace orvo
