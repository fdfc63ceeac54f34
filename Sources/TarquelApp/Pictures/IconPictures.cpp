#include "TarquelApp/Pictures/IconPictures.hpp"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QStringList>
#include <QSvgRenderer>

namespace tq {

QPixmap IconPictures::requestPixmap(const QString& id, QSize* size, const QSize& requestedSize) {
  const QStringList parts = id.split(QLatin1Char('/'));
  QFile file(QStringLiteral(":/qt/qml/Tarquel/Icons/%1.svg").arg(parts.value(0)));
  if (parts.size() != 2 || !file.open(QIODevice::ReadOnly)) return {};
  QSvgRenderer drawing(file.readAll().replace("currentColor", "#" + parts[1].toLatin1()));
  QPixmap picture(requestedSize.isValid() ? requestedSize : drawing.defaultSize());
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  drawing.render(&painter);
  if (size) *size = picture.size();
  return picture;
}

}  // namespace tq
