#include "Fuzz/Property.hpp"
#include "TQDescription/Search/SearchEngine.hpp"
#include "TQDescription/Search/SearchPredicate.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

/// By line breaks, for unlike a blank they stay characters of their own whatever stands behind them.
std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words)
    text += word + "\n";
  return text;
}

bool isASCII(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void requireWords(std::string_view text) {
  const std::vector<std::string> words = SearchEngine::tokenize(text);
  for (const std::string& word : words) {
    fuzz::require(!word.empty(), "a word is not empty");
    fuzz::require(lowercased(word) == word, "a word is in lower case");
    fuzz::require(SearchEngine::tokenize(word) == std::vector{word}, "a word is one word");
  }
  fuzz::require(SearchEngine::tokenize(joined(words)) == words, "words stay the same when they are joined again");
}

void requireConditions(std::string_view text) {
  const PredicateParser::Query query = PredicateParser::parse(text);
  fuzz::require(query.freeText.size() <= text.size(), "nothing is added to a query");
  fuzz::require(isValidUTF8(query.freeText) || !isValidUTF8(text), "a query is not cut within a character");
  if (!isASCII(text)) return;  // a mark may join the blank that is put before it
  const PredicateParser::Query again = PredicateParser::parse(query.freeText);
  fuzz::require(again.predicates.empty(), "no condition stays among the words");
  fuzz::require(again.freeText == query.freeText, "what is left of a query stays as it is");
}

}  // namespace

/// Text of a record or of a query.
void fuzz::check(ByteView input) {
  requireWords(textOf(input));
  requireConditions(textOf(input));
}

}  // namespace tq
