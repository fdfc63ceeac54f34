#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <vector>

namespace tq {

/// A text of any length that a view takes in piece by piece, from its beginning. The view's engine never
/// holds the whole: to hand it a text of megabytes costs milliseconds each time. Positions count UTF-16 units.
///
/// A line longer than a piece is shown in several lines, since laying out one line costs its whole length again with
/// every piece that is added to it. What is copied is the text itself.
class LongText : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
  Q_PROPERTY(bool isTakenIn READ isTakenIn NOTIFY takenInChanged)

 public:
  using QObject::QObject;

  const QString& text() const { return text_; }

  /// Begins anew: nothing is taken in.
  void setText(const QString& text);

  /// All of it has been given out.
  bool isTakenIn() const { return end_ == text_.size(); }

  /// The next piece as it is to be added to what is shown, which has that length now.
  Q_INVOKABLE QString takePiece(int shownLength);

  /// Puts a part of what is shown on the clipboard as it is in the text.
  /// @param start  of the part, within what is shown
  Q_INVOKABLE void copyPart(const QString& part, int start) const;

  /// Puts the whole text on the clipboard, whatever has been taken in of it.
  Q_INVOKABLE void copyAll() const;

 Q_SIGNALS:
  void textChanged();
  void takenInChanged();

 private:
  qsizetype endOfPiece() const;

  QString text_;
  qsizetype end_ = 0;              ///< of what has been taken in
  std::vector<qsizetype> breaks_;  ///< where what is shown has a line break that is not in the text, in order
};

}  // namespace tq
