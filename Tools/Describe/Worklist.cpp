#include "Tools/Describe/Worklist.hpp"

#include <algorithm>
#include <iterator>
#include <set>
#include <system_error>

#include "TQDescription/SidecarNames.hpp"
#include "TQFrames/VideoExpansion.hpp"
#include "TQFrames/WatchFolderLogic.hpp"

namespace tq::describe {

namespace fs = std::filesystem;

std::string upToDateText(const Worklist& work) {
  if (work.upToDate == 0) return "";
  if (work.upToDate == 1) return "1 clip is up to date and left alone; --again describes it too.";
  return std::to_string(work.upToDate) + " clips are up to date and left alone; --again describes them too.";
}

bool isDescribed(const fs::path& clip, const OutputConfig& output) {
  if (output.format != OutputFormat::markdown) return !WatchFolderLogic::shouldEnqueue(clip, output.sidecarDirectory);
  const fs::path sidecar = sidecarFolder(clip, output) / sidecarName(stemOf(clip), SidecarKind::markdown);
  const auto described = WatchFolderLogic::modificationDate(sidecar);
  const auto changed = WatchFolderLogic::modificationDate(clip);
  return described && changed && *changed <= *described;
}

Worklist makeWorklist(const std::vector<fs::path>& inputs, const OutputConfig& output, bool again) {
  std::vector<fs::path> named;
  std::copy_if(inputs.begin(), inputs.end(), std::back_inserter(named), [](const fs::path& input) {
    std::error_code error;
    return !fs::is_directory(input, error);
  });
  const std::vector<fs::path> namedClips = expandToVideos(named);
  const std::set<fs::path> always(namedClips.begin(), namedClips.end());

  Worklist list;
  for (fs::path& clip : expandToVideos(inputs)) {
    if (again || always.contains(clip) || !isDescribed(clip, output))
      list.clips.push_back(std::move(clip));
    else
      ++list.upToDate;
  }
  return list;
}

}  // namespace tq::describe
