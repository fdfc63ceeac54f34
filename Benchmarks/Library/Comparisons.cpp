#include "Benchmarks/Library/Comparisons.hpp"

#include <stdexcept>

#include "Benchmarks/Library/Latency.hpp"
#include "Benchmarks/Library/SampleLibrary.hpp"
#include "Benchmarks/Shared/Report.hpp"
#include "TQDescription/Library/LibraryModel.hpp"
#include "TQDescription/Search/SearchFields.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"
#ifdef TQ_SQLITE
#include "Benchmarks/Library/FullTextSearch.hpp"
#endif

namespace tq::compare {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t seed = 1;
constexpr std::size_t small = 10'000, large = 100'000;
constexpr std::size_t queryCount = 500;
constexpr std::size_t hitLimit = 500;  // as in the window
constexpr int queriesARound = 40;

std::string clipsText(std::size_t count) {
  return std::to_string(count / 1000) + ",000 clips";
}

void writeRows(const Bench& bench, const Contest& contest) {
  if (contest.check) contest.check();
  for (const Outcome& outcome : measure(contest, bench.options.rounds))
    writeRow(bench.out, outcome);
}

void writeMedian(const Bench& bench, const std::string& subject, std::optional<double> goal,
                 const std::function<void()>& work) {
  std::vector<double> wall, processor;
  for (int round = 0; round < bench.options.rounds; ++round) {
    const Cost cost = costOf(work);
    wall.push_back(cost.wall);
    processor.push_back(cost.processor);
  }
  writeRow(bench.out, Figure{subject, quantile(wall, 0.5), goal, quantile(processor, 0.5)});
}

/// The program in a folder, with its output thrown away by the shell, so that nobody has to read it.
void shell(const fs::path& folder, const std::string& command) {
  const ChildResult result =
      runChild("/bin/sh", {"-c", "cd \"$0\" && exec " + command, folder.string()}, {.time = std::chrono::minutes(5)});
  if (result.timedOut || result.status > 1) throw std::runtime_error(command + " failed");
}

std::vector<LoadedSidecar> load(const fs::path& folder, const Bench& bench) {
  return LibraryModel::loadSidecars(
      folder, false, [](const fs::path& url, const std::string& why) { throw std::runtime_error(url.string() + why); },
      bench.processorCount, {});
}

void writeLatencies(const Bench& bench, const PreparedLibrary& library, const std::vector<std::string>& queries,
                    double goal) {
  const std::string subject = "three words, some mistyped, over " + clipsText(library.sidecars().size()) + ", " +
                              std::to_string(queries.size()) + " queries: ";
  const Latency latency =
      latencyOf(queries, bench.options.rounds, [&](const std::string& query) { library.filter(query, {}, hitLimit); });
  writeRow(bench.out, Figure{subject + "median", latency.median});
  writeRow(bench.out, Figure{subject + "95th percentile", latency.p95, goal});
  writeRow(bench.out, Figure{subject + "longest", latency.longest});
}

void writePreparing(const Bench& bench, const std::vector<LoadedSidecar>& sidecars) {
  writeMedian(bench, "the index of " + clipsText(sidecars.size()) + " made anew", std::nullopt,
              [&] { PreparedLibrary(sidecars, bench.processorCount, {}); });
}

std::function<void(const std::string&)> askOf(const PreparedLibrary& library) {
  return [&library](const std::string& query) { library.filter(query, {}, hitLimit); };
}

#ifdef TQ_SQLITE
/// All words that the product searches.
std::string searchTextOf(const DescriptionResult& record) {
  std::string all;
  forEachSearchText(record, [&](std::size_t, const std::string& text) { (all += text) += '\n'; });
  return all;
}

FullTextSearch fullTextSearch(const Bench& bench, const std::string& name, const std::vector<LoadedSidecar>& sidecars) {
  const fs::path file = bench.options.folder / (name + ".sqlite");
  if (fs::exists(file)) return FullTextSearch(file);
  const fs::path unfinished = fs::path(file) += ".unfinished";
  fs::remove(unfinished);
  const Cost cost = costOf([&] {
    FullTextSearch search(unfinished);
    for (std::size_t row = 0; row < sidecars.size(); ++row)
      search.add(row, searchTextOf(*sidecars[row].result));
    search.finish();
  });
  fs::rename(unfinished, file);
  writeRow(bench.out, Figure{"SQLite makes its index of " + clipsText(sidecars.size()) + ", one round", cost.wall,
                             std::nullopt, cost.processor});
  return FullTextSearch(file);
}

void compareWithSQLite(const Bench& bench, const std::string& name, const PreparedLibrary& library,
                       const std::vector<std::string>& queries) {
  const FullTextSearch search = fullTextSearch(bench, name, library.sidecars());
  const auto ask = [&](const std::string& query) { search.search(query, hitLimit); };
  nextQueries(queries, queriesARound, ask)();  // brings the database into memory
  writeRows(bench, {.subject = "three words over " + clipsText(library.sidecars().size()),
                    .ours = nextQueries(queries, queriesARound, askOf(library)),
                    .opponents = {{"SQLite FTS5, as beginnings of words", nextQueries(queries, queriesARound, ask)}},
                    .repeats = queriesARound});
}
#else
void compareWithSQLite(const Bench& bench, const std::string&, const PreparedLibrary&,
                       const std::vector<std::string>&) {
  bench.out << "| built without SQLite (libsqlite3-dev): not compared | | | | | | | |\n";
}
#endif

}  // namespace

void compareLoading(const Bench& bench) {
  const SampleClips clips(bench.dictionary, seed);
  const fs::path folder = sidecarFolder(clips, bench.count(small), bench.options.folder);
  const std::string cat = "cat -- *.description.json >/dev/null";
  shell(folder, cat);  // warms the cache
  std::uintmax_t bytes = 0;
  for (const auto& entry : fs::directory_iterator(folder))
    bytes += entry.file_size();
  writeRows(bench,
            {.subject = "load " + std::to_string(bench.count(small)) + " sidecars of " +
                        number(static_cast<double>(bytes) / static_cast<double>(bench.count(small)) / 1e3, 1) + " KB",
             .ours = [&] { load(folder, bench); },
             .opponents = {{"cat, all of them from memory", [&] { shell(folder, cat); }, Reading::timesTheTime, 3.0}}});
}

void compareSmallLibrary(const Bench& bench) {
  const SampleClips clips(bench.dictionary, seed);
  const fs::path folder = sidecarFolder(clips, bench.count(small), bench.options.folder);
  const std::vector<std::string> queries = clips.queries(queryCount);
  const std::vector<LoadedSidecar> sidecars = load(folder, bench);
  writePreparing(bench, sidecars);
  const PreparedLibrary library(sidecars, bench.processorCount, {});
  writeLatencies(bench, library, queries, 0.010);
  const auto grep = [&](const std::string& query) {
    shell(folder, "rg --ignore-case --fixed-strings --files-with-matches -e " + query.substr(0, query.find(' ')) +
                      " . >/dev/null");
  };
  writeRows(bench, {.subject = "three words over " + clipsText(sidecars.size()),
                    .ours = nextQueries(queries, queriesARound, askOf(library)),
                    .opponents = {{"ripgrep, one of the words, files that have it",
                                   nextQueries(queries, queriesARound, grep), Reading::timesFaster, 10.0}},
                    .repeats = queriesARound});
}

void compareLargeLibrary(const Bench& bench) {
  const SampleClips clips(bench.dictionary, seed);
  const std::vector<std::string> queries = clips.queries(queryCount);
  const std::vector<LoadedSidecar> sidecars = loadedSidecars(clips, bench.count(large), bench.processorCount);
  writeMedian(bench, "facets of " + clipsText(sidecars.size()) + " counted anew", 0.300,
              [&] { LibraryModel::facetOptions(sidecars, bench.processorCount); });
  writePreparing(bench, sidecars);
  const PreparedLibrary library(sidecars, bench.processorCount, {});
  writeLatencies(bench, library, queries, 0.050);
  compareWithSQLite(bench, fingerprint(clips) + "-" + std::to_string(sidecars.size()), library, queries);
}

}  // namespace tq::compare
