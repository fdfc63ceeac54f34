#include "TQPlatform/JSON/JSONDocument.hpp"

#include "TQPlatform/JSON/JSONReader.hpp"
#include "TQPlatform/JSON/JSONTape.hpp"

namespace tq {

struct JSONDocument::State {
  JSONTape tape;
  JSONValue value;  ///< of a text that the tape does not take
};

JSONDocument::JSONDocument() : state_(std::make_unique<State>()) {}
JSONDocument::~JSONDocument() = default;

JSONView JSONDocument::read(std::string_view text) {
  if (const auto element = state_->tape.read(text)) return JSONView::OnTape::view(*element);
  state_->value = readJSONPatiently(text);
  return state_->value;
}

}  // namespace tq
