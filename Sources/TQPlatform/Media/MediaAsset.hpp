#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

#include "TQPlatform/Media/MediaLimits.hpp"

namespace tq {

/// A media file could not be read. `what()` says why in one phrase for the user.
class MediaError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class MediaType { video, audio, other };

struct MediaTrack {
  MediaType type = MediaType::other;
  int naturalWidth = 0;  ///< pixels as stored; 0 for anything but video
  int naturalHeight = 0;
  float nominalFrameRate = 0;  ///< frames a second; 0 when unknown
  int clockwise = 0;           ///< degrees by which it has to be turned: 0, 90, 180 or 270; 0 for mirrored ones
  /// Four-character code of the first sample description, most significant byte first; absent when there is none.
  std::optional<std::uint32_t> mediaSubtype;
};

struct MetadataItem {
  std::string commonKey;    ///< "location" for the place of recording; empty for keys of no common meaning
  std::string identifier;   ///< the key as the file spells it
  std::string stringValue;  ///< places are written as ISO 6709
};

/// An open media file of the ISO base media family (mp4, m4v, mov). Only this one file is ever read, whatever
/// references to others it holds. Not for use by several threads at once.
class MediaAsset {
 public:
  /// Reads the file's tables; no picture is decoded. Throws `SystemError` when the file cannot be opened or read,
  /// `MediaError` when it is no such media file or goes beyond `limits`, and `Cancelled` when `stop` asks for it.
  explicit MediaAsset(const std::filesystem::path& file, std::stop_token stop = {}, const MediaLimits& limits = {});
  ~MediaAsset();

  /// The same open file once more, for another thread: it may be called from any, and what the two do counts against
  /// the same limits. Throws as the constructor does.
  MediaAsset another(std::stop_token stop = {}) const;

  MediaAsset(MediaAsset&&) noexcept;
  MediaAsset& operator=(MediaAsset&&) noexcept;

  /// Seconds, as the container claims: hostile files claim anything. 0 when unknown, never negative, always finite.
  double duration() const;

  /// All tracks in the file's order, without still pictures such as cover art and chapter images.
  const std::vector<MediaTrack>& tracks() const;
  std::vector<MediaTrack> tracks(MediaType type) const;

  std::vector<MetadataItem> commonMetadata() const;

  struct State;
  State& state() const { return *state_; }  ///< for the image generator

 private:
  MediaAsset(std::unique_ptr<State> state, std::stop_token stop);

  std::unique_ptr<State> state_;
};

}  // namespace tq
