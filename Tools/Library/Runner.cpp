#include "Tools/Library/Runner.hpp"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "TQCore/TQError.hpp"
#include "TQDescription/Export/ClipExporter.hpp"
#include "TQDescription/FolderIndex/FolderIndexFiles.hpp"
#include "TQDescription/FolderIndex/IndexBuilder.hpp"
#include "TQDescription/Library/LibraryModel.hpp"
#include "TQDescription/Library/LibraryTexts.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "Tools/Library/Clips.hpp"
#include "Tools/Shared/PlainText.hpp"
#include "Tools/Shared/Table.hpp"

namespace tq::library {

namespace fs = std::filesystem;
using tools::Alignment;
using tools::ExitStatus;
using tools::Table;

namespace {

ExitStatus statusOf(const Selection& selection) {
  return selection.isWhole ? tools::allDone : tools::notAllDone;
}

ExitStatus failed(const Environment& environment, const std::string& text) {
  complain(environment, text);
  return tools::notAllDone;
}

/// Runs `action`; a failure's text is put into the words of `inWords`.
template <class Action>
void failingAs(std::string (*inWords)(std::string_view), Action action) {
  try {
    action();
  } catch (const Cancelled&) {
    throw;
  } catch (const std::exception& error) {
    throw std::runtime_error(inWords(userFacingDescription(error)));
  }
}

std::string missing(const Clips& clips, const fs::path& file) {
  return TQError::fileNotFound(clips.shownPath(file)).description();
}

std::string badge(const DescriptionResult& result) {
  if (result.flagged == true) return "Refused";
  return result.reviewFlag == true ? "Needs review" : "";
}

ExitStatus search(const Options& options, const Environment& environment, const std::stop_token& stop) {
  const Clips clips = loadClips(options, environment, stop);
  const Selection selection = selectClips(clips, options, environment, stop);
  Table table({Alignment::right, Alignment::left, Alignment::right, Alignment::left, Alignment::left});
  for (const auto& [sidecar, percent] : selection.found) {
    const DescriptionResult& result = *sidecar.result;
    table.add({percent ? std::to_string(*percent) + "%" : "", clips.shownPath(sidecar),
               IndexBuilder::formatDuration(result.source.durationSeconds), badge(result),
               result.global.overallSummaryOneLine.value_or("")});
  }
  table.print(environment.out, environment.terminalColumns);
  if (selection.isSearch && selection.found.empty()) note(environment, LibraryTexts::noClipsMatch);
  std::string counts = LibraryTexts::counts(clips.sidecars);
  if (selection.isSearch) counts += " · " + LibraryTexts::matches(selection.found.size(), clips.sidecars.size());
  note(environment, counts);
  return statusOf(selection);
}

ExitStatus facets(const Options& options, const Environment& environment, const std::stop_token& stop) {
  const Clips clips = loadClips(options, environment, stop);
  const FacetOptions offered = LibraryModel::facetOptions(clips.sidecars, environment.processorCount);
  Table table({Alignment::left, Alignment::right, Alignment::left});
  for (const FacetField field : LibraryTexts::facetBarFields)
    if (const auto values = offered.find(field); values != offered.end())
      for (const FacetValue& value : values->second)
        table.add({std::string(rawValue(field)), std::to_string(value.count), value.value});
  table.print(environment.out, environment.terminalColumns);
  note(environment, LibraryTexts::counts(clips.sidecars));
  return tools::allDone;
}

ExitStatus index(const Options& options, const Environment& environment, const std::stop_token& stop) {
  const Clips clips = loadClips(options, environment, stop);
  std::vector<Shared<DescriptionResult>> descriptions;
  for (const LoadedSidecar& sidecar : clips.sidecars)
    descriptions.push_back(sidecar.result);
  failingAs(LibraryTexts::indexFailed, [&] {
    writeFolderIndex(clips.folder, IndexBuilder::build(clips.folder, descriptions, environment.clock->now()));
  });
  environment.out << LibraryTexts::wroteIndex << "\n";
  note(environment, LibraryTexts::counts(clips.sidecars));
  return tools::allDone;
}

/// An output under the name of a clip would be the end of that clip.
void refuseToReplaceClips(const std::vector<fs::path>& outputs, const Clips& clips) {
  std::set<fs::path> originals;
  for (const LoadedSidecar& sidecar : clips.sidecars)
    if (const auto clip = sidecar.sourceVideoURL()) originals.insert(fs::weakly_canonical(*clip));
  for (const fs::path& output : outputs)
    if (originals.contains(fs::weakly_canonical(output)))
      throw std::runtime_error(output.string() + " is a clip of the library and is not replaced.");
}

/// A device or a pipe is not written into but replaced; behind a link, such as /dev/stdout, the link would be.
void refuseToReplaceDevices(const std::vector<fs::path>& outputs) {
  std::error_code unknown;
  for (const fs::path& output : outputs)
    if (fs::is_other(fs::status(output, unknown)))
      throw std::runtime_error(output.string() + " is a device or a pipe and is not replaced.");
}

ExitStatus exportTimelines(const Options& options, const Environment& environment, const std::stop_token& stop) {
  const Clips clips = loadClips(options, environment, stop);
  const Selection selection = selectClips(clips, options, environment, stop);
  const std::vector<ExportItem> items = LibraryExport::items(selection.sidecars());
  if (items.empty()) return failed(environment, LibraryTexts::nothingToExport);
  std::vector<fs::path> files;
  for (const auto& [format, file] : options.exports)
    files.push_back(file);
  refuseToReplaceClips(files, clips);
  refuseToReplaceDevices(files);
  for (const auto& [format, file] : options.exports) {
    const std::string text = LibraryExport::text(format, items, options.query);
    failingAs(LibraryTexts::exportFailed, [&] { writeFileAtomically(file, viewOf(text)); });
    environment.out << tools::printable(LibraryTexts::exported(LibraryExport::rangeCount(items), file)) << "\n";
  }
  return statusOf(selection);
}

std::optional<FFmpegBridge> findTools(const Environment& environment) {
  try {
    return FFmpegBridge(std::nullopt, std::nullopt, FFmpegBridge::standardTimeout, environment.tools);
  } catch (const TQError&) {
    return std::nullopt;
  }
}

/// Exports are replaced without a question, so of two with one name only the later would stay.
void warnOfSharedOutputs(const std::vector<fs::path>& outputs, const Environment& environment) {
  std::set<fs::path> seen;
  for (const fs::path& output : outputs)
    if (!seen.insert(output).second)
      complain(environment, "More than one clip is cut into " + output.string() + "; the last one stays.");
}

/// Takes the clips that are gone out of `items` and tells of them. False when there were any.
bool leaveOutMissing(std::vector<ExportItem>& items, const Clips& clips, const Environment& environment) {
  return std::erase_if(items, [&](const ExportItem& item) {
           const bool isMissing = !fileExists(item.mediaURL);
           if (isMissing) complain(environment, missing(clips, item.mediaURL));
           return isMissing;
         }) == 0;
}

ExitStatus trim(const Options& options, const Environment& environment, const std::stop_token& stop) {
  const Clips clips = loadClips(options, environment, stop);
  const Selection selection = selectClips(clips, options, environment, stop);
  std::vector<ExportItem> items = LibraryExport::items(selection.sidecars());
  const bool areAllThere = leaveOutMissing(items, clips, environment);
  if (items.empty()) return failed(environment, LibraryTexts::noVideosToTrim);
  const std::optional<FFmpegBridge> bridge = findTools(environment);
  if (!bridge) return failed(environment, LibraryTexts::ffmpegNotFound);

  std::vector<fs::path> outputs;
  for (const ExportItem& item : items)
    for (std::size_t range = 0; range < item.ranges.size(); ++range)
      outputs.push_back(ClipExporter::outputURL(item, range, *options.into));
  refuseToReplaceClips(outputs, clips);
  warnOfSharedOutputs(outputs, environment);
  note(environment, LibraryTexts::trimming(outputs.size()));
  failingAs(LibraryTexts::trimFailed,
            [&] { ClipExporter::run(items, *options.into, *bridge, options.reencode, stop); });
  environment.out << tools::printable(LibraryTexts::trimmed(outputs.size(), *options.into)) << "\n";
  return areAllThere ? statusOf(selection) : tools::notAllDone;
}

ExitStatus rerate(const Options& options, const Environment& environment, const std::stop_token& stop) {
  const Clips clips = loadClips(options, environment, stop);
  Table table({Alignment::left, Alignment::left});
  bool isEmpty = true;
  for (const RerateCandidate& candidate : LibraryModel::rerateCandidates(clips.sidecars, options.includeRefusals)) {
    if (!fileExists(candidate.sourceURL)) {
      complain(environment, missing(clips, candidate.sourceURL));
      continue;
    }
    table.add({clips.shownPath(candidate.sourceURL), candidate.reason.value_or("")});
    isEmpty = false;
  }
  table.print(environment.out, environment.terminalColumns);
  return isEmpty ? failed(environment, LibraryTexts::nothingToRerate) : tools::allDone;
}

ExitStatus perform(const Options& options, const Environment& environment, const std::stop_token& stop) {
  switch (options.command) {
    case Command::search: return search(options, environment, stop);
    case Command::facets: return facets(options, environment, stop);
    case Command::index: return index(options, environment, stop);
    case Command::exportTimelines: return exportTimelines(options, environment, stop);
    case Command::trim: return trim(options, environment, stop);
    case Command::rerate: return rerate(options, environment, stop);
  }
  return tools::wrongUsage;
}

}  // namespace

ExitStatus run(const Options& options, const Environment& environment, const std::stop_token& stop) {
  const ExitStatus status = perform(options, environment, stop);
  if (environment.out.flush()) return status;
  if (environment.isOutputAbandoned()) return tools::abandoned;
  return failed(environment, "The output cannot be written.");
}

}  // namespace tq::library
