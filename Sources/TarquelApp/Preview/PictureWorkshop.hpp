#pragma once

#include <QImage>
#include <QSize>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include "TarquelApp/Preview/PictureReceiver.hpp"

namespace tq {

/// The largest size of that shape within a stage, in whole pixels; empty when either is.
QSize fitted(const QSize& natural, const QSizeF& stage);

/// Makes the pictures of a clip that plays ready for the screen, upright and at the size shown, on a thread of its own.
/// It takes the latest one whenever the last has been taken away: when it or the window is behind, pictures in between
/// are left out.
class PictureWorkshop : public PictureReceiver {
 public:
  struct Ready {
    QImage image;   ///< null: there is nothing to be shown any more
    QSize natural;  ///< its size, upright and in its own pixels
  };

  /// @param arrived  called on the workshop's thread when there is something to be taken
  explicit PictureWorkshop(std::function<void()> arrived);
  ~PictureWorkshop() override;

  void show(PlayedPicture picture) override;

  /// The pixels of the screen that pictures have to fit in. The present one is made anew.
  void setStage(const QSizeF& stage);

  /// How pictures have to be turned that do not say it themselves: 0, 90, 180 or 270 degrees clockwise.
  void setTurn(int clockwise);

  std::optional<Ready> take();

  /// Afterwards `arrived` is not called any more.
  void close();

 private:
  void work(const std::stop_token& stop);

  const std::function<void()> arrived_;
  std::mutex mutex_;
  std::condition_variable_any changed_;
  PlayedPicture latest_;
  bool isNew_ = false;  ///< it has to be made ready
  QSizeF stage_;
  int turn_ = 0;
  std::optional<Ready> ready_;
  std::jthread thread_;
};

}  // namespace tq
