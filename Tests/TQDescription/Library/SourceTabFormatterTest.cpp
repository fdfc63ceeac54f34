#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQDescription/Library/SourceTabFormatter.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

void PrintTo(const SourceTabFormatter::Row& row, std::ostream* stream) {
  *stream << row.label << " | " << row.value;
}

namespace {

using Row = SourceTabFormatter::Row;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::Ne;

DescriptionResult description() {
  DescriptionResult result;
  result.source = {.filename = "clip.mov", .durationSeconds = 12.345, .resolution = "1920x1080", .codec = "h264"};
  result.engine = {
      .provider = "anthropic", .model = "claude-sonnet-4-5", .framesAnalyzed = 12, .samplingStrategy = "adaptive"};
  return result;
}

std::vector<Row> rowsOf(const DescriptionResult& result) {
  return SourceTabFormatter::rows(result, "/v/clip.mov");
}

auto noRow(const char* label) {
  return Each(Field(&Row::label, Ne(label)));
}

TEST(SourceTabFormatter, AlwaysGivesTheFirstEightRows) {
  EXPECT_THAT(rowsOf(description()),
              ElementsAre(Row{"File", "/v/clip.mov"}, Row{"Provider", "anthropic"}, Row{"Model", "claude-sonnet-4-5"},
                          Row{"Frames analyzed", "12"}, Row{"Sampling", "adaptive"}, Row{"Duration", "12.35s"},
                          Row{"Resolution", "1920x1080"}, Row{"Codec", "h264"}));
}

TEST(SourceTabFormatter, GivesTheFirstEightRowsForAnEmptyRecordToo) {
  EXPECT_THAT(SourceTabFormatter::rows({}, {}),
              ElementsAre(Row{"File", ""}, Row{"Provider", ""}, Row{"Model", ""}, Row{"Frames analyzed", "0"},
                          Row{"Sampling", ""}, Row{"Duration", "0.00s"}, Row{"Resolution", ""}, Row{"Codec", ""}));
}

TEST(SourceTabFormatter, GivesAllRowsInOrder) {
  DescriptionResult result = description();
  result.source.gps = GPS{.latitude = 38.722252, .longitude = -9.139337};
  result.transcript = TranscriptInfo{.text = "Hello", .provider = "deepgram", .model = "nova-2"};
  result.reviewFlag = true;
  result.shots = {{.faces = {{FaceBox{}}}}};
  EXPECT_THAT(
      rowsOf(result),
      ElementsAre(Row{"File", "/v/clip.mov"}, Row{"Provider", "anthropic"}, Row{"Model", "claude-sonnet-4-5"},
                  Row{"Frames analyzed", "12"}, Row{"Sampling", "adaptive"}, Row{"Duration", "12.35s"},
                  Row{"Resolution", "1920x1080"}, Row{"Codec", "h264"}, Row{"GPS", "38.722252, -9.139337"},
                  Row{"Transcript", "deepgram/nova-2"}, Row{"Status", "Needs review"}, Row{"Faces detected", "1"}));
}

TEST(SourceTabFormatter, ShowsATranscriptWithoutText) {
  DescriptionResult result = description();
  result.transcript = TranscriptInfo{.text = "", .provider = "local", .model = "on-device"};
  EXPECT_THAT(rowsOf(result), Contains(Row{"Transcript", "local/on-device"}));
}

TEST(SourceTabFormatter, ShowsNoStatusForAClipInOrder) {
  DescriptionResult result = description();
  result.flagged = false;
  result.reviewFlag = false;
  result.reviewReason = "left over";
  EXPECT_THAT(rowsOf(result), noRow("Status"));
}

TEST(SourceTabFormatter, HasNoFacesRowWhenNoShotWasLookedAt) {
  DescriptionResult result = description();
  result.shots = {{.timecode = "00:00:01.000"}, {}};
  EXPECT_THAT(rowsOf(result), noRow("Faces detected"));
}

TEST(SourceTabFormatter, CountsNoFacesWhenOneShotWasLookedAt) {
  DescriptionResult result = description();
  result.shots = {{}, {.faces = std::vector<FaceBox>()}};
  EXPECT_THAT(rowsOf(result), Contains(Row{"Faces detected", "0"}));
}

TEST(SourceTabFormatter, AddsUpTheFacesOfAllShots) {
  DescriptionResult result = description();
  result.shots = {{.faces = {{FaceBox{}, FaceBox{}}}}, {}, {.faces = {{FaceBox{}}}}};
  EXPECT_THAT(rowsOf(result), Contains(Row{"Faces detected", "3"}));
}

TEST(SourceTabFormatter, ShowsAPathThatIsNotUTF8WithReplacementCharacters) {
  EXPECT_EQ(SourceTabFormatter::rows({}, "/v/\xff.mov").front(), (Row{"File", "/v/\uFFFD.mov"}));
}

TEST(FormatGPS, GivesCoordinatesAlone) {
  EXPECT_EQ(SourceTabFormatter::formatGPS({.latitude = 1.5, .longitude = -2}), "1.500000, -2.000000");
}

TEST(FormatGPS, GivesTheAltitudeInWholeMetres) {
  EXPECT_EQ(SourceTabFormatter::formatGPS({.latitude = 1.5, .longitude = -2, .altitudeMeters = 12.6}),
            "1.500000, -2.000000 (alt 13 m)");
}

TEST(FormatGPS, PutsThePlaceFirst) {
  EXPECT_EQ(SourceTabFormatter::formatGPS({.latitude = 1.5, .longitude = -2, .placeName = "Lisbon"}),
            "Lisbon (1.500000, -2.000000)");
  EXPECT_EQ(
      SourceTabFormatter::formatGPS({.latitude = 1.5, .longitude = -2, .altitudeMeters = -0.4, .placeName = "Lisbon"}),
      "Lisbon (1.500000, -2.000000, alt -0 m)");
}

TEST(FormatGPS, TakesAnEmptyPlaceForNone) {
  EXPECT_EQ(SourceTabFormatter::formatGPS({.latitude = 0, .longitude = 0, .altitudeMeters = 0, .placeName = ""}),
            "0.000000, 0.000000 (alt 0 m)");
}

TEST(FormatTranscript, ShowsALanguageThatIsKnown) {
  TranscriptInfo transcript{.text = "Olá", .provider = "whisper", .model = "whisper-1"};
  EXPECT_EQ(SourceTabFormatter::formatTranscript(transcript), "whisper/whisper-1");
  transcript.language = "";
  EXPECT_EQ(SourceTabFormatter::formatTranscript(transcript), "whisper/whisper-1");
  transcript.language = "pt";
  EXPECT_EQ(SourceTabFormatter::formatTranscript(transcript), "whisper/whisper-1 (pt)");
}

TEST(FormatStatus, LetsTheRefusalWin) {
  EXPECT_EQ(SourceTabFormatter::formatStatus(true, true, "blurry frames"), "Refused by model");
  EXPECT_EQ(SourceTabFormatter::formatStatus(true, std::nullopt, std::nullopt), "Refused by model");
}

TEST(FormatStatus, SaysNothingWithoutAReview) {
  EXPECT_EQ(SourceTabFormatter::formatStatus(std::nullopt, std::nullopt, "blurry frames"), std::nullopt);
  EXPECT_EQ(SourceTabFormatter::formatStatus(false, false, "blurry frames"), std::nullopt);
}

TEST(FormatStatus, GivesTheReasonWhereThereIsOne) {
  EXPECT_EQ(SourceTabFormatter::formatStatus(false, true, std::nullopt), "Needs review");
  EXPECT_EQ(SourceTabFormatter::formatStatus(false, true, ""), "Needs review");
  EXPECT_EQ(SourceTabFormatter::formatStatus(std::nullopt, true, "blurry frames"), "Needs review — blurry frames");
}

}  // namespace
}  // namespace tq
