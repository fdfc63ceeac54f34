#include "TarquelApp/Pictures/FramePictures.hpp"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>
#include <utility>

namespace tq {

namespace {

/// The radius of a thumbnail's corners, in parts of its height.
constexpr double cornerRadius = 0.075;

/// No picture that a model gets comes near; a damaged one may say anything of itself.
constexpr int largestSide = 16'384;

/// At least as large as `size` in both directions, when one is given and the picture allows: the decoder of a JPEG
/// skips what a smaller one does not need.
QImage decode(const Bytes& jpegData, QSize size) {
  QByteArray bytes =
      QByteArray::fromRawData(reinterpret_cast<const char*>(jpegData.data()), static_cast<qsizetype>(jpegData.size()));
  QBuffer buffer(&bytes);
  QImageReader reader(&buffer, QByteArrayLiteral("jpeg"));
  const QSize whole = reader.size();
  if (whole.isEmpty() || whole.width() > largestSide || whole.height() > largestSide) return {};
  if (!size.isEmpty()) reader.setScaledSize(whole.scaled(size, Qt::KeepAspectRatioByExpanding));
  return reader.read();
}

/// Whoever asked looks at other frames by now, and must not be told of a failure.
QImage nobodysPicture() {
  QImage pixel(1, 1, QImage::Format_ARGB32_Premultiplied);
  pixel.fill(Qt::transparent);
  return pixel;
}

QImage cutWithRoundedCorners(const QImage& picture, QSize size) {
  QImage thumbnail(size, QImage::Format_ARGB32_Premultiplied);
  thumbnail.fill(Qt::transparent);
  QPainter painter(&thumbnail);
  painter.setRenderHint(QPainter::Antialiasing);
  QPainterPath shape;
  const double radius = cornerRadius * size.height();
  shape.addRoundedRect(QRectF(thumbnail.rect()), radius, radius);
  painter.setClipPath(shape);
  QRect place(QPoint(0, 0), picture.size());
  place.moveCenter(thumbnail.rect().center());
  painter.drawImage(place, picture);
  return thumbnail;
}

}  // namespace

QImage FramePictures::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const QStringList parts = id.split(QLatin1Char('/'));
  const FrameShelf::Frames frames = shelf_.find(parts.value(0).toULongLong());
  const std::size_t index = parts.value(1).toULongLong();
  if (!frames) return nobodysPicture();
  if (index >= frames->size()) return {};
  QImage picture = decode((*frames)[index].jpegData, requestedSize);
  if (picture.isNull()) return {};
  if (!requestedSize.isEmpty()) picture = cutWithRoundedCorners(picture, requestedSize);
  if (size) *size = picture.size();
  return picture;
}

}  // namespace tq
