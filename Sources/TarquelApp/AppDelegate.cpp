#include "TarquelApp/AppDelegate.hpp"

namespace tq {

void AppDelegate::openURLs(const QList<QUrl>& urls) {
  if (onOpenURLs) onOpenURLs(urls);
}

void AppDelegate::terminate() {
  const int count = activeJobCount ? activeJobCount() : 0;
  if (count < 1) {
    Q_EMIT terminated();
    return;
  }
  const QString message = count == 1 ? QStringLiteral("1 job is still processing.")
                                     : QStringLiteral("%1 jobs are still processing.").arg(count);
  Q_EMIT quitQuestion(message, QStringLiteral("Quitting now will stop it early; it will resume from the start next "
                                              "time you open tarquel."));
}

}  // namespace tq
