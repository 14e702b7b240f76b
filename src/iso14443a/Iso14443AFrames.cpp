#include "iso14443a/Iso14443AFrames.h"

#include <algorithm>

#include "common/hex.h"
#include "console/ChipFrames.h"
#include "reader/HexText.h"

namespace iso14443a {

namespace {

bool startsWith(std::string_view s, std::string_view prefix) { return s.substr(0, prefix.size()) == prefix; }
bool endsWith(std::string_view s, std::string_view suffix) {
  return s.size() >= suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

// The value of the leading hexadecimal digits, as the panel reads a caption as a number.
unsigned leadingHexValue(std::string_view text) {
  unsigned v = 0;
  for (char c : text) {
    const int d = hex::digitValue(c);
    if (d < 0) break;
    v = (v << 4 | static_cast<unsigned>(d)) & 0xFFFFFFFu;
  }
  return v;
}

std::string withoutBlanks(const std::string& text) {
  std::string out;
  for (char c : text)
    if (c != ' ') out += c;
  return out;
}

constexpr VariantTexts kNormal{
    "ISO14443-A Cards user interface",
    "02000180",
    "TL42RQ CONFIGURATION : ISO14443-A protocol",
    {"ISO14443-A : CONFIG", "ISO14443-A : INCREASE DEMOD GAIN", "ISO14443-A : INCREASE DEC TOLERANCE"},
    reader::ReconnectKind::Iso14443A,
};
constexpr VariantTexts kTopaz{
    "TOPAZ (ISO14443-A) user interface",
    "02000300",
    "TL42RQ CONFIGURATION : TOPAZ (ISO14443-A) protocol",
    {"ISO14443-A TOPAZ : CONFIG", "ISO14443-A TOPAZ : INCREASE DEMOD GAIN",
     "ISO14443-A TOPAZ : INCREASE DEC TOLERANCE"},
    reader::ReconnectKind::Iso14443ATopaz,
};

constexpr std::array<StageRow, kStages> kStageRows{{
    {1, "REQ A", "07", "ISO14443-A REQA"},
    {2, "ANTICOL 1", "08", "ISO14443-A ANTICOL 1"},
    {3, "SELECT 1", "28", "ISO14443-A SELECT 1"},
    {4, "ANTICOL 2", "08", "ISO14443-A ANTICOL 2"},
    {5, "SELECT 2", "28", "ISO14443-A SELECT 2"},
    {6, "ANTICOL 3", "08", "ISO14443-A ANTICOL 3"},
    {7, "SELECT 3", "28", "ISO14443-A SELECT 3"},
}};

// Select codes of the three cascade levels, as the single buttons send them.
constexpr std::array<const char*, 3> kSelectCodes{"93", "95", "97"};

}  // namespace

std::string mid(std::string_view text, long long position, long long length) {
  if (length <= 0) return {};
  long long first = position - 1;
  long long last = first + length;  // one past
  first = std::max(first, 0LL);
  last = std::min(last, static_cast<long long>(text.size()));
  if (first >= last) return {};
  return std::string(text.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first)));
}

Variant variantOf(std::string_view reference) { return reference == "TOPAZ" ? Variant::Topaz : Variant::Normal; }

const VariantTexts& variantTexts(Variant v) { return v == Variant::Topaz ? kTopaz : kNormal; }

std::vector<ConfigWrite> openingWrites(Variant v, const std::string& modulationGain) {
  const VariantTexts& t = variantTexts(v);
  return {{t.writeTitles[0], chip::kTimerConfiguration},
          {t.writeTitles[1], chip::iso14443AModulationGainFrame(modulationGain)},
          {t.writeTitles[2], chip::kCodecConfiguration14443A}};
}

const char* singleFlag(Single c) {
  switch (c) {
    case Single::Reqa:
    case Single::Wupa:
      return "07";
    case Single::Halt:
      return "00";
    case Single::Anticol:
      return "08";
    case Single::Select:
      return "28";
  }
  return "00";
}

std::string singleFrame(Single c, int index, const std::string& flagBox, const std::string& anticolArgument,
                        const std::string& selectData) {
  const std::string code = kSelectCodes[static_cast<std::size_t>(std::clamp(index, 0, 2))];
  switch (c) {
    case Single::Reqa:
      return "2607";
    case Single::Wupa:
      return "5207";
    case Single::Halt:
      // The 00 doubles as the flag byte: no second HLTA byte, no CRC.
      return "5000";
    case Single::Anticol:
      return code + anticolArgument + flagBox;
    case Single::Select:
      return code + "70" + selectData + flagBox;
  }
  return {};
}

std::string singleTitle(Single c, int index) {
  switch (c) {
    case Single::Reqa:
      return "ISO14443-A REQA";
    case Single::Wupa:
    case Single::Halt:
      return "ISO14443-A WUPA";
    case Single::Anticol:
      return "ISO14443-A ANTICOL " + std::to_string(index);
    case Single::Select:
      return "ISO14443-A SELECT " + std::to_string(index);
  }
  return {};
}

std::array<bool, 8> flagBits(std::string_view flagText) {
  unsigned v = leadingHexValue(flagText);
  std::array<bool, 8> bits{};
  for (bool& b : bits) {
    b = (v & 1) != 0;
    v >>= 1;
  }
  return bits;
}

std::string flagBoxOnLeave(std::string_view text) {
  if (text.empty()) return {};
  return reader::hexPadWidth7(static_cast<std::int32_t>(leadingHexValue(text)), 2);
}

Analysis analyseAnswer(std::string_view answer) {
  Analysis a;
  const long long n = static_cast<long long>(answer.size());
  a.fields[0] = mid(answer, 1, 2);
  a.fields[1] = mid(answer, 3, 2);
  a.fields[2] = mid(answer, 5, n - 10);
  a.fields[3] = mid(answer, n - 5, 2);
  a.flags = flagBits(a.fields[3]);
  a.fields[4] = mid(answer, n - 3, 2);
  a.fields[5] = mid(answer, n - 1, 2);
  return a;
}

std::array<std::string, 3> topazAnalysis(std::string_view answer) {
  const long long n = static_cast<long long>(answer.size());
  return {mid(answer, 1, 2), mid(answer, 3, 2), mid(answer, 5, n - 4)};
}

const StageRow& stageRow(Stage s) { return kStageRows[static_cast<std::size_t>(s)]; }

std::string stageFrame(Stage s, const std::string& flagBox, const std::string& anticolArgument,
                       const std::string& uidSegment) {
  switch (s) {
    case Stage::Reqa:
      return std::string("26") + "07";
    case Stage::Anticol1:
      return "93" + anticolArgument + flagBox;
    case Stage::Select1:
      return "93" + std::string("70") + uidSegment + flagBox;
    case Stage::Anticol2:
      return "95" + anticolArgument + flagBox;
    case Stage::Select2:
      return "95" + std::string("70") + uidSegment + flagBox;
    case Stage::Anticol3:
      return "93" + anticolArgument + flagBox;
    case Stage::Select3:
      return "93" + std::string("70") + flagBox;
  }
  return {};
}

std::string uidSegmentOf(std::string_view answer) { return mid(answer, 5, 10); }

std::string uidPartOf(std::string_view answer) {
  return mid(answer, 5, 2) == "88" ? mid(answer, 7, 6) : mid(answer, 5, 8);
}

std::string topazRidFrame() { return std::string("78000000000000") + kTopazFlag; }

RidBoxes ridBoxes(std::string_view answer) { return {mid(answer, 5, 2), mid(answer, 7, 2), mid(answer, 9, 8)}; }

std::string topazReadFrame(long address, const std::string& uid) {
  return "01" + frameAddress(address, 1) + "00" + uid + kTopazFlag;
}

std::string topazWriteFrame(bool erase, long address, const std::string& data, const std::string& uid) {
  return withoutBlanks((erase ? "53" : "1A") + frameAddress(address, 1) + data + uid + kTopazFlag);
}

std::string topazReadRow(std::string_view answer) {
  return goodWriteAnswer(answer) ? mid(answer, 7, 2) + " " : "error";
}

std::string frameAddress(long address, int addressBytes) {
  if (addressBytes == 2)
    return reader::hexPadWidth7(static_cast<std::int32_t>(address & 0xFF), 2) +
           reader::hexPadWidth7(static_cast<std::int32_t>((address >> 8) & 0xFF), 2);
  return reader::hexPadWidth7(static_cast<std::int32_t>(address), 2);
}

long readPageCount(long start, long end, long blockAddressMask) {
  if (end < start) return blockAddressMask + 2 + end + 3 - start;
  return end + 3 - start + 1;
}

std::string readFrame(long address, int addressBytes) { return "30" + frameAddress(address, addressBytes) + "28"; }

std::vector<std::string> readRows(std::string_view answer, int pageSize) {
  std::vector<std::string> rows;
  if (!startsWith(answer, "80")) return std::vector<std::string>(4, "error");
  const bool good = endsWith(answer, "00");
  for (int group = 0; group < 4; ++group) {
    std::string row;
    if (good) {
      const long long at = 5 + 8LL * group;
      for (int b = 0; b < pageSize; ++b) row += mid(answer, at + 2LL * b, 2) + " ";
    } else {
      // Nothing of the page has been taken when the tail fails.
      row += "error detected ";
    }
    rows.push_back(row);
  }
  return rows;
}

std::string writeFrame(long address, const std::string& data, int addressBytes) {
  return withoutBlanks("A2" + frameAddress(address, addressBytes) + data + "28");
}

std::array<std::string, 2> compatibilityWriteFrames(long address, const std::string& data, int addressBytes) {
  return {withoutBlanks("A0" + frameAddress(address, addressBytes) + "28"), withoutBlanks(data + "28")};
}

bool goodWriteAnswer(std::string_view answer) { return startsWith(answer, "80") && endsWith(answer, "00"); }

std::string ndefReadFrame(int page) { return "30" + reader::hexPadWidth7(page, 2) + "28"; }

std::string ndefBlockText(std::string_view answer) {
  if (!startsWith(answer, "80")) return "error";
  std::string text;
  if (!endsWith(answer, "00")) return text + "error detected ";
  for (int i = 0; i < 16; ++i) text += mid(answer, 5 + 2LL * i, 2) + " ";
  return text;
}

}  // namespace iso14443a
