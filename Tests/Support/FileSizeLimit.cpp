#include "Support/FileSizeLimit.hpp"

namespace tq::test {

FileSizeLimit::FileSizeLimit(rlim_t bytes) : handler_(::signal(SIGXFSZ, SIG_IGN)) {
  ::getrlimit(RLIMIT_FSIZE, &before_);
  const rlimit limit{bytes, before_.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &limit);
}

FileSizeLimit::~FileSizeLimit() {
  ::setrlimit(RLIMIT_FSIZE, &before_);
  ::signal(SIGXFSZ, handler_);
}

}  // namespace tq::test
