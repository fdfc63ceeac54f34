#include <gtest/gtest.h>

#include "AllocationCounter.hpp"
#include "ProviderFixture.hpp"
#include "TQPlatform/Network/Base64.hpp"

namespace tq {
namespace {

using test::allocatedBytes;
using test::ProviderFixture;

struct Clip {
  std::size_t frameCount;
  std::size_t bytesPerFrame;

  std::size_t pictureSize() const { return frameCount * bytesPerFrame; }
  std::size_t encodedSize() const { return frameCount * base64Length(bytesPerFrame); }

  VisionRequest request() const {
    VisionRequest result = ProviderFixture::request();
    result.frames = std::vector<ExtractedFrame>(frameCount, {.jpegData = Bytes(bytesPerFrame, std::uint8_t{0xFF})});
    return result;
  }
};

/// A clip as it is sampled by default, and one of very many frames.
class VisionBodyMemory : public testing::TestWithParam<Clip> {};

INSTANTIATE_TEST_SUITE_P(Clips, VisionBodyMemory, testing::Values(Clip{12, 600'000}, Clip{64, 1'000'000}),
                         [](const auto& clip) { return std::to_string(clip.param.frameCount) + "Frames"; });

TEST_P(VisionBodyMemory, TheBodyIsWrittenOnceIntoMemoryOfItsSize) {
  constexpr std::size_t promptsAndNames = 16 * 1024;
  const VisionRequest request = GetParam().request();
  const ProviderFixture fixture;
  for (const bool anthropic : {true, false}) {
    const std::size_t before = allocatedBytes();
    const std::string body = anthropic ? fixture.anthropic().buildBody(request) : fixture.openAI().buildBody(request);
    const std::size_t asked = allocatedBytes() - before;
    EXPECT_EQ(body.capacity(), body.size());
    EXPECT_GE(asked, body.size()) << "the count sees the body";
    EXPECT_LE(asked, GetParam().encodedSize() + promptsAndNames);
  }
}

TEST_P(VisionBodyMemory, FramesAndRequestTogetherStayBelowTwoAndAHalfTimesTheEncodedSize) {
  const VisionRequest request = GetParam().request();
  ProviderFixture fixture;
  fixture.session->answer(503).answer(200, R"({"content":[{"type":"text","text":"good"}]})");
  const std::size_t before = allocatedBytes();
  fixture.anthropic().describe(request, {});
  const std::size_t asked = allocatedBytes() - before;
  EXPECT_LE(static_cast<double>(GetParam().pictureSize() + asked), 2.5 * static_cast<double>(GetParam().encodedSize()));
}

TEST(VisionBody, APictureIsOneTextWithoutLineBreaks) {
  const ProviderFixture fixture;
  const VisionRequest request = ProviderFixture::request({std::string(100'000, 'x')});
  std::string encoded;
  appendBase64(encoded, request.frames->at(0).jpegData);
  for (const std::string& body : {fixture.anthropic().buildBody(request), fixture.openAI().buildBody(request)}) {
    EXPECT_EQ(body.find_first_of("\r\n"), std::string::npos);
    EXPECT_NE(body.find(encoded + "\""), std::string::npos);
  }
}

}  // namespace
}  // namespace tq
