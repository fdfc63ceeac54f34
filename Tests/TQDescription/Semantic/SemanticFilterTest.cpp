#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/Library/LibraryClips.hpp"
#include "TQDescription/Library/LibraryModel.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

using test::hitsOf;
using test::indexed;
using test::sidecarOf;
using test::stemsOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t limit = 500;
constexpr double weight = 0.5;

/// Answers every text as `answer` does, and remembers what it was asked.
class ScriptedEmbedder final : public TextEmbedder {
 public:
  using Answer = std::function<std::vector<EmbeddingVector>(const std::vector<std::string>& texts)>;

  explicit ScriptedEmbedder(Answer answer) : answer_(std::move(answer)) {}

  std::vector<EmbeddingVector> embed(const std::vector<std::string>& texts, std::stop_token) const override {
    asked_.push_back(texts);
    return answer_(texts);
  }

  const std::vector<std::vector<std::string>>& asked() const { return asked_; }

 private:
  Answer answer_;
  mutable std::vector<std::vector<std::string>> asked_;
};

/// Two dimensions of meaning: what has to do with the sea, and what has not.
EmbeddingVector meaningOf(const std::string& text) {
  const bool wet = text.find("Waves") != std::string::npos || text.find("boat") != std::string::npos;
  return wet ? EmbeddingVector{1, 0} : EmbeddingVector{0, 1};
}

std::vector<EmbeddingVector> meanings(const std::vector<std::string>& texts) {
  std::vector<EmbeddingVector> vectors;
  for (const std::string& text : texts)
    vectors.push_back(meaningOf(text));
  return vectors;
}

class SemanticFilter : public testing::Test {
 protected:
  static std::vector<LoadedSidecar> library() {
    return {sidecarOf("a", "waves.mov", "Waves at dusk.", {"sea"}), sidecarOf("b", "boat.mov", "A boat."),
            sidecarOf("c", "alley.mov", "An alley at dusk."), sidecarOf("d", "waves.mov", "Waves again.")};
  }

  void buildIndex() {
    std::vector<const DescriptionResult*> records;
    for (const LoadedSidecar& sidecar : sidecars_)
      records.push_back(&*sidecar.result);
    index_.build(records, ScriptedEmbedder(meanings), nullptr, {});
  }

  std::vector<LibraryMatch> found(std::string_view query, const TextEmbedder& embedder,
                                  const FacetSelection& facets = {}, std::size_t most = limit) {
    return LibraryModel::filter(sidecars_, query, facets, most, &index_, &embedder, weight, {});
  }

  std::vector<LibraryMatch> foundByWords(std::string_view query) {
    return LibraryModel::filter(sidecars_, query, {}, limit);
  }

  const test::TemporaryFolder folder_;
  const std::vector<LoadedSidecar> sidecars_ = library();
  SemanticIndex index_{"model", folder_ / "cache.json"};
  const ScriptedEmbedder sea_{[](const auto&) { return std::vector<EmbeddingVector>{{1, 0}}; }};
};

TEST_F(SemanticFilter, FindsByMeaningWhatNoWordLeadsTo) {
  buildIndex();
  const auto matches = found("ocean", sea_);
  EXPECT_THAT(stemsOf(matches), ElementsAre("b", "a"));
  for (const LibraryMatch& match : matches) {
    EXPECT_EQ(match.hit.score, 0.5) << "half of a perfect similarity";
    EXPECT_THAT(match.hit.matchedTerms, IsEmpty());
  }
}

TEST_F(SemanticFilter, BlendsWordsAndMeaningAsTheSearchEngineDoes) {
  buildIndex();
  for (const char* query : {"dusk", "boat dusk", "ocean", "the", "flagged:false dusk"}) {
    const auto similarities = index_.similarities({1, 0});
    EXPECT_EQ(hitsOf(found(query, sea_)),
              SearchEngine::hybridSearch(query, indexed(sidecars_), similarities, weight, 0.2, {}, limit))
        << query;
  }
}

TEST_F(SemanticFilter, LeavesOutWhatIsNotNearEnough) {
  buildIndex();
  const auto with = [&](double cosine) {
    const auto sine = static_cast<float>(std::sqrt(1 - cosine * cosine));
    const ScriptedEmbedder embedder([&](const auto&) {
      return std::vector<EmbeddingVector>{{static_cast<float>(cosine), -sine}};
    });
    return stemsOf(found("ocean", embedder));
  };
  EXPECT_THAT(with(0.20001), ElementsAre("b", "a"));
  EXPECT_THAT(with(0.19999), IsEmpty());
}

TEST_F(SemanticFilter, AsksForTheTrimmedQueryAlone) {
  buildIndex();
  found("  the ocean\n", sea_);
  EXPECT_THAT(sea_.asked(), ElementsAre(ElementsAre("the ocean")));
}

TEST_F(SemanticFilter, ShowsTheFirstSidecarOfAName) {
  buildIndex();
  // Both clips named waves.mov score alike, so words say nothing here, and the names decide.
  EXPECT_THAT(stemsOf(found("waves", sea_)), ElementsAre("b", "a"));
}

TEST_F(SemanticFilter, NarrowsByFacetsAndKeepsTheFirstHits) {
  buildIndex();
  EXPECT_THAT(stemsOf(found("ocean", sea_, {{FacetField::theme, {"Sea"}}})), ElementsAre("a"));
  EXPECT_THAT(stemsOf(found("ocean", sea_, {}, 1)), ElementsAre("b"));
  EXPECT_THAT(found("ocean", sea_, {}, 0), IsEmpty());
}

TEST_F(SemanticFilter, SearchesByWordsWhileTheIndexHasNoEntries) {
  EXPECT_EQ(found("dusk", sea_), foundByWords("dusk"));
  EXPECT_THAT(found("ocean", sea_), IsEmpty());
  EXPECT_THAT(sea_.asked(), IsEmpty());
}

TEST_F(SemanticFilter, SearchesByWordsWithoutAnIndexOrAnEmbedder) {
  buildIndex();
  EXPECT_EQ(LibraryModel::filter(sidecars_, "dusk", {}, limit, nullptr, &sea_, weight, {}), foundByWords("dusk"));
  EXPECT_EQ(LibraryModel::filter(sidecars_, "dusk", {}, limit, &index_, nullptr, weight, {}), foundByWords("dusk"));
  EXPECT_EQ(LibraryModel::filter(sidecars_, "dusk", {}, limit, nullptr, nullptr, weight, {}), foundByWords("dusk"));
  EXPECT_THAT(sea_.asked(), IsEmpty());
}

TEST_F(SemanticFilter, AsksNothingForAnEmptyQuery) {
  buildIndex();
  EXPECT_THAT(found(" \n", sea_), IsEmpty());
  EXPECT_THAT(stemsOf(found(" \n", sea_, {{FacetField::theme, {"sea"}}})), ElementsAre("a"));
  EXPECT_THAT(found(" \n", sea_, {{FacetField::theme, {}}}), IsEmpty());
  EXPECT_THAT(sea_.asked(), IsEmpty());
}

TEST_F(SemanticFilter, SearchesByWordsWhenTheEmbedderFails) {
  buildIndex();
  const std::vector<ScriptedEmbedder::Answer> failures{
      [](const auto&) -> std::vector<EmbeddingVector> { throw TQError::providerTransport("no route"); },
      [](const auto&) -> std::vector<EmbeddingVector> { throw JSONError("no valid JSON"); },
      [](const auto&) -> std::vector<EmbeddingVector> { throw std::bad_alloc(); },
      [](const auto&) { return std::vector<EmbeddingVector>(); },
      [](const auto&) { return std::vector<EmbeddingVector>{{}}; },
      [](const auto&) {
        return std::vector<EmbeddingVector>{{}, {1, 0}};
      },
  };
  for (const ScriptedEmbedder::Answer& failure : failures) {
    const ScriptedEmbedder embedder(failure);
    EXPECT_EQ(found("dusk", embedder), foundByWords("dusk"));
    EXPECT_EQ(embedder.asked().size(), 1u);
  }
}

TEST_F(SemanticFilter, TakesAVectorOfAnotherLengthForOneThatIsNearNothing) {
  buildIndex();
  const ScriptedEmbedder embedder([](const auto&) { return std::vector<EmbeddingVector>{{1, 0, 0}}; });
  EXPECT_THAT(found("ocean", embedder), IsEmpty());
  EXPECT_THAT(stemsOf(found("alley", embedder)), ElementsAre("c"));
}

TEST_F(SemanticFilter, LetsCancellationThrough) {
  buildIndex();
  const ScriptedEmbedder embedder([](const auto&) -> std::vector<EmbeddingVector> { throw Cancelled(); });
  EXPECT_THROW(found("dusk", embedder), Cancelled);
}

TEST_F(SemanticFilter, TakesAFailureAfterAStopRequestForCancellation) {
  buildIndex();
  std::stop_source source;
  const PreparedLibrary prepared(sidecars_, 1, {});
  const ScriptedEmbedder embedder([&](const auto&) -> std::vector<EmbeddingVector> {
    source.request_stop();
    throw TQError::providerTransport("the request was cancelled");
  });
  EXPECT_THROW(prepared.filter("dusk", {}, limit, &index_, &embedder, weight, source.get_token()), Cancelled);
}

TEST_F(SemanticFilter, LimitsTheWeightToItsRange) {
  buildIndex();
  const PreparedLibrary prepared(sidecars_, 1, {});
  const auto withWeight = [&](double some) { return prepared.filter("dusk", {}, limit, &index_, &sea_, some, {}); };
  EXPECT_EQ(withWeight(2), withWeight(1));
  EXPECT_EQ(withWeight(-1), withWeight(0));
  EXPECT_NE(withWeight(1), withWeight(0));
}

}  // namespace
}  // namespace tq
