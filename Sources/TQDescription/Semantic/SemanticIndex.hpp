#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQDescription/Search/FilenameSimilarity.hpp"
#include "TQDescription/Semantic/SemanticEntries.hpp"
#include "TQDescription/Semantic/TextEmbedder.hpp"
#include "TQPlatform/Concurrency/Monitor.hpp"

namespace tq {

/// The vectors of a library's clips for one embedding model, kept in one cache file, so that only clips whose
/// description changed are embedded again. A serial object: any thread may call it, and its operations never overlap;
/// only while `build` waits for the embedder do others step in.
class SemanticIndex {
 public:
  struct Entry {
    std::string filename;     ///< `source.filename` of the clip
    std::string contentHash;  ///< of the model and the text that was embedded
    EmbeddingVector vector;   ///< as the embedder returned it

    bool operator==(const Entry&) const = default;
  };

  /// How many of the clips that had to be embedded are done, of how many.
  using Progress = std::function<void(std::size_t done, std::size_t total)>;

  /// The cache file in `folder` for that library and model: "1a2b3c4d-nomic-embed-text.json".
  static std::filesystem::path cacheURL(const std::filesystem::path& library, std::string_view model,
                                        const std::filesystem::path& folder);

  /// 64 lower-case hexadecimal digits.
  static std::string contentHash(std::string_view model, std::string_view document);

  /// An empty index. Reads nothing. `processorCount` threads share the work of reading and writing the file.
  SemanticIndex(std::string model, std::filesystem::path cacheURL, std::size_t processorCount = 1);

  const std::string& model() const { return model_; }
  const std::filesystem::path& cacheURL() const { return cacheURL_; }

  /// Replaces the entries by those of the cache file. A file that is missing, too large (see `SafeFile`) or damaged in
  /// whatever way leaves the index empty: it is only a cache.
  void loadCache();

  /// Makes the index hold exactly the clips of `results`, and writes the cache file. The clips without an entry for
  /// their present text are embedded, all in one call, and their number is returned; of equal filenames the later one
  /// stays. `progress` may be empty; it must not call the index.
  ///
  /// Throws what the embedder throws, and `TQError::providerDecodeFailure` when it returned another number of vectors:
  /// entries and file are as before then. When the file cannot be written (`SystemError`, or `JSONError` for what JSON
  /// cannot hold) the entries are the new ones all the same.
  std::size_t build(const std::vector<DescriptionResult>& results, const TextEmbedder& embedder,
                    const Progress& progress, std::stop_token stop);

  /// The same over records that lie elsewhere; they must not change until this returns.
  std::size_t build(const std::vector<const DescriptionResult*>& results, const TextEmbedder& embedder,
                    const Progress& progress, std::stop_token stop);

  /// Every entry with its nearness to `query`, in the order of the filenames; 0 for a vector of another length.
  std::vector<FilenameSimilarity> similarities(const EmbeddingVector& query);

  std::size_t entryCount();

  /// A copy of all entries, in the order of the filenames.
  std::vector<Entry> entries();

 private:
  Monitor monitor_;
  const std::string model_;
  const std::filesystem::path cacheURL_;
  const std::size_t processorCount_;
  std::shared_ptr<const SemanticEntries> entries_;  ///< never null; replaced as a whole
};

}  // namespace tq
