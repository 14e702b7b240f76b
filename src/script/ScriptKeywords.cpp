#include "script/ScriptKeywords.h"

namespace script {

namespace {

// Where each row stands in its group. The data note closes the first group, so that it
// moves up when the rows of newer libraries are hidden; the Chip_Id note follows the
// two PDYxx rows it explains.
constexpr std::array<int, 18> kAvailableOrder{0, 1, 2, 3, 4, 5, 6, 7, 9, 11, 12, 13, 14, 15, 16, 17, 18, 8};
constexpr std::array<int, 4> kCustomOrder{19, 20, 10, 21};

std::string rowText(int row) {
  for (const Keyword& k : kKeywords)
    if (k.helpRow == row) return helpLine(k.helpLeft, k.helpRight);
  for (const HelpNote& n : kHelpNotes)
    if (n.helpRow == row) return std::string(n.text);
  return {};
}

}  // namespace

const Keyword* findKeyword(std::string_view token) {
  for (const Keyword& k : kKeywords)
    if (k.word == token) return &k;
  return nullptr;
}

bool helpRowShown(int row, int dllRevision) {
  if (row >= 16 && row <= 18) return dllRevision >= kNewLibraryRevision;
  return true;
}

std::string helpLine(std::string_view left, std::string_view right) {
  std::string line(left);
  if (right.empty()) return line;
  // Column 45 counted from 1: the right text starts after 44 characters.
  const std::size_t width = kHelpColumn - 1;
  line.append(line.size() < width ? width - line.size() : 1, ' ');
  line.append(right);
  return line;
}

std::vector<HelpRow> helpRows(HelpGroup group, int dllRevision) {
  std::vector<HelpRow> rows;
  auto add = [&](int row) {
    if (helpRowShown(row, dllRevision)) rows.push_back({row, rowText(row)});
  };
  if (group == HelpGroup::Available)
    for (int r : kAvailableOrder) add(r);
  else if (group == HelpGroup::Custom)
    for (int r : kCustomOrder) add(r);
  return rows;
}

}  // namespace script
