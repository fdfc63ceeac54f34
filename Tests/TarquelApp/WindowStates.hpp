#pragma once

#include <QQuickWindow>
#include <string>
#include <vector>

#include "TarquelApp/WindowHarness.hpp"

namespace tq::test {

/// Something that the window can show, brought about as its user would.
struct WindowState {
  const char* name;
  void (*bring)(WindowHarness& harness);  ///< launches a harness that was not launched before, and goes there
};

/// Every one of them. A state's name is a test's name.
const std::vector<WindowState>& windowStates();

/// The one of that name.
const WindowState& windowState(const std::string& name);

/// The window that has the keyboard, which may be one that belongs to the main window.
QQuickWindow& windowInFront(WindowHarness& harness);

/// The popup that nothing but it can be used beside, or null.
QQuickItem* modalPopup(QQuickWindow& window);

/// The menu that is open, or null.
QQuickItem* shownMenu(QQuickWindow& window);

/// That item and all below it that can be seen, parents before their children.
std::vector<QQuickItem*> visibleItems(QQuickItem& root);

/// A visible item by its name, or null.
QQuickItem* visibleItem(QQuickWindow& window, const char* objectName);

}  // namespace tq::test
