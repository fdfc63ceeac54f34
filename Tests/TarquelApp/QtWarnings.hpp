#pragma once

#include <QString>

namespace tq::test {

/// From now on, what Qt and QML complain of while a test runs is a failure of that test. To be called once, before the
/// tests run.
void failOnQtWarnings();

/// A warning that a test brings about on purpose: as long as this lives, those that contain `part` are no failure, and
/// one of them must come.
class ExpectedQtWarning {
 public:
  explicit ExpectedQtWarning(QString part);
  ~ExpectedQtWarning();
  ExpectedQtWarning(const ExpectedQtWarning&) = delete;
  ExpectedQtWarning& operator=(const ExpectedQtWarning&) = delete;

 private:
  const QString part_;
};

}  // namespace tq::test
