#pragma once

#include <memory>
#include <string>

#include "Support/Gate.hpp"

namespace tq::test {

/// Stands in for the system's resolver in a program that links this file: while one lives, `hangingName` is a host name
/// whose lookup blocks its thread, as a name server that is silent does, and `missingName` one that does not exist. All
/// other names are the system's. One at a time.
class NameLookups {
 public:
  static constexpr const char* hangingName = "hanging.test";
  static constexpr const char* missingName = "missing.invalid";

  NameLookups();

  /// Lets the lookups that hang go on; they find nothing.
  ~NameLookups();

  NameLookups(const NameLookups&) = delete;
  NameLookups& operator=(const NameLookups&) = delete;

  /// Until `count` lookups in all have hung.
  void waitForHanging(int count = 1) { gate_->waitForArrivals(count); }

 private:
  std::shared_ptr<Gate> gate_;
};

}  // namespace tq::test
