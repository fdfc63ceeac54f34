#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "TQDescription/Semantic/EmbeddingMath.hpp"

namespace tq {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using Vector = EmbeddingVector;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

TEST(EmbeddingMath, DotIsTheSumOfTheProducts) {
  EXPECT_EQ(EmbeddingMath::dot(Vector{1, 2, 3}, Vector{4, -5, 6}), 12.0);
}

TEST(EmbeddingMath, DotTakesInEveryElementWhateverTheLength) {
  for (std::size_t length = 1; length < 40; ++length) {
    Vector a(length);
    Vector b(length);
    double sum = 0;
    for (std::size_t index = 0; index < length; ++index) {
      a[index] = static_cast<float>(index + 1);
      b[index] = static_cast<float>(2 * index + 1);
      sum += static_cast<double>((index + 1) * (2 * index + 1));
    }
    EXPECT_EQ(EmbeddingMath::dot(a, b), sum) << length;
  }
}

TEST(EmbeddingMath, DotOfEmptyListsAndOfDifferentLengthsIsZero) {
  EXPECT_EQ(EmbeddingMath::dot(Vector{}, Vector{}), 0.0);
  EXPECT_EQ(EmbeddingMath::dot(Vector{1}, Vector{1, 2}), 0.0);
  EXPECT_EQ(EmbeddingMath::dot(Vector{1, 2}, Vector{}), 0.0);
}

TEST(EmbeddingMath, SumsAreTakenIn64Bits) {
  // In 32 bits the first sum would lose the 1, the second would be infinite.
  EXPECT_EQ(EmbeddingMath::dot(Vector{16777216, 1}, Vector{1, 1}), 16777217.0);
  EXPECT_EQ(EmbeddingMath::dot(Vector{1e38F, 1e38F}, Vector{10, 10}), 2 * (static_cast<double>(1e38F) * 10));
}

TEST(EmbeddingMath, CosineOfVectorsThatPointAlikeAcrossAndApart) {
  EXPECT_DOUBLE_EQ(EmbeddingMath::cosine(Vector{1, 2, 2}, Vector{2, 4, 4}), 1.0);
  EXPECT_DOUBLE_EQ(EmbeddingMath::cosine(Vector{1, 0}, Vector{0, 5}), 0.0);
  EXPECT_DOUBLE_EQ(EmbeddingMath::cosine(Vector{1, 2}, Vector{-3, -6}), -1.0);
  EXPECT_DOUBLE_EQ(EmbeddingMath::cosine(Vector{1, 1}, Vector{1, 0}), std::sqrt(0.5));
}

TEST(EmbeddingMath, CosineOfEmptyListsAndOfDifferentLengthsIsZero) {
  EXPECT_EQ(EmbeddingMath::cosine(Vector{}, Vector{}), 0.0);
  EXPECT_EQ(EmbeddingMath::cosine(Vector{1}, Vector{1, 0}), 0.0);
}

TEST(EmbeddingMath, CosineOfAZeroVectorWithAnythingIsZero) {
  EXPECT_EQ(EmbeddingMath::cosine(Vector{0, 0}, Vector{1, 2}), 0.0);
  EXPECT_EQ(EmbeddingMath::cosine(Vector{1, 2}, Vector{0, -0.0F}), 0.0);
  EXPECT_EQ(EmbeddingMath::cosine(Vector{0, 0}, Vector{0, 0}), 0.0);
}

TEST(EmbeddingMath, TheProductOfTheNormsDecidesWhatIsTooSmallForACosine) {
  EXPECT_EQ(EmbeddingMath::cosine(Vector{1e-6F}, Vector{0.9e-6F}), 0.0);
  EXPECT_DOUBLE_EQ(EmbeddingMath::cosine(Vector{1e-6F}, Vector{1.1e-6F}), 1.0);
  EXPECT_DOUBLE_EQ(EmbeddingMath::cosine(Vector{1e-20F}, Vector{1e10F}), 1.0);
  EXPECT_EQ(EmbeddingMath::cosine(1e-12, 1e-12, 1.0), 0.0) << "not above the limit";
}

TEST(EmbeddingMath, CosineWithWhatIsNotFiniteIsZero) {
  for (const float number : {infinity, -infinity, notANumber}) {
    EXPECT_EQ(EmbeddingMath::cosine(Vector{number, 1}, Vector{1, 1}), 0.0);
    EXPECT_EQ(EmbeddingMath::cosine(Vector{1, 1}, Vector{number, 1}), 0.0);
    EXPECT_EQ(EmbeddingMath::cosine(Vector{number, 1}, Vector{0, 0}), 0.0);
    EXPECT_EQ(EmbeddingMath::cosine(Vector{number, 1}, Vector{number, 1}), 0.0);
  }
}

TEST(EmbeddingMath, CosineOfTheLargestFloatsIsFinite) {
  constexpr float largest = std::numeric_limits<float>::max();
  EXPECT_DOUBLE_EQ(EmbeddingMath::cosine(Vector(4096, largest), Vector(4096, -largest)), -1.0);
}

TEST(EmbeddingMath, NormalizeGivesLengthOne) {
  EXPECT_THAT(EmbeddingMath::normalize(Vector{3, -4}), ElementsAre(0.6F, -0.8F));
  EXPECT_NEAR(EmbeddingMath::norm(EmbeddingMath::normalize(Vector(768, 7.0F))), 1.0, 1e-6);
}

TEST(EmbeddingMath, NormalizeOfAnEmptyListIsEmpty) {
  EXPECT_THAT(EmbeddingMath::normalize(Vector{}), IsEmpty());
}

TEST(EmbeddingMath, NormalizeOfWhatHasNoDirectionIsZeros) {
  EXPECT_THAT(EmbeddingMath::normalize(Vector{0, 0}), ElementsAre(0.0F, 0.0F));
  EXPECT_THAT(EmbeddingMath::normalize(Vector{1e-13F}), ElementsAre(0.0F));
  EXPECT_THAT(EmbeddingMath::normalize(Vector{2e-12F}), ElementsAre(1.0F));
  for (const float number : {infinity, -infinity, notANumber})
    EXPECT_THAT(EmbeddingMath::normalize(Vector{1, number, 2}), Each(0.0F));
}

}  // namespace
}  // namespace tq
