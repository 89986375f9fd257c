#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/Model/ImageResource.h>
#include <OrvoAPI/Network/SessionError.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/ContentViews.h>
#include <tool/ErrorReport.h>
#include <tool/ListOutput.h>
#include <tool/Picture.h>
#include <tool/Text.h>
#include <tool/Wording.h>

#include <algorithm>
#include <array>

namespace orvo::tool {

namespace {

struct WrittenShow {
  std::string id{};
  std::string key{};
  std::string size = "640x0";
  WrittenPictures pictures{};
};

/// The renditions in the order in which one is chosen: wide ones suit terminals.
constexpr auto preferredKeys() {
  using enum ImageResourceKey;
  return std::array{landscape,
                    coverLandscape,
                    backgroundLandscape,
                    banner,
                    coverBanner,
                    backgroundBanner,
                    square,
                    coverSquare,
                    backgroundSquare,
                    portrait,
                    coverPortrait,
                    backgroundPortrait,
                    titleTreatmentLandscape,
                    titleTreatmentSquare,
                    logoLandscape};
}
static_assert(preferredKeys().size() == std::size(enumCases<ImageResourceKey>));

/// An image of an item.
struct Artwork {
  ImageResourceKey key;
  URL url;
};

const ImageResources& imagesOf(const ContentItem& item) {
  return item.video() != nullptr ? item.video()->imageResources : item.page()->imageResources;
}

/// The image of the key that was asked for, or else of the best that there is.
std::optional<Artwork> artwork(const WrittenShow& written, const ContentItem& item,
                               const ResourceHost& host) {
  const ImageResources& images = imagesOf(item);
  const auto asked = caseNamed<ImageResourceKey>(written.key);
  const ImageSize size = *imageSize(written.size);
  for (const ImageResourceKey key : preferredKeys()) {
    const auto image = images.find(key);
    if (!image || (asked && key != *asked)) continue;
    const bool isTitle = key == ImageResourceKey::titleTreatmentLandscape ||
                         key == ImageResourceKey::titleTreatmentSquare;
    return Artwork{key, isTitle ? image->titleUrl(size, {}, host) : image->url(size, {}, host)};
  }
  return std::nullopt;
}

/// Why nothing is drawn, or nothing when there is nothing to say.
std::string absence(const WrittenShow& written, const ContentItem& item) {
  if (written.key.empty()) return "";
  std::vector<std::string> names;
  for (const auto& [key, image] : imagesOf(item)) names.emplace_back(caseName(key));
  return "the item has no image " + written.key + "; it has " +
         (names.empty() ? "none at all" : joined(names));
}

/// Draws the image, unless the terminal or the command line is against it. Returns whether it did.
Result<bool> drawArtwork(Tool& tool, const WrittenShow& written, const Artwork& artwork,
                         std::size_t linesBelow) {
  const auto style = pictureStyle(tool, written.pictures);
  if (const AnyError* error = style.error()) return Failure{*error};
  if (*style.value() == "none") return false;
  const auto picture = fetchPicture(tool, artwork.url, *style.value(), linesBelow);
  if (const AnyError* error = picture.error()) return Failure{*error};
  print(*picture.value());
  return true;
}

int showItem(Tool& tool, const WrittenShow& written, const ContentItem& item) {
  const auto host = tool.resourceHost();
  if (const AnyError* error = host.error()) return tool.fail(*error);
  const auto found = artwork(written, item, *host.value());
  if (tool.options().json) {
    Json json = toJson(item);
    json.set(
        "artwork",
        found ? Json::object({{"key", toJson(found->key)}, {"url", toJson(found->url)}}) : Json());
    return tool.answer(json);
  }
  Screen screen(standardOutput());
  screen.blank();
  draw(screen, item);
  if (found) {
    screen.heading("Artwork", caseName(found->key));
    screen.line("  " + printable(found->url.text()));
  }
  const auto lines = static_cast<std::size_t>(std::ranges::count(screen.text(), '\n'));
  const auto drawn = found ? drawArtwork(tool, written, *found, lines) : Result<bool>(false);
  const bool hasPicture = !drawn.failed() && *drawn.value();
  print(std::string_view(screen.text()).substr(hasPicture ? 0 : 1));
  const std::string notice = drawn.failed() ? "there is no picture: " + explanation(*drawn.error())
                             : found        ? ""
                                            : absence(written, item);
  if (notice.empty()) return 0;
  printDiagnostic(styled(standardError(), Style::warning, "orvo:") + " " + escaped(notice) + "\n");
  const bool isWanted = !written.key.empty() || written.pictures.images != "auto";
  return isWanted ? 1 : 0;
}

template <class List>
int showList(Tool& tool, const List& list) {
  return ListOutput(tool, {}, kItemFields).answer(list, [&](Screen& screen) {
    draw(screen, list);
  });
}

bool isMissing(const AnyError& error) {
  if (const auto* general = error.as<GeneralError>()) {
    const auto* wrapper = general->as<GeneralError::underlying>();
    return wrapper != nullptr && isMissing(wrapper->error);
  }
  constexpr int kNotFound = 404;
  if (const auto* session = error.as<SessionError>()) {
    const auto* unexpected = session->as<SessionError::unexpectedStatus>();
    return unexpected != nullptr && unexpected->status == kNotFound;
  }
  const auto* response = error.as<Response::Error>();
  return response != nullptr && response->as<Response::Error::badStatus>()->status == kNotFound;
}

/// An identifier does not say of what it is.
int runShow(Tool& tool, const WrittenShow& written) {
  const auto opened = tool.context();
  if (const AnyError* error = opened.error()) return tool.fail(*error);
  const Context& context = **opened.value();
  const auto item = tool.wait(context.fetchContentItem(written.id), "fetching the item");
  if (!item.failed()) return showItem(tool, written, **item.value());
  if (!isMissing(*item.error())) return tool.fail(*item.error());
  const auto collection =
      tool.wait(context.fetchItemCollection(written.id), "fetching the collection");
  if (!collection.failed()) return showList(tool, **collection.value());
  if (!isMissing(*collection.error())) return tool.fail(*collection.error());
  const auto playlist = tool.wait(context.fetchPlaylist(written.id), "fetching the playlist");
  if (!playlist.failed()) return showList(tool, **playlist.value());
  return tool.fail(isMissing(*playlist.error()) ? *item.error() : *playlist.error());
}

}  // namespace

void addShowCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenShow>();
  std::vector<Parameter> options{
      {.name = "--image-key",
       .description = "The rendition of its artwork",
       .values = anyOf(caseNames<ImageResourceKey>(), "KEY"),
       .target = &written->key,
       .fallback = "the widest that there is"},
      {.name = "--size",
       .description = "The width and height in points in which an app asks "
                      "for the image; 0 leaves a side open",
       .values = imageSizes(),
       .target = &written->size}};
  addPictureOptions(options, written->pictures);
  commands.push_back(
      {.name = "show",
       .description = "Whatever has the identifier, with its artwork",
       .details =
           "Looks for a video or a page, then for a collection, then for a playlist. The image "
           "is the one that an app gets for the key and the size; its address comes last. "
           "Nothing but the image is asked for at its host: no token is sent.",
       .arguments = {identifier(written->id, "The identifier")},
       .options = std::move(options),
       .examples = {"orvo --demo show film-long-thaw",
                    "orvo --demo show welcome --image-key coverPortrait --images blocks"},
       .run = [written](Tool& tool) { return runShow(tool, *written); }});
}

}  // namespace orvo::tool
