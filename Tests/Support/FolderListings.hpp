#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace tq::test {

/// Sees how a folder is listed and what of it is looked at, and may disturb it. Stands in for the system's calls while
/// it lives, in every program that is linked with this file; one at a time. Only listings through exactly this path
/// count.
class FolderListings {
 public:
  explicit FolderListings(std::filesystem::path folder);
  ~FolderListings();
  FolderListings(const FolderListings&) = delete;
  FolderListings& operator=(const FolderListings&) = delete;

  int entries() const;  ///< given out by all listings; "." and ".." never count
  int looks() const;    ///< at entries, not at the folder itself

  /// Listings do not say of what kind an entry is, as on some file systems.
  void hideKinds();

  /// Each listing fails behind its first entry, as on a broken disk, or no longer does.
  void setBroken(bool broken);

  /// `action` runs before each entry is given, on the thread that lists.
  void beforeEach(std::function<void()> action);

  struct State;

 private:
  std::shared_ptr<State> state_;
};

}  // namespace tq::test
