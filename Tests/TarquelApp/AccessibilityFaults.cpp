#include "TarquelApp/AccessibilityFaults.hpp"

#include <QAccessible>
#include <QCoreApplication>
#include <QHash>
#include <QImage>
#include <QTest>
#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "TarquelApp/WindowStates.hpp"

namespace tq::test {

namespace {

using Faults = std::vector<std::string>;

constexpr double contrastOfText = 4.5;
constexpr double contrastOfGraphics = 3.0;

/// As many pixels of a ring as nobody overlooks.
constexpr int fewestRingPixels = 40;

/// A way round with more stops than that never ends.
constexpr int mostStops = 300;

bool isAny(QAccessible::Role role, std::initializer_list<QAccessible::Role> roles) {
  return std::ranges::find(roles, role) != roles.end();
}

bool canBeOperated(QAccessible::Role role) {
  return isAny(role, {QAccessible::Button, QAccessible::RadioButton, QAccessible::CheckBox, QAccessible::MenuItem,
                      QAccessible::EditableText, QAccessible::ListItem, QAccessible::List, QAccessible::Slider,
                      QAccessible::SpinBox, QAccessible::ComboBox, QAccessible::PageTab, QAccessible::ButtonMenu,
                      QAccessible::Link});
}

bool canBePressed(QAccessible::Role role) {
  return isAny(role, {QAccessible::Button, QAccessible::RadioButton, QAccessible::CheckBox, QAccessible::MenuItem,
                      QAccessible::ListItem, QAccessible::PageTab, QAccessible::ButtonMenu, QAccessible::Link});
}

std::string describe(const QObject* object) {
  const QString text = object->property("text").toString().left(30);
  return std::string(object->metaObject()->className()) + " \"" + object->objectName().toStdString() + "\" (" +
         text.toStdString() + ")";
}

/// The accessible tree of a window, with what is wrong about its texts.
class Reading {
 public:
  explicit Reading(QQuickWindow& window) { read(*QAccessible::queryAccessibleInterface(&window), {}); }

  /// Where this object stands in the tree; null for what is not in it.
  QAccessibleInterface* entryOf(const QObject* object) const {
    return objects_.contains(object) ? QAccessible::queryAccessibleInterface(const_cast<QObject*>(object)) : nullptr;
  }

  Faults faults;

 private:
  void read(QAccessibleInterface& entry, QStringList said) {
    if (entry.state().invisible) return;
    objects_.insert(entry.object());
    const QString name = entry.text(QAccessible::Name).trimmed();
    const QAccessible::Role role = entry.role();
    if (name.isEmpty() && (canBeOperated(role) || role == QAccessible::Graphic))
      faults.push_back("no name: " + describe(entry.object()));
    if (canBePressed(role) && !actionsOf(entry).contains(QAccessibleActionInterface::pressAction()))
      faults.push_back("cannot be pressed: " + describe(entry.object()));
    if (isAny(role, {QAccessible::StaticText, QAccessible::Heading}) && !name.isEmpty() &&
        std::ranges::any_of(said, [&](const QString& before) { return before.contains(name); }))
      faults.push_back("is read out twice: " + describe(entry.object()));
    if (canBeOperated(role) || isAny(role, {QAccessible::StaticText, QAccessible::AlertMessage})) said.append(name);
    for (int index = 0; index < entry.childCount(); ++index)
      if (QAccessibleInterface* child = entry.child(index)) read(*child, said);
  }

  static QStringList actionsOf(QAccessibleInterface& entry) {
    QAccessibleActionInterface* actions = entry.actionInterface();
    return actions ? actions->actionNames() : QStringList();
  }

  std::set<const QObject*> objects_;
};

bool isControl(const QQuickItem& item) {
  if (item.activeFocusOnTab()) return true;
  for (const char* kind :
       {"QQuickAbstractButton", "QQuickTextEdit", "QQuickTextInput", "QQuickSlider", "QQuickComboBox"})
    if (item.inherits(kind)) return true;
  return false;
}

double channel(float value) {
  return value <= 0.04045F ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
  return 0.2126 * channel(colour.redF()) + 0.7152 * channel(colour.greenF()) + 0.0722 * channel(colour.blueF());
}

QColor over(QColor colour, const QColor& background, double opacity) {
  const double share = colour.alphaF() * opacity;
  const auto mix = [share](float front, float back) {
    return std::clamp(static_cast<float>(front * share + back * (1 - share)), 0.0F, 1.0F);
  };
  return QColor::fromRgbF(mix(colour.redF(), background.redF()), mix(colour.greenF(), background.greenF()),
                          mix(colour.blueF(), background.blueF()));
}

double opacityOf(const QQuickItem* item) {
  double opacity = 1;
  for (; item; item = item->parentItem())
    opacity *= item->opacity();
  return opacity;
}

/// The part of the window where an item can be seen.
QRect placeOf(const QQuickItem& item) {
  QRectF place = item.mapRectToScene(item.boundingRect());
  for (const QQuickItem* parent = item.parentItem(); parent; parent = parent->parentItem())
    if (parent->clip()) place = place.intersected(parent->mapRectToScene(parent->boundingRect()));
  return place.toAlignedRect().intersected(QRect(QPoint(0, 0), item.window()->size()));
}

/// The most frequent colour of a part of a picture, without what lies within `hole`.
QColor backgroundOf(const QImage& picture, const QRect& part, const QRect& hole = {}) {
  QHash<QRgb, int> counts;
  const QRect bounds = part.intersected(picture.rect());
  for (int y = bounds.top(); y <= bounds.bottom(); ++y)
    for (int x = bounds.left(); x <= bounds.right(); ++x)
      if (!hole.contains(x, y)) ++counts[picture.pixel(x, y)];
  QRgb most = 0;
  int count = 0;
  for (auto entry = counts.cbegin(); entry != counts.cend(); ++entry)
    if (entry.value() > count) {
      most = entry.key();
      count = entry.value();
    }
  return QColor(most);
}

bool isText(const QQuickItem& item) {
  return (item.inherits("QQuickText") || item.inherits("QQuickTextEdit") || item.inherits("QQuickTextInput")) &&
         !item.property("text").toString().isEmpty();
}

bool isIcon(const QQuickItem& item) {
  return item.property("size").isValid() && item.property("color").isValid() &&
         !item.property("name").toString().isEmpty();
}

/// A title of the menu bar, which F10 and mnemonics reach, or the part of it that assistive technology is told of.
bool isMenuTitle(const QQuickItem& item) {
  return item.inherits("QQuickMenuBarItem") || (item.parentItem() && item.parentItem()->inherits("QQuickMenuBarItem"));
}

/// What is told of a control: the control itself, or a part in its stead that is as large.
const QAccessibleInterface* toldOf(const QQuickItem& control, const Reading& reading) {
  if (const QAccessibleInterface* own = reading.entryOf(&control)) return own;
  for (const QQuickItem* part : control.childItems())
    if (const QAccessibleInterface* entry = reading.entryOf(part); entry && part->size() == control.size())
      return entry;
  return nullptr;
}

/// What can be used at the moment.
QQuickItem& usablePart(QQuickWindow& window) {
  QQuickItem* popup = modalPopup(window);
  return popup ? *popup : *window.contentItem();
}

QRectF sceneRectOf(const QQuickItem& item) {
  return item.mapRectToScene(QRectF(0, 0, item.width(), item.height()));
}

/// A reader of the page who has come to `one` has `other` still before them: it is below, or to the right.
bool followsInReading(const QQuickItem& one, const QQuickItem& other) {
  const QRectF first = sceneRectOf(one);
  const QRectF next = sceneRectOf(other);
  const bool isAbove = next.bottom() <= first.top() + 1;
  const bool isBelow = next.top() >= first.bottom() - 1;
  if (isAbove) return next.left() >= first.right();  // the top of the next column
  return isBelow || next.left() >= first.left();
}

/// A stop, or a part of one, or a choice beside the one where Tab stops.
bool isReachable(const QQuickItem& item, const std::vector<QQuickItem*>& stops) {
  return std::ranges::any_of(stops, [&](const QQuickItem* stop) {
    return stop == &item || stop->isAncestorOf(&item) ||
           (stop->parentItem() == item.parentItem() && stop->metaObject() == item.metaObject());
  });
}

int differingPixels(const QImage& one, const QImage& other, const QRect& part) {
  int count = 0;
  const QRect bounds = part.intersected(one.rect());
  for (int y = bounds.top(); y <= bounds.bottom(); ++y)
    for (int x = bounds.left(); x <= bounds.right(); ++x)
      if (contrastRatio(QColor(one.pixel(x, y)), QColor(other.pixel(x, y))) > 1.1) ++count;
  return count;
}

/// Stops that look the same with the keyboard as without it.
Faults ringFaults(QQuickWindow& window, const std::vector<QQuickItem*>& stops) {
  Faults faults;
  if (stops.size() < 2) return faults;
  std::vector<QImage> pictures;
  for (QQuickItem* stop : stops) {
    stop->forceActiveFocus(Qt::TabFocusReason);
    QCoreApplication::processEvents();
    pictures.push_back(window.grabWindow());
  }
  for (std::size_t index = 0; index < stops.size(); ++index) {
    const std::size_t other = index == 0 ? stops.size() - 1 : index - 1;
    const QRect place = placeOf(*stops[index]).adjusted(-4, -4, 4, 4);
    if (differingPixels(pictures[index], pictures[other], place) < fewestRingPixels)
      faults.push_back("does not show that it has the keyboard: " + describe(stops[index]));
  }
  return faults;
}

}  // namespace

double contrastRatio(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

std::vector<std::string> namingFaults(QQuickWindow& window) {
  Reading reading(window);
  for (QQuickItem* item : visibleItems(*window.contentItem())) {
    if (isControl(*item)) {
      const QAccessibleInterface* entry = toldOf(*item, reading);
      if (!entry)
        reading.faults.push_back("is not told to assistive technology: " + describe(item));
      else if (isAny(entry->role(), {QAccessible::NoRole, QAccessible::Client}))
        reading.faults.push_back("no role: " + describe(item));
    }
    if (item->inherits("QQuickMouseArea") && item->isEnabled()) {
      const QQuickItem* owner = item;
      while (owner && !reading.entryOf(owner))
        owner = owner->parentItem();
      if (!owner || !canBeOperated(reading.entryOf(owner)->role()))
        reading.faults.push_back("takes clicks, and is no control: " + describe(item->parentItem()));
    }
  }
  return reading.faults;
}

std::vector<std::string> contrastFaults(QQuickWindow& window) {
  Faults faults;
  const QImage picture = window.grabWindow();
  for (const QQuickItem* item : visibleItems(usablePart(window))) {
    const bool isGraphic = isIcon(*item);
    const QRect place = placeOf(*item);
    if (!item->isEnabled() || place.isEmpty() || !(isGraphic || isText(*item))) continue;
    const QColor background =
        isGraphic ? backgroundOf(picture, place.adjusted(-2, -2, 2, 2), place) : backgroundOf(picture, place);
    const QColor colour = over(item->property("color").value<QColor>(), background, opacityOf(item));
    const double ratio = contrastRatio(colour, background);
    if (ratio < (isGraphic ? contrastOfGraphics : contrastOfText))
      faults.push_back(std::to_string(ratio) + " to 1: " + colour.name().toStdString() + " on " +
                       background.name().toStdString() + ", " + describe(item));
  }
  return faults;
}

std::vector<QQuickItem*> tabStops(QQuickWindow& window, bool forward) {
  std::vector<QQuickItem*> stops;
  const auto step = [&] {
    QTest::keyClick(&window, forward ? Qt::Key_Tab : Qt::Key_Backtab, forward ? Qt::NoModifier : Qt::ShiftModifier);
    return window.activeFocusItem();
  };
  for (QQuickItem* stop = step(); stop && static_cast<int>(stops.size()) < mostStops; stop = step()) {
    const auto before = std::ranges::find(stops, stop);
    if (before != stops.end()) {
      stops.erase(stops.begin(), before);  // the way to the first one of the round
      break;
    }
    stops.push_back(stop);
  }
  // A round begins where it goes back to the top.
  if (!forward) std::ranges::reverse(stops);
  for (std::size_t index = 0; index < stops.size(); ++index)
    if (!followsInReading(*stops[(index + stops.size() - 1) % stops.size()], *stops[index])) {
      std::rotate(stops.begin(), stops.begin() + static_cast<std::ptrdiff_t>(index), stops.end());
      break;
    }
  if (!forward) std::ranges::reverse(stops);
  return stops;
}

std::vector<std::string> focusFaults(QQuickWindow& window) {
  Faults faults;
  QQuickItem& part = usablePart(window);
  const std::vector<QQuickItem*> stops = tabStops(window);
  const std::vector<QQuickItem*> visible = visibleItems(part);
  const Reading reading(window);
  for (QQuickItem* item : visible) {
    const QAccessibleInterface* entry = reading.entryOf(item);
    const bool isOperated = isControl(*item) || (entry && canBePressed(entry->role()));
    if (isOperated && item->isEnabled() && !isMenuTitle(*item) && !isReachable(*item, stops))
      faults.push_back("Tab does not come to it: " + describe(item));
  }
  for (const QQuickItem* stop : stops)
    if (std::ranges::find(visible, stop) == visible.end())
      faults.push_back("Tab leaves the popup for " + describe(stop));
  for (std::size_t index = 1; index < stops.size(); ++index)
    if (!followsInReading(*stops[index - 1], *stops[index]))
      faults.push_back("comes after " + describe(stops[index - 1]) + ": " + describe(stops[index]));
  std::vector<QQuickItem*> back = tabStops(window, false);
  std::ranges::reverse(back);
  if (back != stops) faults.push_back("the way back is another one, with " + std::to_string(back.size()) + " stops");
  for (std::string& fault : ringFaults(window, stops))
    faults.push_back(std::move(fault));
  return faults;
}

}  // namespace tq::test
