// How soon a caller is released, in every phase of a request.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/NameLookups.hpp"
#include "Support/ScriptedServer.hpp"
#include "Support/SessionRequests.hpp"
#include "Support/UnansweringPort.hpp"
#include "TQPlatform/Network/CurlSession.hpp"

namespace tq::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Code = URLError::Code;

/// What is guaranteed.
constexpr milliseconds soon(100);

/// Long enough to reach each phase before.
constexpr milliseconds shortDeadline(300);

/// A network in which a request gets as far as one phase and no further.
class Scene {
 public:
  virtual ~Scene() = default;
  virtual URLRequest request() const = 0;

  /// Blocks until the request has come to the phase.
  virtual void waitUntilReached() = 0;

  /// Blocks until the network has noticed that the request is over.
  virtual void waitUntilGivenUp() = 0;
};

class LookingUp final : public Scene {
 public:
  URLRequest request() const override { return getRequest(std::string("http://") + NameLookups::hangingName + "/"); }
  void waitUntilReached() override { lookups_.waitForHanging(); }
  void waitUntilGivenUp() override {}  // the resolver's thread cannot be told

 private:
  NameLookups lookups_;
};

class Connecting final : public Scene {
 public:
  URLRequest request() const override { return getRequest(port_.url()); }
  void waitUntilReached() override { port_.waitForAttempt(); }
  void waitUntilGivenUp() override { port_.waitForNoAttempt(); }

 private:
  UnansweringPort port_;
};

/// A server that stalls.
class Stalling final : public Scene {
 public:
  Stalling(ServerReply reply, std::size_t requestSize, std::optional<ServerIdentity> identity = {})
      : server_({.address = "127.0.0.1", .identity = std::move(identity)}), requestSize_(requestSize) {
    server_.reply(std::move(reply));
  }

  URLRequest request() const override { return postRequest(server_.url(), std::string(requestSize_, 'x')); }
  void waitUntilReached() override { server_.waitForStalls(); }
  void waitUntilGivenUp() override { server_.waitForClientClose(); }

 private:
  ScriptedServer server_;
  const std::size_t requestSize_;
};

struct Phase {
  const char* name;
  std::function<std::unique_ptr<Scene>(const TestAuthority&)> make;
};

std::unique_ptr<Scene> stalling(ServerReply reply, std::size_t requestSize = 10) {
  return std::make_unique<Stalling>(std::move(reply), requestSize);
}

/// More than the sockets' buffers hold, so that it never gets sent to a server that does not read.
constexpr std::size_t unsendable = 64'000'000;

const std::vector<Phase> phases{
    {"NameLookup", [](const TestAuthority&) { return std::make_unique<LookingUp>(); }},
    {"Connecting", [](const TestAuthority&) { return std::make_unique<Connecting>(); }},
    {"TLSHandshake",
     [](const TestAuthority& authority) {
       return std::make_unique<Stalling>(ServerReply(Heard::nothing).stall(), 10, authority.issue({"127.0.0.1"}));
     }},
    {"Sending", [](const TestAuthority&) { return stalling(ServerReply(Heard::head).stall(), unsendable); }},
    {"Waiting", [](const TestAuthority&) { return stalling(ServerReply().stall()); }},
    {"WaitingOverTLS",
     [](const TestAuthority& authority) {
       return std::make_unique<Stalling>(ServerReply().stall(), 10, authority.issue({"127.0.0.1"}));
     }},
    {"WaitingAfterAProvisionalAnswer",
     [](const TestAuthority&) { return stalling(ServerReply().send("HTTP/1.1 100 Continue\r\n\r\n").stall()); }},
    {"ReceivingTheHead", [](const TestAuthority&) { return stalling(ServerReply().send("HTTP/1.1 200 O").stall()); }},
    {"ReceivingTheBody",
     [](const TestAuthority&) {
       return stalling(ServerReply().send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n01234").stall());
     }},
};

void PrintTo(const Phase& phase, std::ostream* out) {
  *out << phase.name;
}

class CurlSessionRelease : public testing::TestWithParam<Phase> {
 protected:
  struct Caller {
    std::optional<URLError> error;
    steady_clock::time_point start = steady_clock::now();
    steady_clock::time_point left;
    std::jthread thread;
  };

  /// A thread that sends the scene's request, and is in the phase when this returns.
  void call(Caller& caller, std::optional<std::chrono::nanoseconds> deadline) {
    const URLRequest request = scene_->request();
    caller.thread = std::jthread([&session = *session_, &caller, request, deadline](const std::stop_token& stop) {
      caller.start = steady_clock::now();
      try {
        session.data(request, deadline, stop);
      } catch (const URLError& error) {
        caller.error = error;
      }
      caller.left = steady_clock::now();
    });
    scene_->waitUntilReached();
  }

  const TestAuthority authority_;
  const std::unique_ptr<Scene> scene_ = GetParam().make(authority_);
  std::unique_ptr<CurlSession> session_ = std::make_unique<CurlSession>(
      CurlOptions{.certificateAuthorities = authority_.certificateFile(), .addresses = {}});
};

TEST_P(CurlSessionRelease, ByAStopRequest) {
  Caller caller;
  call(caller, std::nullopt);
  const auto asked = steady_clock::now();
  caller.thread.request_stop();
  caller.thread.join();
  ASSERT_TRUE(caller.error);
  EXPECT_EQ(caller.error->code(), Code::cancelled);
  EXPECT_LT(caller.left - asked, soon);
  scene_->waitUntilGivenUp();
}

TEST_P(CurlSessionRelease, ByTheDeadline) {
  Caller caller;
  call(caller, shortDeadline);
  caller.thread.join();
  ASSERT_TRUE(caller.error);
  EXPECT_EQ(caller.error->code(), Code::timedOut);
  EXPECT_GE(caller.left - caller.start, shortDeadline);
  EXPECT_LT(caller.left - caller.start, shortDeadline + soon);
  scene_->waitUntilGivenUp();
}

TEST_P(CurlSessionRelease, ByTheEndOfTheSession) {
  Caller caller;
  call(caller, std::nullopt);
  const auto asked = steady_clock::now();
  session_.reset();
  EXPECT_LT(steady_clock::now() - asked, soon);
  caller.thread.join();
  ASSERT_TRUE(caller.error);
  EXPECT_EQ(caller.error->code(), Code::cancelled);
  scene_->waitUntilGivenUp();
}

INSTANTIATE_TEST_SUITE_P(In, CurlSessionRelease, testing::ValuesIn(phases),
                         [](const auto& phase) { return std::string(phase.param.name); });

TEST(CurlSessionLimits, LeavesTheOtherRequestsAlone) {
  const NameLookups lookups;
  ScriptedServer server;
  server.reply(ServerReply().stall());
  server.reply(ServerReply::answer(200, "fine"));
  CurlSession session;
  Code code{};
  std::jthread waiting([&](const std::stop_token& stop) {
    try {
      session.data(getRequest(server.url()), std::nullopt, stop);
    } catch (const URLError& error) {
      code = error.code();
    }
  });
  server.waitForStalls();
  EXPECT_EQ(bodyOf(send(session, getRequest(server.url()))), "fine");
  waiting.request_stop();
  waiting.join();
  EXPECT_EQ(code, Code::cancelled);
  server.reply(ServerReply::answer(200, "still fine"));
  EXPECT_EQ(bodyOf(send(session, getRequest(server.url()))), "still fine");
}

TEST(CurlSessionLimits, SendsNothingWhenAStopWasRequestedBefore) {
  ScriptedServer server;
  CurlSession session;
  std::stop_source stop;
  stop.request_stop();
  try {
    session.data(getRequest(server.url()), std::nullopt, stop.get_token());
    FAIL();
  } catch (const URLError& error) {
    EXPECT_EQ(error.code(), Code::cancelled);
    EXPECT_EQ(error.localizedDescription(), "The request to 127.0.0.1 was cancelled.");
  }
  EXPECT_EQ(server.connectionCount(), 0);
}

TEST(CurlSessionLimits, SendsNothingWhenThereIsNoTime) {
  ScriptedServer server;
  CurlSession session;
  for (const auto limit : {milliseconds(0), milliseconds(-5)}) {
    try {
      session.data(getRequest(server.url()), limit, {});
      FAIL();
    } catch (const URLError& error) {
      EXPECT_EQ(error.code(), Code::timedOut);
      EXPECT_EQ(error.localizedDescription(), "The request to 127.0.0.1 timed out.");
    }
  }
  EXPECT_EQ(server.connectionCount(), 0);
}

TEST(CurlSessionLimits, TakesADeadlineBeyondTheClockForNone) {
  ScriptedServer server;
  server.reply(ServerReply::answer(200, "fine"));
  CurlSession session;
  EXPECT_EQ(bodyOf(session.data(getRequest(server.url()), std::chrono::nanoseconds::max(), {})), "fine");
}

TEST(CurlSessionLimits, CountsRedirectsIntoTheDeadline) {
  ScriptedServer server;
  server.replyAlways(ServerReply().send("HTTP/1.1 302 Found\r\nLocation: /again\r\nContent-Length: 0\r\n\r\n"));
  for (int redirect = 0; redirect < 3; ++redirect)
    server.reply(ServerReply().send("HTTP/1.1 302 Found\r\nLocation: /again\r\nContent-Length: 0\r\n\r\n"));
  server.reply(ServerReply().stall());
  CurlSession session;
  const auto start = steady_clock::now();
  try {
    session.data(getRequest(server.url()), shortDeadline, {});
    FAIL();
  } catch (const URLError& error) {
    EXPECT_EQ(error.code(), Code::timedOut);
  }
  EXPECT_LT(steady_clock::now() - start, shortDeadline + soon);
  EXPECT_EQ(server.requests().size(), 4u);
}

TEST(CurlSessionLimits, ForgetsTheBodyOfARequestThatWasGivenUp) {
  ScriptedServer server;
  server.reply(ServerReply(Heard::head).stall());
  CurlSession session;
  URLRequest request = postRequest(server.url(), std::string(unsendable, 'x'));
  const std::weak_ptr<const std::string> body = request.body;
  EXPECT_THROW(session.data(request, shortDeadline, {}), URLError);
  request.body.reset();
  server.waitForClientClose();
  while (!body.expired())
    std::this_thread::yield();
}

/// Sends request after request, each with a stop at another instant, from before its start until after its answer.
void sendWithStops(CurlSession& session, const std::string& url) {
  for (int round = 0; round < 100; ++round) {
    const URLRequest request = postRequest(url, std::string(20'000, 'x'));
    std::stop_source stop;
    std::jthread stopping([&stop, round] {
      for (int turn = 0; turn < round; ++turn)
        std::this_thread::yield();
      stop.request_stop();
    });
    try {
      EXPECT_EQ(bodyOf(session.data(request, plentyOfTime, stop.get_token())), *request.body);
    } catch (const URLError& error) {
      EXPECT_EQ(error.code(), Code::cancelled);
    }
  }
}

TEST(CurlSessionLimits, StandsAStopAtAnyInstant) {
  ScriptedServer server;
  server.replyAlways(ServerReply().echo());
  CurlSession session;
  {
    std::vector<std::jthread> callers;
    for (int caller = 0; caller < 4; ++caller)
      callers.emplace_back([&] { sendWithStops(session, server.url()); });
  }
  EXPECT_EQ(bodyOf(send(session, postRequest(server.url(), "still fine"))), "still fine");
}

TEST(CurlSessionLimits, EndsWithManyRequestsUnderWayAndStopsComingIn) {
  const std::vector<ServerReply> stalls{ServerReply(Heard::nothing).stall(), ServerReply(Heard::head).stall(),
                                        ServerReply().stall(), ServerReply().send("HTTP/1.1 200 OK\r\n").stall()};
  for (int round = 0; round < 10; ++round) {
    ScriptedServer server;
    for (int caller = 0; caller < 8; ++caller)
      server.reply(stalls[static_cast<std::size_t>(caller) % stalls.size()]);
    auto session = std::make_unique<CurlSession>();
    std::vector<std::jthread> callers;
    for (int caller = 0; caller < 8; ++caller)
      callers.emplace_back([&session = *session, &server](const std::stop_token& stop) {
        try {
          session.data(postRequest(server.url(), std::string(20'000, 'x')), plentyOfTime, stop);
          ADD_FAILURE() << "an answer that never came";
        } catch (const URLError& error) {
          EXPECT_EQ(error.code(), Code::cancelled);
        }
      });
    server.waitForStalls(8);
    for (std::size_t caller = 0; caller < callers.size(); caller += 2)
      callers[caller].request_stop();
    session.reset();
  }
}

}  // namespace
}  // namespace tq::test
