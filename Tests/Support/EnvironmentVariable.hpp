#pragma once

#include <optional>
#include <string>

namespace tq::test {

/// Sets a variable of this process's environment for the length of one test, or removes it; puts back what was there.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::optional<std::string>& value);
  ~EnvironmentVariable();
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  std::string name_;
  std::optional<std::string> before_;
};

}  // namespace tq::test
