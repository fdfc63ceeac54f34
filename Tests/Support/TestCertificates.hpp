#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.hpp"

namespace tq::test {

/// What a TLS server shows and proves itself with, both PEM.
struct ServerIdentity {
  std::string certificate;
  std::string key;
};

/// A certificate authority of the test's own, made anew, that nobody else trusts.
class TestAuthority {
 public:
  explicit TestAuthority(const std::string& name = "Test authority");
  ~TestAuthority();

  /// A PEM file with its certificate, for those who are to trust it.
  std::filesystem::path certificateFile() const { return folder_ / "authority.pem"; }

  /// A certificate for the names and addresses `hosts`, good for a day around now.
  ServerIdentity issue(const std::vector<std::string>& hosts) const;

  /// As `issue`, but its time ended yesterday.
  ServerIdentity issueExpired(const std::vector<std::string>& hosts) const;

  /// A certificate signed with its own key.
  static ServerIdentity selfSigned(const std::vector<std::string>& hosts);

 private:
  struct Material;

  TemporaryFolder folder_;
  std::unique_ptr<Material> material_;
};

}  // namespace tq::test
