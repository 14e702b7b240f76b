// The memory page view that the three memory panels share, without its widgets: which
// rows of the buffer the sixteen-row list shows, how the keys scroll it, the masks and
// texts of the write grid, and the fill of the grid.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace pageview {

inline constexpr int kVisibleRows = 16;
inline constexpr const char* kEmptyFill = "__";
// The list's font.
inline constexpr const char* kFontFamily = "Courier New";

// The three panels that show the view, with their differences.
enum class Variant {
  Iso15693,   // N of the fill from cboPageSize, or 1 by writeMode; full boxes of sixteen places
  Iso14443A,  // N from the box txtPageSize; full boxes of four places
  Iso14443B,  // N is the constant 4; full boxes of sixteen places
};

// Displayed row: the block address padded to the width of the address box, three
// blanks, the buffer row.
std::string displayRow(long address, int width, const std::string& row);

struct Shown {
  long firstShownRow = 1;  // buffer number (from 1) of the top row
  std::vector<std::string> rows;
};
// The rows after a read of `count` blocks from `start`.
Shown showReadRows(const std::vector<std::string>& buffer, long count, long start, long blockAddressMask, int width);

// Keys of the list (key down), by their virtual key codes.
enum class Key { End, Down, Right, PageDown, Up, Left, PageUp, Home, Other };
Key keyOfCode(int virtualKeyCode);

struct KeyOutcome {
  bool refill = false;
  long firstShownRow = 1;
  int listIndex = -1;  // -1: as before
};
KeyOutcome keyDown(Key key, long firstShownRow, int listIndex, long bufferSize);

// The address of buffer number 1, from the list's top row and the current firstShownRow.
long addressBase(const std::string& topRow, long firstShownRow);
// Sixteen rows from firstShownRow (fewer when the buffer ends first).
std::vector<std::string> refill(const std::vector<std::string>& buffer, long firstShownRow, long base,
                                long blockAddressMask, int width);

// The write grid for N bytes.
struct Grid {
  std::vector<std::string> masks;  // of PWData 0 to R, in the toolkit-neutral form ">AA AA "
  std::vector<std::string> texts;
};
Grid pageGrid(int bytes, int pageRowBytes, Variant variant);
// The full box's mask and text of a variant.
std::string fullBoxMask(Variant variant);
std::string fullBoxText(Variant variant);

// The write modes whose grid and data hold one byte (AFI, DSFID, write kill, lock sector
// password, and 99, which no handler sets).
bool oneByteMode(int writeMode);
// N of a fill: by the variant's rule.
int fillByteCount(Variant variant, int writeMode, const std::string& pageSizeText);
// The texts of PWData 0 to R after a fill with the two characters of mskFillPage;
// nullopt when the two characters and a blank fail the grouped hexadecimal check.
std::optional<std::vector<std::string>> fillTexts(const std::string& fill, int bytes, int pageRowBytes);

// A number field read as the lenient reader does: leading digits, else 0.
long numberOf(const std::string& text);

}  // namespace pageview
