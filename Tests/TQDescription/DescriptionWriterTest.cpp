#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "Support/FileSizeLimit.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/DescriptionWriter.hpp"
#include "TQDescription/MarkdownRenderer.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::contentOf;
using test::namesIn;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int lastNumber = 9999;

class DescriptionWriterTest : public testing::Test {
 protected:
  static DescriptionResult description() {
    DescriptionResult result;
    result.source.filename = "clip.mov";
    result.summary = "A street/at night.";
    result.shots = {{.timecode = "00:00:01.000"}};
    return result;
  }

  static OutputConfig config(ConflictPolicy policy, OutputFormat format = OutputFormat::both) {
    return {.format = format, .conflictPolicy = policy, .sidecarDirectory = std::nullopt};
  }

  std::vector<fs::path> write(const OutputConfig& config) const {
    return DescriptionWriter().write(description(), clip_, config);
  }

  std::optional<fs::path> writePoster(const OutputConfig& config, const Bytes& jpeg = {0xff, 0xd8}) const {
    return DescriptionWriter().writePoster(jpeg, clip_, config);
  }

  /// The payload of the `outputWriteFailed` that `action` throws.
  template <class Action>
  static TQError::OutputWriteFailed writeFailureOf(const Action& action) {
    try {
      action();
    } catch (const TQError& error) {
      return std::get<TQError::OutputWriteFailed>(error.value());
    }
    throw std::logic_error("nothing was thrown");
  }

  /// Takes every numbered name of that extension from `first` to `last`. Links to one file are quicker made than files.
  void takeNumbers(int first, int last, const std::string& extension) const {
    const fs::path file = folder_.write("taken", "");
    for (int number = first; number <= last; ++number)
      fs::create_hard_link(file, folder_ / ("clip.description (" + std::to_string(number) + ")." + extension));
  }

  test::TemporaryFolder folder_;
  fs::path clip_ = folder_ / "clip.mov";
};

TEST_F(DescriptionWriterTest, WritesBothSidecarsMarkdownFirst) {
  EXPECT_THAT(write(config(ConflictPolicy::skipExisting)),
              ElementsAre(folder_ / "clip.description.md", folder_ / "clip.description.json"));
  EXPECT_EQ(contentOf(folder_ / "clip.description.md"), MarkdownRenderer::render(description()));
  EXPECT_EQ(decode<DescriptionResult>(parseJSON(contentOf(folder_ / "clip.description.json"))), description());
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("clip.description.json", "clip.description.md"));
}

TEST_F(DescriptionWriterTest, WritesTheJSONPrettySortedWithPlainSlashesAndISODates) {
  write(config(ConflictPolicy::skipExisting, OutputFormat::json));
  const std::string text = contentOf(folder_ / "clip.description.json");
  EXPECT_THAT(text, testing::StartsWith("{\n"));
  EXPECT_THAT(text, testing::HasSubstr("A street/at night."));
  EXPECT_THAT(text, testing::HasSubstr("\"1970-01-01T00:00:00Z\""));
  std::vector<std::size_t> positions;
  for (const char* key : {"\"engine\"", "\"global\"", "\"schema_version\"", "\"shots\"", "\"source\"", "\"summary\""})
    positions.push_back(text.find(key));
  EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end()));
  EXPECT_THAT(text, testing::Not(testing::HasSubstr("null")));
}

TEST_F(DescriptionWriterTest, WritesOneSidecarWhenOneIsAskedFor) {
  EXPECT_THAT(write(config(ConflictPolicy::skipExisting, OutputFormat::markdown)),
              ElementsAre(folder_ / "clip.description.md"));
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("clip.description.md"));
}

TEST_F(DescriptionWriterTest, NamesFollowTheStemOfTheClip) {
  const std::vector<std::pair<std::string, std::string>> names{{"clip", "clip"}, {"a.b.mov", "a.b"}, {".mov", ".mov"}};
  for (const auto& [clip, stem] : names)
    EXPECT_THAT(DescriptionWriter().write(description(), folder_ / clip,
                                          config(ConflictPolicy::overwrite, OutputFormat::markdown)),
                ElementsAre(folder_ / (stem + ".description.md")));
}

TEST_F(DescriptionWriterTest, WritesIntoTheSidecarFolderAndMakesItWithItsParents) {
  OutputConfig elsewhere = config(ConflictPolicy::skipExisting);
  elsewhere.sidecarDirectory = folder_ / "a" / "b";
  EXPECT_THAT(write(elsewhere),
              ElementsAre(folder_ / "a" / "b" / "clip.description.md", folder_ / "a" / "b" / "clip.description.json"));
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("a"));
}

TEST_F(DescriptionWriterTest, SkipExistingLeavesBothFilesAloneWithoutAnError) {
  folder_.write("clip.description.md", "old");
  folder_.write("clip.description.json", "old");
  EXPECT_THAT(write(config(ConflictPolicy::skipExisting)), IsEmpty());
  EXPECT_EQ(contentOf(folder_ / "clip.description.md"), "old");
  EXPECT_EQ(contentOf(folder_ / "clip.description.json"), "old");
}

TEST_F(DescriptionWriterTest, SkipExistingIsDecidedForEachFile) {
  folder_.write("clip.description.md", "old");
  EXPECT_THAT(write(config(ConflictPolicy::skipExisting)), ElementsAre(folder_ / "clip.description.json"));
  EXPECT_EQ(contentOf(folder_ / "clip.description.md"), "old");
}

TEST_F(DescriptionWriterTest, OverwriteReplacesTheOldFiles) {
  folder_.write("clip.description.md", "old");
  folder_.write("clip.description.json", "old");
  EXPECT_EQ(write(config(ConflictPolicy::overwrite)).size(), 2u);
  EXPECT_EQ(contentOf(folder_ / "clip.description.md"), MarkdownRenderer::render(description()));
  EXPECT_NE(contentOf(folder_ / "clip.description.json"), "old");
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("clip.description.json", "clip.description.md"));
}

TEST_F(DescriptionWriterTest, SuffixTakesTheFirstFreeNumberOfEachFile) {
  folder_.write("clip.description.md", "old");
  folder_.write("clip.description (2).md", "old");
  EXPECT_THAT(write(config(ConflictPolicy::suffix)),
              ElementsAre(folder_ / "clip.description (3).md", folder_ / "clip.description.json"));
  EXPECT_EQ(contentOf(folder_ / "clip.description.md"), "old");
  EXPECT_EQ(contentOf(folder_ / "clip.description (2).md"), "old");
}

TEST_F(DescriptionWriterTest, SuffixFillsGapsAndStartsAtTwo) {
  folder_.write("clip.description.md", "old");
  folder_.write("clip.description (3).md", "old");
  EXPECT_THAT(write(config(ConflictPolicy::suffix, OutputFormat::markdown)),
              ElementsAre(folder_ / "clip.description (2).md"));
}

TEST_F(DescriptionWriterTest, SuffixGoesUpToItsLastNumber) {
  folder_.write("clip.description.json", "old");
  takeNumbers(2, lastNumber - 1, "json");
  EXPECT_THAT(write(config(ConflictPolicy::suffix, OutputFormat::json)),
              ElementsAre(folder_ / "clip.description (9999).json"));
}

TEST_F(DescriptionWriterTest, SuffixFailsWhenAllNumbersAreTaken) {
  folder_.write("clip.description.json", "old");
  takeNumbers(2, lastNumber, "json");
  const auto failure = writeFailureOf([&] { write(config(ConflictPolicy::suffix)); });
  EXPECT_EQ(failure.url, folder_ / "clip.description.json");
  EXPECT_EQ(failure.text, "too many existing siblings");
  EXPECT_FALSE(fs::exists(folder_ / "clip.description (10000).json"));
  EXPECT_TRUE(fs::exists(folder_ / "clip.description.md")) << "the Markdown that was written first stays";
}

TEST_F(DescriptionWriterTest, AFolderThatCannotBeMadeIsTheSystemsOwnError) {
  OutputConfig elsewhere = config(ConflictPolicy::skipExisting);
  elsewhere.sidecarDirectory = folder_.write("file", "kept") / "sub";
  EXPECT_THROW(write(elsewhere), SystemError);
  EXPECT_THROW(writePoster(elsewhere), SystemError);
  EXPECT_EQ(contentOf(folder_ / "file"), "kept");
}

TEST_F(DescriptionWriterTest, AFileInPlaceOfTheFolderIsAFailedWrite) {
  OutputConfig elsewhere = config(ConflictPolicy::skipExisting);
  elsewhere.sidecarDirectory = folder_.write("file", "kept");
  const auto failure = writeFailureOf([&] { write(elsewhere); });
  EXPECT_EQ(failure.url, folder_ / "file" / "clip.description.md");
  EXPECT_EQ(failure.text, "Not a directory");
  EXPECT_EQ(contentOf(folder_ / "file"), "kept");
}

TEST_F(DescriptionWriterTest, ALockedSidecarIsNotReplaced) {
  const fs::path locked = folder_.write("clip.description.md", "old");
  setFileMode(locked, 0444);
  const auto failure = writeFailureOf([&] { write(config(ConflictPolicy::overwrite)); });
  EXPECT_EQ(failure.url, locked);
  EXPECT_EQ(failure.text, "Permission denied");
  EXPECT_EQ(contentOf(locked), "old");
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("clip.description.md"));
}

TEST_F(DescriptionWriterTest, AFullDiskLeavesTheOldSidecarsWhole) {
  folder_.write("clip.description.md", "old");
  folder_.write("clip.description.json", "old");
  const auto failure = writeFailureOf([&] {
    const test::FileSizeLimit full(100);
    write(config(ConflictPolicy::overwrite));
  });
  EXPECT_EQ(failure.url, folder_ / "clip.description.md");
  EXPECT_EQ(failure.text, "File too large");
  EXPECT_EQ(contentOf(folder_ / "clip.description.md"), "old");
  EXPECT_EQ(contentOf(folder_ / "clip.description.json"), "old");
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("clip.description.json", "clip.description.md"));
}

TEST_F(DescriptionWriterTest, AFolderOfTheSidecarsNameIsNotReplaced) {
  fs::create_directory(folder_ / "clip.description.md");
  const auto failure = writeFailureOf([&] { write(config(ConflictPolicy::overwrite)); });
  EXPECT_EQ(failure.url, folder_ / "clip.description.md");
  EXPECT_EQ(failure.text, "Is a directory");
}

TEST_F(DescriptionWriterTest, TheLongestNameOfTheFileSystemIsWritten) {
  const std::string stem(255 - std::string(".description.md").size(), 'n');
  EXPECT_THAT(DescriptionWriter().write(description(), folder_ / (stem + ".mov"),
                                        config(ConflictPolicy::skipExisting, OutputFormat::markdown)),
              ElementsAre(folder_ / (stem + ".description.md")));
}

TEST_F(DescriptionWriterTest, ANameTooLongForTheFileSystemIsAClearError) {
  const std::string stem(256 - std::string(".description.md").size(), 'n');
  const auto failure = writeFailureOf([&] {
    DescriptionWriter().write(description(), folder_ / (stem + ".mov"), config(ConflictPolicy::skipExisting));
  });
  EXPECT_EQ(failure.url, folder_ / (stem + ".description.md"));
  EXPECT_EQ(failure.text, "File name too long");
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(DescriptionWriterTest, AFailureInTheJSONStepLeavesTheNewMarkdown) {
  fs::create_directory(folder_ / "clip.description.json");
  const auto failure = writeFailureOf([&] { write(config(ConflictPolicy::overwrite)); });
  EXPECT_EQ(failure.url, folder_ / "clip.description.json");
  EXPECT_EQ(contentOf(folder_ / "clip.description.md"), MarkdownRenderer::render(description()));
}

TEST_F(DescriptionWriterTest, MarkdownThatIsNotUTF8IsRefused) {
  folder_.write("clip.description.md", "old");
  DescriptionResult result = description();
  result.summary = "caf\xe9";
  const auto failure =
      writeFailureOf([&] { DescriptionWriter().write(result, clip_, config(ConflictPolicy::overwrite)); });
  EXPECT_EQ(failure.url, folder_ / "clip.description.md");
  EXPECT_EQ(failure.text, "could not encode UTF-8");
  EXPECT_EQ(contentOf(folder_ / "clip.description.md"), "old");
}

TEST_F(DescriptionWriterTest, AnErrorOfTheJSONEncoderPassesUnchanged) {
  DescriptionResult result = description();
  result.summary = "caf\xe9";
  const OutputConfig jsonOnly = config(ConflictPolicy::overwrite, OutputFormat::json);
  EXPECT_THROW(DescriptionWriter().write(result, clip_, jsonOnly), JSONError);
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(DescriptionWriterTest, AnErrorOfTheJSONEncoderLeavesTheNewMarkdown) {
  DescriptionResult result = description();
  result.source.frameRate = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW(DescriptionWriter().write(result, clip_, config(ConflictPolicy::overwrite)), JSONError);
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("clip.description.md"));
}

TEST_F(DescriptionWriterTest, WithFormatJSONTheMarkdownIsNotTouched) {
  fs::create_directory(folder_ / "clip.description.md");
  EXPECT_THAT(write(config(ConflictPolicy::overwrite, OutputFormat::json)),
              ElementsAre(folder_ / "clip.description.json"));
}

TEST_F(DescriptionWriterTest, SkippedMarkdownIsNotRendered) {
  folder_.write("clip.description.md", "old");
  DescriptionResult result = description();
  result.summary = "caf\xe9";
  const OutputConfig markdownOnly = config(ConflictPolicy::skipExisting, OutputFormat::markdown);
  EXPECT_THAT(DescriptionWriter().write(result, clip_, markdownOnly), IsEmpty());
}

TEST_F(DescriptionWriterTest, WritesThePosterBytesWhateverTheFormat) {
  EXPECT_EQ(writePoster(config(ConflictPolicy::skipExisting, OutputFormat::json)), folder_ / "clip.description.jpg");
  EXPECT_EQ(contentOf(folder_ / "clip.description.jpg"), "\xff\xd8");
}

TEST_F(DescriptionWriterTest, AnEmptyPosterTouchesNothingUnderAnyPolicy) {
  for (const ConflictPolicy policy : allCases<ConflictPolicy>()) {
    OutputConfig elsewhere = config(policy);
    elsewhere.sidecarDirectory = folder_ / "new";
    EXPECT_EQ(writePoster(elsewhere, {}), std::nullopt);
  }
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(DescriptionWriterTest, ThePosterFollowsTheConflictPolicy) {
  folder_.write("clip.description.jpg", "old");
  EXPECT_EQ(writePoster(config(ConflictPolicy::skipExisting)), std::nullopt);
  EXPECT_EQ(contentOf(folder_ / "clip.description.jpg"), "old");
  EXPECT_EQ(writePoster(config(ConflictPolicy::suffix)), folder_ / "clip.description (2).jpg");
  EXPECT_EQ(contentOf(folder_ / "clip.description.jpg"), "old");
  EXPECT_EQ(writePoster(config(ConflictPolicy::overwrite)), folder_ / "clip.description.jpg");
  EXPECT_EQ(contentOf(folder_ / "clip.description.jpg"), "\xff\xd8");
}

TEST_F(DescriptionWriterTest, APosterThatCannotBeWrittenIsAFailedWrite) {
  fs::create_directory(folder_ / "clip.description.jpg");
  EXPECT_EQ(writeFailureOf([&] { writePoster(config(ConflictPolicy::overwrite)); }).url,
            folder_ / "clip.description.jpg");
}

}  // namespace
}  // namespace tq
