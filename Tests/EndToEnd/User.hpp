#pragma once

#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/types.h>
#include <thread>
#include <vector>

#include "Support/ClipMaker.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/Models/DescriptionResult.hpp"
#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq::test {

/// How the program ended and what it said.
struct Outcome {
  int status = 0;  ///< its exit status; 128 more than the number of a signal that ended it
  std::string output;
  std::string errors;
  long peakKilobytes = 0;  ///< the most memory that was resident
};

/// A program of this project and what surrounds it when it starts.
struct Surroundings {
  std::filesystem::path program = TQ_DESCRIBE_PROGRAM;
  std::filesystem::path folder;  ///< the current one
  std::map<std::string, std::string> environment;
  std::optional<rlim_t> largestFile;              ///< bytes; a longer file cannot be written, as on a full disk
  std::optional<unsigned short> terminalColumns;  ///< the output goes to a terminal that wide
  bool outputIsAbandoned = false;                 ///< nobody reads the output
};

/// The built program at work. Its own process; killed if the test ends before it does.
class RunningProgram {
 public:
  RunningProgram(const Arguments& arguments, const Surroundings& surroundings);
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  void signal(int number) const;

  /// Blocks until `text` was written to the standard output; throws when the output ends without it.
  void waitForOutput(std::string_view text);

  /// The processes it has started that have not ended.
  std::vector<pid_t> children() const;

  /// Blocks until it has started a process that has not ended, or has ended itself.
  void waitForChild() const;

  /// Blocks until it has ended.
  Outcome finish();

 private:
  void collect(const Descriptor& from, std::string& into);

  pid_t pid_ = 0;
  Descriptor outputEnd_, errorEnd_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::string output_, errors_;
  bool outputEnded_ = false;
  std::jthread outputReader_, errorReader_;
};

/// Someone with a home of their own, who runs the program in a folder of clips.
class User {
 public:
  User();

  /// The program run to its end, in the folder of clips.
  Outcome run(const Arguments& arguments);

  /// "tarquel-library" in place of "tarquel-describe".
  Outcome runLibrary(const Arguments& arguments);

  /// As `run`, with the built-in model, so that nothing is asked of a network.
  Outcome describe(Arguments arguments);

  Surroundings surroundings;
  const std::filesystem::path& clips() const { return surroundings.folder; }
  std::filesystem::path privateFolder() const { return folder_ / "data" / "tarquel"; }

  /// A copy of a small clip, under that name in the folder of clips.
  std::filesystem::path addClip(const std::filesystem::path& name) const;
  /// Any file, under that name in the folder of clips.
  std::filesystem::path addFile(const std::filesystem::path& name, std::string_view content) const;

 private:
  TemporaryFolder folder_;
};

/// A small clip of one second that tests share and must not change.
std::filesystem::path smallClip(std::string_view extension = "mp4");

/// The description in a JSON sidecar.
DescriptionResult readDescription(const std::filesystem::path& sidecar);

/// What the program says of a clip that is done, with all three outputs new and beside it.
std::string doneLines(const std::filesystem::path& clip);

}  // namespace tq::test
