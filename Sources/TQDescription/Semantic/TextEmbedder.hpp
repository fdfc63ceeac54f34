#pragma once

#include <stop_token>
#include <string>
#include <vector>

namespace tq {

/// The embedding of a text: its meaning as a point, near those of similar meaning. How many numbers it has is the
/// model's choice, and the same for every text.
using EmbeddingVector = std::vector<float>;

/// Turns texts into vectors. Implementations may serve several threads at once.
class TextEmbedder {
 public:
  virtual ~TextEmbedder() = default;

  /// Blocks until there is one vector for each text, in their order. No text at all is answered without work. Throws
  /// `TQError` or `JSONError`; a stop ends it at once with `TQError` or `Cancelled`. There are no partial results.
  virtual std::vector<EmbeddingVector> embed(const std::vector<std::string>& texts, std::stop_token stop) const = 0;
};

}  // namespace tq
