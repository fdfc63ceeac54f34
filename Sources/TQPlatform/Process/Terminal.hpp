#pragma once

#include <optional>

namespace tq {

/// Columns of the terminal that standard output goes to; absent when it goes elsewhere, to a file or a pipe.
std::optional<int> terminalColumns();

/// True when standard output is a pipe or a socket that nobody reads any more: all that is written there fails.
bool isOutputAbandoned();

}  // namespace tq
