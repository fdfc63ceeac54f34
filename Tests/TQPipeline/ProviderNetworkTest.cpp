#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "NetworkJob.hpp"
#include "Support/EnvironmentVariable.hpp"
#include "Support/NameLookups.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

using test::Certificate;
using test::goodCompletion;
using test::Heard;
using test::NameLookups;
using test::NetworkJob;
using test::PipelineHarness;
using test::ScriptedServer;
using test::secretKey;
using test::ServerReply;

constexpr const char* transportFault = "Network error talking to vision provider: ";

class ProviderNetwork : public testing::Test, protected NetworkJob {};

TEST_F(ProviderNetwork, ARefusedConnectionIsTriedThreeTimes) {
  int port = 0;
  {
    const ScriptedServer gone;
    port = gone.port();
  }
  harness.settings.openaiBaseURL = "http://127.0.0.1:" + std::to_string(port);
  EXPECT_EQ(run().error,
            transportFault + ("Could not connect to 127.0.0.1 port " + std::to_string(port)) + ": Connection refused.");
  EXPECT_EQ(waits(), (std::vector<double>{0.8, 1.6}));
  expectNoKeyInSight();
}

TEST_F(ProviderNetwork, ANameThatDoesNotExistIsTriedThreeTimes) {
  const NameLookups lookups;
  harness.settings.openaiBaseURL = std::string("http://") + NameLookups::missingName;
  EXPECT_EQ(run().error, transportFault + std::string("The host missing.invalid could not be found."));
  EXPECT_EQ(waits(), (std::vector<double>{0.8, 1.6}));
  expectNoKeyInSight();
}

TEST_F(ProviderNetwork, AnotherSchemeIsNoAddressForAProvider) {
  harness.settings.openaiBaseURL = "ftp://127.0.0.1/models";
  EXPECT_THAT(*run().error, testing::StartsWith(transportFault));
  expectNoKeyInSight();
}

TEST_F(ProviderNetwork, AnAddressWithoutAHostReachesNone) {
  // What follows a missing host is "v1", which could be the name of a machine.
  for (const char* base : {"http://", "http:///v1", "https:/v1"}) {
    harness.settings.openaiBaseURL = base;
    EXPECT_EQ(run().error,
              transportFault + std::string("The address has to begin with http:// or https:// and to name a host."))
        << base;
    expectNoKeyInSight();
  }
}

TEST_F(ProviderNetwork, AProxyOfTheEnvironmentIsNotUsed) {
  const test::EnvironmentVariable http("http_proxy", "http://127.0.0.1:9"), all("ALL_PROXY", "http://127.0.0.1:9");
  ScriptedServer server;
  server.reply(ServerReply::answer(200, goodCompletion()));
  harness.settings.openaiBaseURL = server.url("");
  EXPECT_EQ(run().status, JobStatus::done);
}

TEST_F(ProviderNetwork, ARedirectToAnotherHostIsTheAnswerAndNothingReachesThatHost) {
  for (const int status : {301, 302, 303, 307, 308}) {
    ScriptedServer server, other;
    other.replyAlways(ServerReply::answer(200, goodCompletion()));
    server.reply(ServerReply::answer(status, "moved", {"Location: " + other.url("/v1/chat/completions")}));
    harness.settings.openaiBaseURL = server.url("");
    EXPECT_EQ(run().error, "Vision provider returned HTTP " + std::to_string(status) + ": moved");
    EXPECT_EQ(other.connectionCount(), 0);
    expectNoKeyInSight();
  }
}

TEST_F(ProviderNetwork, ARedirectLoopEndsWithTheRedirectItself) {
  ScriptedServer server;
  server.replyAlways(ServerReply::answer(307, "round and round", {"Location: /again"}));
  harness.settings.openaiBaseURL = server.url("");
  EXPECT_EQ(run().error, "Vision provider returned HTTP 307: round and round");
  EXPECT_LE(server.requests().size(), 11u);
  expectNoKeyInSight();
}

TEST_F(ProviderNetwork, BothShapesReachTheirPathWithTheirKeyAndEveryFrame) {
  ScriptedServer server;
  server.reply(ServerReply::answer(200, goodCompletion()));
  server.reply(ServerReply::answer(
      200,
      R"({"model": "served-claude", "content": [{"type": "thinking", "thinking": "hm"}, {"type": "text", "text": )" +
          writeJSON(test::goodAnswer(), JSONLayout::compact) + "}]}"));
  harness.settings.openaiBaseURL = server.url("/v1");
  const Job first = run("first.mov");
  EXPECT_EQ(first.result->engine.model, "served-model");
  EXPECT_EQ(first.result->engine.provider, "openai");

  harness.settings.providerId = "anthropic";
  harness.settings.anthropicBaseURL = server.url("/v1/");
  const Job second = run("second.mov");
  EXPECT_EQ(second.result->engine.model, "served-claude");
  EXPECT_EQ(second.result->engine.provider, "anthropic");

  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].methodAndTarget(), "POST /v1/chat/completions");
  EXPECT_EQ(requests[0].header("authorization"), std::string("Bearer ") + secretKey);
  EXPECT_EQ(requests[1].methodAndTarget(), "POST /v1/messages");
  EXPECT_EQ(requests[1].header("x-api-key"), secretKey);
  EXPECT_EQ(requests[1].header("anthropic-version"), "2023-06-01");
  EXPECT_EQ(requests[1].header("authorization"), std::nullopt);
  for (const auto& request : requests) {
    EXPECT_EQ(request.header("content-type"), "application/json");
    const JSONValue body = parseJSON(request.body);
    EXPECT_EQ(*body.find("model")->asString(), "configured-model");
    // "jpeg-0" and "jpeg-1" in base64.
    EXPECT_THAT(request.body, testing::HasSubstr("anBlZy0w"));
    EXPECT_THAT(request.body, testing::HasSubstr("anBlZy0x"));
  }
  expectNoKeyInSight();
}

TEST_F(ProviderNetwork, ALocalServerNeedsNoKeyAndGetsNone) {
  harness.secrets->set("", SecretAccounts::openaiAPIKey);
  ScriptedServer server;
  server.reply(ServerReply::answer(200, goodCompletion()));
  harness.settings.openaiBaseURL = server.url("");
  EXPECT_EQ(run().status, JobStatus::done);
  EXPECT_EQ(server.requests().at(0).header("authorization"), std::nullopt);
}

struct Phase {
  std::string name;
  ServerReply reply;
  bool tls = false;
  std::size_t frameBytes = 1000;
};

class ProviderCancel : public testing::TestWithParam<Phase> {};

/// Cancels one job in the phase and gives the time from there until the next job had its slot.
std::chrono::nanoseconds cancelIn(const Phase& phase) {
  NetworkJob network;
  PipelineHarness& harness = network.harness;
  ScriptedServer server(network.serverOptions(phase.tls ? Certificate::trusted : Certificate::none));
  server.reply(phase.reply);
  server.replyAlways(ServerReply::answer(200, goodCompletion()));
  network.giveFrames(phase.frameBytes);
  harness.settings.openaiBaseURL = server.url("");
  harness.settings.maxConcurrentJobs = 1;
  const Job job = harness.makeJob("clip.mov"), next = harness.makeJob("next.mov");
  harness.start().add({job, next});
  server.waitForStalls(1);

  const auto asked = std::chrono::steady_clock::now();
  harness.orchestrator().cancel(job.id);
  EXPECT_EQ(harness.log.of(job.id).back().status, JobStatus::cancelled);
  // The next job's first report tells that the slot is free.
  harness.log.waitForAny(next.id);
  const auto freed = std::chrono::steady_clock::now() - asked;

  server.waitForClientClose(1);
  EXPECT_EQ(harness.log.waitForEnd(next.id).status, JobStatus::done);
  EXPECT_EQ(harness.log.of(job.id).back().status, JobStatus::cancelled);
  EXPECT_EQ(harness.log.of(job.id).back().error, "Cancelled");
  EXPECT_TRUE(network.waits().empty());
  network.expectNoKeyInSight();
  return freed;
}

TEST_P(ProviderCancel, ShowsAtOnceFreesTheSlotWithin100MillisecondsAndClosesTheConnection) {
  // On a machine with other work a thread may get its turn late, hence a few tries; a cancel that waited for anything
  // would be late in all of them.
  std::chrono::nanoseconds fastest = std::chrono::hours(1);
  for (int attempt = 0; attempt < 5 && fastest >= std::chrono::milliseconds(100); ++attempt)
    fastest = std::min(fastest, cancelIn(GetParam()));
  EXPECT_LT(fastest, std::chrono::milliseconds(100));
}

INSTANTIATE_TEST_SUITE_P(
    InEachPhase, ProviderCancel,
    testing::Values(Phase{"BeforeTheRequestIsRead", ServerReply(Heard::nothing).stall()},
                    Phase{"InTheTLSHandshake", ServerReply(Heard::nothing).stall(), true},
                    Phase{"WhileTheRequestIsSent", ServerReply(Heard::head).stall(), false, 20'000'000},
                    Phase{"WhileWaiting", ServerReply().stall()},
                    Phase{"InTheHeadOfTheAnswer", ServerReply().send("HTTP/1.1 200 O").stall()},
                    Phase{"InTheBody", ServerReply().send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{").stall()}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace tq
