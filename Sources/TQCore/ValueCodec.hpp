#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "TQCore/FileURL.hpp"
#include "TQCore/RawValue.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQPlatform/Text/DateText.hpp"
#include "TQPlatform/UUID.hpp"

namespace tq {

/// Throws the `DecodingError` "expected <expected>, found <what `value` is>". A text is quoted when a text was
/// expected, so that the reader sees what is wrong with it.
[[noreturn]] void throwUnexpected(JSONView value, const std::string& expected, bool quotesText = false);

/// Adds one hash to another, so that the order of the parts counts.
void combineHash(std::size_t& seed, std::size_t part);

/// How one type of field stands in JSON: `read` (throws `DecodingError`), `write`, `hash`, and `expected`, its name in
/// a message. Whatever has no specialisation below is a record with a table of its own.
template <class T>
struct ValueCodec {
  static std::string expected() { return "an object"; }
  static T read(JSONView value) { return decode<T>(value); }
  static JSONValue write(const T& value) { return encode(value); }
  static std::size_t hash(const T& value) { return hashOf(value); }
};

template <>
struct ValueCodec<bool> {
  static std::string expected() { return "true or false"; }
  static bool read(JSONView value) {
    if (const auto boolean = value.asBool()) return *boolean;
    throwUnexpected(value, expected());
  }
  static JSONValue write(bool value) { return value; }
  static std::size_t hash(bool value) { return std::hash<bool>()(value); }
};

template <class Integer>
requires std::is_integral_v<Integer>
struct ValueCodec<Integer> {
  static std::string expected() { return "a whole number"; }
  static Integer read(JSONView value) {
    if (const auto integer = value.asInteger(); integer && std::in_range<Integer>(*integer))
      return static_cast<Integer>(*integer);
    throwUnexpected(value, expected());
  }
  static JSONValue write(Integer value) { return std::int64_t{value}; }
  static std::size_t hash(Integer value) { return std::hash<Integer>()(value); }
};

template <>
struct ValueCodec<double> {
  static std::string expected() { return "a number"; }
  static double read(JSONView value) {
    if (const auto number = value.asDouble()) return *number;
    throwUnexpected(value, expected());
  }
  static JSONValue write(double value) { return value; }
  static std::size_t hash(double value) { return std::hash<double>()(value); }
};

template <>
struct ValueCodec<std::string> {
  static std::string expected() { return "text"; }
  static std::string read(JSONView value) {
    if (const auto text = value.asString()) return std::string(*text);
    throwUnexpected(value, expected());
  }
  static JSONValue write(const std::string& value) { return value; }
  static std::size_t hash(const std::string& value) { return std::hash<std::string>()(value); }
};

/// A value that stands as text and may reject a text: `parse` gives absent then.
template <class T, auto parse>
T readText(JSONView value, const std::string& expected) {
  if (const auto text = value.asString())
    if (auto parsed = parse(*text)) return *parsed;
  throwUnexpected(value, expected, true);
}

/// ISO 8601, UTC, whole seconds.
template <>
struct ValueCodec<Date> {
  static std::string expected() { return "a date such as 2026-11-21T10:00:00Z"; }
  static Date read(JSONView value) { return readText<Date, &parseISO8601>(value, expected()); }
  static JSONValue write(Date value) { return iso8601(value); }
  static std::size_t hash(Date value) { return std::hash<std::int64_t>()(value.time_since_epoch().count()); }
};

/// An absolute file URL; a plain absolute path is read too.
template <>
struct ValueCodec<std::filesystem::path> {
  static std::string expected() { return "a file URL"; }
  static std::filesystem::path read(JSONView value) {
    return readText<std::filesystem::path, &parseFileURL>(value, expected());
  }
  static JSONValue write(const std::filesystem::path& value) { return fileURL(value); }
  static std::size_t hash(const std::filesystem::path& value) { return std::filesystem::hash_value(value); }
};

template <>
struct ValueCodec<UUID> {
  static std::string expected() { return "a UUID"; }
  static UUID read(JSONView value) { return readText<UUID, &UUID::parse>(value, expected()); }
  static JSONValue write(const UUID& value) { return value.text(); }
  static std::size_t hash(const UUID& value) { return std::hash<UUID>()(value); }
};

/// An enumeration stands as the raw string of its case.
template <class Enum>
requires std::is_enum_v<Enum>
struct ValueCodec<Enum> {
  static std::string expected() {
    std::string text = "one of";
    for (const std::string_view raw : rawValues<Enum>)
      text.append(text == "one of" ? " " : ", ").append(raw);
    return text;
  }
  static Enum read(JSONView value) { return readText<Enum, &fromRawValue<Enum>>(value, expected()); }
  static JSONValue write(Enum value) { return rawValue(value); }
  static std::size_t hash(Enum value) { return static_cast<std::size_t>(value); }
};

template <class Element>
struct ValueCodec<std::vector<Element>> {
  static std::string expected() { return "a list"; }
  static std::vector<Element> read(JSONView value) {
    if (!value.isArray()) throwUnexpected(value, expected());
    std::vector<Element> values;
    values.reserve(value.elementCount());
    value.forEachElement([&values](JSONView element) {
      try {
        values.push_back(ValueCodec<Element>::read(element));
      } catch (const DecodingError& error) {
        throw error.within("[" + std::to_string(values.size()) + "]");
      }
    });
    return values;
  }
  static JSONValue write(const std::vector<Element>& values) {
    JSONValue::Array elements;
    elements.reserve(values.size());
    for (const Element& value : values)
      elements.push_back(ValueCodec<Element>::write(value));
    return elements;
  }
  static std::size_t hash(const std::vector<Element>& values) {
    std::size_t seed = values.size();
    for (const Element& value : values)
      combineHash(seed, ValueCodec<Element>::hash(value));
    return seed;
  }
};

template <class Value>
std::size_t hashOfValue(const Value& value) {
  return ValueCodec<Value>::hash(value);
}

template <class Value>
std::size_t hashOfValue(const std::optional<Value>& value) {
  return value ? ValueCodec<Value>::hash(*value) + 1 : 0;
}

/// The hash of a record without a JSON form, from its fields:
///   template <>
///   std::size_t hashOf(const ExportRange& range) { return hashOfValues(range.start, range.end); }
template <class... Values>
std::size_t hashOfValues(const Values&... values) {
  std::size_t seed = sizeof...(Values);
  (combineHash(seed, hashOfValue(values)), ...);
  return seed;
}

}  // namespace tq
