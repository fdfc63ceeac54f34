#pragma once

struct AVFrame;

namespace tq {

/// What the numbers of a video's planes mean.
struct VideoColours {
  int matrix = 0;          ///< a SWS_CS_ constant of libswscale
  bool fullRange = false;  ///< black is 0 and white the largest number
  int depth = 8;           ///< bits of a number

  bool operator==(const VideoColours&) const = default;
};

/// Those of a frame. Untagged video is BT.709 in high definition and BT.601 below.
VideoColours coloursOf(const AVFrame& frame);

/// Brings planes of video to the colours of a JPEG, which are those of ITU-R BT.601 in full range (JFIF 1.02), rounded
/// to the nearest number. Colours that only the video's range holds become the nearest ones in each plane.
///
/// `source`: YUV420P10 or YUV444P10, in which numbers of `colours.depth` bits stand shifted to ten. `target`: of the
/// same size and subsampling with 8 bits. Both chroma planes need no luma for this; luma takes chroma in between the
/// samples from the nearest four, 9:3:3:1, which is how JPEG decoders fill it in, so that the colours they show are the
/// video's.
void toJPEGColours(const AVFrame& source, const VideoColours& colours, AVFrame& target);

}  // namespace tq
