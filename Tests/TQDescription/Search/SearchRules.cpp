#include "SearchRules.hpp"

#include <algorithm>
#include <limits>
#include <sstream>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq::test {
namespace {

using Words = std::vector<std::string>;
using WordSet = std::set<std::string>;

Words charactersOf(const std::string& text) {
  Words all;
  for (const std::string_view character : characters(text))
    all.emplace_back(character);
  return all;
}

Words splitBy(const std::string& text, const std::function<bool(const std::string& character)>& separates) {
  Words pieces{""};
  for (const std::string& character : charactersOf(text)) {
    if (separates(character))
      pieces.emplace_back();
    else
      pieces.back() += character;
  }
  std::erase(pieces, "");
  return pieces;
}

Words wordsOf(const std::string& text) {
  static const WordSet signs{".", ",", ";", ":",  "?", "!", "\"", "'", "(", ")", "[", "]",
                             "{", "}", "/", "\\", "|", "*", "#",  "@", "$", "&", "+", "="};
  static const WordSet stopwords{"a",    "an", "and",  "or",   "the",  "of",    "in",   "on",    "at",
                                 "with", "to", "for",  "from", "by",   "as",    "is",   "are",   "was",
                                 "were", "be", "show", "me",   "find", "clips", "clip", "video", "videos"};
  Words words = splitBy(lowercased(text), [](const std::string& character) {
    return isWhiteSpace(character) || signs.contains(character);
  });
  std::erase_if(words, [](const std::string& word) { return stopwords.contains(word); });
  return words;
}

std::size_t distance(const Words& a, const Words& b) {
  std::vector<std::vector<std::size_t>> matrix(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i)
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        matrix[i][j] = i + j;
        continue;
      }
      const std::size_t replaced = matrix[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      matrix[i][j] = std::min({replaced, matrix[i - 1][j] + 1, matrix[i][j - 1] + 1});
    }
  return matrix[a.size()][b.size()];
}

struct Part {
  double weight;
  WordSet words;
};

void add(WordSet& words, const std::optional<std::string>& text) {
  if (!text) return;
  for (const std::string& word : wordsOf(*text))
    words.insert(word);
}

void add(WordSet& words, const std::optional<Words>& texts) {
  if (!texts) return;
  for (const std::string& text : *texts)
    add(words, std::optional(text));
}

std::vector<Part> partsOf(const DescriptionResult& record) {
  std::vector<Part> parts{{3, {}}, {3, {}},   {2.5, {}}, {2, {}}, {2, {}},   {1, {}},  {2, {}},
                          {2, {}}, {1.5, {}}, {1.5, {}}, {1, {}}, {1.5, {}}, {1.5, {}}};
  add(parts[0].words, record.global.searchKeywords);
  add(parts[1].words, record.global.themes);
  add(parts[2].words, record.global.suggestedUseCases);
  add(parts[3].words, record.global.primarySubjects);
  add(parts[4].words, record.global.overallSummaryOneLine);
  add(parts[5].words, std::optional(record.summary));
  for (const Shot& shot : record.shots) {
    add(parts[6].words, shot.tags);
    if (shot.setting) {
      add(parts[7].words, shot.setting->locationType);
      add(parts[7].words, shot.setting->timeOfDay);
      add(parts[7].words, shot.setting->lighting);
      add(parts[7].words, shot.setting->environment);
      add(parts[7].words, shot.setting->weather);
    }
    add(parts[8].words, shot.cameraMotion);
    add(parts[9].words, shot.shotType);
    add(parts[10].words, shot.framingNotes);
    add(parts[11].words, shot.onScreenText);
  }
  if (record.transcript) add(parts[12].words, std::optional(record.transcript->text));
  return parts;
}

double valueOf(const std::string& word, const WordSet& tokens) {
  if (tokens.contains(word)) return 1;
  const Words q = charactersOf(word);
  if (q.size() < 3) return 0;
  const std::size_t threshold = q.size() <= 9 ? 1 : 2;
  double value = 0;
  for (const std::string& token : tokens) {
    const Words t = charactersOf(token);
    if (t.size() > q.size() && std::equal(q.begin(), q.end(), t.begin())) return 0.6;
    if (q.size() >= 5 && distance(q, t) <= threshold) value = 0.5;
  }
  return value;
}

struct Found {
  double score = 0;
  WordSet terms;
};

Found find(const Words& words, const std::vector<Part>& parts) {
  Found found;
  for (const std::string& word : words)
    for (const Part& part : parts)
      if (const double value = valueOf(word, part.words); value > 0) {
        found.score += part.weight * value;
        found.terms.insert(word);
      }
  return found;
}

using Test = std::function<bool(const DescriptionResult&)>;

/// Reads "30" with an operator before it; the numbers that the tests write are plain ones.
std::function<bool(double)> comparison(const std::string& value) {
  const std::size_t digits = value.find_first_not_of("<>=");
  if (digits == 0 || digits == std::string::npos) return {};
  const std::string op = value.substr(0, digits);
  double bound = 0;
  std::istringstream number(value.substr(digits));
  if (!(number >> bound) || number.peek() != std::istringstream::traits_type::eof()) return {};
  if (op == ">") return [=](double x) { return x > bound; };
  if (op == ">=") return [=](double x) { return x >= bound; };
  if (op == "<") return [=](double x) { return x < bound; };
  if (op == "<=") return [=](double x) { return x <= bound; };
  if (op == "=") return [=](double x) { return x == bound; };
  return {};
}

Test testFor(const std::string& token) {
  const std::size_t colon = token.find(':');
  if (colon == std::string::npos) return {};
  const std::string key = lowercased(token.substr(0, colon));
  const std::string value = token.substr(colon + 1);
  if (key == "duration" || key == "people") {
    const auto holds = comparison(value);
    if (!holds) return {};
    return [=](const DescriptionResult& record) {
      double people = 0;
      for (const Shot& shot : record.shots)
        people += static_cast<double>(shot.peopleCount.value_or(0));
      return holds(key == "people" ? people : record.source.durationSeconds);
    };
  }
  const std::string lower = lowercased(value);
  if (lower != "true" && lower != "false") return {};
  const bool expected = lower == "true";
  if (key == "flagged")
    return [=](const DescriptionResult& record) { return record.flagged.value_or(false) == expected; };
  if (key == "review")
    return [=](const DescriptionResult& record) { return record.reviewFlag.value_or(false) == expected; };
  if (key == "has-transcript")
    return [=](const DescriptionResult& record) {
      return (record.transcript && !record.transcript->text.empty()) == expected;
    };
  return {};
}

Words facetTexts(FacetField field, const DescriptionResult& record) {
  std::vector<std::optional<std::string>> texts;
  const auto list = [&](const std::optional<Words>& all) {
    if (all) texts.insert(texts.end(), all->begin(), all->end());
  };
  switch (field) {
    case FacetField::theme: list(record.global.themes); break;
    case FacetField::keyword: list(record.global.searchKeywords); break;
    case FacetField::useCase: list(record.global.suggestedUseCases); break;
    case FacetField::subject: list(record.global.primarySubjects); break;
    default:
      for (const Shot& shot : record.shots) {
        const Setting setting = shot.setting.value_or(Setting{});
        const std::map<FacetField, std::optional<std::string>> ofShot{{FacetField::shotType, shot.shotType},
                                                                      {FacetField::cameraMotion, shot.cameraMotion},
                                                                      {FacetField::timeOfDay, setting.timeOfDay},
                                                                      {FacetField::lighting, setting.lighting},
                                                                      {FacetField::environment, setting.environment},
                                                                      {FacetField::weather, setting.weather},
                                                                      {FacetField::mood, shot.overallMood}};
        texts.push_back(ofShot.at(field));
      }
  }
  Words values;
  for (const auto& text : texts)
    if (text && !trimmed(*text).empty()) values.emplace_back(trimmed(*text));
  return values;
}

bool matchesFacets(const FacetSelection& facets, const DescriptionResult& record) {
  for (const auto& [field, chosen] : facets) {
    bool has = chosen.empty();
    for (const std::string& value : facetTexts(field, record))
      for (const std::string& choice : chosen)
        has = has || lowercased(value) == lowercased(choice);
    if (!has) return false;
  }
  return true;
}

struct Asked {
  Words words;
  std::vector<Test> tests;
  bool hasFacets = false;
  FacetSelection facets;

  Asked(const std::string& query, const FacetSelection& selection) : facets(selection) {
    std::string freeText;
    for (const std::string& token :
         splitBy(query, [](const std::string& character) { return isWhiteSpace(character); })) {
      if (const Test test = testFor(token))
        tests.push_back(test);
      else
        freeText += (freeText.empty() ? "" : " ") + token;
    }
    words = wordsOf(freeText);
    for (const auto& [field, chosen] : facets)
      hasFacets = hasFacets || !chosen.empty();
  }

  bool isEmpty() const { return words.empty() && tests.empty() && !hasFacets; }

  bool admits(const DescriptionResult& record) const {
    return matchesFacets(facets, record) &&
           std::all_of(tests.begin(), tests.end(), [&](const Test& test) { return test(record); });
  }
};

std::vector<SearchHit> ranked(std::vector<SearchHit> hits, std::size_t limit) {
  std::stable_sort(hits.begin(), hits.end(), [](const SearchHit& a, const SearchHit& b) {
    return a.score != b.score ? a.score > b.score : a.filename < b.filename;
  });
  if (hits.size() > limit) hits.resize(limit);
  return hits;
}

double normalized(double score, const std::vector<SearchHit>& hits) {
  if (hits.size() == 1) return 1;
  double lowest = score;
  double highest = score;
  for (const SearchHit& hit : hits) {
    lowest = std::min(lowest, hit.score);
    highest = std::max(highest, hit.score);
  }
  return highest - lowest > 0 ? (score - lowest) / (highest - lowest) : 0;
}

}  // namespace

std::size_t distanceByRules(const std::string& a, const std::string& b) {
  return distance(charactersOf(a), charactersOf(b));
}

std::vector<SearchHit> searchByRules(const std::string& query, std::span<const DescriptionResult> records,
                                     const FacetSelection& facets, std::size_t limit) {
  const Asked asked(query, facets);
  std::vector<SearchHit> hits;
  if (asked.isEmpty()) return hits;
  for (const DescriptionResult& record : records) {
    if (!asked.admits(record)) continue;
    const Found found = find(asked.words, partsOf(record));
    if (!asked.words.empty() && found.score <= 0) continue;
    hits.push_back({record.source.filename,
                    found.score,
                    record.global.overallSummaryOneLine,
                    {found.terms.begin(), found.terms.end()}});
  }
  return ranked(hits, limit);
}

std::vector<SearchHit> hybridSearchByRules(const HybridQuery& query, std::span<const DescriptionResult> records) {
  const Asked asked(query.query, query.facets);
  const double weight = std::clamp(query.weight, 0.0, 1.0);
  const std::vector<SearchHit> hits =
      searchByRules(query.query, records, query.facets, std::numeric_limits<std::size_t>::max());
  std::map<std::string, SearchHit> keyword;
  for (const SearchHit& hit : hits)
    keyword[hit.filename] = hit;
  std::map<std::string, DescriptionResult> firsts;
  for (const DescriptionResult& record : records)
    firsts.try_emplace(record.source.filename, record);

  std::map<std::string, double> semantic;
  for (const auto& [filename, similarity] : query.semantic) {
    const bool isFound = keyword.contains(filename);
    const bool isNear = similarity >= query.floor && firsts.contains(filename) && asked.admits(firsts[filename]);
    if (isFound || isNear) semantic[filename] = (similarity + 1.0) * 0.5;
  }

  WordSet filenames;
  for (const auto& [filename, hit] : keyword)
    filenames.insert(filename);
  for (const auto& [filename, score] : semantic)
    filenames.insert(filename);
  std::vector<SearchHit> blended;
  for (const std::string& filename : filenames) {
    const bool isFound = keyword.contains(filename);
    SearchHit hit = isFound ? keyword[filename] : SearchHit{filename, 0, std::nullopt, {}};
    const double k = isFound ? normalized(hit.score, hits) : 0;
    const double s = semantic.contains(filename) ? semantic[filename] : 0;
    hit.score = (1 - weight) * k + weight * s;
    if (!hit.oneLine) hit.oneLine = firsts[filename].global.overallSummaryOneLine;
    blended.push_back(hit);
  }
  return ranked(blended, query.limit);
}

FacetOptions facetsByRules(std::span<const DescriptionResult> records) {
  FacetOptions options;
  for (const FacetField field : allCases<FacetField>()) {
    std::map<std::string, FacetValue> values;
    for (const DescriptionResult& record : records) {
      WordSet seen;
      for (const std::string& value : facetTexts(field, record))
        if (seen.insert(lowercased(value)).second)
          ++values.try_emplace(lowercased(value), FacetValue{value, 0}).first->second.count;
    }
    for (const auto& [key, value] : values)
      options[field].push_back(value);
    if (!values.empty())
      std::stable_sort(options[field].begin(), options[field].end(),
                       [](const FacetValue& a, const FacetValue& b) { return a.count > b.count; });
  }
  return options;
}

}  // namespace tq::test
