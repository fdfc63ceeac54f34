#include "TarquelApp/ScriptedClips.hpp"

#include <QBuffer>
#include <QImage>
#include <stdexcept>
#include <utility>

namespace tq::test {

namespace {

std::vector<ExtractedFrame> decodableFrames(std::size_t count) {
  std::vector<ExtractedFrame> frames = PipelineHarness::frames(count);
  static const Bytes picture = jpegOf(Qt::darkCyan);
  for (ExtractedFrame& frame : frames)
    frame.jpegData = picture;
  return frames;
}

}  // namespace

Bytes jpegOf(const QColor& colour, QSize size) {
  QImage picture(size, QImage::Format_RGB32);
  picture.fill(colour);
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  picture.save(&buffer, "jpeg");
  return {buffer.data().begin(), buffer.data().end()};
}

ScriptedClips::ScriptedClips(PipelineHarness& engine) {
  JobStages& stages = engine.stages;
  stages.extractFrames = [this, &engine, plain = stages.extractFrames](
                             const std::filesystem::path& clip, const SamplingConfig& sampling,
                             const ExtractionProgress& progress, const std::stop_token& stop) {
    const Script script = scriptOf(clip.filename());
    if (script.progress) progress(*script.progress);
    passThrough(JobStatus::extracting, script, stop);
    Extraction extraction = plain(clip, sampling, progress, stop);
    extraction.frames = script.frames ? *script.frames : decodableFrames(engine.frameCount);
    return extraction;
  };
  engine.answer = [this, plain = engine.answer](const VisionRequest& request, const std::stop_token& stop) {
    const std::string& clip = request.sourceContext.filename;
    passThrough(JobStatus::calling, scriptOf(clip), stop);
    const Script script = scriptOf(clip);
    if (script.failure) throw std::runtime_error(*script.failure);
    VisionResponse response = plain(request, stop);
    if (script.answer) response.rawText = *script.answer;
    return response;
  };
  stages.writeDescription = [this, plain = stages.writeDescription](const DescriptionResult& result,
                                                                    const std::filesystem::path& clip,
                                                                    const OutputConfig& output) {
    passThrough(JobStatus::writing, scriptOf(clip.filename()));
    return plain(result, clip, output);
  };
}

void ScriptedClips::hold(const std::string& clip, JobStatus status) {
  change(clip, [&](Script& script) {
    script.heldIn = status;
    if (const auto before = std::exchange(script.gate, std::make_shared<Gate>())) before->open();
  });
}

void ScriptedClips::letGo(const std::string& clip) {
  change(clip, [&](Script& script) {
    script.heldIn = JobStatus::queued;
    if (script.gate) script.gate->open();
  });
}

void ScriptedClips::letAllGo() {
  const std::scoped_lock lock(mutex_);
  for (auto& [clip, script] : scripts_) {
    script.heldIn = JobStatus::queued;
    if (script.gate) script.gate->open();
  }
}

void ScriptedClips::setProgress(const std::string& clip, double progress) {
  change(clip, [&](Script& script) { script.progress = progress; });
}

void ScriptedClips::answer(const std::string& clip, const std::string& text) {
  change(clip, [&](Script& script) {
    script.failure.reset();
    script.answer = text;
  });
}

void ScriptedClips::fail(const std::string& clip, const std::string& message) {
  change(clip, [&](Script& script) { script.failure = message; });
}

void ScriptedClips::setFrames(const std::string& clip, std::vector<ExtractedFrame> frames) {
  change(clip, [&](Script& script) { script.frames = std::move(frames); });
}

ScriptedClips::Script ScriptedClips::scriptOf(const std::string& clip) const {
  const std::scoped_lock lock(mutex_);
  const auto found = scripts_.find(clip);
  return found == scripts_.end() ? Script() : found->second;
}

void ScriptedClips::passThrough(JobStatus status, const Script& script, const std::stop_token& stop) const {
  if (script.heldIn == status) script.gate->pass(stop);
}

void ScriptedClips::change(const std::string& clip, const std::function<void(Script&)>& how) {
  const std::scoped_lock lock(mutex_);
  how(scripts_[clip]);
}

}  // namespace tq::test
