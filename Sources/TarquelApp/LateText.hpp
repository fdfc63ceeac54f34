#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "TQPlatform/Concurrency/SerialQueue.hpp"

namespace tq {

/// A text that is made when somebody reads it: a short one at once, a long one on another thread, which would freeze
/// the window otherwise. Lives on its owner's thread.
class LateText {
 public:
  /// @param elsewhere  ends before this object
  /// @param arrived    called on the owner's thread when a long text is there to be read
  LateText(QObject& owner, SerialQueue& elsewhere, std::function<void()> arrived)
      : owner_(owner), elsewhere_(elsewhere), arrived_(std::move(arrived)) {}

  /// From now on it is another text.
  void forget();

  /// Empty while it is being made.
  /// @param length  about how many bytes it will have
  /// @param make    is called at most once for a text, on any thread
  QString read(std::size_t length, const std::function<QString()>& make);

 private:
  QObject& owner_;
  SerialQueue& elsewhere_;
  const std::function<void()> arrived_;
  std::optional<QString> text_;
  bool isBeingMade_ = false;
  std::atomic<std::uint64_t> number_ = 0;
};

}  // namespace tq
