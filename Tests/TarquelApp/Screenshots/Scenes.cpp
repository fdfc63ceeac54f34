#include "TarquelApp/Screenshots/Scenes.hpp"

#include <QGuiApplication>
#include <QTest>
#include <array>
#include <memory>
#include <stdexcept>

#include "Support/ClipMaker.hpp"
#include "Support/Gate.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq::test {

namespace {

namespace fs = std::filesystem;
using enum JobStatus;

/// A sail on the sea under a low sun, in the colours of an hour of the day.
struct Shore {
  const char* name;
  const char* sky;  ///< red, green and blue of the sky, from the top (t = 0) to the horizon (t = 1)
  double sun;       ///< how high it stands, in parts of the picture from its top
  int speed;        ///< of the sail, pixels a second
  const char* summary;
};

constexpr std::array<Shore, 5> shores{{
    {"Harbour at dusk.mp4", "40+190*t;50+85*t;110-25*t", 0.45, 40, "A single sail leaves the bay at dusk."},
    {"Bay, morning.mp4", "120+110*t;160+60*t;205+20*t", 0.2, 24, "A sailing boat crosses a bright bay."},
    {"Night crossing.mp4", "8+30*t;12+34*t;34+60*t", 0.3, 16, "A boat under the moon, hardly moving."},
    {"Storm front 2026-08-14.mp4", "70+60*t;76+62*t;84+60*t", 0.38, 64, "A sail runs before a grey front."},
    {"Last light.mp4", "90+160*t;40+70*t;90+10*t", 0.5, 30, "The sun sets behind a passing sail."},
}};

/// One colour of the picture as an expression of ffmpeg's geq filter.
std::string level(const std::string& sky, const Shore& shore, double sea, int glow) {
  const std::string top = "st(0,Y/(0.55*H));" + std::string("st(1,hypot(X-0.66*W,Y-") + std::to_string(shore.sun) +
                          "*H));" + "st(2,0.18*W+" + std::to_string(shore.speed) + "*0.5*T);";
  std::string above = sky;
  for (std::size_t at = above.find('t'); at != std::string::npos; at = above.find('t', at + 5))
    above.replace(at, 1, "ld(0)");
  const std::string light =
      "if(lt(ld(1),13)," + std::to_string(glow) + ",0)+" + std::to_string(glow / 2) + "*exp(-ld(1)/35)";
  const std::string water = "(" + above + ")*" + std::to_string(sea) +
                            "/ld(0)/ld(0)+14*sin(Y*1.6+2.5*T+3*sin(X*0.06))*exp(-abs(X-0.66*W)/45)";
  const std::string boat = "between(Y,0.34*H,0.56*H)*lt(abs(X-ld(2)),(Y-0.34*H)*0.36)";
  const std::string hull = "between(Y,0.565*H,0.6*H)*lt(abs(X-ld(2)),23-(Y-0.565*H)*1.4)";
  return top + "clip(if(" + hull + ",24,if(" + boat + ",0.55*(" + above + ")+110,if(lt(Y,0.55*H)," + above + "+" +
         light + "," + water + "))),0,255)";
}

fs::path filmed(const Shore& shore) {
  const std::string colours = shore.sky;
  const std::size_t first = colours.find(';');
  const std::size_t second = colours.find(';', first + 1);
  const std::string red = level(colours.substr(0, first), shore, 0.5, 200);
  const std::string green = level(colours.substr(first + 1, second - first - 1), shore, 0.55, 150);
  const std::string blue = level(colours.substr(second + 1), shore, 0.8, 70);
  return makeVideo("nullsrc=size=320x180:rate=2:duration=8,geq=r='" + red + "':g='" + green + "':b='" + blue +
                       "',scale=1280:720:flags=bicubic,fps=10",
                   h264({"-pix_fmt", "yuv420p"}), "mp4");
}

std::string answerFor(const std::string& summary) {
  return R"({"schema_version": "1.0", "summary": ")" + summary + R"( The water is calm and the horizon is level.",
  "shots": [
    {"timecode": "00:00:00.000", "shot_type": "wide", "camera_motion": "static", "overall_mood": "calm",
     "framing_notes": "A boat with one pale sail moves from left to right.", "tags": ["boat", "sea", "horizon"]},
    {"timecode": "00:00:05.200", "shot_type": "wide", "camera_motion": "static",
     "framing_notes": "The boat has reached the track of light.", "tags": ["boat", "light"]}],
  "global": {"themes": ["sea", "sailing"], "overall_summary_one_line": ")" +
         summary + R"("}})";
}

/// An engine that reads real clips and asks a model that was told what it saw.
class Stage {
 public:
  explicit Stage(WindowHarness& harness) : harness_(harness), extract_(standardJobStages(nullptr).extractFrames) {
    harness.engine.settings.modelId = "gemma-3-27b";
    harness.engine.settings.maxConcurrentJobs = 3;
    SettingsStore(harness.paths).save(harness.engine.settings);
    harness.engine.stages.extractFrames = [this](const fs::path& clip, const SamplingConfig& config,
                                                 const ExtractionProgress& progress, const std::stop_token& stop) {
      if (clip.filename() == extracting_) {
        progress(0.45);
        gate_->pass(stop);
      }
      return extract_(clip, config, progress, stop);
    };
    harness.engine.answer = [this](const VisionRequest& request, const std::stop_token& stop) {
      const std::string name = request.sourceContext.filename;
      if (name == calling_) gate_->pass(stop);
      if (name == refused_)
        return VisionResponse{.rawText =
                                  "I can see a boat on the water, but I would rather not describe this clip "
                                  "further.\n\nIs there anything else that I can help you with?",
                              .modelId = "gemma-3-27b"};
      for (const Shore& shore : shores)
        if (name == shore.name) return VisionResponse{.rawText = answerFor(shore.summary), .modelId = "gemma-3-27b"};
      throw std::runtime_error("no answer for " + name);
    };
  }

  ~Stage() { harness_.quit(); }  // its jobs use this object
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  /// Drops the first clips and waits until each is where it shall stay.
  void drop(std::size_t count) {
    QList<QUrl> urls;
    for (std::size_t index = 0; index < count; ++index) {
      const fs::path clip = harness_.engine.folder.path() / "Sailing" / shores[index].name;
      fs::create_directories(clip.parent_path());
      fs::copy_file(filmed(shores[index]), clip);
      urls.append(qtFileURL(clip));
    }
    harness_.state().enqueue(urls);
    harness_.turnUntilCount(count);
    turnUntil([&] { return harness_.state().activeJobCount() == held(); });
    settle();
  }

  /// Lets pictures arrive and animations end.
  static void settle() { QTest::qWait(700); }

  void select(std::size_t row) {
    harness_.state().setSelectedJobID(qtText(harness_.job(row).id.text()));
    settle();
  }

  std::string extracting_, calling_, refused_;

 private:
  int held() const { return (extracting_.empty() ? 0 : 1) + (calling_.empty() ? 0 : 1); }

  WindowHarness& harness_;
  decltype(JobStages::extractFrames) extract_;
  std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

QImage onboarding(WindowHarness& harness) {
  SettingsStore(harness.paths).save({});
  harness.launch();
  Stage::settle();
  return harness.picture();
}

QImage empty(WindowHarness& harness) {
  harness.launch();
  Stage::settle();
  return harness.picture();
}

QImage draggedOver(WindowHarness& harness) {
  harness.launch();
  harness.dragOver({harness.clip("a.mp4")});
  Stage::settle();
  return harness.picture();
}

QImage library(WindowHarness& harness) {
  harness.launch();
  harness.state().setMode(AppMode::library);
  Stage::settle();
  return harness.picture();
}

/// Clips that the built-in model described, with nothing scripted but the clips.
QImage realRun(
    WindowHarness& harness, const std::function<void()>& act = [] {}) {
  Stage stage(harness);
  harness.engine.settings.providerId = "mock";
  harness.engine.settings.modelId = AppSettings{}.modelId;
  SettingsStore(harness.paths).save(harness.engine.settings);
  harness.launch();
  stage.drop(shores.size());
  stage.select(0);
  act();
  Stage::settle();
  return harness.picture();
}

QImage described(WindowHarness& harness) {
  return realRun(harness);
}

QImage describedFrame(WindowHarness& harness) {
  return realRun(harness, [&] { harness.click(*harness.items("frameThumbnail").at(3)); });
}

/// Jobs of every kind, the one of `selected` shown.
QImage queueOf(
    WindowHarness& harness, std::size_t selected, const std::function<void()>& act = [] {},
    const std::function<QImage(WindowHarness&)>& look = &WindowHarness::picture) {
  Stage stage(harness);
  stage.extracting_ = shores[2].name;
  stage.calling_ = shores[1].name;
  stage.refused_ = shores[3].name;
  harness.launch();
  stage.drop(shores.size());
  stage.select(selected);
  act();
  Stage::settle();
  return look(harness);
}

QImage running(WindowHarness& harness) {
  return queueOf(harness, 1);
}

QImage extractingFrames(WindowHarness& harness) {
  return queueOf(harness, 2);
}

QImage finished(WindowHarness& harness) {
  return queueOf(harness, 0);
}

QImage sourceTab(WindowHarness& harness) {
  return queueOf(harness, 0, [&] { harness.click(harness.labelled("Source")); });
}

QImage failedAnswer(WindowHarness& harness) {
  return queueOf(harness, 3);
}

QImage framePreview(WindowHarness& harness) {
  return queueOf(harness, 0, [&] { harness.click(*harness.items("frameThumbnail").at(1)); });
}

QImage contextMenu(WindowHarness& harness) {
  return queueOf(harness, 3, [&] {
    harness.item("queueList").forceActiveFocus();
    harness.press(Qt::Key_Menu);
  });
}

QImage jobMenu(WindowHarness& harness) {
  return queueOf(harness, 0, [&] { harness.press(Qt::Key_J, Qt::AltModifier); });
}

/// The panel of a desktop that has none of its own.
QImage openPanel(WindowHarness& harness) {
  harness.launch();
  harness.state().presentOpenPanel();
  Stage::settle();
  return harness.picture();
}

QImage quitQuestion(WindowHarness& harness) {
  return queueOf(harness, 0, [&] { harness.delegate.terminate(); });
}

QImage pictureOfPreview(WindowHarness& harness) {
  return harness.otherWindow("quickLook")->grabWindow();
}

QImage quickLook(WindowHarness& harness) {
  const auto pressSpace = [&] {
    harness.item("queueList").forceActiveFocus();
    harness.press(Qt::Key_Space);
  };
  return queueOf(harness, 0, pressSpace, pictureOfPreview);
}

}  // namespace

const std::vector<Scene>& scenes() {
  static const std::vector<Scene> all{{"onboarding", onboarding},
                                      {"empty", empty},
                                      {"dragged-over", draggedOver},
                                      {"library", library},
                                      {"real-run", described},
                                      {"real-run-frame", describedFrame},
                                      {"running", running},
                                      {"extracting", extractingFrames},
                                      {"done", finished},
                                      {"source-tab", sourceTab},
                                      {"failed", failedAnswer},
                                      {"frame-preview", framePreview},
                                      {"context-menu", contextMenu},
                                      {"job-menu", jobMenu},
                                      {"open-panel", openPanel},
                                      {"quit-question", quitQuestion},
                                      {"quick-look", quickLook}};
  return all;
}

}  // namespace tq::test
