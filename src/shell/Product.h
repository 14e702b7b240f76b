// The product catalogue: one row of TL42RQ_products.ini per tag product or protocol,
// the global record of the product in use, and the memory sizes derived from it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "shell/GlobVariables.h"

// One row of the product file.
class Product {
 public:
  long Address() const { return address_; }
  void Address(long v) { address_ = v; }
  const std::string& TestMode() const { return testMode_; }
  void TestMode(std::string v) { testMode_ = std::move(v); }
  int NbAdressByte() const { return nbAdressByte_; }
  void NbAdressByte(int v) { nbAdressByte_ = v; }
  int NbAdressByteRF() const { return nbAdressByteRF_; }
  void NbAdressByteRF(int v) { nbAdressByteRF_ = v; }
  int PageSize() const { return pageSize_; }
  void PageSize(int v) { pageSize_ = v; }
  long Density() const { return density_; }
  void Density(long v) { density_ = v; }
  const std::string& Reference() const { return reference_; }
  void Reference(std::string v) { reference_ = std::move(v); }

 private:
  long address_ = 0;
  std::string testMode_;
  int nbAdressByte_ = 0;
  int nbAdressByteRF_ = 0;
  int pageSize_ = 0;
  long density_ = 0;
  std::string reference_;
};

// A collection of text rows: the memory panels keep tag memory in one of these.
class Memoire {
 public:
  void AddItem(std::string row) { rows_.push_back(std::move(row)); }
  long Size() const { return static_cast<long>(rows_.size()); }
  void Clear() { rows_.clear(); }
  const std::vector<std::string>& Contenu() const { return rows_; }
  void Contenu(std::vector<std::string> rows) { rows_ = std::move(rows); }
  // Rows counted from 0; an index out of range reads empty and writes nothing.
  std::string Item(long index) const;
  void Item(long index, std::string row);

 private:
  std::vector<std::string> rows_;
};

namespace shell {

// What a lookup of a reference in the product file found.
enum class LookupResult { FileMissing, NotFound, Found };

// Looks the first word of a menu caption up in the file's text (a header field, then
// records of seven fields, one a line). A line that is no such record (short, with extra
// fields, with a quote not closed) matches nothing and hides no other.
std::optional<Product> findProduct(const std::string& fileText, const std::string& reference);
// The first word of a caption: "ISO14443-B Cards commands" -> "ISO14443-B".
std::string referenceOfCaption(const std::string& caption);

// Values derived from the product in use.
struct ProductSizes {
  long memorySize = 0;       // bytes
  int pageRowBytes = 4;      // block width
  long lastAddress = -1;
  long blockAddressMask = -1;  // the last page
  std::vector<unsigned char> memoryImage;
  long bufferPosition = 0;
};
ProductSizes deriveSizes(const Product& p);

// The panel that serves a reference; nullopt for a reference without one.
std::optional<glob::PanelId> panelForReference(const std::string& reference);

// The global record, its derived values and the memory rows of the memory panels.
Product& currentProduct();
ProductSizes& productSizes();

}  // namespace shell

Memoire& memoryBuffer();
