#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {

/// A service's answer, read as its shapes have it in common. Services differ in what they leave out and in what they
/// add, so whatever is missing or of another kind than expected is absent and never an error by itself.
class VisionAnswer {
 public:
  /// Throws `JSONError` for bytes that are no JSON, `TQError::providerDecodeFailure` for JSON that is no object.
  explicit VisionAnswer(ByteView data);

  const JSONValue& root() const { return root_; }

  /// The model that the answer names, else `ownModelId`.
  std::string modelId(const std::string& ownModelId) const;

  /// That member of "usage".
  std::optional<std::int64_t> usage(std::string_view key) const;

  // Members of any object of the answer; a null pointer when there is none of the kind.

  static const std::string* string(const JSONValue& object, std::string_view key);
  /// A list that holds objects only.
  static const JSONValue::Array* objects(const JSONValue& object, std::string_view key);

  /// The "text" of every block that has one, each on lines of its own; with a `type` only of blocks of that type.
  static std::string joinedTexts(const JSONValue::Array& blocks, std::optional<std::string_view> type);

 private:
  JSONValue root_;
};

}  // namespace tq
