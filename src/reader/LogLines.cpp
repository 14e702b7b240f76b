#include "reader/LogLines.h"

#include <cstring>

namespace reader {

void LogLines::appended(const std::string& text, std::size_t from) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  for (const char* p = begin + from; p < end;) {
    const void* hit = std::memchr(p, '\n', static_cast<std::size_t>(end - p));
    if (!hit) break;
    p = static_cast<const char*>(hit) + 1;
    starts_.push_back(static_cast<std::size_t>(p - begin));
  }
}

void LogLines::clear() {
  std::vector<std::size_t>().swap(starts_);
  starts_.push_back(0);
}

std::string_view LogLines::line(const std::string& text, std::size_t n) const {
  if (n >= starts_.size()) return {};
  const std::size_t from = starts_[n];
  std::size_t to = n + 1 < starts_.size() ? starts_[n + 1] - 1 : text.size();
  if (to > text.size()) to = text.size();
  if (to > from && text[to - 1] == '\r') --to;
  if (from >= to) return {};
  return std::string_view(text.data() + from, to - from);
}

}  // namespace reader
