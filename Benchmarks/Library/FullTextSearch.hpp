#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace tq::compare {

/// SQLite's full-text search (FTS5) with an index of prefixes, over texts that a rowid names.
class FullTextSearch {
 public:
  /// Opens the database, or starts it when there is none. Throws `std::runtime_error`, as all calls do.
  explicit FullTextSearch(const std::filesystem::path& file);
  ~FullTextSearch();

  void add(std::size_t row, const std::string& text);

  /// To be called once all are added: brings the index into the form that is searched fastest.
  void finish();

  /// How many rows have a word that begins with one of the query's words, the best `limit` of them in their order.
  std::size_t search(const std::string& query, std::size_t limit) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tq::compare
