#include "Benchmarks/Library/FullTextSearch.hpp"

#include <sqlite3.h>
#include <sstream>
#include <stdexcept>

namespace tq::compare {

namespace {

class Statement {
 public:
  Statement(sqlite3* database, const char* sql) : database_(database) {
    if (sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr) != SQLITE_OK) fail();
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  void bind(int place, std::int64_t value) { check(sqlite3_bind_int64(statement_, place, value)); }
  void bind(int place, const std::string& text) {
    check(sqlite3_bind_text(statement_, place, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT));
  }

  /// True while there is another row.
  bool step() {
    const int outcome = sqlite3_step(statement_);
    if (outcome != SQLITE_ROW && outcome != SQLITE_DONE) fail();
    return outcome == SQLITE_ROW;
  }
  void reset() { sqlite3_reset(statement_); }

 private:
  void check(int outcome) const {
    if (outcome != SQLITE_OK) fail();
  }
  [[noreturn]] void fail() const { throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database_)); }

  sqlite3* database_;
  sqlite3_stmt* statement_ = nullptr;
};

void run(sqlite3* database, const char* sql) {
  if (sqlite3_exec(database, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
    throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database));
}

/// Words as the product has them: hyphen and underscore belong to a word.
constexpr const char* newTable =
    "CREATE VIRTUAL TABLE IF NOT EXISTS clips USING "
    "fts5(text, content='', prefix='2 3 4 5 6', tokenize=\"unicode61 remove_diacritics 0 tokenchars '-_'\")";

}  // namespace

struct FullTextSearch::State {
  explicit State(const std::filesystem::path& file) {
    if (sqlite3_open(file.c_str(), &database) != SQLITE_OK) throw std::runtime_error("SQLite: no database");
    // Nothing here has to outlive a power cut, and the whole database fits into memory.
    run(database, "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA cache_size = -2000000");
    run(database, newTable);
    insert = std::make_unique<Statement>(database, "INSERT INTO clips(rowid, text) VALUES(?, ?)");
    select = std::make_unique<Statement>(database, "SELECT rowid FROM clips WHERE clips MATCH ? ORDER BY rank LIMIT ?");
    run(database, "BEGIN");
  }
  ~State() {
    insert.reset();
    select.reset();
    sqlite3_close(database);
  }

  sqlite3* database = nullptr;
  std::unique_ptr<Statement> insert, select;
};

FullTextSearch::FullTextSearch(const std::filesystem::path& file) : state_(std::make_unique<State>(file)) {}
FullTextSearch::~FullTextSearch() = default;

void FullTextSearch::add(std::size_t row, const std::string& text) {
  state_->insert->bind(1, static_cast<std::int64_t>(row));
  state_->insert->bind(2, text);
  state_->insert->step();
  state_->insert->reset();
}

void FullTextSearch::finish() {
  run(state_->database, "INSERT INTO clips(clips) VALUES('optimize')");
  run(state_->database, "COMMIT");
}

std::size_t FullTextSearch::search(const std::string& query, std::size_t limit) const {
  std::istringstream words(query);
  std::string match;
  for (std::string word; words >> word;)
    match += (match.empty() ? "\"" : " OR \"") + word + "\" *";
  Statement& select = *state_->select;
  select.bind(1, match);
  select.bind(2, static_cast<std::int64_t>(limit));
  std::size_t rows = 0;
  while (select.step())
    ++rows;
  select.reset();
  return rows;
}

}  // namespace tq::compare
