#include "TQPersistence/WindowLayout.hpp"

#include "TQCore/RecordCodec.hpp"
#include "TQPersistence/StoreFile.hpp"

namespace tq {

template <>
constexpr auto recordTable<WindowLayout> = RecordTable{field("sidebarWidth", &WindowLayout::sidebarWidth)};
TQ_RECORD_CODEC(WindowLayout);

WindowLayout WindowLayoutStore::load() const {
  return readStoreFile<WindowLayout>(paths_.windowLayoutURL());
}

void WindowLayoutStore::save(const WindowLayout& layout) const {
  writeStoreFile(paths_.windowLayoutURL(), storeText(encode(layout)), StoreFileMode::asItIs);
}

}  // namespace tq
