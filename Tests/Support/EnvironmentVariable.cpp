#include "Support/EnvironmentVariable.hpp"

#include <stdlib.h>

namespace tq::test {

namespace {

void assign(const std::string& name, const std::optional<std::string>& value) {
  if (value)
    setenv(name.c_str(), value->c_str(), 1);
  else
    unsetenv(name.c_str());
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
  if (const char* before = getenv(name_.c_str())) before_ = before;
  assign(name_, value);
}

EnvironmentVariable::~EnvironmentVariable() {
  assign(name_, before_);
}

}  // namespace tq::test
