#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQDescription/Export/CSVMarkersExporter.hpp"
#include "TQDescription/Export/EDLExporter.hpp"
#include "TQDescription/Export/FCPXMLExporter.hpp"
#include "TQDescription/Export/LibraryExport.hpp"

namespace tq {
namespace {

using testing::SizeIs;

LoadedSidecar sidecar(const std::string& filename, std::vector<std::string> timecodes = {}) {
  DescriptionResult result;
  result.source.filename = filename;
  result.source.durationSeconds = 10;
  for (std::string& timecode : timecodes)
    result.shots.emplace_back().timecode = std::move(timecode);
  return {.sidecarURL = "/clips/x.description.json", .result = std::move(result)};
}

TEST(LibraryExportItems, AreTheClipsBesideTheirSidecarsWithTheRangesOfTheirShots) {
  const auto items = LibraryExport::items({sidecar("b.mov", {"00:00:00", "00:00:04"}), sidecar("a.mov")});
  ASSERT_THAT(items, SizeIs(2));
  EXPECT_EQ(items[0].mediaURL, "/clips/b.mov");
  EXPECT_EQ(items[0].result->source.filename, "b.mov");
  EXPECT_THAT(items[0].ranges, SizeIs(2));
  EXPECT_EQ(items[1].mediaURL, "/clips/a.mov");
  EXPECT_THAT(items[1].ranges, SizeIs(1));
  EXPECT_EQ(LibraryExport::rangeCount(items), 3u);
}

TEST(LibraryExportItems, AFlaggedClipWithoutTimesIsOneRange) {
  LoadedSidecar refused = sidecar("a.mov");
  DescriptionResult result = *refused.result;
  result.flagged = true;
  result.shots.resize(3);
  refused.result = result;
  EXPECT_THAT(LibraryExport::items({refused}).at(0).ranges, SizeIs(1));
}

TEST(LibraryExportItems, ANameThatLeadsElsewhereIsLeftOut) {
  EXPECT_THAT(LibraryExport::items({sidecar("../a.mov"), sidecar(""), sidecar("a.mov"), sidecar("/etc/passwd")}),
              SizeIs(1));
}

TEST(LibraryExportItems, OfNothingAreNone) {
  EXPECT_THAT(LibraryExport::items({}), SizeIs(0));
  EXPECT_EQ(LibraryExport::rangeCount({}), 0u);
}

TEST(LibraryExportTitle, IsWhatWasSearchedFor) {
  EXPECT_EQ(LibraryExport::title(" beach walk\n"), "beach walk");
  EXPECT_EQ(LibraryExport::title(" \t "), "Tarquel Export");
  EXPECT_EQ(LibraryExport::title(""), "Tarquel Export");
}

TEST(LibraryExportFilename, IsTheQueryWithoutBlanks) {
  EXPECT_EQ(LibraryExport::suggestedFilename(" beach walk ", TextExportFormat::fcpxml), "beach_walk.fcpxml");
  EXPECT_EQ(LibraryExport::suggestedFilename("a  b", TextExportFormat::edl), "a__b.edl");
  EXPECT_EQ(LibraryExport::suggestedFilename("", TextExportFormat::csv), "export.csv");
}

TEST(LibraryExportText, IsThatOfTheFormatWithTheTitle) {
  const auto items = LibraryExport::items({sidecar("a.mov")});
  EXPECT_EQ(LibraryExport::text(TextExportFormat::fcpxml, items, " sea "), FCPXMLExporter::exportItems(items, "sea"));
  EXPECT_EQ(LibraryExport::text(TextExportFormat::edl, items, ""), EDLExporter::exportItems(items, "Tarquel Export"));
  EXPECT_EQ(LibraryExport::text(TextExportFormat::csv, items, "sea"), CSVMarkersExporter::exportItems(items));
}

}  // namespace
}  // namespace tq
