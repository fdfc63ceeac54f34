#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <unistd.h>

#include "Benchmarks/Library/Comparisons.hpp"
#include "Benchmarks/Library/Vectors.hpp"
#include "Benchmarks/Shared/Report.hpp"
#include "TQDescription/Semantic/SemanticCache.hpp"
#include "TQPlatform/FileSystem/Files.hpp"

namespace tq::compare {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t vectorCount = 100'000;
constexpr std::size_t usualLength = 768;
/// As many numbers as an entry may have for a cache file of that many vectors to stay within what is read of one.
constexpr std::size_t cacheableLength = 192;
constexpr std::size_t pieceSize = std::size_t{1} << 20;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File open(const fs::path& path, const char* mode) {
  File file(std::fopen(path.c_str(), mode), &std::fclose);
  if (!file) throw std::runtime_error(path.string() + " cannot be opened");
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  return file;
}

/// The whole content into memory that nobody has touched before.
void readWhole(const fs::path& path) {
  const File file = open(path, "rb");
  const std::size_t size = fs::file_size(path);
  const auto content = std::make_unique_for_overwrite<char[]>(size);
  if (std::fread(content.get(), 1, size, file.get()) != size) throw std::runtime_error("the file is cut");
}

/// Piece by piece into the same memory.
void readInPieces(const fs::path& path) {
  const File file = open(path, "rb");
  std::vector<char> piece(pieceSize);
  while (std::fread(piece.data(), 1, piece.size(), file.get()) > 0) {
  }
}

/// Piece by piece, and down to the disk as the product does.
void writeBytes(const fs::path& path, const std::string& content) {
  const File file = open(path, "wb");
  for (std::size_t start = 0; start < content.size(); start += pieceSize) {
    const std::size_t size = std::min(pieceSize, content.size() - start);
    if (std::fwrite(content.data() + start, 1, size, file.get()) != size) throw std::runtime_error("the disk is full");
  }
  if (::fsync(::fileno(file.get())) != 0) throw std::runtime_error("the disk fails");
}

void compareCosinesOf(SemanticIndex& index, const SampleVectors& vectors, const Bench& bench) {
  const EmbeddingVector query(vectors.at(0).begin(), vectors.at(0).end());
  const auto check = [&] {
    const std::vector<FilenameSimilarity> ours = index.similarities(query);
    const std::vector<double> theirs = vectors.bareCosines(query);
    for (std::size_t number = 0; number < vectors.count(); ++number)
      if (ours.at(number).filename != SampleVectors::filename(number) ||
          std::abs(ours[number].similarity - theirs[number]) > 1e-12)
        throw std::runtime_error("the cosines differ");
  };
  std::uint64_t looked = 0;
  const Contest contest{
      .subject = "cosines with " + std::to_string(vectors.count()) + " vectors of " + std::to_string(query.size()),
      .check = check,
      .ours = [&] { index.similarities(query); },
      .opponents = {{"a bare loop with the same sums", [&] { vectors.bareCosines(query); }, Reading::timesTheTime, 1.2},
                    {"looking at every number once", [&] { looked ^= vectors.read(); }, Reading::timesTheTime, {}}}};
  contest.check();
  for (const Outcome& outcome : measure(contest, bench.options.rounds))
    writeRow(bench.out, outcome);
}

}  // namespace

void compareCosines(const Bench& bench) {
  const SampleVectors vectors(bench.count(vectorCount), usualLength);
  const auto index = vectors.index(bench.options.folder / "cosines.json");
  compareCosinesOf(*index, vectors, bench);
}

void compareCacheFile(const Bench& bench) {
  const SemanticEntries entries = SampleVectors(bench.count(vectorCount), cacheableLength).entries();
  const fs::path file = bench.options.folder / "cache.json", copy = bench.options.folder / "copy.json";
  SemanticCache::write(file, entries);
  const std::string content(textOf(readFile(file)));
  const std::string subject = "a cache file of " + std::to_string(entries.clips().size()) + " vectors of " +
                              std::to_string(cacheableLength) + ", " +
                              number(static_cast<double>(content.size()) / 1e6, 0) + " MB: ";
  const auto load = [&] {
    SemanticIndex index("sample", file, bench.processorCount);
    index.loadCache();
    if (index.entryCount() != entries.clips().size()) throw std::runtime_error("the cache file is not read");
  };
  for (const Contest& contest :
       {Contest{.subject = subject + "load",
       .ours = load,
       .opponents = {{"reading the same bytes into memory", [&] { readWhole(file); }, Reading::timesTheTime, 4.0},
                     {"reading them in pieces, which are forgotten",
                      [&] { readInPieces(file); },
                      Reading::timesTheTime,
                      {}}}},
        Contest{.subject = subject + "save",
        .ours = [&] { SemanticCache::write(file, entries, bench.processorCount); },
        .opponents = {{"writing the same bytes, to the disk too", [&] { writeBytes(copy, content); },
                       Reading::timesTheTime, 4.0}}}})
    for (const Outcome& outcome : measure(contest, bench.options.rounds))
      writeRow(bench.out, outcome);
  fs::remove(file);
  fs::remove(copy);
}

std::vector<Comparison> allComparisons() {
  return {{"load", compareLoading},
          {"small", compareSmallLibrary},
          {"large", compareLargeLibrary},
          {"cosines", compareCosines},
          {"cache", compareCacheFile}};
}

}  // namespace tq::compare
