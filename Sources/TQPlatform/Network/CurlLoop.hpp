#pragma once

#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "TQPlatform/Network/CurlTransfer.hpp"

namespace tq {

/// The thread that moves the bytes of all transfers, with the connections they share. It waits for the network only,
/// never for a caller, and a caller never waits for it: it is told of news and gets to them when it can.
class CurlLoop {
 public:
  CurlLoop();

  /// As `stop`.
  ~CurlLoop();

  /// Takes the transfer over, until its end is told to it by `finish`.
  void start(std::shared_ptr<CurlTransfer> transfer);

  /// Nobody waits for the transfer any more: its connection is closed, soon.
  void abandon(std::shared_ptr<CurlTransfer> transfer);

  /// Ends every transfer, also those started later, and the thread.
  void stop();

 private:
  using Transfers = std::vector<std::shared_ptr<CurlTransfer>>;

  struct Release {
    void operator()(void* multi) const;
  };

  void run();
  bool takeNews();
  void begin(std::shared_ptr<CurlTransfer> transfer);
  void end(void* handle, std::optional<int> code);
  void endFinished();

  const std::unique_ptr<void, Release> multi_;  // libcurl's multi handle

  // Of the thread alone: what is on its way, by easy handle.
  std::unordered_map<void*, std::shared_ptr<CurlTransfer>> underWay_;

  std::mutex mutex_;
  Transfers started_;
  Transfers abandoned_;
  bool stopping_ = false;

  std::thread thread_;
};

}  // namespace tq
