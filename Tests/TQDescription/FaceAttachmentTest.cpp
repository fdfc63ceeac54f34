#include <gtest/gtest.h>

#include "TQDescription/FaceAttachment.hpp"

namespace tq {
namespace {

const FaceBox face{.x = 0.25, .y = 0.5, .width = 0.1, .height = 0.2, .confidence = 0.9};
const FaceBox otherFace{.x = 0.75, .y = 0.5, .width = 0.1, .height = 0.2, .confidence = 0.8};

DescriptionResult withShots(std::size_t count) {
  DescriptionResult result;
  result.summary = "A street.";
  for (std::size_t index = 0; index < count; ++index)
    result.shots.push_back({.timecode = std::to_string(index)});
  return result;
}

TEST(AttachFaces, SetsTheShotOfTheSamePosition) {
  DescriptionResult expected = withShots(3);
  expected.shots[0].faces = {{face}};
  expected.shots[2].faces = {{face, otherFace}};
  EXPECT_EQ(attachFaces(withShots(3), {{0, {face}}, {2, {face, otherFace}}}), expected);
}

TEST(AttachFaces, ReplacesWhatWasThereEvenByNothing) {
  DescriptionResult result = withShots(2);
  result.shots[0].faces = {{face}};
  result.shots[1].faces = {{face}};
  result = attachFaces(result, {{0, {}}, {1, {otherFace}}});
  EXPECT_EQ(result.shots[0].faces, std::vector<FaceBox>{});
  EXPECT_EQ(result.shots[1].faces, std::vector<FaceBox>{otherFace});
}

TEST(AttachFaces, AnEmptyMapChangesNothing) {
  DescriptionResult result = withShots(1);
  result.shots[0].faces = {{face}};
  EXPECT_EQ(attachFaces(result, {}), result);
}

TEST(AttachFaces, LeavesOutIndicesWithoutAShot) {
  EXPECT_EQ(attachFaces(withShots(3), {{7, {face}}, {3, {face}}, {-1, {face}}}), withShots(3));
}

TEST(AttachFaces, ShotsWithoutAFrameHaveNoDetection) {
  const DescriptionResult result = attachFaces(withShots(3), {{0, {face}}});
  EXPECT_FALSE(result.shots[1].faces);
  EXPECT_FALSE(result.shots[2].faces);
}

TEST(AttachOnScreenText, SetsTheShotOfTheSamePosition) {
  const DescriptionResult result = attachOnScreenText(withShots(2), {{1, {"SALE", "Sale"}}});
  EXPECT_FALSE(result.shots[0].onScreenText);
  EXPECT_EQ(result.shots[1].onScreenText, (std::vector<std::string>{"SALE", "Sale"}));
}

TEST(AttachOnScreenText, AnEmptyListLeavesTheShotAsItWas) {
  DescriptionResult result = withShots(2);
  result.shots[0].onScreenText = {{"EXIT"}};
  EXPECT_EQ(attachOnScreenText(result, {{0, {}}, {1, {}}}), result);
}

TEST(AttachOnScreenText, ReplacesWhatWasThere) {
  DescriptionResult result = withShots(1);
  result.shots[0].onScreenText = {{"EXIT"}};
  EXPECT_EQ(attachOnScreenText(result, {{0, {"OPEN"}}}).shots[0].onScreenText, std::vector<std::string>{"OPEN"});
}

TEST(AttachOnScreenText, LeavesOutIndicesWithoutAShot) {
  EXPECT_EQ(attachOnScreenText(withShots(1), {{1, {"A"}}, {-1, {"B"}}}), withShots(1));
}

}  // namespace
}  // namespace tq
