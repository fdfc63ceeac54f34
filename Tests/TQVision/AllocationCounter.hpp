#pragma once

#include <cstddef>

namespace tq::test {

/// The bytes that this test program has asked for since its start, whether they were given back or not.
std::size_t allocatedBytes();

}  // namespace tq::test
