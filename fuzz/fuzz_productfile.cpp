// The product file is text a person may edit: any bytes must give a product or none, and
// the sizes derived from any product must stay sane (no overflow, no giant image).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "shell/FieldReader.h"
#include "shell/Product.h"

namespace {

void checkSizes(const Product& p) {
  const shell::ProductSizes s = shell::deriveSizes(p);
  if (s.lastAddress != s.memorySize - 1) std::abort();
  if (s.pageRowBytes != 1 && s.pageRowBytes != 4) std::abort();
  if (s.memoryImage.size() > (std::size_t{1} << 24) + 1) std::abort();
  if (s.bufferPosition != 0) std::abort();
  // Only the bytes that the memory has are 0xFF.
  std::size_t filled = 0;
  for (unsigned char b : s.memoryImage) filled += b == 0xFF;
  if (s.memorySize >= 0 && filled > static_cast<std::size_t>(s.memorySize)) std::abort();
  (void)shell::panelForReference(p.Reference());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);

  // Look up the references of the menus, the caption's first word of the text's first
  // line, and the first field of the first record (which the file must then find).
  const std::string firstLine = text.substr(0, text.find_first_of("\r\n"));
  shell::FieldReader fields(text);
  fields.next();  // header
  const auto firstRecord = fields.next();
  for (const std::string& ref : {std::string("VAS60E"), std::string("TOPAZ"), std::string("VAX10"), std::string(),
                                 shell::referenceOfCaption(firstLine), firstRecord.value_or("")}) {
    if (auto p = shell::findProduct(text, ref)) {
      if (p->Reference() != ref) std::abort();
      checkSizes(*p);
    }
  }

  // Whatever the record's fields hold, also straight into a product.
  shell::FieldReader raw(text);
  Product p;
  if (auto f = raw.next()) p.Reference(*f);
  if (auto f = raw.next()) p.Density(std::strtol(f->c_str(), nullptr, 10) % 100000000);
  if (auto f = raw.next()) p.PageSize(static_cast<int>(std::strtol(f->c_str(), nullptr, 10) % 100000));
  checkSizes(p);
  return 0;
}
