// tarquel-library: the library without a window, for servers and scripts.

#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include "TQCore/TQError.hpp"
#include "TQPersistence/AppSupportPaths.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Network/CurlSession.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"
#include "TQPlatform/Process/Interrupts.hpp"
#include "TQPlatform/Process/Terminal.hpp"
#include "Tools/Library/Clips.hpp"
#include "Tools/Library/Options.hpp"
#include "Tools/Library/Runner.hpp"

namespace {

using namespace tq;
using namespace tq::library;
using tools::ExitStatus;

ExitStatus work(const Options& options, const Environment& environment) {
  holdInterrupts();
  std::stop_source stop;
  const InterruptWatcher watcher([&stop](int count) {
    if (count > 1) leaveAtOnce(tools::interrupted);
    stop.request_stop();
    killRunningChildren();
  });
  return run(options, environment, stop.get_token());
}

}  // namespace

int main(int argumentCount, char** arguments) {
  std::ios::sync_with_stdio(false);
  const Environment environment{.paths = AppSupportPaths::ofUser(),
                                .openSession = [] { return std::make_shared<CurlSession>(); },
                                .clock = std::make_shared<SystemClock>(),
                                .processorCount = std::max(1u, std::thread::hardware_concurrency()),
                                .out = std::cout,
                                .errors = std::cerr,
                                .terminalColumns = terminalColumns(),
                                .isOutputAbandoned = isOutputAbandoned};
  try {
    const Options options = parseOptions({arguments + 1, arguments + argumentCount});
    if (options.help) {
      std::cout << usageText();
      return tools::allDone;
    }
    if (options.version) {
      std::cout << "tarquel-library " << TQ_VERSION << "\n";
      return tools::allDone;
    }
    return work(options, environment);
  } catch (const Cancelled&) {
    complain(environment, "Cancelled.");
    return tools::interrupted;
  } catch (const tools::UsageError& error) {
    complain(environment, error.what());
    return tools::wrongUsage;
  } catch (const std::exception& error) {
    complain(environment, userFacingDescription(error));
    return tools::notAllDone;
  }
}
