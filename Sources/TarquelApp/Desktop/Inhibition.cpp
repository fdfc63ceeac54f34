#include "TarquelApp/Desktop/Inhibition.hpp"

#include <QDBusPendingCallWatcher>
#include <limits>
#include <utility>

#include "TarquelApp/Desktop/BusCall.hpp"

namespace tq {

namespace {

/// libdbus takes this for no limit: an answer that is not waited for any more could not be given back.
constexpr int noLimit = std::numeric_limits<int>::max();

}  // namespace

void Inhibition::want(std::function<void()> refused) {
  refused_ = std::move(refused);
  if (held_ || isAsking_) return;
  isAsking_ = true;
  auto* answer = new QDBusPendingCallWatcher(askBus(bus_, request_, noLimit));
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer, [answer, self = shared_from_this()] {
    answer->deleteLater();
    self->isAsking_ = false;
    self->take(answer->reply());
  });
}

void Inhibition::drop() {
  refused_ = nullptr;
  held_.reset();
}

void Inhibition::lose() {
  isLost_ = isAsking_;
  if (!held_) return;
  held_.reset();
  refuse();
}

void Inhibition::take(const QDBusMessage& answer) {
  std::shared_ptr<void> inhibitor;
  if (answer.type() == QDBusMessage::ReplyMessage) inhibitor = take_(answer);
  if (std::exchange(isLost_, false)) inhibitor.reset();
  if (!isWanted()) return;
  held_ = std::move(inhibitor);
  if (!held_) refuse();
}

void Inhibition::refuse() {
  const auto refused = std::exchange(refused_, nullptr);
  if (refused) refused();
}

}  // namespace tq
