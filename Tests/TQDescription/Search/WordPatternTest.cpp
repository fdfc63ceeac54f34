#include <gtest/gtest.h>

#include "TQDescription/Search/WordPattern.hpp"

namespace tq {
namespace {

TEST(WordPattern, CountsCharacters) {
  EXPECT_EQ(WordPattern("cafe\u0301👨‍👩‍👧").length(), 5u);
}

TEST(WordPattern, BeginsOnlyLongerWords) {
  EXPECT_TRUE(WordPattern("sun").begins("sunset"));
  EXPECT_FALSE(WordPattern("sun").begins("sun"));
  EXPECT_FALSE(WordPattern("sun").begins("su"));
  EXPECT_FALSE(WordPattern("sun").begins("asunset"));
  EXPECT_FALSE(WordPattern("su").begins("sunset"));
}

TEST(WordPattern, BeginsWordsByWholeCharacters) {
  EXPECT_TRUE(WordPattern("cafe\u0301").begins("cafe\u0301s"));
  EXPECT_FALSE(WordPattern("cafe").begins("cafe\u0301s"));
}

TEST(WordPattern, ResemblesWordsWithinItsThreshold) {
  EXPECT_TRUE(WordPattern("dolyy").resembles("dolly"));
  EXPECT_TRUE(WordPattern("dolly").resembles("dolly"));
  EXPECT_FALSE(WordPattern("doly").resembles("dolly"));
  EXPECT_FALSE(WordPattern("handheldd").resembles("handhexx"));
  EXPECT_TRUE(WordPattern("handhelddd").resembles("handheld"));
}

}  // namespace
}  // namespace tq
