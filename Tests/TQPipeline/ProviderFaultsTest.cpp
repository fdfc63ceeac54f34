// What a user sees, and what a server sees, when the way to a model fails: a job runs against a scripted server over a
// real loopback connection. Only the waits between attempts are the manual clock's.

#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "NetworkJob.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

using test::Certificate;
using test::completion;
using test::goodCompletion;
using test::Heard;
using test::NetworkJob;
using test::ScriptedServer;
using test::ServerReply;

constexpr const char* transportFault = "Network error talking to vision provider: ";
constexpr const char* timedOut =
    "Network error talking to vision provider: request timed out after 0s. If you are using a local LLM server, "
    "increase the "
    "timeout in Preferences → Output → Request timeout.";
constexpr const char* hint =
    "\n\nHint: HTTP 400 from a custom OpenAI-compatible endpoint usually means the model doesn't accept image inputs. "
    "Confirm "
    "the model is vision-capable — e.g., for Qwen use 'Qwen2.5-VL' or 'Qwen3-VL' (not the base text-only Qwen2/Qwen3 "
    "models). "
    "For Llama use 'llama-3.2-90b-vision', and for LLaVA use 'llava' (Ollama). Text-only models will reject the image "
    "content "
    "blocks we send.";

struct Fault {
  std::string name;
  std::function<void(ScriptedServer& server)> script;
  std::optional<std::string> error;  ///< absent: the job is done; {port} stands for the server's
  std::size_t attempts = 1;          ///< requests, or connections where no request is read
  Certificate certificate = Certificate::none;
  double timeout = 600;
  std::size_t frameBytes = 1000;  ///< of each of two frames
  std::string address = "127.0.0.1";
};

std::ostream& operator<<(std::ostream& out, const Fault& fault) {
  return out << fault.name;
}

/// A script in which the server does the same with every request.
std::function<void(ScriptedServer&)> always(ServerReply reply) {
  return [reply](ScriptedServer& server) { server.replyAlways(reply); };
}

Fault answered(const std::string& name, int status, const std::string& body, std::optional<std::string> error,
               std::size_t attempts = 1, const std::vector<std::string>& headers = {}) {
  return {.name = name,
          .script = always(ServerReply::answer(status, body, headers)),
          .error = std::move(error),
          .attempts = attempts};
}

/// A status that is final, with the text that quotes its body.
Fault refused(int status) {
  return answered("Status" + std::to_string(status), status, "no",
                  "Vision provider returned HTTP " + std::to_string(status) + ": no");
}

/// A status that is tried again, and then final.
Fault unavailable(int status, const std::vector<std::string>& headers = {}) {
  Fault fault = refused(status);
  fault.attempts = 3;
  fault.script = always(ServerReply::answer(status, "no", headers));
  return fault;
}

std::string firstCharacters(const std::string& text, std::size_t count) {
  return std::string(characterPrefix(text, count));
}

Fault hinted(const std::string& name, const std::string& body) {
  return answered("Hint" + name, 400, body, "Vision provider returned HTTP 400: " + firstCharacters(body + hint, 200));
}

Fault broken(const std::string& name, ServerReply reply, const std::string& text) {
  return {.name = name, .script = always(std::move(reply)), .error = transportFault + text, .attempts = 3};
}

Fault stalled(const std::string& name, ServerReply reply) {
  return {
      .name = "StallsAgainstTheDeadline" + name, .script = always(std::move(reply)), .error = timedOut, .timeout = 0.3};
}

Fault untrusted(const std::string& name, Certificate certificate, const std::string& why) {
  Fault fault = broken("Certificate" + name, ServerReply::answer(200, goodCompletion()),
                       "The certificate of 127.0.0.1 port {port} is not trusted: " + why + ".");
  fault.certificate = certificate;
  return fault;
}

Fault unreadable(const std::string& name, const std::string& body, const std::string& error) {
  return answered(name, 200, body, error);
}

const std::string lost = "The connection to 127.0.0.1 port {port} was lost.";
const std::string notUnderstood = "The answer of 127.0.0.1 port {port} cannot be understood.";

std::vector<Fault> faults() {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::string good = goodCompletion();
  std::vector<Fault> all{
      // Connections that break.
      broken("ResetBeforeTheRequestIsRead", ServerReply(Heard::nothing).reset(), lost),
      broken("ResetAfterTheHead", ServerReply(Heard::head).reset(), lost),
      broken("ResetInsteadOfAnAnswer", ServerReply().reset(), lost),
      broken("ResetInTheHeadOfTheAnswer", ServerReply().send("HTTP/1.1 200 O").reset(), lost),
      broken("ResetInTheBody", ServerReply().send(ok + "Content-Length: 100\r\n\r\n{").reset(), lost),
      broken("ClosedWithoutAnAnswer", ServerReply().close(), lost),
      broken("ClosedInTheBody", ServerReply().send(ok + "Content-Length: 100\r\n\r\n{").close(), lost),
      broken("ClosedInAChunk", ServerReply().send(ok + "Transfer-Encoding: chunked\r\n\r\n10\r\n{").close(), lost),
      broken("BrokenChunk", ServerReply().send(ok + "Transfer-Encoding: chunked\r\n\r\nzz\r\n{").close(), lost),
      broken("NoHTTPAtAll", ServerReply().send("220 mail.example.com ESMTP\r\n").close(), notUnderstood),

      // Servers that do not go on.
      stalled("BeforeTheRequestIsRead", ServerReply(Heard::nothing).stall()),
      stalled("InsteadOfAnAnswer", ServerReply().stall()),
      stalled("InTheHeadOfTheAnswer", ServerReply().send("HTTP/1.1 200 O").stall()),
      stalled("InTheBody", ServerReply().send(ok + "Content-Length: 100\r\n\r\n{").stall()),
      stalled("AfterAnInterimAnswer", ServerReply().send("HTTP/1.1 100 Continue\r\n\r\n").stall()),

      // Answers without an error.
      answered("GoodAnswer", 200, good, std::nullopt),
      answered("GoodAnswerWithAnotherSuccessStatus", 299, good, std::nullopt),
      {.name = "InterimAnswerBeforeTheGoodOne",
       .script = always(ServerReply()
                            .send("HTTP/1.1 103 Early Hints\r\n\r\n")
                            .send(ok + "Content-Length: " + std::to_string(good.size()) + "\r\n\r\n" + good))},
      {.name = "DrippedAnswer",
       .script = always(ServerReply().drip(ok + "Content-Length: " + std::to_string(good.size()) + "\r\n\r\n" + good))},
      {.name = "AnswerWithoutALength",
       .script = always(ServerReply().send(ok + "Connection: close\r\n\r\n" + good).close())},
      answered("TenMegabytesOfBlanksAndAGoodAnswer", 200, std::string(10'000'000, ' ') + good, std::nullopt),

      // Success that says nothing usable.
      {.name = "NoContent",
       .script = always(ServerReply().send("HTTP/1.1 204 No Content\r\n\r\n")),
       .error = "the JSON text ends too early"},
      unreadable("EmptyBody", "", "the JSON text ends too early"),
      unreadable("TruncatedJSON", good.substr(0, 40), "the JSON text ends too early"),
      unreadable("HundredMegabytesOfText", std::string(100'000'000, 'x'), "no valid JSON at line 1, column 1"),
      unreadable("HTMLPage", "<html>Welcome</html>", "no valid JSON at line 1, column 1"),
      unreadable("List", "[]", "Could not parse model response: response not JSON object"),
      unreadable("NoChoices", R"({"choices": []})", "Could not parse model response: no choices in response"),
      unreadable("ErrorObject", R"({"error": {"message": "overloaded"}})",
                 "Could not parse model response: no choices in response"),
      unreadable("Refusal", R"({"choices": [{"message": {"content": "x", "refusal": "I won't."}}]})",
                 "Could not parse model response: model refused: I won't."),
      unreadable(
          "ContentFilter", completion("null", "content_filter"),
          "Could not parse model response: model refused this content (finish_reason=content_filter). The vision model "
          "declined to describe these frames — try a different model or skip this clip."),
      unreadable(
          "CutOffBeforeTheFirstWord", completion("\"  \"", "length"),
          "Could not parse model response: model response was truncated by max_tokens before any content was emitted "
          "(empty content). Increase max_tokens or reduce frame count."),

      // Statuses.
      refused(401),
      refused(403),
      refused(404),
      refused(408),
      refused(413),
      refused(422),
      refused(400),
      hinted("Validation", R"({"error": "Validation failed"})"),
      hinted("InvalidRequestWord", R"({"type": "INVALID_REQUEST_error"})"),
      hinted("InvalidRequest", "Invalid Request: image_url"),
      hinted("Unsupported", "content type unsupported"),
      unavailable(429),
      unavailable(429, {"Retry-After: 3600"}),
      unavailable(500),
      unavailable(502),
      unavailable(503),
      unavailable(504),
      unavailable(529),
      unavailable(599),
      answered("HTMLErrorPage", 502, "<html><h1>Bad Gateway</h1></html>",
               "Vision provider returned HTTP 502: <html><h1>Bad Gateway</h1></html>", 3),
      answered("BinaryErrorBody", 500, "\xff\xfe\x00garbage", "Vision provider returned HTTP 500: <binary>", 3),
      answered("EmptyErrorBody", 404, "", "Vision provider returned HTTP 404: "),
      answered("ErrorBodyThatQuotesTheKey", 401, std::string("Incorrect API key provided: ") + test::secretKey + ".",
               "Vision provider returned HTTP 401: Incorrect API key provided: [API key]."),
      answered("LongErrorBody", 404, std::string(5000, 'x'),
               "Vision provider returned HTTP 404: " + std::string(200, 'x')),

      // Outcomes that change from attempt to attempt.
      {.name = "AvailableAtTheThirdAttempt",
       .script =
           [good](ScriptedServer& server) {
             server.reply(ServerReply::answer(503, "wait"));
             server.reply(ServerReply::answer(503, "wait"));
             server.reply(ServerReply::answer(200, good));
           },
       .attempts = 3},
      {.name = "FinalAtTheSecondAttempt",
       .script =
           [](ScriptedServer& server) {
             server.reply(ServerReply::answer(429, "slow down"));
             server.reply(ServerReply::answer(404, "gone"));
           },
       .error = "Vision provider returned HTTP 404: gone",
       .attempts = 2},
      {.name = "TheLastAnswerIsTheOneTold",
       .script =
           [](ScriptedServer& server) {
             for (const char* body : {"first", "second", "third"})
               server.reply(ServerReply::answer(429, body));
           },
       .error = "Vision provider returned HTTP 429: third",
       .attempts = 3},
      {.name = "ResetThenGood",
       .script =
           [good](ScriptedServer& server) {
             server.reply(ServerReply().reset());
             server.reply(ServerReply::answer(200, good));
           },
       .attempts = 2},

      // TLS.
      untrusted("OfAnUnknownIssuer", Certificate::unknownIssuer, "its issuer is not known to this computer"),
      untrusted("SignedByItself", Certificate::selfSigned, "it is signed by the server itself"),
      untrusted("Expired", Certificate::expired, "it has expired"),
      untrusted("OfAnotherHost", Certificate::otherHost, "it is made for another host"),

      // Redirects.
      {.name = "RedirectOnTheSameServer",
       .script =
           [good](ScriptedServer& server) {
             server.reply(ServerReply::answer(307, "", {"Location: /elsewhere"}));
             server.reply(ServerReply::answer(200, good));
           },
       .attempts = 2},
  };
  Fault overTLS = answered("GoodAnswerOverTLS", 200, good, std::nullopt);
  overTLS.certificate = Certificate::trusted;
  all.push_back(overTLS);
  Fault handshake = stalled("InTheTLSHandshake", ServerReply(Heard::nothing).stall());
  handshake.certificate = Certificate::trusted;
  all.push_back(handshake);
  Fault sending = stalled("WhileTheRequestIsSent", ServerReply(Heard::head).stall());
  sending.frameBytes = 20'000'000;
  all.push_back(sending);
  Fault plainOnTLS =
      broken("PlainServerAskedForTLS", ServerReply(Heard::nothing).send("HTTP/1.1 400 Bad Request\r\n\r\n").close(),
             "A secure connection to 127.0.0.1 port {port} could not be set up.");
  all.push_back(plainOnTLS);
  Fault ipv6 = answered("GoodAnswerOverIPv6", 200, good, std::nullopt);
  ipv6.address = "::1";
  all.push_back(ipv6);
  for (std::size_t index = 0; index < all.size(); ++index)
    if (all[index].name == "Status429" && index > 0 && all[index - 1].name == "Status429")
      all[index].name = "Status429WithRetryAfter";
  return all;
}

std::string replaced(std::string text, const std::string& mark, const std::string& value) {
  for (std::size_t place; (place = text.find(mark)) != std::string::npos;)
    text.replace(place, mark.size(), value);
  return text;
}

class ProviderFault : public testing::TestWithParam<Fault>, protected NetworkJob {};

TEST_P(ProviderFault, IsToldExactlyAndTriedAsOftenAsItShould) {
  const Fault& fault = GetParam();
  const bool asksForTLS = fault.certificate != Certificate::none || fault.name == "PlainServerAskedForTLS";
  ScriptedServer server(serverOptions(fault.certificate, fault.address));
  fault.script(server);
  giveFrames(fault.frameBytes);
  if (fault.certificate == Certificate::unknownIssuer) useSession({});
  harness.settings.openaiBaseURL = asksForTLS ? replaced(server.url(""), "http:", "https:") : server.url("");
  harness.settings.requestTimeoutSeconds = fault.timeout;

  const Job end = run();
  EXPECT_EQ(end.status, fault.error ? JobStatus::failed : JobStatus::done);
  if (fault.error)
    EXPECT_EQ(end.error.value_or(""), replaced(*fault.error, "{port}", std::to_string(server.port())));
  else
    EXPECT_EQ(end.error, std::nullopt);

  const std::size_t seen = std::max(server.requests().size(), static_cast<std::size_t>(server.connectionCount()));
  EXPECT_EQ(seen, fault.attempts);
  const bool redirected = fault.name.starts_with("Redirect");
  const std::vector<double> allWaits{0.8, 1.6};
  EXPECT_EQ(waits(), redirected
                         ? std::vector<double>{}
                         : std::vector<double>(allWaits.begin(),
                                               allWaits.begin() + static_cast<std::ptrdiff_t>(fault.attempts) - 1));
  expectNoKeyInSight();
}

INSTANTIATE_TEST_SUITE_P(Matrix, ProviderFault, testing::ValuesIn(faults()),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace tq
