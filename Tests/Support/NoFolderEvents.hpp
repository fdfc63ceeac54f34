#pragma once

namespace tq::test {

/// A system that gives no folder events: while it stands, every new request for them is refused.
class NoFolderEvents {
 public:
  NoFolderEvents();
  ~NoFolderEvents();
  NoFolderEvents(const NoFolderEvents&) = delete;
  NoFolderEvents& operator=(const NoFolderEvents&) = delete;
};

}  // namespace tq::test
