#include <QClipboard>
#include <QGuiApplication>
#include <QString>
#include <gtest/gtest.h>

#include "TarquelApp/LongText.hpp"

namespace tq {
namespace {

/// Takes all pieces in, one after the other, as a view does.
QString takeAll(LongText& text) {
  QString shown;
  while (!text.isTakenIn())
    shown += text.takePiece(static_cast<int>(shown.size()));
  return shown;
}

QString copied() {
  return QGuiApplication::clipboard()->text();
}

QString words(int count) {
  QString text;
  for (int word = 0; word < count; ++word)
    text += QStringLiteral("word%1 ").arg(word);
  return text;
}

TEST(LongText, AShortTextIsOnePiece) {
  LongText text;
  text.setText(QStringLiteral("one\ntwo"));
  EXPECT_EQ(text.takePiece(0), QStringLiteral("one\ntwo"));
  EXPECT_TRUE(text.isTakenIn());
  EXPECT_EQ(text.takePiece(7), QString());
}

TEST(LongText, LinesAreNeverCut) {
  QString lines;
  for (int line = 0; line < 10'000; ++line)
    lines += QStringLiteral("line %1\n").arg(line);
  LongText text;
  text.setText(lines);
  EXPECT_TRUE(text.takePiece(0).endsWith(u'\n'));
  text.setText(QString());
  text.setText(lines);
  EXPECT_EQ(takeAll(text), lines);
}

TEST(LongText, ALineOfManyPiecesIsShownInLinesThatEndBetweenWords) {
  const QString line = words(20'000);
  LongText text;
  text.setText(line);
  const QString shown = takeAll(text);
  EXPECT_GT(shown.count(u'\n'), 5);
  EXPECT_EQ(shown.count(QStringLiteral(" \n")), shown.count(u'\n'));
  EXPECT_EQ(QString(shown).remove(u'\n'), line);
}

TEST(LongText, WhatIsCopiedHasNoLineBreakOfTheViews) {
  const QString line = words(20'000);
  LongText text;
  text.setText(line);
  const QString shown = takeAll(text);
  for (const auto& [start, length] : {std::pair(0, 13'000), std::pair(5, 40'000), std::pair(20'000, 10)}) {
    const QString part = shown.mid(start, length);
    text.copyPart(part, start);
    EXPECT_EQ(copied(), QString(part).remove(u'\n'));
  }
}

TEST(LongText, LineBreaksOfTheTextAreCopied) {
  const QString lines = words(3'000) + u'\n' + words(3'000) + u'\n' + words(3'000);
  LongText text;
  text.setText(lines);
  const QString shown = takeAll(text);
  ASSERT_NE(shown, lines);
  text.copyPart(shown, 0);
  EXPECT_EQ(copied(), lines);
}

TEST(LongText, ALineWithoutAPlaceToBreakIsCutBetweenCharacters) {
  QString line = QStringLiteral("x");
  for (int count = 0; count < 10'000; ++count)
    line += QStringLiteral("\U0001F3AC\u0301");
  LongText text;
  text.setText(line);
  const QString shown = takeAll(text);
  EXPECT_TRUE(shown.contains(u'\n'));
  EXPECT_FALSE(shown.contains(QStringLiteral("\n\u0301")));
  EXPECT_EQ(QString(shown).remove(u'\n'), line);
}

TEST(LongText, AllIsCopiedWhateverIsShown) {
  const QString line = words(20'000);
  LongText text;
  text.setText(line);
  text.takePiece(0);
  text.copyAll();
  EXPECT_EQ(copied(), line);
}

}  // namespace
}  // namespace tq
