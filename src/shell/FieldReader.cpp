#include "shell/FieldReader.h"

namespace shell {

namespace {
bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isLineEnd(char c) { return c == '\r' || c == '\n'; }
}  // namespace

void FieldReader::skipSeparators() {
  while (pos_ < text_.size() && (isBlank(text_[pos_]) || isLineEnd(text_[pos_]))) ++pos_;
}

bool FieldReader::atEnd() {
  skipSeparators();
  return pos_ >= text_.size();
}

std::optional<std::string> FieldReader::next() {
  skipSeparators();
  if (pos_ >= text_.size()) return std::nullopt;
  std::string field;
  if (text_[pos_] == '"') {
    const std::size_t close = text_.find('"', pos_ + 1);
    const std::size_t end = close == std::string_view::npos ? text_.size() : close;
    field = std::string(text_.substr(pos_ + 1, end - pos_ - 1));
    pos_ = close == std::string_view::npos ? text_.size() : close + 1;
    // Whatever stands between the closing quote and the separator is dropped.
    while (pos_ < text_.size() && text_[pos_] != ',' && !isLineEnd(text_[pos_])) ++pos_;
  } else {
    std::size_t end = pos_;
    while (end < text_.size() && text_[end] != ',' && !isLineEnd(text_[end])) ++end;
    field = std::string(text_.substr(pos_, end - pos_));
    while (!field.empty() && isBlank(field.back())) field.pop_back();
    pos_ = end;
  }
  if (pos_ < text_.size() && text_[pos_] == ',') ++pos_;
  return field;
}

}  // namespace shell
