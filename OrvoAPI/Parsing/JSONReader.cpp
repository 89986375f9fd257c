#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <OrvoAPI/Parsing/JSONWideIntegersInternal.h>

#include <simdjson.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <span>
#include <type_traits>

// The reader and the operations of JSONValue.h: this is the one source that pays for the reading
// library's header, and the one that knows what a position is.

namespace orvo {

namespace dom = simdjson::dom;

namespace detail {

namespace {

struct ReadDocument : JSONDocument {
  dom::document contents;
};

// A position is one of the library's references: into which document, and where.
template <class Reference>
constexpr bool fitsPosition =
    sizeof(Reference) == sizeof(JSONPosition) && std::is_trivially_copyable_v<Reference>;
static_assert(fitsPosition<dom::element> && fitsPosition<dom::array::iterator> &&
              fitsPosition<dom::object::iterator>);

template <class Reference>
Reference at(const JSONPosition& position) {
  return std::bit_cast<Reference>(position);
}

template <class Reference>
JSONPosition positionOf(const Reference& reference) {
  return std::bit_cast<JSONPosition>(reference);
}

/// Of a node that was read.
dom::element elementOf(const JSONNode& node) { return at<dom::element>(node.position()); }

// In a shape that was checked when its handle was made, these cannot fail.
dom::array arrayOf(const JSONNode& node) { return elementOf(node).get_array().value_unsafe(); }
dom::object objectOf(const JSONNode& node) { return elementOf(node).get_object().value_unsafe(); }

JSONNode node(const JSONNode& neighbour, dom::element element) {
  return {neighbour.document(), positionOf(element)};
}

// The elements as values of a kind, or nothing when they are of another; containers share the
// document of the neighbour.

std::optional<std::string_view> string(const JSONNode&, dom::element element) {
  std::string_view found;
  if (element.get_string().get(found)) return std::nullopt;
  return found;
}

std::optional<double> number(const JSONNode&, dom::element element) {
  double found{};
  if (element.get_double().get(found)) return std::nullopt;  // integers convert
  return found;
}

std::optional<std::int64_t> integer(const JSONNode&, dom::element element) {
  if (std::int64_t found{}; !element.get_int64().get(found)) return found;
  double found{};
  if (!element.is_double() || element.get_double().get(found)) return std::nullopt;
  constexpr double limit = 0x1p63;
  if (!(found >= -limit && found < limit) || found != std::trunc(found)) return std::nullopt;
  return static_cast<std::int64_t>(found);
}

std::optional<bool> boolean(const JSONNode&, dom::element element) {
  bool found{};
  if (element.get_bool().get(found)) return std::nullopt;
  return found;
}

bool isElement(dom::element element, const JSONObject*) { return element.is_object(); }
bool isElement(dom::element element, const std::string_view*) { return element.is_string(); }

template <class Element>
std::optional<JSONArrayOf<Element>> arrayOf(const JSONNode& neighbour, dom::element element) {
  dom::array array;
  if (element.get_array().get(array)) return std::nullopt;
  if constexpr (!std::is_same_v<Element, JSONValue>) {
    for (const dom::element each : array) {
      if (!isElement(each, static_cast<const Element*>(nullptr))) return std::nullopt;
    }
  }
  return JSONArrayOf<Element>(node(neighbour, element));
}

std::optional<JSONObject> object(const JSONNode& neighbour, dom::element element) {
  if (!element.is_object()) return std::nullopt;
  return JSONObject(node(neighbour, element));
}

std::optional<JSONValue> value(const JSONNode& neighbour, dom::element element) {
  return JSONValue(node(neighbour, element));
}

}  // namespace

void destroy(const JSONDocument* document) noexcept {
  delete static_cast<const ReadDocument*>(document);
}

}  // namespace detail

// --- reading

namespace {

using detail::ReadDocument;

/// Chooses the code for this processor when the library is loaded: the choice allocates where
/// nothing may be thrown, so at the first reading a refusal would end the process.
[[maybe_unused]] const bool chosenAtLoading =
    simdjson::get_active_implementation()->supported_by_runtime_system();

/// A parser is expensive to set up, so a few at rest are kept. Not one for each thread: threads
/// come and go, and at exit a thread's own may be gone before its last reading. Never freed.
constinit std::array<std::atomic<dom::parser*>, 4> spareParsers{};
/// The largest body for which a spare parser keeps its memory, four times as much.
constexpr std::size_t keptCapacity = 256 * 1024;

struct SetAside {
  void operator()(dom::parser* parser) const noexcept {
    if (parser->capacity() > 0 && parser->capacity() <= keptCapacity) {
      for (auto& spare : spareParsers) {
        dom::parser* none = nullptr;
        if (spare.compare_exchange_strong(none, parser, std::memory_order_release,
                                          std::memory_order_relaxed)) {
          return;
        }
      }
    }
    delete parser;
  }
};
using LeasedParser = std::unique_ptr<dom::parser, SetAside>;

LeasedParser leaseParser() {
  for (auto& spare : spareParsers) {
    if (!spare.load(std::memory_order_relaxed)) continue;
    if (auto* parser = spare.exchange(nullptr, std::memory_order_acquire)) {
      return LeasedParser(parser);
    }
  }
  return LeasedParser(new dom::parser);
}

JSONReaderError::Code codeOf(simdjson::error_code error) {
  using Code = JSONReaderError::Code;
  switch (error) {
    case simdjson::EMPTY:
      return Code::empty;
    case simdjson::UTF8_ERROR:
      return Code::invalidEncoding;
    case simdjson::STRING_ERROR:
    case simdjson::UNESCAPED_CHARS:
    case simdjson::UNCLOSED_STRING:
      return Code::invalidString;
    case simdjson::NUMBER_ERROR:
      return Code::invalidNumber;
    case simdjson::DEPTH_ERROR:
      return Code::tooDeep;
    case simdjson::CAPACITY:
      return Code::tooLarge;
    case simdjson::MEMALLOC:
      return Code::outOfMemory;
    default:
      return Code::malformed;
  }
}

simdjson::error_code read(std::string_view body, dom::document& document) {
  static_assert(Data::kPadding >= simdjson::SIMDJSON_PADDING);
  if (body.empty()) return simdjson::EMPTY;
  auto parser = leaseParser();
  const auto parse = [&](std::string_view text) {
    return parser->parse_into_document(document, text.data(), text.size(), false).error();
  };
  auto error = parse(body);
  if (error == simdjson::NUMBER_ERROR) {
    const detail::WideIntegersAsDoubles rewritten(body, simdjson::SIMDJSON_PADDING);
    if (rewritten.found) error = parse(rewritten.view());
  }
  // A parser that was refused memory is left half made.
  if (error == simdjson::MEMALLOC) delete parser.release();
  return error;
}

}  // namespace

Result<JSONValue> JSONDataParser::value(const Data& data) {
  std::string_view body = data.view();
  if (body.starts_with("\xEF\xBB\xBF")) body.remove_prefix(3);
  auto error = simdjson::MEMALLOC;
  try {
    auto document = std::make_unique<ReadDocument>();
    error = read(body, document->contents);
    if (!error) {
      const auto root = detail::positionOf(document->contents.root());
      return JSONValue(detail::JSONNode(document.release(), root));
    }
  } catch (const std::bad_alloc&) {
  }
  return Failure{JSONReaderError{codeOf(error), simdjson::error_message(error)}};
}

// --- JSONValue

namespace {

/// What `read` makes of the node's element; nothing for a value that never was read.
template <class Value>
std::optional<Value> as(const detail::JSONNode& node,
                        std::optional<Value> (*read)(const detail::JSONNode&, dom::element)) {
  if (!node.document()) return std::nullopt;
  return read(node, detail::elementOf(node));
}

}  // namespace

JSONValue::Kind JSONValue::kind() const {
  if (!node_.document()) return Kind::null;
  switch (detail::elementOf(node_).type()) {
    case dom::element_type::ARRAY:
      return Kind::array;
    case dom::element_type::OBJECT:
      return Kind::object;
    case dom::element_type::INT64:
    case dom::element_type::UINT64:
    case dom::element_type::DOUBLE:
      return Kind::number;
    case dom::element_type::STRING:
      return Kind::string;
    case dom::element_type::BOOL:
      return Kind::boolean;
    case dom::element_type::NULL_VALUE:
      return Kind::null;
  }
  return Kind::null;
}

std::optional<std::string_view> JSONValue::string() const { return as(node_, detail::string); }
std::optional<double> JSONValue::number() const { return as(node_, detail::number); }
std::optional<std::int64_t> JSONValue::integer() const { return as(node_, detail::integer); }
std::optional<bool> JSONValue::boolean() const { return as(node_, detail::boolean); }
std::optional<JSONObject> JSONValue::object() const { return as(node_, detail::object); }
std::optional<JSONArray> JSONValue::array() const { return as(node_, detail::arrayOf<JSONValue>); }
std::optional<JSONObjects> JSONValue::objects() const {
  return as(node_, detail::arrayOf<JSONObject>);
}
std::optional<JSONStrings> JSONValue::strings() const {
  return as(node_, detail::arrayOf<std::string_view>);
}

std::string JSONValue::text() const {
  return node_.document() ? simdjson::minify(detail::elementOf(node_)) : "null";
}

// --- JSONObject

namespace {

std::optional<dom::element> find(const detail::JSONNode& object, std::string_view key) {
  // As `at_key` does, but keys of one length mostly differ in their ends: most comparisons are
  // spared the call.
  const auto members = detail::objectOf(object);
  for (auto member = members.begin(), end = members.end(); member != end; ++member) {
    if (member.key_length() != key.size()) continue;
    const char* text = member.key_c_str();
    if (key.empty() || (text[0] == key.front() && text[key.size() - 1] == key.back() &&
                        std::memcmp(text, key.data(), key.size()) == 0)) {
      return member.value();
    }
  }
  return std::nullopt;
}

template <class Value>
std::optional<Value> memberAs(const detail::JSONNode& object, std::string_view key,
                              std::optional<Value> (*read)(const detail::JSONNode&, dom::element)) {
  const auto found = find(object, key);
  return found ? read(object, *found) : std::nullopt;
}

}  // namespace

std::optional<JSONValue> JSONObject::value(std::string_view key) const {
  return memberAs(node_, key, detail::value);
}
std::optional<std::string_view> JSONObject::string(std::string_view key) const {
  return memberAs(node_, key, detail::string);
}
std::optional<double> JSONObject::number(std::string_view key) const {
  return memberAs(node_, key, detail::number);
}
std::optional<std::int64_t> JSONObject::integer(std::string_view key) const {
  return memberAs(node_, key, detail::integer);
}
std::optional<bool> JSONObject::boolean(std::string_view key) const {
  return memberAs(node_, key, detail::boolean);
}
std::optional<JSONObject> JSONObject::object(std::string_view key) const {
  return memberAs(node_, key, detail::object);
}
std::optional<JSONArray> JSONObject::array(std::string_view key) const {
  return memberAs(node_, key, detail::arrayOf<JSONValue>);
}
std::optional<JSONObjects> JSONObject::objects(std::string_view key) const {
  return memberAs(node_, key, detail::arrayOf<JSONObject>);
}
std::optional<JSONStrings> JSONObject::strings(std::string_view key) const {
  return memberAs(node_, key, detail::arrayOf<std::string_view>);
}

JSONObject::Iterator JSONObject::begin() const { return Iterator(node_); }

std::size_t JSONObject::size() const {
  return static_cast<std::size_t>(std::ranges::distance(begin(), end()));
}

bool JSONObject::empty() const { return detail::objectOf(node_).size() == 0; }

// --- the members of an object

namespace {

/// The ordinal numbers of the members whose key came before, the last first. Takes n log n steps,
/// whatever keys a server sends, and no memory for small objects.
std::vector<std::size_t> repeatedMembers(dom::object object) {
  struct Key {
    std::string_view text;
    std::size_t ordinal;
  };
  std::array<Key, 32> few;
  std::vector<Key> many;
  std::size_t count = 0;
  for (const auto [key, value] : object) {
    if (count == few.size()) many.assign(few.begin(), few.end());
    if (count < few.size()) {
      few[count] = {key, count};
    } else {
      many.push_back({key, count});
    }
    ++count;
  }
  const std::span<Key> keys = many.empty() ? std::span(few).first(count) : std::span(many);
  std::ranges::sort(keys, [](const Key& lhs, const Key& rhs) {
    const int order = lhs.text.compare(rhs.text);
    return order != 0 ? order < 0 : lhs.ordinal < rhs.ordinal;
  });
  std::vector<std::size_t> repeated;
  for (std::size_t i = 1; i < keys.size(); ++i) {
    if (keys[i].text == keys[i - 1].text) repeated.push_back(keys[i].ordinal);
  }
  std::ranges::sort(repeated, std::ranges::greater());
  return repeated;
}

}  // namespace

JSONObject::Iterator::Iterator(const detail::JSONNode& object)
    : member_{{}, JSONValue(object)}, repeated_(repeatedMembers(detail::objectOf(object))) {
  const auto members = detail::objectOf(object);
  position_ = detail::positionOf(members.begin());
  end_ = detail::positionOf(members.end());
  settle();
}

JSONObject::Iterator& JSONObject::Iterator::operator++() {
  const auto step = [this] {
    position_ = detail::positionOf(++detail::at<dom::object::iterator>(position_));
    ++ordinal_;
  };
  step();
  while (!repeated_.empty() && repeated_.back() == ordinal_) {
    repeated_.pop_back();
    step();
  }
  settle();
  return *this;
}

void JSONObject::Iterator::settle() {
  if (position_ == end_) return;
  const auto member = detail::at<dom::object::iterator>(position_);
  member_.key = member.key();
  member_.value.node_.move(detail::positionOf(member.value()));
}

// --- JSONArrayOf

template <class Element>
std::size_t JSONArrayOf<Element>::size() const {
  constexpr std::size_t saturated = 0xFFFFFF;
  const auto array = detail::arrayOf(node_);
  if (const std::size_t size = array.size(); size < saturated) return size;
  return static_cast<std::size_t>(std::distance(array.begin(), array.end()));
}

template <class Element>
JSONArrayOf<Element>::Iterator::Iterator(const detail::JSONNode& array) {
  const auto elements = detail::arrayOf(array);
  position_ = detail::positionOf(elements.begin());
  end_ = detail::positionOf(elements.end());
  if constexpr (!std::is_same_v<Element, std::string_view>) {
    if (position_ != end_) element_.emplace(array);
  }
  settle();
}

template <class Element>
typename JSONArrayOf<Element>::Iterator& JSONArrayOf<Element>::Iterator::operator++() {
  position_ = detail::positionOf(++detail::at<dom::array::iterator>(position_));
  settle();
  return *this;
}

template <class Element>
void JSONArrayOf<Element>::Iterator::settle() {
  if (position_ == end_) return;
  const dom::element element = *detail::at<dom::array::iterator>(position_);
  if constexpr (std::is_same_v<Element, std::string_view>) {
    element_ = element.get_string().value_unsafe();
  } else {
    element_->node_.move(detail::positionOf(element));
  }
}

template class JSONArrayOf<JSONValue>;
template class JSONArrayOf<JSONObject>;
template class JSONArrayOf<std::string_view>;

}  // namespace orvo
