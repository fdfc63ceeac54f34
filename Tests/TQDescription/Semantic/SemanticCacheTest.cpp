#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "Support/FileSizeLimit.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQDescription/Semantic/SemanticCache.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

using test::contentOf;
using test::FileSizeLimit;
using test::namesIn;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

SemanticEntries entriesOf(const std::vector<std::pair<std::string, std::vector<float>>>& clips) {
  SemanticEntries entries;
  for (const auto& [filename, vector] : clips)
    entries.add(filename, "hash of " + filename, vector);
  entries.sort();
  return entries;
}

/// "filename contentHash numbers..." of every entry.
std::vector<std::string> linesOf(const SemanticEntries& entries) {
  std::vector<std::string> lines;
  for (const SemanticEntries::Clip& clip : entries.clips()) {
    std::string line = clip.filename + " " + clip.contentHash;
    for (const float number : entries.vectorOf(clip))
      line += " " + testing::PrintToString(number);
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> parsedLines(std::string_view text) {
  return linesOf(SemanticCache::parse(text));
}

// Entries.

TEST(SemanticEntries, AreSortedByTheBytesOfTheirFilenames) {
  const SemanticEntries entries = entriesOf({{"b", {1}}, {"é", {2}}, {"a", {3, 4}}, {"B", {}}});
  EXPECT_THAT(linesOf(entries), ElementsAre("B hash of B", "a hash of a 3 4", "b hash of b 1", "é hash of é 2"));
}

TEST(SemanticEntries, OfEqualFilenamesTheLastStays) {
  SemanticEntries entries;
  entries.add("b", "1", std::vector{1.0F});
  entries.add("a", "2", std::vector{2.0F});
  entries.add("b", "3", std::vector{3.0F, 4.0F});
  entries.add("b", "4", std::vector{5.0F});
  entries.sort();
  EXPECT_THAT(linesOf(entries), ElementsAre("a 2 2", "b 4 5"));
  EXPECT_EQ(entries.numberCount(), 2u) << "what went out takes no room";
}

TEST(SemanticEntries, AreFoundByFilename) {
  const SemanticEntries entries = entriesOf({{"a", {1}}, {"b", {2}}, {"d", {3}}});
  EXPECT_EQ(entries.find("b")->contentHash, "hash of b");
  for (const char* name : {"", "A", "aa", "c", "e"})
    EXPECT_EQ(entries.find(name), nullptr) << name;
  EXPECT_EQ(SemanticEntries().find("a"), nullptr);
}

// Writing.

TEST(SemanticCache, IsWrittenCompactWithSortedKeysAndFilenames) {
  const TemporaryFolder folder;
  SemanticCache::write(folder / "c.json", entriesOf({{"b.mov", {1, -0.5F}}, {"a \"1\"/é.mov", {}}}));
  EXPECT_EQ(contentOf(folder / "c.json"),
            R"([{"contentHash":"hash of a \"1\"/é.mov","filename":"a \"1\"/é.mov","vector":[]},)"
            R"({"contentHash":"hash of b.mov","filename":"b.mov","vector":[1,-0.5]}])");
}

TEST(SemanticCache, OfNoEntriesIsAnEmptyList) {
  const TemporaryFolder folder;
  SemanticCache::write(folder / "c.json", {});
  EXPECT_EQ(contentOf(folder / "c.json"), "[]");
}

TEST(SemanticCache, MakesItsFolderWithTheParents) {
  const TemporaryFolder folder;
  SemanticCache::write(folder / "x/y/c.json", {});
  EXPECT_EQ(contentOf(folder / "x/y/c.json"), "[]");
}

TEST(SemanticCache, AFolderThatCannotBeMadeIsTheSystemsError) {
  const TemporaryFolder folder;
  folder.write("x", "a file in the way");
  EXPECT_THROW(SemanticCache::write(folder / "x/c.json", {}), SystemError);
  EXPECT_EQ(contentOf(folder / "x"), "a file in the way");
}

TEST(SemanticCache, AFailedWriteLeavesTheOldFile) {
  const TemporaryFolder folder;
  folder.write("c.json", "old");
  const SemanticEntries entries = entriesOf({{"a.mov", std::vector<float>(100'000, 0.1F)}});
  {
    const FileSizeLimit limit(4096);
    EXPECT_THROW(SemanticCache::write(folder / "c.json", entries), SystemError);
  }
  EXPECT_EQ(contentOf(folder / "c.json"), "old");
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("c.json"));
}

TEST(SemanticCache, WhatJSONCannotHoldIsRefusedAndLeavesTheOldFile) {
  const TemporaryFolder folder;
  folder.write("c.json", "old");
  for (const float number : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
    EXPECT_THROW(SemanticCache::write(folder / "c.json", entriesOf({{"a", {1, number}}})), JSONError);
  EXPECT_THROW(SemanticCache::write(folder / "c.json", entriesOf({{"a\xff.mov", {1}}})), JSONError);
  EXPECT_EQ(contentOf(folder / "c.json"), "old");
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("c.json"));
}

TEST(SemanticCache, OfManyPiecesIsReadBackUnchanged) {
  const TemporaryFolder folder;
  SemanticEntries entries;
  std::vector<float> vector(1000);
  for (int clip = 0; clip < 300; ++clip) {
    for (std::size_t index = 0; index < vector.size(); ++index)
      vector[index] = 1.0F / static_cast<float>(static_cast<std::size_t>(clip) * vector.size() + index + 1);
    entries.add("clip " + std::to_string(1000 + clip), std::string(64, 'a'), vector);
  }
  entries.sort();
  SemanticCache::write(folder / "c.json", entries);
  const std::string text = contentOf(folder / "c.json");
  EXPECT_GT(text.size(), 3'000'000u);
  EXPECT_EQ(linesOf(SemanticCache::parse(text)), linesOf(entries));
  EXPECT_TRUE(parseJSON(text).asArray());
}

TEST(SemanticCache, IsTheSameByAnyNumberOfThreads) {
  SemanticEntries entries;
  for (int clip = 0; clip < 400; ++clip)
    entries.add("clip " + std::to_string(1000 + clip), std::string(64, 'a'),
                std::vector(500, 1.0F / static_cast<float>(3 + clip)));
  const auto printed = [&](std::size_t processorCount) {
    std::string text;
    SemanticCache::print(
        entries, [&](ByteView piece) { text += textOf(piece); }, processorCount);
    return text;
  };
  const std::string text = printed(1);
  for (const std::size_t processorCount : {2, 3, 64, 1000}) {
    EXPECT_EQ(printed(processorCount), text) << processorCount;
    EXPECT_EQ(linesOf(SemanticCache::parse(text, processorCount)), linesOf(entries)) << processorCount;
  }
}

TEST(SemanticCache, IsNeverCutWithinAFilename) {
  std::vector<std::pair<std::string, std::vector<float>>> clips;
  for (int clip = 0; clip < 20; ++clip)
    clips.push_back({std::string(clip % 7 * 10, 'a') + R"(},{"contentHash":"},{)" + std::to_string(clip), {1, 2}});
  const SemanticEntries entries = entriesOf(clips);
  std::string text;
  SemanticCache::print(entries, [&](ByteView piece) { text += textOf(piece); });
  for (std::size_t processorCount = 1; processorCount < 40; ++processorCount)
    EXPECT_EQ(linesOf(SemanticCache::parse(text, processorCount)), linesOf(entries)) << processorCount;
}

TEST(SemanticCache, OfEqualFilenamesTheLastStaysByAnyNumberOfThreads) {
  std::string text = "[";
  for (int clip = 0; clip < 30; ++clip)
    text += R"({"filename":")" + std::to_string(clip % 4) + R"(","contentHash":")" + std::to_string(clip) +
            R"(","vector":[1]},)";
  text.back() = ']';
  for (const std::size_t processorCount : {1, 2, 5})
    EXPECT_THAT(linesOf(SemanticCache::parse(text, processorCount)),
                ElementsAre("0 28 1", "1 29 1", "2 26 1", "3 27 1"));
}

// Reading.

TEST(SemanticCache, IsReadInWhateverLayoutAndOrder) {
  EXPECT_THAT(parsedLines(" [ {\n\"vector\" : [ 1 , 2.5e0 ] , \"filename\" : \"b\\u00e9\" , \"contentHash\" : \"h\" } ,"
                          "{\"filename\":\"a\",\"vector\":[],\"contentHash\":\"\"}]\n"),
              ElementsAre("a ", "bé h 1 2.5"));
  EXPECT_THAT(parsedLines("[]"), IsEmpty());
  EXPECT_THAT(parsedLines("\xEF\xBB\xBF[]"), IsEmpty());
}

TEST(SemanticCache, IgnoresUnknownKeysAsLongAsTheyAreJSON) {
  EXPECT_THAT(
      parsedLines(R"([{"a":{"vector":[null,{"b":"]}"}]},"contentHash":"h","filename":"f","vector":[1],"z":-1e5}])"),
      ElementsAre("f h 1"));
  EXPECT_THROW(parsedLines(R"([{"a":01,"contentHash":"h","filename":"f","vector":[1]}])"), JSONError);
  EXPECT_THROW(parsedLines(R"([{"a":[},"contentHash":"h","filename":"f","vector":[1]}])"), JSONError);
}

TEST(SemanticCache, OfEqualFilenamesTheLaterOneWins) {
  EXPECT_THAT(parsedLines(R"([{"contentHash":"1","filename":"f","vector":[1]},{"contentHash":"0","filename":"e",)"
                          R"("vector":[0]},{"contentHash":"2","filename":"f","vector":[2,3]}])"),
              ElementsAre("e 0 0", "f 2 2 3"));
}

TEST(SemanticCache, OfEqualKeysTheLaterOneWins) {
  EXPECT_THAT(parsedLines(R"([{"contentHash":"1","contentHash":"2","filename":"e","filename":"f","vector":[1,2],)"
                          R"("vector":[3]}])"),
              ElementsAre("f 2 3"));
}

TEST(SemanticCache, VectorsMayDifferInLength) {
  EXPECT_THAT(parsedLines(R"([{"contentHash":"h","filename":"a","vector":[1,2]},{"contentHash":"h","filename":"b",)"
                          R"("vector":[3]},{"contentHash":"h","filename":"c","vector":[]}])"),
              ElementsAre("a h 1 2", "b h 3", "c h"));
}

class BrokenCache : public testing::TestWithParam<std::string> {};

TEST_P(BrokenCache, IsRefused) {
  EXPECT_THROW(SemanticCache::parse(GetParam()), JSONError);
}

TEST_P(BrokenCache, IsRefusedBehindGoodEntries) {
  std::string text = "[";
  for (int good = 0; good < 4; ++good)
    text += R"({"filename":"a","contentHash":"b","vector":[1]},)";
  text += GetParam().substr(std::min<std::size_t>(GetParam().size(), 1));
  for (const std::size_t processorCount : {1, 2, 3})
    EXPECT_THROW(SemanticCache::parse(text, processorCount), JSONError) << text;
}

std::string oneEntry(const std::string& members) {
  return "[{" + members + "}]";
}

INSTANTIATE_TEST_SUITE_P(Texts, BrokenCache,
                         testing::Values("", " ", "null", "{}", "1", "\"a\"", "[", "[]]", "[1]", "[null]", "[[]]",
                                         "[{}]", "[{},]", "[,{}]", std::string("[]\0", 3), std::string(100'000, '['),
                                         "not JSON", oneEntry(R"("contentHash":"h","filename":"f")"),
                                         oneEntry(R"("contentHash":"h","vector":[1])"),
                                         oneEntry(R"("filename":"f","vector":[1])"),
                                         oneEntry(R"("ContentHash":"h","filename":"f","vector":[])"),
                                         oneEntry(R"("contentHash":null,"filename":"f","vector":[1])"),
                                         oneEntry(R"("contentHash":1,"filename":"f","vector":[1])"),
                                         oneEntry(R"("contentHash":"h","filename":["f"],"vector":[1])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":null)"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":"1")"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":{"0":1})"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[null])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[true])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":["1"])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[[1]])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[NaN])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[Infinity])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[1e39])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[1e999])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[1,])"),
                                         oneEntry(R"("contentHash":"h","filename":"f","vector":[1])") + "[]",
                                         oneEntry("\"contentHash\":\"h\",\"filename\":\"\xff\",\"vector\":[1]"),
                                         oneEntry(R"("contentHash":"h","filename":"\ud800","vector":[1])"),
                                         "[{\"contentHash\":\"h\",\"filename\":\"f\",\"vector\":[1]}",
                                         "[{\"contentHash\":\"h\",\"filename\":\"f\",\"vector\":[1"));

}  // namespace
}  // namespace tq
