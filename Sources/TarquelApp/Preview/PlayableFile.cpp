#include "TarquelApp/Preview/PlayableFile.hpp"

#include <QFileInfo>

#include "TarquelApp/Text.hpp"

namespace tq {

void PlayableFile::setFile(const QUrl& file) {
  if (file == file_) return;
  file_ = file;
  address_ = QUrl();
  open_.close();
  const std::filesystem::path path = pathOf(file);
  const QString name = QFile::decodeName(path.c_str());
  if (!file.toEncoded().contains('%')) {
    address_ = file;
  } else if (QFileInfo(name).isFile()) {  // a pipe would hold the window up
    open_.setFileName(name);
    if (open_.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
      address_ = QUrl(QStringLiteral("file:///proc/self/fd/%1").arg(open_.handle()));
  }
  Q_EMIT fileChanged();
}

}  // namespace tq
