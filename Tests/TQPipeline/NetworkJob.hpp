#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Support/PipelineHarness.hpp"
#include "Support/ScriptedServer.hpp"
#include "Support/TestCertificates.hpp"
#include "TQPlatform/Network/CurlSession.hpp"

namespace tq::test {

/// The key of both providers, which must never be seen outside a request's head.
inline constexpr const char* secretKey = "sk-secret-0123456789";

/// A chat completion that says `content`, which is given as a JSON text.
std::string completion(const std::string& content, const std::string& finishReason = "stop");

/// A completion that makes a job `done`.
std::string goodCompletion();

/// Whose certificate a server shows; `none` is a server without TLS.
enum class Certificate { none, trusted, unknownIssuer, selfSigned, expired, otherHost };

/// A job that asks its model over a real session. Only the waits between attempts are the manual clock's.
class NetworkJob {
 public:
  NetworkJob();

  void useSession(CurlOptions options);
  ServerOptions serverOptions(Certificate certificate, const std::string& address = "127.0.0.1") const;

  /// Every clip has two frames of that size.
  void giveFrames(std::size_t bytes);

  /// Runs a clip to whatever end it comes to.
  Job run(const std::string& name = "clip.mov");

  /// The waits between attempts, in seconds.
  std::vector<double> waits() const;

  /// Looks for the key wherever it has no business: updates, files and their names, process arguments.
  void expectNoKeyInSight() const;

  TestAuthority authority;
  PipelineHarness harness;
};

}  // namespace tq::test
