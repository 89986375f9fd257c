#include <OrvoAPI/Parsing/JSONMembersInternal.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <cmath>
#include <iterator>

namespace orvo {

namespace detail {

std::optional<std::int64_t> JSONToken::wholeNumber() const {
  constexpr double limit = 0x1p63;
  if (kind_ != Kind::number || !(number_ >= -limit && number_ < limit)) return std::nullopt;
  if (number_ != std::trunc(number_)) return std::nullopt;
  return static_cast<std::int64_t>(number_);
}

namespace {

/// Absent for a value that never was read.
JSONToken tokenOf(const JSONNode& node) {
  return node.document() ? tokenAt(node.position()) : JSONToken();
}

/// The container that the token is, in the document of its neighbour.
template <class Container>
Container share(const JSONNode& neighbour, const JSONToken& token) {
  return Container(JSONNode(neighbour.document(), token.position()));
}

std::optional<JSONObject> object(const JSONNode& neighbour, const JSONToken& token) {
  if (token.kind() != JSONToken::Kind::object) return std::nullopt;
  return share<JSONObject>(neighbour, token);
}

/// An array whose every element is of the kind; of any kind when `absent`.
template <class Array>
std::optional<Array> array(const JSONNode& neighbour, const JSONToken& token,
                           JSONToken::Kind element) {
  if (token.kind() != JSONToken::Kind::array) return std::nullopt;
  if (element != JSONToken::Kind::absent && !holdsOnly(element, token.position())) {
    return std::nullopt;
  }
  return share<Array>(neighbour, token);
}

}  // namespace

void drop(const JSONObject& record) {
  if (lossNotes != nullptr) lossNotes->dropped(record);
}

void drop(const JSONObject& record, std::string_view key) {
  blame(record, key, JSONValue::Kind::string);
  drop(record);
}

void blame(const JSONObject& object, std::string_view key, JSONValue::Kind wanted) {
  if (lossNotes != nullptr) lossNotes->blamed(object, key, wanted);
}

void blame(const JSONFault& fault) {
  const auto& place = fault.place;
  blame(JSONObject(JSONNode::borrowed(place.document, place.at)), fault.key, fault.wanted);
}

void ignore(const JSONPlace& place, std::string_view key, JSONValue::Kind wanted) {
  if (lossNotes == nullptr) return;
  lossNotes->ignored(JSONObject(JSONNode::borrowed(place.document, place.at)), key, wanted);
}

void ignore(const JSONDocument* document, JSONPosition array, const TextIndex& names) {
  if (lossNotes == nullptr) return;
  lossNotes->ignored(JSONArray(JSONNode::borrowed(document, array)), names);
}

}  // namespace detail

using Token = detail::JSONToken;

// --- JSONValue

JSONValue::Kind JSONValue::kind() const {
  switch (detail::tokenOf(node_).kind()) {
    case Token::Kind::absent:
    case Token::Kind::null:
      return Kind::null;
    case Token::Kind::boolean:
      return Kind::boolean;
    case Token::Kind::integer:
    case Token::Kind::number:
      return Kind::number;
    case Token::Kind::string:
      return Kind::string;
    case Token::Kind::array:
      return Kind::array;
    case Token::Kind::object:
      return Kind::object;
  }
  return Kind::null;
}

std::optional<std::string_view> JSONValue::string() const {
  return detail::tokenOf(node_).string();
}
std::optional<double> JSONValue::number() const { return detail::tokenOf(node_).number(); }
std::optional<std::int64_t> JSONValue::integer() const { return detail::tokenOf(node_).integer(); }
std::optional<bool> JSONValue::boolean() const { return detail::tokenOf(node_).boolean(); }
std::optional<JSONObject> JSONValue::object() const {
  return detail::object(node_, detail::tokenOf(node_));
}
std::optional<JSONArray> JSONValue::array() const {
  return detail::array<JSONArray>(node_, detail::tokenOf(node_), Token::Kind::absent);
}
std::optional<JSONObjects> JSONValue::objects() const {
  return detail::array<JSONObjects>(node_, detail::tokenOf(node_), Token::Kind::object);
}
std::optional<JSONStrings> JSONValue::strings() const {
  return detail::array<JSONStrings>(node_, detail::tokenOf(node_), Token::Kind::string);
}

// --- JSONObject

namespace {

Token memberOf(const detail::JSONNode& object, std::string_view key) {
  const auto position = detail::findMember(object.position(), key);
  return position ? detail::tokenAt(*position) : Token();
}

}  // namespace

std::optional<JSONValue> JSONObject::value(std::string_view key) const {
  const auto position = detail::findMember(node_.position(), key);
  if (!position) return std::nullopt;
  return JSONValue(detail::JSONNode(node_.document(), *position));
}
std::optional<std::string_view> JSONObject::string(std::string_view key) const {
  return memberOf(node_, key).string();
}
std::optional<double> JSONObject::number(std::string_view key) const {
  return memberOf(node_, key).number();
}
std::optional<std::int64_t> JSONObject::integer(std::string_view key) const {
  return memberOf(node_, key).integer();
}
std::optional<bool> JSONObject::boolean(std::string_view key) const {
  return memberOf(node_, key).boolean();
}
std::optional<JSONObject> JSONObject::object(std::string_view key) const {
  return detail::object(node_, memberOf(node_, key));
}
std::optional<JSONArray> JSONObject::array(std::string_view key) const {
  return detail::array<JSONArray>(node_, memberOf(node_, key), Token::Kind::absent);
}
std::optional<JSONObjects> JSONObject::objects(std::string_view key) const {
  return detail::array<JSONObjects>(node_, memberOf(node_, key), Token::Kind::object);
}
std::optional<JSONStrings> JSONObject::strings(std::string_view key) const {
  return detail::array<JSONStrings>(node_, memberOf(node_, key), Token::Kind::string);
}

JSONObject::Iterator JSONObject::begin() const { return Iterator(node_); }

std::size_t JSONObject::size() const {
  return static_cast<std::size_t>(std::ranges::distance(begin(), end()));
}

}  // namespace orvo
