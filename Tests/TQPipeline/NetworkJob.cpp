#include "NetworkJob.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQPersistence/SecretAccounts.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {

namespace fs = std::filesystem;

std::string completion(const std::string& content, const std::string& finishReason) {
  return R"({"model": "served-model", "choices": [{"message": {"role": "assistant", "content": )" + content +
         R"(}, "finish_reason": ")" + finishReason + R"("}], "usage": {"prompt_tokens": 5, "completion_tokens": 7}})";
}

std::string goodCompletion() {
  return completion(writeJSON(goodAnswer(), JSONLayout::compact));
}

NetworkJob::NetworkJob() {
  harness.secrets->set(secretKey, SecretAccounts::openaiAPIKey);
  harness.secrets->set(secretKey, SecretAccounts::anthropicAPIKey);
  useSession({.certificateAuthorities = authority.certificateFile(), .addresses = {}});
}

void NetworkJob::useSession(CurlOptions options) {
  harness.stages.providers = ProviderFactory(std::make_shared<CurlSession>(std::move(options)), harness.clock);
}

ServerOptions NetworkJob::serverOptions(Certificate certificate, const std::string& address) const {
  ServerOptions options;
  options.address = address;
  const std::vector<std::string> hosts{"127.0.0.1"};
  switch (certificate) {
    case Certificate::none: break;
    case Certificate::unknownIssuer:
    case Certificate::trusted: options.identity = authority.issue(hosts); break;
    case Certificate::selfSigned: options.identity = TestAuthority::selfSigned(hosts); break;
    case Certificate::expired: options.identity = authority.issueExpired(hosts); break;
    case Certificate::otherHost: options.identity = authority.issue({"models.example.com"}); break;
  }
  return options;
}

void NetworkJob::giveFrames(std::size_t bytes) {
  harness.stages.extractFrames = [bytes](const auto&...) {
    Extraction extraction{.frames = PipelineHarness::frames(2), .meta = {}};
    for (ExtractedFrame& frame : extraction.frames)
      frame.jpegData.resize(bytes);
    return extraction;
  };
}

Job NetworkJob::run(const std::string& name) {
  const Job job = harness.makeJob(name);
  harness.start().add({job});
  return harness.log.waitForEnd(job.id);
}

std::vector<double> NetworkJob::waits() const {
  std::vector<double> seconds;
  for (const auto wait : harness.clock->sleeps())
    seconds.push_back(std::chrono::duration<double>(wait).count());
  return seconds;
}

void NetworkJob::expectNoKeyInSight() const {
  for (const Job& update : harness.log.all()) {
    EXPECT_THAT(update.error.value_or(""), testing::Not(testing::HasSubstr(secretKey)));
    const std::string raw = update.rawResponse ? *update.rawResponse : std::string();
    EXPECT_THAT(raw, testing::Not(testing::HasSubstr(secretKey)));
  }
  for (const auto& entry : fs::recursive_directory_iterator(harness.folder.path())) {
    EXPECT_THAT(entry.path().string(), testing::Not(testing::HasSubstr(secretKey)));
    if (!entry.is_regular_file() || entry.path() == harness.secrets->fileURL()) continue;
    EXPECT_THAT(contentOf(entry.path()), testing::Not(testing::HasSubstr(secretKey))) << entry.path();
  }
  EXPECT_THAT(contentOf("/proc/self/cmdline"), testing::Not(testing::HasSubstr(secretKey)));
}

}  // namespace tq::test
