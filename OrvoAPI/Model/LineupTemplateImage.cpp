#include <OrvoAPI/Model/ImageTransformationInternal.h>
#include <OrvoAPI/Model/LineupTemplateImage.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

#include <algorithm>
#include <cstring>

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

LineupTemplateImages::LineupTemplateImages(KeySet<Key> keys, const std::string_view* templates)
    : keys_(keys) {
  std::size_t size = 0;
  for (std::size_t i = 0; i < keys.size(); ++i) size += sizeof(Length) + templates[i].size();
  templates_ = detail::SharedText(size, [&](char* lengths) {
    char* text = lengths + keys.size() * sizeof(Length);
    for (std::size_t i = 0; i < keys.size(); ++i, lengths += sizeof(Length)) {
      const auto length = static_cast<Length>(templates[i].size());
      std::memcpy(lengths, &length, sizeof(Length));
      text = std::copy(templates[i].begin(), templates[i].end(), text);
    }
  });
}

std::optional<LineupTemplateImage> LineupTemplateImages::find(Key key) const {
  if (!contains(key)) return std::nullopt;
  const char* lengths = templates_.view().data();
  const char* text = lengths + keys_.size() * sizeof(Length);
  for (std::size_t before = keys_.rank(key);; --before, lengths += sizeof(Length)) {
    Length length = 0;
    std::memcpy(&length, lengths, sizeof(Length));
    if (before == 0) return LineupTemplateImage{.template_ = std::string(text, length)};
    text += length;
  }
}

Result<LineupTemplateImage> LineupTemplateImageParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys({"template"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("LineupTemplateImage");
  return required.result(LineupTemplateImage{.template_ = required.string(members["template"])});
}

}  // namespace orvo
