#include "TarquelApp/Pictures/ClipPosters.hpp"

#include <QImage>
#include <QQuickTextureFactory>
#include <QUrl>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <stop_token>

#include "TQFrames/VideoThumbnailer.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {

namespace {

constexpr double defaultSize = 1920;
constexpr double quality = 0.85;

class PosterResponse : public QQuickImageResponse {
 public:
  QQuickTextureFactory* textureFactory() const override { return QQuickTextureFactory::textureFactoryForImage(image_); }
  QString errorString() const override { return image_.isNull() ? QStringLiteral("no picture") : QString(); }
  void cancel() override { stop_.request_stop(); }

  /// On another thread; the response lives until it has said that it is finished.
  void make(const std::filesystem::path& clip, double size) {
    if (const auto jpeg = VideoThumbnailer::jpegThumbnail(clip, size, quality, stop_.get_token()))
      image_.loadFromData(reinterpret_cast<const uchar*>(jpeg->data()), static_cast<int>(jpeg->size()), "jpeg");
    Q_EMIT finished();
  }

 private:
  std::stop_source stop_;
  QImage image_;
};

}  // namespace

ClipPosters::ClipPosters() {
  threads_.setMaxThreadCount(1);
}

ClipPosters::~ClipPosters() {
  threads_.waitForDone();
}

QQuickImageResponse* ClipPosters::requestImageResponse(const QString& id, const QSize& requestedSize) {
  auto* response = new PosterResponse;  // Qt deletes it
  const int longest = std::max(requestedSize.width(), requestedSize.height());
  const std::filesystem::path clip = pathOf(QUrl::fromEncoded(QByteArray::fromPercentEncoding(id.toUtf8())));
  threads_.start([response, clip, longest] { response->make(clip, longest > 0 ? longest : defaultSize); });
  return response;
}

}  // namespace tq
