#pragma once

#include <string_view>

#include "TQPlatform/Bytes.hpp"

namespace tq::fuzz {

/// To be defined once by every target: reads `input` as the product would and requires what must hold of the outcome.
/// It catches the errors that the operation under test documents and no others, so that any other ends the program.
void check(ByteView input);

/// Ends the program, and so makes `input` a finding, when `holds` is false.
void require(bool holds, std::string_view property);

}  // namespace tq::fuzz
