#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "KeysOfUsageText.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "Tools/Library/Options.hpp"
#include "Tools/Shared/CommandLine.hpp"

namespace tq::library {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using tools::UsageError;

std::string complaintAbout(const std::vector<std::string>& arguments) {
  try {
    parseOptions(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "understood";
}

TEST(LibraryOptions, ASearchHasAFolderAndPerhapsAQuery) {
  Options expected;
  expected.folder = "clips";
  EXPECT_EQ(parseOptions({"search", "clips"}), expected);
  expected.query = "beach walk";
  EXPECT_EQ(parseOptions({"search", "clips", "beach walk"}), expected);
  EXPECT_EQ(parseOptions({"search", "clips", "beach", "walk"}), expected);
}

TEST(LibraryOptions, EveryOptionOfASearchIsRead) {
  const Options options = parseOptions({"search", "clips", "sea", "--facet", "theme=Beach", "--facet=theme=City",
                                        "--facet", "shotType=wide", "--recursive", "--limit", "7", "--semantic",
                                        "--embedder", "openai", "--base-url", "http://box/v1", "--model", "m"});
  EXPECT_THAT(options.facets, ElementsAre(Pair(FacetField::theme, ElementsAre("Beach", "City")),
                                          Pair(FacetField::shotType, ElementsAre("wide"))));
  EXPECT_TRUE(options.recursive);
  EXPECT_EQ(options.limit, 7);
  EXPECT_TRUE(options.semantic);
  EXPECT_EQ(options.embedder, EmbedderKind::openai);
  EXPECT_EQ(options.baseURL, "http://box/v1");
  EXPECT_EQ(options.model, "m");
}

TEST(LibraryOptions, EveryCommandIsRead) {
  EXPECT_EQ(parseOptions({"facets", "c"}).command, Command::facets);
  EXPECT_EQ(parseOptions({"index", "c", "--recursive"}).command, Command::index);
  const Options exported = parseOptions({"export", "c", "sea", "--fcpxml", "a", "--edl", "b", "--csv", "d"});
  EXPECT_EQ(exported.command, Command::exportTimelines);
  EXPECT_THAT(exported.exports, ElementsAre(Pair(TextExportFormat::fcpxml, "a"), Pair(TextExportFormat::edl, "b"),
                                            Pair(TextExportFormat::csv, "d")));
  const Options trimmed = parseOptions({"trim", "c", "--into", "cuts", "--reencode"});
  EXPECT_EQ(trimmed.command, Command::trim);
  EXPECT_EQ(trimmed.into, "cuts");
  EXPECT_TRUE(trimmed.reencode);
  EXPECT_EQ(trimmed.query, "");
  const Options rerated = parseOptions({"rerate", "c", "--include-refusals"});
  EXPECT_EQ(rerated.command, Command::rerate);
  EXPECT_TRUE(rerated.includeRefusals);
}

TEST(LibraryOptions, HelpAndVersionNeedNothingElse) {
  EXPECT_TRUE(parseOptions({"--help"}).help);
  EXPECT_TRUE(parseOptions({"search", "-h"}).help);
  EXPECT_TRUE(parseOptions({"--version"}).version);
}

TEST(LibraryOptions, ACommandAndAFolderMustBeThere) {
  EXPECT_EQ(complaintAbout({}), "Say what to do: search, facets, index, export, trim or rerate; --help tells more.");
  EXPECT_EQ(complaintAbout({"find", "c"}),
            "There is no command \"find\", only search, facets, index, export, trim or rerate.");
  EXPECT_EQ(complaintAbout({""}), "There is no command \"\", only search, facets, index, export, trim or rerate.");
  EXPECT_EQ(complaintAbout({"search"}), "Name the folder of the library; --help tells more.");
  EXPECT_EQ(complaintAbout({"search", ""}), "Name the folder of the library; --help tells more.");
}

TEST(LibraryOptions, OnlySearchesTakeAQuery) {
  for (const std::string command : {"facets", "index", "rerate"})
    EXPECT_EQ(complaintAbout({command, "c", "sea"}), command + " takes a folder and no query.");
}

TEST(LibraryOptions, AQueryMayBeginWithADash) {
  EXPECT_EQ(parseOptions({"search", "c", "--", "-beach", "--help"}).query, "-beach --help");
  EXPECT_EQ(parseOptions({"search", "--", "-folder"}).folder, "-folder");
}

TEST(LibraryOptions, AFacetIsAFieldAndAValue) {
  EXPECT_EQ(parseOptions({"search", "c", "--facet", "mood=a=b"}).facets.at(FacetField::mood),
            std::set<std::string>{"a=b"});
  for (const std::string facet : {"theme", "theme=", "=beach", "Theme=beach", "colour=red"})
    EXPECT_THAT(complaintAbout({"search", "c", "--facet", facet}),
                HasSubstr("--facet takes FIELD=VALUE, not \"" + facet + "\"; a field is theme, keyword, useCase, "));
}

TEST(LibraryOptions, AnOptionThatTheCommandHasNoUseForIsRefused) {
  const std::vector<std::vector<std::string>> foreign{
      {"facets", "c", "--facet", "theme=x"}, {"index", "c", "--limit", "3"},       {"rerate", "c", "--semantic"},
      {"search", "c", "--csv", "f"},         {"trim", "c", "--edl", "f"},          {"search", "c", "--into", "d"},
      {"export", "c", "--reencode"},         {"search", "c", "--include-refusals"}};
  for (const auto& arguments : foreign)
    EXPECT_EQ(complaintAbout(arguments), arguments[2] + " does not go with " + arguments[0] + ".");
}

TEST(LibraryOptions, WhatBelongsToAnEmbedderNeedsASemanticSearch) {
  EXPECT_EQ(complaintAbout({"search", "c", "--embedder", "ollama"}), "--embedder needs --semantic.");
  EXPECT_EQ(complaintAbout({"search", "c", "--base-url", "http://a"}), "--base-url needs --semantic.");
  EXPECT_EQ(complaintAbout({"search", "c", "--model", "m"}), "--model needs --semantic.");
}

TEST(LibraryOptions, AnExportNeedsAFileOfItsOwnForEachFormat) {
  EXPECT_EQ(complaintAbout({"export", "c", "sea"}), "export needs --fcpxml, --edl or --csv with a file.");
  EXPECT_EQ(complaintAbout({"export", "c", "--csv", "x/../f", "--edl", "f"}),
            "Two exports cannot go into one file, x/../f.");
}

TEST(LibraryOptions, ATrimNeedsAFolder) {
  EXPECT_EQ(complaintAbout({"trim", "c", "sea"}), "trim needs --into with a folder.");
}

TEST(LibraryOptions, ValuesAreChecked) {
  EXPECT_EQ(complaintAbout({"search", "c", "--limit", "0"}), "--limit takes a number from 1 up, not \"0\".");
  EXPECT_EQ(complaintAbout({"search", "c", "--semantic", "--embedder", "mine"}),
            "--embedder takes ollama or openai, not \"mine\".");
  EXPECT_EQ(complaintAbout({"search", "c", "--semantic", "--base-url", "box"}),
            "--base-url takes an address such as http://localhost:8000/v1.");
}

TEST(LibrarySettings, WithoutWishesStayAsTheyAre) {
  AppSettings settings;
  settings.embeddingProviderId = "something-new";
  EXPECT_EQ(applyOptions(settings, parseOptions({"search", "c", "--semantic"})), settings);
}

TEST(LibrarySettings, TheCommandLineWins) {
  const AppSettings applied = applyOptions({}, parseOptions({"search", "c", "--semantic", "--base-url", "http://box/v1",
                                                             "--embedder", "openai", "--model", "m"}));
  EXPECT_EQ(applied.embeddingProviderId, "openai");
  EXPECT_EQ(applied.embeddingBaseURL, "http://box/v1");
  EXPECT_EQ(applied.embeddingModel, "m");
}

TEST(LibrarySettings, AnotherEmbedderComesWithItsOwnServer) {
  EXPECT_EQ(applyOptions({}, parseOptions({"search", "c", "--semantic", "--embedder", "openai"})).embeddingBaseURL,
            "https://api.openai.com");
}

TEST(LibraryUsageText, ShowsTheKeyAsTheStoreReadsIt) {
  EXPECT_EQ(test::keyInExample(std::string(usageText()), SecretAccounts::embeddingAPIKey), "...");
}

TEST(LibraryUsageText, NamesEverythingAndFitsATerminal) {
  const std::string text(usageText());
  for (const char* word : {"search",
                           "facets",
                           "index",
                           "export",
                           "trim",
                           "rerate",
                           "--recursive",
                           "--facet",
                           "--limit",
                           "--semantic",
                           "--embedder",
                           "--base-url",
                           "--model",
                           "--fcpxml",
                           "--edl",
                           "--csv",
                           "--into",
                           "--reencode",
                           "--include-refusals",
                           "--help",
                           "--version"})
    EXPECT_THAT(text, HasSubstr(word));
  for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1)
    EXPECT_LE(text.find('\n', start) - start, 80u) << text.substr(start, 40);
}

}  // namespace
}  // namespace tq::library
