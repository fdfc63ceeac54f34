#include "TarquelApp/QtWarnings.hpp"

#include <QtGlobal>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace tq::test {

namespace {

/// What has come in since the last look. Qt has one handler for the process, and any thread may complain.
struct Complaints {
  std::mutex mutex;
  std::map<QString, int> expected;  ///< and how often each has come
  std::vector<std::string> unexpected;
};

Complaints& complaints() {
  static Complaints all;
  return all;
}

QtMessageHandler printer = nullptr;

/// What Qt's sound says of a machine that has none.
constexpr QLatin1String withoutSound("pa_context_connect() failed");

void note(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  const bool isComplaint = type != QtDebugMsg && type != QtInfoMsg && !message.contains(withoutSound);
  if (isComplaint) {
    const std::scoped_lock lock(complaints().mutex);
    for (auto& [part, count] : complaints().expected)
      if (message.contains(part)) {
        ++count;
        return;
      }
    complaints().unexpected.push_back(message.toStdString());
  }
  printer(type, context, message);
}

class Judge : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo&) override {
    const std::scoped_lock lock(complaints().mutex);
    for (const std::string& message : std::exchange(complaints().unexpected, {}))
      ADD_FAILURE() << "Qt complained: " << message;
  }
};

}  // namespace

void failOnQtWarnings() {
  printer = qInstallMessageHandler(note);
  testing::UnitTest::GetInstance()->listeners().Append(new Judge);  // which takes it
}

ExpectedQtWarning::ExpectedQtWarning(QString part) : part_(std::move(part)) {
  const std::scoped_lock lock(complaints().mutex);
  complaints().expected[part_] = 0;
}

ExpectedQtWarning::~ExpectedQtWarning() {
  const std::scoped_lock lock(complaints().mutex);
  EXPECT_GT(complaints().expected[part_], 0) << "Qt never complained of: " << part_.toStdString();
  complaints().expected.erase(part_);
}

}  // namespace tq::test
