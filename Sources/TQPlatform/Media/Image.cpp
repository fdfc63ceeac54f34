#include "TQPlatform/Media/Image.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <turbojpeg.h>

#include "TQPlatform/Media/ImageStorage.hpp"
#include "TQPlatform/Media/JPEGColours.hpp"
#include "TQPlatform/Media/ToneMap.hpp"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace tq {

namespace {

struct Sampling {
  AVPixelFormat format;
  int turbo;
};

constexpr Sampling samplings[] = {
    {AV_PIX_FMT_YUV420P, TJSAMP_420}, {AV_PIX_FMT_YUV444P, TJSAMP_444}, {AV_PIX_FMT_YUV422P, TJSAMP_422},
    {AV_PIX_FMT_YUV440P, TJSAMP_440}, {AV_PIX_FMT_YUV411P, TJSAMP_411}, {AV_PIX_FMT_GRAY8, TJSAMP_GRAY},
};

struct CloseTurbo {
  void operator()(void* handle) const { tjDestroy(handle); }
};
using Turbo = std::unique_ptr<void, CloseTurbo>;

libav::Owned<AVFrame> allocate(int width, int height, AVPixelFormat format) {
  if (width < 1 || height < 1 || std::int64_t{width} * height > libav::largestPicture)
    throw ImageError("the picture's size is out of range");
  auto frame = libav::makeFrame();
  frame->width = width;
  frame->height = height;
  frame->format = format;
  frame->color_range = AVCOL_RANGE_JPEG;
  frame->colorspace = AVCOL_SPC_BT470BG;
  if (av_frame_get_buffer(frame.get(), 0) < 0) throw ImageError("not enough memory for the picture");
  return frame;
}

/// The formats whose name says "full range" are deprecated spellings; libswscale wants the plain ones.
AVPixelFormat plainFormat(const AVFrame& frame, bool& fullRange) {
  fullRange = frame.color_range == AVCOL_RANGE_JPEG;
  constexpr std::pair<AVPixelFormat, AVPixelFormat> spellings[] = {
      {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUV420P}, {AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUV422P},
      {AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_YUV444P}, {AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUV440P},
      {AV_PIX_FMT_YUVJ411P, AV_PIX_FMT_YUV411P},
  };
  for (const auto& [old, plain] : spellings) {
    if (frame.format != old) continue;
    fullRange = true;
    return plain;
  }
  return static_cast<AVPixelFormat>(frame.format);
}

/// The table of libswscale for the frame's matrix.
int matrixOf(const AVFrame& frame) {
  switch (frame.colorspace) {
    case AVCOL_SPC_BT709: return SWS_CS_ITU709;
    case AVCOL_SPC_FCC: return SWS_CS_FCC;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M: return SWS_CS_ITU601;
    case AVCOL_SPC_SMPTE240M: return SWS_CS_SMPTE240M;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return SWS_CS_BT2020;
    default: return frame.width >= 1280 || frame.height >= 720 ? SWS_CS_ITU709 : SWS_CS_ITU601;
  }
}

bool isRGB(const AVFrame& frame) {
  return (av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))->flags & AV_PIX_FMT_FLAG_RGB) != 0;
}

bool hasChroma(const AVFrame& frame) {
  return !isRGB(frame) && av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))->nb_components >= 3;
}

/// How libswscale changes a picture. Equal colours on both sides leave the numbers as they are; different matrices send
/// planes through red, green and blue, which takes many times as long.
struct Conversion {
  AVPixelFormat format;
  int filter;
  VideoColours from, to;
};

constexpr VideoColours coloursOfJPEG{.matrix = SWS_CS_ITU601, .fullRange = true};

libav::Owned<AVFrame> convertAtOnce(const AVFrame& source, int width, int height, const Conversion& conversion) {
  bool ignored = false;
  const AVPixelFormat sourceFormat = plainFormat(source, ignored);
  if (!sws_isSupportedInput(sourceFormat)) throw ImageError("the pixel format is not known");
  auto target = allocate(width, height, conversion.format);
  libav::Owned<SwsContext> scaler(sws_alloc_context());
  if (!scaler) throw std::bad_alloc();
  const auto& [format, filter, from, to] = conversion;
  // The ranges must be known when the scaler is set up: only then does it see that equal formats need work too.
  const std::pair<const char*, std::int64_t> settings[] = {
      {"srcw", source.width},
      {"srch", source.height},
      {"src_format", sourceFormat},
      {"src_range", from.fullRange},
      {"dstw", width},
      {"dsth", height},
      {"dst_format", format},
      {"dst_range", to.fullRange},
      {"sws_flags", filter | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP}};
  for (const auto& [name, value] : settings)
    av_opt_set_int(scaler.get(), name, value, 0);
  if (sws_init_context(scaler.get(), nullptr, nullptr) < 0) throw ImageError("the picture cannot be scaled");
  sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(from.matrix), from.fullRange,
                           sws_getCoefficients(to.matrix), to.fullRange, 0, 1 << 16, 1 << 16);
  if (sws_scale(scaler.get(), source.data, source.linesize, 0, source.height, target->data, target->linesize) != height)
    throw ImageError("the picture cannot be scaled");
  return target;
}

/// A size between `from` and `to` that is a multiple of `to`, so that no sample straddles two of the final ones.
int onTheWay(int from, int to, int steepest) {
  while (to > 0 && std::int64_t{to} * steepest < from)
    to *= 2;
  return to;
}

/// In several steps where the picture shrinks much: for filters that wide libswscale takes two steps of its own, and
/// they stretch the range of the levels twice.
libav::Owned<AVFrame> convert(const AVFrame& source, int width, int height, const Conversion& conversion) {
  constexpr int steepest = 32;
  const int nextWidth = onTheWay(source.width, width, steepest), nextHeight = onTheWay(source.height, height, steepest);
  auto next = convertAtOnce(source, nextWidth, nextHeight, conversion);
  if (nextWidth == width && nextHeight == height) return next;
  return convert(*next, width, height, {conversion.format, conversion.filter, conversion.to, conversion.to});
}

/// The planes of a JPEG, with or without subsampled chroma.
libav::Owned<AVFrame> jpegPlanes(const AVFrame& source, int width, int height, bool subsampled) {
  const AVPixelFormat format = subsampled ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV444P;
  const VideoColours colours = coloursOf(source);
  if (!hasChroma(source) || colours == coloursOfJPEG)
    return convert(source, width, height, {format, SWS_BICUBIC, colours, coloursOfJPEG});
  // Ten bits keep what the scaler has computed; the numbers pass it as they are, whatever range they have.
  const VideoColours untouched{.matrix = colours.matrix};
  const AVPixelFormat tenBits = subsampled ? AV_PIX_FMT_YUV420P10 : AV_PIX_FMT_YUV444P10;
  const auto scaled = convert(source, width, height, {tenBits, SWS_BICUBIC, untouched, untouched});
  auto target = allocate(width, height, format);
  toJPEGColours(*scaled, colours, *target);
  return target;
}

/// The planes of a JPEG for a picture that is brighter than ordinary displays.
libav::Owned<AVFrame> toneMappedPlanes(const AVFrame& source, int width, int height, bool subsampled) {
  const auto bright = convert(source, width, height, {AV_PIX_FMT_RGB48, SWS_BICUBIC, coloursOf(source), coloursOfJPEG});
  auto display = allocate(width, height, AV_PIX_FMT_RGB24);
  toneMap(*bright, source.color_trc, *display);
  return jpegPlanes(*display, width, height, subsampled);
}

/// Height of a plane in samples and its width, for 8-bit planar formats.
std::pair<int, int> planeSize(const AVFrame& frame, int plane) {
  const auto* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  if (plane == 0) return {frame.width, frame.height};
  return {AV_CEIL_RSHIFT(frame.width, description->log2_chroma_w),
          AV_CEIL_RSHIFT(frame.height, description->log2_chroma_h)};
}

int planeCount(const AVFrame& frame) {
  return av_pix_fmt_count_planes(static_cast<AVPixelFormat>(frame.format));
}

libav::Owned<AVFrame> oriented(libav::Owned<AVFrame> stored, Orientation orientation) {
  if (orientation.upright()) return stored;
  const auto [transposed, mirroredX, mirroredY] = orientation;
  auto target = allocate(transposed ? stored->height : stored->width, transposed ? stored->width : stored->height,
                         static_cast<AVPixelFormat>(stored->format));
  for (int plane = 0; plane < planeCount(*target); ++plane) {
    const auto [width, height] = planeSize(*target, plane);
    const std::ptrdiff_t stride = stored->linesize[plane];
    const std::ptrdiff_t alongRow = (transposed ? stride : 1) * (mirroredX ? -1 : 1);
    const std::ptrdiff_t alongColumn = (transposed ? 1 : stride) * (mirroredY ? -1 : 1);
    const std::uint8_t* corner = stored->data[plane];
    if (mirroredX) corner -= alongRow * (width - 1);
    if (mirroredY) corner -= alongColumn * (height - 1);
    for (int row = 0; row < height; ++row) {
      std::uint8_t* to = target->data[plane] + std::ptrdiff_t{target->linesize[plane]} * row;
      const std::uint8_t* from = corner + alongColumn * row;
      for (int column = 0; column < width; ++column, from += alongRow)
        *to++ = *from;
    }
  }
  return target;
}

/// The encoder reads whole chroma samples: an odd last column or row of luma is repeated for it.
void padLuma(AVFrame& frame) {
  const std::ptrdiff_t stride = frame.linesize[0];
  const int paddedWidth = FFALIGN(frame.width, 2);
  if (paddedWidth > frame.width)
    for (int row = 0; row < frame.height; ++row) {
      std::uint8_t* line = frame.data[0] + stride * row;
      line[frame.width] = line[frame.width - 1];
    }
  if (frame.height % 2 != 0) {
    const std::uint8_t* last = frame.data[0] + stride * (frame.height - 1);
    std::copy_n(last, paddedWidth, frame.data[0] + stride * frame.height);
  }
}

Image imageOf(libav::Owned<AVFrame> frame, bool encodable) {
  return Image(std::make_shared<Image::Storage>(Image::Storage{std::move(frame), {}, encodable}));
}

int turboSampling(const AVFrame& frame) {
  for (const Sampling& sampling : samplings)
    if (sampling.format == frame.format) return sampling.turbo;
  throw ImageError("JPEG encoding failed");
}

}  // namespace

VideoColours coloursOf(const AVFrame& frame) {
  VideoColours colours{.matrix = matrixOf(frame)};
  const AVPixelFormat format = plainFormat(frame, colours.fullRange);
  colours.depth = av_pix_fmt_desc_get(format)->comp[0].depth;
  return colours;
}

Orientation Orientation::fromMatrix(const std::array<std::int32_t, 9>& matrix) {
  const std::int64_t a = matrix[0], b = matrix[1], c = matrix[3], d = matrix[4];
  if (std::abs(a) + std::abs(d) >= std::abs(b) + std::abs(c)) return {false, a < 0, d < 0};
  return {true, c < 0, b < 0};
}

Orientation Orientation::of(const AVStream& stream) {
  std::size_t size = 0;
  const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
  std::array<std::int32_t, 9> values{};
  if (!matrix || size < sizeof(values)) return {};
  std::memcpy(values.data(), matrix, sizeof(values));
  return fromMatrix(values);
}

std::optional<int> Orientation::clockwise() const {
  if (transposed == (mirroredX == mirroredY)) return std::nullopt;
  return (transposed ? 90 : 0) + (mirroredY ? 180 : 0);
}

int Image::width() const {
  return storage_->orientation.transposed ? storage_->frame->height : storage_->frame->width;
}

int Image::height() const {
  return storage_->orientation.transposed ? storage_->frame->width : storage_->frame->height;
}

std::optional<Image> Image::decodeJPEG(ByteView jpeg) {
  const Turbo turbo(tjInitDecompress());
  int width = 0, height = 0, sampling = 0, colours = 0;
  if (!turbo || tjDecompressHeader3(turbo.get(), jpeg.data(), static_cast<unsigned long>(jpeg.size()), &width, &height,
                                    &sampling, &colours) != 0)
    return std::nullopt;
  const auto known = std::ranges::find(samplings, sampling, &Sampling::turbo);
  if (known == std::end(samplings) || (colours != TJCS_YCbCr && colours != TJCS_GRAY)) return std::nullopt;
  if (std::int64_t{width} * height > libav::largestPicture) return std::nullopt;
  auto frame = allocate(width, height, known->format);
  const int status = tjDecompressToYUVPlanes(turbo.get(), jpeg.data(), static_cast<unsigned long>(jpeg.size()),
                                             frame->data, width, frame->linesize, height, TJFLAG_LIMITSCANS);
  if (status != 0 && tjGetErrorCode(turbo.get()) == TJERR_FATAL) return std::nullopt;
  return imageOf(std::move(frame), true);
}

Image Image::fromRGB(int width, int height, ByteView pixels) {
  auto frame = allocate(width, height, AV_PIX_FMT_RGB24);
  const std::size_t rowBytes = std::size_t{3} * static_cast<std::size_t>(width);
  if (pixels.size() != rowBytes * static_cast<std::size_t>(height))
    throw ImageError("the picture's size does not match its pixels");
  for (int row = 0; row < height; ++row)
    std::memcpy(frame->data[0] + std::ptrdiff_t{frame->linesize[0]} * row,
                pixels.data() + rowBytes * static_cast<std::size_t>(row), rowBytes);
  return imageOf(std::move(frame), false);
}

Image Image::scaled(int width, int height) const {
  const auto [transposed, mirroredX, mirroredY] = storage_->orientation;
  // A mirrored picture of odd size would put its chroma half a sample beside its luma.
  const bool odd = (width % 2 != 0 && mirroredX) || (height % 2 != 0 && mirroredY);
  const int storedWidth = transposed ? height : width;
  const int storedHeight = transposed ? width : height;
  auto stored = isHighDynamicRange(*storage_->frame)
                    ? toneMappedPlanes(*storage_->frame, storedWidth, storedHeight, !odd)
                    : jpegPlanes(*storage_->frame, storedWidth, storedHeight, !odd);
  auto frame = oriented(std::move(stored), storage_->orientation);
  padLuma(*frame);
  return imageOf(std::move(frame), true);
}

Bytes Image::luma(int width, int height) const {
  const bool transposed = storage_->orientation.transposed;
  VideoColours colours = coloursOf(*storage_->frame);
  // Grey takes the luma as it is; a matrix would only send it through red, green and blue.
  if (!isRGB(*storage_->frame)) colours.matrix = coloursOfJPEG.matrix;
  auto stored = convert(*storage_->frame, transposed ? height : width, transposed ? width : height,
                        {AV_PIX_FMT_GRAY8, SWS_AREA, colours, coloursOfJPEG});
  const auto frame = oriented(std::move(stored), storage_->orientation);
  Bytes result;
  result.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (int row = 0; row < height; ++row) {
    const std::uint8_t* line = frame->data[0] + std::ptrdiff_t{frame->linesize[0]} * row;
    result.insert(result.end(), line, line + width);
  }
  return result;
}

Bytes Image::jpeg(double quality) const {
  if (!storage_->encodable) return scaled(width(), height()).jpeg(quality);
  const Turbo turbo(tjInitCompress());
  if (!turbo) throw ImageError("could not create JPEG encoder");
  const int level = quality > 0 ? std::clamp(static_cast<int>(std::lround(std::min(quality, 1.0) * 100)), 1, 100) : 1;
  const AVFrame& frame = *storage_->frame;
  const std::uint8_t* planes[] = {frame.data[0], frame.data[1], frame.data[2]};
  unsigned char* bytes = nullptr;
  unsigned long count = 0;
  const int status = tjCompressFromYUVPlanes(turbo.get(), planes, frame.width, frame.linesize, frame.height,
                                             turboSampling(frame), &bytes, &count, level, 0);
  const std::unique_ptr<unsigned char, decltype(&tjFree)> owner(bytes, &tjFree);
  if (status != 0) throw ImageError("JPEG encoding failed");
  return Bytes(bytes, bytes + count);
}

}  // namespace tq
