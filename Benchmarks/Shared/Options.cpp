#include "Benchmarks/Shared/Options.hpp"

#include <charconv>
#include <stdexcept>

namespace tq::compare {

namespace {

[[noreturn]] void explain(const std::string& program) {
  throw std::invalid_argument("usage: " + program +
                              " [--quick] [--rounds N] [--only WORD] FOLDER\n"
                              "  --quick    one round, and less of the work\n"
                              "  --rounds   how often each is measured, 5 unless told\n"
                              "  --only     what has this word in its first column\n"
                              "  FOLDER     what is worked on, made when it is missing\n");
}

/// Absent for what is no whole number above 0.
std::optional<int> positive(const std::string& text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 1) return std::nullopt;
  return value;
}

}  // namespace

Options Options::parse(const std::string& program, const std::vector<std::string>& arguments) {
  Options options;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    const auto value = [&]() -> const std::string& {
      if (++argument == arguments.end()) explain(program);
      return *argument;
    };
    if (*argument == "--quick") {
      options.quick = true;
      options.rounds = 1;
    } else if (*argument == "--rounds") {
      const auto rounds = positive(value());
      if (!rounds) explain(program);
      options.rounds = *rounds;
    } else if (*argument == "--only") {
      options.only = value();
    } else if (argument->starts_with("-") || !options.folder.empty()) {
      explain(program);
    } else {
      options.folder = *argument;
    }
  }
  if (options.folder.empty()) explain(program);
  return options;
}

}  // namespace tq::compare
