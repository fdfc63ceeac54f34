#include "Support/HeldFile.hpp"

#include <fcntl.h>
#include <signal.h>

#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq::test {

HeldFile::HeldFile(const std::filesystem::path& file)
    : descriptor_(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
  ::signal(SIGIO, SIG_IGN);  // tells the holder that somebody waits, and ends it by default
  if (!descriptor_ || ::fcntl(descriptor_.get(), F_SETLEASE, F_WRLCK) != 0) throwErrno(file);
}

}  // namespace tq::test
