#include "Benchmarks/Compare/Options.hpp"

#include <charconv>
#include <stdexcept>

namespace tq::compare {

namespace {

[[noreturn]] void explain() {
  throw std::invalid_argument(
      "usage: compare-frames [--quick] [--rounds N] [--only WORD] FOLDER\n"
      "  --quick    one round, and no full decodes\n"
      "  --rounds   how often each is measured, 5 unless told\n"
      "  --only     what has this word in its first column\n"
      "  FOLDER     the clips\n");
}

int positive(const std::string& text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 1) explain();
  return value;
}

}  // namespace

Options Options::parse(const std::vector<std::string>& arguments) {
  Options options;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    const auto value = [&]() -> const std::string& {
      if (++argument == arguments.end()) explain();
      return *argument;
    };
    if (*argument == "--quick") {
      options.quick = true;
      options.rounds = 1;
    } else if (*argument == "--rounds") {
      options.rounds = positive(value());
    } else if (*argument == "--only") {
      options.only = value();
    } else if (argument->starts_with("-") || !options.clips.empty()) {
      explain();
    } else {
      options.clips = *argument;
    }
  }
  if (options.clips.empty()) explain();
  return options;
}

}  // namespace tq::compare
