#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "Support/TemporaryFolder.hpp"
#include "TQPersistence/SecretsStore.hpp"

namespace tq::test {

/// The key of `account` that the store finds in the example of a help text, which begins with `{"version"`.
inline std::optional<std::string> keyInExample(const std::string& usageText, const std::string& account) {
  const TemporaryFolder folder;
  const std::size_t start = usageText.find("{\"version\"");
  const std::size_t end = usageText.find("}}", start) + 2;
  const auto file = folder.write("secrets.json", usageText.substr(start, end - start));
  return SecretsStore(file, std::make_shared<FileLockRegistry>()).get(account);
}

}  // namespace tq::test
