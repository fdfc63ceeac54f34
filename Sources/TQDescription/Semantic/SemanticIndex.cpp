#include "TQDescription/Semantic/SemanticIndex.hpp"

#include <exception>
#include <utility>

#include "TQCore/SafeFile.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/Semantic/CompositeDocument.hpp"
#include "TQDescription/Semantic/EmbeddingMath.hpp"
#include "TQDescription/Semantic/SemanticCache.hpp"
#include "TQPlatform/Digest.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

/// What becomes of one clip: it keeps its entry, or its document goes to the embedder.
struct PlannedClip {
  const std::string& filename;
  std::string contentHash;
  const SemanticEntries::Clip* kept;  ///< null for one that is embedded
};

std::string sha256Hex(std::initializer_list<std::string_view> parts) {
  SHA256 digest;
  for (const std::string_view part : parts)
    digest.update(viewOf(part));
  return digest.finishHex();
}

std::string standardPath(const std::filesystem::path& path) {
  std::string text = std::filesystem::absolute(path).lexically_normal().string();
  if (text.size() > 1 && text.ends_with('/')) text.pop_back();
  return text;
}

/// A model's name as part of a file name.
std::string slugOf(std::string_view model) {
  const std::string name = lowercased(model);
  std::string slug;
  for (const std::string_view character : characters(name))
    slug += isLetterOrNumber(character) ? character : "-";
  return slug;
}

}  // namespace

std::filesystem::path SemanticIndex::cacheURL(const std::filesystem::path& library, std::string_view model,
                                              const std::filesystem::path& folder) {
  constexpr std::size_t digits = 8;
  return folder / (sha256Hex({standardPath(library)}).substr(0, digits) + "-" + slugOf(model) + ".json");
}

std::string SemanticIndex::contentHash(std::string_view model, std::string_view document) {
  return sha256Hex({model, std::string_view("\0", 1), document});
}

SemanticIndex::SemanticIndex(std::string model, std::filesystem::path cacheURL, std::size_t processorCount)
    : model_(std::move(model)),
      cacheURL_(std::move(cacheURL)),
      processorCount_(processorCount),
      entries_(std::make_shared<const SemanticEntries>()) {}

void SemanticIndex::loadCache() {
  const auto held = monitor_.enter();
  SemanticEntries loaded;
  try {
    loaded =
        SemanticCache::parse(textOf(SafeFile::readBounded(cacheURL_, SafeFile::maxAggregateBytes)), processorCount_);
  } catch (const std::exception&) {
    loaded = {};
  }
  entries_ = std::make_shared<const SemanticEntries>(std::move(loaded));
}

std::size_t SemanticIndex::build(const std::vector<DescriptionResult>& results, const TextEmbedder& embedder,
                                 const Progress& progress, std::stop_token stop) {
  std::vector<const DescriptionResult*> pointers;
  pointers.reserve(results.size());
  for (const DescriptionResult& result : results)
    pointers.push_back(&result);
  return build(pointers, embedder, progress, std::move(stop));
}

std::size_t SemanticIndex::build(const std::vector<const DescriptionResult*>& results, const TextEmbedder& embedder,
                                 const Progress& progress, std::stop_token stop) {
  auto held = monitor_.enter();
  const std::shared_ptr<const SemanticEntries> before = entries_;  // whatever steps in while the embedder works
  std::vector<PlannedClip> planned;
  std::vector<std::string> pending;
  for (const DescriptionResult* result : results) {
    std::string document = CompositeDocument::make(*result);
    std::string hash = contentHash(model_, document);
    const SemanticEntries::Clip* known = before->find(result->source.filename);
    if (known && known->contentHash != hash) known = nullptr;
    if (!known) pending.push_back(std::move(document));
    planned.push_back({result->source.filename, std::move(hash), known});
  }

  std::vector<EmbeddingVector> vectors;
  if (!pending.empty()) vectors = held.whileSuspended([&] { return embedder.embed(pending, stop); });
  if (vectors.size() != pending.size())
    throw TQError::providerDecodeFailure("embedder returned " + std::to_string(vectors.size()) + " vectors for " +
                                         std::to_string(pending.size()) + " documents");

  SemanticEntries next;
  next.reserve(before->numberCount() + (vectors.empty() ? 0 : vectors.size() * vectors.front().size()));
  std::size_t done = 0;
  for (PlannedClip& clip : planned) {
    if (clip.kept) {
      next.add(clip.filename, std::move(clip.contentHash), before->vectorOf(*clip.kept));
      continue;
    }
    next.add(clip.filename, std::move(clip.contentHash), vectors[done]);
    vectors[done++] = {};
    if (progress) progress(done, pending.size());
  }
  next.sort();
  entries_ = std::make_shared<const SemanticEntries>(std::move(next));
  SemanticCache::write(cacheURL_, *entries_, processorCount_);
  return pending.size();
}

std::vector<FilenameSimilarity> SemanticIndex::similarities(const EmbeddingVector& query) {
  const auto held = monitor_.enter();
  const double queryNorm = EmbeddingMath::norm(query);
  std::vector<FilenameSimilarity> similarities;
  similarities.reserve(entries_->clips().size());
  for (const SemanticEntries::Clip& clip : entries_->clips()) {
    const double cosine =
        clip.length == query.size()
            ? EmbeddingMath::cosine(EmbeddingMath::dot(query, entries_->vectorOf(clip)), queryNorm, clip.norm)
            : 0;
    similarities.push_back({clip.filename, cosine});
  }
  return similarities;
}

std::size_t SemanticIndex::entryCount() {
  const auto held = monitor_.enter();
  return entries_->clips().size();
}

std::vector<SemanticIndex::Entry> SemanticIndex::entries() {
  const auto held = monitor_.enter();
  std::vector<Entry> copies;
  for (const SemanticEntries::Clip& clip : entries_->clips()) {
    const auto vector = entries_->vectorOf(clip);
    copies.push_back({clip.filename, clip.contentHash, {vector.begin(), vector.end()}});
  }
  return copies;
}

}  // namespace tq
