// Reads comma-separated fields the way the program's files are written: a field is
// either in double quotes (and may hold commas) or runs to the next comma or line end;
// blanks around an unquoted field are dropped; line ends separate fields like commas.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace shell {

class FieldReader {
 public:
  explicit FieldReader(std::string_view text) : text_(text) {}
  // The next field, or nullopt at the end of the text.
  std::optional<std::string> next();
  bool atEnd();

 private:
  void skipSeparators();
  std::string_view text_;
  std::size_t pos_ = 0;
};

}  // namespace shell
