#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tools/Shared/CommandLine.hpp"

namespace tq {
namespace tools {
namespace {

enum class Colour { red, deepBlue, green };

}  // namespace
}  // namespace tools

template <>
inline constexpr auto rawValues<tools::Colour> = std::to_array<std::string_view>({"red", "deep-blue", "green"});

namespace tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Wishes {
  bool loud = false;
  bool quick = false;
  std::string name;
  std::vector<std::string> parts;
};

constexpr std::array switches{Switch<Wishes>{"--loud", &Wishes::loud}, Switch<Wishes>{"-l", &Wishes::loud},
                              Switch<Wishes>{"--quick", &Wishes::quick}};
constexpr std::array values{
    ValueOption<Wishes>{"--name", [](Wishes& wishes, const std::string& value) { wishes.name = value; }},
    ValueOption<Wishes>{"--part", [](Wishes& wishes, const std::string& value) { wishes.parts.push_back(value); }}};

/// What was read, and what else there was.
std::pair<Wishes, Arguments> read(const std::vector<std::string>& arguments) {
  Wishes wishes;
  Arguments rest = readArguments<Wishes>(arguments, {switches, values}, wishes);
  return {std::move(wishes), std::move(rest)};
}

template <class Action>
std::string complaintOf(Action action) {
  try {
    action();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "understood";
}

std::string complaintAbout(const std::vector<std::string>& arguments) {
  return complaintOf([&] { read(arguments); });
}

TEST(ReadArguments, WithoutAnyLeaveEverythingAsItIs) {
  const auto [wishes, rest] = read({});
  EXPECT_FALSE(wishes.loud);
  EXPECT_THAT(rest.operands, IsEmpty());
  EXPECT_THAT(rest.options, IsEmpty());
}

TEST(ReadArguments, OptionsAndOperandsComeInAnyOrder) {
  const auto [wishes, rest] = read({"a", "--name", "n", "b", "-l", "--part=1", "c", "--part", "2"});
  EXPECT_TRUE(wishes.loud);
  EXPECT_FALSE(wishes.quick);
  EXPECT_EQ(wishes.name, "n");
  EXPECT_THAT(wishes.parts, ElementsAre("1", "2"));
  EXPECT_THAT(rest.operands, ElementsAre("a", "b", "c"));
  EXPECT_THAT(rest.options, ElementsAre("--name", "-l", "--part", "--part"));
}

TEST(ReadArguments, AValueMayLookLikeAnythingElse) {
  EXPECT_EQ(read({"--name", "--loud"}).first.name, "--loud");
  EXPECT_EQ(read({"--name=a=b"}).first.name, "a=b");
  EXPECT_EQ(read({"--name", "--"}).first.name, "--");
}

TEST(ReadArguments, BehindTwoDashesNothingIsAnOption) {
  const auto [wishes, rest] = read({"--", "--loud", "--", "-x"});
  EXPECT_FALSE(wishes.loud);
  EXPECT_THAT(rest.operands, ElementsAre("--loud", "--", "-x"));
}

TEST(ReadArguments, ALoneDashAndAnEmptyTextAreOperands) {
  EXPECT_THAT(read({"-", ""}).second.operands, ElementsAre("-", ""));
}

TEST(ReadArguments, RefuseWhatTheyDoNotKnow) {
  EXPECT_EQ(complaintAbout({"--fast"}), "There is no option --fast; --help lists them.");
  EXPECT_EQ(complaintAbout({"--fast=1"}), "There is no option --fast; --help lists them.");
  EXPECT_EQ(complaintAbout({"--nam", "x"}), "There is no option --nam; --help lists them.");
  EXPECT_EQ(complaintAbout({"-n"}), "There is no option -n; --help lists them.");
}

TEST(ReadArguments, SayThatAValueIsMissingOrTooMuch) {
  EXPECT_EQ(complaintAbout({"--name"}), "--name needs a value.");
  EXPECT_EQ(complaintAbout({"--name="}), "--name needs a value.");
  EXPECT_EQ(complaintAbout({"--name", ""}), "--name needs a value.");
  EXPECT_EQ(complaintAbout({"--loud=yes"}), "--loud takes no value.");
  EXPECT_EQ(complaintAbout({"--loud="}), "--loud takes no value.");
}

TEST(ReadChoice, TakesTheWordsOfTheEnumeration) {
  EXPECT_EQ(readChoice<Colour>("--colour", "deep-blue"), Colour::deepBlue);
  EXPECT_EQ(complaintOf([] { readChoice<Colour>("--colour", "pink"); }),
            "--colour takes red, deep-blue or green, not \"pink\".");
}

TEST(ReadCount, TakesWholeNumbersFromOneUp) {
  EXPECT_EQ(readCount("--n", "1"), 1);
  EXPECT_EQ(readCount("--n", "500"), 500);
  for (const std::string value : {"0", "-1", "2.5", "two", "99999999999999999999", "2 ", "1e3"})
    EXPECT_EQ(complaintOf([&] { readCount("--n", value); }), "--n takes a number from 1 up, not \"" + value + "\".");
}

TEST(ReadAddress, RefusesOneThatLeadsToNoServer) {
  EXPECT_EQ(readAddress("--base-url", "http://box:8000/v1"), "http://box:8000/v1");
  for (const std::string value : {"localhost:8000/v1", "example", "http://", "http://host:port"})
    EXPECT_EQ(complaintOf([&] { readAddress("--base-url", value); }),
              "--base-url takes an address such as http://localhost:8000/v1.");
}

TEST(Alternatives, AreListedAsOneSaysThem) {
  constexpr std::array<std::string_view, 3> words{"a", "b", "c"};
  EXPECT_EQ(alternatives(std::span(words).first(0)), "");
  EXPECT_EQ(alternatives(std::span(words).first(1)), "a");
  EXPECT_EQ(alternatives(std::span(words).first(2)), "a or b");
  EXPECT_EQ(alternatives(words), "a, b or c");
}

}  // namespace
}  // namespace tools
}  // namespace tq
