#include "TQPlatform/Network/CurlLoop.hpp"

#include <curl/curl.h>
#include <limits>
#include <utility>

namespace tq {

void CurlLoop::Release::operator()(void* multi) const {
  curl_multi_cleanup(multi);
}

CurlLoop::CurlLoop() : multi_(curl_multi_init()) {
  if (!multi_) throw std::bad_alloc();
  thread_ = std::thread([this] { run(); });
}

CurlLoop::~CurlLoop() {
  stop();
}

void CurlLoop::start(std::shared_ptr<CurlTransfer> transfer) {
  {
    std::lock_guard lock(mutex_);
    if (!stopping_) started_.push_back(std::move(transfer));
  }
  if (transfer)
    transfer->finish(std::nullopt);
  else
    curl_multi_wakeup(multi_.get());
}

void CurlLoop::abandon(std::shared_ptr<CurlTransfer> transfer) {
  {
    std::lock_guard lock(mutex_);
    abandoned_.push_back(std::move(transfer));
  }
  curl_multi_wakeup(multi_.get());
}

void CurlLoop::stop() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  curl_multi_wakeup(multi_.get());
  if (thread_.joinable()) thread_.join();
}

void CurlLoop::run() {
  while (takeNews()) {
    int running = 0;
    curl_multi_perform(multi_.get(), &running);
    endFinished();
    curl_multi_poll(multi_.get(), nullptr, 0, std::numeric_limits<int>::max(), nullptr);
  }
  while (!underWay_.empty())
    end(underWay_.begin()->first, std::nullopt);
}

bool CurlLoop::takeNews() {
  Transfers started, abandoned;
  bool goesOn = true;
  {
    std::lock_guard lock(mutex_);
    started.swap(started_);
    abandoned.swap(abandoned_);
    goesOn = !stopping_;
  }
  for (auto& transfer : started)
    begin(std::move(transfer));
  for (const auto& transfer : abandoned)
    end(transfer->handle(), std::nullopt);
  return goesOn;
}

void CurlLoop::begin(std::shared_ptr<CurlTransfer> transfer) {
  void* const handle = transfer->handle();
  underWay_.emplace(handle, std::move(transfer));
  if (curl_multi_add_handle(multi_.get(), handle) != CURLM_OK) end(handle, CURLE_FAILED_INIT);
}

void CurlLoop::end(void* handle, std::optional<int> code) {
  const auto found = underWay_.find(handle);
  if (found == underWay_.end()) return;
  curl_multi_remove_handle(multi_.get(), handle);
  found->second->finish(code);
  underWay_.erase(found);
}

void CurlLoop::endFinished() {
  int left = 0;
  while (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left))
    if (message->msg == CURLMSG_DONE) end(message->easy_handle, message->data.result);
}

}  // namespace tq
