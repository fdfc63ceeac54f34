// Which servers are trusted.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/ScriptedServer.hpp"
#include "Support/SessionRequests.hpp"
#include "TQPlatform/Network/CurlSession.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Code = URLError::Code;

class CurlSessionTLS : public testing::Test {
 protected:
  /// A request with a key to a server that shows `identity`; the server must get nothing of it.
  URLError refusalOf(ServerIdentity identity) {
    ScriptedServer server({.address = "127.0.0.1", .identity = std::move(identity)});
    server.replyAlways(ServerReply::answer(200, "trusted"));
    URLRequest request = postRequest(server.url("/?query=private"), "clip");
    request.setHeader("x-api-key", "secret");
    URLError error = failureOf(session_, request);
    EXPECT_TRUE(server.requests().empty());
    const std::string start = "The certificate of 127.0.0.1 port " + std::to_string(server.port()) + " is not trusted";
    EXPECT_THAT(error.localizedDescription(), testing::StartsWith(start));
    return error;
  }

  const TestAuthority authority_;
  CurlSession session_{{.certificateAuthorities = authority_.certificateFile(), .addresses = {}}};
};

TEST_F(CurlSessionTLS, TrustsACertificateForTheHost) {
  ScriptedServer server({.address = "127.0.0.1", .identity = authority_.issue({"127.0.0.1"})});
  server.replyAlways(ServerReply().echo());
  EXPECT_EQ(bodyOf(send(session_, postRequest(server.url(), "one"))), "one");
  EXPECT_EQ(bodyOf(send(session_, postRequest(server.url(), std::string(1'000'000, 'x')))),
            std::string(1'000'000, 'x'));
  EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(CurlSessionTLS, ChecksTheNameAndNotTheAddressBehindIt) {
  ScriptedServer server({.address = "127.0.0.1", .identity = authority_.issue({"models.test"})});
  server.reply(ServerReply::answer(200, "named"));
  CurlSession session({.certificateAuthorities = authority_.certificateFile(),
                       .addresses = {"models.test:" + std::to_string(server.port()) + ":127.0.0.1"}});
  EXPECT_EQ(bodyOf(send(session, getRequest(server.url("/", "models.test")))), "named");
}

TEST_F(CurlSessionTLS, OffersHTTP2AndFallsBackToHTTP1) {
  ScriptedServer server({.address = "127.0.0.1", .identity = authority_.issue({"127.0.0.1"})});
  server.reply(ServerReply::answer(200, ""));
  EXPECT_EQ(send(session_, getRequest(server.url())).statusCode, 200);
  EXPECT_THAT(server.offeredProtocols(), ElementsAre("h2", "http/1.1"));
}

TEST_F(CurlSessionTLS, RefusesACertificateForAnotherHost) {
  const URLError error = refusalOf(authority_.issue({"elsewhere.test"}));
  EXPECT_EQ(error.code(), Code::serverCertificateUntrusted);
  EXPECT_THAT(error.localizedDescription(), HasSubstr("it is made for another host"));
}

TEST_F(CurlSessionTLS, RefusesACertificateThatHasExpired) {
  const URLError error = refusalOf(authority_.issueExpired({"127.0.0.1"}));
  EXPECT_EQ(error.code(), Code::serverCertificateUntrusted);
  EXPECT_THAT(error.localizedDescription(), HasSubstr("it has expired"));
}

TEST_F(CurlSessionTLS, RefusesACertificateThatTheServerSignedItself) {
  const URLError error = refusalOf(TestAuthority::selfSigned({"127.0.0.1"}));
  EXPECT_EQ(error.code(), Code::serverCertificateUntrusted);
  EXPECT_THAT(error.localizedDescription(), HasSubstr("it is signed by the server itself"));
}

TEST_F(CurlSessionTLS, RefusesACertificateOfAnUnknownAuthority) {
  const URLError error = refusalOf(TestAuthority("Nobody knows me").issue({"127.0.0.1"}));
  EXPECT_EQ(error.code(), Code::serverCertificateUntrusted);
  EXPECT_THAT(error.localizedDescription(), HasSubstr("its issuer is not known to this computer"));
}

TEST(CurlSessionOfTheProgram, TrustsNoAuthorityThatTheSystemDoesNot) {
  const TestAuthority authority;
  ScriptedServer server({.address = "127.0.0.1", .identity = authority.issue({"127.0.0.1"})});
  CurlSession session;
  EXPECT_EQ(failureOf(session, getRequest(server.url())).code(), Code::serverCertificateUntrusted);
}

TEST_F(CurlSessionTLS, FailsWithAServerThatSpeaksNoTLS) {
  ScriptedServer plain;
  plain.reply(ServerReply(Heard::nothing).send("HTTP/1.1 400 Bad Request\r\n\r\n").close());
  const std::string port = std::to_string(plain.port());
  const URLError error = failureOf(session_, getRequest("https://127.0.0.1:" + port + "/"));
  EXPECT_EQ(error.code(), Code::secureConnectionFailed);
  EXPECT_EQ(error.localizedDescription(), "A secure connection to 127.0.0.1 port " + port + " could not be set up.");
}

TEST_F(CurlSessionTLS, FailsWhenTheServerLeavesDuringTheHandshake) {
  ScriptedServer server({.address = "127.0.0.1", .identity = authority_.issue({"127.0.0.1"})});
  server.reply(ServerReply(Heard::nothing).close());
  EXPECT_EQ(failureOf(session_, getRequest(server.url())).code(), Code::secureConnectionFailed);
}

TEST_F(CurlSessionTLS, CallsAConnectionLostThatIsResetWhileTheRequestIsSent) {
  ScriptedServer server({.address = "127.0.0.1", .identity = authority_.issue({"127.0.0.1"})});
  server.reply(ServerReply(Heard::head).reset());
  const URLRequest request = postRequest(server.url(), std::string(20'000'000, 'x'));
  EXPECT_EQ(failureOf(session_, request).code(), Code::networkConnectionLost) << "and no signal ended the program";
}

TEST_F(CurlSessionTLS, CallsAConnectionLostThatIsResetDuringTheAnswer) {
  ScriptedServer server({.address = "127.0.0.1", .identity = authority_.issue({"127.0.0.1"})});
  server.reply(ServerReply().send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n01234").reset());
  EXPECT_EQ(failureOf(session_, getRequest(server.url())).code(), Code::networkConnectionLost);
}

}  // namespace
}  // namespace tq::test
