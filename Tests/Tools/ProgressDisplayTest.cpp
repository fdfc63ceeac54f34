#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "Support/ManualClock.hpp"
#include "Support/Screen.hpp"
#include "Tools/Describe/ProgressDisplay.hpp"

namespace tq::describe {
namespace {

using namespace std::chrono_literals;
using testing::_;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using enum JobStatus;

Job clip(const std::string& name) {
  Job job;
  job.id = UUID::random();
  job.sourceURL = "/clips/" + name;
  return job;
}

Job at(Job job, JobStatus status, double progress = 0) {
  job.status = status;
  job.progress = progress;
  return job;
}

Job failedWith(Job job, const std::string& error) {
  job.status = failed;
  job.error = error;
  return job;
}

/// A display and the terminal it writes to.
struct Terminal {
  explicit Terminal(std::size_t clipCount, int width = 80) : columns(width), display(out, width, clock) {
    display.expect(clipCount);
  }

  void show(const Job& job, const std::vector<std::filesystem::path>& outputs = {}) { display.show(job, outputs); }

  std::vector<std::string> lines() const {
    test::Screen screen(static_cast<std::size_t>(columns));
    screen.print(out.str());
    return screen.lines();
  }

  int columns;
  test::ManualClock clock;
  std::ostringstream out;
  ProgressDisplay display;
};

TEST(ProgressOnATerminal, ShowsALineForEachRunningClipAndATotal) {
  Terminal terminal(3);
  terminal.show(at(clip("a.mp4"), extracting));
  terminal.show(at(clip("b.mp4"), extracting, 0.25));
  EXPECT_THAT(terminal.lines(), ElementsAre("[....................]   0 %  sampling frames   a.mp4",
                                            "[#####...............]  25 %  sampling frames   b.mp4",
                                            "0 of 3 clips described, about 1 s left"));
}

TEST(ProgressOnATerminal, DrawsOverWhatItShowedBefore) {
  Terminal terminal(1);
  const Job job = clip("a.mp4");
  terminal.show(at(job, extracting));
  EXPECT_THAT(terminal.lines(), ElementsAre(HasSubstr("sampling frames   a.mp4"), "0 of 1 clip described"));
  terminal.show(at(job, calling, 0.45));
  EXPECT_THAT(terminal.lines(), ElementsAre("[#########...........]  45 %  asking the model  a.mp4", _));
  terminal.show(at(job, writing, 0.85));
  EXPECT_THAT(terminal.lines(), ElementsAre("[#################...]  85 %  writing           a.mp4", _));
}

TEST(ProgressOnATerminal, KeepsWhatEachClipCameToAboveTheMovingLines) {
  Terminal terminal(3);
  const Job first = clip("a.mp4"), second = clip("b.mp4");
  terminal.show(at(first, extracting));
  terminal.show(at(second, extracting));
  terminal.show(at(first, done, 1), {"/clips/a.description.md", "/clips/a.description.json"});
  terminal.show(at(clip("c.mp4"), extracting));
  terminal.show(failedWith(second, "it is damaged"));
  EXPECT_THAT(terminal.lines(), ElementsAre("done       a.mp4", "  wrote    /clips/a.description.md",
                                            "  wrote    /clips/a.description.json", "failed     b.mp4: it is damaged",
                                            HasSubstr("c.mp4"), HasSubstr("1 of 3 clips described, 1 failed")));
}

TEST(ProgressOnATerminal, FinishLeavesOnlyWhatLasts) {
  Terminal terminal(2);
  const Job first = clip("a.mp4"), second = clip("b.mp4");
  terminal.show(at(first, extracting));
  terminal.show(at(second, extracting));
  terminal.show(at(first, done, 1), {"/out/a.md"});
  terminal.show(at(second, done, 1), {"/out/b.md"});
  terminal.display.finish();
  EXPECT_THAT(terminal.lines(), ElementsAre("done       a.mp4", "  wrote    /out/a.md", "done       b.mp4",
                                            "  wrote    /out/b.md", "2 of 2 clips described"));
}

TEST(ProgressOnATerminal, GuessesTheTimeLeftFromTheWorkDone) {
  Terminal terminal(2);
  const Job first = clip("a.mp4"), second = clip("b.mp4");
  terminal.show(at(first, extracting));
  EXPECT_EQ(terminal.lines().back(), "0 of 2 clips described") << "nothing to guess from";
  terminal.clock.advance(60s);
  terminal.show(at(first, done, 1));
  EXPECT_EQ(terminal.lines().back(), "1 of 2 clips described, about 60 s left");
  terminal.show(at(second, calling, 0.5));
  EXPECT_EQ(terminal.lines().back(), "1 of 2 clips described, about 20 s left");
  terminal.show(at(second, done, 1));
  EXPECT_EQ(terminal.lines().back(), "2 of 2 clips described");
}

TEST(ProgressOnATerminal, ATickBringsTheTimeLeftUpToDate) {
  Terminal terminal(1);
  terminal.show(at(clip("a.mp4"), calling, 0.5));
  terminal.clock.advance(30min);
  terminal.display.tick();
  EXPECT_THAT(terminal.lines(), ElementsAre(_, "0 of 1 clip described, about 30 min left"));
}

TEST(ProgressOnATerminal, ProgressBeyondItsRangeIsDrawnAtTheNearerEnd) {
  Terminal terminal(2);
  terminal.show(at(clip("a.mp4"), extracting, -1));
  terminal.show(at(clip("b.mp4"), extracting, 7));
  EXPECT_THAT(terminal.lines(),
              ElementsAre(HasSubstr("[....................]   0 %"), HasSubstr("[####################] 100 %"), _));
}

TEST(ProgressOnATerminal, ALineStandsAboveTheMovingOnes) {
  Terminal terminal(1);
  terminal.show(at(clip("a.mp4"), extracting));
  terminal.display.say("Cancelling.");
  EXPECT_THAT(terminal.lines(), ElementsAre("Cancelling.", HasSubstr("a.mp4"), "0 of 1 clip described"));
}

TEST(ProgressOnATerminal, MovingLinesNeverWrap) {
  for (int columns = 2; columns < 90; ++columns) {
    Terminal terminal(1, columns);
    const Job job = clip("a long name with 港 and 🎬 and " + std::string(60, 'x') + ".mp4");
    terminal.show(at(job, extracting));
    terminal.show(at(job, calling, 0.5));
    EXPECT_THAT(terminal.lines(), SizeIs(2)) << columns << " columns";
  }
}

TEST(ProgressOnATerminal, NamesThatFillTheLineAreCutByWidthAndNotByLength) {
  Terminal terminal(1, 60);
  terminal.show(at(clip("港湾港湾港湾港湾港湾港湾港湾.mp4"), extracting));
  EXPECT_THAT(terminal.lines(), ElementsAre("[....................]   0 %  sampling frames   港湾港湾…", _));
}

TEST(ProgressOnATerminal, NeverDrawsMoreThanAScreenCanTakeBack) {
  Terminal terminal(40);
  std::vector<Job> jobs;
  for (int number = 10; number < 50; ++number)
    jobs.push_back(at(clip(std::to_string(number) + ".mp4"), extracting));
  for (const Job& job : jobs)
    terminal.show(job);
  EXPECT_THAT(terminal.lines(), SizeIs(18));
  EXPECT_THAT(terminal.lines()[15], HasSubstr("25.mp4"));
  EXPECT_EQ(terminal.lines()[16], "and 24 more");
  for (const Job& job : jobs)
    terminal.show(at(job, done, 1));
  terminal.display.finish();
  EXPECT_THAT(terminal.lines(), SizeIs(41));
  EXPECT_EQ(terminal.lines().back(), "40 of 40 clips described");
}

TEST(ProgressOnATerminal, HostileNamesStayText) {
  Terminal terminal(2);
  const Job job = clip("\x1b[2Jtwo\nlines\u202e.mp4");
  terminal.show(at(job, extracting));
  EXPECT_THAT(terminal.lines(), ElementsAre(HasSubstr("\\x1b[2Jtwo\\nlines\\u202e.mp4"), _));
  terminal.show(at(job, done, 1), {"/clips/\x1b[2Jtwo\nlines.description.md"});
  terminal.show(at(clip("b.mp4"), extracting));
  EXPECT_THAT(terminal.lines(), ElementsAre("done       \\x1b[2Jtwo\\nlines\\u202e.mp4",
                                            "  wrote    /clips/\\x1b[2Jtwo\\nlines.description.md", _, _));
}

TEST(ProgressOnATerminal, HostileErrorsStayText) {
  Terminal terminal(1);
  const Job job = clip("a.mp4");
  terminal.show(at(job, extracting));
  terminal.show(failedWith(job, "server says \x1b[31mno\r\nreally"));
  EXPECT_THAT(terminal.lines(), ElementsAre("failed     a.mp4: server says \\x1b[31mno\\x0d\\nreally", _));
}

/// A display whose output goes to a file or a pipe.
struct PlainOutput {
  explicit PlainOutput(std::size_t clipCount) : display(out, std::nullopt, clock) { display.expect(clipCount); }

  test::ManualClock clock;
  std::ostringstream out;
  ProgressDisplay display;
};

TEST(PlainProgress, SaysWhatStartsAndWhatEachClipCameTo) {
  PlainOutput plain(3);
  const Job first = clip("a.mp4"), second = clip("b.mp4"), third = clip("c.mp4");
  plain.display.show(at(first, extracting), {});
  plain.display.show(at(first, extracting, 0.2), {});
  plain.display.show(at(second, extracting), {});
  plain.display.show(at(first, done, 1), {"/clips/a.description.md", "/clips/a.description.jpg"});
  plain.display.show(failedWith(second, "it is damaged"), {});
  plain.display.show(at(third, extracting), {});
  plain.display.show(at(third, cancelled), {});
  plain.display.finish();
  EXPECT_EQ(plain.out.str(),
            "started    a.mp4\n"
            "started    b.mp4\n"
            "done       a.mp4\n"
            "  wrote    /clips/a.description.md\n"
            "  wrote    /clips/a.description.jpg\n"
            "failed     b.mp4: it is damaged\n"
            "started    c.mp4\n"
            "cancelled  c.mp4\n"
            "1 of 3 clips described, 1 failed, 1 cancelled\n");
}

TEST(PlainProgress, SaysThatOutputsWereLeftAlone) {
  PlainOutput plain(1);
  const Job job = clip("a.mp4");
  plain.display.show(at(job, extracting), {});
  plain.display.show(at(job, done, 1), {});
  EXPECT_THAT(plain.out.str(), HasSubstr("done       a.mp4: its outputs exist and were left alone\n"));
}

TEST(PlainProgress, ClipsCancelledBeforeTheyStartedAreOnlyCounted) {
  PlainOutput plain(2);
  plain.display.show(at(clip("a.mp4"), cancelled), {});
  plain.display.show(at(clip("b.mp4"), cancelled), {});
  plain.display.finish();
  EXPECT_EQ(plain.out.str(), "0 of 2 clips described, 2 cancelled\n");
}

TEST(PlainProgress, MoreClipsMayComeIn) {
  PlainOutput plain(1);
  plain.display.expect(3);
  plain.display.expect(2);
  plain.display.finish();
  EXPECT_THAT(plain.out.str(), HasSubstr("0 of 3 clips described\n"));
}

TEST(PlainProgress, TimePassingAddsNothing) {
  PlainOutput plain(1);
  plain.display.show(at(clip("a.mp4"), extracting, 0.5), {});
  const std::string before = plain.out.str();
  plain.clock.advance(1h);
  plain.display.tick();
  EXPECT_EQ(plain.out.str(), before);
}

TEST(PlainProgress, HoldsNoControlCharacterButLineFeeds) {
  PlainOutput plain(1);
  const Job job = clip("\x1b[31m\r\u009b\n.mp4");
  plain.display.show(at(job, extracting), {});
  plain.display.say("Cancelling.");
  plain.display.tick();
  plain.display.show(at(job, done, 1), {job.sourceURL});
  plain.display.finish();
  for (const char letter : plain.out.str())
    EXPECT_TRUE(letter == '\n' || static_cast<unsigned char>(letter) >= 0x20) << static_cast<int>(letter);
  EXPECT_THAT(plain.out.str(), Not(HasSubstr("\u009b")));
}

}  // namespace
}  // namespace tq::describe
