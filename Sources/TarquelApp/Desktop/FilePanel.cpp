#include "TarquelApp/Desktop/FilePanel.hpp"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <utility>

#include "TarquelApp/Desktop/Portal.hpp"
#include "TarquelApp/Desktop/PortalRequest.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {

/// Which names a panel shows, as the portal has it: (us), of which 0 is a shell pattern, and a(us) with a title.
struct NamePattern {
  uint kind = 0;
  QString pattern;
};
struct NameFilter {
  QString title;
  QList<NamePattern> patterns;
};

static QDBusArgument& operator<<(QDBusArgument& argument, const NamePattern& pattern) {
  argument.beginStructure();
  argument << pattern.kind << pattern.pattern;
  argument.endStructure();
  return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, NamePattern& pattern) {
  argument.beginStructure();
  argument >> pattern.kind >> pattern.pattern;
  argument.endStructure();
  return argument;
}

static QDBusArgument& operator<<(QDBusArgument& argument, const NameFilter& filter) {
  argument.beginStructure();
  argument << filter.title << filter.patterns;
  argument.endStructure();
  return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, NameFilter& filter) {
  argument.beginStructure();
  argument >> filter.title >> filter.patterns;
  argument.endStructure();
  return argument;
}

}  // namespace tq

Q_DECLARE_METATYPE(tq::NamePattern)
Q_DECLARE_METATYPE(tq::NameFilter)

namespace tq {

namespace {

QVariant filtersOf(const QStringList& namePatterns) {
  qDBusRegisterMetaType<NamePattern>();
  qDBusRegisterMetaType<QList<NamePattern>>();
  qDBusRegisterMetaType<NameFilter>();
  qDBusRegisterMetaType<QList<NameFilter>>();
  NameFilter some{.title = QStringLiteral("Video files"), .patterns = {}};
  for (const QString& pattern : namePatterns)
    some.patterns.append({.kind = 0, .pattern = pattern});
  const NameFilter all{.title = QStringLiteral("All files"), .patterns = {{.kind = 0, .pattern = QStringLiteral("*")}}};
  return QVariant::fromValue(QList<NameFilter>{some, all});
}

/// A path of the file system, ended by a zero byte.
QByteArray pathBytes(const QUrl& folder) {
  const std::string path = pathOf(folder).native();
  return {path.c_str(), static_cast<qsizetype>(path.size() + 1)};
}

/// A window as portals name it. Qt 6.4 tells no program the name of its window under Wayland.
QString nameOf(const QWindow* window) {
  const bool hasName = window && QGuiApplication::platformName() == QStringLiteral("xcb");
  return hasName ? QStringLiteral("x11:") + QString::number(window->winId(), 16) : QString();
}

QVariantMap optionsFor(const FileQuestion& question, const QUrl& folder) {
  QVariantMap options{{QStringLiteral("modal"), true},
                      {QStringLiteral("directory"), question.wantsFolder},
                      {QStringLiteral("multiple"), !question.wantsFolder}};
  if (!question.wantsFolder) options.insert(QStringLiteral("filters"), filtersOf(question.namePatterns));
  if (folder.isLocalFile()) options.insert(QStringLiteral("current_folder"), pathBytes(folder));
  return options;
}

QList<QUrl> urlsOf(const PortalRequest::Answer& answer) {
  QList<QUrl> urls;
  if (answer)
    for (const QString& uri : answer->value(QStringLiteral("uris")).toStringList())
      urls.append(QUrl::fromEncoded(uri.toUtf8()));
  return urls;
}

}  // namespace

FilePanel::FilePanel(QDBusConnection bus, std::chrono::milliseconds patience, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), patience_(patience) {}

FilePanel::~FilePanel() = default;

void FilePanel::ask(const FileQuestion& question, FileQuestion::Answer answer) {
  const auto answered = [this, answer](const PortalRequest::Answer& response) {
    const QList<QUrl> urls = urlsOf(response);
    if (!urls.isEmpty()) lastFolder_ = qtFileURL(pathOf(urls.first()).parent_path());
    answer(urls);
  };
  const QVariantList arguments{nameOf(question.window), question.title};
  request_ = std::make_unique<PortalRequest>(
      bus_, portal::interface(QStringLiteral("FileChooser")), QStringLiteral("OpenFile"), arguments,
      optionsFor(question, lastFolder_.isEmpty() ? question.folder : lastFolder_), patience_,
      PortalRequest::Handlers{.answered = answered, .failed = [answer] { answer(std::nullopt); }});
}

}  // namespace tq
