#include "TQPersistence/UIState.hpp"

#include "TQCore/RecordCodec.hpp"
#include "TQPersistence/StoreFile.hpp"

namespace tq {

template <>
constexpr auto recordTable<UIState> = RecordTable{
    field("selectedPrefTab", &UIState::selectedPrefTab),
    field("contentMode", &UIState::contentMode),
    field("lastLibraryFolderPath", &UIState::lastLibraryFolderPath),
};
TQ_RECORD_CODEC(UIState);

UIState UIStateStore::load() const {
  return readStoreFile<UIState>(paths_.uiStateURL());
}

void UIStateStore::save(const UIState& state) const {
  writeStoreFile(paths_.uiStateURL(), storeText(encode(state)), StoreFileMode::asItIs);
}

}  // namespace tq
