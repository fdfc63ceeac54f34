#include "TarquelApp/Preview/ClipOrientation.hpp"

#include <QMetaObject>
#include <exception>
#include <filesystem>
#include <stop_token>

#include "TQPlatform/Media/MediaAsset.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {

namespace {

int turnOf(const std::filesystem::path& clip, const std::stop_token& stop) noexcept try {
  const auto tracks = MediaAsset(clip, stop).tracks(MediaType::video);
  return tracks.empty() ? 0 : tracks.front().clockwise;
} catch (const std::exception&) {
  return 0;
}

}  // namespace

void ClipOrientation::setFile(const QUrl& file) {
  if (file == file_) return;
  file_ = file;
  know(false, 0);
  // What an earlier thread may have posted is of an earlier file.
  reading_ = std::jthread([this, file](const std::stop_token& stop) {
    const int clockwise = turnOf(pathOf(file), stop);
    QMetaObject::invokeMethod(
        this,
        [this, file, clockwise] {
          if (file == file_) know(true, clockwise);
        },
        Qt::QueuedConnection);
  });
  Q_EMIT fileChanged();
}

void ClipOrientation::know(bool isKnown, int clockwise) {
  if (isKnown == isKnown_) return;
  isKnown_ = isKnown;
  clockwise_ = clockwise;
  Q_EMIT isKnownChanged();
}

}  // namespace tq
