// Explains a chip's answer line by line, as the console shows it under the answer box.
// A pure function of the panel, the command, the status and the answer text: no state is
// kept between two answers.
//
// Characters of the answer are counted from 1: the result code stands at 1 to 2, the
// length L at 3 to 4 (LL: those two characters as they stand), data byte n at 5+2n and
// 6+2n. A length that claims more data than the answer holds gives empty pieces; a
// position below 1 also gives an empty piece.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace console {

// The console's four send actions, each with its own stack of explanation boxes.
enum class SendPanel { Generic, ProtocolSelect, Idle, Filter };

// Explanation boxes of each panel: txtCommandCodeXXAnswerExplain 0 to 4,
// txtCommandCode02AnswerExplain 0 to 2, txtCommandCode07AnswerExplain 0 to 1,
// txtCommandCode0DAnswerExplain 0 to 2.
constexpr std::size_t explainBoxes(SendPanel p) {
  switch (p) {
    case SendPanel::Generic:
      return 5;
    case SendPanel::ProtocolSelect:
      return 3;
    case SendPanel::Idle:
      return 2;
    case SendPanel::Filter:
      return 3;
  }
  return 0;
}

// An answer longer than this is not explained.
inline constexpr std::size_t kMaxExplainedAnswer = 128;
inline constexpr std::string_view kNotCorrectData = "Not correct data sent by DEMO-TL42RQ-A";
inline constexpr std::string_view kGenericTransactionError = "Transaction error : Check your reader connections";
// "Transaction error : 5 (87)": the failure text of the 02, 07 and 0D panels.
std::string transactionError(std::int32_t status, std::string_view answer);

// How line 0 is made.
enum class Line0 {
  Table,     // the text of the answer code for the command (chip::kResultCodes)
  CatchAll,  // the two digits, then " : Error code "
};

// What follows line 0.
enum class Detail {
  Length,         // line 1: LL " : Lenght of Data (" L ")"
  LengthEquals,   // line 1: LL " : Lenght of Data = " L
  ValidBits,      // line 1: LL " : Valid bits (" L ")"; line 2: NAK, ACK or ????
  Name,           // line 1 Length; line 2: data bytes 0 to L-3 as characters
  TagFrame,       // line 1 Length; lines 2 to 4: tag frame, CRC pair, protocol result
  RegisterData,   // line 1 Length; line 2: "Data : " and the bytes, each with a blank
  FrequencyData,  // line 1 Length; line 2: "Frequency reult : " and the bytes
  FieldState,     // line 1 Length; line 2: byte 0 and whether the field is detected
  FilterData,     // line 1 Length; line 2: the bytes in a row
};

// One row of the explanation tables; the first row that fits applies. An empty code
// matches any answer code. No row at all: no lines.
struct ExplainRule {
  SendPanel panel;
  std::string_view command;
  std::string_view code;
  Line0 line0;
  Detail detail;
};

inline constexpr auto kExplainRules = std::to_array<ExplainRule>({
    // IDN, and Protocol Select on its own panel, share one shape.
    {SendPanel::Generic, "01", "00", Line0::Table, Detail::Name},
    {SendPanel::Generic, "03", "00", Line0::Table, Detail::FieldState},
    {SendPanel::Generic, "03", "", Line0::CatchAll, Detail::Length},
    {SendPanel::Generic, "04", "80", Line0::Table, Detail::TagFrame},
    {SendPanel::Generic, "04", "90", Line0::Table, Detail::ValidBits},
    {SendPanel::Generic, "04", "86", Line0::Table, Detail::Length},
    // Line 1 of code 87 has an equals sign and no brackets, unlike its neighbours.
    {SendPanel::Generic, "04", "87", Line0::Table, Detail::LengthEquals},
    {SendPanel::Generic, "04", "88", Line0::Table, Detail::Length},
    {SendPanel::Generic, "04", "89", Line0::Table, Detail::Length},
    {SendPanel::Generic, "04", "8A", Line0::Table, Detail::Length},
    {SendPanel::Generic, "04", "8B", Line0::Table, Detail::Length},
    {SendPanel::Generic, "04", "8C", Line0::Table, Detail::Length},
    {SendPanel::Generic, "04", "8D", Line0::Table, Detail::Length},
    {SendPanel::Generic, "04", "8E", Line0::Table, Detail::Length},
    {SendPanel::Generic, "05", "00", Line0::Table, Detail::Length},
    {SendPanel::Generic, "05", "82", Line0::Table, Detail::Length},
    {SendPanel::Generic, "05", "83", Line0::Table, Detail::Length},
    {SendPanel::Generic, "05", "8F", Line0::Table, Detail::Length},
    {SendPanel::Generic, "05", "", Line0::CatchAll, Detail::Length},
    {SendPanel::Generic, "06", "00", Line0::Table, Detail::Length},
    {SendPanel::Generic, "06", "82", Line0::Table, Detail::Length},
    {SendPanel::Generic, "06", "83", Line0::Table, Detail::Length},
    {SendPanel::Generic, "06", "", Line0::CatchAll, Detail::Length},
    {SendPanel::Generic, "08", "00", Line0::Table, Detail::RegisterData},
    {SendPanel::Generic, "08", "82", Line0::Table, Detail::Length},
    {SendPanel::Generic, "08", "", Line0::CatchAll, Detail::Length},
    {SendPanel::Generic, "09", "00", Line0::Table, Detail::Length},
    {SendPanel::Generic, "09", "82", Line0::Table, Detail::Length},
    {SendPanel::Generic, "09", "", Line0::CatchAll, Detail::Length},
    {SendPanel::Generic, "0A", "00", Line0::Table, Detail::Length},
    {SendPanel::Generic, "0A", "55", Line0::Table, Detail::Length},
    {SendPanel::Generic, "0A", "", Line0::CatchAll, Detail::Length},
    {SendPanel::Generic, "0B", "00", Line0::Table, Detail::FrequencyData},
    {SendPanel::Generic, "0B", "", Line0::CatchAll, Detail::Length},
    {SendPanel::Generic, "0E", "00", Line0::Table, Detail::Length},
    {SendPanel::Generic, "0E", "", Line0::CatchAll, Detail::Length},
    // The sleep command: 00 and 82 only. Its "Invalid command" text stands behind a
    // second test for 82 and is never reached; 83 goes to the catch-all.
    {SendPanel::Generic, "0F", "00", Line0::Table, Detail::Length},
    {SendPanel::Generic, "0F", "82", Line0::Table, Detail::Length},
    {SendPanel::Generic, "0F", "", Line0::CatchAll, Detail::Length},
    {SendPanel::ProtocolSelect, "02", "00", Line0::Table, Detail::Name},
    // Idle: two lines; the wake-up reason in the data is left to the reader.
    {SendPanel::Idle, "07", "00", Line0::Table, Detail::Length},
    {SendPanel::Idle, "07", "82", Line0::Table, Detail::Length},
    {SendPanel::Idle, "07", "", Line0::CatchAll, Detail::Length},
    {SendPanel::Filter, "0D", "00", Line0::Table, Detail::FilterData},
    {SendPanel::Filter, "0D", "82", Line0::Table, Detail::Length},
});

// The command each panel other than the generic one always sends.
std::string_view panelCommand(SendPanel p);

// The rule that applies, if any.
const ExplainRule* findRule(SendPanel panel, std::string_view command, std::string_view code);

// The length at characters 3 to 4, read as hexadecimal; nullopt when it is no number.
std::optional<int> answerLength(std::string_view answer);
// Data byte n: characters 5+2n and 6+2n, empty where the text has none.
std::string answerByte(std::string_view answer, int n);

struct Explanation {
  std::string answerBox;           // what the answer box and the log show
  std::vector<std::string> lines;  // line n goes to explanation box n
};

// The answer box and the explanation lines after one send action. `command` is the text
// of box 0 of the panel's frame when the answer came (ignored on the 02, 07 and 0D
// panels, whose command is fixed). A length that is no number ends the explanation at
// the first line that needs it.
Explanation analyseAnswer(SendPanel panel, std::string_view command, std::int32_t status, std::string_view answer);

}  // namespace console
