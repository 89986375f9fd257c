#include <OrvoAPI/Platform/Calendar.h>

#include <langinfo.h>
#include <locale.h>
#include <wctype.h>

#include <memory>
#include <string_view>
#include <type_traits>

namespace orvo {

namespace {

struct FreeLocale {
  void operator()(locale_t locale) const noexcept { freelocale(locale); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale>;

/// The locale for dates, with its own rules for capitals even where the terminal's locale has
/// others.
Locale dateLocale() {
  Locale locale(newlocale(LC_TIME_MASK, "", locale_t{}));
  if (!locale) locale.reset(newlocale(LC_TIME_MASK, "C", locale_t{}));
  const char* name = nl_langinfo_l(NL_LOCALE_NAME(LC_TIME), locale.get());
  // On success the old one has become part of the new one.
  if (locale_t both = newlocale(LC_CTYPE_MASK, name, locale.get())) {
    (void)locale.release();
    locale.reset(both);
  }
  return locale;
}

void appendUTF8(std::string& text, char32_t c) {
  const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
  if (c < 0x80) return append(c);
  if (c < 0x800) {
    append(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      append(0xE0 | c >> 12);
    } else {
      append(0xF0 | c >> 18);
      append(0x80 | (c >> 12 & 0x3F));
    }
    append(0x80 | (c >> 6 & 0x3F));
  }
  append(0x80 | (c & 0x3F));
}

}  // namespace

std::array<std::string, 7> capitalWeekdayNames() {
  // The wide names: the others come in the locale's own encoding.
  constexpr std::array<nl_item, 7> items{_NL_WDAY_1, _NL_WDAY_2, _NL_WDAY_3, _NL_WDAY_4,
                                         _NL_WDAY_5, _NL_WDAY_6, _NL_WDAY_7};
  const Locale locale = dateLocale();
  std::array<std::string, 7> names;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const void* name = nl_langinfo_l(items[i], locale.get());
    for (const wchar_t c : std::wstring_view(static_cast<const wchar_t*>(name))) {
      appendUTF8(names[i], static_cast<char32_t>(towupper_l(static_cast<wint_t>(c), locale.get())));
    }
  }
  return names;
}

}  // namespace orvo
