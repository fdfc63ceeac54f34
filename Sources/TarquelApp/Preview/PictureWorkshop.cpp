#include "TarquelApp/Preview/PictureWorkshop.hpp"

#include <QTransform>
#include <utility>

namespace tq {

namespace {

bool liesOnItsSide(const PlayedPicture& played) {
  return played.clockwise % 180 != 0;
}

/// The size of a picture once it is upright.
QSize naturalSize(const PlayedPicture& played) {
  if (!played.owner) return {};
  const QSize stored(played.picture.width, played.picture.height);
  return liesOnItsSide(played) ? stored.transposed() : stored;
}

/// Upright and at that size; null when it cannot be drawn.
QImage drawn(VideoScaler& scaler, const PlayedPicture& played, const QSize& size) {
  QImage image(liesOnItsSide(played) ? size.transposed() : size, QImage::Format_RGB32);
  if (image.isNull() ||
      !scaler.draw(
          played.picture,
          {.first = image.bits(), .stride = image.bytesPerLine(), .width = image.width(), .height = image.height()}))
    return {};
  if (played.clockwise != 0) image = image.transformed(QTransform().rotate(played.clockwise));
  return played.isMirrored ? image.mirrored(true, false) : image;
}

}  // namespace

QSize fitted(const QSize& natural, const QSizeF& stage) {
  if (natural.isEmpty() || stage.isEmpty()) return {};
  const QSizeF size = QSizeF(natural).scaled(stage, Qt::KeepAspectRatio);
  return QSize(qRound(size.width()), qRound(size.height())).expandedTo({1, 1});
}

PictureWorkshop::PictureWorkshop(std::function<void()> arrived)
    : arrived_(std::move(arrived)), thread_([this](const std::stop_token& stop) { work(stop); }) {}

PictureWorkshop::~PictureWorkshop() {
  close();
}

void PictureWorkshop::close() {
  thread_.request_stop();
  if (thread_.joinable()) thread_.join();
}

void PictureWorkshop::show(PlayedPicture picture) {
  const std::scoped_lock lock(mutex_);
  latest_ = std::move(picture);
  isNew_ = true;
  changed_.notify_one();
}

void PictureWorkshop::setStage(const QSizeF& stage) {
  const std::scoped_lock lock(mutex_);
  if (std::exchange(stage_, stage) == stage) return;
  isNew_ = isNew_ || latest_.owner;
  changed_.notify_one();
}

void PictureWorkshop::setTurn(int clockwise) {
  const std::scoped_lock lock(mutex_);
  if (std::exchange(turn_, clockwise) == clockwise) return;
  isNew_ = isNew_ || latest_.owner;
  changed_.notify_one();
}

std::optional<PictureWorkshop::Ready> PictureWorkshop::take() {
  const std::scoped_lock lock(mutex_);
  changed_.notify_one();
  return std::exchange(ready_, std::nullopt);
}

void PictureWorkshop::work(const std::stop_token& stop) {
  VideoScaler scaler;
  std::unique_lock lock(mutex_);
  while (changed_.wait(lock, stop, [this] { return isNew_ && !ready_ && !stage_.isEmpty(); })) {
    isNew_ = false;
    PlayedPicture played = latest_;
    if (played.clockwise == 0) played.clockwise = turn_;
    const QSizeF stage = stage_;
    lock.unlock();
    Ready ready{.natural = naturalSize(played)};
    if (!ready.natural.isEmpty()) ready.image = drawn(scaler, played, fitted(ready.natural, stage));
    lock.lock();
    ready_ = std::move(ready);
    arrived_();
  }
}

}  // namespace tq
