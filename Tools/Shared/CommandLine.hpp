#pragma once

#include <algorithm>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/RawValue.hpp"

namespace tq::tools {

/// The exit statuses of all programs. The last two are what a shell says of a program that SIGINT or SIGPIPE ended.
enum ExitStatus : int { allDone = 0, notAllDone = 1, wrongUsage = 2, interrupted = 130, abandoned = 141 };

/// The command line cannot be understood. `what()` is one sentence for whoever typed it.
class UsageError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An option that stands for itself.
template <class Options>
struct Switch {
  std::string_view name;
  bool Options::*flag;
};

/// An option with a value, which is never empty. `apply` throws `UsageError` for a value that is none of its own.
template <class Options>
struct ValueOption {
  std::string_view name;
  void (*apply)(Options& options, const std::string& value);
};

/// What a program understands.
template <class Options>
struct OptionTable {
  std::span<const Switch<Options>> switches;
  std::span<const ValueOption<Options>> values;
};

struct Arguments {
  std::vector<std::string> operands;  ///< what is no option
  std::vector<std::string> options;   ///< the names of those that were given
};

/// Reads the arguments behind a program's name into `options`: "--name VALUE" or "--name=VALUE" and switches, in any
/// order. Behind "--" nothing is an option. Throws `UsageError`.
template <class Options>
Arguments readArguments(const std::vector<std::string>& arguments, const OptionTable<Options>& table,
                        Options& options) {
  Arguments read;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    if (*argument == "--") {
      read.operands.insert(read.operands.end(), argument + 1, arguments.end());
      break;
    }
    if (!argument->starts_with('-') || *argument == "-") {
      read.operands.push_back(*argument);
      continue;
    }
    const std::size_t equals = argument->find('=');
    const std::string name = argument->substr(0, equals);
    read.options.push_back(name);
    if (const auto known = std::ranges::find(table.switches, name, &Switch<Options>::name);
        known != table.switches.end()) {
      if (equals != std::string::npos) throw UsageError(name + " takes no value.");
      options.*known->flag = true;
      continue;
    }
    const auto known = std::ranges::find(table.values, name, &ValueOption<Options>::name);
    if (known == table.values.end()) throw UsageError("There is no option " + name + "; --help lists them.");
    std::string value;
    if (equals != std::string::npos)
      value = argument->substr(equals + 1);
    else if (argument + 1 != arguments.end())
      value = *++argument;
    if (value.empty()) throw UsageError(name + " needs a value.");
    known->apply(options, value);
  }
  return read;
}

/// "a, b or c".
std::string alternatives(std::span<const std::string_view> words);

/// Throws `UsageError` when `value` is none of the enumeration's words.
template <class Enum>
Enum readChoice(std::string_view option, const std::string& value) {
  if (const auto choice = fromRawValue<Enum>(value)) return *choice;
  throw UsageError(std::string(option) + " takes " + alternatives(rawValues<Enum>) + ", not \"" + value + "\".");
}

/// A whole number from 1 up; throws `UsageError`.
std::int64_t readCount(std::string_view option, const std::string& value);

/// `value` as it is, when it is the address of a server; throws `UsageError`. A provider would fall back to its
/// standard server, and that is not what was asked for.
std::string readAddress(std::string_view option, const std::string& value);

}  // namespace tq::tools
