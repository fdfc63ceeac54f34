#include <array>
#include <atomic>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "Support/Unprivileged.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQDescription/DescriptionWriter.hpp"
#include "TQDescription/Library/LibraryModel.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/Descriptor.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

constexpr bool recursive = true;
constexpr bool flat = false;
constexpr std::size_t processorCount = 3;

DescriptionResult clip(std::string filename) {
  DescriptionResult result;
  result.source.filename = std::move(filename);
  return result;
}

std::string textOf(const DescriptionResult& result) {
  return writeJSON(encode(result), JSONLayout::pretty);
}

std::string clipText(std::string filename) {
  return textOf(clip(std::move(filename)));
}

/// A folder of sidecars, and what the library makes of it.
class LibraryModelTest : public testing::Test {
 protected:
  using Skips = std::vector<std::pair<std::string, std::string>>;

  /// The names of the files that were loaded, below the folder.
  std::vector<std::string> load(bool recursively = flat) {
    skips_.clear();
    sidecars_ = LibraryModel::loadSidecars(
        folder_.path(), recursively,
        [&](const fs::path& url, const std::string& message) { skips_.emplace_back(nameOf(url), message); },
        processorCount, {});
    std::vector<std::string> names;
    for (const LoadedSidecar& sidecar : sidecars_)
      names.push_back(nameOf(sidecar.sidecarURL));
    return names;
  }

  std::vector<std::string> collect(bool recursively) const {
    std::vector<std::string> names;
    for (const fs::path& url : LibraryModel::collectSidecarURLs(folder_.path(), recursively, {}))
      names.push_back(nameOf(url));
    return names;
  }

  std::string nameOf(const fs::path& url) const { return url.lexically_relative(folder_.path()).string(); }

  const test::TemporaryFolder folder_;
  std::vector<LoadedSidecar> sidecars_;
  Skips skips_;
};

TEST_F(LibraryModelTest, FindsWhatTheWriterWrote) {
  const OutputConfig config{
      .format = OutputFormat::both, .conflictPolicy = ConflictPolicy::suffix, .sidecarDirectory = std::nullopt};
  DescriptionWriter().write(clip("clip.mov"), folder_ / "clip.mov", config);
  EXPECT_THAT(load(), ElementsAre("clip.description.json"));
  EXPECT_EQ(sidecars_.front().sidecarURL, folder_ / "clip.description.json");
  EXPECT_EQ(*sidecars_.front().result, clip("clip.mov"));
}

TEST_F(LibraryModelTest, IgnoresTheNumberedSiblingsOfAnEarlierRun) {
  folder_.write("clip.description.json", clipText("new"));
  folder_.write("clip.description (2).json", clipText("old"));
  folder_.write("clip.description (31).json", "{");
  EXPECT_THAT(load(), ElementsAre("clip.description.json"));
  EXPECT_THAT(skips_, IsEmpty());
}

TEST_F(LibraryModelTest, LoadsTheSidecarOfAClipWithANumberInItsName) {
  folder_.write("clip (2).description.json", clipText("clip (2).mov"));
  EXPECT_THAT(load(), ElementsAre("clip (2).description.json"));
}

TEST_F(LibraryModelTest, KnowsSidecarsByTheEndOfTheirNamesOnly) {
  for (const char* name : {"a.description.JSON", "a.Description.json", "a.description.json.bak", "a.description.md",
                           "adescription.json", "_INDEX.json"})
    folder_.write(name, clipText("a"));
  folder_.write(".description.json", clipText("a"));
  folder_.write("b.description.json.description.json", clipText("a"));
  EXPECT_THAT(load(), ElementsAre(".description.json", "b.description.json.description.json"));
  EXPECT_THAT(skips_, IsEmpty());
}

TEST_F(LibraryModelTest, GivesAnEmptyListForAnEmptyFolder) {
  EXPECT_THAT(load(flat), IsEmpty());
  EXPECT_THAT(load(recursive), IsEmpty());
  EXPECT_THAT(skips_, IsEmpty());
}

TEST_F(LibraryModelTest, LooksIntoFoldersOnlyWhenAskedTo) {
  folder_.write("b.description.json", clipText("b"));
  folder_.write("a/z.description.json", clipText("z"));
  folder_.write("a/b/c/y.description.json", clipText("y"));
  EXPECT_THAT(load(flat), ElementsAre("b.description.json"));
  EXPECT_THAT(load(recursive), ElementsAre("a/b/c/y.description.json", "a/z.description.json", "b.description.json"));
}

TEST_F(LibraryModelTest, LooksIntoHiddenFoldersAndFiles) {
  folder_.write(".hidden/a.description.json", clipText("a"));
  folder_.write(".b.description.json", clipText("b"));
  EXPECT_THAT(load(recursive), ElementsAre(".b.description.json", ".hidden/a.description.json"));
  EXPECT_THAT(load(flat), ElementsAre(".b.description.json"));
}

TEST_F(LibraryModelTest, SortsByThePathsBytes) {
  for (const char* name : {"é", "a", "B", "a b", "a-b", "a/c"})
    folder_.write(std::string(name) + ".description.json", clipText(name));
  EXPECT_THAT(load(recursive), ElementsAre("B.description.json", "a b.description.json", "a-b.description.json",
                                           "a.description.json", "a/c.description.json", "é.description.json"));
}

TEST_F(LibraryModelTest, RaisesTheErrorOfAFolderThatCannotBeListed) {
  for (const auto& [folder, code] : {std::pair(folder_ / "missing", std::errc::no_such_file_or_directory),
                                     std::pair(folder_.write("file", ""), std::errc::not_a_directory)}) {
    try {
      LibraryModel::loadSidecars(folder, flat, nullptr, processorCount, {});
      FAIL() << folder;
    } catch (const SystemError& error) {
      EXPECT_EQ(error.code(), code);
      EXPECT_THAT(error.what(), StartsWith(folder.filename().string() + ": "));
    }
  }
}

TEST_F(LibraryModelTest, TakesAFolderThatCannotBeWalkedForAnEmptyOne) {
  for (const fs::path& folder : {folder_ / "missing", folder_.write("file", ""), fs::path()})
    EXPECT_THAT(LibraryModel::loadSidecars(folder, recursive, nullptr, processorCount, {}), IsEmpty()) << folder;
}

TEST_F(LibraryModelTest, LeavesOutAFolderThatMayNotBeRead) {
  folder_.write("a/a.description.json", clipText("a"));
  folder_.write("closed/b.description.json", clipText("b"));
  folder_.write("z/c.description.json", clipText("c"));
  fs::permissions(folder_.path(), fs::perms(0755));
  fs::permissions(folder_ / "closed", fs::perms::none);
  const test::Unprivileged user;
  EXPECT_THAT(load(recursive), ElementsAre("a/a.description.json", "z/c.description.json"));
  EXPECT_THAT(skips_, IsEmpty());
}

TEST_F(LibraryModelTest, ReportsAFileThatMayNotBeRead) {
  fs::permissions(folder_.write("closed.description.json", clipText("a")), fs::perms::none);
  folder_.write("open.description.json", clipText("b"));
  fs::permissions(folder_.path(), fs::perms(0755));
  const test::Unprivileged user;
  EXPECT_THAT(load(), ElementsAre("open.description.json"));
  EXPECT_THAT(skips_, ElementsAre(Pair("closed.description.json", "Permission denied")));
}

TEST_F(LibraryModelTest, FollowsTheFolderItselfWhenItIsALink) {
  folder_.write("real/sub/a.description.json", clipText("a"));
  fs::create_directory_symlink(folder_ / "real", folder_ / "link");
  const auto sidecars = LibraryModel::loadSidecars(folder_ / "link", recursive, nullptr, processorCount, {});
  ASSERT_EQ(sidecars.size(), 1u);
  EXPECT_EQ(sidecars.front().sidecarURL, folder_ / "link/sub/a.description.json");
}

TEST_F(LibraryModelTest, GoesInNoCirclesAlongLinks) {
  folder_.write("sub/a.description.json", clipText("a"));
  fs::create_directory_symlink("..", folder_ / "sub/up");
  fs::create_directory_symlink(".", folder_ / "sub/here");
  fs::create_directory_symlink(folder_.path(), folder_ / "sub/x.description.json");
  fs::create_symlink("loop.description.json", folder_ / "loop.description.json");
  EXPECT_THAT(load(recursive), ElementsAre("sub/a.description.json"));
  EXPECT_THAT(skips_, ElementsAre(Pair("loop.description.json", "Too many levels of symbolic links"),
                                  Pair("sub/x.description.json", "Is a directory")));
}

TEST_F(LibraryModelTest, ReadsASidecarThroughALink) {
  folder_.write("real.json", clipText("a"));
  fs::create_symlink("real.json", folder_ / "a.description.json");
  EXPECT_THAT(load(), ElementsAre("a.description.json"));
}

TEST_F(LibraryModelTest, ReportsASidecarThatIsGoneBeforeItIsRead) {
  fs::create_symlink("gone", folder_ / "a.description.json");
  folder_.write("b.description.json", clipText("b"));
  EXPECT_THAT(load(), ElementsAre("b.description.json"));
  EXPECT_THAT(skips_, ElementsAre(Pair("a.description.json", "No such file or directory")));
}

TEST_F(LibraryModelTest, SurvivesFilesAndFoldersThatComeAndGoWhileItLoads) {
  folder_.write("stays.description.json", clipText("stays"));
  std::atomic<bool> enough = false;
  std::jthread changes([&] {
    while (!enough) {
      for (const char* name : {"a.description.json", "sub/deep/b.description.json"})
        folder_.write(name, clipText("a"));
      fs::remove(folder_ / "a.description.json");
      fs::remove_all(folder_ / "sub");
    }
  });
  for (int round = 0; round < 50; ++round)
    EXPECT_THAT(load(recursive), testing::Contains("stays.description.json"));
  enough = true;
}

TEST_F(LibraryModelTest, ReportsWhatIsNoFileAndNeverWaitsForIt) {
  fs::create_directory(folder_ / "folder.description.json");
  ASSERT_EQ(::mkfifo((folder_ / "pipe.description.json").c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", folder_ / "zero.description.json");
  fs::create_symlink("/dev/null", folder_ / "null.description.json");
  const Descriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  const std::string path = folder_ / "s.description.json";
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

  EXPECT_THAT(load(recursive), IsEmpty());
  EXPECT_THAT(skips_, ElementsAre(Pair("folder.description.json", "Is a directory"),
                                  Pair("null.description.json", "Invalid argument"),
                                  Pair("pipe.description.json", "Invalid argument"),
                                  Pair("s.description.json", "No such device or address"),
                                  Pair("zero.description.json", "Invalid argument")));
}

TEST_F(LibraryModelTest, LooksIntoAFolderThatIsNamedLikeASidecar) {
  folder_.write("folder.description.json/a.description.json", clipText("a"));
  EXPECT_THAT(collect(recursive), ElementsAre("folder.description.json", "folder.description.json/a.description.json"));
  EXPECT_THAT(collect(flat), ElementsAre("folder.description.json"));
  EXPECT_THAT(load(recursive), ElementsAre("folder.description.json/a.description.json"));
}

TEST_F(LibraryModelTest, ReadsASidecarOfSixteenMebibytesAndNotOneByteMore) {
  const auto size = static_cast<std::size_t>(SafeFile::maxMetadataBytes);
  const std::string text = clipText("a");
  folder_.write("a.description.json", text + std::string(size - text.size(), ' '));
  folder_.write("b.description.json", text + std::string(size + 1 - text.size(), ' '));
  EXPECT_THAT(load(), ElementsAre("a.description.json"));
  EXPECT_THAT(skips_, ElementsAre(Pair("b.description.json", "File too large (16777217 bytes): b.description.json")));
}

TEST_F(LibraryModelTest, DoesNotReadAHugeFile) {
  fs::resize_file(folder_.write("huge.description.json", ""), std::uintmax_t{1} << 40);
  EXPECT_THAT(load(), IsEmpty());
  EXPECT_THAT(skips_, ElementsAre(Pair("huge.description.json",
                                       "File too large (1099511627776 bytes): huge.description.json")));
}

TEST_F(LibraryModelTest, ReportsEverySidecarThatIsNoDescription) {
  const std::pair<const char*, std::string> broken[] = {
      {"", "the JSON text ends too early"},
      {"{", "the JSON text ends too early"},
      {"[]", "expected an object, found a list"},
      {"null", "expected an object, found null"},
      {"{}", "schema_version: expected text, found nothing"},
      {"{]", "no valid JSON at line 1, column 2"},
      {"{\"a\": 1e999}", "a number at line 1, column 11 is too large"},
      {"\xff", "no valid JSON at line 1, column 1"},
  };
  for (std::size_t index = 0; index < std::size(broken); ++index)
    folder_.write(std::to_string(index) + ".description.json", broken[index].first);
  folder_.write("good.description.json", clipText("good"));
  EXPECT_THAT(load(), ElementsAre("good.description.json"));
  ASSERT_EQ(skips_.size(), std::size(broken));
  for (std::size_t index = 0; index < std::size(broken); ++index)
    EXPECT_EQ(skips_[index], std::pair(std::to_string(index) + ".description.json", broken[index].second));
}

TEST_F(LibraryModelTest, SaysWhereInARecordTheFaultIs) {
  JSONValue::Object object = *encode(clip("a")).asObject();
  object["shots"] = parseJSON(R"([{}, {"people_count": "2"}])");
  folder_.write("a.description.json", writeJSON(object, JSONLayout::pretty));
  EXPECT_THAT(load(), IsEmpty());
  EXPECT_THAT(skips_,
              ElementsAre(Pair("a.description.json", "shots[1].people_count: expected a whole number, found text")));
}

TEST_F(LibraryModelTest, RefusesNestingTenThousandLevelsDeep) {
  const std::string deep = std::string(10'000, '[') + std::string(10'000, ']');
  std::string text = clipText("a");
  folder_.write("a.description.json", deep);
  folder_.write("b.description.json", text.replace(text.rfind('}'), 1, ", \"x\": " + deep + "}"));
  EXPECT_THAT(load(), IsEmpty());
  EXPECT_THAT(skips_, ElementsAre(Pair("a.description.json", "the JSON is nested more than 256 levels deep"),
                                  Pair("b.description.json", "the JSON is nested more than 256 levels deep")));
}

TEST_F(LibraryModelTest, RefusesASidecarWithMoreObjectsThanAnyDescriptionHas) {
  const auto withShots = [&](const std::string& name, std::size_t count) {
    std::string text = clipText("a");
    const std::string shots = "\"shots\": []";
    std::string list = "\"shots\": [{}";
    for (std::size_t shot = 1; shot < count; ++shot)
      list += ",{}";
    folder_.write(name, text.replace(text.find(shots), shots.size(), list + "]"));
  };
  constexpr std::size_t otherObjects = 4;  // the record itself, source, engine and global
  constexpr std::size_t mostShots = LibraryModel::mostObjectsOfASidecar - otherObjects;
  withShots("a.description.json", mostShots);
  withShots("b.description.json", mostShots + 1);
  withShots("c.description.json", 5'000'000);
  EXPECT_THAT(load(), ElementsAre("a.description.json"));
  EXPECT_EQ(sidecars_.front().result->shots.size(), mostShots);
  EXPECT_THAT(skips_, ElementsAre(Pair("b.description.json", "the JSON has more than 262144 objects"),
                                  Pair("c.description.json", "the JSON has more than 262144 objects")));
}

TEST_F(LibraryModelTest, TakesBracesInATextForText) {
  DescriptionResult braces = clip("a");
  braces.summary = std::string(2 * LibraryModel::mostObjectsOfASidecar, '{');
  folder_.write("a.description.json", textOf(braces));
  EXPECT_THAT(load(), ElementsAre("a.description.json"));
}

TEST_F(LibraryModelTest, LetsTheLastOfEqualKeysStand) {
  std::string text = clipText("a");
  folder_.write("a.description.json", text.replace(text.rfind('}'), 1, ", \"summary\": 7, \"summary\": \"last\"}"));
  EXPECT_THAT(load(), ElementsAre("a.description.json"));
  EXPECT_EQ(sidecars_.front().result->summary, "last");
}

TEST_F(LibraryModelTest, TakesHugeNumbersForWhatTheyAre) {
  const auto withSize = [](const std::string& number) {
    std::string text = clipText("a");
    const std::string size = "\"file_size_bytes\": 0";
    return text.replace(text.find(size), size.size(), "\"file_size_bytes\": " + number);
  };
  const auto withDuration = [](const std::string& number) {
    std::string text = clipText("a");
    const std::string duration = "\"duration_seconds\": 0.0";
    return text.replace(text.find(duration), duration.size(), "\"duration_seconds\": " + number);
  };
  folder_.write("a.description.json", withSize("9223372036854775807"));
  folder_.write("b.description.json", withSize("9223372036854775808"));
  folder_.write("c.description.json", withSize("18446744073709551616"));
  folder_.write("d.description.json", withSize("-9223372036854775808.0"));
  folder_.write("e.description.json", withDuration("123456789012345678901234567890"));
  folder_.write("f.description.json", withDuration("1e308"));
  folder_.write("g.description.json", withDuration("1e309"));
  EXPECT_THAT(load(),
              ElementsAre("a.description.json", "d.description.json", "e.description.json", "f.description.json"));
  EXPECT_EQ(sidecars_[0].result->source.fileSizeBytes, std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(sidecars_[1].result->source.fileSizeBytes, std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(sidecars_[2].result->source.durationSeconds, 123456789012345678901234567890.0);
  EXPECT_EQ(sidecars_[3].result->source.durationSeconds, 1e308);
  const std::string expected = "source.file_size_bytes: expected a whole number, found ";
  EXPECT_THAT(skips_, ElementsAre(Pair("b.description.json", expected + "9.223372036854776e+18"),
                                  Pair("c.description.json", expected + "1.8446744073709552e+19"),
                                  Pair("g.description.json", HasSubstr("is too large"))));
}

TEST_F(LibraryModelTest, RefusesZeroBytesOutsideOfEscapes) {
  const std::string text = clipText("a");
  folder_.write("a.description.json", text + "\0"s);
  folder_.write("b.description.json", clipText("\0"s));
  EXPECT_THAT(load(), ElementsAre("b.description.json"));
  EXPECT_EQ(sidecars_.front().result->source.filename, "\0"s);
  EXPECT_EQ(sidecars_.front().sourceVideoURL(), std::nullopt);
  EXPECT_THAT(skips_, ElementsAre(Pair("a.description.json", StartsWith("no valid JSON at line "))));
}

TEST_F(LibraryModelTest, ReadsSidecarsWhoseNamesAreNotUTF8) {
  folder_.write("caf\xe9.description.json", clipText("a"));
  folder_.write("\xff/\xfe.description.json", "{");
  EXPECT_THAT(load(recursive), ElementsAre("caf\xe9.description.json"));
  ASSERT_EQ(skips_.size(), 1u);
  EXPECT_EQ(skips_[0].first, "\xff/\xfe.description.json");
}

TEST_F(LibraryModelTest, ReportsInWordsThatCanBeShown) {
  fs::resize_file(folder_.write("\xfe.description.json", ""), SafeFile::maxMetadataBytes + 1);
  load();
  ASSERT_EQ(skips_.size(), 1u);
  EXPECT_EQ(skips_[0].second, "File too large (16777217 bytes): \uFFFD.description.json");
}

TEST_F(LibraryModelTest, ReadsWhatIsWithinReachInFoldersOfAnyDepth) {
  // A path has at most 4096 bytes, folders can be nested deeper.
  const std::string name(250, 'd');
  Descriptor parent(::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (int level = 0; level < 20; ++level) {
    ASSERT_EQ(::mkdirat(parent.get(), name.c_str(), 0700), 0);
    parent = Descriptor(::openat(parent.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Descriptor(::openat(parent.get(), "a.description.json", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  }
  folder_.write(name + "/b.description.json", clipText("b"));
  EXPECT_THAT(load(recursive), ElementsAre(name + "/b.description.json"));
  EXPECT_GE(skips_.size(), 15u);
  for (const auto& [file, message] : skips_)
    EXPECT_EQ(message, "the JSON text ends too early");
}

TEST_F(LibraryModelTest, ReportsInOrderOnTheCallersThread) {
  std::vector<std::string> expected;
  for (int number = 1000; number < 1300; ++number)
    expected.push_back(nameOf(folder_.write(std::to_string(number) + ".description.json", "{")));
  std::vector<std::string> reported;
  LibraryModel::loadSidecars(folder_.path(), flat,
                             [&, caller = std::this_thread::get_id()](const fs::path& url, const std::string&) {
                               EXPECT_EQ(std::this_thread::get_id(), caller);
                               reported.push_back(nameOf(url));
                             },
                             processorCount, {});
  EXPECT_EQ(reported, expected);
}

TEST_F(LibraryModelTest, NeedsNobodyToReportTo) {
  folder_.write("a.description.json", "{");
  folder_.write("b.description.json", clipText("b"));
  EXPECT_EQ(LibraryModel::loadSidecars(folder_.path(), flat, nullptr, processorCount, {}).size(), 1u);
}

TEST_F(LibraryModelTest, GivesTheSameWithAnyNumberOfProcessors) {
  for (int number = 1000; number < 1100; ++number)
    folder_.write(std::to_string(number) + ".description.json",
                  number % 7 == 0 ? "{" : clipText(std::to_string(number)));
  load();
  const std::vector<LoadedSidecar> expected = sidecars_;
  EXPECT_EQ(expected.size(), 85u);
  for (const std::size_t count : {1, 2, 64})
    EXPECT_EQ(LibraryModel::loadSidecars(folder_.path(), flat, nullptr, count, {}), expected) << count;
}

TEST_F(LibraryModelTest, LoadsAHundredThousandSidecars) {
  // Links to a file are quicker made than files; a file has at most 65,000 of them.
  const std::array good{folder_.write("good", clipText("good")), folder_.write("too", clipText("too"))};
  const fs::path bad = folder_.write("bad", "{");
  fs::create_directories(folder_ / "sub/sub");
  for (std::size_t number = 100'000; number < 200'000; ++number)
    fs::create_hard_link(number % 100 ? good.at(number % 2) : bad,
                         folder_ / (number % 3 ? "sub" : "sub/sub") / (std::to_string(number) + ".description.json"));
  EXPECT_EQ(load(recursive).size(), 99'000u);
  EXPECT_EQ(skips_.size(), 1'000u);
  EXPECT_TRUE(std::is_sorted(skips_.begin(), skips_.end()));
  EXPECT_TRUE(std::is_sorted(sidecars_.begin(), sidecars_.end(), [](const auto& left, const auto& right) {
    return left.sidecarURL.native() < right.sidecarURL.native();
  }));
}

TEST_F(LibraryModelTest, StopsWhenAskedTo) {
  folder_.write("sub/a.description.json", clipText("a"));
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(LibraryModel::loadSidecars(folder_.path(), recursive, nullptr, processorCount, source.get_token()),
               Cancelled);
  EXPECT_THROW(LibraryModel::loadSidecars(folder_.path(), flat, nullptr, processorCount, source.get_token()),
               Cancelled);
  EXPECT_THROW(LibraryModel::collectSidecarURLs(folder_.path(), recursive, source.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq
