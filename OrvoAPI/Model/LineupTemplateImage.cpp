#include <OrvoAPI/Model/ImageTransformationInternal.h>
#include <OrvoAPI/Model/LineupTemplateImage.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

#include <utility>

namespace orvo {
namespace {

std::string replacingAll(std::string_view text, std::string_view what, std::string_view with) {
  std::string result;
  for (auto at = text.find(what); at != std::string_view::npos; at = text.find(what)) {
    result.append(text.substr(0, at)).append(with);
    text.remove_prefix(at + what.size());
  }
  return result.append(text);
}

}  // namespace

std::optional<URL> LineupTemplateImage::url(ImageSize size,
                                            const LineupTemplateURLOptions& options) const {
  return URLForTemplateString(template_, size, options);
}

std::optional<URL> LineupTemplateImage::URLForTemplateString(
    std::string_view templateString, ImageSize size, const LineupTemplateURLOptions& options) {
  const auto transformation =
      detail::imageTransformation(false, options.crop, size, options.displayScale, options.format);
  const auto text = replacingAll(templateString, "{c_transform}", transformation.tokens());
  auto url = URL::parse(replacingAll(text, " ", "%20"));
  return url && url->isAbsolute() ? url : std::nullopt;
}

void LineupTemplateImages::insert(Key key, LineupTemplateImage image) {
  const auto at = images_.begin() + static_cast<std::ptrdiff_t>(keys_.rank(key));
  if (keys_.contains(key)) {
    *at = std::move(image);
  } else {
    images_.insert(at, std::move(image));
    keys_.insert(key);
  }
}

Result<LineupTemplateImage> LineupTemplateImageParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys({"template"});
  RequiredMembers required("LineupTemplateImage");
  const auto text = required.text(detail::JSONMembers<kKeys>(json)["template"]);
  if (required.failed()) return required.failure();
  return LineupTemplateImage{.template_ = std::string(text)};
}

}  // namespace orvo
