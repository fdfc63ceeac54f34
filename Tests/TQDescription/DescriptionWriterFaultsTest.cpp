#include <algorithm>
#include <gtest/gtest.h>

#include "Support/Faults/FaultTrials.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQDescription/DescriptionWriter.hpp"
#include "TQDescription/MarkdownRenderer.hpp"
#include "TQPlatform/FileSystem/TemporaryFile.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::contentOf;
using test::FileCall;
using test::namesIn;
using test::Strikes;

const std::string oldMarkdown = "the user's own words";
const std::string oldJSON = R"({"by": "the user"})";
const std::string oldPoster = "\xff\xd8 old";
const std::string newPoster = "\xff\xd8 new";

/// All three files of a clip are written, in a folder that holds old ones or nothing.
struct Case {
  std::string name;
  ConflictPolicy policy;
  bool hasOldFiles;
};

void PrintTo(const Case& one, std::ostream* out) {
  *out << one.name;
}

class DescriptionWriterFaults : public testing::TestWithParam<Case> {
 protected:
  DescriptionWriterFaults() {
    description.source.filename = "clip.mov";
    description.summary = "A street at night.";
    newMarkdown = MarkdownRenderer::render(description);
    newJSON = writeJSON(encode(description), JSONLayout::pretty);
  }

  void prepare() const {
    fs::remove_all(sidecars);
    if (!GetParam().hasOldFiles) return;
    base.write("sidecars/clip.description.md", oldMarkdown);
    base.write("sidecars/clip.description.json", oldJSON);
    base.write("sidecars/clip.description.jpg", oldPoster);
  }

  void write() const {
    const OutputConfig config{
        .format = OutputFormat::both, .conflictPolicy = GetParam().policy, .sidecarDirectory = sidecars};
    DescriptionWriter().write(description, base / "clip.mov", config);
    DescriptionWriter().writePoster(viewOf(newPoster), base / "clip.mov", config);
  }

  const std::string& newContentOf(const std::string& extension) const {
    return extension == ".md" ? newMarkdown : extension == ".json" ? newJSON : newPoster;
  }

  static const std::string& oldContentOf(const std::string& extension) {
    return extension == ".md" ? oldMarkdown : extension == ".json" ? oldJSON : oldPoster;
  }

  /// The files of the clip and no others, each the old one or the new one entire, and the user's own where the policy
  /// says so.
  void expectWholeFiles() const {
    if (!fs::exists(sidecars)) return;
    for (const std::string& name : namesIn(sidecars)) {
      const std::string content = contentOf(sidecars / name);
      const std::string extension = fs::path(name).extension();
      if (extension == ".json") {
        EXPECT_NO_THROW(parseJSON(content)) << name;
      }
      const bool isPlain = name == "clip.description" + extension;
      EXPECT_TRUE(isPlain || name.starts_with("clip.description (")) << name;
      const bool mayBeOld = GetParam().hasOldFiles && isPlain;
      const bool mayBeNew = !mayBeOld || GetParam().policy == ConflictPolicy::overwrite;
      EXPECT_TRUE((mayBeOld && content == oldContentOf(extension)) || (mayBeNew && content == newContentOf(extension)))
          << name << ": " << content;
    }
  }

  /// All three are there, new ones except where the policy keeps the old.
  void expectAllThree() const {
    const bool keepsOld = GetParam().hasOldFiles && GetParam().policy != ConflictPolicy::overwrite;
    for (const std::string extension : {".md", ".json", ".jpg"}) {
      const fs::path plain = sidecars / ("clip.description" + extension);
      EXPECT_EQ(contentOf(plain), keepsOld ? oldContentOf(extension) : newContentOf(extension));
      if (GetParam().hasOldFiles && GetParam().policy == ConflictPolicy::suffix) {
        EXPECT_EQ(contentOf(sidecars / ("clip.description (2)" + extension)), newContentOf(extension));
      }
    }
  }

  test::TemporaryFolder base;
  fs::path sidecars = base / "sidecars";
  DescriptionResult description;
  std::string newMarkdown;
  std::string newJSON;
};

TEST_P(DescriptionWriterFaults, EveryFileIsTheOldOneOrTheNewOneWhateverFails) {
  const Strikes strikes = test::failEveryCall(
      {.folder = base.path(),
       .prepare = [&] { prepare(); },
       .attempt = [&] { write(); },
       .check =
           [&](const std::optional<std::string>& error) {
             expectWholeFiles();
             if (!error) expectAllThree();
             EXPECT_TRUE(!error || error->starts_with("Could not write output file clip.description") ||
                         error->starts_with("sidecars: "))
                 << *error;
             write();
             expectWholeFiles();
             expectAllThree();
           }});
  EXPECT_GE(strikes.count(FileCall::inspect), 1u);
  if (GetParam().hasOldFiles && GetParam().policy == ConflictPolicy::skipExisting) return;  // nothing is written
  constexpr int files = 3;
  constexpr int errors = 3;
  for (const FileCall call : {FileCall::lock, FileCall::duplicate, FileCall::write, FileCall::rename})
    EXPECT_EQ(strikes.at(call), files * errors) << nameOf(call);
  for (const FileCall call : {FileCall::open, FileCall::sync})
    EXPECT_EQ(strikes.at(call), files * errors * 2) << nameOf(call);
  EXPECT_EQ(strikes.count(FileCall::makeFolder), GetParam().hasOldFiles ? 0u : 1u);
}

TEST_P(DescriptionWriterFaults, EveryFileIsTheOldOneOrTheNewOneWhereverTheProgramIsKilled) {
  const int killed = test::killAtEveryCall({.folder = base.path(),
                                            .prepare = [&] { prepare(); },
                                            .attempt = [&] { write(); },
                                            .check =
                                                [&](const auto&) {
                                                  removeAbandonedTemporaries(sidecars);
                                                  expectWholeFiles();
                                                  write();
                                                  expectWholeFiles();
                                                  expectAllThree();
                                                }});
  EXPECT_GE(killed, 6);
}

INSTANTIATE_TEST_SUITE_P(, DescriptionWriterFaults,
                         testing::Values(Case{"OfANewClip", ConflictPolicy::skipExisting, false},
                                         Case{"SkippingOldFiles", ConflictPolicy::skipExisting, true},
                                         Case{"OverwritingOldFiles", ConflictPolicy::overwrite, true},
                                         Case{"BesideOldFiles", ConflictPolicy::suffix, true}),
                         [](const auto& test) { return test.param.name; });

TEST(DescriptionWriterLooks, ALookThatFailsReplacesNoFile) {
  const test::TemporaryFolder folder;
  folder.write("clip.description.md", oldMarkdown);
  const test::FileFaults faults(folder.path(), [&](FileCall call, int index) {
    // The first look is at the folder.
    return call == FileCall::inspect && index == 1 ? test::FileFate{.error = EIO} : test::FileFate();
  });
  const OutputConfig config{.format = OutputFormat::markdown, .conflictPolicy = ConflictPolicy::skipExisting};
  EXPECT_ANY_THROW(DescriptionWriter().write({}, folder / "clip.mov", config));
  EXPECT_EQ(contentOf(folder / "clip.description.md"), oldMarkdown);
}

}  // namespace
}  // namespace tq
