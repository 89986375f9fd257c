#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/HTTP/URLSessionConfiguration.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONMarksInternal.h>
#include <OrvoAPI/Parsing/JSONMembersInternal.h>
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

// The reader and the operations of JSONValue.h: this is the one source that pays for simdjson's
// header, and the one that knows what a position is.

namespace orvo {

namespace dom = simdjson::dom;

namespace detail {

namespace {

struct ReadDocument : JSONDocument {
  dom::document contents;
};

// A position is one of simdjson's references: into which document, and where. That ascends in it.
template <class Reference>
constexpr bool fitsPosition =
    sizeof(Reference) == sizeof(JSONPosition) && std::is_trivially_copyable_v<Reference>;
static_assert(fitsPosition<dom::element> && fitsPosition<dom::array::iterator> &&
              fitsPosition<dom::object::iterator>);

template <class Reference>
Reference at(JSONPosition position) {
  return std::bit_cast<Reference>(position);
}

template <class Reference>
JSONPosition positionOf(const Reference& reference) {
  return std::bit_cast<JSONPosition>(reference);
}

// In a shape that was checked when its handle was made, these cannot fail.
dom::array arrayAt(JSONPosition position) {
  return at<dom::element>(position).get_array().value_unsafe();
}
dom::object objectAt(JSONPosition position) {
  return at<dom::element>(position).get_object().value_unsafe();
}

/// In place: copying a token that was just built elsewhere would stall on its parts.
inline void setToken(JSONToken& token, dom::element element) {
  switch (element.type()) {
    case dom::element_type::ARRAY:
      std::construct_at(&token, JSONToken::Kind::array, positionOf(element));
      break;
    case dom::element_type::OBJECT:
      std::construct_at(&token, JSONToken::Kind::object, positionOf(element));
      break;
    case dom::element_type::INT64:
      std::construct_at(&token, element.get_int64().value_unsafe());
      break;
    case dom::element_type::UINT64:  // beyond the range of the signed
      std::construct_at(&token, static_cast<double>(element.get_uint64().value_unsafe()));
      break;
    case dom::element_type::DOUBLE:
      std::construct_at(&token, element.get_double().value_unsafe());
      break;
    case dom::element_type::STRING:
      std::construct_at(&token, element.get_string().value_unsafe());
      break;
    case dom::element_type::BOOL:
      std::construct_at(&token, element.get_bool().value_unsafe());
      break;
    case dom::element_type::NULL_VALUE:
      std::construct_at(&token, nullptr);
      break;
  }
}

inline std::string_view keyOf(const dom::object::iterator& member) {
  return {member.key_c_str(), member.key_length()};
}

}  // namespace

// --- what is built on tokens

JSONToken tokenAt(JSONPosition position) {
  JSONToken token;
  setToken(token, at<dom::element>(position));
  return token;
}

std::optional<JSONPosition> findMember(JSONPosition object, std::string_view key) {
  const auto members = objectAt(object);
  for (auto member = members.begin(), end = members.end(); member != end; ++member) {
    if (keyOf(member) == key) return positionOf(member.value());
  }
  return std::nullopt;
}

void findMembers(JSONPosition object, const TextIndex& keys, JSONToken* found) {
  const auto members = objectAt(object);
  const auto end = members.end();
  for (auto member = members.begin(); member != end; ++member) {
    const auto number = keys.find(keyOf(member));
    if (number == TextIndex::kNone || found[number].kind() != JSONToken::Kind::absent) continue;
    setToken(found[number], member.value());
  }
}

bool holdsOnly(JSONToken::Kind kind, JSONPosition array) {
  const auto elements = arrayAt(array);
  return std::all_of(elements.begin(), elements.end(), [kind](dom::element element) {
    return kind == JSONToken::Kind::string ? element.is_string() : element.is_object();
  });
}

std::uint32_t namesIn(JSONPosition array, const TextIndex& names, bool& knowsAll) {
  std::uint32_t found = 0;
  for (const dom::element element : arrayAt(array)) {
    std::string_view text;
    if (element.get_string().get(text)) {
      knowsAll = false;
      return 0;
    }
    const auto number = names.find(text);
    if (number == TextIndex::kNone) {
      knowsAll = false;
    } else {
      found |= std::uint32_t{1} << number;
    }
  }
  return found;
}

}  // namespace detail

// --- reading

namespace {

using detail::ReadDocument;

/// Chooses the code for this processor when the library is loaded: the choice allocates where
/// nothing may be thrown, so that a refusal at the first reading would end the process.
[[maybe_unused]] const bool chosenAtLoading =
    simdjson::get_active_implementation()->supported_by_runtime_system();

/// The length of the bodies for which it has memory.
std::size_t capacityOf(const dom::parser& parser) { return parser.capacity(); }
std::size_t capacityOf(const ReadDocument& document) { return document.contents.capacity(); }

/// What is expensive to make: a few idle ones are kept, with the memory that small bodies need. Not
/// one for each thread: threads come and go, and at exit a thread's own may be gone before its last
/// reading. Never freed.
template <class T>
class Spares {
 public:
  [[nodiscard]] static std::unique_ptr<T> take() {
    for (auto& spare : spares_) {
      if (!spare.load(std::memory_order_relaxed)) continue;
      if (T* const taken = spare.exchange(nullptr, std::memory_order_acquire)) {
        return std::unique_ptr<T>(taken);
      }
    }
    return std::make_unique<T>();
  }
  static void keep(std::unique_ptr<T> item) noexcept {
    if (capacityOf(*item) == 0 || capacityOf(*item) > kMostCapacity) return;
    for (auto& spare : spares_) {
      T* none = nullptr;
      if (spare.compare_exchange_strong(none, item.get(), std::memory_order_release,
                                        std::memory_order_relaxed)) {
        (void)item.release();
        return;
      }
    }
  }

 private:
  /// Parsers and documents take up to four and ten times as much.
  static constexpr std::size_t kMostCapacity = 256 * 1024;
  static constinit inline std::array<std::atomic<T*>, 4> spares_{};
};

using SpareParsers = Spares<dom::parser>;
using SpareDocuments = Spares<ReadDocument>;

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

/// A number and its comma, two bytes, become 24 in the document and the parser.
constexpr std::size_t kMostMarks = URLSessionConfiguration::kDefaultMaximumBodySize / 4;

/// Whether the body holds so many values that reading it would cost too much. Marks within strings
/// count as well: telling them apart would mean reading it, and no string holds that many.
bool isTooDense(std::string_view body) {
  return body.size() > kMostMarks && detail::countMarks(body) > kMostMarks;
}

simdjson::error_code read(std::string_view body, dom::document& document) {
  static_assert(Data::kPadding >= simdjson::SIMDJSON_PADDING);
  if (body.empty()) return simdjson::EMPTY;
  auto parser = SpareParsers::take();
  const auto parse = [&](std::string_view text) {
    return parser->parse_into_document(document, text.data(), text.size(), false).error();
  };
  auto error = parse(body);
  if (error == simdjson::NUMBER_ERROR) {
    const detail::WideIntegersAsDoubles rewritten(body, simdjson::SIMDJSON_PADDING);
    if (rewritten.found) error = parse(rewritten.view());
  }
  // A parser that was refused memory is left half built.
  if (error != simdjson::MEMALLOC) SpareParsers::keep(std::move(parser));
  return error;
}

}  // namespace

void detail::destroy(const JSONDocument* document) noexcept {
  SpareDocuments::keep(std::unique_ptr<ReadDocument>(
      static_cast<ReadDocument*>(const_cast<JSONDocument*>(document))));
}

Result<JSONValue> JSONDataParser::value(const Data& data) {
  std::string_view body = data.view();
  if (body.starts_with("\xEF\xBB\xBF")) body.remove_prefix(3);
  if (isTooDense(body)) {
    return Failure{URLError{URLError::dataLengthExceedsMaximum, "the document holds too much"}};
  }
  auto error = simdjson::MEMALLOC;
  try {
    auto document = SpareDocuments::take();
    error = read(body, document->contents);
    if (!error) {
      const auto root = detail::positionOf(document->contents.root());
      return JSONValue(detail::JSONNode(document.release(), root));
    }
  } catch (const std::bad_alloc&) {
  }
  return Failure{JSONReaderError{codeOf(error), simdjson::error_message(error)}};
}

std::string JSONValue::text() const {
  return node_.document() ? simdjson::minify(detail::at<dom::element>(node_.position())) : "null";
}

// --- the members of an object

bool JSONObject::empty() const { return detail::objectAt(node_.position()).size() == 0; }

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
    : member_{{}, JSONValue(object)},
      repeated_(repeatedMembers(detail::objectAt(object.position()))) {
  const auto members = detail::objectAt(object.position());
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
  const auto array = detail::arrayAt(node_.position());
  if (const std::size_t size = array.size(); size < saturated) return size;
  return static_cast<std::size_t>(std::distance(array.begin(), array.end()));
}

template <class Element>
JSONArrayOf<Element>::Iterator::Iterator(const detail::JSONNode& array) {
  const auto elements = detail::arrayAt(array.position());
  position_ = detail::positionOf(elements.begin());
  end_ = detail::positionOf(elements.end());
  if constexpr (!std::is_same_v<Element, std::string_view>) {
    if (position_ != end_) {
      element_.emplace(detail::JSONNode::borrowed(array.document(), array.position()));
    }
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
