#include <QByteArray>
#include <QProcess>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "Support/EnvironmentVariable.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarquelApp/Desktop/MuteBuses.hpp"
#include "TarquelApp/Desktop/PrivateBus.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::EnvironmentVariable;
using test::PrivateBus;
using test::TemporaryFolder;
using test::turnUntil;

constexpr std::chrono::milliseconds impatient{30};
constexpr std::chrono::milliseconds patient{50'000};

const QByteArray nobody = "disabled:";
const QByteArray unreachable = "unix:path=/nowhere";

/// A Unix socket that takes every connection, says `words` to it and nothing more, and keeps it or hangs up.
class StrangeBus {
 public:
  enum class Place { file, abstract };
  enum class Then { keeps, hangsUp };

  explicit StrangeBus(std::string words = "", Then then = Then::keeps, Place place = Place::file)
      : words_(std::move(words)),
        then_(then),
        name_((folder_.path() / "bus").string()),
        isAbstract_(place == Place::abstract),
        listening_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + (isAbstract_ ? 1 : 0), name_.data(), name_.size());
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name_.size() + 1);
    if (::bind(listening_, reinterpret_cast<const sockaddr*>(&address), length) != 0 || ::listen(listening_, 10) != 0)
      throw std::runtime_error("no socket");
    thread_ = std::jthread([this] { serve(); });
  }

  ~StrangeBus() {
    ::shutdown(listening_, SHUT_RDWR);
    thread_.join();
    ::close(listening_);
    for (const int connection : kept_)
      ::close(connection);
  }

  QByteArray address() const {
    return (isAbstract_ ? "unix:abstract=" : "unix:path=") + QByteArray::fromStdString(name_);
  }

  const std::filesystem::path& folder() const { return folder_.path(); }

  int connections() const { return connections_; }

 private:
  void serve() {
    for (;;) {
      const int connection = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
      if (connection < 0) return;
      ++connections_;
      ::send(connection, words_.data(), words_.size(), MSG_NOSIGNAL);
      if (then_ == Then::keeps)
        kept_.push_back(connection);
      else
        ::close(connection);
    }
  }

  const std::string words_;
  const Then then_;
  TemporaryFolder folder_;
  const std::string name_;
  const bool isAbstract_;
  const int listening_;
  std::atomic<int> connections_ = 0;
  std::vector<int> kept_;
  std::jthread thread_;
};

/// The buses that a process finds named in its environment, for the length of a test.
class Buses {
 public:
  explicit Buses(const std::optional<QByteArray>& session, const QByteArray& system = unreachable)
      : session_("DBUS_SESSION_BUS_ADDRESS", session ? std::optional(session->toStdString()) : std::nullopt),
        system_("DBUS_SYSTEM_BUS_ADDRESS", system.toStdString()) {}

  static QByteArray session() { return qgetenv("DBUS_SESSION_BUS_ADDRESS"); }
  static QByteArray system() { return qgetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

 private:
  const EnvironmentVariable session_, system_;
};

TEST(MuteBuses, ABusThatTakesAConnectionAndNeverAnswersIsLeftOut) {
  const StrangeBus mute;
  const Buses buses(mute.address());
  leaveOutMuteBuses(impatient);
  EXPECT_EQ(Buses::session(), nobody);
  EXPECT_EQ(Buses::system(), unreachable);
}

TEST(MuteBuses, SoIsTheSystemsWhileTheSessionsIsKept) {
  const StrangeBus mute;
  PrivateBus healthy;
  const Buses buses(healthy.address().toLocal8Bit(), mute.address());
  leaveOutMuteBuses(std::chrono::milliseconds(1000));
  EXPECT_EQ(Buses::session(), healthy.address().toLocal8Bit());
  EXPECT_EQ(Buses::system(), nobody);
}

TEST(MuteBuses, BothAreLeftOutWhereBothAreMute) {
  const StrangeBus one, other;
  const Buses buses(one.address(), other.address());
  leaveOutMuteBuses(impatient);
  EXPECT_EQ(Buses::session(), nobody);
  EXPECT_EQ(Buses::system(), nobody);
}

TEST(MuteBuses, AnAbstractSocketIsAskedToo) {
  const StrangeBus mute("", StrangeBus::Then::keeps, StrangeBus::Place::abstract);
  const Buses buses(mute.address());
  leaveOutMuteBuses(impatient);
  EXPECT_EQ(Buses::session(), nobody);
}

TEST(MuteBuses, ABusThatAgreesAndThenSaysNothingIsLeftOut) {
  const StrangeBus half("DATA\r\nOK 1234deadbeef\r\n");
  const Buses buses(half.address());
  leaveOutMuteBuses(impatient);
  EXPECT_EQ(Buses::session(), nobody);
}

TEST(MuteBuses, ABusThatAnswersTheGreetingIsKeptWithoutWaitingForMore) {
  const StrangeBus talking("DATA\r\nOK 1234deadbeef\r\nl");
  const Buses buses(talking.address());
  leaveOutMuteBuses(patient);
  EXPECT_EQ(Buses::session(), talking.address());
}

TEST(MuteBuses, ABusThatRefusesOrHangsUpIsLeftToItsClients) {
  const StrangeBus refusing("REJECTED ANONYMOUS\r\n");
  const StrangeBus gone("", StrangeBus::Then::hangsUp);
  const Buses buses(refusing.address(), gone.address());
  leaveOutMuteBuses(patient);
  EXPECT_EQ(Buses::session(), refusing.address());
  EXPECT_EQ(Buses::system(), gone.address());
}

TEST(MuteBuses, WhatIsNoUnixSocketIsLeftAlone) {
  const Buses buses("tcp:host=localhost,port=1", "autolaunch:");
  leaveOutMuteBuses(patient);
  EXPECT_EQ(Buses::session(), "tcp:host=localhost,port=1");
  EXPECT_EQ(Buses::system(), "autolaunch:");
}

TEST(MuteBuses, TheFirstEntryOfAnAddressThatTakesAConnectionIsAsked) {
  const StrangeBus mute;
  const Buses buses("unix:path=/nowhere;" + mute.address() + ",guid=12");
  leaveOutMuteBuses(impatient);
  EXPECT_EQ(Buses::session(), nobody);
}

TEST(MuteBuses, TheUsualBusOfASessionIsAskedWhereNoneIsNamed) {
  const StrangeBus mute;
  const EnvironmentVariable folder("XDG_RUNTIME_DIR", mute.folder().string());
  const Buses buses(std::nullopt);
  leaveOutMuteBuses(impatient);
  EXPECT_EQ(Buses::session(), nobody);
}

/// The window itself: a bus that takes connections and says nothing is asked once, and by nobody else.
TEST(MuteBuses, TheWindowIsThereWhateverTheBusDoes) {
  const StrangeBus mute;
  const TemporaryFolder home;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
    environment.insert(QString::fromLatin1(name), QString::fromStdString(home.path()));
  environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromLocal8Bit(mute.address()));
  environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
  environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("qt.scenegraph.time.renderloop=true"));
  environment.insert(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
  QProcess process;
  process.setProcessEnvironment(environment);
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.start(QStringLiteral(TQ_WINDOW_PROGRAM), QStringList());
  QByteArray said;
  turnUntil([&] {
    said += process.readAll();
    return said.contains("rame rendered") || process.state() == QProcess::NotRunning;
  });
  EXPECT_TRUE(said.contains("rame rendered")) << said.toStdString();
  EXPECT_EQ(mute.connections(), 1);
  process.kill();
  process.waitForFinished();
}

}  // namespace
}  // namespace tq
