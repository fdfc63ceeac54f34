#include <gtest/gtest.h>

#include "TQDescription/SearchEngine.hpp"

namespace tq {
namespace {

using Words = std::vector<std::string>;

TEST(Tokenize, DropsWordsThatSayNothing) {
  EXPECT_EQ(SearchEngine::tokenize("shows me the clip"), Words{"shows"});
}

TEST(Tokenize, KeepsHyphenatedWordsWhole) {
  EXPECT_EQ(SearchEngine::tokenize("golden-hour, dusk"), (Words{"golden-hour", "dusk"}));
}

}  // namespace
}  // namespace tq
