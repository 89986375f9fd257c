#include <OrvoAPI/Context/URLService.h>
#include <OrvoAPI/Model/ImageResource.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>

namespace orvo::tool {

namespace {

struct WrittenImage {
  std::string id{};
  std::string key{};
  std::string size{};
  std::string crop{};
  std::string format{};
  bool title = false;
};

int runImage(Tool& tool, const WrittenImage& written) {
  const auto host = tool.resourceHost();
  if (const AnyError* error = host.error()) return tool.fail(*error);
  const ImageResource image{.key = *caseNamed<ImageResourceKey>(written.key),
                            .productID = written.id};
  const ImageSize size = *imageSize(written.size);
  const auto crop = fromRawValue<ImageResourceCrop>(written.crop);
  const auto format = fromRawValue<ImageResourceFormat>(written.format);
  TitleURLOptions titleOptions{.crop = crop};
  ImageURLOptions options{.crop = crop};
  if (format) titleOptions.format = options.format = *format;
  const URL url = written.title ? image.titleUrl(size, titleOptions, *host.value())
                                : image.url(size, options, *host.value());
  // What no path can hold gives the library's stand-in for no address.
  if (url.host().empty()) return tool.fail(URLService::Error::invalidInput{written.id});
  return tool.answer(toJson(url), [&](Screen& screen) { screen.line(url.text()); });
}

}  // namespace

void addImageCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenImage>();
  const auto keys = caseNames<ImageResourceKey>();
  commands.push_back(
      {.name = "image",
       .description = "The address of an image; nothing is sent",
       .arguments = {identifier(written->id, "The identifier of a video, a page or a programme"),
                     {.name = "KEY",
                      .description = "The rendition",
                      .values = anyOf(keys),
                      .target = &written->key,
                      .required = true}},
       .options = {{.name = "--size",
                    .description = "Width and height in points; 0 leaves a side open",
                    .values = imageSizes(),
                    .target = &written->size,
                    .required = true},
                   {.name = "--crop",
                    .description = "How it is fitted into the size",
                    .values = anyOf({"fill", "fit"}),
                    .target = &written->crop},
                   {.name = "--format",
                    .description = "What the file is",
                    .values = anyOf({"png", "jpg"}),
                    .target = &written->format},
                   {.name = "--title",
                    .description = "Cut off the empty border, as titles want it",
                    .target = &written->title}},
       .examples = {"orvo --demo image welcome landscape --size 640x360",
                    "orvo --demo image welcome square --size 300x0 --crop fit --format png"},
       .run = [written](Tool& tool) { return runImage(tool, *written); }});
}

}  // namespace orvo::tool
