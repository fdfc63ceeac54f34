#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "Support/FakeURLSession.hpp"
#include "Support/ManualClock.hpp"
#include "TQCore/TQError.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQVision/HTTPTransport.hpp"

namespace tq {
namespace {

using namespace std::chrono_literals;
using test::FakeURLSession;
using test::ManualClock;
using testing::ElementsAre;
using testing::IsEmpty;
using Code = URLError::Code;

class HTTPTransportTest : public testing::Test {
 protected:
  HTTPTransport transport(std::int64_t maxAttempts = HTTPTransport::providerMaxAttempts,
                          double backoffBase = HTTPTransport::providerBackoffBase) {
    return HTTPTransport(session_, maxAttempts, backoffBase, clock_);
  }

  /// The text of the answer, with callbacks that leave a mark.
  std::string send(const HTTPTransport& transport) {
    return std::string(textOf(transport.send(
        request_, [](int status, const std::string& body) { return std::to_string(status) + " said: " + body; },
        [](const URLError& error) { return "described: " + error.localizedDescription(); }, stop_.get_token())));
  }

  std::string send() { return send(transport()); }

  TQError errorOf(const HTTPTransport& transport) {
    try {
      send(transport);
    } catch (const TQError& error) {
      return error;
    }
    throw std::logic_error("nothing was thrown");
  }

  TQError errorOfSend() { return errorOf(transport()); }

  std::shared_ptr<FakeURLSession> session_ = std::make_shared<FakeURLSession>();
  std::shared_ptr<ManualClock> clock_ = std::make_shared<ManualClock>();
  URLRequest request_{WebURL::parse("https://api.example.com/v1/messages").value()};
  std::stop_source stop_;
};

// Answers.

TEST_F(HTTPTransportTest, GivesTheBodyOfTheAnswer) {
  session_->answer(200, "hello");
  EXPECT_EQ(send(), "hello");
  EXPECT_THAT(clock_->sleeps(), IsEmpty());
}

TEST_F(HTTPTransportTest, SendsTheRequestAsItIs) {
  request_.method = "POST";
  request_.setHeader("x-api-key", "secret");
  request_.body = std::make_shared<const std::string>("body");
  session_->answer(503).answer(200);
  send();
  ASSERT_EQ(session_->calls().size(), 2u);
  for (const FakeURLSession::Call& call : session_->calls()) {
    EXPECT_EQ(call.request.url, request_.url);
    EXPECT_EQ(call.request.method, "POST");
    EXPECT_EQ(call.request.headers, request_.headers);
    EXPECT_EQ(call.request.body, request_.body) << "the body is shared, not copied";
  }
}

TEST_F(HTTPTransportTest, EveryStatusOfTheTwoHundredsIsASuccess) {
  for (const int status : {200, 201, 204, 299}) {
    session_->answer(status, "ok");
    EXPECT_EQ(send(), "ok") << status;
  }
}

TEST_F(HTTPTransportTest, AnEmptyBodyIsASuccess) {
  session_->answer(200);
  EXPECT_EQ(send(), "");
}

TEST_F(HTTPTransportTest, ASuccessNeedNotBeText) {
  session_->answer(200, "\xff\xfe");
  EXPECT_EQ(send(), "\xff\xfe");
}

TEST_F(HTTPTransportTest, AnAnswerThatIsNoHTTPIsFinal) {
  session_->answerWithoutHTTP("220 ready");
  EXPECT_EQ(errorOfSend(), TQError::providerTransport("non-HTTP response"));
  EXPECT_EQ(session_->calls().size(), 1u);
}

TEST_F(HTTPTransportTest, AnyOtherStatusIsFinalAndCarriesTheAnnotatedBody) {
  for (const int status : {199, 300, 304, 400, 401, 403, 404, 408, 422, 428, 430, 499, 600}) {
    const std::size_t before = session_->calls().size();
    session_->answer(status, "why");
    EXPECT_EQ(errorOfSend(), TQError::providerHTTPError(status, std::to_string(status) + " said: why"));
    EXPECT_EQ(session_->calls().size(), before + 1) << status;
  }
  EXPECT_THAT(clock_->sleeps(), IsEmpty());
}

TEST_F(HTTPTransportTest, TheErrorKeepsALongBodyWhole) {
  const std::string body(1'000'000, 'x');
  session_->answer(404, body);
  EXPECT_EQ(errorOfSend(), TQError::providerHTTPError(404, "404 said: " + body));
}

TEST_F(HTTPTransportTest, AFailedBodyThatIsNotUTF8IsCalledBinary) {
  session_->answer(500).answer(500).answer(500, "caf\xe9");
  EXPECT_EQ(errorOfSend(), TQError::providerHTTPError(500, "500 said: <binary>"));
}

// Repeating.

TEST_F(HTTPTransportTest, ABusyServerIsAskedAgainAfterDoublingWaits) {
  session_->answer(503, "busy").answer(503, "busy").answer(200, "third");
  EXPECT_EQ(send(), "third");
  EXPECT_THAT(clock_->sleeps(), ElementsAre(800ms, 1600ms));
}

TEST_F(HTTPTransportTest, ARateLimitThatStaysEndsWithTheThirdAnswer) {
  session_->answer(429, "first").answer(429, "second").answer(429, "third");
  EXPECT_EQ(errorOfSend(), TQError::providerHTTPError(429, "429 said: third"));
  EXPECT_EQ(session_->calls().size(), 3u);
  EXPECT_THAT(clock_->sleeps(), ElementsAre(800ms, 1600ms));
}

TEST_F(HTTPTransportTest, EveryStatusOfTheFiveHundredsIsRepeated) {
  for (const int status : {500, 502, 529, 599}) {
    session_->answer(status).answer(200, "ok");
    EXPECT_EQ(send(), "ok") << status;
  }
}

TEST_F(HTTPTransportTest, ABusyAnswerThenARejectionEndsWithTheRejection) {
  session_->answer(503).answer(400, "no");
  EXPECT_EQ(errorOfSend(), TQError::providerHTTPError(400, "400 said: no"));
  EXPECT_EQ(session_->calls().size(), 2u);
}

TEST_F(HTTPTransportTest, ARefusedConnectionIsTriedThreeTimesAndKeepsTheSessionsWords) {
  for (int attempt = 0; attempt < 3; ++attempt)
    session_->fail(Code::cannotConnectToHost, "Could not connect, try " + std::to_string(attempt));
  EXPECT_EQ(errorOfSend(), TQError::providerTransport("Could not connect, try 2"));
  EXPECT_EQ(session_->calls().size(), 3u);
  EXPECT_THAT(clock_->sleeps(), ElementsAre(800ms, 1600ms));
}

TEST_F(HTTPTransportTest, EveryOtherTransportFailureIsRepeated) {
  for (const Code code :
       {Code::badURL, Code::cannotFindHost, Code::cannotConnectToHost, Code::networkConnectionLost,
        Code::secureConnectionFailed, Code::serverCertificateUntrusted, Code::badServerResponse, Code::unknown}) {
    session_->fail(code).fail(code).answer(200, "at last");
    EXPECT_EQ(send(), "at last") << static_cast<int>(code);
  }
}

TEST_F(HTTPTransportTest, AnErrorOfAnotherKindIsRepeatedAndKeepsItsWords) {
  const auto line = [](const FakeURLSession::Call&, const std::stop_token&) -> URLResponse {
    throw std::runtime_error("the disk is full");
  };
  session_->then(line).then(line).then(line);
  EXPECT_EQ(errorOfSend(), TQError::providerTransport("the disk is full"));
  EXPECT_EQ(session_->calls().size(), 3u);
}

TEST_F(HTTPTransportTest, FinalFailuresAreDescribedByTheCallerAndNotRepeated) {
  for (const Code code :
       {Code::timedOut, Code::cancelled, Code::userCancelledAuthentication, Code::userAuthenticationRequired}) {
    const std::size_t before = session_->calls().size();
    session_->fail(code, "words");
    EXPECT_EQ(errorOfSend(), TQError::providerTransport("described: words"));
    EXPECT_EQ(session_->calls().size(), before + 1);
  }
  EXPECT_THAT(clock_->sleeps(), IsEmpty());
}

TEST_F(HTTPTransportTest, AFinalFailureAfterABusyAnswerIsFinalAllTheSame) {
  session_->answer(503).fail(Code::timedOut, "words");
  EXPECT_EQ(errorOfSend(), TQError::providerTransport("described: words"));
}

TEST_F(HTTPTransportTest, WithOneAttemptNothingIsRepeated) {
  session_->answer(503, "busy");
  EXPECT_EQ(errorOf(transport(1)), TQError::providerHTTPError(503, "503 said: busy"));
  session_->fail(Code::cannotFindHost, "no such host");
  EXPECT_EQ(errorOf(transport(1)), TQError::providerTransport("no such host"));
  EXPECT_THAT(clock_->sleeps(), IsEmpty());
}

TEST_F(HTTPTransportTest, WaitsDoubleWithoutACap) {
  for (int attempt = 0; attempt < 6; ++attempt)
    session_->answer(500);
  errorOf(transport(6, 10));
  EXPECT_THAT(clock_->sleeps(), ElementsAre(10s, 20s, 40s, 80s, 160s));
}

TEST_F(HTTPTransportTest, ABackoffThatIsNotAboveZeroIsNoWait) {
  for (const double base : {0.0, -1.0, std::nan("")}) {
    session_->answer(500).fail(Code::unknown).answer(200, "ok");
    EXPECT_EQ(send(transport(3, base)), "ok");
  }
  EXPECT_THAT(clock_->sleeps(), IsEmpty());
}

TEST_F(HTTPTransportTest, ABackoffIsCutOffToWholeNanoseconds) {
  session_->answer(500).answer(200);
  send(transport(2, 1.9e-9));
  EXPECT_THAT(clock_->sleeps(), ElementsAre(1ns));
}

TEST(HTTPTransportDeathTest, ABackoffBeyondTheClockEndsTheProgram) {
  for (const double base : {1e10, HUGE_VAL}) {
    const auto session = std::make_shared<FakeURLSession>();
    session->answer(500);
    const HTTPTransport transport(session, 2, base, std::make_shared<ManualClock>());
    EXPECT_DEATH(transport.send(URLRequest(WebURL::parse("http://host").value()), {}), "");
  }
}

TEST(HTTPTransportDeathTest, LessThanOneAttemptEndsTheProgram) {
  for (const std::int64_t attempts : {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()})
    EXPECT_DEATH(HTTPTransport(nullptr, attempts, 0.8, nullptr), "");
}

// The callbacks a caller need not give.

TEST_F(HTTPTransportTest, WithoutCallbacksBodiesAndFailuresKeepTheirWords) {
  session_->answer(400, "invalid_request").fail(Code::timedOut, "The request timed out.");
  EXPECT_THROW(
      try { transport().send(request_, {}); } catch (const TQError& error) {
        EXPECT_EQ(error, TQError::providerHTTPError(400, "invalid_request"));
        throw;
      },
      TQError);
  EXPECT_THROW(
      try { transport().send(request_, {}); } catch (const TQError& error) {
        EXPECT_EQ(error, TQError::providerTransport("The request timed out."));
        throw;
      },
      TQError);
}

// Cancelling.

TEST_F(HTTPTransportTest, AStopBeforeTheRequestIsACancelledRequest) {
  stop_.request_stop();
  EXPECT_EQ(errorOfSend(), TQError::providerTransport("described: The request was cancelled."));
  EXPECT_EQ(session_->calls().size(), 1u);
}

TEST_F(HTTPTransportTest, AStopDuringTheRequestIsACancelledRequest) {
  request_.timeoutInterval = 0;
  session_->then([&](const FakeURLSession::Call&, const std::stop_token& stop) -> URLResponse {
    stop_.request_stop();
    EXPECT_TRUE(stop.stop_requested()) << "the session sees the caller's stop";
    throw URLError(Code::cancelled, "The request was cancelled.");
  });
  EXPECT_EQ(errorOfSend(), TQError::providerTransport("described: The request was cancelled."));
}

/// A clock whose waits are scripted: true waits, false throws `Cancelled`.
class ScriptedClock final : public Clock {
 public:
  explicit ScriptedClock(std::vector<bool> waits) : waits_(std::move(waits)) {}

  Date now() const override { return {}; }
  std::chrono::steady_clock::time_point steadyNow() const override { return {}; }
  void sleep(std::chrono::nanoseconds duration, std::stop_token) const override {
    sleeps.push_back(duration);
    if (!waits_.at(sleeps.size() - 1)) throw Cancelled();
  }

  mutable std::vector<std::chrono::nanoseconds> sleeps;

 private:
  std::vector<bool> waits_;
};

TEST_F(HTTPTransportTest, AStopDuringTheBackoffOfABusyAnswerLeavesAsItself) {
  session_->then([&](const FakeURLSession::Call&, const std::stop_token&) {
    stop_.request_stop();
    return URLResponse{.statusCode = 503, .body = {}};
  });
  EXPECT_THROW(send(), Cancelled);
  EXPECT_EQ(session_->calls().size(), 1u);
}

TEST_F(HTTPTransportTest, AStopDuringTheBackoffOfAFailureLeavesAsItself) {
  session_->then([&](const FakeURLSession::Call&, const std::stop_token&) -> URLResponse {
    stop_.request_stop();
    throw URLError(Code::networkConnectionLost, "lost");
  });
  EXPECT_THROW(send(), Cancelled);
  EXPECT_EQ(session_->calls().size(), 1u);
}

TEST_F(HTTPTransportTest, ABackoffThatEndsEarlyIsEnteredOnceMore) {
  session_->answer(503);
  const auto clock = std::make_shared<ScriptedClock>(std::vector{false, false});
  EXPECT_THROW(send(HTTPTransport(session_, 3, 0.8, clock)), Cancelled);
  EXPECT_THAT(clock->sleeps, ElementsAre(800ms, 800ms));
}

TEST_F(HTTPTransportTest, TheBackoffOfAFailureIsEnteredOnlyOnce) {
  session_->fail(Code::cannotFindHost);
  const auto clock = std::make_shared<ScriptedClock>(std::vector{false});
  EXPECT_THROW(send(HTTPTransport(session_, 3, 0.8, clock)), Cancelled);
  EXPECT_THAT(clock->sleeps, ElementsAre(800ms));
}

// Deadlines.

TEST_F(HTTPTransportTest, EveryAttemptGetsTheWholeTimeLimit) {
  request_.timeoutInterval = 90.5;
  session_->answer(503).answer(200);
  send();
  ASSERT_EQ(session_->calls().size(), 2u);
  for (const FakeURLSession::Call& call : session_->calls())
    EXPECT_EQ(call.deadline, std::chrono::nanoseconds(90'500'000'000));
}

TEST_F(HTTPTransportTest, ATimeLimitThatIsNoneGivesNoDeadline) {
  for (const double limit : {0.0, -5.0, std::nan(""), HUGE_VAL, -HUGE_VAL}) {
    request_.timeoutInterval = limit;
    session_->answer(200, "ok");
    EXPECT_EQ(send(), "ok");
    EXPECT_EQ(session_->calls().back().deadline, std::nullopt) << limit;
  }
}

TEST_F(HTTPTransportTest, ATimeLimitBeyondADayIsCutToADay) {
  request_.timeoutInterval = 100'000;
  session_->answer(200);
  send();
  EXPECT_EQ(session_->calls().back().deadline, 24h);
}

TEST_F(HTTPTransportTest, AServerThatNeverAnswersIsAskedOnce) {
  session_->neverAnswer();
  EXPECT_EQ(errorOfSend(), TQError::providerTransport("described: The request timed out."));
  EXPECT_EQ(session_->calls().size(), 1u);
}

TEST(DeadlineNanoseconds, CountsAndRounds) {
  EXPECT_EQ(HTTPTransport::deadlineNanoseconds(1), 1'000'000'000u);
  EXPECT_EQ(HTTPTransport::deadlineNanoseconds(0.3), 300'000'000u);
  EXPECT_EQ(HTTPTransport::deadlineNanoseconds(1.5e-9), 2u) << "half away from zero";
  EXPECT_EQ(HTTPTransport::deadlineNanoseconds(1e-10), 0u);
}

TEST(DeadlineNanoseconds, NoneIsLongerThanADay) {
  EXPECT_EQ(HTTPTransport::deadlineNanoseconds(86'400), 86'400'000'000'000u);
  EXPECT_EQ(HTTPTransport::deadlineNanoseconds(86'400.1), 86'400'000'000'000u);
  EXPECT_EQ(HTTPTransport::deadlineNanoseconds(std::numeric_limits<double>::max()), 86'400'000'000'000u);
}

TEST(DeadlineNanoseconds, IsZeroForWhatIsNoLimit) {
  for (const double seconds : {0.0, -1.0, std::nan(""), HUGE_VAL, -HUGE_VAL})
    EXPECT_EQ(HTTPTransport::deadlineNanoseconds(seconds), 0u) << seconds;
}

}  // namespace
}  // namespace tq
