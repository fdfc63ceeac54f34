#include "TQPlatform/Media/MovieEdits.hpp"

#include <algorithm>
#include <array>
#include <span>

namespace tq::libav {

namespace {

std::uint32_t number(const std::uint8_t* at) {
  return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
}

/// The type of a box as a number.
constexpr std::uint32_t type(const char (&letters)[5]) {
  std::uint32_t value = 0;
  for (int index = 0; index < 4; ++index)
    value = value << 8 | static_cast<std::uint8_t>(letters[index]);
  return value;
}

/// A box at the top level: where its content lies.
struct Box {
  std::uint32_t kind;
  std::int64_t begin, end;
};

/// The box at `offset`; nothing at the end of the file or where there is none.
std::optional<Box> boxAt(const FileReader& file, std::int64_t offset, std::int64_t fileSize) {
  std::array<std::uint8_t, 16> header{};
  const std::size_t got = file.readAt(offset, header);
  if (got < 8) return std::nullopt;
  std::uint64_t size = number(header.data()), headerSize = 8;
  if (size == 1) {
    size = std::uint64_t{number(header.data() + 8)} << 32 | number(header.data() + 12);
    headerSize = 16;
  }
  const auto left = static_cast<std::uint64_t>(fileSize - offset);
  if (size == 0 || size > left) size = left;
  if (size < headerSize || got < headerSize) return std::nullopt;
  return Box{.kind = number(header.data() + 4),
             .begin = offset + static_cast<std::int64_t>(headerSize),
             .end = offset + static_cast<std::int64_t>(size)};
}

/// What a movie's tables spell out.
struct Tally {
  std::int64_t edits = 0, samples = 0;
  bool compressed = false;

  /// `at`: the letters of a type, with the size of the box before them and twelve bytes after them.
  void look(const std::uint8_t* at) {
    switch (number(at)) {
      case type("elst"): edits = std::min(edits + editsIn(number(at - 4)), mostEdits); break;
      case type("cmov"): compressed = true; break;
      // Version, flags and another number, then both count the samples.
      case type("stsz"):
      case type("stz2"): samples = std::max(samples, std::int64_t{std::min(number(at + 12), mostSamples)}); break;
      default: break;
    }
  }

 private:
  static std::int64_t editsIn(std::uint32_t boxSize) {
    constexpr std::uint32_t header = 16, edit = 12;
    return boxSize < header ? 0 : (boxSize - header) / edit;
  }

  static constexpr std::int64_t mostEdits = std::int64_t{1} << 32;
  static constexpr std::uint32_t mostSamples = std::uint32_t{1} << 24;  // libavformat makes no index of more
};

void tally(const FileReader& file, const Box& box, const Watch& watch, Tally& sum) {
  constexpr std::int64_t before = 4, after = 16;  // bytes that `look` takes around the first letter
  std::array<std::uint8_t, 64 * 1024> buffer;
  for (std::int64_t offset = box.begin; offset < box.end;) {
    watch.check();
    const auto wanted = std::min<std::int64_t>(std::ssize(buffer), box.end - offset);
    const auto got =
        static_cast<std::int64_t>(file.readAt(offset, std::span(buffer).first(static_cast<std::size_t>(wanted))));
    for (std::int64_t at = before; at + after <= got; ++at)
      sum.look(buffer.data() + at);
    if (got < std::ssize(buffer)) return;
    offset += got - before - after + 1;
  }
}

}  // namespace

std::optional<std::int64_t> editingWork(const FileReader& file, const Watch& watch) {
  constexpr std::array passedOver{type("mdat"), type("free"), type("skip"), type("wide")};
  constexpr std::int64_t largestTables = std::int64_t{1} << 30;  // bytes: ten times those of ten hours
  const std::int64_t fileSize = file.sizeNow();
  Tally sum;
  bool tablesFound = false;
  for (auto box = boxAt(file, 0, fileSize); box; box = boxAt(file, box->end, fileSize)) {
    watch.check();
    tablesFound = tablesFound || box->kind == type("moov");
    if (std::ranges::find(passedOver, box->kind) != passedOver.end()) continue;
    if (box->end - box->begin > largestTables) return std::nullopt;
    tally(file, *box, watch, sum);
  }
  if (!tablesFound || sum.compressed) return std::nullopt;
  return sum.edits * sum.samples;
}

}  // namespace tq::libav
