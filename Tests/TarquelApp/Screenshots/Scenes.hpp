#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "TarquelApp/WindowHarness.hpp"

namespace tq::test {

/// A state of the window that is worth a picture.
struct Scene {
  const char* name;
  std::function<QImage(WindowHarness& harness)> stage;  ///< brings the window there, from nothing launched
};

const std::vector<Scene>& scenes();

}  // namespace tq::test
