#include "TQPersistence/SecretsStore.hpp"

#include <map>

#include "TQCore/RecordCodec.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQPersistence/StoreFile.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace fs = std::filesystem;

using Secrets = std::map<std::string, std::string>;

/// An object whose values are all texts.
template <>
struct ValueCodec<Secrets> {
  static std::string expected() { return "an object"; }
  static Secrets read(JSONView value) {
    if (!value.isObject()) throwUnexpected(value, expected());
    Secrets secrets;
    value.forEachMember([&secrets](std::string_view account, JSONView secret) {
      secrets.insert_or_assign(std::string(account), readSecret(account, secret));
    });
    return secrets;
  }
  static JSONValue write(const Secrets& secrets) { return JSONValue::Object(secrets.begin(), secrets.end()); }

 private:
  /// A key that somebody wrote without quotation marks is not repeated in the error either.
  static std::string readSecret(std::string_view account, JSONView secret) {
    if (const auto text = secret.asString()) return std::string(*text);
    throw DecodingError("expected text, found " + std::string(secret.kindName()), std::string(account));
  }
};

namespace {

struct Envelope {
  std::int64_t version = 1;  ///< of the format; kept on rewrite, whatever it is
  Secrets secrets;           ///< by account
};

constexpr RecordTable envelopeTable{
    field("version", &Envelope::version),
    field("secrets", &Envelope::secrets),
};

Bytes contentOrNothing(const fs::path& fileURL) {
  try {
    return SafeFile::readBounded(fileURL, SafeFile::maxMetadataBytes);
  } catch (const SystemError& error) {
    if (error.meansMissing()) return {};
    throw;
  }
}

Envelope load(const fs::path& fileURL) {
  const Bytes content = contentOrNothing(fileURL);
  return content.empty() ? Envelope{} : envelopeTable.read(parseJSON(textOf(content)));
}

void save(const Envelope& envelope, const fs::path& fileURL) {
  writeStoreFile(fileURL, storeText(envelopeTable.write(envelope)), StoreFileMode::ownerOnly);
}

}  // namespace

SecretsStore::SecretsStore(fs::path fileURL, std::shared_ptr<FileLockRegistry> locks)
    : fileURL_(std::move(fileURL)), locks_(std::move(locks)) {}

std::optional<std::string> SecretsStore::get(const std::string& account) const {
  const Envelope envelope = load(fileURL_);
  const auto found = envelope.secrets.find(account);
  if (found == envelope.secrets.end() || found->second.empty()) return std::nullopt;
  return found->second;
}

void SecretsStore::set(const std::string& value, const std::string& account) const {
  // The writer's own error would quote the key.
  if (!isValidUTF8(value)) throw JSONError("the key is not UTF-8 text");
  FileLock::sync(*locks_, fileURL_, [&] {
    Envelope envelope = load(fileURL_);
    if (value.empty())
      envelope.secrets.erase(account);
    else
      envelope.secrets.insert_or_assign(account, value);
    save(envelope, fileURL_);
  });
}

bool SecretsStore::remove(const std::string& account) const noexcept {
  try {
    return FileLock::sync(*locks_, fileURL_, [&] {
      Envelope envelope = load(fileURL_);
      const bool wasThere = envelope.secrets.erase(account) > 0;
      save(envelope, fileURL_);
      return wasThere;
    });
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace tq
