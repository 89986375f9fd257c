#pragma once

// As RapidJSON's documentation advises.
#if defined(__SSE4_2__)
#define RAPIDJSON_SSE42
#elif defined(__SSE2__)
#define RAPIDJSON_SSE2
#endif
#include <rapidjson/document.h>
#include <simdjson.h>

#include <boost/json.hpp>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What other JSON libraries offer, under the same names: a document's root, a member that may be
/// missing, values of a kind, elements. Each is used in its fastest way for a body that is in
/// memory and values that go with the document: with memory that is kept from one to the next where
/// it has a place for it.
namespace orvo::benchmarks {

using Text = std::optional<std::string_view>;

/// More than the largest document here needs.
constexpr std::size_t kKeptMemory = std::size_t{32} << 20;

struct Simdjson {
  using Value = simdjson::dom::element;
  class Document {
   public:
    explicit Document(std::string_view body) {
      static simdjson::dom::parser parser;
      // A `Data` has the padding that saves a copy.
      if (parser.parse(body.data(), body.size(), false).get(root_)) std::abort();
    }
    [[nodiscard]] const Value& root() const { return root_; }

   private:
    Value root_;
  };

  static std::optional<Value> member(const Value& object, std::string_view key) {
    Value found;
    return object[key].get(found) ? std::nullopt : std::optional(found);
  }
  static Text text(const Value& value) { return as<std::string_view>(value); }
  static std::optional<double> number(const Value& value) {
    return value.is_number() ? as<double>(value) : std::nullopt;
  }
  static std::optional<std::int64_t> integer(const Value& value) { return as<std::int64_t>(value); }
  static std::optional<bool> boolean(const Value& value) { return as<bool>(value); }
  static bool isObject(const Value& value) { return value.is_object(); }
  static std::optional<simdjson::dom::array> array(const Value& value) {
    return as<simdjson::dom::array>(value);
  }

 private:
  template <class T>
  static std::optional<T> as(const Value& value) {
    T read;
    return value.get(read) ? std::nullopt : std::optional(read);
  }
};

struct Nlohmann {
  using Value = nlohmann::json;
  class Document {
   public:
    explicit Document(std::string_view body) : root_(Value::parse(body)) {}
    [[nodiscard]] const Value& root() const { return root_; }

   private:
    Value root_;
  };

  static const Value* member(const Value& object, std::string_view key) {
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
  /// In place, in a copy of the body, which takes next to nothing; without checking the encoding,
  /// as it does by default.
  class Document {
   public:
    explicit Document(std::string_view body) {
      static std::string text;
      document_.ParseInsitu(text.assign(body).data());
      if (document_.HasParseError()) std::abort();
    }
    ~Document() { pool().Clear(); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    [[nodiscard]] const Value& root() const { return document_; }

   private:
    static rapidjson::MemoryPoolAllocator<>& pool() {
      static std::vector<char> memory(kKeptMemory);
      static rapidjson::MemoryPoolAllocator<> pool(memory.data(), memory.size());
      return pool;
    }
    rapidjson::Document document_{&pool()};
  };

  static const Value* member(const Value& object, std::string_view key) {
    const rapidjson::Value name(rapidjson::StringRef(key.data(), key.size()));
    const auto found = object.FindMember(name);
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
  static std::optional<std::span<const Value>> array(const Value& value) {
    return value.IsArray() ? std::optional(std::span(value.Begin(), value.Size())) : std::nullopt;
  }
};

struct Boost {
  using Value = boost::json::value;
  class Document {
   public:
    explicit Document(std::string_view body) {
      static boost::json::parser parser;
      parser.reset(&memory());
      parser.write(body.data(), body.size());
      // Its memory is not given back value by value.
      root_ = new (memory().allocate(sizeof(Value))) Value(parser.release());
    }
    ~Document() { memory().release(); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    [[nodiscard]] const Value& root() const { return *root_; }

   private:
    static boost::json::monotonic_resource& memory() {
      static std::vector<unsigned char> kept(kKeptMemory);
      static boost::json::monotonic_resource memory(kept.data(), kept.size());
      return memory;
    }
    const Value* root_;
  };

  static const Value* member(const Value& object, std::string_view key) {
    return object.get_object().if_contains({key.data(), key.size()});
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
