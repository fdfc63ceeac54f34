#include "Tools/Library/Options.hpp"

#include <algorithm>

#include "TQPersistence/EmbeddingChoice.hpp"
#include "Tools/Shared/CommandLine.hpp"

namespace tq::library {

using tools::UsageError;

namespace {

using Value = tools::ValueOption<Options>;
using Flag = tools::Switch<Options>;

void addFacet(Options& options, const std::string& choice) {
  const std::size_t equals = choice.find('=');
  const auto field = fromRawValue<FacetField>(choice.substr(0, equals));
  if (!field || equals == std::string::npos || equals + 1 == choice.size())
    throw UsageError("--facet takes FIELD=VALUE, not \"" + choice + "\"; a field is " +
                     tools::alternatives(rawValues<FacetField>) + ".");
  options.facets[*field].insert(choice.substr(equals + 1));
}

constexpr std::array switches{
    Flag{"--help", &Options::help},
    Flag{"-h", &Options::help},
    Flag{"--version", &Options::version},
    Flag{"--recursive", &Options::recursive},
    Flag{"--semantic", &Options::semantic},
    Flag{"--reencode", &Options::reencode},
    Flag{"--include-refusals", &Options::includeRefusals},
};

constexpr std::array valueOptions{
    Value{"--facet", addFacet},
    Value{"--limit",
          [](Options& options, const std::string& value) { options.limit = tools::readCount("--limit", value); }},
    Value{"--embedder",
          [](Options& options, const std::string& value) {
            options.embedder = tools::readChoice<EmbedderKind>("--embedder", value);
          }},
    Value{"--base-url", [](Options& options,
                           const std::string& value) { options.baseURL = tools::readAddress("--base-url", value); }},
    Value{"--model", [](Options& options, const std::string& value) { options.model = value; }},
    Value{"--fcpxml",
          [](Options& options, const std::string& value) { options.exports[TextExportFormat::fcpxml] = value; }},
    Value{"--edl", [](Options& options, const std::string& value) { options.exports[TextExportFormat::edl] = value; }},
    Value{"--csv", [](Options& options, const std::string& value) { options.exports[TextExportFormat::csv] = value; }},
    Value{"--into", [](Options& options, const std::string& value) { options.into = value; }},
};

constexpr bool searches(Command command) {
  return command == Command::search || command == Command::exportTimelines || command == Command::trim;
}

/// Which commands have a use for an option. What is not named here goes with all.
struct Use {
  std::string_view option;
  bool (*by)(Command command);
};

constexpr std::array uses{
    Use{"--facet", searches},
    Use{"--limit", searches},
    Use{"--semantic", searches},
    Use{"--embedder", searches},
    Use{"--base-url", searches},
    Use{"--model", searches},
    Use{"--fcpxml", [](Command command) { return command == Command::exportTimelines; }},
    Use{"--edl", [](Command command) { return command == Command::exportTimelines; }},
    Use{"--csv", [](Command command) { return command == Command::exportTimelines; }},
    Use{"--into", [](Command command) { return command == Command::trim; }},
    Use{"--reencode", [](Command command) { return command == Command::trim; }},
    Use{"--include-refusals", [](Command command) { return command == Command::rerate; }},
};

void readOperands(Options& options, const std::vector<std::string>& operands) {
  const std::string commands = tools::alternatives(rawValues<Command>);
  if (operands.empty()) throw UsageError("Say what to do: " + commands + "; --help tells more.");
  const auto command = fromRawValue<Command>(operands[0]);
  if (!command) throw UsageError("There is no command \"" + operands[0] + "\", only " + commands + ".");
  options.command = *command;
  if (operands.size() < 2 || operands[1].empty())
    throw UsageError("Name the folder of the library; --help tells more.");
  options.folder = operands[1];
  if (operands.size() > 2 && !searches(*command)) throw UsageError(operands[0] + " takes a folder and no query.");
  for (std::size_t index = 2; index < operands.size(); ++index)
    options.query += (index > 2 ? " " : "") + operands[index];
}

void checkUses(const Options& options, const std::vector<std::string>& given) {
  for (const auto& [option, by] : uses)
    if (std::ranges::find(given, option) != given.end() && !by(options.command))
      throw UsageError(std::string(option) + " does not go with " + std::string(rawValue(options.command)) + ".");
  for (const char* option : {"--embedder", "--base-url", "--model"})
    if (std::ranges::find(given, option) != given.end() && !options.semantic)
      throw UsageError(std::string(option) + " needs --semantic.");
}

void checkTargets(const Options& options) {
  if (options.command == Command::trim && !options.into) throw UsageError("trim needs --into with a folder.");
  if (options.command != Command::exportTimelines) return;
  if (options.exports.empty()) throw UsageError("export needs --fcpxml, --edl or --csv with a file.");
  std::set<std::filesystem::path> files;
  for (const auto& [format, file] : options.exports)
    if (!files.insert(std::filesystem::absolute(file).lexically_normal()).second)
      throw UsageError("Two exports cannot go into one file, " + file.string() + ".");
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  const tools::Arguments read = tools::readArguments<Options>(arguments, {switches, valueOptions}, options);
  if (options.help || options.version) return options;
  readOperands(options, read.operands);
  checkUses(options, read.options);
  checkTargets(options);
  return options;
}

AppSettings applyOptions(AppSettings settings, const Options& options) {
  if (options.embedder) chooseEmbeddingProvider(settings, rawValue(*options.embedder));
  if (options.baseURL) settings.embeddingBaseURL = *options.baseURL;
  if (options.model) settings.embeddingModel = *options.model;
  return settings;
}

std::string_view usageText() {
  return R"(Usage: tarquel-library COMMAND FOLDER [QUERY...] [OPTION...]

Works with the descriptions (<name>.description.json) that lie in a folder.

  search FOLDER [QUERY...]   lists the clips found, the best first
  facets FOLDER              lists what a search can be narrowed by
  index FOLDER               writes _INDEX.json and _INDEX.md into the folder
  export FOLDER [QUERY...]   writes the clips found as a timeline
  trim FOLDER [QUERY...]     cuts the shots of the clips found into files
  rerate FOLDER              lists the clips that deserve another description

A query is words, and conditions such as duration:>30, people:=0,
flagged:true, review:true and has-transcript:true. Without one and without
facets all clips are taken.

  --recursive             look in the folders below, too
  --facet FIELD=VALUE     only clips with it; of one field any value will do
  --limit N               no more than so many clips; a search without it
                          takes 500 at most
  --semantic              rank by meaning as well; descriptions go to an
                          embedding service as the settings have it, once each
  --embedder KIND         ollama or openai (any server of that kind)
  --base-url URL          the server of the embedder
  --model NAME            the model of the embedder
  --fcpxml, --edl, --csv FILE   what export writes; one that exists is replaced
  --into FOLDER           where trim puts its files; those there are replaced
  --reencode              cut exactly, not at the key frames; takes long, and
                          not for webm and mxf, which cannot hold the result
  --include-refusals      rerate: also clips that a model refused
  --help, --version
  --                      everything after it is no option

A key for the embedder is read from secrets.json in the application's private
folder, $XDG_DATA_HOME/tarquel (usually ~/.local/share/tarquel):
  {"version": 1, "secrets": {"embedding.api_key": "..."}}

On a terminal results are aligned and cut to fit; elsewhere they are one line
each, with tabs between the columns. Ctrl-C cancels; a second one leaves at
once.

Exit status: 0 all was done, 1 something was not, 2 the command line is wrong,
130 cancelled.
)";
}

}  // namespace tq::library
