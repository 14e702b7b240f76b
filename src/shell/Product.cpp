#include "shell/Product.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "shell/FieldReader.h"

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

// Products whose memory is 64 bytes whatever their density says.
bool isSixtyFourBytes(const std::string& r) { return r == "VAX10" || r == "VAX20" || r == "PDX51" || r == "PDT52"; }
}  // namespace

std::string referenceOfCaption(const std::string& caption) {
  const auto blank = caption.find(' ');
  return blank == std::string::npos ? caption : caption.substr(0, blank);
}

std::optional<Product> findProduct(const std::string& fileText, const std::string& reference) {
  FieldReader fields(fileText);
  if (!fields.next()) return std::nullopt;  // the header field
  while (!fields.atEnd()) {
    std::array<std::string, 7> f;
    for (auto& field : f) {
      auto value = fields.next();
      if (!value) return std::nullopt;
      field = *value;
    }
    if (f[0] == reference) {
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
