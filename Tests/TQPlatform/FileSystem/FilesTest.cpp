#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/FileSizeLimit.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/Umask.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

FileMode modeOf(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

/// The errno that `action` fails with, or 0.
template <class Action>
int failureOf(Action action) {
  try {
    action();
  } catch (const SystemError& error) {
    return error.code().value();
  }
  return 0;
}

TEST(WriteFileAtomically, CreatesAFileWithTheContentAndNothingElse) {
  const TemporaryFolder folder;
  writeFileAtomically(folder / "a.json", viewOf("content"));
  EXPECT_EQ(contentOf(folder / "a.json"), "content");
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a.json"});
}

TEST(WriteFileAtomically, ReplacesTheWholeContent) {
  const TemporaryFolder folder;
  folder.write("a.json", "a much longer old content");
  writeFileAtomically(folder / "a.json", viewOf("new"));
  EXPECT_EQ(contentOf(folder / "a.json"), "new");
}

TEST(WriteFileAtomically, WritesAnEmptyFile) {
  const TemporaryFolder folder;
  folder.write("a", "old");
  writeFileAtomically(folder / "a", {});
  EXPECT_EQ(contentOf(folder / "a"), "");
}

TEST(WriteFileAtomically, AReaderOfTheOldFileKeepsTheOldContent) {
  const TemporaryFolder folder;
  folder.write("a", "old");
  FileReader reader(folder / "a");
  writeFileAtomically(folder / "a", viewOf("new"));
  Bytes buffer(16);
  buffer.resize(reader.read(buffer));
  EXPECT_EQ(textOf(buffer), "old");
}

TEST(WriteFileAtomically, ANewFileGetsTheUmasksMode) {
  const TemporaryFolder folder;
  const Umask umask(027);
  writeFileAtomically(folder / "a", viewOf("x"));
  EXPECT_EQ(modeOf(folder / "a"), 0640u);
}

TEST(WriteFileAtomically, AGivenModeIsExactWhateverTheUmask) {
  const TemporaryFolder folder;
  const Umask umask(077);
  writeFileAtomically(folder / "a", viewOf("x"), 0664);
  EXPECT_EQ(modeOf(folder / "a"), 0664u);
}

TEST(WriteFileAtomically, AGivenModeReplacesThatOfTheOldFile) {
  const TemporaryFolder folder;
  fs::permissions(folder.write("a", "old"), fs::perms(0644));
  writeFileAtomically(folder / "a", viewOf("x"), 0600);
  EXPECT_EQ(modeOf(folder / "a"), 0600u);
}

TEST(WriteFileAtomically, WithoutAModeTheOldFilesModeStays) {
  const TemporaryFolder folder;
  fs::permissions(folder.write("a", "old"), fs::perms(0606));
  writeFileAtomically(folder / "a", viewOf("x"));
  EXPECT_EQ(modeOf(folder / "a"), 0606u);
}

TEST(WriteFileAtomically, AFileWithoutWritePermissionIsNotReplaced) {
  const TemporaryFolder folder;
  fs::permissions(folder.write("a", "locked"), fs::perms(0444));
  EXPECT_EQ(failureOf([&] { writeFileAtomically(folder / "a", viewOf("x"), 0600); }), EACCES);
  EXPECT_EQ(contentOf(folder / "a"), "locked");
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a"});
}

TEST(WriteFileAtomically, AFailedWriteLeavesTheOldFileAndNoTemporaryOne) {
  const TemporaryFolder folder;
  folder.write("a", "old");
  const Bytes large(10'000, 'x');
  int failure = 0;
  {
    // The first write is cut short at 4096 bytes, the second fails.
    const FileSizeLimit limit(4096);
    failure = failureOf([&] { writeFileAtomically(folder / "a", large); });
  }
  EXPECT_EQ(failure, EFBIG);
  EXPECT_EQ(contentOf(folder / "a"), "old");
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a"});
}

TEST(StreamFileAtomically, TakesItsContentInPieces) {
  const TemporaryFolder folder;
  streamFileAtomically(folder / "a", [](const FileSink& sink) {
    for (const std::string_view piece : {"one, ", "", "two"})
      sink(viewOf(piece));
  });
  EXPECT_EQ(contentOf(folder / "a"), "one, two");
}

TEST(StreamFileAtomically, WhoeverBreaksOffBetweenPiecesLeavesTheOldFileAndNoTemporaryOne) {
  const TemporaryFolder folder;
  folder.write("a", "old");
  const auto breakOff = [](const FileSink& sink) {
    sink(viewOf("half of the new"));
    throw std::runtime_error("no more");
  };
  EXPECT_THROW(streamFileAtomically(folder / "a", breakOff), std::runtime_error);
  EXPECT_EQ(contentOf(folder / "a"), "old");
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a"});
}

TEST(WriteFileAtomically, TheErrorNamesTheTargetNotTheTemporaryFile) {
  const TemporaryFolder folder;
  try {
    writeFileAtomically(folder / "missing/a.json", viewOf("x"));
    FAIL();
  } catch (const SystemError& error) {
    EXPECT_STREQ(error.what(), "a.json: No such file or directory");
  }
}

TEST(WriteFileAtomically, AFolderInTheWayIsAnError) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "a");
  EXPECT_EQ(failureOf([&] { writeFileAtomically(folder / "a", viewOf("x")); }), EISDIR);
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a"});
}

TEST(WriteFileAtomically, AFileInPlaceOfTheFolderIsAnError) {
  const TemporaryFolder folder;
  folder.write("a", "file");
  EXPECT_EQ(failureOf([&] { writeFileAtomically(folder / "a/b", viewOf("x")); }), ENOTDIR);
}

TEST(WriteFileAtomically, ANamedPipeIsNotReplaced) {
  const TemporaryFolder folder;
  ASSERT_EQ(::mkfifo((folder / "a").c_str(), 0600), 0);
  EXPECT_EQ(failureOf([&] { writeFileAtomically(folder / "a", viewOf("x")); }), EINVAL);
}

TEST(WriteFileAtomically, ALinkIsReplacedAndItsTargetLeftAlone) {
  const TemporaryFolder folder;
  folder.write("precious", "keep me");
  fs::create_symlink("precious", folder / "a");
  writeFileAtomically(folder / "a", viewOf("x"));
  EXPECT_EQ(contentOf(folder / "precious"), "keep me");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder / "a")));
  EXPECT_EQ(contentOf(folder / "a"), "x");
}

TEST(WriteFileAtomically, ANameOf255BytesWorks) {
  const TemporaryFolder folder;
  const std::string name(255, 'n');
  writeFileAtomically(folder / name, viewOf("x"));
  EXPECT_EQ(contentOf(folder / name), "x");
}

TEST(WriteFileAtomically, ANameOf256BytesFailsAndLeavesNothing) {
  const TemporaryFolder folder;
  EXPECT_EQ(failureOf([&] { writeFileAtomically(folder / std::string(256, 'n'), viewOf("x")); }), ENAMETOOLONG);
  EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST(WriteFileAtomically, ManyWritersOfOneFileLeaveOneWholeContent) {
  const TemporaryFolder folder;
  {
    std::vector<std::jthread> writers;
    for (char letter = 'a'; letter < 'e'; ++letter)
      writers.emplace_back([&folder, content = std::string(5000, letter)] {
        for (int round = 0; round < 5; ++round)
          writeFileAtomically(folder / "a", viewOf(content));
      });
  }
  const std::string content = contentOf(folder / "a");
  EXPECT_EQ(content, std::string(5000, content.at(0)));
  EXPECT_EQ(namesIn(folder.path()).size(), 1u);
}

TEST(ReplaceFile, GivesTheFileItsName) {
  const TemporaryFolder folder;
  replaceFile(folder.write("work/a.part", "new"), folder / "a");
  EXPECT_EQ(contentOf(folder / "a"), "new");
  EXPECT_TRUE(namesIn(folder / "work").empty());
}

TEST(ReplaceFile, AnOldFileIsReplacedAndItsModeKept) {
  const TemporaryFolder folder;
  setFileMode(folder.write("a", "old"), 0640);
  replaceFile(folder.write("a.part", "new"), folder / "a");
  EXPECT_EQ(contentOf(folder / "a"), "new");
  EXPECT_EQ(modeOf(folder / "a"), 0640u);
}

TEST(ReplaceFile, WhatMustNotBeReplacedStaysAndIsNamed) {
  const TemporaryFolder folder;
  const fs::path finished = folder.write("a.part", "new");
  const fs::path locked = folder.write("locked", "old");
  setFileMode(locked, 0444);
  fs::create_directory(folder / "folder");
  EXPECT_EQ(failureOf([&] { replaceFile(finished, locked); }), EACCES);
  EXPECT_EQ(failureOf([&] { replaceFile(finished, folder / "folder"); }), EISDIR);
  EXPECT_EQ(failureOf([&] { replaceFile(finished, folder / "none" / "a"); }), ENOENT);
  EXPECT_EQ(contentOf(locked), "old");
  EXPECT_EQ(contentOf(finished), "new");
  try {
    replaceFile(folder / "missing", folder / "target");
    ADD_FAILURE();
  } catch (const SystemError& error) {
    EXPECT_STREQ(error.what(), "target: No such file or directory");
  }
}

TEST(ReplaceFile, ALinkIsReplacedAndItsTargetLeftAlone) {
  const TemporaryFolder folder;
  fs::create_symlink(folder.write("elsewhere", "old"), folder / "link");
  replaceFile(folder.write("a.part", "new"), folder / "link");
  EXPECT_FALSE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(contentOf(folder / "link"), "new");
  EXPECT_EQ(contentOf(folder / "elsewhere"), "old");
}

TEST(FileReader, ReadsInPiecesAndEndsWithZero) {
  const TemporaryFolder folder;
  FileReader reader(folder.write("a", "abcdefg"));
  Bytes buffer(4);
  EXPECT_EQ(reader.read(buffer), 4u);
  EXPECT_EQ(textOf(buffer), "abcd");
  EXPECT_EQ(reader.read(buffer), 3u);
  EXPECT_EQ(textOf(ByteView(buffer).first(3)), "efg");
  EXPECT_EQ(reader.read(buffer), 0u);
}

TEST(FileReader, ReadsAnywhereAndSeesWhatWasAddedSince) {
  const TemporaryFolder folder;
  const fs::path file = folder.write("a", "abcdefg");
  const FileReader reader(file);
  std::array<std::uint8_t, 4> buffer{};
  EXPECT_EQ(reader.readAt(5, buffer), 2u);
  EXPECT_EQ(buffer[1], 'g');
  EXPECT_EQ(reader.readAt(7, buffer), 0u);
  folder.write("a", "abcdefghij");
  EXPECT_EQ(reader.size(), 7);
  EXPECT_EQ(reader.sizeNow(), 10);
  EXPECT_EQ(reader.readAt(1, buffer), 4u);
  EXPECT_EQ(buffer[0], 'b');
}

TEST(FileReader, ReadsOneFileAfterTheOtherIntoTheSameBuffer) {
  const TemporaryFolder folder;
  Bytes buffer;
  for (const std::size_t size : {3, 200'000, 0, 1, 4096, 200'001}) {
    const std::string content(size, static_cast<char>('a' + size % 26));
    EXPECT_EQ(textOf(FileReader(folder.write("a", content)).readWhole(buffer)), content);
  }
  EXPECT_GT(buffer.size(), 200'000u);
}

TEST(FileReader, ReadsWhatWasAddedSinceItWasOpened) {
  const TemporaryFolder folder;
  const FileReader reader(folder.write("a", "abc"));
  const std::string longer(300'000, 'x');
  folder.write("a", longer);
  Bytes buffer;
  EXPECT_EQ(textOf(reader.readWhole(buffer)), longer);
  folder.write("a", "ab");
  EXPECT_EQ(textOf(reader.readWhole(buffer)), "ab");
}

TEST(FileReader, AMissingFileIsAnErrorThatNamesIt) {
  const TemporaryFolder folder;
  try {
    FileReader reader(folder / "clip.mov");
    FAIL();
  } catch (const SystemError& error) {
    EXPECT_STREQ(error.what(), "clip.mov: No such file or directory");
  }
}

TEST(FileReader, AFolderIsAnError) {
  const TemporaryFolder folder;
  EXPECT_EQ(failureOf([&] { FileReader reader(folder.path()); }), EISDIR);
}

TEST(FileReader, ANamedPipeIsAnErrorAndDoesNotBlock) {
  const TemporaryFolder folder;
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(failureOf([&] { FileReader reader(folder / "pipe"); }), EINVAL);
}

TEST(ReadFile, GivesEveryByte) {
  const TemporaryFolder folder;
  std::string content;
  for (int index = 0; index < 200'000; ++index)
    content += static_cast<char>(index % 251);
  EXPECT_EQ(textOf(readFile(folder.write("a", content))), content);
}

TEST(ReadFile, AnEmptyFileIsEmpty) {
  const TemporaryFolder folder;
  EXPECT_TRUE(readFile(folder.write("a", "")).empty());
}

TEST(ReadFile, AFileThatTellsNoSizeIsReadToItsEnd) {
  // The kernel's own files have size 0 and content all the same.
  EXPECT_EQ(fileSize("/proc/self/status"), 0);
  EXPECT_NE(textOf(readFile("/proc/self/status")).find("\nPid:"), std::string_view::npos);
}

TEST(FileSize, CountsBytesAndFailsForAMissingFile) {
  const TemporaryFolder folder;
  EXPECT_EQ(fileSize(folder.write("a", "12345")), 5);
  EXPECT_EQ(failureOf([&] { fileSize(folder / "b"); }), ENOENT);
}

TEST(FileExists, FollowsLinks) {
  const TemporaryFolder folder;
  folder.write("a", "");
  fs::create_symlink("a", folder / "good");
  fs::create_symlink("nowhere", folder / "dangling");
  EXPECT_TRUE(fileExists(folder / "a"));
  EXPECT_TRUE(fileExists(folder.path()));
  EXPECT_TRUE(fileExists(folder / "good"));
  EXPECT_FALSE(fileExists(folder / "dangling"));
  EXPECT_FALSE(fileExists(folder / "a/b"));
}

TEST(IsExecutableFile, WantsARegularFileWithAnExecuteBit) {
  const TemporaryFolder folder;
  fs::permissions(folder.write("tool", ""), fs::perms(0755));
  fs::permissions(folder.write("text", ""), fs::perms(0644));
  fs::create_directory(folder / "folder");
  EXPECT_TRUE(isExecutableFile(folder / "tool"));
  EXPECT_FALSE(isExecutableFile(folder / "text"));
  EXPECT_FALSE(isExecutableFile(folder / "folder"));
  EXPECT_FALSE(isExecutableFile(folder / "missing"));
}

TEST(CreateFolders, MakesAllParentsWithTheMode) {
  const TemporaryFolder folder;
  const Umask umask(022);
  createFolders(folder / "a/b/c", 0700);
  EXPECT_EQ(modeOf(folder / "a"), 0700u);
  EXPECT_EQ(modeOf(folder / "a/b/c"), 0700u);
  createFolders(folder / "d");
  EXPECT_EQ(modeOf(folder / "d"), 0755u);
}

TEST(CreateFolders, AnExistingFolderIsFineAndKeepsItsMode) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "a");
  fs::permissions(folder / "a", fs::perms(0711));
  createFolders(folder / "a", 0700);
  createFolders(folder.path().string() + "/a/");
  createFolders("");
  EXPECT_EQ(modeOf(folder / "a"), 0711u);
}

TEST(CreateFolders, AFileInTheWayIsAnError) {
  const TemporaryFolder folder;
  folder.write("a", "");
  EXPECT_EQ(failureOf([&] { createFolders(folder / "a"); }), EEXIST);
  EXPECT_EQ(failureOf([&] { createFolders(folder / "a/b"); }), ENOTDIR);
}

TEST(SetFileMode, SetsTheModeAndReportsAMissingFile) {
  const TemporaryFolder folder;
  setFileMode(folder.write("a", ""), 0640);
  EXPECT_EQ(modeOf(folder / "a"), 0640u);
  EXPECT_EQ(failureOf([&] { setFileMode(folder / "b", 0600); }), ENOENT);
}

}  // namespace
}  // namespace tq::test
