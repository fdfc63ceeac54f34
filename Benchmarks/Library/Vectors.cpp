#include "Benchmarks/Library/Vectors.hpp"

#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

#include "Benchmarks/Library/Vocabulary.hpp"

namespace tq::compare {

namespace {

constexpr std::uint64_t seed = 7;

class ReadyEmbedder final : public TextEmbedder {
 public:
  explicit ReadyEmbedder(const SampleVectors& vectors) : vectors_(vectors) {}

  std::vector<EmbeddingVector> embed(const std::vector<std::string>& texts, std::stop_token) const override {
    std::vector<EmbeddingVector> vectors(texts.size());
    for (std::size_t number = 0; number < vectors.size(); ++number)
      vectors[number].assign(vectors_.at(number).begin(), vectors_.at(number).end());
    return vectors;
  }

 private:
  const SampleVectors& vectors_;
};

double bareDot(const float* left, const float* right, std::size_t length) {
  constexpr std::size_t lanes = 8;
  std::array<double, lanes> sums{};
  for (std::size_t start = 0; start + lanes <= length; start += lanes)
    for (std::size_t lane = 0; lane < lanes; ++lane)
      sums[lane] += static_cast<double>(left[start + lane]) * static_cast<double>(right[start + lane]);
  return std::accumulate(sums.begin(), sums.end(), 0.0);
}

}  // namespace

SampleVectors::SampleVectors(std::size_t count, std::size_t length)
    : count_(count), length_(length), numbers_(count * length), norms_(count) {
  Random random(seed);
  for (float& number : numbers_)
    number = static_cast<float>((random.unit() + random.unit() - 1) * random.unit());
  for (std::size_t each = 0; each < count; ++each)
    norms_[each] = std::sqrt(bareDot(at(each).data(), at(each).data(), length));
}

std::string SampleVectors::filename(std::size_t number) {
  constexpr std::size_t digits = 6;
  const std::string text = std::to_string(number);
  return "A" + std::string(digits - text.size(), '0') + text + ".mov";
}

std::unique_ptr<SemanticIndex> SampleVectors::index(const std::filesystem::path& cacheURL) const {
  std::vector<DescriptionResult> clips(count_);
  for (std::size_t number = 0; number < count_; ++number)
    clips[number].source.filename = filename(number);
  auto index = std::make_unique<SemanticIndex>("sample", cacheURL);
  index->build(clips, ReadyEmbedder(*this), {}, {});
  std::filesystem::remove(cacheURL);
  return index;
}

SemanticEntries SampleVectors::entries() const {
  SemanticEntries entries;
  entries.reserve(numbers_.size());
  for (std::size_t number = 0; number < count_; ++number)
    entries.add(filename(number), SemanticIndex::contentHash("sample", filename(number)), at(number));
  entries.sort();
  return entries;
}

std::vector<double> SampleVectors::bareCosines(std::span<const float> query) const {
  const double norm = std::sqrt(bareDot(query.data(), query.data(), length_));
  std::vector<double> cosines(count_);
  for (std::size_t number = 0; number < count_; ++number)
    cosines[number] = bareDot(query.data(), numbers_.data() + number * length_, length_) / (norm * norms_[number]);
  return cosines;
}

std::uint64_t SampleVectors::read() const {
  std::array<std::uint64_t, 4> sums{};
  for (std::size_t place = 0; place + 8 <= numbers_.size(); place += 8) {
    std::array<std::uint64_t, 4> words;
    std::memcpy(words.data(), numbers_.data() + place, sizeof words);
    for (std::size_t lane = 0; lane < words.size(); ++lane)
      sums[lane] ^= words[lane];
  }
  return sums[0] ^ sums[1] ^ sums[2] ^ sums[3];
}

}  // namespace tq::compare
