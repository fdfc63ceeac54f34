#pragma once

#include <signal.h>
#include <sys/resource.h>

namespace tq::test {

/// A disk that is full too early: while it stands, a write that would make a file longer than `bytes` fails with EFBIG,
/// for every user and the whole process.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes);
  ~FileSizeLimit();
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  sighandler_t handler_;
};

}  // namespace tq::test
