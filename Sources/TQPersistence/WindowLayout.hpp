#pragma once

#include <cstdint>
#include <optional>

#include "TQCore/RecordJSON.hpp"
#include "TQPersistence/AppSupportPaths.hpp"

namespace tq {

/// How the user has divided the window.
struct WindowLayout {
  std::optional<std::int64_t> sidebarWidth;  ///< of the queue, in pixels independent of the screen's scale

  bool operator==(const WindowLayout&) const = default;
};
TQ_RECORD(WindowLayout);

/// Reads and writes the layout's file. Takes no lock: a save replaces the whole file in one step.
class WindowLayoutStore {
 public:
  explicit WindowLayoutStore(AppSupportPaths paths) : paths_(std::move(paths)) {}

  /// Nothing at all when the file is missing or cannot be used for any reason. Never fails.
  WindowLayout load() const;

  /// Throws `SystemError` when it cannot be written; the old file is whole then.
  void save(const WindowLayout& layout) const;

 private:
  AppSupportPaths paths_;
};

}  // namespace tq
