#include "Benchmarks/Library/SampleClips.hpp"

#include <array>
#include <set>
#include <span>

#include "TQCore/Vocabularies.hpp"

namespace tq::compare {

namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t wordCount = 8000;
constexpr auto colours = std::to_array<std::string_view>({"black", "brown", "grey", "white", "red", "blue", "green"});
constexpr auto lengths = std::to_array<std::string_view>({"short", "shoulder-length", "long"});
constexpr auto ages = std::to_array<std::string_view>({"5-12", "18-25", "25-35", "35-50", "50-65", "65+"});

Random streamOf(std::uint64_t seed, std::uint64_t number) {
  return Random(seed ^ (number + 1) * 0x9e3779b97f4a7c15);  // the golden ratio's digits set neighbours apart
}

std::string oneOf(std::span<const std::string_view> texts, Random& random) {
  return std::string(texts[random.below(texts.size())]);
}

template <class Enum>
std::string anyOf(Random& random) {
  return oneOf(rawValues<Enum>, random);
}

Texts some(const RankedTexts& from, std::size_t count, Random& random) {
  Texts texts(count);
  for (std::string& text : texts)
    text = from.any(random);
  return texts;
}

std::string paddedNumber(std::size_t number, std::size_t digits) {
  const std::string text = std::to_string(number);
  return std::string(digits - std::min(digits, text.size()), '0') + text;
}

Texts palette(Random& random) {
  Texts colors(5);
  for (std::string& color : colors) {
    color = "#";
    for (int digit = 0; digit < 6; ++digit)
      color += "0123456789ABCDEF"[random.below(16)];
  }
  return colors;
}

Person person(const Vocabulary& vocabulary, Random& random) {
  return {.approximateAgeRange = oneOf(ages, random),
          .perceivedGenderPresentation = random.chance(2) ? "feminine" : "masculine",
          .hair = PersonHair{oneOf(colours, random), oneOf(lengths, random), vocabulary.words.any(random)},
          .pose = vocabulary.sentence(4, random),
          .expression = vocabulary.words.any(random),
          .perceivedMood = anyOf<PerceivedMood>(random),
          .moodConfidence = static_cast<double>(random.below(100)) / 100,
          .clothing = PersonClothing{.top = oneOf(colours, random) + " " + vocabulary.words.any(random),
                                     .bottom = oneOf(colours, random) + " " + vocabulary.words.any(random),
                                     .overallStyle = vocabulary.words.any(random)}};
}

/// A letter more, one less, another one, or two that changed places.
std::string mistyped(std::string word, Random& random) {
  const std::size_t place = random.below(word.size() - 1);
  const char letter = static_cast<char>('a' + random.below(26));
  switch (random.below(4)) {
    case 0: return word.insert(place, 1, letter);
    case 1: return word.erase(place, 1);
    case 2: word[place] = letter; return word;
    default: std::swap(word[place], word[place + 1]); return word;
  }
}

}  // namespace

SampleClips::SampleClips(const std::filesystem::path& dictionary, std::uint64_t seed)
    : seed_(seed), vocabulary_(dictionary, wordCount, Random(seed)) {
  Random random(seed + 1);
  for (const auto& [list, count] : std::to_array<std::pair<RankedTexts*, std::size_t>>({{&themes_, 300},
                                                                                        {&keywords_, 4000},
                                                                                        {&subjects_, 1500},
                                                                                        {&useCases_, 150},
                                                                                        {&environments_, 200},
                                                                                        {&weathers_, 12},
                                                                                        {&moods_, 60},
                                                                                        {&tags_, 3000},
                                                                                        {&places_, 400}}))
    *list = vocabulary_.phrases(count, random);
}

DescriptionResult SampleClips::clip(std::size_t number) const {
  Random random = streamOf(seed_, number);
  const auto sentence = [&](std::size_t least, std::size_t most) {
    return vocabulary_.sentence(random.between(least, most), random);
  };
  DescriptionResult clip;
  clip.source = {.filename = "A" + paddedNumber(number, 6) + "_" + vocabulary_.words.any(random) + ".mov",
                 .durationSeconds = static_cast<double>(random.between(50, 9000)) / 25,
                 .resolution = "3840x2160",
                 .frameRate = 25,
                 .codec = "hevc",
                 .fileSizeBytes = static_cast<std::int64_t>(random.between(1 << 20, 1 << 30)),
                 .sha256 = std::string(64, "0123456789abcdef"[random.below(16)]),
                 .describedAt = {},
                 .gps = GPS{.latitude = 50, .longitude = 8, .altitudeMeters = {}, .placeName = places_.any(random)}};
  clip.engine = {.provider = "mock", .model = "mock", .framesAnalyzed = 6, .samplingStrategy = "even"};
  clip.summary = sentence(20, 40) + " " + sentence(20, 40);
  clip.shots.resize(random.between(4, 8));
  for (std::size_t index = 0; index < clip.shots.size(); ++index) {
    Shot& shot = clip.shots[index];
    shot.timecode = "00:00:" + paddedNumber(index * 7, 2) + ".000";
    shot.shotType = anyOf<ShotType>(random);
    shot.cameraMotion = anyOf<CameraMotion>(random);
    shot.framingNotes = sentence(12, 24);
    shot.people.emplace(random.below(3));
    for (Person& one : *shot.people)
      one = person(vocabulary_, random);
    shot.peopleCount = static_cast<std::int64_t>(shot.people->size());
    shot.setting = Setting{.locationType = anyOf<LocationType>(random),
                           .environment = environments_.any(random),
                           .timeOfDay = anyOf<TimeOfDay>(random),
                           .weather = weathers_.any(random),
                           .lighting = anyOf<Lighting>(random)};
    shot.colorPalette = ColorPalette{palette(random), sentence(4, 8)};
    shot.overallMood = moods_.any(random);
    shot.tags = some(tags_, random.between(4, 8), random);
    if (random.chance(3)) shot.onScreenText = Texts{sentence(2, 5)};
  }
  clip.global = {.overallSummaryOneLine = sentence(10, 18),
                 .primarySubjects = some(subjects_, random.between(2, 5), random),
                 .themes = some(themes_, random.between(2, 5), random),
                 .dominantPalette = palette(random),
                 .searchKeywords = some(keywords_, random.between(8, 15), random),
                 .suggestedUseCases = some(useCases_, random.between(2, 4), random)};
  clip.flagged = random.chance(50);
  clip.reviewFlag = random.chance(20);
  if (random.chance(2))
    clip.transcript = TranscriptInfo{.text = sentence(60, 180), .provider = "local", .model = "local"};
  return clip;
}

std::vector<std::string> SampleClips::queries(std::size_t count) const {
  constexpr std::size_t frequent = 100, longEnough = 5, typedAtFirst = 4;
  Random random(seed_ + 2);
  std::set<std::string> known;
  std::vector<std::string> queries;
  while (queries.size() < count) {
    Texts words{vocabulary_.words.at(random.below(frequent)), vocabulary_.words.any(random),
                vocabulary_.words.at(random.below(vocabulary_.words.size()))};
    std::string& one = words[random.below(words.size())];
    if (queries.size() % 3 == 0 && one.size() >= longEnough)
      one = mistyped(one, random);
    else if (queries.size() % 5 == 0)
      one.resize(std::min(one.size(), typedAtFirst));
    std::swap(words[0], words[random.below(words.size())]);
    std::string query = words[0] + " " + words[1] + " " + words[2];
    if (known.insert(query).second) queries.push_back(std::move(query));
  }
  return queries;
}

}  // namespace tq::compare
