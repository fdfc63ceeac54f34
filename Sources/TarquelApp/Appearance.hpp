#pragma once

namespace tq {

/// Before the QGuiApplication is made: what it takes from its environment.
void prepareForApplication();

/// Before the first window: where the desktop has no OpenGL, windows are drawn without it. Qt would end the program.
void chooseRenderer();

/// Gives the application its style and its colours, light or dark. May be called again when the desktop changes.
void setAppearance(bool dark);

/// What the palette that the desktop gave the application says.
bool desktopLooksDark();

}  // namespace tq
