#pragma once

#include <memory>
#include <string_view>

#include "TQPlatform/JSON/JSONView.hpp"

namespace tq {

/// A JSON text that has been read without making a value of each of its parts; for many texts in a row, whose parts
/// end up in records anyway.
class JSONDocument {
 public:
  JSONDocument();
  ~JSONDocument();
  JSONDocument(const JSONDocument&) = delete;
  JSONDocument& operator=(const JSONDocument&) = delete;

  /// Reads another text, with the memory of the one before. The view is good until the next call. Accepts and refuses
  /// what `parseJSON` does, with the same `JSONError`s.
  JSONView read(std::string_view text);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tq
