#include <OrvoAPI/HTTP/HTTPHeaders.h>

#include <algorithm>
#include <utility>

namespace orvo {
namespace {

// Not through <cctype>: the app's locale has no say in header names.
constexpr char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool equalNames(std::string_view lhs, std::string_view rhs) {
  return std::equal(lhs.begin(), lhs.end(), rhs.begin(), rhs.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

}  // namespace

HTTPHeaders::Field HTTPHeaders::Iterator::operator*() const {
  const auto [name, value] = headers_->lengths_[index_];
  const std::string_view text = headers_->text_;
  return {text.substr(offset_, name), text.substr(offset_ + name, value)};
}

HTTPHeaders::Iterator& HTTPHeaders::Iterator::operator++() {
  const auto [name, value] = headers_->lengths_[index_++];
  offset_ += std::size_t{name} + value;
  return *this;
}

HTTPHeaders::Iterator HTTPHeaders::Iterator::operator++(int) {
  const auto before = *this;
  ++*this;
  return before;
}

HTTPHeaders::HTTPHeaders(std::initializer_list<Field> fields) {
  for (const auto& field : fields) add(field.name, field.value);
}

void HTTPHeaders::reserve(std::size_t fields, std::size_t bytes) {
  lengths_.reserve(fields);
  text_.reserve(bytes);
}

void HTTPHeaders::add(std::string_view name, std::string_view value) {
  text_.append(name).append(value);
  lengths_.push_back(
      {static_cast<std::uint32_t>(name.size()), static_cast<std::uint32_t>(value.size())});
}

void HTTPHeaders::set(std::string_view name, std::string_view value) {
  const std::string copy(value);  // it may be a view of a field that is removed
  const std::string nameCopy(name);
  remove(nameCopy);
  add(nameCopy, copy);
}

void HTTPHeaders::remove(std::string_view name) {
  if (!contains(name)) return;
  HTTPHeaders kept;
  for (const auto field : *this) {
    if (!equalNames(field.name, name)) kept.add(field.name, field.value);
  }
  *this = std::move(kept);
}

std::optional<std::string_view> HTTPHeaders::value(std::string_view name) const {
  for (const auto field : *this) {
    if (equalNames(field.name, name)) return field.value;
  }
  return std::nullopt;
}

std::vector<std::string_view> HTTPHeaders::values(std::string_view name) const {
  std::vector<std::string_view> values;
  for (const auto field : *this) {
    if (equalNames(field.name, name)) values.push_back(field.value);
  }
  return values;
}

}  // namespace orvo
