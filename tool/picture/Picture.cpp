#include <chafa.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <tool/picture/Picture.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

namespace orvo::picture {

namespace {

template <auto release>
struct Release {
  template <class T>
  void operator()(T* object) const {
    release(object);
  }
};
template <class T, auto release>
using Owned = std::unique_ptr<T, Release<release>>;

using Loader = Owned<GdkPixbufLoader, g_object_unref>;
using Pixels = Owned<GdkPixbuf, g_object_unref>;
using Terminal = Owned<ChafaTermInfo, chafa_term_info_unref>;
using Symbols = Owned<ChafaSymbolMap, chafa_symbol_map_unref>;
using Settings = Owned<ChafaCanvasConfig, chafa_canvas_config_unref>;
using Drawing = Owned<ChafaCanvas, chafa_canvas_unref>;

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// What decodes the file, by its first bytes. Of all that gdk-pixbuf can decode these are what
/// services send; the rest is what attackers would send.
const char* decoder(std::string_view file) {
  if (file.starts_with("\x89PNG\r\n\x1a\n")) return "png";
  if (file.starts_with("\xff\xd8\xff")) return "jpeg";
  if (file.starts_with("GIF87a") || file.starts_with("GIF89a")) return "gif";
  if (file.starts_with("RIFF") && file.substr(0, 12).ends_with("WEBP")) return "webp";
  throw Unfit("it is no PNG, JPEG, GIF or WebP");
}

/// Whether the file has an end; most decoders make do with what comes before it.
bool isWhole(std::string_view type, std::string_view file) {
  if (type == "png") return file.find("IEND") != std::string_view::npos;
  if (type == "jpeg") return file.find("\xff\xd9") != std::string_view::npos;
  if (type == "gif") return true;  // its decoder does notice
  std::uint32_t length = 0;
  for (std::size_t i = 0; i < 4 && file.size() > 7; ++i) {
    length |= static_cast<std::uint32_t>(static_cast<unsigned char>(file[4 + i])) << 8 * i;
  }
  return length <= file.size() - 8;
}

Loader loader(const char* type) {
  GError* error = nullptr;
  Loader loader(gdk_pixbuf_loader_new_with_type(type, &error));
  if (loader) return loader;
  g_clear_error(&error);
  throw Unfit(std::string("nothing here decodes ") + type +
              (std::string_view(type) == "webp" ? " (Debian: webp-pixbuf-loader)" : ""));
}

/// The image, or the first one of several.
Pixels decoded(std::string_view file) {
  const char* type = decoder(file);
  const Loader decoding = loader(type);
  std::string tooLarge;
  const auto check = +[](GdkPixbufLoader* self, int width, int height, std::string* result) {
    if (width > 0 && height > 0 && width <= kMostPixels / height) return;
    *result = "it claims " + std::to_string(width) + " × " + std::to_string(height) + " pixels";
    gdk_pixbuf_loader_set_size(self, 0, 0);  // which decoders do not go on with
  };
  g_signal_connect(decoding.get(), "size-prepared", G_CALLBACK(check), &tooLarge);
  const bool isRead = gdk_pixbuf_loader_write(
      decoding.get(), reinterpret_cast<const guchar*>(file.data()), file.size(), nullptr);
  const bool isDecoded = gdk_pixbuf_loader_close(decoding.get(), nullptr) && isRead;
  if (!tooLarge.empty()) throw Unfit(tooLarge);
  const bool isGood = isDecoded && isWhole(type, file);
  GdkPixbuf* image = isGood ? gdk_pixbuf_loader_get_pixbuf(decoding.get()) : nullptr;
  if (image == nullptr) throw Unfit("it is damaged or incomplete");
  return Pixels(gdk_pixbuf_apply_embedded_orientation(image));
}

Settings settings(const Canvas& canvas, const GdkPixbuf* image) {
  int columns = canvas.columns;
  int rows = canvas.rows;
  const auto shape = static_cast<float>(canvas.cellWidth) / static_cast<float>(canvas.cellHeight);
  chafa_calc_canvas_geometry(gdk_pixbuf_get_width(image), gdk_pixbuf_get_height(image), &columns,
                             &rows, shape, TRUE, FALSE);
  Settings settings(chafa_canvas_config_new());
  chafa_canvas_config_set_geometry(settings.get(), columns, rows);
  chafa_canvas_config_set_cell_geometry(settings.get(), canvas.cellWidth, canvas.cellHeight);
  const bool indexed = canvas.style == "blocks-256";
  // Users choose the first 16 of 256 colours themselves.
  chafa_canvas_config_set_canvas_mode(
      settings.get(), indexed ? CHAFA_CANVAS_MODE_INDEXED_240 : CHAFA_CANVAS_MODE_TRUECOLOR);
  chafa_canvas_config_set_pixel_mode(settings.get(),
                                     canvas.style == "kitty"   ? CHAFA_PIXEL_MODE_KITTY
                                     : canvas.style == "sixel" ? CHAFA_PIXEL_MODE_SIXELS
                                                               : CHAFA_PIXEL_MODE_SYMBOLS);
  chafa_canvas_config_set_preprocessing_enabled(settings.get(), FALSE);
  if (indexed) {
    // The nearest of few colours as people see it, not by its numbers.
    chafa_canvas_config_set_color_space(settings.get(), CHAFA_COLOR_SPACE_DIN99D);
  }
  const Symbols symbols(chafa_symbol_map_new());
  chafa_symbol_map_add_by_tags(symbols.get(), CHAFA_SYMBOL_TAG_SPACE);
  chafa_symbol_map_add_by_tags(symbols.get(), CHAFA_SYMBOL_TAG_HALF);
  chafa_canvas_config_set_symbol_map(settings.get(), symbols.get());
  return settings;
}

}  // namespace

std::string detectedStyle() {
  const std::string_view kind = environment("TERM");
  if (kind.empty() || kind == "dumb") return "none";
  const Owned<char*, g_strfreev> variables(g_get_environ());
  const Terminal terminal(chafa_term_db_detect(chafa_term_db_get_default(), variables.get()));
  const auto knows = [&](ChafaTermSeq sequence) {
    return chafa_term_info_have_seq(terminal.get(), sequence) != FALSE;
  };
  // Inside of these the terminal outside is described, but they do not pass pictures on.
  const bool isNested = !environment("TMUX").empty() || !environment("STY").empty() ||
                        kind.starts_with("screen") || kind.starts_with("tmux");
  if (!isNested) {
    // kitty names itself even where TERM had to be changed; xterm inherits that.
    const bool isKitty =
        !environment("KITTY_WINDOW_ID").empty() && environment("XTERM_VERSION").empty();
    if (isKitty || knows(CHAFA_TERM_SEQ_BEGIN_KITTY_IMMEDIATE_IMAGE_V1)) return "kitty";
    if (knows(CHAFA_TERM_SEQ_BEGIN_SIXELS)) return "sixel";
  }
  const std::string_view depth = environment("COLORTERM");
  if (knows(CHAFA_TERM_SEQ_SET_COLOR_FGBG_DIRECT) || depth == "24bit") return "blocks";
  return knows(CHAFA_TERM_SEQ_SET_COLOR_FGBG_256) ? "blocks-256" : "none";
}

std::string drawn(std::string_view file, const Canvas& canvas) {
  // Threads would take address space, of which there is little.
  chafa_set_n_threads(1);
  const Pixels image = decoded(file);
  const Settings chosen = settings(canvas, image.get());
  const Drawing drawing(chafa_canvas_new(chosen.get()));
  chafa_canvas_draw_all_pixels(
      drawing.get(),
      gdk_pixbuf_get_has_alpha(image.get()) != FALSE ? CHAFA_PIXEL_RGBA8_UNASSOCIATED
                                                     : CHAFA_PIXEL_RGB8,
      gdk_pixbuf_read_pixels(image.get()), gdk_pixbuf_get_width(image.get()),
      gdk_pixbuf_get_height(image.get()), gdk_pixbuf_get_rowstride(image.get()));
  // It knows all sequences: whether the terminal does was asked before.
  const Terminal terminal(chafa_term_db_get_fallback_info(chafa_term_db_get_default()));
  GString* text = chafa_canvas_print(drawing.get(), terminal.get());
  std::string result(text->str, text->len);
  g_string_free(text, TRUE);
  return result;
}

}  // namespace orvo::picture
