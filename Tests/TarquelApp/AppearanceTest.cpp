#include <QColor>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Appearance.hpp"

namespace tq {
namespace {

/// https://www.w3.org/TR/WCAG21/#dfn-relative-luminance
double luminance(const QColor& colour) {
  const auto part = [](double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) + 0.0722 * part(colour.blueF());
}

double contrast(QPalette::ColorRole one, QPalette::ColorRole other) {
  const QPalette palette = QGuiApplication::palette();
  const double left = luminance(palette.color(one)), right = luminance(palette.color(other));
  return (std::max(left, right) + 0.05) / (std::min(left, right) + 0.05);
}

class AppearanceTest : public testing::Test {
 protected:
  ~AppearanceTest() override { setAppearance(false); }
};

TEST_F(AppearanceTest, IsLightOrDarkAsItIsTold) {
  setAppearance(true);
  EXPECT_TRUE(desktopLooksDark());
  EXPECT_LT(QGuiApplication::palette().color(QPalette::Base).lightness(), 100);
  EXPECT_GT(QGuiApplication::palette().color(QPalette::Text).lightness(), 200);
  setAppearance(false);
  EXPECT_FALSE(desktopLooksDark());
  EXPECT_GT(QGuiApplication::palette().color(QPalette::Base).lightness(), 200);
  EXPECT_LT(QGuiApplication::palette().color(QPalette::Text).lightness(), 100);
}

TEST_F(AppearanceTest, TextCanBeReadOnWhatItStandsOn) {
  for (const bool dark : {false, true}) {
    setAppearance(dark);
    for (const auto& [text, ground] : {std::pair(QPalette::WindowText, QPalette::Window),
                                       {QPalette::Text, QPalette::Base},
                                       {QPalette::Text, QPalette::AlternateBase},
                                       {QPalette::ButtonText, QPalette::Button},
                                       {QPalette::ToolTipText, QPalette::ToolTipBase},
                                       {QPalette::PlaceholderText, QPalette::Base}})
      EXPECT_GE(contrast(text, ground), 4.5) << (dark ? "dark " : "light ") << text << " on " << ground;
    EXPECT_GE(contrast(QPalette::HighlightedText, QPalette::Highlight), 4) << (dark ? "dark" : "light");
  }
}

TEST_F(AppearanceTest, WhatIsDisabledLooksIt) {
  for (const bool dark : {false, true}) {
    setAppearance(dark);
    const QPalette palette = QGuiApplication::palette();
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
      EXPECT_NE(palette.color(QPalette::Disabled, role), palette.color(QPalette::Active, role));
  }
}

}  // namespace
}  // namespace tq
