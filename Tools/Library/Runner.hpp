#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <stop_token>

#include "TQFrames/FFmpegBridge.hpp"
#include "TQPersistence/AppSupportPaths.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/Network/URLSession.hpp"
#include "Tools/Library/Options.hpp"
#include "Tools/Shared/CommandLine.hpp"

namespace tq::library {

/// What the program works with.
struct Environment {
  AppSupportPaths paths;                                     ///< settings, keys and the cache of the semantic index
  std::function<std::shared_ptr<URLSession>()> openSession;  ///< asked for by a semantic search alone
  std::shared_ptr<const Clock> clock;
  std::size_t processorCount = 1;
  std::ostream& out;                          ///< results
  std::ostream& errors;                       ///< everything else
  std::optional<int> terminalColumns;         ///< of `out`; absent where it is no terminal
  ToolSearch tools = ToolSearch::standard();  ///< where ffmpeg is looked for
  /// Whether nobody can read `out` any more, asked for once it has failed. That is no error then.
  std::function<bool()> isOutputAbandoned = [] { return false; };
};

/// Does what the command line asks for and shows it. Throws what ends the work in words for a user, and `Cancelled`.
tools::ExitStatus run(const Options& options, const Environment& environment, const std::stop_token& stop);

}  // namespace tq::library
