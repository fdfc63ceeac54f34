#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "KeysOfUsageText.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TQVision/ProviderProfile.hpp"
#include "Tools/Describe/Options.hpp"
#include "Tools/Shared/CommandLine.hpp"

namespace tq::describe {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string complaintAbout(const std::vector<std::string>& arguments) {
  try {
    parseOptions(arguments);
  } catch (const tools::UsageError& error) {
    return error.what();
  }
  return "understood";
}

TEST(ParseOptions, WithoutArgumentsLeavesAllToTheSettings) {
  EXPECT_EQ(parseOptions({}), Options{});
}

TEST(ParseOptions, ReadsEveryOption) {
  const Options options = parseOptions({"--provider", "openai", "--model", "qwen2.5-vl", "--base-url",
                                        "http://localhost:8000/v1", "--settings", "s.json", "--output-dir", "out",
                                        "--format", "json", "--on-conflict", "suffix", "--jobs", "3", "clip.mp4"});
  EXPECT_EQ(options.provider, "openai");
  EXPECT_EQ(options.model, "qwen2.5-vl");
  EXPECT_EQ(options.baseURL, "http://localhost:8000/v1");
  EXPECT_EQ(options.settingsFile, "s.json");
  EXPECT_EQ(options.outputDirectory, "out");
  EXPECT_EQ(options.format, OutputFormat::json);
  EXPECT_EQ(options.onConflict, ConflictPolicy::suffix);
  EXPECT_EQ(options.jobs, 3);
  EXPECT_THAT(options.inputs, ElementsAre("clip.mp4"));
}

TEST(ParseOptions, ReadsValuesBehindAnEqualsSign) {
  EXPECT_EQ(parseOptions({"--model=a=b"}).model, "a=b");
  EXPECT_EQ(parseOptions({"--jobs=2"}).jobs, 2);
}

TEST(ParseOptions, TakesOptionsBehindInputs) {
  const Options options = parseOptions({"a.mp4", "--jobs", "2", "b.mp4"});
  EXPECT_EQ(options.jobs, 2);
  EXPECT_THAT(options.inputs, ElementsAre("a.mp4", "b.mp4"));
}

TEST(ParseOptions, TheLastOfTwoEqualOptionsWins) {
  EXPECT_EQ(parseOptions({"--jobs", "2", "--jobs", "5"}).jobs, 5);
}

TEST(ParseOptions, EverythingBehindTwoDashesIsAnInput) {
  EXPECT_THAT(parseOptions({"--", "-a.mp4", "--help", "--"}).inputs, ElementsAre("-a.mp4", "--help", "--"));
}

TEST(ParseOptions, ALoneDashIsAnInput) {
  EXPECT_THAT(parseOptions({"-"}).inputs, ElementsAre("-"));
}

TEST(ParseOptions, ReadsHelpAndVersion) {
  EXPECT_TRUE(parseOptions({"--help"}).help);
  EXPECT_TRUE(parseOptions({"-h"}).help);
  EXPECT_TRUE(parseOptions({"--version"}).version);
}

TEST(ParseOptions, ReadsSwitches) {
  EXPECT_TRUE(parseOptions({"--again"}).again);
  EXPECT_TRUE(parseOptions({"--watch", "folder"}).watch);
  EXPECT_FALSE(parseOptions({"--", "--again", "--watch"}).again);
}

TEST(ParseOptions, RefusesWhatItDoesNotKnow) {
  EXPECT_EQ(complaintAbout({"--fast"}), "There is no option --fast; --help lists them.");
  EXPECT_EQ(complaintAbout({"--fast=yes"}), "There is no option --fast; --help lists them.");
  EXPECT_EQ(complaintAbout({"-x"}), "There is no option -x; --help lists them.");
  EXPECT_EQ(complaintAbout({"--job", "2"}), "There is no option --job; --help lists them.");
}

TEST(ParseOptions, SaysThatAValueIsMissing) {
  for (const char* option :
       {"--provider", "--model", "--base-url", "--settings", "--output-dir", "--format", "--on-conflict", "--jobs"}) {
    EXPECT_EQ(complaintAbout({option}), std::string(option) + " needs a value.");
    EXPECT_EQ(complaintAbout({option, ""}), std::string(option) + " needs a value.");
    EXPECT_EQ(complaintAbout({std::string(option) + "="}), std::string(option) + " needs a value.");
  }
}

TEST(ParseOptions, SaysWhatAChoiceTakes) {
  EXPECT_EQ(complaintAbout({"--provider", "bing"}), "--provider takes anthropic, openai or mock, not \"bing\".");
  EXPECT_EQ(complaintAbout({"--format", "xml"}), "--format takes markdown, json or both, not \"xml\".");
  EXPECT_EQ(complaintAbout({"--on-conflict", "ask"}),
            "--on-conflict takes skip-existing, overwrite or suffix, not \"ask\".");
}

TEST(ParseOptions, TakesOnlyWholeNumbersOfJobsFromOneUp) {
  for (const char* value : {"0", "-1", "2.5", "two", "99999999999999999999", "2 "})
    EXPECT_EQ(complaintAbout({"--jobs", value}),
              "--jobs takes a number from 1 up, not \"" + std::string(value) + "\".");
}

TEST(ParseOptions, RefusesABaseURLThatLeadsToNoServer) {
  for (const char* value : {"localhost:8000/v1", "example", "http://", "http://host:port"})
    EXPECT_EQ(complaintAbout({"--base-url", value}), "--base-url takes an address such as http://localhost:8000/v1.")
        << value;
}

TEST(ApplyOptions, WithoutOptionsChangesNothing) {
  AppSettings settings;
  settings.providerId = "something-new";
  settings.modelId = "model";
  settings.output.sidecarDirectory = "/out";
  EXPECT_EQ(applyOptions(settings, {}), settings);
}

TEST(ApplyOptions, AnotherProviderComesWithItsOwnModel) {
  AppSettings settings;
  settings.modelId = "my-model";
  const AppSettings applied = applyOptions(settings, parseOptions({"--provider", "openai"}));
  EXPECT_EQ(applied.providerId, "openai");
  EXPECT_EQ(applied.modelId, defaultModelId(ProviderProfile::openai));
}

TEST(ApplyOptions, TheConfiguredProviderKeepsItsModel) {
  AppSettings settings;
  settings.providerId = "openai";
  settings.modelId = "my-model";
  EXPECT_EQ(applyOptions(settings, parseOptions({"--provider", "openai"})).modelId, "my-model");
}

TEST(ApplyOptions, ANamedModelWins) {
  const AppSettings applied = applyOptions({}, parseOptions({"--model", "mine", "--provider", "openai"}));
  EXPECT_EQ(applied.modelId, "mine");
}

TEST(ApplyOptions, TheBaseURLBelongsToTheProviderInUse) {
  const AppSettings standard;
  const AppSettings openai =
      applyOptions(standard, parseOptions({"--base-url", "http://localhost:1/v1", "--provider", "openai"}));
  EXPECT_EQ(openai.openaiBaseURL, "http://localhost:1/v1");
  EXPECT_EQ(openai.anthropicBaseURL, standard.anthropicBaseURL);
  const AppSettings anthropic = applyOptions(standard, parseOptions({"--base-url", "http://localhost:1"}));
  EXPECT_EQ(anthropic.anthropicBaseURL, "http://localhost:1");
  EXPECT_EQ(anthropic.openaiBaseURL, standard.openaiBaseURL);
}

TEST(ApplyOptions, SetsOutputAndWidth) {
  const AppSettings applied = applyOptions(
      {}, parseOptions({"--output-dir", "/out", "--format", "markdown", "--on-conflict", "overwrite", "--jobs", "7"}));
  EXPECT_EQ(applied.output.sidecarDirectory, "/out");
  EXPECT_EQ(applied.output.format, OutputFormat::markdown);
  EXPECT_EQ(applied.output.conflictPolicy, ConflictPolicy::overwrite);
  EXPECT_EQ(applied.maxConcurrentJobs, 7);
}

TEST(ApplyOptions, ARelativeOutputFolderIsOneOfTheCurrentFolder) {
  EXPECT_EQ(applyOptions({}, parseOptions({"--output-dir", "out"})).output.sidecarDirectory,
            std::filesystem::current_path() / "out");
}

TEST(UsageText, ShowsTheKeysAsTheStoreReadsThem) {
  for (const char* account : {SecretAccounts::anthropicAPIKey, SecretAccounts::openaiAPIKey})
    EXPECT_EQ(test::keyInExample(std::string(usageText()), account), "...");
}

TEST(UsageText, NamesEveryOptionAndFitsATerminal) {
  const std::string text(usageText());
  for (const char* option : {"--provider", "--model", "--base-url", "--settings", "--output-dir", "--format",
                             "--on-conflict", "--jobs", "--help", "--version"})
    EXPECT_THAT(text, HasSubstr(option));
  for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1)
    EXPECT_LE(text.find('\n', start) - start, 80u) << text.substr(start, 40);
}

}  // namespace
}  // namespace tq::describe
