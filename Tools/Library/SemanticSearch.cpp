#include "Tools/Library/SemanticSearch.hpp"

#include <memory>
#include <optional>

#include "TQCore/TQError.hpp"
#include "TQDescription/Library/LibraryModel.hpp"
#include "TQDescription/Library/LibraryTexts.hpp"
#include "TQDescription/Semantic/SemanticIndex.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQVision/ConfiguredEmbedder.hpp"

namespace tq::library {

namespace {

/// How much of a score is meaning.
constexpr double semanticWeight = 0.5;

/// An embedder that remembers why it failed: a search goes on with the words alone then, and never says so itself.
class WatchedEmbedder final : public TextEmbedder {
 public:
  explicit WatchedEmbedder(std::shared_ptr<const TextEmbedder> embedder) : embedder_(std::move(embedder)) {}

  std::vector<EmbeddingVector> embed(const std::vector<std::string>& texts, std::stop_token stop) const override {
    try {
      return embedder_->embed(texts, stop);
    } catch (const std::exception& error) {
      failure_ = userFacingDescription(error);
      throw;
    }
  }

  const std::optional<std::string>& failure() const { return failure_; }

 private:
  std::shared_ptr<const TextEmbedder> embedder_;
  mutable std::optional<std::string> failure_;
};

/// Brings the index up to date.
void update(SemanticIndex& index, const Clips& clips, const TextEmbedder& embedder, const Environment& environment,
            const std::stop_token& stop) {
  std::vector<const DescriptionResult*> records;
  for (const LoadedSidecar& sidecar : clips.sidecars)
    records.push_back(&*sidecar.result);
  index.loadCache();
  const std::size_t embedded = index.build(records, embedder, {}, stop);
  if (embedded > 0) note(environment, "Embedded " + LibraryTexts::counted(embedded, "description"));
}

}  // namespace

SemanticMatches searchByMeaning(const Clips& clips, const Options& options, std::size_t limit,
                                const Environment& environment, const std::stop_token& stop) {
  const AppSettings settings = applyOptions(SettingsStore(environment.paths).load(), options);
  const SecretsStore secrets(environment.paths.secretsURL(), std::make_shared<FileLockRegistry>());
  const WatchedEmbedder embedder(configuredEmbedder(settings, secrets, environment.openSession(), environment.clock));
  SemanticIndex index(
      settings.embeddingModel,
      SemanticIndex::cacheURL(clips.folder, settings.embeddingModel, environment.paths.semanticIndexDirectory()),
      environment.processorCount);
  std::optional<std::string> failure;
  try {
    update(index, clips, embedder, environment, stop);
  } catch (const TQError& error) {
    failure = error.description();
  } catch (const std::exception& error) {
    throwIfStopped(stop);
    // The index itself is up to date then.
    if (!embedder.failure())
      complain(environment, "The vectors cannot be kept for the next time: " + userFacingDescription(error));
  }
  throwIfStopped(stop);
  SemanticMatches found;
  found.matches = LibraryModel::filter(clips.sidecars, options.query, options.facets, limit, &index, &embedder,
                                       semanticWeight, stop);
  throwIfStopped(stop);
  if (!failure) failure = embedder.failure();
  if (failure)
    complain(environment, "Only the words were searched, not the meaning. The embedding service failed: " + *failure);
  found.isWhole = !failure;
  return found;
}

}  // namespace tq::library
