#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "TQPersistence/FileLock.hpp"

namespace tq {

/// The user's provider keys, in clear text in a JSON file that only its owner may read: the file has mode 0600 from its
/// first byte on, its folder mode 0700. May be shared between threads. Two stores of one file are safe against each
/// other when they were given the same registry.
class SecretsStore {
 public:
  SecretsStore(std::filesystem::path fileURL, std::shared_ptr<FileLockRegistry> locks);

  const std::filesystem::path& fileURL() const { return fileURL_; }

  /// The secret of that account; absent when there is none or it is empty. Takes no lock, because a write replaces the
  /// file in one step. Throws what makes the file unusable: `SystemError`, `JSONError`, `DecodingError`, or
  /// `TQError::fileTooLarge`. A file that is missing or empty is no failure.
  std::optional<std::string> get(const std::string& account) const;

  /// Keeps `value` for that account; an empty value removes the account. Throws as `get` does, and then the file is
  /// untouched, so that one that cannot be read is never overwritten; throws `SystemError` also when it cannot be
  /// written.
  void set(const std::string& value, const std::string& account) const;

  /// Removes the account and tells whether it was there. Any failure counts as "no", with nothing written. The file is
  /// written even when the account was not there.
  bool remove(const std::string& account) const noexcept;

 private:
  std::filesystem::path fileURL_;
  std::shared_ptr<FileLockRegistry> locks_;
};

}  // namespace tq
