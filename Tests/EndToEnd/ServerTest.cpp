#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "EndToEnd/User.hpp"
#include "Support/ScriptedServer.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

constexpr const char* key = "sk-secret-0123456789";

std::string description() {
  return R"({"summary": "A test pattern.", "shots": [{"shot_type": "wide", "tags": ["pattern"]}], "global": {}})";
}

std::string completion() {
  return R"({"model": "llava:13b", "choices": [{"message": {"content": )" +
         writeJSON(description(), JSONLayout::compact) + "}}]}";
}

std::string message() {
  return R"({"model": "claude", "content": [{"type": "text", "text": )" +
         writeJSON(description(), JSONLayout::compact) + "}]}";
}

TEST(Server, ALocalOneIsAskedWithoutAKey) {
  User user;
  const fs::path clip = user.addClip("clip.mp4");
  ScriptedServer server;
  server.reply(ServerReply::answer(200, completion()));
  const Outcome outcome =
      user.run({"--provider", "openai", "--base-url", server.url("/v1"), "--model", "llava", "clip.mp4"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(outcome.output, HasSubstr(doneLines(clip)));
  const DescriptionResult result = readDescription(user.clips() / "clip.description.json");
  EXPECT_EQ(result.summary, "A test pattern.");
  EXPECT_EQ(result.engine.provider, "openai");
  EXPECT_EQ(result.engine.model, "llava:13b");

  ASSERT_THAT(server.requests(), SizeIs(1));
  const ServerRequest request = server.requests()[0];
  EXPECT_EQ(request.methodAndTarget(), "POST /v1/chat/completions");
  EXPECT_EQ(request.header("authorization"), std::nullopt);
  const JSONValue body = parseJSON(request.body);
  EXPECT_EQ(*body.find("model")->asString(), "llava");
  // The prompt, and one picture for each frame that was sampled.
  const auto& content = *(*body.find("messages")->asArray())[1].find("content")->asArray();
  EXPECT_EQ(content.size(), static_cast<std::size_t>(result.engine.framesAnalyzed) + 1);
}

TEST(Server, TheOtherShapeIsAskedWithTheKeyOfTheSecretsFile) {
  User user;
  user.addClip("clip.mp4");
  fs::create_directories(user.privateFolder());
  std::ofstream(user.privateFolder() / "secrets.json")
      << R"({"version": 1, "secrets": {"anthropic.api_key": ")" << key << R"("}})";
  ScriptedServer server;
  server.reply(ServerReply::answer(200, message()));
  const Outcome outcome =
      user.run({"--provider", "anthropic", "--base-url", server.url(""), "--model", "claude", "clip.mp4"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  ASSERT_THAT(server.requests(), SizeIs(1));
  EXPECT_EQ(server.requests()[0].methodAndTarget(), "POST /v1/messages");
  EXPECT_EQ(server.requests()[0].header("x-api-key"), key);
  EXPECT_THAT(outcome.output + outcome.errors, Not(HasSubstr(key)));
  for (const std::string& name : namesIn(user.clips())) {
    if (name.ends_with(".mp4")) continue;
    EXPECT_THAT(contentOf(user.clips() / name), Not(HasSubstr(key))) << name;
  }
}

TEST(Server, WhatItRefusesIsTold) {
  User user;
  user.addClip("clip.mp4");
  ScriptedServer server;
  server.reply(ServerReply::answer(404, R"({"error": "model \"llava\" not found"})"));
  const Outcome outcome =
      user.run({"--provider", "openai", "--base-url", server.url("/v1"), "--model", "llava", "clip.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output,
              HasSubstr(R"(clip.mp4: Vision provider returned HTTP 404: {"error": "model \"llava\" not found"})"));
  EXPECT_THAT(namesIn(user.clips()), testing::ElementsAre("clip.mp4"));
}

TEST(Server, AnInterruptEndsTheRequestAndTheProgram) {
  User user;
  user.addClip("clip.mp4");
  ScriptedServer server;
  server.reply(ServerReply().stall());
  RunningProgram program({"--provider", "openai", "--base-url", server.url("/v1"), "clip.mp4"}, user.surroundings);
  server.waitForStalls(1);
  program.signal(SIGINT);
  server.waitForClientClose(1);
  const Outcome outcome = program.finish();
  EXPECT_EQ(outcome.status, 130);
  EXPECT_THAT(outcome.output, HasSubstr("cancelled  clip.mp4\n"));
}

TEST(Server, AHostedProviderWithoutAKeyIsNotAsked) {
  User user;
  user.addClip("clip.mp4");
  const Outcome outcome = user.run({"--provider", "anthropic", "clip.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("API key for anthropic is not configured. Set it in Preferences."));
}

}  // namespace
}  // namespace tq::test
