#include "shell/Product.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include <string_view>

std::string Memoire::Item(long index) const {
  if (index < 0 || index >= Size()) return {};
  return rows_[static_cast<std::size_t>(index)];
}

void Memoire::Item(long index, std::string row) {
  if (index < 0 || index >= Size()) return;
  rows_[static_cast<std::size_t>(index)] = std::move(row);
}

Memoire& memoryBuffer() {
  static Memoire m;
  return m;
}

namespace shell {

namespace {
// A number field as the file's reader takes it: leading digits, else 0.
// Kept within 32 bits like the file's integer fields, so that sizes derived from a
// broken row cannot overflow.
long numberField(const std::string& text) {
  const long v = std::strtol(text.c_str(), nullptr, 10);
  return std::clamp(v, -2147483648L, 2147483647L);
}

struct PanelRow {
  const char* reference;
  glob::PanelId panel;
};
constexpr std::array<PanelRow, 19> kPanelOfReference{{
    {"VAX30", glob::PanelId::ISO15693},   {"VAX40", glob::PanelId::ISO15693},
    {"VAS50", glob::PanelId::ISO15693},   {"VAS60E", glob::PanelId::ISO15693},
    {"VAS70", glob::PanelId::ISO15693},   {"QLN41E", glob::PanelId::ISO15693},
    {"QLN42E", glob::PanelId::ISO15693},  {"QLN43", glob::PanelId::ISO15693},
    {"QLN44E", glob::PanelId::ISO15693},  {"ISO14443-B", glob::PanelId::ISO14443B},
    {"PDX51", glob::PanelId::ISO14443B},  {"PDT52", glob::PanelId::ISO14443B},
    {"PDX53", glob::PanelId::ISO14443B},  {"PDX54", glob::PanelId::ISO14443B},
    {"PDY55", glob::PanelId::ISO14443B},  {"ISO14443-A", glob::PanelId::ISO14443A},
    {"TOPAZ", glob::PanelId::ISO14443A},  {"ISO18092", glob::PanelId::ISO18092},
    {"", glob::PanelId::Count},
}};

// The fields of one line of the file, read as its reader reads fields: a field in double
// quotes may hold commas, and whatever stands between its closing quote and the next comma
// is dropped; an unquoted field runs to the next comma, blanks around it dropped. Nullopt
// when a quote is not closed on its line.
std::optional<std::vector<std::string>> lineFields(std::string_view line) {
  std::vector<std::string> fields;
  std::size_t pos = 0;
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (true) {
    while (pos < line.size() && isBlank(line[pos])) ++pos;
    std::string field;
    if (pos < line.size() && line[pos] == '"') {
      const std::size_t close = line.find('"', pos + 1);
      if (close == std::string_view::npos) return std::nullopt;
      field = std::string(line.substr(pos + 1, close - pos - 1));
      pos = close + 1;
      while (pos < line.size() && line[pos] != ',') ++pos;
    } else {
      std::size_t end = pos;
      while (end < line.size() && line[end] != ',') ++end;
      field = std::string(line.substr(pos, end - pos));
      while (!field.empty() && isBlank(field.back())) field.pop_back();
      pos = end;
    }
    fields.push_back(std::move(field));
    if (pos >= line.size()) return fields;
    ++pos;  // the comma
  }
}

// The file's lines, whatever their line ends.
std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string_view::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
  }
  return lines;
}

bool blankLine(std::string_view line) { return line.find_first_not_of(" \t") == std::string_view::npos; }

constexpr std::size_t kRecordFields = 7;

// Products whose memory is 64 bytes whatever their density says.
bool isSixtyFourBytes(const std::string& r) { return r == "VAX10" || r == "VAX20" || r == "PDX51" || r == "PDT52"; }
}  // namespace

std::string referenceOfCaption(const std::string& caption) {
  const auto blank = caption.find(' ');
  return blank == std::string::npos ? caption : caption.substr(0, blank);
}

// Record by record, one line each: a line that is not a record of seven fields (a short
// record, extra fields, a quote not closed) hides only itself, and the records after it
// are found as if it were not there. A reference that is not found stays silent.
std::optional<Product> findProduct(const std::string& fileText, const std::string& reference) {
  const std::vector<std::string_view> lines = linesOf(fileText);
  std::size_t first = 0;
  while (first < lines.size() && blankLine(lines[first])) ++first;
  for (std::size_t i = first; i < lines.size(); ++i) {
    if (blankLine(lines[i])) continue;
    auto fields = lineFields(lines[i]);
    if (!fields) continue;
    // The file begins with one field, the header: skipped, the rest of its line read on.
    if (i == first) fields->erase(fields->begin());
    if (fields->size() != kRecordFields || (*fields)[0] != reference) continue;
    const std::vector<std::string>& f = *fields;
    Product p;
    p.Reference(f[0]);
    p.Density(numberField(f[1]));
    p.PageSize(static_cast<int>(numberField(f[2])));
    p.NbAdressByte(static_cast<int>(numberField(f[3])));
    p.NbAdressByteRF(static_cast<int>(numberField(f[4])));
    p.TestMode(f[5]);
    p.Address(numberField(f[6]));
    return p;
  }
  return std::nullopt;
}

ProductSizes deriveSizes(const Product& p) {
  ProductSizes s;
  s.memorySize = isSixtyFourBytes(p.Reference()) ? 64 : p.Density() * 1024 / 8;
  s.pageRowBytes = p.Reference() == "VAX10" ? 1 : 4;
  s.lastAddress = s.memorySize - 1;
  // A page size of 0 in a broken row would divide by zero; such a product has no pages.
  s.blockAddressMask = p.PageSize() > 0 ? s.memorySize / p.PageSize() - 1 : -1;
  // A broken row must not make the program reserve gigabytes: no product of the family
  // comes near 16 MiB.
  constexpr long kLargestImage = 1L << 24;
  const long imageSize = s.blockAddressMask >= 0 ? std::min(s.blockAddressMask * 4 + 1, kLargestImage) : 0;
  s.memoryImage.assign(static_cast<std::size_t>(std::max(imageSize, 0L)), 0);
  const long filled = std::min<long>(s.memorySize, imageSize);
  for (long i = 0; i < filled; ++i) s.memoryImage[static_cast<std::size_t>(i)] = 0xFF;
  s.bufferPosition = 0;
  return s;
}

std::optional<glob::PanelId> panelForReference(const std::string& reference) {
  for (const PanelRow& row : kPanelOfReference)
    if (reference == row.reference && row.panel != glob::PanelId::Count) return row.panel;
  return std::nullopt;
}

Product& currentProduct() {
  static Product p;
  return p;
}

ProductSizes& productSizes() {
  static ProductSizes s;
  return s;
}

}  // namespace shell
