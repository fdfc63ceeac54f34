#pragma once

#include <QString>
#include <QUrl>
#include <filesystem>
#include <string>
#include <string_view>

namespace tq {

// The engine's texts and paths as Qt has them, and back.

/// Malformed UTF-8 is replaced by U+FFFD.
inline QString qtText(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string textOf(const QString& text) {
  return text.toStdString();
}

/// Keeps every byte of a name, also of one that is not UTF-8.
inline QUrl qtFileURL(const std::filesystem::path& path) {
  return QUrl::fromEncoded(QByteArrayLiteral("file://") +
                           QByteArray::fromStdString(path.native()).toPercentEncoding(QByteArrayLiteral("/")));
}

/// Empty for a URL that is not a local file's.
inline std::filesystem::path pathOf(const QUrl& url) {
  if (!url.isLocalFile()) return {};
  return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

}  // namespace tq
