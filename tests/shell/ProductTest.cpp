#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "shell/Product.h"

namespace {

using glob::PanelId;

const std::string kHeader =
    "\"Reference, Density (kbit), PageSize (bytes), NbAdressByte, NbAdressByteRF, TestMode, Address\"\r\n";

const std::string kFile = kHeader +
                          "\"VAX10\",2,4,0,1,\"NONE\",0\r\n"
                          "\"VAX20\",2,4,0,1,\"NONE\",0\r\n"
                          "\"VAS60E\",64,4,2,2,\"NONE\",0\r\n"
                          "ISO14443-B,2,4,0,1,NONE,0\r\n"
                          "\"PDX51\",1,4,0,1,\"NONE\",0\r\n"
                          "\"PDT52\",1,4,0,1,\"NONE\",0\r\n"
                          "\"TOPAZ\",1,8,0,1,\"TM1\",16\r\n"
                          " QLN43 , 64 , 4 , 2 , 2 , NONE , 7 \r\n";

std::string shippedProductFile() {
  std::ifstream in(std::string(TEST_FIXTURES) + "/../../data/TL42RQ_products.ini", std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

TEST(ProductFile, FindsAQuotedRecordAndFillsEveryField) {
  const auto p = shell::findProduct(kFile, "TOPAZ");
  ASSERT_TRUE(p.has_value());
  EXPECT_EQ(p->Reference(), "TOPAZ");
  EXPECT_EQ(p->Density(), 1);
  EXPECT_EQ(p->PageSize(), 8);
  EXPECT_EQ(p->NbAdressByte(), 0);
  EXPECT_EQ(p->NbAdressByteRF(), 1);
  EXPECT_EQ(p->TestMode(), "TM1");
  EXPECT_EQ(p->Address(), 16);
}

TEST(ProductFile, FindsAnUnquotedRecordWithBlanksAroundItsFields) {
  const auto p = shell::findProduct(kFile, "QLN43");
  ASSERT_TRUE(p.has_value());
  EXPECT_EQ(p->Density(), 64);
  EXPECT_EQ(p->NbAdressByteRF(), 2);
  EXPECT_EQ(p->TestMode(), "NONE");
  EXPECT_EQ(p->Address(), 7);
  EXPECT_TRUE(shell::findProduct(kFile, "ISO14443-B").has_value());
}

TEST(ProductFile, HeaderFieldIsSkippedNotMatched) {
  const std::string header = "Reference, Density (kbit), PageSize (bytes), NbAdressByte, NbAdressByteRF, TestMode, Address";
  EXPECT_FALSE(shell::findProduct(kFile, header).has_value());
  // An unquoted header of one word is skipped the same way.
  EXPECT_FALSE(shell::findProduct("Reference\r\n\"VAX30\",2,4,0,1,\"NONE\",0\r\n", "Reference").has_value());
  EXPECT_TRUE(shell::findProduct("Reference\r\n\"VAX30\",2,4,0,1,\"NONE\",0\r\n", "VAX30").has_value());
}

TEST(ProductFile, MatchIsExact) {
  EXPECT_FALSE(shell::findProduct(kFile, "vas60e").has_value());
  EXPECT_FALSE(shell::findProduct(kFile, "VAS60").has_value());
  EXPECT_FALSE(shell::findProduct(kFile, "VAS60E ").has_value());
  EXPECT_FALSE(shell::findProduct(kFile, "NONE").has_value());  // a field that is not first in its record
  EXPECT_FALSE(shell::findProduct(kFile, "2").has_value());
}

TEST(ProductFile, FirstMatchingRecordWins) {
  const std::string twice = kHeader + "\"X\",1,4,0,1,\"A\",0\r\n\"X\",2,4,0,1,\"B\",0\r\n";
  EXPECT_EQ(shell::findProduct(twice, "X")->TestMode(), "A");
}

TEST(ProductFile, EmptyTextOrHeaderOnlyFindsNothing) {
  EXPECT_FALSE(shell::findProduct("", "VAX30").has_value());
  EXPECT_FALSE(shell::findProduct(kHeader, "VAX30").has_value());
}

TEST(ProductFile, RecordCutShortByTheEndDoesNotMatch) {
  EXPECT_FALSE(shell::findProduct(kHeader + "\"VAX30\",2,4,0,1", "VAX30").has_value());
}

TEST(ProductFile, LettersInNumberFieldsReadAsTheirLeadingDigitsOrZero) {
  const auto p = shell::findProduct(kHeader + "\"B\",12kb,x4,,1,\"N\",-3\r\n", "B");
  ASSERT_TRUE(p.has_value());
  EXPECT_EQ(p->Density(), 12);
  EXPECT_EQ(p->PageSize(), 0);
  EXPECT_EQ(p->NbAdressByte(), 0);
  EXPECT_EQ(p->Address(), -3);
}

// A malformed record hides only itself: the records before and after it are found with
// every field as written.
void expectNeighboursIntact(const std::string& badLine) {
  const std::string text = kHeader + "\"A\",1,4,0,1,\"NA\",5\r\n" + badLine + "\r\n\"B\",2,8,1,2,\"NB\",6\r\n";
  const auto a = shell::findProduct(text, "A");
  ASSERT_TRUE(a.has_value()) << badLine;
  EXPECT_EQ(a->TestMode(), "NA");
  EXPECT_EQ(a->Address(), 5);
  const auto b = shell::findProduct(text, "B");
  ASSERT_TRUE(b.has_value()) << badLine;
  EXPECT_EQ(b->Density(), 2);
  EXPECT_EQ(b->PageSize(), 8);
  EXPECT_EQ(b->NbAdressByte(), 1);
  EXPECT_EQ(b->NbAdressByteRF(), 2);
  EXPECT_EQ(b->TestMode(), "NB");
  EXPECT_EQ(b->Address(), 6);
}

TEST(ProductFile, ShortRecordHidesOnlyItself) {
  expectNeighboursIntact("\"S\",1,4,0,1,\"N\"");
  EXPECT_FALSE(shell::findProduct(kHeader + "\"S\",1,4,0,1,\"N\"\r\n", "S").has_value());
  // A trailing comma is an empty seventh field: the record is whole.
  EXPECT_EQ(shell::findProduct(kHeader + "\"S\",1,4,0,1,\"N\",\r\n", "S")->Address(), 0);
}

TEST(ProductFile, RecordWithExtraFieldsHidesOnlyItself) {
  expectNeighboursIntact("\"E\",1,4,0,1,\"N\",0,9");
  expectNeighboursIntact("\"E\",1,4,0,1,\"N\",0,");
  EXPECT_FALSE(shell::findProduct(kHeader + "\"E\",1,4,0,1,\"N\",0,9\r\n", "E").has_value());
}

TEST(ProductFile, UnclosedQuoteHidesOnlyItsRecord) {
  expectNeighboursIntact("\"Q\",1,4,0,1,\"NONE,0");
  expectNeighboursIntact("\"Q,1,4,0,1,NONE,0");
  EXPECT_FALSE(shell::findProduct(kHeader + "\"Q\",1,4,0,1,\"NONE,0\r\n", "Q").has_value());
}

TEST(ProductFile, SeveralBadRecordsAndBlankLinesHideNothingElse) {
  const std::string text = kHeader + "\r\n\"X\"\n  \n\"Y\",1,\"open\n\"VAX30\",2,4,0,1,\"NONE\",0\n" + ",,,,,,,,\r" +
                           "\"VAS60E\",64,4,2,2,\"NONE\",0";
  EXPECT_EQ(shell::findProduct(text, "VAX30")->Density(), 2);
  EXPECT_EQ(shell::findProduct(text, "VAS60E")->Density(), 64);  // last line, no line end
  EXPECT_FALSE(shell::findProduct(text, "X").has_value());
  EXPECT_FALSE(shell::findProduct(text, "Y").has_value());
}

TEST(ProductFile, RecordOnTheHeadersLineIsRead) {
  EXPECT_EQ(shell::findProduct("\"Header\",\"VAX30\",2,4,0,1,\"NONE\",3", "VAX30")->Address(), 3);
  // A header with an unclosed quote is a bad line like any other.
  EXPECT_EQ(shell::findProduct("\"Header\r\n\"VAX30\",2,4,0,1,\"NONE\",3\r\n", "VAX30")->Address(), 3);
}

TEST(ProductFile, ShippedFileHasNoMalformedRecord) {
  // Every line after the header of the shipped file is a record that is found.
  const std::string text = shippedProductFile();
  std::istringstream lines(text);
  std::string line;
  std::getline(lines, line);
  int found = 0;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) continue;
    const std::string reference = line.substr(1, line.find('"', 1) - 1);
    EXPECT_TRUE(shell::findProduct(text, reference).has_value()) << reference;
    ++found;
  }
  EXPECT_GT(found, 0);
}

TEST(ProductCaption, FirstWordIsTheReference) {
  EXPECT_EQ(shell::referenceOfCaption("ISO14443-B Cards commands"), "ISO14443-B");
  EXPECT_EQ(shell::referenceOfCaption("VAS60E"), "VAS60E");
  EXPECT_EQ(shell::referenceOfCaption(""), "");
  EXPECT_EQ(shell::referenceOfCaption(" leading"), "");
}

TEST(ProductCaption, CaptionFindsItsProduct) {
  const auto p = shell::findProduct(kFile, shell::referenceOfCaption("ISO14443-B Cards commands"));
  ASSERT_TRUE(p.has_value());
  EXPECT_EQ(p->Reference(), "ISO14443-B");
}

TEST(ProductCaption, SeparatorOfDashesMatchesNothing) {
  EXPECT_FALSE(shell::findProduct(kFile, shell::referenceOfCaption("-")).has_value());
  EXPECT_FALSE(shell::findProduct(kFile, shell::referenceOfCaption("----------")).has_value());
  EXPECT_FALSE(shell::findProduct(shippedProductFile(), shell::referenceOfCaption("-")).has_value());
}

Product product(const std::string& reference, long density, int pageSize) {
  Product p;
  p.Reference(reference);
  p.Density(density);
  p.PageSize(pageSize);
  return p;
}

TEST(ProductSizes, FourReferencesAreSixtyFourBytesWhateverTheirDensity) {
  for (const char* r : {"VAX10", "VAX20", "PDX51", "PDT52"}) {
    const auto s = shell::deriveSizes(product(r, 64, 4));
    EXPECT_EQ(s.memorySize, 64) << r;
    EXPECT_EQ(s.lastAddress, 63) << r;
    EXPECT_EQ(s.blockAddressMask, 15) << r;
  }
}

TEST(ProductSizes, OtherReferencesTakeDensityInKilobits) {
  const auto s = shell::deriveSizes(product("VAS60E", 64, 4));
  EXPECT_EQ(s.memorySize, 8192);
  EXPECT_EQ(s.lastAddress, 8191);
  EXPECT_EQ(s.blockAddressMask, 2047);
  EXPECT_EQ(s.bufferPosition, 0);
  const auto topaz = shell::deriveSizes(product("TOPAZ", 1, 8));
  EXPECT_EQ(topaz.memorySize, 128);
  EXPECT_EQ(topaz.blockAddressMask, 15);
}

TEST(ProductSizes, PageRowBytesIsOneOnlyForVax10) {
  EXPECT_EQ(shell::deriveSizes(product("VAX10", 2, 4)).pageRowBytes, 1);
  for (const char* r : {"VAX20", "PDX51", "PDT52", "VAS60E", "TOPAZ", "ISO14443-A", "vax10"})
    EXPECT_EQ(shell::deriveSizes(product(r, 2, 4)).pageRowBytes, 4) << r;
}

TEST(ProductSizes, MemoryImageRunsToLastPageTimesFourAndIsFilledWithFF) {
  const auto s = shell::deriveSizes(product("VAS50", 4, 4));  // 512 bytes, 128 pages
  ASSERT_EQ(s.blockAddressMask, 127);
  ASSERT_EQ(s.memoryImage.size(), 127u * 4 + 1);
  EXPECT_TRUE(std::all_of(s.memoryImage.begin(), s.memoryImage.end(), [](unsigned char b) { return b == 0xFF; }));
}

TEST(ProductSizes, OnlyAsManyBytesAsTheMemorySizeAreFilled) {
  // One-byte pages: the image (last page * 4 + 1) is larger than the memory.
  const auto s = shell::deriveSizes(product("VAX10", 2, 1));
  ASSERT_EQ(s.memorySize, 64);
  ASSERT_EQ(s.blockAddressMask, 63);
  ASSERT_EQ(s.memoryImage.size(), 253u);
  EXPECT_EQ(std::count(s.memoryImage.begin(), s.memoryImage.end(), 0xFF), 64);
  EXPECT_EQ(s.memoryImage[63], 0xFF);
  EXPECT_EQ(s.memoryImage[64], 0x00);
}

TEST(ProductSizes, PageSizeZeroGivesNoPagesAndNoCrash) {
  const auto s = shell::deriveSizes(product("VAS60E", 64, 0));
  EXPECT_EQ(s.memorySize, 8192);
  EXPECT_EQ(s.blockAddressMask, -1);
  EXPECT_TRUE(s.memoryImage.empty());
}

TEST(ProductSizes, NegativeNumbersGiveNoImage) {
  const auto s = shell::deriveSizes(product("X", -8, 4));
  EXPECT_EQ(s.memorySize, -1024);
  EXPECT_TRUE(s.memoryImage.empty());
  EXPECT_TRUE(shell::deriveSizes(product("X", 8, -4)).memoryImage.empty());
}

TEST(ProductSizes, HugeDensityNeitherOverflowsNorReservesGigabytes) {
  const auto p = shell::findProduct(kHeader + "\"H\",99999999999999999999,1,0,0,\"N\",0\r\n", "H");
  ASSERT_TRUE(p.has_value());
  EXPECT_EQ(p->Density(), 2147483647L);
  const auto s = shell::deriveSizes(*p);
  EXPECT_EQ(s.memorySize, 2147483647L * 128);
  EXPECT_GT(s.blockAddressMask, 0);
  EXPECT_LE(s.memoryImage.size(), std::size_t{1} << 24);
  EXPECT_EQ(s.memoryImage.front(), 0xFF);
  EXPECT_EQ(s.memoryImage.back(), 0xFF);
}

TEST(ProductPanel, EachReferenceOpensItsPanel) {
  for (const char* r : {"VAX30", "VAX40", "VAS50", "VAS60E", "VAS70", "QLN41E", "QLN42E", "QLN43", "QLN44E"})
    EXPECT_EQ(shell::panelForReference(r), PanelId::ISO15693) << r;
  for (const char* r : {"ISO14443-B", "PDX51", "PDT52", "PDX53", "PDX54", "PDY55"})
    EXPECT_EQ(shell::panelForReference(r), PanelId::ISO14443B) << r;
  for (const char* r : {"ISO14443-A", "TOPAZ"}) EXPECT_EQ(shell::panelForReference(r), PanelId::ISO14443A) << r;
  EXPECT_EQ(shell::panelForReference("ISO18092"), PanelId::ISO18092);
}

TEST(ProductPanel, ReferencesWithoutAPanelHaveNone) {
  for (const char* r : {"VAX10", "VAX20", "", "iso18092", "TOPAZ ", "Count"})
    EXPECT_FALSE(shell::panelForReference(r).has_value()) << r;
}

TEST(ProductPanel, ShippedFileHasARowForEveryReferenceWithAPanel) {
  const std::string text = shippedProductFile();
  ASSERT_FALSE(text.empty());
  for (const char* r : {"VAX30", "VAX40", "VAS50", "VAS60E", "VAS70", "QLN41E", "QLN42E", "QLN43", "QLN44E",
                        "ISO14443-B", "PDX51", "PDT52", "PDX53", "PDX54", "PDY55", "ISO14443-A", "TOPAZ",
                        "ISO18092"}) {
    const auto p = shell::findProduct(text, r);
    ASSERT_TRUE(p.has_value()) << r;
    EXPECT_GT(p->PageSize(), 0) << r;
  }
}

TEST(ProductGlobals, OneRecordAndOneSetOfSizes) {
  EXPECT_EQ(&shell::currentProduct(), &shell::currentProduct());
  EXPECT_EQ(&shell::productSizes(), &shell::productSizes());
  EXPECT_EQ(&memoryBuffer(), &memoryBuffer());
}

TEST(Memoire, AddSizeClearAndContenu) {
  Memoire m;
  EXPECT_EQ(m.Size(), 0);
  m.AddItem("0000 : 01 02 03 04");
  m.AddItem("0001 : FF FF FF FF");
  EXPECT_EQ(m.Size(), 2);
  EXPECT_EQ(m.Item(1), "0001 : FF FF FF FF");
  m.Item(0, "changed");
  EXPECT_EQ(m.Contenu(), (std::vector<std::string>{"changed", "0001 : FF FF FF FF"}));
  m.Contenu({"x"});
  EXPECT_EQ(m.Size(), 1);
  m.Clear();
  EXPECT_EQ(m.Size(), 0);
}

TEST(Memoire, IndexOutOfRangeReadsEmptyAndWritesNothing) {
  Memoire m;
  m.AddItem("a");
  EXPECT_EQ(m.Item(-1), "");
  EXPECT_EQ(m.Item(1), "");
  m.Item(5, "b");
  m.Item(-1, "b");
  EXPECT_EQ(m.Contenu(), std::vector<std::string>{"a"});
}

}  // namespace
