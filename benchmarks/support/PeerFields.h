#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/HTTP/URL.h>
#include <benchmarks/support/PeerLibraries.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::benchmarks {

/// The members of an object of another library, checked for their kinds. What a member is found as
/// is a pointer, or what can be used like one.
template <class Library>
struct PeerFields {
  using Value = typename Library::Value;

  template <class T>
  static std::optional<T> as(const Value& object, std::string_view key,
                             std::optional<T> (*read)(const Value&)) {
    const auto found = Library::member(object, key);
    return found ? read(*found) : std::nullopt;
  }
  static Text text(const Value& object, std::string_view key) {
    return as(object, key, Library::text);
  }
  static std::optional<std::string> string(const Value& object, std::string_view key) {
    return std::optional<std::string>(text(object, key));
  }
  static std::optional<double> number(const Value& object, std::string_view key) {
    return as(object, key, Library::number);
  }
  static auto object(const Value& parent, std::string_view key) {
    const auto found = Library::member(parent, key);
    return found && Library::isObject(*found) ? found : decltype(found){};
  }
  static bool yes(const Value& parent, std::string_view key) {
    return as(parent, key, Library::boolean) == true;
  }
  static std::optional<URL> url(const Value& object, std::string_view key) {
    const auto found = text(object, key);
    return found ? URL::parse(*found) : std::nullopt;
  }
  template <class E>
  static std::optional<E> raw(const Value& object, std::string_view key) {
    const auto found = text(object, key);
    return found ? fromRawValue<E>(*found) : std::nullopt;
  }
  /// What `read` makes of the elements, without those of which it makes nothing.
  template <class Read>
  static auto list(const Value& elements, Read&& read) {
    std::vector<typename decltype(read(elements))::value_type> items;
    if (const auto array = Library::array(elements)) {
      items.reserve((*array).size());
      for (const Value& element : *array) {
        if (auto item = read(element)) items.push_back(*std::move(item));
      }
    }
    return items;
  }
  template <class Read>
  static auto list(const Value& parent, std::string_view key, Read&& read) {
    const auto found = Library::member(parent, key);
    return found ? list(*found, read) : decltype(list(*found, read)){};
  }
};

}  // namespace orvo::benchmarks
