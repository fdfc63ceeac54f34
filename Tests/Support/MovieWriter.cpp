#include "Support/MovieWriter.hpp"

namespace tq::test {

namespace {

constexpr std::uint8_t levelStep = 20;

template <class Value>
Bytes bigEndian(Value value) {
  Bytes bytes;
  for (int shift = 8 * (static_cast<int>(sizeof(Value)) - 1); shift >= 0; shift -= 8)
    bytes.push_back(static_cast<std::uint8_t>(value >> shift & 0xFF));
  return bytes;
}

Bytes text(std::string_view letters) {
  return Bytes(letters.begin(), letters.end());
}

Bytes zeros(std::size_t count) {
  return Bytes(count, 0);
}

Bytes countedPairs(const Pairs& pairs) {
  Bytes bytes = bigEndian32(static_cast<std::uint32_t>(pairs.size()));
  for (const auto& [first, second] : pairs)
    bytes = std::move(bytes) + bigEndian32(first) + bigEndian32(second);
  return bytes;
}

Bytes trackHeader(const MovieTrack& track) {
  Bytes matrix;
  for (const std::uint32_t value : track.matrix)
    matrix = std::move(matrix) + bigEndian32(value);
  return fullBox("tkhd",
                 zeros(8) + bigEndian32(1) + zeros(4) + bigEndian32(track.duration) + zeros(16) + matrix +
                     bigEndian16(track.width) + zeros(2) + bigEndian16(track.height) + zeros(2),
                 7);
}

Bytes editList(const MovieTrack& track) {
  Bytes list = bigEndian32(static_cast<std::uint32_t>(track.edits.size()));
  for (const auto& [length, start] : track.edits)
    list = std::move(list) + bigEndian32(length) + bigEndian32(start) + bigEndian32(0x10000);
  return track.edits.empty() ? Bytes() : box("edts", fullBox("elst", list));
}

/// Uncompressed video of 24 bits a pixel.
Bytes sampleDescription(const MovieTrack& track) {
  const Bytes entry =
      box("raw ", zeros(6) + bigEndian16(1) + zeros(16) + bigEndian16(track.width) + bigEndian16(track.height) +
                      zeros(12) + bigEndian16(1) + zeros(32) + bigEndian16(24) + bigEndian16(0xFFFF));
  return fullBox("stsd", bigEndian32(1) + entry);
}

Bytes sampleTable(const MovieTrack& track, std::uint32_t offset) {
  Bytes table = sampleDescription(track) + fullBox("stts", countedPairs(track.times));
  if (!track.delays.empty()) table = std::move(table) + fullBox("ctts", countedPairs(track.delays));
  if (!track.keyFrames.empty()) {
    Bytes list = bigEndian32(static_cast<std::uint32_t>(track.keyFrames.size()));
    for (const std::uint32_t number : track.keyFrames)
      list = std::move(list) + bigEndian32(number);
    table = std::move(table) + fullBox("stss", list);
  }
  return box("stbl",
             std::move(table) +
                 fullBox("stsc", bigEndian32(1) + bigEndian32(1) + bigEndian32(track.sampleCount) + bigEndian32(1)) +
                 fullBox("stsz", bigEndian32(track.sampleSize) + bigEndian32(track.sampleCount)) +
                 fullBox("stco", bigEndian32(1) + bigEndian32(offset)));
}

}  // namespace

Bytes bigEndian16(std::uint16_t value) {
  return bigEndian(value);
}
Bytes bigEndian32(std::uint32_t value) {
  return bigEndian(value);
}
Bytes bigEndian64(std::uint64_t value) {
  return bigEndian(value);
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

Bytes box(std::string_view type, const Bytes& content) {
  return bigEndian32(static_cast<std::uint32_t>(content.size() + 8)) + text(type) + content;
}

Bytes fullBox(std::string_view type, const Bytes& content, std::uint32_t versionAndFlags) {
  return box(type, bigEndian32(versionAndFlags) + content);
}

Bytes trackBox(const MovieTrack& track, std::uint32_t offset) {
  const Bytes reference = track.dataReference.empty() ? fullBox("url ", {}, 1) : track.dataReference;
  const Bytes media =
      box("minf", fullBox("vmhd", zeros(8), 1) + box("dinf", fullBox("dref", bigEndian32(1) + reference)) +
                      sampleTable(track, offset));
  return box("trak", trackHeader(track) + editList(track) +
                         box("mdia", fullBox("mdhd", zeros(8) + bigEndian32(track.timescale) +
                                                         bigEndian32(track.duration) + zeros(4)) +
                                         fullBox("hdlr", text("mhlrvide") + zeros(13)) + media));
}

Bytes moovBox(const Bytes& tracks, std::uint32_t timescale, std::uint32_t duration) {
  const Bytes header =
      zeros(8) + bigEndian32(timescale) + bigEndian32(duration) + bigEndian32(0x10000) + zeros(72) + bigEndian32(2);
  return box("moov", fullBox("mvhd", header) + tracks);
}

Bytes picturesBox() {
  constexpr std::uint8_t pictures = 10;
  constexpr std::size_t pictureBytes = std::size_t{3} * 16 * 16;
  Bytes all;
  for (std::uint8_t number = 0; number < pictures; ++number)
    all.insert(all.end(), pictureBytes, static_cast<std::uint8_t>(levelStep * number));
  return box("mdat", all);
}

Bytes fileTypeBox() {
  return box("ftyp", text("qt  ") + bigEndian32(0) + text("qt  "));
}

Bytes movieOf(const MovieTrack& track) {
  const auto tables = [&](std::uint32_t offset) {
    return moovBox(trackBox(track, offset), track.timescale, track.duration);
  };
  constexpr std::size_t boxHeader = 8;
  const std::size_t offset = fileTypeBox().size() + tables(0).size() + boxHeader;
  return fileTypeBox() + tables(static_cast<std::uint32_t>(offset)) + picturesBox();
}

int pictureNumber(const Image& image) {
  return (image.luma(1, 1)[0] + levelStep / 2) / levelStep;
}

}  // namespace tq::test
