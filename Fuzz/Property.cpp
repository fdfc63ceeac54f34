#include "Fuzz/Property.hpp"

#include <cstdio>
#include <cstdlib>

namespace tq::fuzz {

void require(bool holds, std::string_view property) {
  if (holds) return;
  std::fprintf(stderr, "It does not hold that %.*s.\n", static_cast<int>(property.size()), property.data());
  std::abort();
}

}  // namespace tq::fuzz

/// What libFuzzer (https://llvm.org/docs/LibFuzzer.html) calls with one input after the other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tq::fuzz::check({data, size});
  return 0;
}
