#pragma once

#include "TQVision/VisionDefaults.hpp"
#include "TQVision/VisionProvider.hpp"

namespace tq {

/// A provider that looks at nothing and needs no network: it answers at once with a canned description, one shot a
/// frame.
class MockProvider final : public VisionProvider, public MockDefaults {
 public:
  MockProvider(std::string providerId, std::string modelId);

  const std::string& providerId() const override { return providerId_; }
  const std::string& modelId() const override { return modelId_; }

  /// Never fails and never waits. A filename that is not UTF-8 cannot stand in JSON: the answer then is "{}".
  VisionResponse describe(const VisionRequest& request, std::stop_token stop) const override;

 private:
  std::string providerId_;
  std::string modelId_;
};

}  // namespace tq
