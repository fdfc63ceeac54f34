#include "TarquelApp/Desktop/LaunchRequest.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

#include "TarquelApp/Text.hpp"

namespace tq {

namespace {

constexpr const char* tokenVariables[] = {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"};

/// Longer than any desktop makes them.
constexpr qsizetype longestToken = 1024;

QString tokenKey() {
  return QStringLiteral("activation-token");
}

QString startupIDKey() {
  return QStringLiteral("desktop-startup-id");
}

QString checkedToken(const QString& token) {
  const bool isPrintable =
      std::all_of(token.begin(), token.end(), [](QChar character) { return character >= u' ' && character < u'\x7f'; });
  return isPrintable && token.size() <= longestToken ? token : QString();
}

QString tokenOfEnvironment() {
  for (const char* variable : tokenVariables)
    if (const QString token = checkedToken(qEnvironmentVariable(variable)); !token.isEmpty()) return token;
  return {};
}

/// A scheme and "://", RFC 3986 section 3.1, or a file URL in its short form "file:/path".
bool looksLikeURL(std::string_view text) {
  constexpr std::string_view inScheme = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.";
  const std::size_t end = text.find_first_not_of(inScheme);
  if (end == std::string_view::npos || end == 0) return false;
  const std::string_view rest = text.substr(end);
  return rest.starts_with("://") || (text.substr(0, end) == "file" && rest.starts_with(":/"));
}

/// A file on this machine with an absolute path that a file system can hold.
std::optional<QUrl> localFile(const QUrl& url) {
  const bool isHere = url.host().isEmpty() || url.host() == QStringLiteral("localhost");
  if (!url.isValid() || !url.isLocalFile() || !isHere) return std::nullopt;
  const std::filesystem::path path = pathOf(url);
  if (!path.is_absolute() || path.native().find('\0') != std::string::npos) return std::nullopt;
  return qtFileURL(path);
}

std::optional<QUrl> fileURL(std::string_view argument, const std::filesystem::path& workingDirectory) {
  if (argument.empty()) return std::nullopt;
  if (!looksLikeURL(argument)) return qtFileURL(workingDirectory / argument);
  return localFile(QUrl::fromEncoded(QByteArray(argument.data(), static_cast<qsizetype>(argument.size()))));
}

}  // namespace

LaunchRequest LaunchRequest::read(std::span<char* const> arguments, const std::filesystem::path& workingDirectory) {
  LaunchRequest request{.files = {}, .activationToken = tokenOfEnvironment()};
  for (const std::string_view argument : arguments)
    if (const auto file = fileURL(argument, workingDirectory)) request.files.append(*file);
  return request;
}

LaunchRequest LaunchRequest::received(const QStringList& uris, const QVariantMap& platformData) {
  LaunchRequest request;
  for (const QString& uri : uris)
    if (const auto file = localFile(QUrl::fromEncoded(uri.toUtf8()))) request.files.append(*file);
  for (const QString& key : {tokenKey(), startupIDKey()})
    if (request.activationToken.isEmpty()) request.activationToken = checkedToken(platformData.value(key).toString());
  return request;
}

QStringList LaunchRequest::uris() const {
  QStringList result;
  for (const QUrl& file : files)
    result.append(QString::fromLatin1(file.toEncoded()));
  return result;
}

QVariantMap LaunchRequest::platformData() const {
  if (activationToken.isEmpty()) return {};
  return {{tokenKey(), activationToken}, {startupIDKey(), activationToken}};
}

}  // namespace tq
