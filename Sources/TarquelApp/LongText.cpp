#include "TarquelApp/LongText.hpp"

#include <QClipboard>
#include <QGuiApplication>
#include <QStringView>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <utility>

namespace tq {

namespace {

/// Laid out within a few milliseconds.
constexpr qsizetype pieceLength = 12'000;

/// How far before the end of a piece a place is looked for where a line may break.
constexpr qsizetype breakWindow = 200;

}  // namespace

void LongText::setText(const QString& text) {
  if (text == text_) return;
  text_ = text;
  end_ = 0;
  breaks_.clear();
  Q_EMIT textChanged();
  Q_EMIT takenInChanged();
}

QString LongText::takePiece(int shownLength) {
  const bool continuesLine = end_ > 0 && text_[end_ - 1] != u'\n';
  const qsizetype begin = std::exchange(end_, endOfPiece());
  QString piece = text_.mid(begin, end_ - begin);
  if (continuesLine && !piece.isEmpty()) {
    breaks_.push_back(shownLength);
    piece.prepend(u'\n');
  }
  if (isTakenIn()) Q_EMIT takenInChanged();
  return piece;
}

void LongText::copyPart(const QString& part, int start) const {
  QString text;
  qsizetype from = 0;
  for (auto next = std::ranges::lower_bound(breaks_, start); next != breaks_.end() && *next < start + part.size();
       ++next) {
    text += QStringView(part).sliced(from, *next - start - from);
    from = *next - start + 1;
  }
  QGuiApplication::clipboard()->setText(text += QStringView(part).sliced(from));
}

void LongText::copyAll() const {
  QGuiApplication::clipboard()->setText(text_);
}

/// At the end of a line, else where a line may break; never within a character.
qsizetype LongText::endOfPiece() const {
  const qsizetype most = end_ + pieceLength;
  if (most >= text_.size()) return text_.size();
  const qsizetype line = QStringView(text_).sliced(end_, pieceLength).lastIndexOf(u'\n');
  if (line >= pieceLength / 2) return end_ + line + 1;
  const qsizetype begin = most - breakWindow;
  const QString window = text_.mid(begin, 2 * breakWindow);
  for (const auto kind : {QTextBoundaryFinder::Line, QTextBoundaryFinder::Grapheme}) {
    QTextBoundaryFinder finder(kind, window);
    finder.setPosition(breakWindow);
    const qsizetype place = finder.isAtBoundary() ? breakWindow : finder.toPreviousBoundary();
    if (place > 0) return begin + place;
  }
  return most;
}

}  // namespace tq
