#include <functional>
#include <gtest/gtest.h>
#include <thread>

#include "Support/FileSizeLimit.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/Umask.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQCore/TQError.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

constexpr auto emptyEnvelope = R"({"secrets": {}, "version": 1})";

class SecretsStoreTest : public testing::Test {
 protected:
  void write(std::string_view content) const { folder.write("private/secrets.json", content); }
  JSONValue content() const { return parseJSON(contentOf(file)); }
  fs::perms modeOf(const fs::path& path) const { return fs::status(path).permissions(); }

  /// Nothing of what is there can be used, and nothing of it may be lost.
  void expectUnusable() const {
    const bool isFile = fs::is_regular_file(file);
    const std::string before = isFile ? contentOf(file) : "";
    EXPECT_THROW(store.get("a"), std::exception);
    EXPECT_THROW(store.set("value", "a"), std::exception);
    EXPECT_FALSE(store.remove("a"));
    EXPECT_EQ(isFile ? contentOf(file) : "", before);
    EXPECT_EQ(namesIn(folder / "private"), std::vector<std::string>{"secrets.json"});
  }

  TemporaryFolder folder;
  fs::path file = folder / "private/secrets.json";
  std::shared_ptr<FileLockRegistry> locks = std::make_shared<FileLockRegistry>();
  SecretsStore store{file, locks};
};

TEST_F(SecretsStoreTest, TheAccountsHaveTheirNames) {
  EXPECT_STREQ(SecretAccounts::anthropicAPIKey, "anthropic.api_key");
  EXPECT_STREQ(SecretAccounts::openaiAPIKey, "openai.api_key");
  EXPECT_STREQ(SecretAccounts::transcriptionAPIKey, "transcription.api_key");
  EXPECT_STREQ(SecretAccounts::embeddingAPIKey, "embedding.api_key");
}

TEST_F(SecretsStoreTest, GetOnAFreshMachineGivesNothingAndCreatesNothing) {
  EXPECT_EQ(store.get("a"), std::nullopt);
  EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST_F(SecretsStoreTest, WhatIsSetIsGiven) {
  store.set("abc", "a");
  store.set("with \"quotes\", / and \xC3\xA9", "b");
  EXPECT_EQ(store.get("a"), "abc");
  EXPECT_EQ(store.get("b"), "with \"quotes\", / and \xC3\xA9");
  EXPECT_EQ(SecretsStore(file, locks).get("a"), "abc");
}

TEST_F(SecretsStoreTest, SetReplaces) {
  store.set("old", "a");
  store.set("new", "a");
  EXPECT_EQ(store.get("a"), "new");
}

TEST_F(SecretsStoreTest, TheFileIsAnEnvelopeWithSortedKeys) {
  store.set("2", "b");
  store.set("1", "a");
  EXPECT_EQ(content(), parseJSON(R"({"secrets": {"a": "1", "b": "2"}, "version": 1})"));
  const std::string text = contentOf(file);
  EXPECT_LT(text.find("\"secrets\""), text.find("\"version\""));
  EXPECT_NE(text.find('\n'), std::string::npos) << "pretty printed";
}

TEST_F(SecretsStoreTest, AnEmptyValueRemovesTheAccount) {
  store.set("abc", "a");
  store.set("", "a");
  EXPECT_EQ(store.get("a"), std::nullopt);
  EXPECT_EQ(content(), parseJSON(emptyEnvelope));
}

TEST_F(SecretsStoreTest, AnEmptyValueInTheFileCountsAsAbsent) {
  write(R"({"secrets": {"a": ""}, "version": 1})");
  EXPECT_EQ(store.get("a"), std::nullopt);
  EXPECT_TRUE(store.remove("a")) << "but the account is there";
}

TEST_F(SecretsStoreTest, TheVersionInTheFileIsKept) {
  write(R"({"secrets": {}, "version": 7})");
  store.set("abc", "a");
  EXPECT_EQ(content(), parseJSON(R"({"secrets": {"a": "abc"}, "version": 7})"));
}

TEST_F(SecretsStoreTest, RemoveTellsWhetherTheAccountWasThere) {
  store.set("1", "a");
  store.set("2", "b");
  EXPECT_TRUE(store.remove("a"));
  EXPECT_FALSE(store.remove("a"));
  EXPECT_EQ(content(), parseJSON(R"({"secrets": {"b": "2"}, "version": 1})"));
}

TEST_F(SecretsStoreTest, RemoveRewritesTheFileAlsoForAnAbsentAccount) {
  write(R"({"version":1,"secrets":{}})");
  const std::string before = contentOf(file);
  EXPECT_FALSE(store.remove("a"));
  EXPECT_NE(contentOf(file), before);
  EXPECT_EQ(content(), parseJSON(emptyEnvelope));
}

TEST_F(SecretsStoreTest, AMissingFileIsCreatedBySet) {
  fs::create_directory(folder / "private");
  store.set("abc", "a");
  EXPECT_EQ(store.get("a"), "abc");
}

TEST_F(SecretsStoreTest, AMissingFileIsCreatedEmptyByRemove) {
  EXPECT_FALSE(store.remove("a"));
  EXPECT_EQ(content(), parseJSON(emptyEnvelope));
}

TEST_F(SecretsStoreTest, AnEmptyFileCountsAsMissing) {
  write("");
  EXPECT_EQ(store.get("a"), std::nullopt);
  EXPECT_EQ(contentOf(file), "");
  EXPECT_FALSE(store.remove("a"));
  EXPECT_EQ(content(), parseJSON(emptyEnvelope));
  write("");
  store.set("abc", "a");
  EXPECT_EQ(store.get("a"), "abc");
}

TEST_F(SecretsStoreTest, ACorruptFileIsReportedAndUntouched) {
  for (const char* content :
       {"no json", "\n", "[]", "null", "{}", R"({"version": 1})", R"({"secrets": {}})",
        R"({"version": "1", "secrets": {}})", R"({"version": 1.5, "secrets": {}})", R"({"version": 1, "secrets": []})",
        R"({"version": 1, "secrets": null})", R"({"version": 1, "secrets": {"a": 5}})",
        R"({"version": 1, "secrets": {"a": null}})", "{\"version\": 1, \"secrets\": {\"a\": \"\xFF\"}}"}) {
    SCOPED_TRACE(content);
    write(content);
    expectUnusable();
  }
}

TEST_F(SecretsStoreTest, AFolderInPlaceOfTheFileIsReported) {
  fs::create_directories(file);
  EXPECT_THROW(store.get("a"), SystemError);
  expectUnusable();
}

TEST_F(SecretsStoreTest, AFileOfAbsurdSizeIsReportedUnread) {
  write("{");
  fs::resize_file(file, static_cast<std::uintmax_t>(SafeFile::maxMetadataBytes) + 1);
  EXPECT_THROW(store.get("a"), TQError);
  EXPECT_THROW(store.set("value", "a"), TQError);
  EXPECT_FALSE(store.remove("a"));
}

TEST_F(SecretsStoreTest, AFolderThatCannotBeCreatedIsReported) {
  folder.write("private", "a file in the way");
  EXPECT_EQ(store.get("a"), std::nullopt);
  EXPECT_THROW(store.set("abc", "a"), SystemError);
  EXPECT_FALSE(store.remove("a"));
  EXPECT_EQ(contentOf(folder / "private"), "a file in the way");
}

TEST_F(SecretsStoreTest, AFileThatIsLockedAgainstWritingIsReportedAndUntouched) {
  store.set("abc", "a");
  fs::permissions(file, fs::perms(0400));
  EXPECT_THROW(store.set("new", "a"), SystemError);
  EXPECT_FALSE(store.remove("a"));
  EXPECT_EQ(store.get("a"), "abc");
}

TEST_F(SecretsStoreTest, ADiskThatIsFullIsReportedAndTheOldFileStaysWhole) {
  store.set("abc", "a");
  {
    const FileSizeLimit limit(10);
    EXPECT_THROW(store.set("new", "b"), SystemError);
    EXPECT_FALSE(store.remove("a"));
  }
  EXPECT_EQ(content(), parseJSON(R"({"secrets": {"a": "abc"}, "version": 1})"));
  EXPECT_EQ(namesIn(folder / "private"), std::vector<std::string>{"secrets.json"});
}

TEST_F(SecretsStoreTest, AValueThatIsNoTextIsReportedAndNothingIsWritten) {
  store.set("abc", "a");
  EXPECT_THROW(store.set("\xFF\xFE", "b"), JSONError);
  EXPECT_EQ(content(), parseJSON(R"({"secrets": {"a": "abc"}, "version": 1})"));
}

TEST_F(SecretsStoreTest, NoErrorQuotesAKey) {
  const auto errorOf = [](const auto& action) -> std::string {
    try {
      action();
    } catch (const std::exception& error) {
      return error.what();
    }
    return "nothing was thrown";
  };
  EXPECT_EQ(errorOf([&] { store.set("sk-very-secret\xFF", "a"); }), "the key is not UTF-8 text");
  write(R"({"secrets": {"a": 12345678}, "version": 1})");
  EXPECT_EQ(errorOf([&] { store.get("a"); }), "secrets.a: expected text, found a number");
  write(R"({"secrets": {"a": "sk-very-secret, "version": 1})");
  EXPECT_EQ(errorOf([&] { store.get("a"); }).find("secret"), std::string::npos);
}

TEST_F(SecretsStoreTest, AFileInPlaceOfTheFolderIsReportedAndLeftAsItIs) {
  fs::permissions(folder.write("private", "in the way"), fs::perms(0644));
  EXPECT_EQ(store.get("a"), std::nullopt);
  EXPECT_THROW(store.set("abc", "a"), SystemError);
  EXPECT_FALSE(store.remove("a"));
  EXPECT_EQ(modeOf(folder / "private"), fs::perms(0644));
  EXPECT_EQ(contentOf(folder / "private"), "in the way");
}

TEST_F(SecretsStoreTest, ANewFolderIsForItsOwnerAloneWhateverTheUmask) {
  const Umask umask(0277);
  store.set("abc", "a");
  EXPECT_EQ(modeOf(folder / "private"), fs::perms(0700));
  EXPECT_EQ(modeOf(file), fs::perms(0600));
}

TEST_F(SecretsStoreTest, AfterAWriteOnlyTheOwnerMayReadFileAndFolder) {
  store.set("abc", "a");
  EXPECT_EQ(modeOf(file), fs::perms(0600));
  EXPECT_EQ(modeOf(folder / "private"), fs::perms(0700));
  EXPECT_EQ(namesIn(folder / "private"), std::vector<std::string>{"secrets.json"});
}

TEST_F(SecretsStoreTest, WiderModesAreNarrowedByTheNextWrite) {
  write(emptyEnvelope);
  fs::permissions(file, fs::perms(0666));
  fs::permissions(folder / "private", fs::perms(0777));
  EXPECT_FALSE(store.remove("a"));
  EXPECT_EQ(modeOf(file), fs::perms(0600));
  EXPECT_EQ(modeOf(folder / "private"), fs::perms(0700));
}

TEST_F(SecretsStoreTest, TwoStoresThatWriteAtTheSameMomentLoseNothing) {
  const SecretsStore other(folder / "private/../private/secrets.json", locks);
  const auto setMany = [](const SecretsStore& target, const std::string& prefix) {
    for (int index = 0; index < 25; ++index)
      target.set("value", prefix + std::to_string(index));
  };
  {
    std::jthread first([&] { setMany(store, "first."); });
    std::jthread second([&] { setMany(other, "second."); });
    // A reader beside them never meets a torn file.
    for (int round = 0; round < 50; ++round)
      EXPECT_NO_THROW(store.get("first.0"));
  }
  for (int index = 0; index < 25; ++index) {
    EXPECT_EQ(store.get("first." + std::to_string(index)), "value");
    EXPECT_EQ(store.get("second." + std::to_string(index)), "value");
  }
}

}  // namespace
}  // namespace tq::test
