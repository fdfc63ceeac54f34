#pragma once

#include <QQuickItem>
#include <QQuickWindow>
#include <string>
#include <vector>

namespace tq::test {

// What keeps somebody from using a window who cannot see it, sees little of it, or has no mouse. One line for each
// fault; none for a window that is as it should be. Assistive technology must be active (`QAccessible::setActive`).

/// Controls that assistive technology does not know, or knows without a name, a role or a way to press them; pictures
/// without a name that are not decoration; texts that are read out twice.
std::vector<std::string> namingFaults(QQuickWindow& window);

/// Texts with less than 4.5 to 1 between them and what is drawn behind them, icons with less than 3 to 1 (WCAG 2.2,
/// success criteria 1.4.3 and 1.4.11). What is disabled, or lies behind a modal popup, does not count.
std::vector<std::string> contrastFaults(QQuickWindow& window);

/// The items at which Tab stops, from the first one in reading order, for the whole way round. `forward` false: the way
/// that Shift and Tab take, from the last one.
std::vector<QQuickItem*> tabStops(QQuickWindow& window, bool forward = true);

/// Stops that Tab does not come to, that do not follow each other as they are read, that Shift and Tab visit in another
/// order, that lie outside a modal popup, or that look alike with and without the keyboard.
std::vector<std::string> focusFaults(QQuickWindow& window);

/// The contrast of two colours, 1 to 21, as WCAG 2.2 defines it.
double contrastRatio(const QColor& one, const QColor& other);

}  // namespace tq::test
