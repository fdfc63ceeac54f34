#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TQCore/RecordJSON.hpp"
#include "TQPersistence/AppSupportPaths.hpp"

namespace tq {

/// Where the user left the interface. What the texts mean is up to the views that set them.
struct UIState {
  std::optional<std::string> selectedPrefTab;
  std::optional<std::string> contentMode;
  std::optional<std::string> lastLibraryFolderPath;

  bool operator==(const UIState&) const = default;
};
TQ_RECORD(UIState);

/// Reads and writes the state's file, which is kept apart from the settings so that losing it costs nothing. Takes no
/// lock: a save replaces the whole file in one step.
class UIStateStore {
 public:
  explicit UIStateStore(AppSupportPaths paths) : paths_(std::move(paths)) {}

  /// Nothing at all when the file is missing or cannot be used for any reason. Never fails.
  UIState load() const;

  /// Leaves the file's permissions as they are. Throws `SystemError` when it cannot be written; the old file is whole
  /// then.
  void save(const UIState& state) const;

 private:
  AppSupportPaths paths_;
};

}  // namespace tq
