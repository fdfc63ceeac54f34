#pragma once

// How a record states its JSON keys, once. Only source files that hold a table include this header.
//
//   // Clip.hpp
//   struct Clip {
//     std::string name;
//     std::optional<double> rating;
//     std::int64_t takes = 1;
//     bool operator==(const Clip&) const = default;
//   };
//   TQ_RECORD(Clip);
//
//   // Clip.cpp
//   template <>
//   constexpr auto recordTable<Clip> = RecordTable{
//       field("name", &Clip::name),               // required: no std::optional
//       field("rating", &Clip::rating),           // optional: missing or null is absent, and null is never written
//       fieldWithDefault("takes", &Clip::takes),  // missing or null leaves 1, the value of a new Clip; always written
//   };
//   TQ_RECORD_CODEC(Clip);
//
// This makes decode<Clip>(json), encode(clip) and hashOf(clip). A member may be a bool, an integer, double,
// std::string, Date, UUID, path, an enumeration with `rawValues`, a record with a table, a vector of these, or an
// optional of all that (see ValueCodec.hpp). A record that only one source file knows needs no TQ_RECORD; its table
// stands before its first use. Tables stand in namespace tq itself, also that of a record in an unnamed namespace.

#include <array>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "TQCore/RecordJSON.hpp"
#include "TQCore/ValueCodec.hpp"

namespace tq {

template <class Record, class Value>
struct Field {
  std::string_view key;
  Value Record::*member;
  bool hasDefault;
};

/// A field whose presence follows from its type.
template <class Record, class Value>
constexpr Field<Record, Value> field(const char* key, Value Record::*member) {
  return {key, member, false};
}

/// A field that keeps the value of a new record when its key is missing or null.
template <class Record, class Value>
constexpr Field<Record, Value> fieldWithDefault(const char* key, Value Record::*member) {
  return {key, member, true};
}

/// How a field stands in its record. This one must be there, or has a default.
template <class Value>
struct Presence {
  static void read(std::optional<JSONView> json, Value& value, bool hasDefault) {
    if (json && !json->isNull())
      value = ValueCodec<Value>::read(*json);
    else if (!hasDefault)
      throw DecodingError("expected " + ValueCodec<Value>::expected() + ", found " + (json ? "null" : "nothing"));
  }
  static void write(JSONValue::Object& object, std::string_view key, const Value& value) {
    object.emplace(key, ValueCodec<Value>::write(value));
  }
};

/// This one may be absent.
template <class Value>
struct Presence<std::optional<Value>> {
  static void read(std::optional<JSONView> json, std::optional<Value>& value, bool) {
    if (json && !json->isNull()) value = ValueCodec<Value>::read(*json);
  }
  static void write(JSONValue::Object& object, std::string_view key, const std::optional<Value>& value) {
    if (value) object.emplace(key, ValueCodec<Value>::write(*value));
  }
};

/// The fields of a record in declaration order, and what follows from them.
template <class Record, class... Values>
class RecordTable {
 public:
  constexpr explicit RecordTable(Field<Record, Values>... fields) : fields_(fields...) {}

  Record read(JSONView json) const {
    if (!json.isObject()) throwUnexpected(json, "an object");
    const Members members = membersOf(json);
    Record record;
    auto member = members.begin();
    forEach([&](const auto& field) { readField(field, *member++, record); });
    return record;
  }

  JSONValue write(const Record& record) const {
    JSONValue::Object object;
    forEach([&]<class Value>(const Field<Record, Value>& field) {
      Presence<Value>::write(object, field.key, record.*field.member);
    });
    return object;
  }

  std::size_t hash(const Record& record) const {
    return std::apply([&](const auto&... fields) { return hashOfValues(record.*fields.member...); }, fields_);
  }

 private:
  template <class Visit>
  void forEach(const Visit& visit) const {
    std::apply([&](const auto&... fields) { (visit(fields), ...); }, fields_);
  }

  /// What an object has for each of the fields.
  using Members = std::array<std::optional<JSONView>, sizeof...(Values)>;

  Members membersOf(JSONView json) const {
    Members members;
    json.forEachMember([&](std::string_view key, JSONView value) {
      auto member = members.begin();
      forEach([&](const auto& field) {
        if (field.key == key) *member = value;
        ++member;
      });
    });
    return members;
  }

  template <class Value>
  static void readField(const Field<Record, Value>& field, std::optional<JSONView> member, Record& record) {
    try {
      Presence<Value>::read(member, record.*field.member, field.hasDefault);
    } catch (const DecodingError& error) {
      throw error.within(std::string(field.key));
    }
  }

  std::tuple<Field<Record, Values>...> fields_;
};

/// The table of a record; to be specialised.
template <class Record>
inline constexpr auto recordTable = nullptr;

#define TQ_RECORD_CODEC(Record)                               \
  template <>                                                 \
  [[maybe_unused]] Record decode(JSONView value) {            \
    return recordTable<Record>.read(value);                   \
  }                                                           \
  template <>                                                 \
  [[maybe_unused]] JSONValue encode(const Record& record) {   \
    return recordTable<Record>.write(record);                 \
  }                                                           \
  template <>                                                 \
  [[maybe_unused]] std::size_t hashOf(const Record& record) { \
    return recordTable<Record>.hash(record);                  \
  }                                                           \
  static_assert(true)

}  // namespace tq
