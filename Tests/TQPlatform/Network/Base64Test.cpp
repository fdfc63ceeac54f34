#include <gtest/gtest.h>

#include "TQPlatform/Network/Base64.hpp"

namespace tq {
namespace {

std::string encoded(ByteView bytes) {
  std::string text;
  appendBase64(text, bytes);
  return text;
}

TEST(Base64, EncodesTheExamplesOfItsStandard) {
  EXPECT_EQ(encoded(viewOf("")), "");
  EXPECT_EQ(encoded(viewOf("f")), "Zg==");
  EXPECT_EQ(encoded(viewOf("fo")), "Zm8=");
  EXPECT_EQ(encoded(viewOf("foo")), "Zm9v");
  EXPECT_EQ(encoded(viewOf("foob")), "Zm9vYg==");
  EXPECT_EQ(encoded(viewOf("fooba")), "Zm9vYmE=");
  EXPECT_EQ(encoded(viewOf("foobar")), "Zm9vYmFy");
}

TEST(Base64, UsesTheStandardAlphabet) {
  EXPECT_EQ(encoded(Bytes{0xFB, 0xEF, 0xFF}), "++//");
  EXPECT_EQ(encoded(Bytes{0x00, 0x10, 0x83}), "ABCD");
}

TEST(Base64, StandsBehindWhatIsThere) {
  std::string text = "data:";
  appendBase64(text, viewOf("foo"));
  appendBase64(text, viewOf("f"));
  EXPECT_EQ(text, "data:Zm9vZg==");
}

TEST(Base64, TellsItsLengthBeforehand) {
  for (std::size_t count = 0; count < 100; ++count)
    EXPECT_EQ(encoded(Bytes(count, 1)).size(), base64Length(count)) << count;
}

TEST(Base64, LongContentHasNoSeamsNoLineBreaksAndPadsOnlyItsEnd) {
  constexpr std::size_t count = (3 << 21) + 1;  // three pieces of the encoder
  std::string expected;
  for (std::size_t group = 0; group < count / 3; ++group)
    expected += "AAEC";
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index)
    bytes[index] = static_cast<std::uint8_t>(index % 3);
  EXPECT_TRUE(encoded(bytes) == expected + "AA==");
}

TEST(Base64, AllocatesNothingWhereRoomIsReserved) {
  std::string text;
  text.reserve(base64Length(1000));
  const char* const place = text.data();
  appendBase64(text, Bytes(1000, 7));
  EXPECT_EQ(text.data(), place);
}

}  // namespace
}  // namespace tq
