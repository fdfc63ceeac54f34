#pragma once

#include <QColor>
#include <QSize>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Support/Gate.hpp"
#include "Support/PipelineHarness.hpp"
#include "TQPlatform/Bytes.hpp"

namespace tq::test {

/// A picture of one colour.
Bytes jpegOf(const QColor& colour, QSize size = {64, 36});

/// What becomes of each clip in the stages of an engine, by its file name. As it comes, a clip has frames that can be
/// decoded, and goes through. May be changed at any time: a step reads it when it comes there.
class ScriptedClips {
 public:
  /// Writes the stages of `engine`, which outlives this object.
  explicit ScriptedClips(PipelineHarness& engine);

  /// The clip stays `extracting`, `calling` or `writing` until it is let go; one that is held already goes on until
  /// there. One that is `writing` holds the whole engine.
  void hold(const std::string& clip, JobStatus status);
  void letGo(const std::string& clip);
  void letAllGo();

  /// How far the clip says it is before it is held while extracting, 0 to 1.
  void setProgress(const std::string& clip, double progress);

  /// What the model says of it.
  void answer(const std::string& clip, const std::string& text);

  /// The model has nothing but this error for it.
  void fail(const std::string& clip, const std::string& message);

  void setFrames(const std::string& clip, std::vector<ExtractedFrame> frames);

 private:
  struct Script {
    JobStatus heldIn = JobStatus::queued;  ///< nowhere
    std::shared_ptr<Gate> gate;
    std::optional<double> progress;
    std::optional<std::string> answer;
    std::optional<std::string> failure;
    std::optional<std::vector<ExtractedFrame>> frames;
  };

  Script scriptOf(const std::string& clip) const;
  void passThrough(JobStatus status, const Script& script, const std::stop_token& stop = {}) const;
  void change(const std::string& clip, const std::function<void(Script&)>& how);

  mutable std::mutex mutex_;
  std::map<std::string, Script> scripts_;
};

}  // namespace tq::test
