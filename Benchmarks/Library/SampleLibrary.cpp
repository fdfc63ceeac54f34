#include "Benchmarks/Library/SampleLibrary.hpp"

#include <fstream>

#include "TQDescription/SidecarNames.hpp"
#include "TQPlatform/Concurrency/Tasks.hpp"
#include "TQPlatform/Digest.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/JSON/JSONDocument.hpp"

namespace tq::compare {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t inARow = 500;

/// The text goes through a reader once more, so that what lies in memory is what a loaded library has there.
LoadedSidecar loadedSidecar(const SampleClips& clips, std::size_t number, JSONDocument& document) {
  auto result = decode<DescriptionResult>(document.read(sidecarText(clips, number)));
  const std::string name = sidecarName(stemOf(result.source.filename), SidecarKind::json);
  return {.sidecarURL = fs::path("/library") / name, .result = Shared(std::move(result))};
}

void writeSidecar(const SampleClips& clips, std::size_t number, const fs::path& folder) {
  const fs::path clip = clips.clip(number).source.filename;
  std::ofstream file(folder / sidecarName(stemOf(clip), SidecarKind::json), std::ios::binary);
  if (!(file << sidecarText(clips, number)).flush()) throw std::runtime_error("a sidecar cannot be written");
}

}  // namespace

std::string sidecarText(const SampleClips& clips, std::size_t number) {
  return writeJSON(encode(clips.clip(number)), JSONLayout::pretty);
}

fs::path sidecarFolder(const SampleClips& clips, std::size_t count, const fs::path& parent) {
  const fs::path folder = parent / (fingerprint(clips) + "-" + std::to_string(count));
  if (fs::exists(folder)) return folder;
  const fs::path unfinished = fs::path(folder) += ".unfinished";
  fs::remove_all(unfinished);
  fs::create_directories(unfinished);
  for (std::size_t number = 0; number < count; ++number)
    writeSidecar(clips, number, unfinished);
  fs::rename(unfinished, folder);
  return folder;
}

std::vector<LoadedSidecar> loadedSidecars(const SampleClips& clips, std::size_t count, std::size_t processorCount) {
  std::vector<LoadedSidecar> sidecars(count);
  forEachWindowed((count + inARow - 1) / inARow, processorCount, {}, [&](std::size_t row, const std::stop_token&) {
    JSONDocument document;
    for (std::size_t number = row * inARow; number < std::min((row + 1) * inARow, count); ++number)
      sidecars[number] = loadedSidecar(clips, number, document);
  });
  return sidecars;
}

std::string fingerprint(const SampleClips& clips) {
  constexpr std::size_t probes = 100, digits = 8;
  SHA256 digest;
  for (std::size_t number = 0; number < probes; ++number)
    digest.update(viewOf(sidecarText(clips, number)));
  return digest.finishHex().substr(0, digits);
}

}  // namespace tq::compare
