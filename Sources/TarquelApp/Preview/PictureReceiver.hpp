#pragma once

#include <QObject>
#include <memory>

#include "TQPlatform/Media/VideoPicture.hpp"

namespace tq {

/// A picture of a clip that plays.
struct PlayedPicture {
  VideoPicture picture;
  int clockwise = 0;                  ///< how far it has to be turned to be upright: 0, 90, 180 or 270 degrees
  bool isMirrored = false;            ///< left and right change places once it is upright
  std::shared_ptr<const void> owner;  ///< of its planes, which stay for as long as this is held; null: no picture
};

/// What takes the pictures of a player. These two are all that stands between the program, which shows them, and the
/// plugin that they come out of: the program starts without the multimedia module.
class PictureReceiver {
 public:
  virtual ~PictureReceiver() = default;

  /// From now on this is the picture. Called on any thread, also when nothing shows it any more; returns at once.
  virtual void show(PlayedPicture picture) = 0;
};

/// An item that shows what plays.
class PictureScreen {
 public:
  virtual std::shared_ptr<PictureReceiver> receiver() const = 0;

 protected:
  ~PictureScreen() = default;
};

}  // namespace tq

Q_DECLARE_INTERFACE(tq::PictureScreen, "org.tarquel.PictureScreen")
