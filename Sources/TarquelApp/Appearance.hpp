#pragma once

namespace tq {

/// Before the QGuiApplication is made: what it takes from its environment.
void prepareForApplication();

/// Gives the application its style and its colours, light or dark. May be called again when the desktop changes.
void setAppearance(bool dark);

/// What the palette that the desktop gave the application says.
bool desktopLooksDark();

}  // namespace tq
