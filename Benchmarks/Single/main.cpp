// single-operations CLIP [--benchmark_...]: what one picture costs on its way from the decoder to a hash or a JPEG, and
// a digest. The picture is the clip's, as the decoder gives it.

#include <benchmark/benchmark.h>
#include <exception>
#include <filesystem>
#include <iostream>

#include "TQFrames/FrameImages.hpp"
#include "TQFrames/PerceptualHash.hpp"
#include "TQPlatform/Digest.hpp"
#include "TQPlatform/Media/ImageGenerator.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"

namespace {

using namespace tq;

constexpr int edge = 1568;
constexpr double quality = 0.85;

Image pictureOf(const std::filesystem::path& clip) {
  MediaAsset asset(clip);
  return ImageGenerator(asset).image(asset.duration() / 2);
}

void hashing(benchmark::State& state, const Image& picture) {
  for (auto _ : state)
    benchmark::DoNotOptimize(perceptualHash(picture));
}

void scaling(benchmark::State& state, const Image& picture) {
  for (auto _ : state)
    benchmark::DoNotOptimize(downscale(picture, edge));
}

void encoding(benchmark::State& state, const Image& picture) {
  const Image small = downscale(picture, edge);
  for (auto _ : state)
    benchmark::DoNotOptimize(jpegData(small, quality));
}

void decoding(benchmark::State& state, const Image& picture) {
  const Bytes jpeg = jpegData(downscale(picture, edge), quality);
  for (auto _ : state)
    benchmark::DoNotOptimize(Image::decodeJPEG(jpeg));
}

void digesting(benchmark::State& state) {
  const Bytes content(std::size_t{1} << 20, 0x5A);
  for (auto _ : state) {
    SHA256 digest;
    digest.update(content);
    benchmark::DoNotOptimize(digest.finishHex());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(content.size()));
}

void registerAll(const Image& picture) {
  const auto add = [&](const char* name, auto operation) {
    benchmark::RegisterBenchmark(name, operation, picture)->Unit(benchmark::kMillisecond);
  };
  add("perceptualHash", hashing);
  add("downscale", scaling);
  add("jpegData", encoding);
  add("decodeJPEG", decoding);
  benchmark::RegisterBenchmark("SHA256 of 1 MiB", digesting)->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int count, char** arguments) try {
  benchmark::Initialize(&count, arguments);
  if (count != 2) {
    std::cerr << "usage: single-operations CLIP [--benchmark_...]\n";
    return 2;
  }
  registerAll(pictureOf(arguments[1]));
  benchmark::RunSpecifiedBenchmarks();
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
