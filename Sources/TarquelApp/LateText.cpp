#include "TarquelApp/LateText.hpp"

#include <QMetaObject>
#include <utility>

namespace tq {

namespace {

/// What is made of so many bytes takes a few milliseconds.
constexpr std::size_t longText = 200'000;

}  // namespace

void LateText::forget() {
  text_.reset();
  isBeingMade_ = false;
  ++number_;
}

QString LateText::read(std::size_t length, const std::function<QString()>& make) {
  if (!text_ && length < longText) text_ = make();
  if (text_) return *text_;
  if (std::exchange(isBeingMade_, true)) return {};
  elsewhere_.post([this, make, number = number_.load()] {
    if (number != number_) return;
    QMetaObject::invokeMethod(
        &owner_,
        [this, number, text = make()] {
          if (number != number_) return;
          text_ = text;
          isBeingMade_ = false;
          arrived_();
        },
        Qt::QueuedConnection);
  });
  return {};
}

}  // namespace tq
