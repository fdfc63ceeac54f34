#pragma once

#include <string>

namespace tq {

/// Advice that is added to what a service said.
struct ProviderErrorHints {
  /// `body`, and for a rejected request (HTTP 400) that reads like a model without eyes a hint behind it. Wording and
  /// shape of the rejection differ from server to server, so a few telling words decide, in any case.
  static std::string annotateBadRequest(int status, std::string body);
};

}  // namespace tq
