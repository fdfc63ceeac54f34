#include "TarquelApp/Appearance.hpp"

#include <QColor>
#include <QGuiApplication>
#include <QPalette>
#include <QQuickStyle>
#include <array>

namespace tq {

namespace {

struct Shade {
  QPalette::ColorRole role;
  QRgb light;
  QRgb dark;
};

constexpr std::array<Shade, 17> shades{{
    {QPalette::Window, 0xfff7f6f4, 0xff1d1e21},
    {QPalette::WindowText, 0xff1f2328, 0xffe7e8ea},
    {QPalette::Base, 0xffffffff, 0xff26282c},
    {QPalette::AlternateBase, 0xfff2f0ed, 0xff2b2d32},
    {QPalette::Text, 0xff1f2328, 0xffe7e8ea},
    {QPalette::PlaceholderText, 0xff6b727c, 0xff979ca5},
    {QPalette::Button, 0xfffbfaf9, 0xff2b2d32},
    {QPalette::ButtonText, 0xff1f2328, 0xffe7e8ea},
    {QPalette::BrightText, 0xffffffff, 0xffffffff},
    {QPalette::Highlight, 0xff2563c9, 0xff3b73d8},
    {QPalette::HighlightedText, 0xffffffff, 0xffffffff},
    {QPalette::ToolTipBase, 0xff2b2d32, 0xff3a3d44},
    {QPalette::ToolTipText, 0xfff4f4f5, 0xfff4f4f5},
    {QPalette::Light, 0xffffffff, 0xff36393f},
    {QPalette::Mid, 0xffcfccc6, 0xff3f4249},
    {QPalette::Dark, 0xffa8a49c, 0xff121316},
    {QPalette::Shadow, 0xff75716a, 0xff000000},
}};

QPalette paletteOf(bool dark) {
  QPalette palette;
  for (const Shade& shade : shades)
    palette.setColor(shade.role, QColor(dark ? shade.dark : shade.light));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, QColor(dark ? 0xff74787f : 0xff9a9da3));
  return palette;
}

}  // namespace

void prepareForApplication() {
  // The other back end of the multimedia module ends the program where its plugins are missing.
  if (!qEnvironmentVariableIsSet("QT_MEDIA_BACKEND")) qputenv("QT_MEDIA_BACKEND", "ffmpeg");
  QQuickStyle::setStyle(QStringLiteral("Fusion"));
}

void setAppearance(bool dark) {
  QGuiApplication::setPalette(paletteOf(dark));
}

bool desktopLooksDark() {
  return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5F;
}

}  // namespace tq
