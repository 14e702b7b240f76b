// Where each line of a trace log's text starts, so that a view can find the lines it
// shows without scanning the text. The text itself stays with the trace log; this index
// only follows its appends.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace reader {

class LogLines {
 public:
  LogLines() { starts_.push_back(0); }

  // The text grew: everything from `from` on is new.
  void appended(const std::string& text, std::size_t from);
  // The text was emptied; its memory goes back too.
  void clear();

  // Lines as a text view counts them: one more than there are line feeds, so an empty
  // text is one empty line.
  std::size_t count() const { return starts_.size(); }
  // Line n without its line feed and carriage return.
  std::string_view line(const std::string& text, std::size_t n) const;
  // Where line n starts in the text.
  std::size_t start(std::size_t n) const { return starts_[n]; }

 private:
  std::vector<std::size_t> starts_;
};

}  // namespace reader
