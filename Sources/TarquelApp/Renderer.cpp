#include "TarquelApp/Renderer.hpp"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <system_error>

namespace tq {

namespace {

struct DeviceFiles {
  const char* folder;
  std::string_view beginning;
};

/// Files of what can render. A display that cannot has a "card" of its own in dri/, and no render node.
constexpr std::array<DeviceFiles, 5> renderingDevices{{
    {"dri", "renderD"},  // https://docs.kernel.org/gpu/drm-uapi.html#render-nodes
    {"", "nvidia"},      // NVIDIA's own driver: its README, "Frequently Asked Questions", on device files
    {"", "dxg"},         // Linux under Windows: drivers/hv/dxgkrnl of Microsoft's kernel
    {"", "mali"},        // Arm's own driver: "Mali GPU kernel driver", kbase
    {"", "kgsl-3d"},     // Qualcomm's own driver: msm/kgsl.c
}};

/// What OpenGL by the processor calls itself: Mesa's three drivers (https://docs.mesa3d.org/drivers/llvmpipe.html and
/// its neighbours), also inside the name of a virtual machine's host, and Direct3D's WARP below Mesa.
constexpr std::array<std::string_view, 4> processorsOwn{"llvmpipe", "softpipe", "software rasterizer",
                                                        "microsoft basic render driver"};

bool holds(const std::filesystem::path& folder, std::string_view beginning) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    if (entry->path().filename().native().starts_with(beginning)) return true;
  return false;
}

QByteArray nameOfOpenGL() {
  QOpenGLContext context;
  QOffscreenSurface surface;
  surface.create();
  if (!context.create() || !context.makeCurrent(&surface)) return {};
  const auto* name = context.functions()->glGetString(GL_RENDERER);
  return name ? QByteArray(reinterpret_cast<const char*>(name)) : QByteArray();
}

}  // namespace

Renderer rendererFor(const std::filesystem::path& devices, const std::function<QByteArray()>& openGL) {
  if (std::ranges::none_of(renderingDevices,
                           [&](const DeviceFiles& files) { return holds(devices / files.folder, files.beginning); }))
    return Renderer::software;
  const std::string name = openGL().toLower().toStdString();
  const auto isWithin = [&](std::string_view part) { return name.find(part) != std::string::npos; };
  return name.empty() || std::ranges::any_of(processorsOwn, isWithin) ? Renderer::software : Renderer::qts;
}

bool rendererIsAskedFor() {
  constexpr std::array variables{"QT_QUICK_BACKEND", "QMLSCENE_DEVICE", "QSG_RHI", "QSG_RHI_BACKEND",
                                 "QSG_RHI_PREFER_SOFTWARE_RENDERER"};
  return std::ranges::any_of(variables, [](const char* variable) { return !qEnvironmentVariableIsEmpty(variable); });
}

void chooseRenderer() {
  if (!rendererIsAskedFor() && rendererFor("/dev", nameOfOpenGL) == Renderer::software)
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

}  // namespace tq
