#pragma once

#include <exception>
#include <filesystem>
#include <string>

#include "TQCore/RecordJSON.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {

// What the stores of private files have in common.

/// The text of a store's file: sorted keys, one value on a line. Throws `JSONError` when `value` holds what JSON
/// cannot.
std::string storeText(const JSONValue& value);

enum class StoreFileMode {
  asItIs,               ///< that of the old file, or what the umask gives
  ownerOnlyIfPossible,  ///< 0600, where the file system knows modes
  ownerOnly,            ///< 0600 in a folder of 0700, or nothing is written; a folder that cannot be changed is kept
};

/// Replaces the file in one step, and creates its folder with mode 0700 where it is missing. Throws `SystemError` when
/// it cannot be written; the old file is whole then.
void writeStoreFile(const std::filesystem::path& url, const std::string& text, StoreFileMode mode);

/// The record in the file, or a new one when the file is missing or cannot be used for any reason: a program whose
/// private files are broken starts all the same.
template <class Record>
Record readStoreFile(const std::filesystem::path& url) noexcept {
  try {
    return decode<Record>(parseJSON(textOf(SafeFile::readBounded(url, SafeFile::maxMetadataBytes))));
  } catch (const std::exception&) {
    return Record();
  }
}

}  // namespace tq
