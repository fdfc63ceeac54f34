#pragma once

#include <optional>

namespace tq {

/// Columns of the terminal that standard output goes to; absent when it goes elsewhere, to a file or a pipe.
std::optional<int> terminalColumns();

}  // namespace tq
