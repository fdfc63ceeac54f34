#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <list>
#include <optional>

#include "Support/EnvironmentVariable.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarquelApp/Renderer.hpp"

namespace tq {
namespace {

class RendererTest : public testing::Test {
 protected:
  Renderer choose(const QByteArray& openGL) {
    return rendererFor(devices.path(), [&] {
      ++contexts;
      return openGL;
    });
  }

  test::TemporaryFolder devices;
  int contexts = 0;  ///< how often OpenGL was loaded
};

TEST_F(RendererTest, WithoutADeviceThatRendersOpenGLIsNotEvenLoaded) {
  EXPECT_EQ(choose("a graphics processor"), Renderer::software);
  devices.write("dri/card0", "");  // a display that shows what it is given
  devices.write("dri/by-path/pci-0000:00:02.0-render", "");
  devices.write("null", "");
  EXPECT_EQ(choose("a graphics processor"), Renderer::software);
  EXPECT_EQ(contexts, 0);
}

TEST_F(RendererTest, AGraphicsProcessorDraws) {
  for (const char* device : {"dri/renderD128", "dri/renderD129", "nvidia0", "nvidiactl", "dxg", "mali0", "kgsl-3d0"}) {
    const auto file = devices.write(device, "");
    EXPECT_EQ(choose("Mesa Intel(R) UHD Graphics 620 (KBL GT2)"), Renderer::qts) << device;
    std::filesystem::remove(file);
  }
  EXPECT_EQ(contexts, 7);
}

TEST_F(RendererTest, OpenGLThatTheProcessorComputesIsNotUsed) {
  devices.write("dri/renderD128", "");
  for (const char* name : {"llvmpipe (LLVM 15.0.6, 256 bits)", "virgl (LLVMPIPE (LLVM 15.0.6, 256 bits))", "softpipe",
                           "Software Rasterizer", "D3D12 (Microsoft Basic Render Driver)"})
    EXPECT_EQ(choose(name), Renderer::software) << name;
}

TEST_F(RendererTest, ADeviceWithoutOpenGLDoesNotDraw) {
  devices.write("dri/renderD128", "");
  EXPECT_EQ(choose(""), Renderer::software);
}

TEST_F(RendererTest, WhoAsksForOneKeepsIt) {
  const std::array variables{"QT_QUICK_BACKEND", "QMLSCENE_DEVICE", "QSG_RHI", "QSG_RHI_BACKEND",
                             "QSG_RHI_PREFER_SOFTWARE_RENDERER"};
  std::list<test::EnvironmentVariable> unset;
  for (const char* variable : variables)
    unset.emplace_back(variable, std::nullopt);
  EXPECT_FALSE(rendererIsAskedFor());
  for (const char* variable : variables) {
    const test::EnvironmentVariable set(variable, "opengl");
    EXPECT_TRUE(rendererIsAskedFor()) << variable;
    const test::EnvironmentVariable empty(variable, "");
    EXPECT_FALSE(rendererIsAskedFor()) << variable;
  }
}

}  // namespace
}  // namespace tq
