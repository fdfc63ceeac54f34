#include "Support/FolderListings.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <dirent.h>
#include <dlfcn.h>
#include <map>
#include <mutex>
#include <string_view>
#include <sys/stat.h>

namespace tq::test {

struct FolderListings::State {
  std::filesystem::path folder;
  std::atomic<int> entries = 0;
  std::atomic<int> looks = 0;
  std::atomic<bool> hidesKinds = false;
  std::atomic<bool> broken = false;

  std::mutex mutex;
  std::function<void()> beforeEach;  // guarded by mutex
  std::map<DIR*, int> open;          // the entries that each has given; guarded by mutex

  bool isOpen(DIR* listing) {
    std::lock_guard lock(mutex);
    return open.contains(listing);
  }

  bool isOpen(int descriptor) {
    std::lock_guard lock(mutex);
    return std::ranges::any_of(open, [&](const auto& listing) { return ::dirfd(listing.first) == descriptor; });
  }

  /// False where the listing breaks off instead of giving one more entry.
  bool mayGive(DIR* listing) {
    std::lock_guard lock(mutex);
    return open.at(listing)++ == 0 || !broken;
  }

  void act() {
    std::function<void()> action;
    {
      std::lock_guard lock(mutex);
      action = beforeEach;
    }
    if (action) action();
  }
};

namespace {

std::mutex mutex;
std::shared_ptr<FolderListings::State> current;  // guarded by mutex

std::shared_ptr<FolderListings::State> currentState() {
  std::lock_guard lock(mutex);
  return current;
}

/// The system's own function of this name.
template <class Function>
Function* original(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Found by the dynamic linker before the system's functions of these names.

extern "C" DIR* opendir(const char* name) {
  static const auto system = original(&::opendir, "opendir");
  DIR* const listing = system(name);
  const auto state = currentState();
  if (!state || !listing || state->folder.native() != name) return listing;
  std::lock_guard lock(state->mutex);
  state->open.emplace(listing, 0);
  return listing;
}

extern "C" int closedir(DIR* listing) {
  static const auto system = original(&::closedir, "closedir");
  if (const auto state = currentState()) {
    std::lock_guard lock(state->mutex);
    state->open.erase(listing);
  }
  return system(listing);
}

extern "C" dirent* readdir(DIR* listing) {
  static const auto system = original(&::readdir, "readdir");
  const auto state = currentState();
  if (!state || !state->isOpen(listing)) return system(listing);
  dirent* const entry = system(listing);
  if (entry && (entry->d_name == std::string_view(".") || entry->d_name == std::string_view(".."))) return entry;
  if (!state->mayGive(listing)) {
    errno = EIO;
    return nullptr;
  }
  if (!entry) return nullptr;
  state->act();
  ++state->entries;
  if (state->hidesKinds) entry->d_type = DT_UNKNOWN;
  return entry;
}

extern "C" int statx(int folder, const char* name, int flags, unsigned mask, struct statx* status) noexcept {
  static const auto system = original(&::statx, "statx");
  const auto state = currentState();
  if (state && *name != '\0' && state->isOpen(folder)) ++state->looks;
  return system(folder, name, flags, mask, status);
}

FolderListings::FolderListings(std::filesystem::path folder) : state_(std::make_shared<State>()) {
  state_->folder = std::move(folder);
  std::lock_guard lock(mutex);
  current = state_;
}

FolderListings::~FolderListings() {
  std::lock_guard lock(mutex);
  current = nullptr;
}

int FolderListings::entries() const {
  return state_->entries;
}

int FolderListings::looks() const {
  return state_->looks;
}

void FolderListings::hideKinds() {
  state_->hidesKinds = true;
}

void FolderListings::setBroken(bool broken) {
  state_->broken = broken;
}

void FolderListings::beforeEach(std::function<void()> action) {
  std::lock_guard lock(state_->mutex);
  state_->beforeEach = std::move(action);
}

}  // namespace tq::test
