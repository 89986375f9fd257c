#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Context/ContentRequestInternal.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Context/FetchScopeStateInternal.h>
#include <OrvoAPI/Context/LossReporterInternal.h>
#include <OrvoAPI/Context/RedactionInternal.h>
#include <OrvoAPI/Context/RequestPipelineInternal.h>
#include <OrvoAPI/Context/RequestRecordInternal.h>
#include <OrvoAPI/Context/SubjectInternal.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Storage/AppStore.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace orvo {
namespace {

using namespace std::chrono_literals;
using detail::ContentRequest;
using detail::uncachedRequest;

/// Most content answers at once or not at all.
constexpr auto kContentTimeout = 10s;
/// A system view is the first thing that a user sees: there is no page at all without it.
constexpr auto kSystemViewTimeout = 15s;

template <class T>
Result<Shared<T>> share(Result<T> result) {
  if (result.failed()) return Failure{*result.error()};
  return std::make_shared<const T>(std::move(*result.value()));
}

/// One fetch: what is asked for, to be named by its failures, and its record if somebody wants one.
struct Asked {
  /// Without an observer nobody wants a record; without a scope nothing ends it.
  Asked(const detail::RequestReporter* observer, detail::FetchScopeState* within,
        const detail::Subject& what)
      : subject(what),
        reporter(observer),
        record(observer != nullptr ? observer->begin(what) : detail::RecordRef()),
        scope(within) {}

  /// What `fetch` makes of the URL, or the failure when there is none.
  template <class Fetch>
  std::invoke_result_t<Fetch&, const URL&> from(const Result<URL>& url, Fetch fetch) const {
    auto fetched = begin(url, fetch);
    if (scope != nullptr && !isSent) fetched = withinScope(fetched);
    if (record) record->endWith(fetched);
    return fetched;
  }

  const detail::Subject subject;
  const detail::RequestReporter* const reporter;
  const detail::RecordRef record;
  /// The pipeline has it, and ends it with the scope.
  mutable bool isSent = false;

 private:
  template <class Fetch>
  std::invoke_result_t<Fetch&, const URL&> begin(const Result<URL>& url, Fetch& fetch) const {
    using Fetched = std::invoke_result_t<Fetch&, const URL&>;
    if (scope != nullptr && scope->isCancelled()) {
      // At once: the main queue may belong to the screen that has gone.
      return Fetched::completed(
          Failure{subject.explain(detail::FetchScopeState::cancelledError())});
    }
    return url.failed() ? Fetched::failed(subject.explain(*url.error())) : fetch(*url.value());
  }

  /// What comes through the main queue, which nobody may be left to drain.
  template <class T>
  Future<T> withinScope(const Future<T>& settled) const {
    if (settled.didComplete()) return settled;
    return scope->watch(
        settled, [operation = subject.operation, identifier = std::string(subject.identifier)] {
          return detail::Subject{operation, identifier}.explain(
              detail::FetchScopeState::cancelledError());
        });
  }

  detail::FetchScopeState* const scope;
};

/// What `read` makes of the body, a `Result`. In one step: the document has gone when the next
/// large body is read.
template <class Read>
auto reading(const Asked& asked, const Future<Data>& body, Read read) {
  asked.isSent = true;
  detail::Watched watched(detail::LossReporter::make(asked.reporter, asked.subject),
                          std::move(read));
  return body.map(detail::Explained(asked.subject, std::move(watched)));
}

/// The body as a JSON object, made into a model by `parse`.
template <class T, class Parse>
Future<Shared<T>> parsed(const Asked& asked, const Future<Data>& body, Parse parse) {
  return reading(asked, body, [parse = std::move(parse)](const Data& data) -> Result<Shared<T>> {
    const auto json = JSONDataParser::object(data);
    if (json.failed()) return Failure{*json.error()};
    return share<T>(parse(*json.value()));
  });
}

/// A cached video names the playlist of whoever fetched it first; this caller named another.
Shared<Video> withPlaylistID(Shared<Video> video, const std::optional<std::string>& playlistID) {
  if (video->playlistID == playlistID) return video;
  auto own = std::make_shared<Video>(*video);
  own->playlistID = playlistID;
  return own;
}

/// A cached system view has the title of whoever fetched it first; this caller named another.
Shared<Page> withTitle(Shared<Page> page, std::string_view title) {
  if (page->title == title) return page;
  auto own = std::make_shared<Page>(*page);
  own->title = title;
  return own;
}

}  // namespace

Future<Shared<Page>> Context::fetchPage(std::string_view id,
                                        const PageFetchOptions& options) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchPage", id});
  return asked.from(
      ContentRequest::of("products", id).url(urlService_.baseURL), [&](const URL& url) {
        const auto load = [&] {
          return parsed<Page>(asked,
                              pipeline_->fetch(uncachedRequest(url, kContentTimeout), asked.record),
                              [](const JSONObject& json) { return PageParser::parse(json); });
        };
        return options.noCache ? load() : store_->pages.access(url.text(), load);
      });
}

Future<Shared<Video>> Context::fetchVideo(std::string_view id,
                                          const VideoFetchOptions& options) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchVideo", id});
  return asked.from(
      ContentRequest::of("products", id).url(urlService_.baseURL), [&](const URL& url) {
        const auto load = [&] {
          return parsed<Video>(
              asked, pipeline_->fetch(uncachedRequest(url, kContentTimeout), asked.record),
              [playlistID = options.playlistID](const JSONObject& json) {
                return VideoParser::parse(json, playlistID);
              });
        };
        if (options.noCache) return load();
        if (auto hit = store_->videos.element(url.text())) {
          return Future<Shared<Video>>::succeeded(
              withPlaylistID(std::move(hit), options.playlistID));
        }
        return store_->videos.keep(load(), url.text());
      });
}

Future<Shared<ContentItem>> Context::fetchContentItem(std::string_view id) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchContentItem", id});
  return asked.from(
      ContentRequest::of("products", id).url(urlService_.baseURL), [&](const URL& url) {
        return store_->items.access(url.text(), [&] {
          return parsed<ContentItem>(
              asked, pipeline_->fetch(uncachedRequest(url, kContentTimeout), asked.record),
              [](const JSONObject& json) { return ContentItemParser::parse(json); });
        });
      });
}

Future<Shared<Page>> Context::fetchSystemView(std::string_view id, std::string_view label) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchSystemView", id});
  return asked.from(
      ContentRequest::of("products", id).url(urlService_.baseURL), [&](const URL& url) {
        if (auto hit = store_->systemViews.element(url.text())) {
          return Future<Shared<Page>>::succeeded(withTitle(std::move(hit), label));
        }
        auto view = parsed<Page>(
            asked, pipeline_->fetch(uncachedRequest(url, kSystemViewTimeout), asked.record),
            [label = std::string(label)](const JSONObject& json) {
              return SystemViewParser::parse(json, label);
            });
        return store_->systemViews.keep(std::move(view), url.text());
      });
}

Future<Shared<ItemCollection>> Context::fetchItemCollection(std::string_view id,
                                                            const ListFetchOptions& options) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchItemCollection", id});
  const auto request = ContentRequest::of("collections", id).add(options.page);
  return asked.from(request.url(urlService_.baseURL), [&](const URL& url) {
    return store_->collections.access(url.text(), [&] {
      return parsed<ItemCollection>(
          asked, pipeline_->fetch(uncachedRequest(url, kContentTimeout), asked.record),
          [](const JSONObject& json) { return ItemCollectionParser::parse(json); });
    });
  });
}

Future<Shared<Playlist>> Context::fetchPlaylist(std::string_view id,
                                                const ListFetchOptions& options) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchPlaylist", id});
  const auto request = ContentRequest::of("playlists", id).add(options.page);
  return asked.from(request.url(urlService_.baseURL), [&](const URL& url) {
    return store_->playlists.access(url.text(), [&] {
      return parsed<Playlist>(asked, pipeline_->fetch(URLRequest{.url = url}, asked.record),
                              [](const JSONObject& json) { return PlaylistParser::parse(json); });
    });
  });
}

Future<Shared<Playlist>> Context::fetchPlaylist(std::string_view id, const Video& including) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchPlaylist", id});
  const auto request = ContentRequest::of("playlists", id).add("includes", including.id);
  return asked.from(request.url(urlService_.baseURL), [&](const URL& url) {
    return store_->playlists.access(url.text(), [&] {
      return parsed<Playlist>(
          asked, pipeline_->fetch(URLRequest{.url = url}, asked.record),
          [including](const JSONObject& json) { return PlaylistParser::parse(json, &including); });
    });
  });
}

Future<Shared<std::vector<SearchCollection>>> Context::fetchSearchResults(
    std::string_view query) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchSearchResults", query});
  const auto request = ContentRequest("search", query).add("q", query);
  return asked.from(request.url(urlService_.baseURL), [&](const URL& url) {
    return parsed<std::vector<SearchCollection>>(
        asked, pipeline_->fetch(uncachedRequest(url, kContentTimeout), asked.record),
        [query = std::string(query)](const JSONObject& json) {
          return SearchResultsParser::parse(json, query);
        });
  });
}

Future<Shared<SearchCollection>> Context::fetchSearchCollection(
    std::string_view query, SearchCollection::ResultsKind kind,
    const ListFetchOptions& options) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchSearchCollection", query});
  const auto request = ContentRequest("search", query)
                           .add("q", query)
                           .add("collection_type", rawValue(kind))
                           .add(options.page);
  return asked.from(request.url(urlService_.baseURL), [&](const URL& url) {
    return parsed<SearchCollection>(
        asked, pipeline_->fetch(uncachedRequest(url, kContentTimeout), asked.record),
        [query = std::string(query), kind](const JSONObject& json) -> Result<SearchCollection> {
          auto collections = SearchResultsParser::parse(json, query);
          if (collections.failed()) return Failure{*collections.error()};
          for (auto& collection : *collections.value()) {
            if (collection.resultsKind == kind) return std::move(collection);
          }
          return SearchCollection::empty(query, kind);
        });
  });
}

Future<Shared<std::vector<std::string>>> Context::fetchSearchSuggestions(
    std::string_view query) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchSearchSuggestions", query});
  const auto request = ContentRequest("search/suggest", query).add("q", query);
  return asked.from(request.url(urlService_.baseURL), [&](const URL& url) {
    return reading(asked, pipeline_->fetch(uncachedRequest(url, kContentTimeout), asked.record),
                   [](const Data& data) { return share(JSONDataParser::stringArray(data)); });
  });
}

Future<Shared<LinearProgramGuide>> Context::fetchLinearProgramGuide(
    std::string_view id, Date start, Date end, const ListFetchOptions& options) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchLinearProgramGuide", id});
  const auto formatter = epgFromDateFormatter();
  const auto request = ContentRequest("epg", id)
                           .add("start_time", formatter.string(start))
                           .add("end_time", formatter.string(end))
                           .add(options.page);
  return asked.from(request.url(urlService_.baseURL), [&](const URL& url) {
    return store_->guide.access(url.text(), [&] {
      return parsed<LinearProgramGuide>(asked,
                                        pipeline_->fetch(URLRequest{.url = url}, asked.record),
                                        [start, end](const JSONObject& json) {
                                          return LinearProgramGuideParser::parse(json, start, end);
                                        });
    });
  });
}

Future<Shared<Lineup>> Context::fetchLineup(const URL& url) const {
  // It may be at any address: one that tells the token must not get into an error's text.
  const auto token = sessionProvider()->currentToken();
  const bool isSecret =
      detail::isStreamPath(url.path()) || detail::Redaction(token).finds(url.path());
  const Asked asked(reporter_.get(), scope().get(),
                    {"fetchLineup", isSecret ? "" : url.path(), isSecret});
  const auto absolute =
      url.isAbsolute() ? Result<URL>(url) : Failure{URLService::Error::invalidInput{url.text()}};
  return asked.from(absolute, [&](const URL& address) {
    return store_->lineups.access(address.text(), [&] {
      return reading(asked,
                     pipeline_->fetch(uncachedRequest(address, kContentTimeout), asked.record,
                                      {.retry = false, .authed = false}),
                     [](const Data& data) -> Result<Shared<Lineup>> {
                       const auto slots = JSONDataParser::array(data);
                       if (slots.failed()) return Failure{*slots.error()};
                       return share(Result(LineupParser::parse(*slots.value())));
                     });
    });
  });
}

Future<Shared<VideoAdMetadata>> Context::fetchVideoAdMetadata(std::string_view id) const {
  const Asked asked(reporter_.get(), scope().get(), {"fetchVideoAdMetadata", id, true});
  const auto relative = urlService_.videoAdMetadataURL(std::string(id));
  return asked.from(
      constants().hlsBaseURL.appendingPathComponent(
          relative(sessionProvider()->currentToken()).text()),
      [&](const URL& url) {
        return parsed<VideoAdMetadata>(
            asked, pipeline_->fetch(uncachedRequest(url, kContentTimeout), asked.record),
            [](const JSONObject& json) { return Result(VideoAdMetadataParser::parse(json)); });
      });
}

}  // namespace orvo
