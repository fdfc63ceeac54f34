// tarquel-describe: the engine without a window, for servers and scripts.

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "TQCore/RecordJSON.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQCore/TQError.hpp"
#include "TQCore/VideoExtensions.hpp"
#include "TQDescription/SidecarNames.hpp"
#include "TQPersistence/AppSupportPaths.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/TemporaryFile.hpp"
#include "TQPlatform/Network/CurlSession.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"
#include "TQPlatform/Process/Interrupts.hpp"
#include "TQPlatform/Process/Terminal.hpp"
#include "Tools/Describe/Options.hpp"
#include "Tools/Describe/Runner.hpp"
#include "Tools/Describe/Worklist.hpp"
#include "Tools/Shared/CommandLine.hpp"
#include "Tools/Shared/PlainText.hpp"

namespace {

namespace fs = std::filesystem;
using namespace tq;
using namespace tq::describe;
using tools::printable;
using tools::UsageError;

void complain(const std::string& text) {
  std::cerr << "tarquel-describe: " << printable(text) << "\n";
}

/// The settings to start from. The user's own file is read with the patience of the desktop application; one that was
/// named must be there and in order, since whoever named it relies on it.
AppSettings readSettings(const Options& options, const AppSupportPaths& paths) {
  if (!options.settingsFile) return SettingsStore(paths).load();
  if (!fs::exists(*options.settingsFile)) throw TQError::fileNotFound(*options.settingsFile);
  const Bytes content = SafeFile::readBounded(*options.settingsFile, SafeFile::maxMetadataBytes);
  try {
    return decode<AppSettings>(parseJSON(textOf(content)));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(options.settingsFile->filename().string() + ": " + error.what());
  }
}

/// Says which of the named inputs are no clips and no folders; true when all are.
bool checkInputs(const std::vector<fs::path>& inputs) {
  bool allUsable = true;
  for (const fs::path& input : inputs) {
    std::error_code error;
    const fs::file_status status = fs::status(input, error);
    if (fs::is_directory(status) || (fs::exists(status) && VideoExtensions::isVideo(input))) continue;
    allUsable = false;
    complain(fs::exists(status) ? "Not a video file: " + input.string() : TQError::fileNotFound(input).description());
  }
  return allUsable;
}

/// Clips such as a.mp4 and a.mkv have outputs of the same names: the later one finds those of the earlier, or replaces
/// them. Whoever starts the run is told.
void warnOfSharedOutputs(const std::vector<fs::path>& clips, const OutputConfig& output) {
  if (output.conflictPolicy == ConflictPolicy::suffix) return;
  std::map<fs::path, fs::path> owners;
  for (const fs::path& clip : clips) {
    const fs::path outputs = sidecarFolder(clip, output) / stemOf(clip);
    const auto [owner, isFirst] = owners.emplace(outputs, clip);
    if (!isFirst)
      complain(clip.string() + " and " + owner->second.string() +
               " have outputs of the same names; --on-conflict suffix keeps both.");
  }
}

/// Before anything is written: leftovers of a run that was killed would stay for ever.
void removeLeftovers(const std::vector<fs::path>& clips, const OutputConfig& output) {
  std::set<fs::path> folders;
  for (const fs::path& clip : clips)
    folders.insert(sidecarFolder(clip, output));
  std::for_each(folders.begin(), folders.end(), removeAbandonedTemporaries);
}

ExitStatus describeInputs(const Options& options) {
  const AppSupportPaths paths = AppSupportPaths::ofUser();
  const AppSettings settings = applyOptions(readSettings(options, paths), options);
  const OutputConfig& output = settings.output;
  const bool allUsable = checkInputs(options.inputs);
  const auto findWork = [&] {
    Worklist work = makeWorklist(options.inputs, output, options.again);
    warnOfSharedOutputs(work.clips, output);
    removeLeftovers(work.clips, output);
    return work;
  };
  Worklist work;
  std::vector<fs::path> watched;
  if (options.watch) {
    std::copy_if(options.inputs.begin(), options.inputs.end(), std::back_inserter(watched),
                 [](const fs::path& input) { return fs::is_directory(input); });
    if (watched.empty()) throw UsageError("--watch needs a folder.");
  } else {
    work = findWork();
    if (work.clips.empty() && work.upToDate == 0) {
      complain("There is no video file to describe.");
      return notAllDone;
    }
    if (work.clips.empty()) {
      std::cout << upToDateText(work) << "\n";
      return allUsable ? allDone : notAllDone;
    }
  }
  // Learned now, and not after a model was asked about the first clip.
  if (output.sidecarDirectory) createFolders(*output.sidecarDirectory);
  const auto secrets = std::make_shared<SecretsStore>(paths.secretsURL(), std::make_shared<FileLockRegistry>());

  holdInterrupts();  // the session starts a thread
  Runner runner(settings, secrets, standardJobStages(std::make_shared<CurlSession>()), std::cout, terminalColumns(),
                isOutputAbandoned);
  const InterruptWatcher watcher([&runner](int count) {
    if (count == 1) {
      runner.interrupt();
    } else {
      killRunningChildren();
      leaveAtOnce(interrupted);
    }
  });
  const ExitStatus status = options.watch ? runner.watch(std::move(watched), findWork) : runner.describe(work);
  return status == allDone && !allUsable ? notAllDone : status;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  std::ios::sync_with_stdio(false);  // what is drawn over reaches the terminal in one piece
  try {
    const Options options = parseOptions({arguments + 1, arguments + argumentCount});
    if (options.help) {
      std::cout << usageText();
      return allDone;
    }
    if (options.version) {
      std::cout << "tarquel-describe " << TQ_VERSION << "\n";
      return allDone;
    }
    if (options.inputs.empty()) throw UsageError("Name at least one clip or folder; --help tells more.");
    return describeInputs(options);
  } catch (const UsageError& error) {
    complain(error.what());
    return wrongUsage;
  } catch (const std::exception& error) {
    complain(userFacingDescription(error));
    return notAllDone;
  }
}
