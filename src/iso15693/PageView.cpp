#include "iso15693/PageView.h"

#include <algorithm>
#include <cctype>

#include "common/hex.h"
#include "reader/HexText.h"

namespace pageview {

std::string displayRow(long address, int width, const std::string& row) {
  return reader::hexPadWidth7(static_cast<std::int32_t>(address), static_cast<std::uint8_t>(std::clamp(width, 0, 255))) +
         "   " + row;
}

Shown showReadRows(const std::vector<std::string>& buffer, long count, long start, long mask, int width) {
  Shown s;
  const long size = static_cast<long>(buffer.size());
  long first = 0;
  long last = -1;
  if (count > kVisibleRows) {
    s.firstShownRow = count - kVisibleRows + 1;
    first = std::max(0L, size - kVisibleRows);
    last = size - 1;
  } else {
    s.firstShownRow = 1;
    first = 0;
    last = std::min(count, size) - 1;
  }
  for (long i = first; i <= last; ++i)
    s.rows.push_back(displayRow((start + i) & mask, width, buffer[static_cast<std::size_t>(i)]));
  return s;
}

Key keyOfCode(int code) {
  switch (code) {
    case 0x23:
      return Key::End;
    case 0x28:
      return Key::Down;
    case 0x27:
      return Key::Right;
    case 0x22:
      return Key::PageDown;
    case 0x26:
      return Key::Up;
    case 0x25:
      return Key::Left;
    case 0x21:
      return Key::PageUp;
    case 0x24:
      return Key::Home;
    default:
      return Key::Other;
  }
}

KeyOutcome keyDown(Key key, long first, int index, long size) {
  KeyOutcome o;
  o.firstShownRow = first;
  switch (key) {
    case Key::End:
      if (first < size - 15) {
        o.refill = true;
        o.firstShownRow = size - 15;
      }
      break;
    case Key::Down:
    case Key::Right:
      if (index == 15 && first + 16 <= size) {
        o.refill = true;
        o.firstShownRow = first + 1;
        o.listIndex = 15;
      }
      break;
    case Key::PageDown:
      if (first + 16 <= size) {
        o.refill = true;
        o.firstShownRow = first <= size - 32 ? first + 16 : size - 15;
      }
      break;
    case Key::Up:
    case Key::Left:
      if (index == 0 && first > 1) {
        o.refill = true;
        o.firstShownRow = first - 1;
        o.listIndex = 0;
      }
      break;
    case Key::PageUp:
      if (first > 1) {
        o.refill = true;
        o.firstShownRow = first > 16 ? first - 16 : 1;
      }
      break;
    case Key::Home:
      if (first != 1) {
        o.refill = true;
        o.firstShownRow = 1;
      }
      break;
    case Key::Other:
      break;
  }
  return o;
}

long addressBase(const std::string& topRow, long firstShownRow) {
  const std::string field = topRow.substr(0, topRow.find("   "));
  long v = 0;
  for (char c : field) {
    const int d = hex::digitValue(c);
    if (d < 0) break;
    v = (v << 4 | d) & 0x7FFFFFFF;
  }
  return v - (firstShownRow - 1);
}

std::vector<std::string> refill(const std::vector<std::string>& buffer, long first, long base, long mask, int width) {
  std::vector<std::string> rows;
  const long size = static_cast<long>(buffer.size());
  for (long i = std::max(first, 1L); i < first + kVisibleRows && i <= size; ++i)
    rows.push_back(displayRow((base + i - 1) & mask, width, buffer[static_cast<std::size_t>(i - 1)]));
  return rows;
}

namespace {
std::string repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}
}  // namespace

std::string fullBoxMask(Variant v) { return ">" + repeat("AA ", v == Variant::Iso14443A ? 4 : 16); }
std::string fullBoxText(Variant v) { return repeat("00 ", v == Variant::Iso14443A ? 4 : 16); }

Grid pageGrid(int bytes, int pageRowBytes, Variant v) {
  Grid g;
  if (pageRowBytes < 1) return g;
  bytes = std::max(bytes, 0);  // an empty page size list: one box without places
  const int r = (bytes - 1) / pageRowBytes;
  const int m = (bytes - 1) % pageRowBytes;
  for (int i = 0; i < r; ++i) {
    g.masks.push_back(fullBoxMask(v));
    g.texts.push_back(fullBoxText(v));
  }
  g.masks.push_back(">" + repeat("AA ", m + 1));
  g.texts.push_back(repeat("00 ", m + 1));
  return g;
}

bool oneByteMode(int mode) { return mode == 1 || mode == 2 || mode == 3 || mode == 6 || mode == 99; }

long numberOf(const std::string& text) {
  long v = 0;
  std::size_t i = 0;
  while (i < text.size() && text[i] == ' ') ++i;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) && v < 100000000L; ++i)
    v = v * 10 + (text[i] - '0');
  return v;
}

int fillByteCount(Variant v, int writeMode, const std::string& pageSizeText) {
  switch (v) {
    case Variant::Iso15693:
      return oneByteMode(writeMode) ? 1 : static_cast<int>(numberOf(pageSizeText));
    case Variant::Iso14443A:
      return static_cast<int>(numberOf(pageSizeText));
    case Variant::Iso14443B:
      return 4;
  }
  return 0;
}

std::optional<std::vector<std::string>> fillTexts(const std::string& fill, int bytes, int pageRowBytes) {
  const std::string group = fill.substr(0, 2) + " ";
  if (!reader::checkHexData(group, 1)) return std::nullopt;
  if (pageRowBytes < 1) return std::vector<std::string>{};
  bytes = std::max(bytes, 0);
  const int r = (bytes - 1) / pageRowBytes;
  const int m = (bytes - 1) % pageRowBytes;
  std::vector<std::string> texts;
  for (int i = 0; i < r; ++i) texts.push_back(repeat(group, pageRowBytes));
  texts.push_back(repeat(group, m + 1));
  return texts;
}

}  // namespace pageview
