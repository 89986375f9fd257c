#pragma once

#include <rapidjson/document.h>

#include <boost/json.hpp>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

/// What other JSON libraries offer, under the same names: a document's root, a member that may be
/// missing, values of a kind, elements.
namespace orvo::benchmarks {

using Text = std::optional<std::string_view>;

struct Nlohmann {
  using Value = nlohmann::json;
  class Document {
   public:
    explicit Document(std::string_view body) : root_(Value::parse(body)) {}
    [[nodiscard]] const Value& root() const { return root_; }

   private:
    Value root_;
  };

  static const Value* member(const Value& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
  }
  static Text text(const Value& value) {
    const auto* text = value.get_ptr<const std::string*>();
    return text ? Text(*text) : std::nullopt;
  }
  static std::optional<double> number(const Value& value) {
    return value.is_number() ? std::optional(value.get<double>()) : std::nullopt;
  }
  static std::optional<std::int64_t> integer(const Value& value) {
    return value.is_number_integer() ? std::optional(value.get<std::int64_t>()) : std::nullopt;
  }
  static std::optional<bool> boolean(const Value& value) {
    return value.is_boolean() ? std::optional(value.get<bool>()) : std::nullopt;
  }
  static bool isObject(const Value& value) { return value.is_object(); }
  static const Value* array(const Value& value) { return value.is_array() ? &value : nullptr; }
};

struct RapidJSON {
  using Value = rapidjson::Value;
  class Document {
   public:
    /// Checks the encoding, as the others do.
    explicit Document(std::string_view body) {
      document_.Parse<rapidjson::kParseValidateEncodingFlag>(body.data(), body.size());
      if (document_.HasParseError()) std::abort();
    }
    [[nodiscard]] const Value& root() const { return document_; }

   private:
    rapidjson::Document document_;
  };

  static const Value* member(const Value& object, const char* key) {
    const auto found = object.FindMember(key);
    return found == object.MemberEnd() ? nullptr : &found->value;
  }
  static Text text(const Value& value) {
    return value.IsString() ? Text({value.GetString(), value.GetStringLength()}) : std::nullopt;
  }
  static std::optional<double> number(const Value& value) {
    return value.IsNumber() ? std::optional(value.GetDouble()) : std::nullopt;
  }
  static std::optional<std::int64_t> integer(const Value& value) {
    return value.IsInt64() ? std::optional(value.GetInt64()) : std::nullopt;
  }
  static std::optional<bool> boolean(const Value& value) {
    return value.IsBool() ? std::optional(value.GetBool()) : std::nullopt;
  }
  static bool isObject(const Value& value) { return value.IsObject(); }
  struct Elements {
    const Value* first;
    std::size_t count;
    [[nodiscard]] const Value* begin() const { return first; }
    [[nodiscard]] const Value* end() const { return first + count; }
    [[nodiscard]] std::size_t size() const { return count; }
    const Elements& operator*() const { return *this; }
    explicit operator bool() const { return first != nullptr; }
  };
  static Elements array(const Value& value) {
    return value.IsArray() ? Elements{value.Begin(), value.Size()} : Elements{nullptr, 0};
  }
};

struct Boost {
  using Value = boost::json::value;
  class Document {
   public:
    explicit Document(std::string_view body)
        : root_(boost::json::parse({body.data(), body.size()}, &memory_)) {}
    [[nodiscard]] const Value& root() const { return root_; }

   private:
    unsigned char first_[16 * 1024];
    boost::json::monotonic_resource memory_{first_, sizeof(first_)};
    Value root_;
  };

  static const Value* member(const Value& object, const char* key) {
    return object.get_object().if_contains(key);
  }
  static Text text(const Value& value) {
    const auto* text = value.if_string();
    return text ? Text({text->data(), text->size()}) : std::nullopt;
  }
  static std::optional<double> number(const Value& value) {
    return value.is_number() ? std::optional(value.to_number<double>()) : std::nullopt;
  }
  static std::optional<std::int64_t> integer(const Value& value) {
    const auto* number = value.if_int64();
    return number ? std::optional(*number) : std::nullopt;
  }
  static std::optional<bool> boolean(const Value& value) {
    const auto* flag = value.if_bool();
    return flag ? std::optional(*flag) : std::nullopt;
  }
  static bool isObject(const Value& value) { return value.is_object(); }
  static const boost::json::array* array(const Value& value) { return value.if_array(); }
};

}  // namespace orvo::benchmarks
