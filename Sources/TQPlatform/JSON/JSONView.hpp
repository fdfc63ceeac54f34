#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "TQPlatform/JSON/JSON.hpp"

namespace tq {

/// One JSON value that is kept elsewhere: a `JSONValue`, or what a `JSONDocument` has read. Copied like a pointer, and
/// to be used only as long as the value is there and unchanged. It answers as that `JSONValue` would.
class JSONView {
 public:
  struct OnTape;  // what the rooms of TQPlatform know of it

  JSONView(const JSONValue& value) : index_(reinterpret_cast<std::uintptr_t>(&value)) {}

  bool isNull() const;
  bool isInteger() const;
  bool isArray() const;
  bool isObject() const;

  std::optional<bool> asBool() const;
  std::optional<std::int64_t> asInteger() const;
  std::optional<double> asDouble() const;
  std::optional<std::string_view> asString() const;
  std::string_view kindName() const;

  /// The number of elements if this is a list, or a little less if there are millions; 0 for anything else.
  std::size_t elementCount() const;

  /// Calls `visit(JSONView)` with each element of a list in order; of anything else there are none.
  template <class Visit>
  void forEachElement(Visit visit) const {
    visitElements(std::ref(visit));
  }

  /// Calls `visit(std::string_view key, JSONView)` with each member of an object; of anything else there are none.
  /// Where a key occurs again, its last member is the one that counts.
  template <class Visit>
  void forEachMember(Visit visit) const {
    visitMembers(std::ref(visit));
  }

 private:
  JSONView(const void* tape, std::uintptr_t index) : tape_(tape), index_(index) {}
  const JSONValue& value() const { return *reinterpret_cast<const JSONValue*>(index_); }
  void visitElements(const std::function<void(JSONView)>& visit) const;
  void visitMembers(const std::function<void(std::string_view, JSONView)>& visit) const;

  const void* tape_ = nullptr;  ///< the document's memory, or none for a `JSONValue`
  std::uintptr_t index_;        ///< the place in it, or the address of the value
};

}  // namespace tq
