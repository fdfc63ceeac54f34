#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>

#include "Support/TemporaryFolder.hpp"
#include "TQDescription/FolderIndex/FolderIndexFiles.hpp"
#include "TQDescription/FolderIndex/IndexBuilder.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

FolderIndex indexOf(const std::filesystem::path& folder, double duration = 2) {
  DescriptionResult result;
  result.source.filename = "a.mov";
  result.source.durationSeconds = duration;
  return IndexBuilder::build(folder, {result}, Date());
}

TEST(WriteFolderIndex, WritesBothFormsAndNothingElse) {
  const TemporaryFolder folder;
  const FolderIndex index = indexOf(folder.path());
  writeFolderIndex(folder.path(), index);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("_INDEX.json", "_INDEX.md"));
  EXPECT_EQ(contentOf(folder / "_INDEX.json"), IndexBuilder::renderJSON(index));
  EXPECT_EQ(contentOf(folder / "_INDEX.md"), IndexBuilder::renderMarkdown(index));
}

TEST(WriteFolderIndex, ReplacesAnOlderOne) {
  const TemporaryFolder folder;
  folder.write("_INDEX.json", "old");
  folder.write("_INDEX.md", "old");
  writeFolderIndex(folder.path(), indexOf(folder.path()));
  EXPECT_NE(contentOf(folder / "_INDEX.json"), "old");
  EXPECT_NE(contentOf(folder / "_INDEX.md"), "old");
}

TEST(WriteFolderIndex, AnIndexWithoutAJSONFormWritesNothing) {
  const TemporaryFolder folder;
  EXPECT_THROW(writeFolderIndex(folder.path(), indexOf(folder.path(), std::numeric_limits<double>::infinity())),
               JSONError);
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
}

TEST(WriteFolderIndex, AnIndexThatItsOwnerLockedIsAnErrorThatNamesIt) {
  const TemporaryFolder folder;
  ::chmod(folder.write("_INDEX.md", "locked").c_str(), 0444);
  try {
    writeFolderIndex(folder.path(), indexOf(folder.path()));
    ADD_FAILURE();
  } catch (const SystemError& error) {
    EXPECT_STREQ(error.what(), "_INDEX.md: Permission denied");
  }
  EXPECT_EQ(contentOf(folder / "_INDEX.md"), "locked");
}

}  // namespace
}  // namespace tq::test
