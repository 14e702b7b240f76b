// The Protocol Select builder's knowledge: the eight protocol options with their start
// bytes, the parameter lists with the bits each one owns, and the small rules that turn
// a list entry or eight bit boxes into a parameter byte.
//
// Bit n of a parameter byte is the bit box with index n (txtBitsByte0 for byte 0,
// txtBitsByte1 for the FeliCa byte 1); n = 7 is the most significant bit.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace console {

// currentProtocolCode when no protocol is chosen, and for Field OFF.
inline constexpr int kNoProtocol = 99;
inline constexpr std::size_t kProtocolOptions = 8;
inline constexpr std::size_t kProtocolFrameBoxes = 6;  // txtCode02Frame 0 to 5

using Bits = std::array<std::string, 8>;

// How the digits of an entry turn into bits.
enum class EntryRead {
  Bit,          // one decimal digit: bit = value and 1
  TwoBits,      // two decimal digits written as the bits ("10"): low = value and 1, high = (value and 2) / 2
  HexBit,       // one hexadecimal digit: bit = value and 1
  SlotCounter,  // one hexadecimal digit: bits 3 to 0 = value and 8, 4, 2, 1
};

struct ParameterList {
  std::string_view name;
  int byte;     // 0 or 1: which parameter byte (and which row of bit boxes) it sets
  int lowBit;   // the lowest bit it owns
  EntryRead read;
  std::span<const std::string_view> entries;
  int startEntry;
};

inline constexpr std::array<std::string_view, 2> kAppendCrcEntries{" 0 : No Append CRC ", " 1 : Append CRC "};
inline constexpr std::array<std::string_view, 2> kSubcarrierEntries{" 0 : Single Subcarrier ", " 1 : Dual Subcarrier "};
inline constexpr std::array<std::string_view, 2> kModulationEntries{" 0 : 100% modulation ", " 1 : 10% modulation "};
inline constexpr std::array<std::string_view, 2> kDelayEntries{" 0 : respect delay 312us ", " 1 : wait for sof "};
inline constexpr std::array<std::string_view, 4> kIso15693RateEntries{" 00 : 26k ", " 01 : 52k ", " 10 : 6k ",
                                                                       " 11 : RFU "};
inline constexpr std::array<std::string_view, 4> kIso14443AReaderRateEntries{" 00 : 106k ", " 01 : 212k ",
                                                                              " 10 : RFU ", " 11 : RFU "};
inline constexpr std::array<std::string_view, 4> kIso14443BReaderRateEntries{" 00 : 106k ", " 01 : RFU ",
                                                                              " 10 : RFU ", " 11 : RFU "};
inline constexpr std::array<std::string_view, 4> kIso18092ReaderRateEntries{" 00 : RFU ", " 01 : 212k ",
                                                                             " 10 : 424k ", " 11 : RFU "};
inline constexpr std::array<std::string_view, 4> kCardRateEntries{" 00 : 106k ", " 01 : 212k ", " 10 : 424k ",
                                                                   " 11 : 847k "};
inline constexpr std::array<std::string_view, 2> kCardFieldEntries{" 0 : return an error if no field ",
                                                                    " 1 : wait for field "};
// Both entries of the Clk lists begin with "0": choosing " 0 : ClkRec " still writes 0
// into bit 1, which only its bit box can set. Kept as the chip's tools have it.
inline constexpr std::array<std::string_view, 2> kCardClkEntries{" 0 : HFO ", " 0 : ClkRec "};
inline constexpr std::array<std::string_view, 16> kSlotCounterEntries{
    " 0 : 1 slot ",   " 1 : 2 slots ",  " 2 : 3 slots ",  " 3 : 4 slots ",  " 4 : 5 slots ",  " 5 : 6 slots ",
    " 6 : 7 slots ",  " 7 : 8 slots ",  " 8 : 9 slots ",  " 9 : 10 slots ", " A : 11 slots ", " B : 12 slots ",
    " C : 13 slots ", " D : 14 slots ", " E : 15 slots ", " F : 16 slots "};
inline constexpr std::array<std::string_view, 2> kDisregardSlotCounterEntries{" 0 : respect slot counter ",
                                                                               " 1 : search for the reply "};

// Every parameter list of the builder. cboISO14443Areader_DetectSof owns bit 3 but has no
// entries and is never shown. The cboISO14443Acard lists are filled and handled but no
// option shows them: the ISO14443A card option shows the cboISO14443Bcard lists.
inline constexpr std::array<ParameterList, 24> kParameterLists{{
    {"cboAppendCRC", 0, 0, EntryRead::Bit, kAppendCrcEntries, 0},
    {"cboISO15693reader_Subcarrier", 0, 1, EntryRead::Bit, kSubcarrierEntries, 0},
    {"cboISO15693reader_Modulation", 0, 2, EntryRead::Bit, kModulationEntries, 1},
    {"cboISO15693reader_Delay", 0, 3, EntryRead::Bit, kDelayEntries, 1},
    {"cboISO15693reader_DataRate", 0, 4, EntryRead::TwoBits, kIso15693RateEntries, 0},
    {"cboISO14443Areader_TransDataRate", 0, 6, EntryRead::TwoBits, kIso14443AReaderRateEntries, 0},
    {"cboISO14443Areader_RecepDataRate", 0, 4, EntryRead::TwoBits, kIso14443AReaderRateEntries, 0},
    {"cboISO14443Areader_DetectSof", 0, 3, EntryRead::Bit, {}, -1},
    {"cboISO14443Breader_TransDataRate", 0, 6, EntryRead::TwoBits, kIso14443BReaderRateEntries, 0},
    {"cboISO14443Breader_RecepDataRate", 0, 4, EntryRead::TwoBits, kIso14443BReaderRateEntries, 0},
    {"cboISO18092reader_TransDataRate", 0, 6, EntryRead::TwoBits, kIso18092ReaderRateEntries, 1},
    {"cboISO18092reader_RecepDataRate", 0, 4, EntryRead::TwoBits, kIso18092ReaderRateEntries, 1},
    {"cboISO14443Acard_TransDataRate", 0, 6, EntryRead::TwoBits, kCardRateEntries, 0},
    {"cboISO14443Acard_RecepDataRate", 0, 4, EntryRead::TwoBits, kCardRateEntries, 0},
    {"cboISO14443Acard_Field", 0, 3, EntryRead::Bit, kCardFieldEntries, 0},
    {"cboISO14443Acard_Clk", 0, 1, EntryRead::Bit, kCardClkEntries, 0},
    {"cboISO14443Bcard_TransDataRate", 0, 6, EntryRead::TwoBits, kCardRateEntries, 0},
    {"cboISO14443Bcard_RecepDataRate", 0, 4, EntryRead::TwoBits, kCardRateEntries, 0},
    {"cboISO14443Bcard_Field", 0, 3, EntryRead::Bit, kCardFieldEntries, 0},
    {"cboISO14443Bcard_Clk", 0, 1, EntryRead::Bit, kCardClkEntries, 0},
    {"cboISO18092card_Field", 0, 3, EntryRead::Bit, kCardFieldEntries, 0},
    {"cboISO18092card_Clk", 0, 1, EntryRead::Bit, kCardClkEntries, 0},
    {"cboISO18092reader_SlotCounter", 1, 0, EntryRead::SlotCounter, kSlotCounterEntries, 0},
    {"cboISO18092reader_Disregard_SlotCounter", 1, 4, EntryRead::HexBit, kDisregardSlotCounterEntries, 1},
}};

// What follows byte 0 in the frame for an option.
enum class ExtraBytes {
  None,
  Optional12,   // ISO 14443 readers: OptByte12optional adds bytes 1 and 2 (boxes 4, 5)
  SlotCounter,  // FeliCa reader: chkiso18092_SlotCounterByte1 adds byte 1 (box 4)
};

struct ProtocolOption {
  std::string_view caption;      // OptProtocolCode, as in chip::kProtocolCodes
  int protocolCode;              // currentProtocolCode
  std::uint8_t startByte0;       // byte 0 of the option's bit store at start
  std::string_view byte0Title;   // txtLabelByte0
  std::string_view box2;         // frame box 2
  ExtraBytes extra;
  std::string_view extraTitle;   // title of FraByte12Config or FraByte1Config
  std::array<std::string_view, 5> lists;  // the lists shown, empty names at the end
};

// Box 2 is "05" for all three card options, whatever 12, 13 and 14 in their captions say.
inline constexpr std::array<ProtocolOption, kProtocolOptions> kProtocolOptionRows{{
    {"00 : Field OFF", kNoProtocol, 0x00, "Field Off byte 0 configuration", "00", ExtraBytes::None, "", {}},
    {"01 : ISO15693", 1, 0x0D, "ISO15693 reader byte 0 configuration", "01", ExtraBytes::None, "",
     {"cboAppendCRC", "cboISO15693reader_Subcarrier", "cboISO15693reader_Modulation", "cboISO15693reader_Delay",
      "cboISO15693reader_DataRate"}},
    {"02 : ISO14443-A", 2, 0x00, "ISO14443-A reader byte 0 configuration", "02", ExtraBytes::Optional12,
     "ISO14443-A reader byte 1 && 2 configuration",
     {"cboISO14443Areader_TransDataRate", "cboISO14443Areader_RecepDataRate"}},
    {"03 : ISO14443-B", 3, 0x01, "ISO14443-B reader byte 0 configuration", "03", ExtraBytes::Optional12,
     "ISO14443-B reader byte 1 && 2 configuration",
     {"cboAppendCRC", "cboISO14443Breader_TransDataRate", "cboISO14443Breader_RecepDataRate"}},
    {"04 : Felica", 4, 0x51, "Felica reader byte 0 configuration", "04", ExtraBytes::SlotCounter,
     "Felica reader byte 1 configuration",
     {"cboAppendCRC", "cboISO18092reader_TransDataRate", "cboISO18092reader_RecepDataRate"}},
    {"12 : ISO14443A", 5, 0x00, "ISO14443-A card byte 0 configuration", "05", ExtraBytes::None, "",
     {"cboISO14443Bcard_TransDataRate", "cboISO14443Bcard_RecepDataRate", "cboISO14443Bcard_Field",
      "cboISO14443Bcard_Clk"}},
    {"13 : ISO14443B", 6, 0x01, "ISO14443-B card byte 0 configuration", "05", ExtraBytes::None, "",
     {"cboAppendCRC", "cboISO14443Bcard_TransDataRate", "cboISO14443Bcard_RecepDataRate", "cboISO14443Bcard_Field",
      "cboISO14443Bcard_Clk"}},
    {"14 : ISO18092", 7, 0x01, "Felica card byte 0 configuration", "05", ExtraBytes::None, "",
     {"cboAppendCRC", "cboISO18092card_Field", "cboISO18092card_Clk"}},
}};
inline constexpr std::size_t kFirstCardOption = 5;
inline constexpr std::string_view kReaderProtocolTitle = "Reader protocol code";
inline constexpr std::string_view kCardProtocolTitle = "Card protocol code";
inline constexpr std::string_view kOptionalBytesCaption = "AFDT optional byte 1 && 2";
inline constexpr std::string_view kSlotCounterCaption = "check to send Slot Counter parameter (byte 1)";
inline constexpr std::string_view kAppendCrcList = "cboAppendCRC";

const ParameterList* findParameterList(std::string_view name);
bool showsList(const ProtocolOption& option, std::string_view list);
// The option index of a currentProtocolCode value (99 is option 0); -1 when none.
int optionOfProtocolCode(int protocolCode);

// The value of an entry: its digits from character 2, one for a one-bit list and two for
// a two-bit list, decimal (hexadecimal for the FeliCa byte 1 lists). -1 when unreadable.
int entryValue(const ParameterList& list, std::string_view entry);
// Writes the bits the value stands for into `bits`; other bits stay.
void applyEntryValue(const ParameterList& list, int value, Bits& bits);

Bits bitsOf(std::uint8_t value);
// From bit 7 down to bit 0: value = value * 2 + bit, each box read as its lowest bit
// (an empty box counts as 0).
std::uint8_t byteOf(const Bits& bits);
// The entry cboAppendCRC shows for a stored bit 0.
std::string_view appendCrcEntry(std::string_view bit0);

// Key-up of a byte box: the text read as hexadecimal, cut to 8 bits, two digits; an empty
// box becomes `emptyText`. Text that does not read as a number is left as it stands.
std::string normaliseByteBox(std::string_view text, std::string_view emptyText);
// Key-up of a bit box: cut to one bit; an empty box becomes "0".
std::string normaliseBitBox(std::string_view text);
// The length box moved by `delta` (the optional bytes): read as hexadecimal (unreadable
// counts as 0), cut to 8 bits, two digits.
std::string movedLength(std::string_view box1, int delta);

}  // namespace console
