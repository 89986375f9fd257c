#include <OrvoAPI/Model/ImageResource.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/Wording.h>

namespace orvo::tool {

namespace {

struct Written {
  std::string id{};
  std::string key{};
  std::string size{};
  std::string crop{};
  std::string format{};
  bool title = false;
};

int runImage(Tool& tool, const Written& written) {
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
  return tool.answer(toJson(url), [&](Screen& screen) { screen.line(url.text()); });
}

}  // namespace

void addImageCommand(Commands& commands) {
  const auto written = std::make_shared<Written>();
  CLI::App* command = commands.add("image", "The address of an image; nothing is sent",
                                   [written](Tool& tool) { return runImage(tool, *written); });
  command->add_option("ID", written->id, "The video, page or programme")->required();
  const auto keys = caseNames<ImageResourceKey>();
  command->add_option("KEY", written->key, "The rendition: " + joined(keys))
      ->required()
      ->check(CLI::IsMember(keys).description(""));
  command->add_option("--size", written->size, "Width and height in points; 0 leaves a side open")
      ->required()
      ->type_name("WxH")
      ->check(isImageSize());
  command->add_option("--crop", written->crop, "How it is fitted into the size")
      ->type_name("C")
      ->check(CLI::IsMember({"fill", "fit"}));
  command->add_option("--format", written->format, "What the file is")
      ->type_name("F")
      ->check(CLI::IsMember({"png", "jpg"}));
  command->add_flag("--title", written->title, "Cut off the empty border, as titles want it");
}

}  // namespace orvo::tool
