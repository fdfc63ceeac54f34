#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Support/FakeURLSession.hpp"
#include "Support/ManualClock.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/TQError.hpp"
#include "Tools/Library/Options.hpp"
#include "Tools/Library/Runner.hpp"

namespace tq::test {

/// A small library on disk, and the program at work on it within this process.
class LibraryHarness {
 public:
  /// A clip of ten seconds, described by `line`, with this theme.
  static DescriptionResult description(const std::string& filename, const std::string& line,
                                       const std::string& theme = "city") {
    DescriptionResult result;
    result.source = {.filename = filename, .durationSeconds = 10, .frameRate = 25};
    result.summary = line;
    result.global.overallSummaryOneLine = line;
    result.global.themes = {theme};
    return result;
  }

  /// Writes the sidecar of a clip, "<folder><stem>.description.json".
  void add(const DescriptionResult& result, const std::string& below = "") const {
    const std::string stem = std::filesystem::path(result.source.filename).stem().string();
    folder.write("library/" + below + stem + ".description.json", writeJSON(encode(result), JSONLayout::pretty));
  }

  /// Runs "COMMAND <library> REST..." and keeps what it says.
  tools::ExitStatus run(const std::string& command, const std::vector<std::string>& rest = {}) {
    std::vector<std::string> arguments{command, library().string()};
    arguments.insert(arguments.end(), rest.begin(), rest.end());
    out.str("");
    errors.str("");
    const library::Environment environment{.paths = paths,
                                           .openSession = [this] { return session; },
                                           .clock = clock,
                                           .processorCount = 2,
                                           .out = out,
                                           .errors = errors,
                                           .terminalColumns = terminalColumns,
                                           .tools = tools,
                                           .isOutputAbandoned = [this] { return isOutputAbandoned; }};
    return library::run(library::parseOptions(arguments), environment, stop.get_token());
  }

  /// The text of the error that such a run ends with, or "none".
  std::string errorOf(const std::string& command, const std::vector<std::string>& rest = {}) {
    try {
      run(command, rest);
    } catch (const std::exception& error) {
      return userFacingDescription(error);
    }
    return "none";
  }

  std::filesystem::path library() const { return folder / "library"; }

  TemporaryFolder folder;
  AppSupportPaths paths{folder / "private"};
  std::shared_ptr<FakeURLSession> session = std::make_shared<FakeURLSession>();
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
  std::optional<int> terminalColumns;
  ToolSearch tools = ToolSearch::standard();
  bool isOutputAbandoned = false;
  std::stop_source stop;
  std::ostringstream out, errors;
};

}  // namespace tq::test
