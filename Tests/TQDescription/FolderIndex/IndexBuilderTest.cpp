#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "TQDescription/FolderIndex/IndexBuilder.hpp"
#include "TQDescription/GoldenText.hpp"
#include "TQPlatform/Text/DateText.hpp"

namespace tq {

void PrintTo(const FolderIndex::TopCount& theme, std::ostream* stream) {
  *stream << theme.name << ": " << theme.count;
}

namespace {

using TopCount = FolderIndex::TopCount;
using test::golden;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const Date generatedAt = *parseISO8601("2026-11-21T10:00:00Z");

DescriptionResult clip(std::string filename, double durationSeconds = 0) {
  DescriptionResult result;
  result.source.filename = std::move(filename);
  result.source.durationSeconds = durationSeconds;
  return result;
}

DescriptionResult clipWithThemes(std::string filename, std::vector<std::string> themes) {
  DescriptionResult result = clip(std::move(filename));
  result.global.themes = std::move(themes);
  return result;
}

FolderIndex indexOf(const std::vector<Shared<DescriptionResult>>& descriptions,
                    const std::filesystem::path& folder = "/v/Beach") {
  return IndexBuilder::build(folder, descriptions, generatedAt);
}

std::string markdownOf(const std::vector<Shared<DescriptionResult>>& descriptions) {
  return IndexBuilder::renderMarkdown(indexOf(descriptions));
}

/// The table's rows of an index with this one clip.
std::string rowOf(const DescriptionResult& result) {
  const std::string document = markdownOf({result});
  const std::string head = "|---|---|---|---|\n";
  return document.substr(document.find(head) + head.size());
}

/// One clip with everything and one with nothing; flagged, in review, and names that tables and Markdown stumble over.
FolderIndex fullIndex() {
  DescriptionResult full = clip("b|each.mov", 3725.5);
  full.source.gps = GPS{.latitude = 38.75, .longitude = -9.125, .altitudeMeters = 12, .placeName = "Cabo/Roca"};
  full.summary = "Waves.\nMore waves.";
  full.global = {.overallSummaryOneLine = "Waves | rocks\nand foam",
                 .primarySubjects = {{"sea", "rock|s", "foam", "gulls"}},
                 .themes = {{"Beach", "calm", "Beach", ""}},
                 .dominantPalette = {{"#112233"}},
                 .searchKeywords = {{"sea/shore"}},
                 .suggestedUseCases = {{"travel", "intro"}}};
  full.flagged = true;
  full.reviewFlag = true;
  full.reviewReason = "blurry";
  full.transcript = TranscriptInfo{.text = "Listen.", .provider = "whisper", .model = "whisper-1"};

  DescriptionResult bare = clip("a.mov", 0.25);
  bare.summary = "A street.";
  bare.flagged = false;
  bare.global.themes = {{"beach", "calm"}};
  bare.transcript = TranscriptInfo{.text = "", .provider = "whisper", .model = "whisper-1"};
  return indexOf({full, bare}, "/v/My Beach");
}

TEST(IndexBuilder, WritesTheJSONByteForByte) {
  EXPECT_EQ(IndexBuilder::renderJSON(fullIndex()), golden("index.json"));
}

TEST(IndexBuilder, WritesTheMarkdownByteForByte) {
  EXPECT_EQ(IndexBuilder::renderMarkdown(fullIndex()), golden("index.md"));
}

TEST(IndexBuilder, WritesTheJSONOfAnEmptyFolderByteForByte) {
  EXPECT_EQ(IndexBuilder::renderJSON(indexOf({})), golden("index-empty.json"));
}

TEST(IndexBuilder, WritesTheMarkdownOfAnEmptyFolderByteForByte) {
  EXPECT_EQ(IndexBuilder::renderMarkdown(indexOf({})),
            "# Index — Beach\n\n"
            "0 clips · 0:00 total\n\n"
            "> Generated 2026-11-21T10:00:00Z\n\n"
            "## Clips\n\n"
            "| File | Duration | Subjects | Summary |\n"
            "|---|---|---|---|\n");
}

TEST(IndexBuilder, ReadsItsOwnJSON) {
  EXPECT_EQ(decode<FolderIndex>(parseJSON(IndexBuilder::renderJSON(fullIndex()))), fullIndex());
  EXPECT_EQ(hashOf(decode<FolderIndex>(parseJSON(IndexBuilder::renderJSON(fullIndex())))), hashOf(fullIndex()));
}

TEST(IndexBuilder, TakesEveryFieldOfAClipFromItsPlace) {
  const IndexedClip full = fullIndex().clips.at(1);
  EXPECT_EQ(full, (IndexedClip{.filename = "b|each.mov",
                               .durationSeconds = 3725.5,
                               .summary = "Waves.\nMore waves.",
                               .oneLine = "Waves | rocks\nand foam",
                               .primarySubjects = {"sea", "rock|s", "foam", "gulls"},
                               .themes = {"Beach", "calm", "Beach", ""},
                               .searchKeywords = {"sea/shore"},
                               .suggestedUseCases = {"travel", "intro"},
                               .dominantPalette = {"#112233"},
                               .gps = GPS{38.75, -9.125, 12, "Cabo/Roca"},
                               .flagged = true,
                               .reviewFlag = true,
                               .reviewReason = "blurry",
                               .hasTranscript = true}));
}

TEST(IndexBuilder, KnowsATranscriptByItsWords) {
  DescriptionResult silent = clip("a.mov");
  silent.transcript = TranscriptInfo{.text = "", .provider = "whisper", .model = "whisper-1"};
  EXPECT_FALSE(indexOf({silent}).clips.front().hasTranscript);
  EXPECT_FALSE(indexOf({clip("a.mov")}).clips.front().hasTranscript);
}

TEST(IndexBuilder, SortsByFilenameAndKeepsTheOrderOfEqualNames) {
  DescriptionResult first = clip("b.mov", 1), second = clip("b.mov", 2);
  const FolderIndex index = indexOf({first, clip("é.mov"), second, clip("a.mov"), clip("B.mov")});
  std::vector<std::string> names;
  for (const IndexedClip& indexed : index.clips)
    names.push_back(indexed.filename);
  EXPECT_THAT(names, ElementsAre("B.mov", "a.mov", "b.mov", "b.mov", "é.mov"));
  EXPECT_EQ(index.clips[2].durationSeconds, 1);
  EXPECT_EQ(index.clips[3].durationSeconds, 2);
}

TEST(IndexBuilder, AddsUpClipsDurationsAndFlags) {
  DescriptionResult flagged = clip("a.mov", 1.5), review = clip("b.mov", 2.25), both = clip("c.mov", 0.25);
  flagged.flagged = both.flagged = true;
  review.reviewFlag = both.reviewFlag = true;
  review.flagged = flagged.reviewFlag = false;
  const FolderIndex index = indexOf({flagged, review, both});
  EXPECT_EQ(index.schemaVersion, "1.0");
  EXPECT_EQ(index.totalClips, 3);
  EXPECT_EQ(index.totalDurationSeconds, 4);
  EXPECT_EQ(index.flaggedCount, 2);
  EXPECT_EQ(index.reviewCount, 2);
}

TEST(IndexBuilder, CountsAThemeAsOftenAsItIsListed) {
  const FolderIndex index =
      indexOf({clipWithThemes("a.mov", {"calm", "calm"}), clipWithThemes("b.mov", {"calm"}), clip("c.mov")});
  EXPECT_THAT(index.themesTop, ElementsAre(TopCount{"calm", 3}));
}

TEST(IndexBuilder, CountsThemesAsTheyAreSpelled) {
  const FolderIndex index = indexOf({clipWithThemes("a.mov", {"beach", "Beach", " beach", "", "beach"})});
  EXPECT_THAT(index.themesTop, ElementsAre(TopCount{"beach", 2}, TopCount{" beach", 1}, TopCount{"Beach", 1}));
}

TEST(IndexBuilder, KeepsTheTenThemesThatComeFirstByNameWhenAllAreEqual) {
  const FolderIndex index = indexOf({clipWithThemes("a.mov", {"k", "j", "i", "h", "g", "f", "e", "d", "c", "b", "a"})});
  EXPECT_THAT(index.themesTop,
              ElementsAre(TopCount{"a", 1}, TopCount{"b", 1}, TopCount{"c", 1}, TopCount{"d", 1}, TopCount{"e", 1},
                          TopCount{"f", 1}, TopCount{"g", 1}, TopCount{"h", 1}, TopCount{"i", 1}, TopCount{"j", 1}));
}

TEST(IndexBuilder, PutsTheMostFrequentThemeFirst) {
  const FolderIndex index = indexOf({clipWithThemes("a.mov", {"a", "b", "c", "c", "b", "c"})});
  EXPECT_THAT(index.themesTop, ElementsAre(TopCount{"c", 3}, TopCount{"b", 2}, TopCount{"a", 1}));
}

TEST(IndexBuilder, NamesTheFolderByItsLastComponent) {
  const auto titleOf = [](const std::filesystem::path& folder) {
    const std::string document = IndexBuilder::renderMarkdown(indexOf({}, folder));
    return document.substr(0, document.find('\n'));
  };
  EXPECT_EQ(titleOf("/v/Beach"), "# Index — Beach");
  EXPECT_EQ(titleOf("/v/Beach/"), "# Index — Beach");
  EXPECT_EQ(titleOf("/"), "# Index — /");
  EXPECT_EQ(titleOf("Beach"), "# Index — Beach");
  EXPECT_EQ(indexOf({}, "/v/Beach//").folder, "/v/Beach");
  EXPECT_EQ(indexOf({}, "/").folder, "/");
}

TEST(IndexBuilder, ShowsAFolderThatIsNotUTF8WithReplacementCharacters) {
  const FolderIndex index = indexOf({}, "/v/\xff");
  EXPECT_EQ(index.folder, "/v/\uFFFD");
  EXPECT_THAT(IndexBuilder::renderJSON(index), HasSubstr("\"folder\": \"/v/\uFFFD\""));
}

TEST(IndexBuilder, SpeaksOfOneClipInTheSingular) {
  EXPECT_THAT(markdownOf({clip("a.mov", 61)}), HasSubstr("\n\n1 clip · 1:01 total\n\n"));
  EXPECT_THAT(markdownOf({clip("a.mov"), clip("b.mov")}), HasSubstr("\n\n2 clips · 0:00 total\n\n"));
}

TEST(IndexBuilder, MentionsFlagsOnlyWhereThereAreAny) {
  DescriptionResult flagged = clip("a.mov"), review = clip("b.mov");
  flagged.flagged = true;
  review.reviewFlag = true;
  EXPECT_THAT(markdownOf({flagged}), HasSubstr("\n\n1 clip · 0:00 total · ⚠️ 1 flagged\n\n"));
  EXPECT_THAT(markdownOf({review}), HasSubstr("\n\n1 clip · 0:00 total · 👀 1 need review\n\n"));
  EXPECT_THAT(markdownOf({clip("a.mov")}), AllOf(Not(HasSubstr("flagged")), Not(HasSubstr("review"))));
}

TEST(IndexBuilder, PutsTheFlagsOutsideTheBackticks) {
  DescriptionResult flagged = clip("a.mov"), review = clip("a.mov");
  flagged.flagged = true;
  review.reviewFlag = true;
  EXPECT_EQ(rowOf(flagged), "| `a.mov` ⚠️ | 0:00 |  |  |\n");
  EXPECT_EQ(rowOf(review), "| `a.mov` 👀 | 0:00 |  |  |\n");
}

TEST(IndexBuilder, MakesCellsSafeForATable) {
  EXPECT_THAT(rowOf(clip("a|b")), HasSubstr("| `a\\|b` |"));
  EXPECT_THAT(rowOf(clip("a\nb")), HasSubstr("| `a b` |"));
  EXPECT_THAT(rowOf(clip("a\\|b\r\nc")), HasSubstr("| `a\\\\|b\r c` |"));
}

TEST(IndexBuilder, ShowsTheFirstThreeSubjects) {
  DescriptionResult result = clip("a.mov");
  const auto subjects = [&](std::vector<std::string> list) {
    result.global.primarySubjects = std::move(list);
    return rowOf(result);
  };
  EXPECT_THAT(subjects({"sea", "rock", "foam", "gull"}), HasSubstr("| sea, rock, foam |"));
  EXPECT_THAT(subjects({"sea", "ro|ck"}), HasSubstr("| sea, ro\\|ck |"));
  EXPECT_THAT(subjects({}), HasSubstr("| 0:00 |  |"));
}

TEST(IndexBuilder, ShowsASummaryOfEightyCharactersWhole) {
  DescriptionResult result = clip("a.mov");
  result.summary = std::string(80, 'x');
  EXPECT_THAT(rowOf(result), EndsWith("| " + result.summary + " |\n"));
}

TEST(IndexBuilder, CutsASummaryOfEightyOneCharacters) {
  DescriptionResult result = clip("a.mov");
  result.summary = std::string(81, 'x');
  EXPECT_THAT(rowOf(result), EndsWith("| " + std::string(80, 'x') + "… |\n"));
}

TEST(IndexBuilder, CountsCharactersAsReadersDo) {
  std::string flags;
  for (int count = 0; count < 80; ++count)
    flags += "🇵🇹";
  DescriptionResult result = clip("a.mov");
  result.summary = flags;
  EXPECT_THAT(rowOf(result), EndsWith("| " + flags + " |\n"));
  result.summary += "!";
  EXPECT_THAT(rowOf(result), EndsWith("| " + flags + "… |\n"));
}

TEST(IndexBuilder, CutsASummaryBeforeItMakesItSafe) {
  DescriptionResult result = clip("a.mov");
  result.summary = std::string(79, '|') + "\n|";
  std::string safe;
  for (int count = 0; count < 79; ++count)
    safe += "\\|";
  EXPECT_THAT(rowOf(result), EndsWith("|  | " + safe + " … |\n"));
}

TEST(IndexBuilder, ShowsAnEmptyOneLineAsAnEmptyCell) {
  DescriptionResult result = clip("a.mov");
  result.summary = std::string(100, 'x');
  result.global.overallSummaryOneLine = "";
  EXPECT_THAT(rowOf(result), EndsWith("|  |  |\n"));
}

TEST(IndexBuilder, ShowsALongOneLineWhole) {
  DescriptionResult result = clip("a.mov");
  result.summary = "Short.";
  result.global.overallSummaryOneLine = std::string(100, 'x');
  EXPECT_THAT(rowOf(result), EndsWith("| " + std::string(100, 'x') + " |\n"));
}

TEST(IndexBuilder, ReportsASumThatJSONCannotHold) {
  const double huge = std::numeric_limits<double>::max();
  const FolderIndex index = indexOf({clip("a.mov", huge), clip("b.mov", huge)});
  EXPECT_THROW(IndexBuilder::renderJSON(index), JSONError);
  EXPECT_THAT(IndexBuilder::renderMarkdown(index), HasSubstr("2 clips · "));
}

TEST(FormatDuration, RoundsToWholeSeconds) {
  EXPECT_EQ(IndexBuilder::formatDuration(0), "0:00");
  EXPECT_EQ(IndexBuilder::formatDuration(0.49), "0:00");
  EXPECT_EQ(IndexBuilder::formatDuration(0.5), "0:01");
  EXPECT_EQ(IndexBuilder::formatDuration(59.4), "0:59");
  EXPECT_EQ(IndexBuilder::formatDuration(59.5), "1:00");
  EXPECT_EQ(IndexBuilder::formatDuration(605), "10:05");
}

TEST(FormatDuration, ShowsHoursFromTheRoundedHourOn) {
  EXPECT_EQ(IndexBuilder::formatDuration(3599.4), "59:59");
  EXPECT_EQ(IndexBuilder::formatDuration(3599.6), "1:00:00");
  EXPECT_EQ(IndexBuilder::formatDuration(3600), "1:00:00");
  EXPECT_EQ(IndexBuilder::formatDuration(3661), "1:01:01");
  EXPECT_EQ(IndexBuilder::formatDuration(360'000), "100:00:00");
}

TEST(FormatDuration, SurvivesWhatNoClipLasts) {
  EXPECT_EQ(IndexBuilder::formatDuration(std::numeric_limits<double>::infinity()), "2562047788015215:30:07");
  EXPECT_EQ(IndexBuilder::formatDuration(1e300), "2562047788015215:30:07");
  EXPECT_EQ(IndexBuilder::formatDuration(std::numeric_limits<double>::quiet_NaN()), "0:00");
  EXPECT_EQ(IndexBuilder::formatDuration(-0.4), "0:00");
}

}  // namespace
}  // namespace tq
