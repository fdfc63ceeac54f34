#include "TQFrames/WatcherLifecycle.hpp"

#include <system_error>
#include <utility>

namespace tq {

namespace fs = std::filesystem;

WatcherLifecycle::WatcherLifecycle(Executor owner, std::shared_ptr<const Clock> clock,
                                   std::function<void(const fs::path& clip)> onFile,
                                   std::function<void()> onActiveChange)
    : owner_(std::move(owner)),
      clock_(std::move(clock)),
      onFile_(std::move(onFile)),
      onActiveChange_(std::move(onActiveChange)) {}

WatcherLifecycle::~WatcherLifecycle() {
  ++newest_;
  thread_.post([this] { watcher_.reset(); });
  thread_.flush();
}

void WatcherLifecycle::watch(std::optional<Wish> wish) {
  const Number number = ++newest_;
  setActive(false);
  thread_.post([this, wish = std::move(wish), number] { replaceWatcher(wish, number); });
}

void WatcherLifecycle::replaceWatcher(const std::optional<Wish>& wish, Number number) {
  watcher_.reset();
  if (!wish || number != newest_) return;
  watcher_ = std::make_unique<FolderWatcher>(
      wish->folders, wish->exclusionGlobs, debounce,
      // Also when another watcher has replaced this one meanwhile: that one takes the clip for an old one.
      [this](const fs::path& clip) { owner_.post([this, clip] { onFile_(clip); }); }, clock_);
  try {
    watcher_->start();
  } catch (const std::system_error&) {
    return watcher_.reset();  // no threads to be had: nothing is watched, and nothing says that it is
  }
  owner_.post([this, number] {
    if (number == newest_) setActive(true);
  });
}

void WatcherLifecycle::setActive(bool isActive) {
  if (std::exchange(isActive_, isActive) != isActive) onActiveChange_();
}

}  // namespace tq
