#include <QDrag>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QRasterWindow>
#include <cstdio>
#include <cstdlib>

namespace {

void say(const QByteArray& what) {
  std::printf("%s\n", what.constData());
  std::fflush(stdout);
}

/// Takes files that are dropped on it, and lets go of its own where it is drawn away from.
class Partner : public QRasterWindow {
 public:
  explicit Partner(const QByteArray& uriList) : uriList_(uriList) {}

 protected:
  bool event(QEvent* event) override {
    switch (event->type()) {
      case QEvent::DragEnter:
      case QEvent::DragMove: {
        auto* move = static_cast<QDragMoveEvent*>(event);
        move->setAccepted(!move->source() && move->mimeData()->hasFormat(uriListFormat()));
        return true;
      }
      case QEvent::Drop: {
        auto* drop = static_cast<QDropEvent*>(event);
        drop->acceptProposedAction();
        say("dropped " + drop->mimeData()->data(uriListFormat()).trimmed().replace("\r\n", " "));
        return true;
      }
      default: return QRasterWindow::event(event);
    }
  }

  void mouseMoveEvent(QMouseEvent* move) override {
    if (uriList_.isEmpty() || !(move->buttons() & Qt::LeftButton)) return;
    auto* drag = new QDrag(this);  // which takes itself away
    auto* content = new QMimeData;
    content->setData(uriListFormat(), uriList_);
    drag->setMimeData(content);
    connect(drag, &QDrag::actionChanged, this,
            [](Qt::DropAction action) { say(action == Qt::IgnoreAction ? "refused" : "welcome"); });
    say("drags");
    const Qt::DropAction done = drag->exec(Qt::CopyAction | Qt::MoveAction);
    say(done == Qt::CopyAction ? "copied" : done == Qt::IgnoreAction ? "kept" : "moved");
  }

  void exposeEvent(QExposeEvent* event) override {
    QRasterWindow::exposeEvent(event);
    if (isExposed() && !isShown_) say("shown");
    isShown_ = isShown_ || isExposed();
  }

  void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(QRect({}, size()), Qt::darkCyan); }

 private:
  static QString uriListFormat() { return QStringLiteral("text/uri-list"); }

  const QByteArray uriList_;
  bool isShown_ = false;
};

}  // namespace

/// Another program of the desktop, as far as files are dragged to it and from it:
///   DragPartner X Y WIDTH HEIGHT [URI...]
/// Its window stands there. It says "shown"; then "dropped URI..." for what it got. Where it was given URIs, they can
/// be dragged out of it: it says "drags", "welcome" or "refused" when what is under the mouse changes its mind, and in
/// the end "copied", "moved" or "kept".
int main(int argumentCount, char** arguments) {
  const QGuiApplication application(argumentCount, arguments);
  const QStringList given = QGuiApplication::arguments();
  if (given.size() < 5) return EXIT_FAILURE;
  QByteArray uriList;
  for (const QString& uri : given.mid(5))
    uriList += uri.toLatin1() + "\r\n";
  Partner window(uriList);
  window.setFlag(Qt::FramelessWindowHint);
  window.setGeometry(given[1].toInt(), given[2].toInt(), given[3].toInt(), given[4].toInt());
  window.show();
  return QGuiApplication::exec();
}
