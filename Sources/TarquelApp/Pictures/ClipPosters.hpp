#pragma once

#include <QQuickAsyncImageProvider>
#include <QThreadPool>

namespace tq {

/// A picture from the middle of a clip: "image://posters/" and the clip's file URL, percent-encoded. Made on threads of
/// its own, and given up as soon as nobody waits for it.
class ClipPosters : public QQuickAsyncImageProvider {
 public:
  ClipPosters();
  ~ClipPosters() override;

  /// `requestedSize` limits the longer side; none: 1920 pixels. A clip without a picture gives an error.
  QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

 private:
  QThreadPool threads_;
};

}  // namespace tq
