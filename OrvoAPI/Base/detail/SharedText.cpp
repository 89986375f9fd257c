#include <OrvoAPI/Base/detail/SharedText.h>

#include <utility>

namespace orvo::detail {

SharedText::SharedText(std::string_view text)
    : SharedText(text.size(), [text](char* out) { text.copy(out, text.size()); }) {}

char* SharedText::allocate(std::size_t size) {
  auto characters = std::make_shared_for_overwrite<char[]>(size);
  char* const address = characters.get();
  characters_ = std::shared_ptr<const char>(std::move(characters), address);
  size_ = size;
  return address;
}

}  // namespace orvo::detail
