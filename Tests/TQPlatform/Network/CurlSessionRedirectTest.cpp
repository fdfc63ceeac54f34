// Where a redirect may lead, and what goes along.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/ScriptedServer.hpp"
#include "Support/SessionRequests.hpp"
#include "TQPlatform/Network/CurlSession.hpp"

namespace tq::test {
namespace {

ServerReply redirect(int status, const std::string& location) {
  return ServerReply::answer(status, "moved", {"Location: " + location});
}

URLRequest keyedPost(const std::string& url) {
  URLRequest request = postRequest(url, "clip");
  request.setHeader("x-api-key", "secret");
  request.setHeader("Content-Type", "application/json");
  return request;
}

class CurlSessionRedirect : public testing::Test {
 protected:
  ScriptedServer server_;
  CurlSession session_;
};

TEST_F(CurlSessionRedirect, IsFollowedOnTheSameServerWithMethodHeadersAndBody) {
  for (const int status : {307, 308}) {
    server_.reply(redirect(status, "/new?a=b"));
    server_.reply(ServerReply::answer(200, "found"));
    EXPECT_EQ(bodyOf(send(session_, keyedPost(server_.url("/old")))), "found");
    const ServerRequest last = server_.requests().back();
    EXPECT_EQ(last.methodAndTarget(), "POST /new?a=b");
    EXPECT_EQ(last.header("x-api-key"), "secret");
    EXPECT_EQ(last.header("Content-Type"), "application/json");
    EXPECT_EQ(last.body, "clip");
  }
  EXPECT_EQ(server_.connectionCount(), 1);
}

TEST_F(CurlSessionRedirect, AsksWithGETForTheResultElsewhere) {
  for (const int status : {301, 302, 303}) {
    server_.reply(redirect(status, "/new"));
    server_.reply(ServerReply::answer(200, "found"));
    EXPECT_EQ(bodyOf(send(session_, keyedPost(server_.url("/old")))), "found");
    const ServerRequest last = server_.requests().back();
    EXPECT_EQ(last.methodAndTarget(), "GET /new");
    EXPECT_EQ(last.header("x-api-key"), "secret");
    EXPECT_EQ(last.header("Content-Type"), std::nullopt);
    EXPECT_EQ(last.header("Content-Length"), std::nullopt);
  }
}

TEST_F(CurlSessionRedirect, KeepsAMethodOtherThanPOSTWhereItMay) {
  for (const int status : {301, 302, 307, 308}) {
    server_.reply(redirect(status, "/new"));
    server_.reply(ServerReply::answer(200, ""));
    URLRequest request = getRequest(server_.url("/old"));
    request.method = "DELETE";
    send(session_, request);
    EXPECT_EQ(server_.requests().back().methodAndTarget(), "DELETE /new") << status;
  }
}

TEST_F(CurlSessionRedirect, ToAnAbsoluteAddressOfTheSameServerIsFollowed) {
  server_.reply(redirect(307, server_.url("/new")));
  server_.reply(ServerReply::answer(200, "found"));
  EXPECT_EQ(bodyOf(send(session_, keyedPost(server_.url()))), "found");
}

TEST_F(CurlSessionRedirect, ToAnotherPortIsItselfTheAnswer) {
  ScriptedServer other;
  for (const int status : {301, 302, 303, 307, 308}) {
    server_.reply(redirect(status, other.url("/new")));
    const URLResponse response = send(session_, keyedPost(server_.url()));
    EXPECT_EQ(response.statusCode, status);
    EXPECT_EQ(bodyOf(response), "moved");
  }
  EXPECT_EQ(other.connectionCount(), 0);
}

TEST_F(CurlSessionRedirect, ToAnotherHostIsItselfTheAnswer) {
  // The same socket under another name: what counts is who is asked for, not where it leads.
  CurlSession session(
      {.certificateAuthorities = {}, .addresses = {"other.test:" + std::to_string(server_.port()) + ":127.0.0.1"}});
  server_.reply(redirect(307, server_.url("/new", "other.test")));
  EXPECT_EQ(send(session, keyedPost(server_.url())).statusCode, 307);
  EXPECT_EQ(server_.requests().size(), 1u);
  EXPECT_EQ(server_.connectionCount(), 1);
}

TEST_F(CurlSessionRedirect, ToAnotherSchemeIsItselfTheAnswer) {
  const std::string port = std::to_string(server_.port());
  for (const std::string& target : {"https://127.0.0.1:" + port + "/", "ftp://127.0.0.1:" + port + "/",
                                    std::string("file:///etc/passwd"), std::string("http://")}) {
    server_.reply(redirect(307, target));
    EXPECT_EQ(send(session_, keyedPost(server_.url())).statusCode, 307) << target;
  }
  EXPECT_EQ(server_.requests().size(), 4u);
}

TEST(CurlSessionRedirectFromTLS, ToPlainTextIsItselfTheAnswer) {
  const TestAuthority authority;
  ScriptedServer secure({.address = "127.0.0.1", .identity = authority.issue({"127.0.0.1"})});
  ScriptedServer plain;
  secure.reply(redirect(307, plain.url()));
  CurlSession session({.certificateAuthorities = authority.certificateFile(), .addresses = {}});
  EXPECT_EQ(send(session, keyedPost(secure.url())).statusCode, 307);
  EXPECT_EQ(plain.connectionCount(), 0);
}

TEST_F(CurlSessionRedirect, CarriesTheRequestsUserInformationAndNoOther) {
  const std::string own = server_.url("/old", "user:word@127.0.0.1");
  server_.reply(redirect(307, server_.url("/new", "stranger:trick@127.0.0.1")));
  server_.reply(ServerReply::answer(200, ""));
  send(session_, getRequest(own));
  server_.reply(redirect(307, server_.url("/new", "stranger:trick@127.0.0.1")));
  server_.reply(ServerReply::answer(200, ""));
  send(session_, getRequest(server_.url("/old")));
  const auto requests = server_.requests();
  ASSERT_EQ(requests.size(), 4u);
  EXPECT_EQ(requests[1].header("Authorization"), "Basic dXNlcjp3b3Jk");
  EXPECT_EQ(requests[3].header("Authorization"), std::nullopt);
}

TEST_F(CurlSessionRedirect, WithoutEndIsItselfTheAnswerAfterTen) {
  server_.replyAlways(redirect(302, "/again"));
  EXPECT_EQ(send(session_, getRequest(server_.url())).statusCode, 302);
  EXPECT_EQ(server_.requests().size(), 11u);
}

TEST_F(CurlSessionRedirect, OfAnotherKindOrWithoutALocationIsItselfTheAnswer) {
  server_.reply(redirect(300, "/new"));
  server_.reply(redirect(304, "/new"));
  server_.reply(ServerReply::answer(307, "nowhere"));
  for (const int status : {300, 304, 307})
    EXPECT_EQ(send(session_, getRequest(server_.url())).statusCode, status);
  EXPECT_EQ(server_.requests().size(), 3u);
}

}  // namespace
}  // namespace tq::test
