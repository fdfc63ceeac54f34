#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/JSON/JSONView.hpp"

namespace tq {

/// A JSON value that is not the record it should be. `what()` is one phrase that says where and what:
/// "shots[0].people_count: expected a whole number, found text".
class DecodingError final : public std::runtime_error {
 public:
  explicit DecodingError(std::string problem, std::string path = {});

  /// The same fault seen from one level further out: `step` is a key, or an index such as "[0]".
  DecodingError within(const std::string& step) const;

 private:
  std::string problem_;
  std::string path_;
};

/// Reads a record. Unknown keys are ignored; an optional field whose key is missing or null is absent; a required key
/// that is missing or null and any value of the wrong JSON type fail the whole record. Nothing is coerced: a number
/// without a fraction is an integer, text is never a number. Throws `DecodingError`.
template <class Record>
Record decode(JSONView value);

/// Writes a record: every required field, every optional field that is present, never a null.
template <class Record>
JSONValue encode(const Record& record);

/// A hash over all fields; equal records have equal hashes.
template <class Record>
std::size_t hashOf(const Record& record);

/// The hash of records for the standard containers: std::unordered_set<Shot, RecordHash>.
struct RecordHash {
  template <class Record>
  std::size_t operator()(const Record& record) const {
    return hashOf(record);
  }
};

/// Stands behind a record's definition and says that the three operations above exist for it: made in a source file
/// from a table (see RecordCodec.hpp), or written there.
#define TQ_RECORD(Record)          \
  template <>                      \
  Record decode(JSONView);         \
  template <>                      \
  JSONValue encode(const Record&); \
  template <>                      \
  std::size_t hashOf(const Record&)

}  // namespace tq
