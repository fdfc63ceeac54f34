#include "TarquelApp/Playback/FrameTap.hpp"

#include <QImage>
#include <QVideoFrame>
#include <QVideoFrameFormat>
#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <utility>

namespace tq {

namespace {

struct FormatName {
  QVideoFrameFormat::PixelFormat format;
  const char* name;
};

/// Qt's pixel formats (https://doc.qt.io/qt-6/qvideoframeformat.html#PixelFormat-enum) as libav calls them. Nothing
/// shines through a clip, so transparency is left out.
constexpr std::array<FormatName, 21> formats{{
    {QVideoFrameFormat::Format_YUV420P, "yuv420p"},
    {QVideoFrameFormat::Format_YUV422P, "yuv422p"},
    {QVideoFrameFormat::Format_YV12, "yuv420p"},  // with its chroma planes exchanged
    {QVideoFrameFormat::Format_YUV420P10, "yuv420p10le"},
    {QVideoFrameFormat::Format_NV12, "nv12"},
    {QVideoFrameFormat::Format_NV21, "nv21"},
    {QVideoFrameFormat::Format_P010, "p010le"},
    {QVideoFrameFormat::Format_P016, "p016le"},
    {QVideoFrameFormat::Format_UYVY, "uyvy422"},
    {QVideoFrameFormat::Format_YUYV, "yuyv422"},
    {QVideoFrameFormat::Format_Y8, "gray"},
    {QVideoFrameFormat::Format_Y16, "gray16le"},
    {QVideoFrameFormat::Format_ARGB8888, "0rgb"},
    {QVideoFrameFormat::Format_XRGB8888, "0rgb"},
    {QVideoFrameFormat::Format_BGRA8888, "bgr0"},
    {QVideoFrameFormat::Format_BGRX8888, "bgr0"},
    {QVideoFrameFormat::Format_ABGR8888, "0bgr"},
    {QVideoFrameFormat::Format_XBGR8888, "0bgr"},
    {QVideoFrameFormat::Format_RGBA8888, "rgb0"},
    {QVideoFrameFormat::Format_RGBX8888, "rgb0"},
    {QVideoFrameFormat::Format_ARGB8888_Premultiplied, "0rgb"},
}};

/// A frame whose planes can be read for as long as this lives.
class MappedFrame {
 public:
  explicit MappedFrame(const QVideoFrame& frame) : frame_(frame), isMapped_(frame_.map(QVideoFrame::ReadOnly)) {}
  MappedFrame(const MappedFrame&) = delete;
  MappedFrame& operator=(const MappedFrame&) = delete;
  ~MappedFrame() {
    if (isMapped_) frame_.unmap();
  }

  bool isMapped() const { return isMapped_; }
  const QVideoFrame& frame() const { return frame_; }

 private:
  QVideoFrame frame_;
  bool isMapped_;
};

VideoPicture::Matrix matrixOf(const QVideoFrameFormat& format) {
  switch (format.colorSpace()) {
    case QVideoFrameFormat::ColorSpace_BT601: return VideoPicture::Matrix::bt601;
    case QVideoFrameFormat::ColorSpace_BT709: return VideoPicture::Matrix::bt709;
    case QVideoFrameFormat::ColorSpace_BT2020: return VideoPicture::Matrix::bt2020;
    default: return VideoPicture::Matrix::unknown;
  }
}

VideoPicture::Transfer transferOf(const QVideoFrameFormat& format) {
  switch (format.colorTransfer()) {
    case QVideoFrameFormat::ColorTransfer_ST2084: return VideoPicture::Transfer::pq;
    case QVideoFrameFormat::ColorTransfer_STD_B67: return VideoPicture::Transfer::hlg;
    default: return VideoPicture::Transfer::ordinary;
  }
}

/// Absent when the frame cannot be read as it is.
std::shared_ptr<const void> readPlanes(const QVideoFrame& frame, VideoPicture& picture) {
  const auto known = std::ranges::find(formats, frame.pixelFormat(), &FormatName::format);
  const QVideoFrameFormat format = frame.surfaceFormat();
  if (known == formats.end() || format.scanLineDirection() != QVideoFrameFormat::TopToBottom) return nullptr;
  auto mapped = std::make_shared<MappedFrame>(frame);
  if (!mapped->isMapped()) return nullptr;
  picture = {.format = known->name,
             .width = frame.width(),
             .height = frame.height(),
             .matrix = matrixOf(format),
             .transfer = transferOf(format),
             .fullRange = format.colorRange() == QVideoFrameFormat::ColorRange_Full};
  const int planes = std::min(mapped->frame().planeCount(), static_cast<int>(picture.planes.size()));
  for (int plane = 0; plane < planes; ++plane) {
    picture.planes.at(static_cast<std::size_t>(plane)) = mapped->frame().bits(plane);
    picture.strides.at(static_cast<std::size_t>(plane)) = mapped->frame().bytesPerLine(plane);
  }
  if (known->format == QVideoFrameFormat::Format_YV12) std::swap(picture.planes[1], picture.planes[2]);
  return mapped;
}

/// What Qt makes of it, upright.
PlayedPicture drawnByQt(const QVideoFrame& frame) {
  const auto image = std::make_shared<const QImage>(frame.toImage().convertToFormat(QImage::Format_RGB32));
  if (image->isNull()) return {};
  return {.picture = {.format = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "bgr0" : "0rgb",
                      .width = image->width(),
                      .height = image->height(),
                      .planes = {image->constBits()},
                      .strides = {static_cast<int>(image->bytesPerLine())},
                      .fullRange = true},
          .owner = image};
}

PlayedPicture playedPicture(const QVideoFrame& frame) {
  if (!frame.isValid()) return {};
  PlayedPicture played;
  played.owner = readPlanes(frame, played.picture);
  if (!played.owner) return drawnByQt(frame);
  played.clockwise = static_cast<int>(frame.rotationAngle());
  played.isMirrored = frame.mirrored() != frame.surfaceFormat().isMirrored();
  return played;
}

}  // namespace

/// Outlives the tap for as long as the player's thread is on it.
class FrameTap::Way {
 public:
  void leadTo(std::shared_ptr<PictureReceiver> receiver) {
    const std::scoped_lock lock(mutex_);
    receiver_ = std::move(receiver);
  }

  void take(const QVideoFrame& frame) {
    const std::scoped_lock lock(mutex_);
    if (receiver_) receiver_->show(playedPicture(frame));
  }

 private:
  std::mutex mutex_;
  std::shared_ptr<PictureReceiver> receiver_;
};

FrameTap::FrameTap(QObject* parent) : QVideoSink(parent), way_(std::make_shared<Way>()) {
  connect(this, &QVideoSink::videoFrameChanged, [way = way_](const QVideoFrame& frame) { way->take(frame); });
}

FrameTap::~FrameTap() {
  way_->leadTo(nullptr);
}

void FrameTap::setScreen(QObject* screen) {
  if (std::exchange(screen_, screen) == screen) return;
  const auto* shows = qobject_cast<PictureScreen*>(screen);
  way_->leadTo(shows ? shows->receiver() : nullptr);
  Q_EMIT screenChanged();
}

}  // namespace tq
