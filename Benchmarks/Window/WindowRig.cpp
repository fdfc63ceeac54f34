#include "Benchmarks/Window/WindowRig.hpp"

#include <QBuffer>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <fstream>
#include <stdexcept>

#include "TQPipeline/JobStages.hpp"
#include "TarquelApp/Text.hpp"

namespace tq::window {

namespace {

namespace fs = std::filesystem;

class QuickModel final : public VisionProvider {
 public:
  QuickModel(std::string modelId, std::string answer) : modelId_(std::move(modelId)), answer_(std::move(answer)) {}
  const std::string& providerId() const override { return providerId_; }
  const std::string& modelId() const override { return modelId_; }
  VisionResponse describe(const VisionRequest&, std::stop_token) const override {
    return {.rawText = answer_, .modelId = modelId_, .inputTokens = {}, .outputTokens = {}};
  }

 private:
  std::string providerId_ = "quick";
  std::string modelId_;
  std::string answer_;
};

Bytes jpegPicture() {
  QImage picture(320, 180, QImage::Format_RGB32);
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x)
      picture.setPixel(x, y, qRgb(x % 256, y, (x * y) % 256));
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  picture.save(&buffer, "jpeg");
  return {buffer.data().begin(), buffer.data().end()};
}

std::vector<ExtractedFrame> framesOf(int count) {
  std::vector<ExtractedFrame> frames;
  const Bytes picture = jpegPicture();
  for (int index = 0; index < count; ++index)
    frames.push_back({.timecode = {index * 0.5}, .jpegData = picture, .width = 320, .height = 180});
  return frames;
}

JobStages stagesOf(const Script& script) {
  JobStages stages = standardJobStages(nullptr);
  stages.extractFrames = [script, frames = framesOf(script.frames)](const fs::path& clip, const SamplingConfig&,
                                                                    const ExtractionProgress&, const std::stop_token&) {
    if (script.succeeds && !script.succeeds(std::stoi(clip.stem().string())))
      throw std::runtime_error("The clip could not be read.");
    return Extraction{.frames = frames, .meta = {.duration = 60, .width = 320, .height = 180, .frameRate = 25}};
  };
  std::string answer = script.answer;
  if (answer.empty())
    answer = R"({"schema_version": "1.0", "summary": "A quiet harbour.", "shots": [{"shot_type": "wide"},
                {"shot_type": "close"}], "global": {"overall_summary_one_line": "A quiet harbour at dawn."}})";
  stages.providers = ProviderFactory({.anthropic = {}, .openAI = [answer](const HTTPProviderConfig& config) {
                                        return std::make_unique<QuickModel>(config.modelId, answer);
                                      }});
  stages.writeDescription = [](const DescriptionResult&, const fs::path&, const OutputConfig&) {
    return std::vector<fs::path>();
  };
  stages.writePoster = {};
  return stages;
}

AppSupportPaths pathsIn(const QTemporaryDir& home) {
  AppSupportPaths paths(home.path().toStdString() + "/home");
  AppSettings settings;
  settings.providerId = "openai";
  settings.openaiBaseURL = "http://localhost:1";
  settings.maxConcurrentJobs = 4;
  SettingsStore(paths).save(settings);
  return paths;
}

QQuickItem* find(QQuickItem& root, QLatin1String name) {
  if (!root.isVisible()) return nullptr;
  if (root.objectName() == name) return &root;
  for (QQuickItem* child : root.childItems())
    if (QQuickItem* found = find(*child, name)) return found;
  return nullptr;
}

}  // namespace

WindowRig::WindowRig(TimedApplication& application, const Script& script, const QSize& size)
    : desktop_([](const fs::path&) {}),
      state_(pathsIn(home_), stagesOf(script)),
      main_(state_, delegate_, desktop_, std::make_shared<SystemClock>()),
      costs_(application, main_.window()) {
  if (size.isValid()) main_.window().resize(size);
  main_.window().requestActivate();
  costs_.until([this] { return window().isActive(); });
  costs_.step([] {});
}

void WindowRig::makeClips(int count) {
  const fs::path folder = fs::path(home_.path().toStdString()) / "clips";
  fs::create_directories(folder);
  std::ofstream(folder / "first") << "clip";
  for (int number = 0; number < count; ++number)
    fs::create_hard_link(folder / "first", folder / (std::to_string(100'000 + number) + ".mov"));
}

void WindowRig::enqueue() {
  state_.enqueue({qtFileURL(fs::path(home_.path().toStdString()) / "clips")});
}

void WindowRig::runToEnd(int count) {
  costs_.until(
      [&] { return state_.jobList().size() == static_cast<std::size_t>(count) && state_.activeJobCount() == 0; });
}

void WindowRig::select(std::size_t row) {
  state_.setSelectedJobID(qtText(state_.jobList()[row].id.text()));
}

void WindowRig::press(Qt::Key key) {
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&window(), &event);
  }
}

void WindowRig::wheel(const QPointF& place, int degrees) {
  QWheelEvent event(place, window().mapToGlobal(place), {}, {0, degrees * 8}, Qt::NoButton, Qt::NoModifier,
                    Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(&window(), &event);
}

void WindowRig::mouse(QEvent::Type type, const QPointF& place) {
  QMouseEvent event(type, place, window().mapToGlobal(place), Qt::LeftButton,
                    type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&window(), &event);
}

QQuickItem& WindowRig::item(const char* objectName) {
  QQuickItem* found = find(*window().contentItem(), QLatin1String(objectName));
  if (!found) throw std::runtime_error(std::string("the window shows no ") + objectName);
  return *found;
}

}  // namespace tq::window
