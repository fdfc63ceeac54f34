#include <gtest/gtest.h>
#include <limits>

#include "TQDescription/FileSizeText.hpp"

namespace tq {
namespace {

struct Size {
  std::int64_t bytes;
  std::string text;
};

class FileSizeText : public testing::TestWithParam<Size> {};

TEST_P(FileSizeText, ReadsAsPeopleSayIt) {
  EXPECT_EQ(fileSizeText(GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, FileSizeText,
    testing::Values(Size{0, "Zero KB"}, Size{999, "1 KB"}, Size{499, "0 KB"}, Size{500, "1 KB"}, Size{1'000, "1 KB"},
                    Size{1'499, "1 KB"}, Size{1'500, "2 KB"}, Size{412'000, "412 KB"}, Size{999'499, "999 KB"},
                    Size{999'500, "1 MB"}, Size{1'000'000, "1 MB"}, Size{1'200'000, "1.2 MB"},
                    Size{1'249'999, "1.2 MB"}, Size{1'250'000, "1.3 MB"}, Size{10'049'999, "10 MB"},
                    Size{999'949'999, "999.9 MB"}, Size{999'950'000, "1 GB"}, Size{4'294'967'296, "4.29 GB"},
                    Size{4'300'000'000, "4.3 GB"}, Size{4'050'000'000, "4.05 GB"}, Size{5'000'000'000, "5 GB"},
                    Size{1'500'000'000'000, "1500 GB"},
                    Size{std::numeric_limits<std::int64_t>::max(), "9223372036.85 GB"}, Size{-1'200'000, "-1.2 MB"},
                    Size{std::numeric_limits<std::int64_t>::min(), "-9223372036.85 GB"}));

}  // namespace
}  // namespace tq
