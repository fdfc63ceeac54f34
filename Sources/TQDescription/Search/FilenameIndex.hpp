#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "TQDescription/Search/TextDictionary.hpp"

namespace tq {

/// The filenames of records, of which several may be equal. Each distinct one has a number.
class FilenameIndex {
 public:
  using Number = TextDictionary::Number;

  /// Takes in the filename of the next record; the first record has the number 0.
  void add(std::string_view filename);

  /// To be called behind the last `add`: makes `rank`.
  void finish();

  std::size_t size() const { return names_.size(); }
  std::optional<Number> find(std::string_view filename) const { return names_.find(filename); }
  std::string_view text(Number filename) const { return names_.text(filename); }

  Number ofRecord(std::size_t record) const { return ofRecord_[record]; }
  std::uint32_t firstRecord(Number filename) const { return firstRecords_[filename]; }

  /// The filename's place among all of them in the order of their bytes.
  std::uint32_t rank(Number filename) const { return ranks_[filename]; }

 private:
  TextDictionary names_;
  std::vector<Number> ofRecord_;
  std::vector<std::uint32_t> firstRecords_;
  std::vector<std::uint32_t> ranks_;
};

}  // namespace tq
