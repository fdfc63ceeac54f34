#include <deque>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>

#include "Support/FileSizeLimit.hpp"
#include "Support/Gate.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/Semantic/EmbeddingMath.hpp"
#include "TQDescription/Semantic/SemanticIndex.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

using test::contentOf;
using test::FileSizeLimit;
using test::Gate;
using test::namesIn;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

using Entry = SemanticIndex::Entry;
using Texts = std::vector<std::string>;

/// An embedder without a service: the vector of a text is its length and 1. It notes every call.
class FakeEmbedder final : public TextEmbedder {
 public:
  std::vector<EmbeddingVector> embed(const std::vector<std::string>& texts, std::stop_token stop) const override {
    {
      const std::lock_guard lock(mutex_);
      calls_.push_back(texts);
    }
    if (gate) gate->pass(stop);
    if (failure) std::rethrow_exception(failure);
    std::vector<EmbeddingVector> vectors;
    for (const std::string& text : texts)
      vectors.push_back({static_cast<float>(text.size()), 1});
    if (vectorCount) vectors.resize(*vectorCount);
    return vectors;
  }

  std::vector<Texts> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }

  Gate* gate = nullptr;                    ///< held up there
  std::exception_ptr failure;              ///< thrown
  std::optional<std::size_t> vectorCount;  ///< instead of one for each text

 private:
  mutable std::mutex mutex_;
  mutable std::vector<Texts> calls_;
};

DescriptionResult clip(const std::string& filename, const std::string& summary) {
  DescriptionResult result;
  result.source.filename = filename;
  result.summary = summary;
  return result;
}

class SemanticIndexTest : public testing::Test {
 protected:
  std::size_t build(const std::vector<DescriptionResult>& results) {
    return index.build(results, embedder, progress, stop.get_token());
  }

  /// The entry that the index should have of a clip.
  Entry entryOf(const std::string& filename, const std::string& summary) const {
    const std::string document = summary.empty() ? "" : "Description: " + summary;
    return {filename, SemanticIndex::contentHash(index.model(), document), {static_cast<float>(document.size()), 1}};
  }

  /// What another index reads from the cache file.
  std::vector<Entry> storedEntries() const {
    SemanticIndex other(index.model(), index.cacheURL());
    other.loadCache();
    return other.entries();
  }

  TemporaryFolder folder;
  SemanticIndex index{"the-model", folder / "cache/c.json"};
  FakeEmbedder embedder;
  SemanticIndex::Progress progress;
  std::stop_source stop;
};

// Names and hashes.

TEST(SemanticIndexNames, ACacheFileIsNamedAfterLibraryAndModel) {
  // printf /clips/summer | sha256sum
  EXPECT_EQ(SemanticIndex::cacheURL("/clips/summer", "nomic-embed-text", "/private"),
            "/private/a776696c-nomic-embed-text.json");
}

TEST(SemanticIndexNames, TheLibrarysPathIsStandardized) {
  const auto name = SemanticIndex::cacheURL("/clips/summer", "m", "/private");
  for (const char* spelling : {"/clips/summer/", "/clips/./summer", "/clips/winter/../summer", "//clips///summer//"})
    EXPECT_EQ(SemanticIndex::cacheURL(spelling, "m", "/private"), name) << spelling;
  EXPECT_NE(SemanticIndex::cacheURL("/clips/Summer", "m", "/private"), name);
  EXPECT_EQ(SemanticIndex::cacheURL("clips", "m", "/p"),
            SemanticIndex::cacheURL(std::filesystem::current_path() / "clips", "m", "/p"));
  EXPECT_EQ(SemanticIndex::cacheURL("/", "m", "/p"), SemanticIndex::cacheURL("/clips/..", "m", "/p"));
}

TEST(SemanticIndexNames, WhatIsNeitherLetterNorNumberInAModelsNameIsOneHyphenEach) {
  const auto slug = [](std::string_view model) {
    const std::string name = SemanticIndex::cacheURL("/", model, "").string();
    return name.substr(9, name.size() - 9 - 5);
  };
  EXPECT_EQ(slug("text-embedding-3-small:v2"), "text-embedding-3-small-v2");
  EXPECT_EQ(slug("Org/Model v1.5"), "org-model-v1-5");
  EXPECT_EQ(slug("a--b::c"), "a--b--c");
  EXPECT_EQ(slug("../../etc"), "------etc");
  EXPECT_EQ(slug("ÜBER-模型-7"), "über-模型-7");
  EXPECT_EQ(slug("a\r\nb"), "a-b");
  EXPECT_EQ(slug("e\u0301😀"), "e\u0301-");
  EXPECT_EQ(slug(std::string_view("a\0b\xff", 4)), "a-b-");
  EXPECT_EQ(slug(""), "");
}

TEST(SemanticIndexNames, TheContentHashIsOfModelAndDocumentWithAZeroByteBetween) {
  // printf 'model\0document' | sha256sum
  EXPECT_EQ(SemanticIndex::contentHash("model", "document"),
            "ed8e589708b005ee737b9936e539544739b6cd20418cb1da9b9583a39894616c");
  EXPECT_NE(SemanticIndex::contentHash("ab", "c"), SemanticIndex::contentHash("a", "bc"));
}

// Building.

TEST_F(SemanticIndexTest, IsMadeEmptyWithoutReadingAnything) {
  folder.write("cache/c.json", R"([{"contentHash":"h","filename":"f","vector":[1]}])");
  EXPECT_EQ(index.entryCount(), 0u);
  EXPECT_THAT(index.similarities({1, 2}), IsEmpty());
}

TEST_F(SemanticIndexTest, EmbedsAllClipsInOneCallAndKeepsThem) {
  EXPECT_EQ(build({clip("b.mov", "two"), clip("a.mov", "one more")}), 2u);
  EXPECT_THAT(embedder.calls(), ElementsAre(Texts{"Description: two", "Description: one more"}));
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("a.mov", "one more"), entryOf("b.mov", "two")));
  EXPECT_EQ(storedEntries(), index.entries());
}

TEST_F(SemanticIndexTest, AnUnchangedLibraryAsksForNothing) {
  const std::vector<DescriptionResult> results{clip("a.mov", "one"), clip("b.mov", "two")};
  build(results);
  EXPECT_EQ(build(results), 0u);
  EXPECT_THAT(embedder.calls(), SizeIs(1));
  EXPECT_THAT(index.entries(), SizeIs(2));
}

TEST_F(SemanticIndexTest, AStoredVectorOutlivesTheProgram) {
  build({clip("a.mov", "one")});
  SemanticIndex next("the-model", index.cacheURL());
  next.loadCache();
  EXPECT_EQ(next.build(std::vector{clip("a.mov", "one")}, embedder, {}, {}), 0u);
  EXPECT_EQ(next.entries(), index.entries());
}

TEST_F(SemanticIndexTest, OnlyTheTextDecidesWhetherAClipIsEmbeddedAgain) {
  DescriptionResult result = clip("a.mov", "one");
  build({result});
  result.source.describedAt += std::chrono::hours(1);
  result.source.fileSizeBytes = 7;
  result.engine.model = "another vision model";
  EXPECT_EQ(build({result}), 0u);
  result.summary = "other";
  EXPECT_EQ(build({result}), 1u);
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("a.mov", "other")));
}

TEST_F(SemanticIndexTest, EmbedsOnlyTheClipsThatChanged) {
  build({clip("a.mov", "one"), clip("b.mov", "two"), clip("c.mov", "three")});
  EXPECT_EQ(build({clip("a.mov", "one"), clip("b.mov", "new"), clip("c.mov", "three"), clip("d.mov", "four")}), 2u);
  EXPECT_THAT(embedder.calls().back(), ElementsAre("Description: new", "Description: four"));
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("a.mov", "one"), entryOf("b.mov", "new"), entryOf("c.mov", "three"),
                                           entryOf("d.mov", "four")));
}

TEST_F(SemanticIndexTest, ClipsThatAreGoneDropOut) {
  build({clip("a.mov", "one"), clip("b.mov", "two")});
  EXPECT_EQ(build({clip("b.mov", "two")}), 0u);
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("b.mov", "two")));
  EXPECT_EQ(storedEntries(), index.entries());
}

TEST_F(SemanticIndexTest, ARenamedClipIsEmbeddedAgain) {
  build({clip("a.mov", "one")});
  EXPECT_EQ(build({clip("b.mov", "one")}), 1u);
}

TEST_F(SemanticIndexTest, AnEmptyListEmptiesTheIndexAndWritesAnEmptyList) {
  build({clip("a.mov", "one")});
  EXPECT_EQ(build({}), 0u);
  EXPECT_EQ(index.entryCount(), 0u);
  EXPECT_EQ(contentOf(index.cacheURL()), "[]");
  EXPECT_THAT(embedder.calls(), SizeIs(1));
}

TEST_F(SemanticIndexTest, AClipWithNothingToSayIsEmbeddedAllTheSame) {
  EXPECT_EQ(build({clip("a.mov", "")}), 1u);
  EXPECT_THAT(embedder.calls(), ElementsAre(Texts{""}));
  EXPECT_EQ(build({clip("a.mov", "")}), 0u);
}

TEST_F(SemanticIndexTest, AnotherModelHasAnotherFileAndEmbedsEveryClipAnew) {
  const auto urlOf = [&](const char* model) { return SemanticIndex::cacheURL("/clips", model, folder.path()); };
  SemanticIndex one("model-1", urlOf("model-1"));
  SemanticIndex two("model-2", urlOf("model-2"));
  const std::vector results{clip("a.mov", "one")};
  EXPECT_EQ(one.build(results, embedder, {}, {}), 1u);
  two.loadCache();
  EXPECT_EQ(two.build(results, embedder, {}, {}), 1u);
  EXPECT_THAT(namesIn(folder.path()), SizeIs(2));
}

TEST_F(SemanticIndexTest, EntriesOfAnotherModelInItsFileAreEmbeddedAnew) {
  SemanticIndex other("other-model", index.cacheURL());
  other.build(std::vector{clip("a.mov", "one")}, embedder, {}, {});
  index.loadCache();
  EXPECT_EQ(index.entryCount(), 1u);
  EXPECT_EQ(build({clip("a.mov", "one")}), 1u);
}

TEST_F(SemanticIndexTest, OfEqualFilenamesTheLaterClipStays) {
  EXPECT_EQ(build({clip("a.mov", "one"), clip("a.mov", "two")}), 2u);
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("a.mov", "two")));
  // Now the first is pending and the second is kept, and then the other way round.
  EXPECT_EQ(build({clip("a.mov", "one"), clip("a.mov", "two")}), 1u);
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("a.mov", "two")));
  EXPECT_EQ(build({clip("a.mov", "two"), clip("a.mov", "three")}), 1u);
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("a.mov", "three")));
}

TEST_F(SemanticIndexTest, TakesRecordsThatLieElsewhere) {
  const DescriptionResult one = clip("a.mov", "one");
  const DescriptionResult two = clip("b.mov", "two");
  const std::vector<const DescriptionResult*> results{&one, &two};
  EXPECT_EQ(index.build(results, embedder, {}, {}), 2u);
  EXPECT_EQ(build({one, two}), 0u);
}

TEST_F(SemanticIndexTest, ReportsEveryClipThatWasEmbedded) {
  std::vector<std::pair<std::size_t, std::size_t>> reports;
  progress = [&](std::size_t done, std::size_t total) { reports.emplace_back(done, total); };
  build({clip("a.mov", "one")});
  EXPECT_THAT(reports, ElementsAre(Pair(1, 1)));
  reports.clear();
  build({clip("a.mov", "one"), clip("b.mov", "two"), clip("c.mov", "three"), clip("c.mov", "four")});
  EXPECT_THAT(reports, ElementsAre(Pair(1, 3), Pair(2, 3), Pair(3, 3)));
  reports.clear();
  build({clip("a.mov", "one")});
  EXPECT_THAT(reports, IsEmpty());
}

// Failures.

TEST_F(SemanticIndexTest, AFailedEmbedderLeavesEntriesAndFileAsTheyWere) {
  build({clip("a.mov", "one")});
  const std::vector<Entry> before = index.entries();
  const std::string file = contentOf(index.cacheURL());
  embedder.failure = std::make_exception_ptr(TQError::providerTransport("down"));
  try {
    build({clip("a.mov", "changed"), clip("b.mov", "two")});
    FAIL();
  } catch (const TQError& error) {
    EXPECT_EQ(error, TQError::providerTransport("down"));
  }
  EXPECT_EQ(index.entries(), before);
  EXPECT_EQ(contentOf(index.cacheURL()), file);
}

TEST_F(SemanticIndexTest, AWrongNumberOfVectorsChangesNothing) {
  build({clip("a.mov", "one")});
  const std::vector<Entry> before = index.entries();
  const std::string file = contentOf(index.cacheURL());
  const std::vector results{clip("1", "1"), clip("2", "2"), clip("3", "3"), clip("4", "4")};
  for (const std::size_t count : {3, 5, 0}) {
    embedder.vectorCount = count;
    try {
      build(results);
      FAIL() << count;
    } catch (const TQError& error) {
      EXPECT_EQ(error, TQError::providerDecodeFailure("embedder returned " + std::to_string(count) +
                                                      " vectors for 4 documents"));
    }
  }
  EXPECT_EQ(index.entries(), before);
  EXPECT_EQ(contentOf(index.cacheURL()), file);
}

TEST_F(SemanticIndexTest, AFileThatCannotBeWrittenIsAnErrorButTheEntriesAreNew) {
  folder.write("cache", "a file in place of the folder");
  EXPECT_THROW(build({clip("a.mov", "one")}), SystemError);
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("a.mov", "one")));
}

TEST_F(SemanticIndexTest, AFullDiskLeavesTheOldFileWhole) {
  build({clip("a.mov", "one")});
  const std::string file = contentOf(index.cacheURL());
  std::vector<DescriptionResult> results;
  for (int number = 0; number < 100; ++number)
    results.push_back(clip("clip " + std::to_string(number), "text"));
  {
    const FileSizeLimit limit(4096);
    EXPECT_THROW(build(results), SystemError);
  }
  EXPECT_EQ(index.entryCount(), 100u);
  EXPECT_EQ(contentOf(index.cacheURL()), file);
}

TEST_F(SemanticIndexTest, ANumberThatIsNotFiniteCannotBeStored) {
  class Infinite final : public TextEmbedder {
    std::vector<EmbeddingVector> embed(const std::vector<std::string>& texts, std::stop_token) const override {
      return std::vector<EmbeddingVector>(texts.size(), {HUGE_VALF, 1});
    }
  };
  EXPECT_THROW(index.build(std::vector{clip("a.mov", "one")}, Infinite(), {}, {}), JSONError);
  EXPECT_FALSE(fileExists(index.cacheURL()));
  EXPECT_THAT(index.similarities({1, 1}), ElementsAre(FilenameSimilarity{"a.mov", 0}));
}

TEST_F(SemanticIndexTest, ACancelDuringTheEmbeddingChangesNothing) {
  build({clip("a.mov", "one")});
  const std::vector<Entry> before = index.entries();
  Gate gate;
  embedder.gate = &gate;
  std::exception_ptr thrown;
  std::jthread builder([&] {
    try {
      build({clip("b.mov", "two")});
    } catch (const Cancelled&) {
      thrown = std::current_exception();
    }
  });
  gate.waitForArrivals(1);
  stop.request_stop();
  builder.join();
  EXPECT_TRUE(thrown);
  EXPECT_EQ(index.entries(), before);
  EXPECT_EQ(storedEntries(), before);
}

// Similarities.

TEST_F(SemanticIndexTest, ComparesAQueryWithEveryEntryInTheOrderOfTheFilenames) {
  build({clip("b.mov", "two"), clip("a.mov", "a longer text"), clip("c.mov", "")});
  const EmbeddingVector query{0.25F, -3};
  const std::vector<FilenameSimilarity> similarities = index.similarities(query);
  const std::vector<Entry> entries = index.entries();
  ASSERT_EQ(similarities.size(), entries.size());
  for (std::size_t place = 0; place < entries.size(); ++place)
    EXPECT_EQ(similarities[place],
              (FilenameSimilarity{entries[place].filename, EmbeddingMath::cosine(query, entries[place].vector)}));
  EXPECT_THAT(index.similarities({7, 0, 0}), ElementsAre(FilenameSimilarity{"a.mov", 0}, FilenameSimilarity{"b.mov", 0},
                                                         FilenameSimilarity{"c.mov", 0}));
}

TEST_F(SemanticIndexTest, AVectorOfAnotherLengthIsLikeNothing) {
  folder.write("cache/c.json",
               R"([{"contentHash":"h","filename":"a","vector":[1,0]},{"contentHash":"h","filename":"b",)"
               R"("vector":[1]},{"contentHash":"h","filename":"c","vector":[]}])");
  index.loadCache();
  EXPECT_THAT(index.similarities({2, 0}),
              ElementsAre(FilenameSimilarity{"a", 1}, FilenameSimilarity{"b", 0}, FilenameSimilarity{"c", 0}));
  EXPECT_THAT(index.similarities({}), testing::Each(testing::Field(&FilenameSimilarity::similarity, 0.0)));
}

// The cache file.

TEST_F(SemanticIndexTest, AMissingFileIsAnEmptyIndex) {
  index.loadCache();
  EXPECT_EQ(index.entryCount(), 0u);
}

TEST_F(SemanticIndexTest, LoadingReplacesWhatWasThere) {
  build({clip("a.mov", "one")});
  folder.write("cache/c.json", R"([{"contentHash":"h","filename":"z","vector":[1]}])");
  index.loadCache();
  EXPECT_THAT(index.entries(), ElementsAre(Entry{"z", "h", {1}}));
  std::filesystem::remove(index.cacheURL());
  index.loadCache();
  EXPECT_EQ(index.entryCount(), 0u);
}

TEST_F(SemanticIndexTest, ATruncatedFileLeadsToAnEmptyIndexAndAFullRebuild) {
  const std::vector results{clip("a.mov", "one"), clip("b.mov", "two")};
  build(results);
  const std::string whole = contentOf(index.cacheURL());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    folder.write("cache/c.json", std::string_view(whole).substr(0, length));
    index.loadCache();
    ASSERT_EQ(index.entryCount(), 0u) << length;
  }
  EXPECT_EQ(build(results), 2u);
  EXPECT_EQ(contentOf(index.cacheURL()), whole);
}

TEST_F(SemanticIndexTest, ADamagedFileLeavesNothingOfItself) {
  folder.write("cache/c.json",
               R"([{"contentHash":"h","filename":"a","vector":[1]},{"contentHash":"h","filename":"b"}])");
  index.loadCache();
  EXPECT_EQ(index.entryCount(), 0u);
}

TEST_F(SemanticIndexTest, AFolderInPlaceOfTheFileIsAnEmptyIndex) {
  std::filesystem::create_directories(index.cacheURL());
  index.loadCache();
  EXPECT_EQ(index.entryCount(), 0u);
}

TEST_F(SemanticIndexTest, AFileBeyondTheLimitIsNotReadAndOneOfExactlyTheLimitIs) {
  const std::string list = R"([{"contentHash":"h","filename":"a","vector":[1]}])";
  const auto limit = static_cast<std::size_t>(SafeFile::maxAggregateBytes);
  folder.write("cache/c.json", list + std::string(limit + 1 - list.size(), ' '));
  index.loadCache();
  EXPECT_EQ(index.entryCount(), 0u);
  std::filesystem::resize_file(index.cacheURL(), limit);
  index.loadCache();
  EXPECT_EQ(index.entryCount(), 1u);
}

// Concurrency.

TEST_F(SemanticIndexTest, WhileClipsAreEmbeddedSearchesSeeTheOldEntries) {
  build({clip("a.mov", "one")});
  Gate gate;
  embedder.gate = &gate;
  std::jthread builder([&] { build({clip("b.mov", "two"), clip("c.mov", "three")}); });
  gate.waitForArrivals(1);
  EXPECT_THAT(index.similarities(entryOf("a.mov", "one").vector), SizeIs(1));
  EXPECT_EQ(index.similarities({1, 1}).front().filename, "a.mov");
  EXPECT_EQ(index.entryCount(), 1u);
  gate.open();
  builder.join();
  EXPECT_EQ(index.entryCount(), 2u);
}

TEST_F(SemanticIndexTest, ABuildKeepsWhatItFoundAtItsStartWhateverStepsIn) {
  build({clip("a.mov", "one")});
  Gate gate;
  embedder.gate = &gate;
  std::jthread first([&] { build({clip("a.mov", "one"), clip("b.mov", "two")}); });
  gate.waitForArrivals(1);
  const FakeEmbedder quick;
  index.build(std::vector{clip("c.mov", "three")}, quick, {}, {});
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("c.mov", "three")));
  gate.open();
  first.join();
  EXPECT_THAT(index.entries(), ElementsAre(entryOf("a.mov", "one"), entryOf("b.mov", "two")));
  EXPECT_EQ(storedEntries(), index.entries());
}

TEST_F(SemanticIndexTest, ManyThreadsMaySearchLoadAndBuildAtOnce) {
  const std::vector results{clip("a.mov", "one"), clip("b.mov", "two")};
  build(results);
  std::vector<std::jthread> threads;
  for (int number = 0; number < 4; ++number)
    threads.emplace_back([&, number] {
      for (int round = 0; round < 25; ++round) {
        if (number == 0) build(results);
        if (number == 1) index.loadCache();
        EXPECT_THAT(index.similarities({1, 1}), SizeIs(2));
      }
    });
  threads.clear();
  EXPECT_THAT(index.entries(), SizeIs(2));
}

}  // namespace
}  // namespace tq
