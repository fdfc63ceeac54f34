#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "LibraryHarness.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using tools::allDone;
using tools::notAllDone;

/// Two clips and a server that embeds: "a" lies near the query, "b" far from it.
class LibrarySemantic : public testing::Test, public LibraryHarness {
 protected:
  LibrarySemantic() {
    fs::create_directory(library());
    add(description("a.mov", "People around a campfire."));
    add(description("b.mov", "An empty motorway."));
  }

  /// The answer of a server of the openai kind to texts with these vectors.
  static std::string vectors(const std::vector<std::string>& vectors) {
    std::string data;
    for (std::size_t index = 0; index < vectors.size(); ++index)
      data += (index > 0 ? ", " : "") + std::string(R"({"index": )") + std::to_string(index) + R"(, "embedding": )" +
              vectors[index] + "}";
    return "{\"data\": [" + data + "]}";
  }

  /// Answers for both descriptions, in the order of their paths, and for the query.
  void expectDescriptionsAndQuery() const {
    session->answer(200, vectors({"[1, 0]", "[0, 1]"}));
    session->answer(200, vectors({"[1, 0.1]"}));
  }

  tools::ExitStatus search(const std::string& query = "cooking outdoors", std::vector<std::string> more = {}) {
    more.insert(more.begin(), {query, "--semantic", "--embedder", "openai", "--model", "m"});
    return run("search", more);
  }

  /// The texts that each request so far asked for.
  std::vector<std::size_t> textsAsked() const {
    std::vector<std::size_t> counts;
    for (const auto& call : session->calls())
      counts.push_back(parseJSON(*call.request.body).find("input")->asArray()->size());
    return counts;
  }
};

TEST_F(LibrarySemantic, AClipIsFoundByItsMeaning) {
  expectDescriptionsAndQuery();
  EXPECT_EQ(search(), allDone);
  EXPECT_EQ(out.str(), "100%\ta.mov\t0:10\t\tPeople around a campfire.\n");
  EXPECT_EQ(errors.str(), "Embedded 2 descriptions\n2 clips · 0 flagged · 0 need review · 1 of 2 match\n");
  EXPECT_THAT(textsAsked(), ElementsAre(2, 1));
}

TEST_F(LibrarySemantic, TheSecondSearchEmbedsTheQueryAlone) {
  expectDescriptionsAndQuery();
  search();
  session->answer(200, vectors({"[1, 0]"}));
  EXPECT_EQ(search(), allDone);
  EXPECT_THAT(out.str(), HasSubstr("a.mov"));
  EXPECT_EQ(errors.str(), "2 clips · 0 flagged · 0 need review · 1 of 2 match\n");
  EXPECT_THAT(textsAsked(), ElementsAre(2, 1, 1));
}

TEST_F(LibrarySemantic, OnlyWhatHasChangedIsEmbeddedAgain) {
  expectDescriptionsAndQuery();
  search();
  add(description("b.mov", "A motorway with a camper."));
  session->answer(200, vectors({"[1, 0.5]"}));
  session->answer(200, vectors({"[1, 0]"}));
  EXPECT_EQ(search(), allDone);
  EXPECT_THAT(errors.str(), StartsWith("Embedded 1 description\n"));
  EXPECT_THAT(out.str(), HasSubstr("b.mov"));
}

TEST_F(LibrarySemantic, VectorsStayApartForEachFolderAndModel) {
  expectDescriptionsAndQuery();
  search();
  expectDescriptionsAndQuery();
  EXPECT_EQ(run("search", {"x y", "--semantic", "--embedder", "openai", "--model", "other"}), allDone);
  EXPECT_THAT(namesIn(paths.semanticIndexDirectory()), SizeIs(2));
}

TEST_F(LibrarySemantic, ExportsFollowTheMeaningToo) {
  expectDescriptionsAndQuery();
  const fs::path csv = folder / "out.csv";
  EXPECT_EQ(run("export", {"cooking", "--semantic", "--embedder", "openai", "--csv", csv.string()}), allDone);
  EXPECT_THAT(contentOf(csv), HasSubstr("a.mov,00:00:00:00,00:00:10:00,People around a campfire.\n"));
}

TEST_F(LibrarySemantic, AServiceThatFailsLeavesTheWordsAndIsToldOf) {
  session->answer(401, R"({"error": "no key"})");
  session->answer(401, R"({"error": "no key"})");
  EXPECT_EQ(search("campfire"), notAllDone);
  EXPECT_EQ(out.str(), "100%\ta.mov\t0:10\t\tPeople around a campfire.\n");
  EXPECT_THAT(
      errors.str(),
      StartsWith("tarquel-library: Only the words were searched, not the meaning. The embedding service failed: "));
  EXPECT_THAT(errors.str(), HasSubstr("401"));
}

TEST_F(LibrarySemantic, AServiceThatFailsOnTheQueryAloneIsToldOf) {
  expectDescriptionsAndQuery();
  search();
  session->answer(400, "no");
  EXPECT_EQ(search("motorway"), notAllDone);
  EXPECT_THAT(out.str(), HasSubstr("b.mov"));
  EXPECT_THAT(
      errors.str(),
      StartsWith("tarquel-library: Only the words were searched, not the meaning. The embedding service failed: "));
}

TEST_F(LibrarySemantic, AWrongNumberOfVectorsIsToldOf) {
  session->answer(200, vectors({"[1, 0]"}));
  EXPECT_EQ(search("campfire"), notAllDone);
  EXPECT_THAT(errors.str(), HasSubstr("Only the words were searched, not the meaning. The embedding service failed: "));
}

TEST_F(LibrarySemantic, VectorsThatCannotBeKeptSpoilNoSearch) {
  folder.write("private/tarquel/semantic-index", "a file in the way");
  expectDescriptionsAndQuery();
  EXPECT_EQ(search(), allDone);
  EXPECT_THAT(out.str(), HasSubstr("a.mov"));
  EXPECT_THAT(errors.str(), StartsWith("tarquel-library: The vectors cannot be kept for the next time: "));
}

TEST_F(LibrarySemantic, WithoutAQueryNothingIsAsked) {
  EXPECT_EQ(run("search", {"--semantic"}), allDone);
  EXPECT_EQ(run("search", {"--semantic", "--facet", "theme=city"}), allDone);
  EXPECT_THAT(session->calls(), IsEmpty());
}

TEST_F(LibrarySemantic, WithoutTheOptionNothingIsAsked) {
  AppSettings settings;
  settings.embeddingsEnabled = true;
  SettingsStore(paths).save(settings);
  EXPECT_EQ(run("search", {"campfire"}), allDone);
  EXPECT_THAT(session->calls(), IsEmpty());
}

TEST_F(LibrarySemantic, TheSettingsNameTheServiceAndTheStoreItsKey) {
  AppSettings settings;
  settings.embeddingProviderId = "openai";
  settings.embeddingBaseURL = "https://box.example/v1";
  settings.embeddingModel = "mine";
  SettingsStore(paths).save(settings);
  SecretsStore(paths.secretsURL(), std::make_shared<FileLockRegistry>()).set("sk-1", SecretAccounts::embeddingAPIKey);
  expectDescriptionsAndQuery();
  EXPECT_EQ(run("search", {"cooking", "--semantic"}), allDone);
  for (const auto& call : session->calls()) {
    EXPECT_EQ(call.request.url.absoluteString(), "https://box.example/v1/embeddings");
    EXPECT_EQ(FakeURLSession::header(call.request, "authorization"), "Bearer sk-1");
    EXPECT_EQ(*parseJSON(*call.request.body).find("model")->asString(), "mine");
  }
}

TEST_F(LibrarySemantic, AStopRequestEndsTheWorkWithoutAWordAboutTheService) {
  session->then([this](const auto&, std::stop_token) -> URLResponse {
    stop.request_stop();
    throw URLError(URLError::Code::cancelled, "cancelled");
  });
  EXPECT_THROW(search(), Cancelled);
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(errors.str(), "");
}

}  // namespace
}  // namespace tq::test
