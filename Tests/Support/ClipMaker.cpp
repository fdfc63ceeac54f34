#include "Support/ClipMaker.hpp"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <turbojpeg.h>
#include <unistd.h>

#include "TQPlatform/Digest.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"

namespace tq::test {

namespace fs = std::filesystem;

namespace {

fs::path clipFolder() {
  const char* named = std::getenv("TARQUEL_TEST_CLIPS");
  fs::path folder = named && *named ? fs::path(named)
                                    : fs::temp_directory_path() / ("tarquel-test-clips-" + std::to_string(getuid()));
  fs::create_directories(folder);
  return folder;
}

std::string keyOf(const Arguments& arguments) {
  SHA256 digest;
  for (const std::string& argument : arguments) {
    digest.update(viewOf(argument));
    digest.update(viewOf(std::string_view("\0", 1)));
  }
  return digest.finishHex();
}

/// A name that no other test process uses.
std::string uniquePrefix() {
  static std::atomic<int> made = 0;
  return "making-" + std::to_string(getpid()) + "-" + std::to_string(++made) + "-";
}

std::uint32_t bigEndian(std::int64_t value) {
  return static_cast<std::uint32_t>(value);
}

void put(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t index = 0; index < 4; ++index)
    bytes.at(at + index) = static_cast<std::uint8_t>(value >> (24 - 8 * index));
}

/// Positions of the four letters of a box type that stands in the movie's tables.
std::vector<std::size_t> positionsOf(const Bytes& movie, std::string_view type) {
  std::vector<std::size_t> positions;
  for (auto at = movie.begin();;) {
    at = std::search(at, movie.end(), type.begin(), type.end());
    if (at == movie.end()) break;
    positions.push_back(static_cast<std::size_t>(at - movie.begin()));
    ++at;
  }
  if (positions.empty()) throw std::runtime_error("no box " + std::string(type));
  return positions;
}

}  // namespace

fs::path makeClip(const Arguments& arguments, std::string_view extension) {
  Arguments key = arguments;
  key.emplace_back(extension);
  const std::string name = keyOf(key) + "." + std::string(extension);
  const fs::path clip = clipFolder() / name;
  if (fs::exists(clip)) return clip;
  const fs::path unfinished = clipFolder() / (uniquePrefix() + name);
  Arguments command{"-v", "error", "-nostdin", "-y"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  command.push_back("file:" + unfinished.string());
  const ChildResult result = runChild("/usr/bin/ffmpeg", command, {.time = std::chrono::seconds(100)});
  if (result.timedOut || result.status != 0)
    throw std::runtime_error("ffmpeg failed: " +
                             std::accumulate(command.begin(), command.end(), std::string(),
                                             [](const auto& a, const auto& b) { return a + " " + b; }));
  fs::rename(unfinished, clip);
  return clip;
}

fs::path makeVideo(const std::string& picture, Arguments encoding, std::string_view extension) {
  encoding.insert(encoding.begin(), {"-f", "lavfi", "-i", picture});
  return makeClip(encoding, extension);
}

std::string movingPicture(double seconds, int framesPerSecond, std::string_view size) {
  return "testsrc2=s=" + std::string(size) + ":r=" + std::to_string(framesPerSecond) + ":d=" + std::to_string(seconds);
}

std::string numberedPicture(double seconds, int framesPerSecond) {
  return "color=black:s=192x32:r=" + std::to_string(framesPerSecond) + ":d=" + std::to_string(seconds) +
         ",format=gray,geq=lum='255*mod(floor(N/pow(2,floor(X/16))),2)',format=yuv420p";
}

int numberShown(const Image& image) {
  const Bytes bars = image.luma(12, 1);
  int number = 0;
  for (std::size_t bit = 0; bit < bars.size(); ++bit)
    if (bars[bit] > 127) number |= 1 << bit;
  return number;
}

std::string fourQuarters(int seconds, std::string_view quarter) {
  const auto grey = [&](std::string_view level) {
    return "color=0x" + std::string(level) + std::string(level) + std::string(level) + ":s=" + std::string(quarter) +
           ":r=10:d=" + std::to_string(seconds);
  };
  return grey("20") + "[a];" + grey("60") + "[b];" + grey("A0") + "[c];" + grey("E0") +
         "[d];[a][b]hstack[e];[c][d]hstack[f];[e][f]vstack";
}

std::string cornersByBrightness(const Image& image) {
  const Bytes quarters = image.luma(2, 2);
  std::array<std::size_t, 4> order{0, 1, 2, 3};
  std::ranges::sort(order, {}, [&](std::size_t corner) { return quarters[corner]; });
  constexpr std::array<std::string_view, 4> names{"tl", "tr", "bl", "br"};
  std::string text;
  for (const std::size_t corner : order)
    text += (text.empty() ? "" : " ") + std::string(names[corner]);
  return text;
}

Arguments h264(Arguments more) {
  Arguments all{"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-sc_threshold", "0"};
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

Arguments hevc(Arguments more) {
  Arguments all{"-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=none", "-tag:v", "hvc1"};
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

Bytes withDuration(Bytes movie, std::uint32_t duration) {
  for (const std::string_view header : {"mvhd", "mdhd"})
    for (const std::size_t at : positionsOf(movie, header))
      put(movie, at + 20, duration);
  for (const std::size_t at : positionsOf(movie, "tkhd"))
    put(movie, at + 24, duration);
  return movie;
}

Bytes withMatrix(Bytes movie, const std::array<std::int32_t, 9>& matrix) {
  std::size_t at = positionsOf(movie, "tkhd").front() + 44;
  for (const std::int32_t value : matrix) {
    put(movie, at, bigEndian(value));
    at += 4;
  }
  return movie;
}

std::array<std::int32_t, 9> rotation(int degrees) {
  constexpr std::int32_t one = 1 << 16, unit = 1 << 30;
  switch (degrees) {
    case 90: return {0, one, 0, -one, 0, 0, 0, 0, unit};
    case 180: return {-one, 0, 0, 0, -one, 0, 0, 0, unit};
    case 270: return {0, -one, 0, one, 0, 0, 0, 0, unit};
    default: return {one, 0, 0, 0, one, 0, 0, 0, unit};
  }
}

Bytes readClip(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

fs::path writeClip(const fs::path& file, ByteView content) {
  std::ofstream(file, std::ios::binary) << textOf(content);
  return file;
}

Colour colourAt(ByteView jpeg, int x, int y) {
  const tjhandle turbo = tjInitDecompress();
  int width = 0, height = 0, sampling = 0, space = 0;
  const auto size = static_cast<unsigned long>(jpeg.size());
  tjDecompressHeader3(turbo, jpeg.data(), size, &width, &height, &sampling, &space);
  Bytes pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
  const int status = tjDecompress2(turbo, jpeg.data(), size, pixels.data(), width, 0, height, TJPF_RGB, 0);
  tjDestroy(turbo);
  if (status != 0) throw std::runtime_error("no JPEG");
  const std::size_t at =
      (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 3;
  return {pixels.at(at), pixels.at(at + 1), pixels.at(at + 2)};
}

int distance(const Colour& left, const Colour& right) {
  int largest = 0;
  for (std::size_t part = 0; part < 3; ++part)
    largest = std::max(largest, std::abs(left[part] - right[part]));
  return largest;
}

}  // namespace tq::test
