#include "Support/NameLookups.hpp"

#include <dlfcn.h>
#include <mutex>
#include <netdb.h>
#include <string_view>

namespace {

std::mutex mutex;
std::shared_ptr<tq::test::Gate> current;  // guarded by mutex

std::shared_ptr<tq::test::Gate> currentGate() {
  std::lock_guard lock(mutex);
  return current;
}

}  // namespace

// Found by the dynamic linker before the system's function of this name, also for the libraries of the program.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
  using tq::test::NameLookups;
  const std::shared_ptr<tq::test::Gate> gate = currentGate();
  if (gate && name && std::string_view(name) == NameLookups::hangingName) gate->pass();
  if (gate && name &&
      (std::string_view(name) == NameLookups::hangingName || std::string_view(name) == NameLookups::missingName))
    return EAI_NONAME;
  static const auto original = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
  return original(name, service, hints, found);
}

namespace tq::test {

NameLookups::NameLookups() : gate_(std::make_shared<Gate>()) {
  std::lock_guard lock(mutex);
  current = gate_;
}

NameLookups::~NameLookups() {
  {
    std::lock_guard lock(mutex);
    current = nullptr;
  }
  gate_->open();
}

}  // namespace tq::test
