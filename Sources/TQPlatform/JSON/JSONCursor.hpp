#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "TQPlatform/JSON/JSON.hpp"

namespace tq {

// For JSON that holds millions of 32-bit floats, of which a tree of `JSONValue` would take twenty times the memory.

/// Goes through one JSON text from front to back, without a tree. It is as strict as `parseJSON`: what is stepped over
/// is checked all the same, and nesting is limited alike. Every operation throws `JSONError` where the text is broken
/// or where another kind of value stands; the cursor is of no use then.
class JSONCursor {
 public:
  /// `text` must outlive the cursor.
  explicit JSONCursor(std::string_view text);

  /// Steps over a list. `readElement` must step over exactly the next value.
  void readList(const std::function<void()>& readElement);

  /// Steps over all that is left, the inside of a list: values with a comma between each two, and one at least.
  void readElements(const std::function<void()>& readElement);

  /// Steps over an object, with equal keys as often as they stand there. `readMember` gets the key and must step over
  /// exactly the next value.
  void readObject(const std::function<void(const std::string& key)>& readMember);

  std::string readString();

  /// Puts a list of numbers in the place of what `numbers` holds. Each is rounded once, to the nearest float; one
  /// beyond the range of a float counts as broken.
  void readFloats(std::vector<float>& numbers);

  /// Steps over whatever stands next.
  void skipValue();

  /// To be called last: throws unless only white space is left.
  void finish();

 private:
  char peek() const { return at_ == end_ ? '\0' : *at_; }
  void skipWhiteSpace();
  void expect(char c);
  bool takeIf(char c);
  void readMembers(char opening, char closing, const std::function<void()>& readOne);
  std::string_view scanString();
  void skipWord(std::string_view word);
  float readFloat();
  [[noreturn]] void fail() const;

  const char* begin_;
  const char* at_;
  const char* end_;
  std::size_t depth_ = 0;
};

/// Appends a list such as "[0.5,-1]", each number in the shortest form that reads back as the same float. Throws
/// `JSONError` for a number that is not finite.
void appendJSONFloats(std::string& text, std::span<const float> numbers);

}  // namespace tq
